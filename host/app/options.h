// The command line of hdo-export.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace maxhost::app {

// What the user chooses in the exporter's options dialog; what is absent stays as the dialog shows
// it.
struct DialogChoices {
    std::optional<bool> exportHidden;
    std::optional<bool> nonRenderable;
    std::optional<bool> morphers;
    std::optional<bool> optimizeSkin;
    std::optional<float> weightThreshold;  // 0 to 0.9999
    std::optional<bool> motionsForHidden;
    std::optional<bool> sampleAnimation;
    std::optional<int> sampleRate;  // any: the dialog refuses what is below 1
};

// The options of `choices` that are present, by their names on the command line.
std::vector<std::string> NamesOf(const DialogChoices& choices);

enum class ProgressMode { automatic, always, never };

struct Options {
    std::string scene;  // empty only with `about`
    std::optional<std::string> output;

    bool selectedOnly = false;
    std::vector<std::string> select;
    DialogChoices choices;
    bool defaults = false;
    bool cancelDialog = false;
    int cancelAfter = 0;  // 0: never

    std::optional<std::string> configDir;
    std::vector<std::string> pluginDirs;
    std::optional<std::string> plugin;

    std::optional<std::string> saveScene;
    bool list = false;
    std::optional<std::string> animation;
    float scale = 1;
    std::optional<int> frameRate;
    std::optional<int> start, end;  // ticks

    bool about = false;
    bool showDialog = false;
    ProgressMode progress = ProgressMode::automatic;
    bool quiet = false;
    bool verbose = false;
};

// Either options to run with, or the texts and the exit status to end with: --help and --version
// fill `out`, bad usage one line of `error` (without the program's name). No last line end.
struct CommandLine {
    std::optional<Options> options;
    int exitStatus = 0;
    std::string out;
    std::string error;
};

// `arguments` without the program's name.
CommandLine ParseCommandLine(const std::vector<std::string>& arguments);

}  // namespace maxhost::app
