#include "tests/support/export_run.h"

#include <impexp.h>
#include <max.h>
#include <maxapi.h>
#include <plugin.h>

#include <algorithm>
#include <sstream>
#include <stdexcept>

#include "host/sdk/host.h"
#include "host/win32/module.h"

namespace support {

namespace fs = std::filesystem;

namespace {

// Does in the dialog what the choices say.
struct ChoosingUser : PlayedUser {
    explicit ChoosingUser(const ExportChoices& choices) {
        acts = choices.inDialog       ? choices.inDialog
               : choices.cancelDialog ? PressCancel
                                      : PressExport;
    }
};

class RecordingProgress : public maxhost::ProgressObserver {
  public:
    explicit RecordingProgress(ExportRun& run) : run_(run) {
        maxhost::Host::Instance().SetProgressObserver(this);
    }
    ~RecordingProgress() override { maxhost::Host::Instance().SetProgressObserver(nullptr); }

    void OnStart(const std::string& title) override { run_.progressTitles.push_back(title); }
    void OnUpdate(int percent) override { run_.progress.push_back(percent); }
    void OnEnd() override { ++run_.progressEnds; }

  private:
    ExportRun& run_;
};

template <class Function>
Function LookUp(HMODULE module, const char* name) {
    const auto function = win32::ModuleFunction<Function>(module, name);
    if (function == nullptr) {
        throw std::runtime_error(std::string(name) + " is not exported");
    }
    return function;
}

HMODULE Load(const char* path) {
    const HMODULE module = LoadLibraryA(path);
    if (module == nullptr) {
        throw std::runtime_error(std::string(path) + " does not load");
    }
    return module;
}

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        lines.push_back(line);
    }
    return lines;
}

std::optional<std::string> ReadIfPresent(const fs::path& path) {
    return fs::is_regular_file(path) ? std::optional(ReadFile(path)) : std::nullopt;
}

// Makes these the plug-in directories; returns the file of the converter that the plug-in finds.
fs::path OfferConverter(std::vector<std::string> directories) {
    const fs::path recording(HDO_RECORDING_CONVERTER);
    if (directories.empty()) {
        directories = {recording.parent_path().string()};
    }
    maxhost::Host::Instance().SetPlugInDirs(directories);
    for (const std::string& directory : directories) {
        std::error_code notThere;
        if (fs::exists(directory / recording.filename(), notThere)) {
            return directory / recording.filename();
        }
    }
    throw std::runtime_error("no plug-in directory holds the recording converter");
}

void RunPlugIn(const ExportChoices& choices, const fs::path& exportFile,
               const fs::path& converterFile, ExportRun& run) {
    const HMODULE module = Load(HDO_PLUGIN_FILE);
    const HMODULE converter = Load(converterFile.string().c_str());
    LookUp<void (*)()>(converter, "ResetRecordedCalls")();

    ClassDesc* description = LookUp<ClassDesc* (*)(int)>(module, "LibClassDesc")(0);
    auto* exporter = static_cast<SceneExport*>(description->Create(FALSE));
    {
        ChoosingUser user(choices);
        RecordingProgress progress(run);
        for (int i = 0; i < choices.exports; ++i) {
            run.result = exporter->DoExport(
                exportFile.string().c_str(), nullptr, maxhost::Host::Instance().GetInterface(),
                choices.suppressPrompts ? TRUE : FALSE,
                (choices.selectedOnly ? SCENE_EXPORT_SELECTED : 0) | choices.otherOptions);
        }
        run.dialogs = std::move(user.titles);
        run.messageBoxes = std::move(user.boxes);
    }
    delete exporter;
    run.converterCalls = Lines(LookUp<const char* (*)()>(converter, "RecordedCalls")());
    FreeLibrary(converter);
    FreeLibrary(module);
}

}  // namespace

LoadedPlugIn::LoadedPlugIn() {
    OfferConverter({});
    module_ = Load(HDO_PLUGIN_FILE);
}

LoadedPlugIn::~LoadedPlugIn() {
    FreeLibrary(static_cast<HMODULE>(module_));
}

void PressExport(win32::Dialog& dialog) {
    dialog.Click(3);
}

void PressCancel(win32::Dialog& dialog) {
    dialog.Click(2);
}

fs::path SettingsFile(const fs::path& directory) {
    return directory / "config" / "KTAExp2.cfg";
}

ExportRun Export(const maxhost::scene::Scene& scene, const ExportChoices& choices,
                 const WorkDirectory& directory) {
    const fs::path settings = SettingsFile(directory.Path());
    fs::create_directories(settings.parent_path());
    if (choices.settings) {
        WriteFile(settings, *choices.settings);
    }
    maxhost::Host& host = maxhost::Host::Instance();
    const fs::path converter = OfferConverter(choices.plugInDirs);
    host.SetDir(APP_PLUGCFG_DIR, settings.parent_path().string());
    host.CancelAtUpdate(choices.cancelAtUpdate);
    host.OpenScene(scene);

    ExportRun run;
    const fs::path exportFile = directory.Path() / choices.fileName;
    RunPlugIn(choices, exportFile, converter, run);
    run.actor = ReadIfPresent(exportFile.string() + "temp1");
    run.motion = ReadIfPresent(exportFile.string() + "temp2");
    run.log = Lines(ReadIfPresent(directory.Path() / "KTAExporter.log").value_or(""));
    host.CloseScene();
    return run;
}

ExportRun Export(const maxhost::scene::Scene& scene, const ExportChoices& choices) {
    const WorkDirectory directory;
    return Export(scene, choices, directory);
}

int CountLines(const ExportRun& run, const std::string& line) {
    return static_cast<int>(std::count(run.log.begin(), run.log.end(), line));
}

}  // namespace support
