#include "host/app/run.h"

#include <impexp.h>
#include <max.h>
#include <maxapi.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <new>
#include <system_error>

#include "host/app/all_animations.h"
#include "host/app/batch.h"
#include "host/app/bisect.h"
#include "host/app/dry_run.h"
#include "host/app/exit_status.h"
#include "host/app/export_run.h"
#include "host/app/loaded_scene.h"
#include "host/app/next_step.h"
#include "host/app/options.h"
#include "host/app/places.h"
#include "host/app/plugin_loader.h"
#include "host/app/presets.h"
#include "host/app/run_report.h"
#include "host/app/scene_contents.h"
#include "host/app/scene_report.h"
#include "host/scene/scramble.h"
#include "host/sdk/host.h"
#include "host/win32/user.h"
#include "kta/help.h"
#include "kta/text.h"

namespace maxhost::app {
namespace {

bool ShowsProgress(const Options& options, bool isTerminal) {
    switch (options.progress) {
        case ProgressMode::always:
            return true;
        case ProgressMode::never:
            return false;
        default:
            return isTerminal;
    }
}

void PrintList(const LoadedScene& loaded, Console& console) {
    for (const std::string& line : ListScene(loaded)) {
        console.Print(line);
    }
    for (const std::string& line : ListContents(loaded)) {
        console.Print(line);
    }
}

bool IsExported(const Options& options) {
    return !options.list && (!options.saveScene || options.output);
}

// Whether textures that stand in the model's file get files without an export, which takes them out
// itself.
bool SavesTextures(const Options& options, const LoadedScene& loaded) {
    return options.saveScene && !IsExported(options) && !options.bisect && !loaded.textures.empty();
}

// A scene that is saved alone names textures that stand in the model's file alone.
void WarnOfTextures(const Options& options, LoadedScene& loaded) {
    if (SavesTextures(options, loaded) && !options.textures) {
        const scene::LossCode code = scene::LossCode::textureEmbedded;
        const std::size_t count = loaded.textures.size();
        const std::string text = scene::KindOf(code).text;
        loaded.warnings.push_back(
            {code, count == 1 ? text : text + " (" + std::to_string(count) + ")"});
    }
}

void SaveTextures(const Options& options, LoadedScene& loaded, DryRun* dryRun) {
    if (!SavesTextures(options, loaded) || !options.textures) {
        return;
    }
    TextureFiles files(std::move(loaded.textures), Absolute(*options.textures));
    if (const std::string reason = files.Obstacle({}); !reason.empty()) {
        throw Failure(kExitRefused, "--textures", reason);
    }
    try {
        files.Write(dryRun);
    } catch (const std::filesystem::filesystem_error& error) {
        throw Failure(kExitRefused, error.path1().string(), error.code().message());
    }
}

// What loading changed or left out, and what the exported files cannot say. With --strict throws
// Failure(kExitFaultyOutput) where there is any.
void Warn(const Options& options, const LoadedScene& loaded, Console& console) {
    std::vector<Warning> warnings = loaded.warnings;
    if (IsExported(options)) {
        for (Warning& warning : NameWarnings(loaded.scene)) {
            warnings.push_back(std::move(warning));
        }
    }
    std::string scene = SceneName(options.scene);
    if (options.clip && *options.clip < loaded.animations.size()) {
        scene += ": " + SubjectOf(loaded.animations[*options.clip].name, *options.clip);
    }
    for (const Warning& warning : warnings) {
        console.Warn(warning.code, scene, warning.text);
    }
    // With --accept the ledger tells which of them are new.
    if (options.strict && !options.accept && !warnings.empty()) {
        throw Failure(kExitFaultyOutput, scene,
                      kta::Counted(warnings.size(), "warning") +
                          ", expected none with --strict; nothing is written");
    }
}

void Save(const scene::Scene& scene, const std::string& path, Console& console, DryRun* dryRun) {
    if (IsStandardStream(path)) {
        SaveScene(scene, console.TakeOut());
        return;
    }
    std::string place = path;
    try {
        place = PlaceToWrite(dryRun, Absolute(path)).string();
    } catch (const std::system_error& error) {
        throw Failure(kExitRefused, path, "the scene cannot be saved: " + error.code().message());
    }
    SaveScene(scene, dryRun != nullptr ? place : path);
}

LoadedScene Load(const Options& options, Console& console, bool isTerminal, RunReport& report) {
    const Stopwatch watch;
    ProgressBar bar(console);
    LoadedScene loaded = LoadScene(options.scene,
                                   {options.animation, options.frameRate, options.allowEmpty,
                                    options.up, options.unit.has_value(), options.clip},
                                   ShowsProgress(options, isTerminal) ? &bar : nullptr);
    report.readingSeconds = watch.Seconds();
    report.inputs = loaded.files;
    for (std::string& file : FilesOfOptions(options)) {
        report.inputs.push_back(std::move(file));
    }
    WarnOfTextures(options, loaded);
    Warn(options, loaded, console);
    ApplyChoices(options, loaded);
    if (options.bisect) {
        return loaded;
    }
    if (options.scramble) {
        scene::Scramble(loaded.scene);
    }
    SaveTextures(options, loaded, report.dryRun.get());
    if (options.saveScene) {
        Save(loaded.scene, *options.saveScene, console, report.dryRun.get());
        report.savedScene = options.saveScene;
    }
    return loaded;
}

// Nobody could answer the dialogs where no window can be shown. `subject` is what asks for one.
// Elsewhere than on Windows only `isForPerson` needs a window.
void RequireDisplay(const std::string& subject, [[maybe_unused]] bool isForPerson) {
#ifdef _WIN32
    if (!win32::HasDisplay()) {
        throw Failure(kExitRefused, subject,
                      "no window can be made for the exporter's dialogs, expected a display");
    }
#else
    if (isForPerson) {
        throw Failure(kExitRefused, subject,
                      "no dialog can be shown to a person here, expected Windows with a display");
    }
#endif
}

// Loads the plug-in, shows its About box and waits.
int ShowAbout(const Options& options) {
    RequireDisplay("--about", true);
    const std::vector<std::string> plugInDirectories = PlugInDirectories(options);
    Host& host = Host::Instance();
    host.SetPlugInDirs(plugInDirectories);
    LoadExporter(PlugInFile(options), plugInDirectories)
        ->ShowAbout(host.GetInterface()->GetMAXHWnd());
    return kExitDone;
}

// Called while an exception is handled: reports it and returns its exit status.
int ReportException(Console& console) {
    try {
        throw;
    } catch (const Failure& failure) {
        console.Report(failure.Subject(), failure.what());
        return failure.Status();
    } catch (const std::exception& error) {
        console.Report("unexpected", error.what());
        return kExitRefused;
    }
}

int LoadAndExport(const Options& options, Console& console, RunReport& report, bool isTerminal,
                  Interrupts& interrupts) {
    ExportFiles files(ExportFile(options), LogFile(options), report.dryRun.get());
    // Places that are refused are told before anything is done.
    ReceiptFile(options);
    ReportFile(options);
    int status = kExitDone;
    try {
        RequireDisplay(options.showDialog ? "--show-dialog" : SceneName(options.scene),
                       options.showDialog);
        status = ExportScene(options, Load(options, console, isTerminal, report), files, interrupts,
                             console, report, ShowsProgress(options, isTerminal));
    } catch (const std::bad_alloc&) {
        console.Report(SceneName(options.scene), "needs more memory than there is");
        status = kExitRefused;
    } catch (...) {
        status = ReportException(console);
    }
    if (const std::string line = files.EarlierFiles(); status != kExitDone && !line.empty()) {
        console.Report(line);
    }
    return status;
}

// Exports each of the model's animations. The status of an interrupt, or 1 when an export failed.
int ExportAnimations(const Options& options, Console& console, RunReport& report, bool isTerminal,
                     Interrupts& interrupts) {
    // Places that are refused are told before anything is done.
    LogFile(options);
    ReceiptFile(options);
    ReportFile(options);
    LoadChoices choices;
    choices.allowEmpty = options.allowEmpty;
    std::vector<std::string> animations;
    for (Animation& animation : LoadScene(options.scene, choices).animations) {
        animations.push_back(std::move(animation.name));
    }
    if (animations.empty()) {
        throw Failure(kExitRefused, "--all-animations",
                      SceneName(options.scene) + " has no animations, expected at least one");
    }
    const std::vector<std::string> names = NamesOfExports(animations);
    int status = kExitDone;
    for (std::size_t i = 0; i < names.size() && interrupts.Status() == 0; ++i) {
        const auto noticesBefore = static_cast<std::ptrdiff_t>(console.Notices().size());
        RunReport one;
        one.scene = report.scene;
        one.origins = report.origins;
        int statusOfOne = kExitDone;
        try {
            statusOfOne = LoadAndExport(ForAnimation(options, i, names[i]), console, one,
                                        isTerminal, interrupts);
        } catch (...) {
            statusOfOne = ReportException(console);
        }
        report.inputs = one.inputs;
        report.readingSeconds += one.readingSeconds;
        report.exportingSeconds += one.exportingSeconds;
        report.checkingSeconds += one.checkingSeconds;
        report.exports.push_back(
            ObjectOf(one, statusOfOne,
                     {console.Notices().begin() + noticesBefore, console.Notices().end()}));
        report.exports.back()["animation"] = Text(animations[i]);
        status = statusOfOne == kExitDone ? status : kExitExportFailed;
    }
    return interrupts.Status() != 0 ? interrupts.Status() : status;
}

// Searches for the smallest scene that fails, and saves it.
int SearchAndSave(const Options& options, Console& console, RunReport& report, bool isTerminal,
                  Interrupts& interrupts) {
    const std::string file = SuspectFile(options);
    const scene::Scene whole = Load(options, console, isTerminal, report).scene;
    Save(Bisect(options, whole, interrupts, console), file, console, nullptr);
    report.savedScene = file;
    if (!options.quiet && !options.json) {
        console.Print(file + ": the smallest scene found");
    }
    return interrupts.Status();
}

// Writes the preset that --save-preset asks for.
void SaveOptions(const Options& options, RunReport& report) {
    if (const std::optional<std::filesystem::path> file = PresetFileToSave(options)) {
        const std::optional<std::filesystem::path> saved = ConfigDirectory(options);
        SavePreset(options, *file,
                   saved                    ? ReadSettings(*saved)
                   : options.presetSettings ? *options.presetSettings
                                            : DefaultExportOptions(),
                   report.dryRun.get());
        report.savedPreset = options.savePreset;
    }
}

int Execute(const Options& options, Console& console, RunReport& report, bool isTerminal) {
    Interrupts interrupts;
    if (!options.batch.items.empty()) {
        return RunBatch(options, interrupts, console, report, ShowsProgress(options, isTerminal));
    }
    SaveOptions(options, report);
    if (options.scene.empty() && !options.about) {
        return kExitDone;
    }
    if (options.about) {
        return ShowAbout(options);
    }
    if (options.bisect) {
        return SearchAndSave(options, console, report, isTerminal, interrupts);
    }
    if (!IsExported(options)) {
        LoadedScene loaded = Load(options, console, isTerminal, report);
        if (options.list && options.json) {
            report.listed = std::move(loaded);
        } else if (options.list) {
            PrintList(loaded, console);
        }
        return kExitDone;
    }
    return options.allAnimations && !options.clip
               ? ExportAnimations(options, console, report, isTerminal, interrupts)
               : LoadAndExport(options, console, report, isTerminal, interrupts);
}

int RunParsed(const CommandLine& commandLine, Console& console, RunReport& report,
              bool isTerminal) {
    if (!commandLine.error.empty()) {
        console.Report(commandLine.error);
        return commandLine.exitStatus;
    }
    if (!commandLine.options) {
        console.Print(commandLine.out);
        return commandLine.exitStatus;
    }
    const Options& options = *commandLine.options;
    report.scene = options.scene;
    if (!options.dryRun || !options.batch.items.empty()) {
        return Execute(options, console, report, isTerminal);
    }
    report.dryRun = std::make_shared<DryRun>(options.makesDirectories);
    int status = kExitDone;
    try {
        status = Execute(options, console, report, isTerminal);
    } catch (...) {
        status = ReportException(console);
    }
    report.dryRun->Measure();
    if (!options.quiet && !options.json) {
        for (const std::string& line : report.dryRun->Lines(options.verbose)) {
            console.Print(line, StyleOf(line));
        }
    }
    return status;
}

// Of a refused command line, by its words: the parser stops at what it refuses.
bool WantsJson(const CommandLine& commandLine, const std::vector<std::string>& arguments) {
    return commandLine.options ? commandLine.options->json
                               : !commandLine.error.empty() &&
                                     std::ranges::find(arguments, "--json") != arguments.end();
}

// Of a command line that may be refused, by its words.
kta::ColorMode ColorModeIn(const std::vector<std::string>& arguments) {
    kta::ColorMode mode = kta::ColorMode::automatic;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& word = arguments[i];
        const bool isApart = word == "--color" && i + 1 < arguments.size();
        const std::string value = isApart                        ? arguments[i + 1]
                                  : word.starts_with("--color=") ? word.substr(8)
                                                                 : std::string();
        mode = value == "always"  ? kta::ColorMode::always
               : value == "never" ? kta::ColorMode::never
                                  : mode;
    }
    return mode;
}

// On a terminal, where nothing keeps messages back.
void SayNextStep(const CommandLine& commandLine, int status, const RunReport& report,
                 Console& console) {
    const Options* const options = commandLine.options ? &*commandLine.options : nullptr;
    const bool isHelp = options == nullptr && commandLine.error.empty();
    if (!isHelp && (options == nullptr || (!options->quiet && !options->json))) {
        console.Hint(NextStep(options, status, report, console.Notices()));
    }
}

}  // namespace

int Run(const std::vector<std::string>& arguments, Console& console, bool isTerminal) {
    int status = kExitRefused;
    RunReport report;
    bool wantsJson = false;
    CommandLine commandLine;
    console.SetColors(ColorModeIn(arguments));
    try {
        commandLine = ParseCommandLine(arguments, kta::TerminalColumns());
        wantsJson = WantsJson(commandLine, arguments);
        status = RunParsed(commandLine, console, report, isTerminal);
    } catch (...) {
        status = ReportException(console);
    }
    if (wantsJson) {
        console.Print(JsonOf(report, status, console.Notices()));
    }
    SayNextStep(commandLine, status, report, console);
    if (!console.Flush() && status == kExitDone) {
        console.Report("standard output", "cannot be written");
        status = kExitRefused;
    }
    return status;
}

}  // namespace maxhost::app
