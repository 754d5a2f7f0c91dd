#include "host/app/run.h"

#include <exception>

#include "host/app/about.h"
#include "host/app/exit_status.h"
#include "host/app/export_run.h"
#include "host/app/listing.h"
#include "host/app/options.h"
#include "host/app/places.h"
#include "host/app/scene_choices.h"
#include "host/app/scene_loader.h"
#include "host/app/scene_saver.h"

namespace maxhost::app {
namespace {

bool ShowsProgress(const Options& options, bool isTerminal) {
    switch (options.progress) {
        case ProgressMode::always:
            return true;
        case ProgressMode::never:
            return false;
        default:
            return isTerminal && !options.quiet;
    }
}

void PrintList(const LoadedScene& loaded, Console& console) {
    for (const std::string& line : ListScene(loaded)) {
        console.Print(line);
    }
}

LoadedScene Load(const Options& options, Console& console) {
    LoadedScene loaded = LoadScene(options.scene, {options.animation, options.frameRate});
    for (const std::string& warning : loaded.warnings) {
        console.Warn(options.scene, warning);
    }
    ApplyChoices(options, loaded);
    if (options.saveScene) {
        SaveScene(loaded.scene, *options.saveScene);
    }
    return loaded;
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

int LoadAndExport(const Options& options, Console& console, bool isTerminal) {
    ExportFiles files(ExportFile(options));
    try {
        RequireDisplay(options.showDialog ? "--show-dialog" : options.scene, options.showDialog);
        return ExportScene(options, Load(options, console), files, console,
                           ShowsProgress(options, isTerminal));
    } catch (...) {
        const int status = ReportException(console);
        if (const std::string line = files.EarlierFiles(); !line.empty()) {
            console.Report(line);
        }
        return status;
    }
}

int Execute(const Options& options, Console& console, bool isTerminal) {
    if (options.about) {
        return ShowAbout(options);
    }
    if (options.list || (options.saveScene && !options.output)) {
        const LoadedScene loaded = Load(options, console);
        if (options.list) {
            PrintList(loaded, console);
        }
        return kExitDone;
    }
    return LoadAndExport(options, console, isTerminal);
}

int RunParsed(const CommandLine& commandLine, Console& console, bool isTerminal) {
    if (!commandLine.error.empty()) {
        console.Report(commandLine.error);
        return commandLine.exitStatus;
    }
    if (!commandLine.options) {
        console.Print(commandLine.out);
        return commandLine.exitStatus;
    }
    return Execute(*commandLine.options, console, isTerminal);
}

}  // namespace

int Run(const std::vector<std::string>& arguments, Console& console, bool isTerminal) {
    int status = kExitRefused;
    try {
        status = RunParsed(ParseCommandLine(arguments), console, isTerminal);
    } catch (...) {
        status = ReportException(console);
    }
    if (!console.Flush() && status == kExitDone) {
        console.Report("standard output", "cannot be written");
        status = kExitRefused;
    }
    return status;
}

}  // namespace maxhost::app
