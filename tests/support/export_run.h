// Runs the real plug-in module in the test's process, with the recording converter beside it, on a
// scene made by the test, and gathers everything that a user or the converter would see.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/scene/scene.h"
#include "tests/support/played_user.h"
#include "tests/support/temporary_directory.h"

namespace support {

struct ExportRun {
    int result = -1;
    std::optional<std::string> actor, motion;  // the files' bytes; absent: no such file
    std::vector<std::string> log;              // KTAExporter.log, line by line
    std::vector<std::string> converterCalls;
    Boxes messageBoxes;
    std::vector<std::string> dialogs;  // titles
    std::vector<std::string> progressTitles;
    std::vector<int> progress;
    int progressEnds = 0;
};

struct ExportChoices {
    bool selectedOnly = false;
    unsigned otherOptions = 0;  // bits of DoExport's options beside that of the selection
    bool suppressPrompts = false;
    int exports = 1;  // how many times the one exporter exports, to the same file
    bool cancelDialog = false;
    int cancelAtUpdate = 0;
    std::string fileName = "out.hdo";     // relative to the directory of the run
    std::optional<std::string> settings;  // bytes of the settings file before the export
    // Plug-in directories; empty: the recording converter's alone. The first that holds a recording
    // converter is asked for its calls.
    std::vector<std::string> plugInDirs;
    // Acts in the dialog; where it is empty, Export is pressed, or Cancel.
    std::function<void(win32::Dialog&)> inDialog;
};

// Keeps the plug-in loaded between exports; without one, each loads it anew.
class LoadedPlugIn {
  public:
    LoadedPlugIn();
    ~LoadedPlugIn();
    LoadedPlugIn(const LoadedPlugIn&) = delete;
    LoadedPlugIn& operator=(const LoadedPlugIn&) = delete;

  private:
    void* module_;
};

// Presses the buttons of the options dialog.
void PressExport(win32::Dialog& dialog);
void PressCancel(win32::Dialog& dialog);

// The settings file of exports in `directory`.
std::filesystem::path SettingsFile(const std::filesystem::path& directory);

ExportRun Export(const maxhost::scene::Scene& scene, const ExportChoices& choices,
                 const WorkDirectory& directory);
// In a directory of its own.
ExportRun Export(const maxhost::scene::Scene& scene, const ExportChoices& choices = {});

// How many lines of the log are this one.
int CountLines(const ExportRun& run, const std::string& line);

}  // namespace support
