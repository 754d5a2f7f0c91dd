#include "host/app/export_run.h"

#include <impexp.h>
#include <max.h>
#include <maxapi.h>

#include <optional>

#include "host/app/console.h"
#include "host/app/dialog_user.h"
#include "host/app/exit_status.h"
#include "host/app/export_files.h"
#include "host/app/places.h"
#include "host/app/plugin_loader.h"
#include "host/app/scene_report.h"
#include "host/sdk/host.h"

namespace maxhost::app {
namespace {

namespace fs = std::filesystem;

constexpr const char* kLogName = "KTAExporter.log";

// The user, the progress bar and the debugger, in place while one export runs.
class RunningExport {
  public:
    RunningExport(const Options& options, DialogUser& user, ProgressBar& bar, Console& console,
                  bool showsProgress) {
        Host& host = Host::Instance();
        host.SetProgressObserver(showsProgress ? &bar : nullptr);
        host.CancelAtUpdate(options.cancelAfter);
        if (!options.showDialog) {
            win32::SetUser(&user);
        }
#ifndef _WIN32
        if (options.verbose) {
            win32::SetDebugSink(CopyToConsole, &console);
        }
#else
        // Windows itself takes the debugger's texts.
        static_cast<void>(console);
#endif
    }
    ~RunningExport() {
        Host::Instance().SetProgressObserver(nullptr);
        win32::SetUser(nullptr);
#ifndef _WIN32
        win32::SetDebugSink(nullptr, nullptr);
#endif
    }

    RunningExport(const RunningExport&) = delete;
    RunningExport& operator=(const RunningExport&) = delete;

  private:
    CancelOnInterrupt interrupts_;
#ifndef _WIN32
    static void CopyToConsole(const char* text, void* context) {
        static_cast<Console*>(context)->Copy(text);
    }
#endif
};

void MakeConfigDirectory(const fs::path& directory, Console& console) {
    std::error_code error;
    fs::create_directories(directory, error);
    if (error) {
        console.Warn(directory.string(),
                     "cannot be made, so that settings are not kept: " + error.message());
    }
}

void CheckMaterials(const std::string& file, const scene::Scene& scene) {
    if (CountMaterials(scene) > kMostMaterials) {
        throw Failure(kExitRefused, file,
                      "more than " + std::to_string(kMostMaterials) +
                          " materials, each counted wherever it is referred to, expected at most "
                          "as many");
    }
}

DWORD ExportOptionsFor(const Options& options, SceneExport& exporter, const fs::path& plugIn) {
    if (!options.selectedOnly) {
        return 0;
    }
    if (!exporter.SupportsOptions(0, SCENE_EXPORT_SELECTED)) {
        throw Failure(kExitRefused, "--selected", plugIn.string() + " does not export selections");
    }
    return SCENE_EXPORT_SELECTED;
}

std::string ReasonOfFailure(const Options& options, const ExportFiles& files,
                            const DialogUser& user) {
    if (user.MessageBoxes() > 0) {
        return "the exporter says why above";
    }
    return (options.showDialog ? "if no message box said why, " : "") + files.WhyNotMade();
}

int ReportFailure(const Options& options, const ExportFiles& files, const fs::path& log,
                  const DialogUser& user, Console& console) {
    console.Report(files.ExportFile().string(),
                   "the export failed: " + ReasonOfFailure(options, files, user));
    for (const std::string& line : files.Leftovers(log)) {
        console.Report(line);
    }
    return kExitExportFailed;
}

// The dialog's user has said what was refused.
int ReportRefusal(const ExportFiles& files, Console& console) {
    if (const std::string line = files.EarlierFiles(); !line.empty()) {
        console.Report(line);
    }
    return kExitRefused;
}

// The status where the dialog, or its lack, left nothing to conclude; `result` is DoExport's.
std::optional<int> EndedInDialog(const Options& options, int result, const ExportFiles& files,
                                 const DialogUser& user, Console& console) {
    const std::string exportFile = files.ExportFile().string();
    if (user.LacksDialog()) {
        console.Report(exportFile,
                       "the exporter showed no options dialog; what it did, it did without the "
                       "choices asked for");
        return kExitRefused;
    }
    if (user.WasRefused()) {
        return ReportRefusal(files, console);
    }
    const bool personCancelled = options.showDialog && !files.AnyWritten();
    if (user.HasCancelled() || personCancelled || result == IMPEXP_CANCEL) {
        console.Report(exportFile, "cancelled in the options dialog; no export was written");
        return kExitDone;
    }
    return std::nullopt;
}

int Conclude(const ExportOutcome& outcome, ExportFiles& files,
             const std::vector<std::string>& plugInDirectories, bool isQuiet, Console& console) {
    files.Verify();
    const std::vector<std::string> faults =
        FaultReport(files.Files(), ConverterFaults(plugInDirectories));
    for (const std::string& line : faults) {
        console.Report(line);
    }
    if (Host::Instance().GetInterface()->GetCancel()) {
        console.Report(files.ExportFile().string(),
                       "cancelled in the progress bar; the files hold a part of the scene");
    }
    if (!isQuiet) {
        for (const std::string& line : Summarize(files.Files(), outcome)) {
            console.Print(line);
        }
    }
    return faults.empty() ? kExitDone : kExitFaultyOutput;
}

// Lets the plug-in export the open scene; the result is DoExport's.
int RunPlugIn(const Options& options, const Exporter& exporter, DWORD exportOptions,
              const std::string& exportFile, const fs::path& configDirectory, DialogUser& user,
              Console& console, bool showsProgress) {
    Host& host = Host::Instance();
    ProgressBar bar(console);
    const RunningExport running(options, user, bar, console, showsProgress);
    std::optional<DefaultSettings> defaults;
    if (options.defaults) {
        defaults.emplace(SettingsFile(configDirectory));
    }
    host.SetDir(APP_PLUGCFG_DIR, (defaults ? defaults->Directory() : configDirectory).string());
    return exporter->DoExport(exportFile.c_str(), nullptr, host.GetInterface(), FALSE,
                              exportOptions);
}

// The log of the export that began at the mark; empty when it wrote none, which is said.
fs::path LogSince(const FileMark& mark, Console& console) {
    if (mark.IsWritten()) {
        return mark.File();
    }
    console.Warn(mark.File().string(), "this export could not write its log there");
    return {};
}

// The open scene's nodes; an export leaves out those with a reason, which is the first that holds.
std::vector<NodeToExport> NodesToExport(const Options& options) {
    const Class_ID footprint(0x3011, 0);
    const bool isCancelled = Host::Instance().GetInterface()->GetCancel() != FALSE;
    std::vector<NodeToExport> nodes;
    for (INode* const node : Host::Instance().Nodes()) {
        Control* const transform = node->GetTMController();
        const bool isFootprint = transform != nullptr && transform->ClassID() == footprint;
        const bool isHidden = node->IsHidden(0, FALSE) && !options.choices.values.exportHidden;
        nodes.push_back({node->GetName(), options.selectedOnly && !node->Selected() ? "not selected"
                                          : isFootprint ? "a biped footprint"
                                          : isHidden    ? "hidden"
                                          : isCancelled ? "cancelled before"
                                                        : nullptr});
    }
    return nodes;
}

}  // namespace

int ExportScene(const Options& options, LoadedScene loaded, ExportFiles& files, Console& console,
                bool showsProgress) {
    CheckMaterials(options.scene, loaded.scene);
    const std::string exportFile = files.ExportFile().string();
    const fs::path configDirectory = ConfigDirectory(options);
    const fs::path plugIn = PlugInFile(options);
    const std::vector<std::string> plugInDirectories = PlugInDirectories(options);

    Host& host = Host::Instance();
    host.SetPlugInDirs(plugInDirectories);
    const Exporter exporter = LoadExporter(plugIn, plugInDirectories);
    CheckConverter(plugInDirectories);
    const DWORD exportOptions = ExportOptionsFor(options, *exporter, plugIn);

    MakeConfigDirectory(configDirectory, console);
    if (options.verbose) {
        console.Report(SettingsFile(configDirectory).string(), "settings file");
    }
    ExportOutcome outcome{{}, options.verbose, loaded.warnings.size(), {}, loaded.coloredMeshes};
    host.OpenScene(std::move(loaded.scene));
    const FileMark log(fs::current_path() / kLogName);
    DialogUser user(console, exportFile, options.choices, options.cancelDialog);
    const int result = RunPlugIn(options, exporter, exportOptions, exportFile, configDirectory,
                                 user, console, showsProgress);
    outcome.log = LogSince(log, console);
    outcome.nodes = NodesToExport(options);
    if (result == IMPEXP_FAIL) {
        return ReportFailure(options, files, outcome.log, user, console);
    }
    if (const std::optional<int> status = EndedInDialog(options, result, files, user, console)) {
        return *status;
    }
    return Conclude(outcome, files, plugInDirectories, options.quiet, console);
}

}  // namespace maxhost::app
