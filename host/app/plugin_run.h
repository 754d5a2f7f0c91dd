// The plug-in's run: 3ds Max's part while it exports the open scene, and what can be said of it
// afterwards.
#pragma once

#include <max.h>

#include <filesystem>
#include <functional>
#include <vector>

#include "host/app/dialog_user.h"
#include "host/app/export_files.h"
#include "host/app/log_lines.h"
#include "host/app/options.h"
#include "host/app/plugin_loader.h"
#include "host/app/run_report.h"
#include "host/app/summary.h"

namespace maxhost::app {

struct PlugInRun {
    const Exporter& exporter;
    DWORD exportOptions = 0;
    std::filesystem::path configDirectory;
    bool showsProgress = false;
    std::function<void()> onSecondFile = [] {};  // when the exporter begins it
};

// Lets the plug-in export the open scene to the files, which are prepared; `times` gets the log's
// lines as they come where that is asked for, `report` the seconds and the calls. The result is
// DoExport's.
int RunPlugIn(const PlugInRun& run, const Options& options, const ExportFiles& files,
              DialogUser& user, Console& console, StageTimes& times, RunReport& report);

// Of the command line. Throws Failure where the exporter does not take them.
DWORD ExportOptionsFor(const Options& options, SceneExport& exporter,
                       const std::filesystem::path& plugIn);

// The open scene's nodes; an export leaves out those with a reason, which is the first that holds.
std::vector<NodeToExport> NodesToExport(const Options& options, const ExportOptions& inForce);

}  // namespace maxhost::app
