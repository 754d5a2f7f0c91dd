// What the checks of an export found, put together.
#pragma once

#include <string>
#include <vector>

#include "host/app/export_files.h"

namespace maxhost::app {

// The lines to show: the faults of each verified file, then what the converter says beside them.
// Repeats are left out, and of each file's faults and of the converter's the first are shown (see
// kta::FirstFaults). Linear.
std::vector<std::string> FaultReport(const std::vector<OutputFile>& files,
                                     const std::vector<std::string>& converterFaults);

}  // namespace maxhost::app
