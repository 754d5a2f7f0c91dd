// The plug-in, loaded as 3ds Max loads it.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class SceneExport;

namespace maxhost::app {

// Deletes an exporter as the host is to: through its own virtual destructor.
struct DeleteExporter {
    void operator()(SceneExport* exporter) const;
};
using Exporter = std::unique_ptr<SceneExport, DeleteExporter>;

// Loads the module, asks the library functions for its version and its first class of exporters,
// and makes one exporter. Plug-ins stay loaded until the process ends, as in 3ds Max. Throws
// Failure(kExitNoPlugIn); `plugInDirectories` are where the plug-in looks for its converter, and
// are named when none of them holds one.
Exporter LoadExporter(const std::filesystem::path& plugIn,
                      const std::vector<std::string>& plugInDirectories);

// Throws Failure(kExitNoPlugIn) when the converter library of the first of these directories that
// holds one lacks an entry point: the plug-in calls them unseen.
void CheckConverter(const std::vector<std::string>& plugInDirectories);

// The converter library's file in the first of these directories that holds one.
std::optional<std::filesystem::path> ConverterFile(
    const std::vector<std::string>& plugInDirectories);

// Tells the converter library of the first of these directories that holds one that the host reads
// the exported files itself, so that they are read once; false for one that cannot be told, as only
// the stand-in can. It holds as long as the plug-in keeps the library loaded.
bool TakeReadingFromConverter(const std::vector<std::string>& plugInDirectories);

// The faults that the converter library found in the last export, line by line. The library is that
// of the first of these directories that holds one. Empty also for a converter without
// `SpecialHaldenFaults`, which only the stand-in has.
std::vector<std::string> ConverterFaults(const std::vector<std::string>& plugInDirectories);

}  // namespace maxhost::app
