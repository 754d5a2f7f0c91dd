// The command line of hdo-export.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/app/exporter_options.h"
#include "kta/terminal.h"

namespace maxhost::app {

// A time of the scene as the command line gives it.
struct Moment {
    enum class Unit { ticks, frames, seconds };
    double count = 0;
    Unit unit = Unit::ticks;
};

enum class ProgressMode { automatic, always, never };

// Where an option's value comes from; what comes later counts more.
enum class Origin { byDefault, savedSettings, preset, sidecar, commandLine, dialog };

// An option that presets may hold, as it was given.
struct GivenOption {
    std::string name;                // without dashes
    std::vector<std::string> texts;  // as the command line has them; of a switch "true" or "false"
    Origin origin = Origin::commandLine;
};

// Exports of many scenes.
struct BatchOptions {
    std::vector<std::string> items;  // see FindBatchScenes; empty: there is no batch
    std::optional<int> jobs;         // at once
    std::optional<float> timeout;    // seconds a scene
    std::optional<int> memory;       // MB a scene
    bool force = false;
    bool count = false;
    std::optional<int> arrayIndex, arraySize;  // from 1
};

struct Options {
    std::string scene;  // empty only with `about` and `savePreset`, and in a batch
    std::optional<std::string> output;

    bool selectedOnly = false;  // also where `select` is not empty
    std::vector<std::string> select;
    bool allowEmpty = false;
    bool strict = false;
    bool dryRun = false;
    bool makesDirectories = false;  // of a dry run: those that are not there would be made
    DialogChoices choices;
    // Where --preset names a settings file: its record, of which only what the dialog does not show
    // counts beside `choices`.
    std::optional<ExportOptions> presetSettings;
    bool defaults = false;  // changes nothing
    bool cancelDialog = false;
    int cancelAfter = 0;  // 0: never

    bool keepPartial = false;

    bool savedSettings = false;
    std::optional<std::string> configDir;
    std::optional<std::string> log;
    std::optional<std::string> textures;
    std::vector<std::string> pluginDirs;
    std::optional<std::string> plugin;

    std::optional<std::string> saveScene;
    bool scramble = false;
    bool bisect = false;
    int tries = 1000;
    int trySeconds = 60;
    bool list = false;
    bool json = false;
    std::optional<std::string> animation;
    bool allAnimations = false;
    std::optional<std::size_t> clip;  // beside `allAnimations`: one of them alone, by its position
    float scale = 1;
    std::optional<double> unit;  // metres
    std::optional<int> up;       // 0 x, 1 y, 2 z
    std::optional<int> frameRate;
    std::optional<Moment> start, end;

    std::optional<std::string> receipt, report, accept;
    std::optional<double> maxError;  // percent of the scene's size, and degrees
    bool times = true;               // stand in the receipt

    std::optional<std::string> preset, savePreset;
    bool sidecar = true;                     // is looked for
    std::optional<std::string> sidecarFile;  // that is there
    std::vector<GivenOption> given;          // by the command line, the preset and the sidecar

    bool about = false;
    bool showDialog = false;
    ProgressMode progress = ProgressMode::automatic;
    kta::ColorMode color = kta::ColorMode::automatic;
    bool quiet = false;
    bool verbose = false;

    BatchOptions batch;
    // The options that were given, as a command line for an export of another scene has them:
    // without those of the output, of the batch and of messages.
    std::vector<std::string> passedOn;
};

// The units of --unit, in metres.
inline const std::map<std::string, std::optional<double>> kUnits = {
    {"mm", 0.001}, {"cm", 0.01}, {"m", 1}, {"in", 0.0254}, {"ft", 0.3048}};

// Either options to run with, or the texts and the exit status to end with: --help and --version
// fill `out`, bad usage one line of `error` (without the program's name). No last line end.
struct CommandLine {
    std::optional<Options> options;
    int exitStatus = 0;
    std::string out;
    std::string error;
};

// `arguments` without the program's name. Reads the preset and the sidecar file. --help is wrapped
// to `columns`, at most 100.
CommandLine ParseCommandLine(const std::vector<std::string>& arguments, std::size_t columns = 80);

}  // namespace maxhost::app
