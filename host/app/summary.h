// What the user is told at the end of an export.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/app/export_files.h"

namespace maxhost::app {

struct ExportOutcome {
    std::size_t sceneNodes = 0;
    std::size_t warnings = 0;
    std::filesystem::path log;      // empty: this export wrote none
    std::size_t coloredMeshes = 0;  // whose vertex colours are lost
};

// The lines of the summary of files that were verified.
std::vector<std::string> Summarize(const std::vector<OutputFile>& files,
                                   const ExportOutcome& outcome);

}  // namespace maxhost::app
