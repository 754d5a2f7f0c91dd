// Running the plug-in on a loaded scene.
#pragma once

#include "host/app/console.h"
#include "host/app/export_files.h"
#include "host/app/loaded_scene.h"
#include "host/app/options.h"
#include "host/app/run_report.h"

namespace maxhost::app {

// Plays 3ds Max's part for one export to `files`, with the answers and places that the options
// give: opens the scene, loads the plug-in, lets it export, checks what was written, puts it in
// place and sums it up, in `report` too. From the export on, interrupts press Cancel. Returns the
// exit status; throws Failure where there is nothing to add to a line.
int ExportScene(const Options& options, LoadedScene loaded, ExportFiles& files,
                Interrupts& interrupts, Console& console, RunReport& report, bool showsProgress);

}  // namespace maxhost::app
