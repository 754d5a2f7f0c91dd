#include "host/app/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <map>
#include <memory>
#include <string_view>

#include "host/app/exit_status.h"
#include "kta/help.h"

namespace maxhost::app {
namespace {

constexpr const char* kDescription =
    "Exports a scene with the HDO exporter as 3ds Max would: writes FILEtemp1 (actor) and\n"
    "FILEtemp2 (motion) and hands them to the converter library.\n";

constexpr const char* kFooter =
    "SCENE is a scene description (*.maxscene.json) or a model file that Assimp reads. Relative\n"
    "paths mean the current directory; the exporter runs in a private one.\n"
    "\n"
    "The exporter writes into a private directory beside the export file. What stands there at\n"
    "the end, both files and the log, is put in place together when the run ended well (exit\n"
    "status 0); otherwise former files stay as they are.\n"
    "\n"
    "Exit status: 0 done, also when a dialog was cancelled; 1 the exporter failed; 2 bad usage,\n"
    "a scene that cannot be read or holds nothing, or a choice that is refused; 3 the plug-in did\n"
    "not load; 4 the export ran, but a check of what was written found a fault, or the disk was\n"
    "full, or with --strict there was a warning, or what --max-error or --accept allow was "
    "passed;\n"
    "5 cancelled in the progress bar; 130 and 143 interrupted (Ctrl-C, SIGTERM).\n"
    "\n"
    "During the export an interrupt presses Cancel in the progress bar; a second one ends the\n"
    "program at once.\n";

const std::map<std::string, ProgressMode> kProgressModes = {{"auto", ProgressMode::automatic},
                                                            {"always", ProgressMode::always},
                                                            {"never", ProgressMode::never}};

constexpr float kGreatestThreshold = 0.9999f;  // of the dialog's spinner

std::string Quoted(const std::string& text) {
    return "\"" + text + "\"";
}

// Whole numbers from `least` to `most`.
CLI::Validator Whole(int least, int most, const std::string& expected) {
    return CLI::Validator(
        [=](std::string& text) {
            int value = 0;
            const char* const end = text.data() + text.size();
            const auto [stop, error] = std::from_chars(text.data(), end, value);
            const bool isGood =
                error == std::errc() && stop == end && value >= least && value <= most;
            return isGood ? std::string() : Quoted(text) + ", expected " + expected;
        },
        "");
}

std::string ValueText(Plinth::UInt8 value) {
    return value ? "on" : "off";
}

template <class Number>
std::string ValueText(Number number) {
    return Shortest(number);
}

// Finite numbers that `accepts`.
CLI::Validator Real(bool (*accepts)(float), const std::string& expected) {
    return CLI::Validator(
        [=](std::string& text) {
            float value = 0;
            const char* const end = text.data() + text.size();
            const auto [stop, error] = std::from_chars(text.data(), end, value);
            const bool isGood = error == std::errc() && stop == end && std::isfinite(value);
            return isGood && accepts(value) ? std::string()
                                            : Quoted(text) + ", expected " + expected;
        },
        "");
}

// ---------------------------------------------------------------- times

// Nothing where the text is no time. Ticks are whole.
std::optional<Moment> MomentOf(const std::string& text) {
    Moment moment;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, moment.count);
    const std::string_view unit(stop, static_cast<std::size_t>(end - stop));
    moment.unit = unit == "f"   ? Moment::Unit::frames
                  : unit == "s" ? Moment::Unit::seconds
                                : Moment::Unit::ticks;
    const bool isUnit = unit.empty() || moment.unit != Moment::Unit::ticks;
    const bool isWhole =
        moment.unit != Moment::Unit::ticks || (std::trunc(moment.count) == moment.count &&
                                               moment.count >= INT_MIN && moment.count <= INT_MAX);
    const bool isGood = error == std::errc() && std::isfinite(moment.count) && isUnit && isWhole;
    return isGood ? std::optional(moment) : std::nullopt;
}

// ---------------------------------------------------------------- options by group

// One group of options at a time, under one heading of the help.
class Group {
  public:
    Group(CLI::App& app, const char* heading) : app_(app), heading_(heading) {}

    template <class Value>
    CLI::Option* Add(const char* names, const char* valueName, Value& value,
                     const std::string& meaning) {
        return app_.add_option(names, value, meaning)
            ->type_name(valueName)
            ->allow_extra_args(false)
            ->group(heading_);
    }
    // A file or directory, whose name is not empty.
    template <class Value>
    CLI::Option* AddPath(const char* names, const char* valueName, Value& value,
                         const std::string& meaning) {
        return Add(names, valueName, value, meaning)
            ->check(CLI::Validator(
                [](std::string& text) {
                    return text.empty() ? std::string("\"\", expected a name") : std::string();
                },
                ""));
    }
    CLI::Option* Add(const char* names, bool& value, const std::string& meaning) {
        return app_.add_flag(names, value, meaning)->group(heading_);
    }
    // --name and --no-name; the last one counts.
    CLI::Option* AddSwitch(const std::string& name, Plinth::UInt8& value,
                           const std::string& meaning) {
        CLI::Option* const option = app_.add_flag("--" + name + ",!--no-" + name, meaning);
        option->multi_option_policy(CLI::MultiOptionPolicy::TakeLast)->group(heading_);
        return option->each([&value](const std::string& text) {
            value = CLI::detail::to_flag_value(text) > 0 ? 1 : 0;
        });
    }

    CLI::Option* AddAxis(const char* name, std::optional<int>& value, const std::string& meaning) {
        static constexpr std::string_view kAxes = "xyz";
        return app_
            .add_option_function<std::string>(
                name,
                [&value](const std::string& text) { value = static_cast<int>(kAxes.find(text)); },
                meaning)
            ->type_name("AXIS")
            ->group(heading_)
            ->check(CLI::Validator(
                [](std::string& text) {
                    const bool isAxis = text.size() == 1 && kAxes.find(text) != kAxes.npos;
                    return isAxis ? std::string() : Quoted(text) + ", expected x, y or z";
                },
                ""));
    }

    CLI::Option* AddMoment(const char* name, std::optional<Moment>& value,
                           const std::string& meaning) {
        return app_
            .add_option_function<std::string>(
                name, [&value](const std::string& text) { value = MomentOf(text); }, meaning)
            ->type_name("T")
            ->group(heading_)
            ->check(CLI::Validator(
                [](std::string& text) {
                    return MomentOf(text) ? std::string()
                                          : Quoted(text) +
                                                ", expected whole ticks that fit 32 bits (480), "
                                                "frames (3f) or seconds (0.1s)";
                },
                ""));
    }

  private:
    CLI::App& app_;
    const char* heading_;
};

void AddScene(CLI::App& app, Options& options) {
    app.add_option("SCENE", options.scene,
                   "the scene to export; - is a scene description on standard input");
    Group group(app, "Options");
    group.AddPath("-o,--output", "FILE", options.output,
                  "export file, which the converter makes (default: SCENE's name with .hdo; "
                  "x.maxscene.json gives x.hdo); FILEtemp1, FILEtemp2, FILE.log\n"
                  "and FILE.glb, a preview, appear beside it");
    group.Add("--selected", options.selectedOnly,
              "export the selection only; an empty one is refused (default: the whole scene)");
    group.Add("--select", "NAME", options.select,
              "select all nodes of that name and export the selection; repeatable, in order "
              "(default: the scene's own selection)");
    group.Add("--allow-empty", options.allowEmpty,
              "a model without any node, or an empty selection, is no error (default: off)");
    group.Add(
        "--strict", options.strict,
        "a warning about the scene is a failure, exit status 4, and nothing is written; beside "
        "--receipt, --report or --max-error so is each loss of the export (default: off)");
    group.Add("--animation", "NAME|N", options.animation,
              "which animation of a file with several (default: the first)");
}

void AddImport(CLI::App& app, Options& options) {
    Group group(app, "The scene");
    group
        .Add("--scale", "X", options.scale,
             "multiply the scene's lengths (vertices, translations, keys) once, at import "
             "(default: 1, one unit of the file is one unit of the scene)")
        ->check(Real([](float value) { return value > 0; }, "a finite number above 0"));
    group.AddAxis("--up", options.up,
                  "which way is up in a model file that does not say it, x, y or z (default: y); "
                  "docs/hdo-export.md has the formats that say it");
    group
        .Add("--frame-rate", "N", options.frameRate,
             "frames a second; ticks a frame follow, 4800 / N (default: the scene's)")
        ->check(Whole(1, 4800, "a whole number from 1 to 4800"));
    group.AddMoment("--start", options.start,
                    "where the animation range begins: ticks (480), frames (3f) or seconds (0.1s) "
                    "(default: the scene's)");
    group.AddMoment("--end", options.end, "where it ends (default: the scene's)");
    group.AddPath("--save-scene", "FILE", options.saveScene,
                  "write the loaded scene as a scene description, - to standard output; without -o "
                  "nothing is exported (default: not written)");
    group.Add("--list", options.list,
              "list the scene's nodes, materials and animations; nothing is exported (default: "
              "off)");
}

// Adds each of the exporter's options by the type of its setting.
class DialogChoiceAdder {
  public:
    DialogChoiceAdder(CLI::App& app, ExportOptions& values)
        : group_(app, "Choices in the options dialog"), values_(values) {}

    CLI::Option* Add(const ExporterOption& option) {
        return std::visit([&](auto setting) { return Add(option, values_.*setting); },
                          option.setting);
    }

  private:
    std::string Meaning(const ExporterOption& option) const {
        const std::string value = std::visit(
            [this](auto setting) { return ValueText(defaults_.*setting); }, option.setting);
        return std::string(option.meaning) + " (default: " + value + ")";
    }
    static std::string Name(const ExporterOption& option) {
        return "--" + std::string(option.name);
    }

    CLI::Option* Add(const ExporterOption& option, Plinth::UInt8& value) {
        return group_.AddSwitch(option.name, value, Meaning(option));
    }
    CLI::Option* Add(const ExporterOption& option, Plinth::Float32& value) {
        return group_.Add(Name(option).c_str(), "X", value, Meaning(option))
            ->check(Real([](float real) { return real >= 0 && real <= kGreatestThreshold; },
                         "a number from 0 to 0.9999"));
    }
    CLI::Option* Add(const ExporterOption& option, Plinth::Int32& value) {
        return group_.Add(Name(option).c_str(), "N", value, Meaning(option))
            ->check(Whole(INT_MIN, INT_MAX, "a whole number that fits 32 bits"));
    }

    Group group_;
    ExportOptions& values_;
    const ExportOptions defaults_ = DefaultExportOptions();
};

// Gives the options of kExporterOptions, in order.
std::vector<CLI::Option*> AddDialogChoices(CLI::App& app, Options& options) {
    DialogChoiceAdder adder(app, options.choices.values);
    std::vector<CLI::Option*> added;
    for (const ExporterOption& option : kExporterOptions) {
        added.push_back(adder.Add(option));
    }
    return added;
}

void AddDialogs(CLI::App& app, Options& options) {
    Group group(app, "Dialogs");
    group.Add("--defaults", options.defaults,
              "accepted; the exporter's defaults are what a run starts from anyway (default: off)");
    group.Add("--about", options.about,
              "show the About box to a person and wait; nothing is exported (default: off; Windows "
              "only)");
    group.Add("--show-dialog", options.showDialog,
              "show the options dialog to a person and wait (default: off, the choices above are "
              "made without one; Windows only)");
}

void AddSearch(CLI::App& app, Options& options) {
    Group group(app, "When an export fails");
    group.Add("--bisect", options.bisect,
              "search for the smallest scene whose export fails in the same way, each try in a "
              "process of its own, and save it to --save-scene's or -o's FILE (default: off; "
              "SCENE's name with .suspect.maxscene.json)");
    group.Add("--scramble", options.scramble,
              "change the names and the geometry of the scene that is saved, so that it can be "
              "shown to others; of --bisect's as far as it still fails (default: off)");
    group
        .Add("--tries", "N", options.tries,
             "end the search after so many exports, with what is found (default: 1000)")
        ->check(Whole(1, INT_MAX, "a whole number of at least 1"));
    group
        .Add("--try-seconds", "N", options.trySeconds,
             "an export that takes longer counts as one that does not end (default: 60)")
        ->check(Whole(1, INT_MAX, "a whole number of at least 1"));
}

void AddTestOptions(CLI::App& app, Options& options) {
    Group group(app, "For tests");
    group.Add("--cancel-dialog", options.cancelDialog,
              "press Cancel in the options dialog (default: Export)");
    group
        .Add("--cancel-after", "N", options.cancelAfter,
             "press Cancel in the progress bar at its N-th update, counted over the whole export; "
             "it stays pressed until the export ends (default: 0, never)")
        ->check(Whole(0, INT_MAX, "a whole number of at least 0"));
}

void AddPlaces(CLI::App& app, Options& options) {
    Group group(app, "Places");
    CLI::Option* const savedSettings =
        group.Add("--saved-settings", options.savedSettings,
                  "start from the user's saved settings, and save them, as an artist's session "
                  "does: KTAExp2.cfg in hdo-export in the user's configuration directory; -v names "
                  "the file (default: off, from the exporter's defaults)");
    group
        .AddPath("--config-dir", "DIR", options.configDir,
                 "plug-in configuration directory, whose KTAExp2.cfg is read and saved (default: "
                 "a private directory that is gone at the end)")
        ->excludes(savedSettings);
    group.Add("--keep-partial", options.keepPartial,
              "put in place what a run that did not end well has written; the exit status stays "
              "(default: former files stay)");
    group.AddPath("--log", "FILE", options.log,
                  "where the export's log goes, however the run ends (default: <export file>.log, "
                  "put in place with the export)");
    group.AddPath(
        "--plugin-dir", "DIR", options.pluginDirs,
        "plug-in directory searched for the converter; repeatable, in order (default: where "
        "hdo-export stands)");
    group.AddPath("--plugin", "FILE", options.plugin,
                  "the plug-in to load (default: hdoexport beside hdo-export)");
}

void AddBooks(CLI::App& app, Options& options) {
    Group group(app, "Comparing the export with the scene");
    group.AddPath("--receipt", "FILE", options.receipt,
                  "write what the files hold and cost, how far they are from the scene, what was "
                  "lost, and the seconds, as JSON (default: not written)");
    group.AddPath("--report", "FILE", options.report,
                  "write the same as a page for people, in HTML (default: not written)");
    app.add_option_function<float>(
           "--max-error", [&options](float value) { options.maxError = value; },
           "a vertex or node that is further from the scene than X percent of the scene's size, or "
           "turned by more than X degrees, is a failure, exit status 4 (default: it is none)")
        ->type_name("X")
        ->group("Comparing the export with the scene")
        ->check(Real([](float value) { return value >= 0; }, "a finite number of at least 0"));
    group.AddPath("--accept", "FILE", options.accept,
                  "a former receipt: a loss that it does not have is a failure, exit status 4 "
                  "(default: with --strict and a receipt or a report, any loss)");
    app.add_flag("!--no-times", options.times,
                 "leave the seconds out of receipt and report, so that the same export has the "
                 "same ones (default: they stand there)")
        ->group("Comparing the export with the scene");
}

void AddMessages(CLI::App& app, Options& options, std::string& progress) {
    Group group(app, "Messages");
    group
        .Add("--progress", "MODE", progress,
             "progress bar: auto, always or never (default: auto, when standard error is a "
             "terminal)")
        ->check(CLI::Validator(
            [](std::string& text) {
                return kProgressModes.contains(text)
                           ? std::string()
                           : Quoted(text) + ", expected auto, always or never";
            },
            ""));
    group.Add("--json", options.json,
              "print the summary, or what --list lists, as one JSON object, also of a run that "
              "fails (default: off, as text)");
    group.Add("-q,--quiet", options.quiet, "no summary as text (default: one)");
    group.Add("-v,--verbose", options.verbose,
              "name the settings file, and copy the log to standard error, on Windows to a "
              "debugger (default: off)");
    app.set_version_flag("--version", "hdo-export " HDO_VERSION, "print the version and end")
        ->group("Messages");
    app.set_help_flag("-h,--help", "print this help and end")->group("Messages");
}

// What is wrong with options that are well-formed one by one; empty when nothing is.
std::string FaultOf(const Options& options) {
    if (options.scene.empty() && !options.about) {
        return "SCENE: none given, expected a scene file (hdo-export --help explains all options)";
    }
    if (options.start && options.end && options.start->unit == options.end->unit &&
        options.start->count > options.end->count) {
        return "--start: behind --end, expected a time that is not";
    }
    if (options.showDialog && (options.cancelDialog || !NamesOf(options.choices).empty())) {
        return "--show-dialog: excludes " +
               (options.cancelDialog ? "--cancel-dialog" : NamesOf(options.choices).front()) +
               ", which answers the dialog in the person's place";
    }
    if (options.bisect && (options.list || options.about || options.showDialog)) {
        return std::string("--bisect: excludes ") + (options.list    ? "--list"
                                                     : options.about ? "--about"
                                                                     : "--show-dialog");
    }
    if (options.scramble && !options.bisect && !options.saveScene) {
        return "--scramble: changes the scene that is saved, expected --save-scene or --bisect "
               "beside it";
    }
    if (options.list && options.output) {
        return "--list: excludes --output, expected one of them";
    }
    if (options.scene == "-" && !options.output && !options.list && !options.saveScene) {
        return "SCENE: standard input has no name to export by, expected --output beside it";
    }
    if (options.saveScene == "-" && (options.list || options.json)) {
        return "--save-scene: to standard output excludes " +
               std::string(options.list ? "--list" : "--json") + ", which writes there too";
    }
    return {};
}

CommandLine Refusal(std::string error) {
    CommandLine result;
    result.exitStatus = kExitRefused;
    result.error = std::move(error);
    return result;
}

}  // namespace

namespace {

std::string Name(const ExporterOption& option, const ExportOptions& values) {
    const auto* const box = std::get_if<Plinth::UInt8 ExportOptions::*>(&option.setting);
    const bool isOff = box != nullptr && values.**box == 0;
    return (isOff ? "--no-" : "--") + std::string(option.name);
}

bool IsSwitchedOff(const char* name, const ExportOptions& values) {
    return std::ranges::any_of(kExporterOptions, [&](const ExporterOption& option) {
        return name != nullptr && std::string_view(option.name) == name &&
               Name(option, values).starts_with("--no-");
    });
}

}  // namespace

bool IsEnabled(const ExporterOption& option, const ExportOptions& values) {
    return !IsSwitchedOff(option.enabledBy, values);
}

std::string OnCommandLine(const ExportOptions& values) {
    std::string line;
    for (const ExporterOption& option : kExporterOptions) {
        if (IsEnabled(option, values)) {
            line += (line.empty() ? "" : " ") + Name(option, values);
            if (!std::holds_alternative<Plinth::UInt8 ExportOptions::*>(option.setting)) {
                line += " " + std::visit([&](auto setting) { return ValueText(values.*setting); },
                                         option.setting);
            }
        }
    }
    return line;
}

std::vector<std::string> NamesOf(const DialogChoices& choices) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < choices.isChosen.size(); ++i) {
        if (choices.isChosen[i]) {
            names.push_back(Name(kExporterOptions[i], choices.values));
        }
    }
    return names;
}

CommandLine ParseCommandLine(const std::vector<std::string>& arguments, std::size_t columns) {
    Options options;
    std::string progress = "auto";
    CLI::App app(kDescription, "hdo-export");
    app.footer(kFooter);
    kta::WrapHelp(app, columns);
    // A slash begins a path on every system here.
    app.allow_windows_style_options(false);
    AddScene(app, options);
    AddImport(app, options);
    const std::vector<CLI::Option*> dialogChoices = AddDialogChoices(app, options);
    AddDialogs(app, options);
    AddPlaces(app, options);
    AddBooks(app, options);
    AddMessages(app, options, progress);
    AddSearch(app, options);
    AddTestOptions(app, options);

    CommandLine result;
    try {
        // CLI11 takes the arguments from the back.
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::CallForHelp&) {
        result.out = app.help();
        result.out.pop_back();
        return result;
    } catch (const CLI::CallForVersion& version) {
        result.out = version.what();
        return result;
    } catch (const CLI::ExtrasError&) {
        return Refusal(app.remaining().front() + ": not expected, expected options and one SCENE");
    } catch (const CLI::ParseError& error) {
        return Refusal(error.what());
    }
    for (std::size_t i = 0; i < dialogChoices.size(); ++i) {
        options.choices.isChosen[i] = dialogChoices[i]->count() > 0;
    }
    options.selectedOnly = options.selectedOnly || !options.select.empty();
    options.progress = kProgressModes.at(progress);
    if (const std::string fault = FaultOf(options); !fault.empty()) {
        return Refusal(fault);
    }
    result.options = std::move(options);
    return result;
}

}  // namespace maxhost::app
