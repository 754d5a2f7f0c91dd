#include "host/app/run.h"

#include <impexp.h>
#include <max.h>
#include <maxapi.h>

#include <exception>

#include "host/app/exit_status.h"
#include "host/app/export_run.h"
#include "host/app/loaded_scene.h"
#include "host/app/options.h"
#include "host/app/places.h"
#include "host/app/plugin_loader.h"
#include "host/app/scene_report.h"
#include "host/sdk/host.h"
#include "host/win32/user.h"

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
