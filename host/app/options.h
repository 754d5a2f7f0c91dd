// The command line of hdo-export.
#pragma once

#include <array>
#include <charconv>
#include <iterator>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "export/export_options.h"
#include "resources/resource.h"

namespace maxhost::app {

// An option of the exporter: a control of its options dialog, and a field of its settings, whose
// type says what it is: a switch, a real or a whole number.
struct ExporterOption {
    const char* name;  // on the command line, without dashes
    int control;
    std::variant<Plinth::UInt8 ExportOptions::*, Plinth::Float32 ExportOptions::*,
                 Plinth::Int32 ExportOptions::*>
        setting;
    const char* meaning;    // for --help
    const char* enabledBy;  // the name of the switch that enables the control; null: none
};

// Their defaults are DefaultExportOptions().
inline constexpr ExporterOption kExporterOptions[] = {
    {"export-hidden", IDC_EXPORT_HIDDEN, &ExportOptions::exportHidden, "export hidden objects",
     nullptr},
    {"non-renderable", IDC_NON_RENDERABLE, &ExportOptions::nonRenderable,
     "export meshes for non-renderable objects", nullptr},
    {"morphers", IDC_MORPHERS, &ExportOptions::morphers, "export morphers", nullptr},
    {"optimize-skin", IDC_OPTIMIZE_SKIN, &ExportOptions::optimizeSkin, "optimize skinning info",
     nullptr},
    {"weight-threshold", IDC_THRESHOLD_EDIT, &ExportOptions::weightThreshold,
     "weight threshold, 0 to 0.9999; asks for --optimize-skin", "optimize-skin"},
    {"motions-for-hidden", IDC_MOTIONS_FOR_HIDDEN, &ExportOptions::motionsForHidden,
     "export motions for hidden objects", nullptr},
    {"sample-animation", IDC_SAMPLE_ANIMATION, &ExportOptions::sampleAnimation,
     "sample the animation", nullptr},
    {"sample-rate", IDC_SAMPLE_RATE, &ExportOptions::sampleRate,
     "export a keyframe every N frames, at least 1; asks for --sample-animation",
     "sample-animation"},
};

// What the user chooses in the exporter's options dialog; what is not chosen stays as the dialog
// shows it.
struct DialogChoices {
    ExportOptions values = DefaultExportOptions();
    std::array<bool, std::size(kExporterOptions)> isChosen{};  // by position in kExporterOptions
};

// The options that are chosen, as on the command line: --morphers, --no-morphers, --sample-rate.
std::vector<std::string> NamesOf(const DialogChoices& choices);

// Whether the switch that enables the option is on, or it needs none.
bool IsEnabled(const ExporterOption& option, const ExportOptions& values);

// All options of `values` as on the command line, but those that their switch disables.
std::string OnCommandLine(const ExportOptions& values);

// The shortest text that reads back to the same number.
template <class Number>
std::string Shortest(Number number) {
    std::array<char, 32> text;
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), number);
    return std::string(text.data(), end);
}

// A time of the scene as the command line gives it.
struct Moment {
    enum class Unit { ticks, frames, seconds };
    double count = 0;
    Unit unit = Unit::ticks;
};

enum class ProgressMode { automatic, always, never };

struct Options {
    std::string scene;  // empty only with `about`
    std::optional<std::string> output;

    bool selectedOnly = false;  // also where `select` is not empty
    std::vector<std::string> select;
    bool allowEmpty = false;
    bool strict = false;
    DialogChoices choices;
    bool defaults = false;  // changes nothing
    bool cancelDialog = false;
    int cancelAfter = 0;  // 0: never

    bool keepPartial = false;

    bool savedSettings = false;
    std::optional<std::string> configDir;
    std::optional<std::string> log;
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
    float scale = 1;
    std::optional<int> up;  // 0 x, 1 y, 2 z
    std::optional<int> frameRate;
    std::optional<Moment> start, end;

    std::optional<std::string> receipt, report, accept;
    std::optional<double> maxError;  // percent of the scene's size, and degrees
    bool times = true;               // stand in the receipt

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

// `arguments` without the program's name; --help is wrapped to `columns`, at most 100.
CommandLine ParseCommandLine(const std::vector<std::string>& arguments, std::size_t columns = 80);

}  // namespace maxhost::app
