// Models on Windows, where a process cannot be copied to read them in the copy: the program starts
// itself once more instead, so that a reader that crashes, hangs or takes all memory ends that one.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/assimp/imported_scene.h"
#include "host/assimp/process/reader_process.h"

namespace maxhost::app {

// Reads the file at `path` in such a process; throws import::ImportError. `report` is told of its
// progress.
import::ImportedScene ReadModelInProcess(const std::string& path,
                                         const import::ImportChoices& choices,
                                         const import::ReportPercent& report);

// The other end, for main(): where the program was started by ReadModelInProcess(), reads the
// model, writes it to standard output, and returns the program's exit status.
std::optional<int> ServeAsModelReader(const std::vector<std::string>& arguments);

}  // namespace maxhost::app
