#include "host/app/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <system_error>

#include "host/app/batch.h"
#include "host/app/exit_status.h"
#include "host/app/loaded_scene.h"
#include "host/app/option_table.h"
#include "host/app/places.h"
#include "host/app/presets.h"
#include "kta/completion.h"
#include "kta/help.h"
#include "kta/manual_page.h"
#include "kta/text.h"

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
    "Exit status: 0 done, also when a dialog was cancelled; 1 the exporter failed, or one of\n"
    "several exports; 2 bad usage, a scene that cannot be read or holds nothing, or a choice that\n"
    "is refused; 3 the plug-in did not load; 4 the export ran, but a check of what was written\n"
    "found a fault, or the disk was full, or with --strict there was a warning, or what\n"
    "--max-error or --accept allow was passed;\n"
    "5 cancelled in the progress bar; 130 and 143 interrupted (Ctrl-C, SIGTERM).\n"
    "\n"
    "During the export an interrupt presses Cancel in the progress bar; a second one ends the\n"
    "program at once.\n";

const kta::Manual& ManualOfExport() {
    static const kta::Manual manual = {
        "export scenes and models to KTA files without 3ds Max",
        {{"ENVIRONMENT",
          {{"COLUMNS",
            "The width that the help is wrapped to, where it is set; else the "
            "terminal's."},
           {"NO_COLOR, TERM", "No colours where NO_COLOR is set and not empty, or TERM is dumb."},
           {"TMPDIR", "Where batches, dry runs and searches keep what they need meanwhile."},
           {"XDG_CONFIG_HOME",
            "The user's configuration directory, where --saved-settings keeps what it saves; "
            "~/.config where it is not set."}}},
         {"FILES",
          {{"FILEtemp1, FILEtemp2",
            "The actor and the motion, for the export file FILE; kta(1) "
            "reads them."},
           {"FILE", "What the converter library makes of them."},
           {"FILE.log", "The exporter's log."},
           {"FILE.glb", "A preview in glTF."},
           {"FILE.index.json", "What a batch compares to leave an export as it is."},
           {"SCENE.hdo.json", "Options of the scene SCENE, which are taken without being named."},
           {"~/.config/hdo-export/KTAExp2.cfg", "The settings of --saved-settings."}}},
         {"EXAMPLES",
          {{"hdo-export figure.maxscene.json",
            "Exports the scene to figure.hdotemp1 and figure.hdotemp2 beside it."},
           {"hdo-export --sample-animation --sample-rate 1 -o out/walk.hdo walk.fbx",
            "Exports a model with a key in every frame."},
           {"hdo-export --list walk.fbx", "Lists what is in the model."},
           {"hdo-export --strict --receipt walk.receipt.json --max-error 0.1 walk.fbx",
            "Exports for a build, which fails where anything is lost or off by more than a "
            "thousandth of the scene's size."}}},
         {"SEE ALSO", {{"", "kta(1)"}}}}};
    return manual;
}

// How the files of the options are named, for completion.
void OfferFileNames(CLI::App& app) {
    kta::OfferFiles(app.get_option("SCENE"), SceneEndings());
    const std::pair<const char*, const char*> endings[] = {
        {"--output", ".hdo"},      {"--save-scene", ".maxscene.json"},
        {"--log", ".log"},         {"--receipt", ".json"},
        {"--accept", ".json"},     {"--report", ".html"},
        {"--save-preset", ".json"}};
    kta::OfferFiles(app.get_option("--preset"), {".json", ".cfg"});
    for (const auto& [option, ending] : endings) {
        kta::OfferFiles(app.get_option(option), {ending});
    }
}

// With the file that it stands in.
std::string WithOrigin(const Options& options, const std::string& name) {
    const std::string option = name.substr(name.starts_with("--no-") ? 5 : 2);
    const auto given = std::ranges::find(options.given, option, &GivenOption::name);
    const bool isOfFile = given != options.given.end() && given->origin != Origin::commandLine;
    return !isOfFile ? name
                     : name + " of " +
                           (given->origin == Origin::preset
                                ? *options.preset
                                : *options.sidecarFile + " (--no-sidecar leaves it out)");
}

std::string FaultOfAllAnimations(const Options& options) {
    // A batch asks for one after the other.
    const bool isDryRun = options.dryRun && !options.clip && options.batch.items.empty();
    const std::pair<bool, const char*> others[] = {{options.animation.has_value(), "--animation"},
                                                   {options.bisect, "--bisect"},
                                                   {options.about, "--about"},
                                                   {options.saveScene.has_value(), "--save-scene"},
                                                   {isDryRun, "--dry-run"}};
    if (options.clip && !options.allAnimations) {
        return "--clip: expected --all-animations beside it";
    }
    for (const auto& [isGiven, name] : others) {
        if (options.allAnimations && isGiven) {
            return "--all-animations: excludes " + WithOrigin(options, name);
        }
    }
    return {};
}

std::string FaultOfDialog(const Options& options) {
    if (options.showDialog && (options.cancelDialog || !NamesOf(options.choices).empty())) {
        return "--show-dialog: excludes " +
               (options.cancelDialog ? "--cancel-dialog"
                                     : WithOrigin(options, NamesOf(options.choices).front())) +
               ", which answers the dialog in the person's place";
    }
    if (options.presetSettings && HasUnshown(*options.presetSettings) &&
        (options.savedSettings || options.configDir)) {
        return "--preset: " + *options.preset +
               " has choices without a control of the dialog (bytes 0, 2 and 12 to 15), which "
               "cannot be made in saved settings; expected it without --saved-settings and "
               "--config-dir";
    }
    return "";
}

// Of what is read from standard input and written to standard output.
std::string FaultOfFiles(const Options& options) {
    const std::pair<const char*, const std::optional<std::string>*> replacedWhole[] = {
        {"--output", &options.output},
        {"--log", &options.log},
        {"--receipt", &options.receipt},
        {"--report", &options.report},
        {"--save-preset", &options.savePreset}};
    for (const auto& [option, file] : replacedWhole) {
        if (*file == "-") {
            return std::string(option) + ": \"-\", expected the name of a file";
        }
    }
    if (options.list && options.output && options.batch.items.empty()) {
        return "--list: excludes --output, expected one of them";
    }
    if (options.scene == "-" && !options.output && !options.list && !options.saveScene) {
        return "SCENE: standard input has no name to export by, expected --output beside it";
    }
    if (options.saveScene == "-" && (options.list || options.json)) {
        return "--save-scene: to standard output excludes " +
               std::string(options.list ? "--list" : "--json") + ", which writes there too";
    }
    return "";
}

// What is wrong with options that are well-formed one by one; empty when nothing is.
std::string FaultOf(const Options& options) {
    if (options.scene.empty() && !options.about && !options.savePreset &&
        options.batch.items.empty()) {
        return "SCENE: none given, expected a scene file (hdo-export --help explains all options)";
    }
    if (options.start && options.end && options.start->unit == options.end->unit &&
        options.start->count > options.end->count) {
        return "--start: behind --end, expected a time that is not";
    }
    if (std::string fault = FaultOfDialog(options); !fault.empty()) {
        return fault;
    }
    if (std::string fault = FaultOfAllAnimations(options); !fault.empty()) {
        return fault;
    }
    if (options.bisect && (options.list || options.about || options.showDialog)) {
        return std::string("--bisect: excludes ") + (options.list    ? "--list"
                                                     : options.about ? "--about"
                                                                     : "--show-dialog");
    }
    if (options.dryRun && (options.bisect || options.about || options.saveScene == "-")) {
        return std::string("--dry-run: excludes ") + (options.bisect  ? "--bisect"
                                                      : options.about ? "--about"
                                                                      : "--save-scene -");
    }
    if (options.scramble && !options.bisect && !options.saveScene) {
        return "--scramble: changes the scene that is saved, expected --save-scene or --bisect "
               "beside it";
    }
    if (std::string fault = FaultOfFiles(options); !fault.empty()) {
        return fault;
    }
    return FaultOfBatch(options);
}

CommandLine Refusal(std::string error) {
    CommandLine result;
    result.exitStatus = kExitRefused;
    result.error = std::move(error);
    return result;
}

}  // namespace

namespace {

// Of the options that presets may hold, those that were given.
std::vector<GivenOption> GivenTo(const CLI::App& app) {
    std::vector<GivenOption> given;
    for (const CLI::Option* option : app.get_options()) {
        if (option->get_configurable() && option->count() > 0) {
            given.push_back({option->get_lnames().at(0), option->results(), Origin::commandLine});
        }
    }
    return given;
}

std::string UnexpectedWord(const CLI::App& app) {
    const std::string word = app.remaining().front();
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    const std::string nearest = word.starts_with("--")
                                    ? kta::NearestWord(word.substr(0, word.find('=')), names)
                                    : std::string();
    return word + ": not expected, expected options and one SCENE" +
           (nearest.empty() ? "" : "; did you mean " + nearest + "?");
}

// The command line by itself, checked option by option.
CommandLine ParseWords(const std::vector<std::string>& arguments, std::size_t columns) {
    Options options;
    CLI::App app(kDescription, "hdo-export");
    app.footer(kFooter);
    kta::WrapHelp(app, columns);
    // A slash begins a path on every system here.
    app.allow_windows_style_options(false);
    AddOptions(app, options);
    kta::AddGenerate(app, ManualOfExport(), "Messages", OfferFileNames);

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
        return Refusal(UnexpectedWord(app));
    } catch (const CLI::ParseError& error) {
        return Refusal(error.what());
    }
    options.given = GivenTo(app);
    options.selectedOnly = options.selectedOnly || !options.select.empty();
    options.passedOn = PassedOn(app);
    result.options = std::move(options);
    return result;
}

// As words of a command line.
void AddWords(const GivenOption& given, std::vector<std::string>& words) {
    for (const std::string& text : given.texts) {
        // An empty text behind = would take the next word.
        words.push_back("--" + given.name + (text.empty() ? "" : "=" + text));
        if (text.empty()) {
            words.emplace_back();
        }
    }
}

// With the options of the preset and the sidecar file, where there are any. Throws Failure.
CommandLine WithFiles(CommandLine own, std::vector<std::string> arguments, std::size_t columns) {
    std::vector<std::vector<GivenOption>> layers;
    std::optional<ExportOptions> settings;
    std::error_code error;
    if (own.options->preset) {
        const std::filesystem::file_status status =
            std::filesystem::status(*own.options->preset, error);
        if (!own.options->batch.items.empty() && std::filesystem::is_other(status)) {
            throw Failure(kExitRefused, *own.options->preset,
                          "is not a regular file, expected a preset that each scene's export can "
                          "read");
        }
        PresetFile preset = ReadPreset(*own.options->preset, Origin::preset);
        layers.push_back(std::move(preset.options));
        settings = preset.settings;
    }
    const std::string sidecar = SidecarPlace(*own.options).string();
    const bool hasSidecar = own.options->sidecar && !own.options->about && !sidecar.empty() &&
                            std::filesystem::exists(sidecar, error);
    if (hasSidecar) {
        layers.push_back(ReadPreset(sidecar, Origin::sidecar).options);
    }
    if (layers.empty()) {
        return own;
    }
    layers.push_back(own.options->given);
    std::vector<GivenOption> given = Merged(layers);
    std::vector<std::string> words;
    for (const GivenOption& option : given) {
        if (option.origin != Origin::commandLine) {
            AddWords(option, words);
        }
    }
    arguments.insert(arguments.begin(), words.begin(), words.end());
    CommandLine merged = ParseWords(arguments, columns);
    if (merged.options) {
        merged.options->given = std::move(given);
        merged.options->passedOn = std::move(own.options->passedOn);
        merged.options->presetSettings = settings;
        if (hasSidecar) {
            merged.options->sidecarFile = sidecar;
        }
    }
    return merged;
}

}  // namespace

CommandLine ParseCommandLine(const std::vector<std::string>& arguments, std::size_t columns) {
    CommandLine result = ParseWords(arguments, columns);
    if (!result.options) {
        return result;
    }
    try {
        result = WithFiles(std::move(result), arguments, columns);
    } catch (const Failure& failure) {
        return Refusal(failure.Subject() + ": " + failure.what());
    }
    if (!result.options) {
        return result;
    }
    if (const std::string fault = FaultOf(*result.options); !fault.empty()) {
        return Refusal(fault);
    }
    return result;
}

}  // namespace maxhost::app
