#include "host/app/option_table.h"

#include <climits>
#include <iterator>
#include <set>
#include <string>

#include "host/app/option_group.h"
#include "kta/help.h"

namespace maxhost::app {
namespace {

constexpr const char* kMessageGroup = "Messages";
constexpr const char* kBatchGroup = "Many scenes";

constexpr float kGreatestThreshold = 0.9999f;  // of the dialog's spinner

void AddScene(CLI::App& app, Options& options) {
    app.add_option("SCENE", options.scene,
                   "the scene to export; - is a scene description on standard input");
    Group group(app, "Options");
    group.AddPath("-o,--output", "FILE", options.output,
                  "export file, which the converter makes (default: SCENE's name with .hdo; "
                  "x.maxscene.json gives x.hdo); FILEtemp1, FILEtemp2, FILE.log\n"
                  "and FILE.glb, a preview, appear beside it");
    group
        .Add("--selected", options.selectedOnly,
             "export the selection only; an empty one is refused (default: the whole scene)")
        ->configurable();
    group
        .Add("--select", "NAME", options.select,
             "select all nodes of that name and export the selection; repeatable, in order "
             "(default: the scene's own selection)")
        ->configurable();
    group
        .Add("--allow-empty", options.allowEmpty,
             "a model without any node, or an empty selection, is no error (default: off)")
        ->configurable();
    group
        .Add(
            "--strict", options.strict,
            "a warning about the scene is a failure, exit status 4, and nothing is written; beside "
            "--receipt, --report or --max-error so is each loss of the export (default: off)")
        ->configurable();
    group.Add("--dry-run", options.dryRun,
              "write nothing: tell what the run would write, with sizes, its warnings and its "
              "losses; the exit status is the run's (default: off)");
    group
        .Add("--animation", "NAME|N", options.animation,
             "which animation of a file with several (default: the first)")
        ->configurable();
    group.Add(
        "--all-animations", options.allAnimations,
        "export each of the model's animations, to FILE's name with -NAME behind it "
        "(robot-Walk.hdo); the exit status is 1 when one of the exports failed (default: off)");
}

void AddPresets(CLI::App& app, Options& options) {
    Group group(app, "Presets");
    group.AddPath("--preset", "FILE", options.preset,
                  "take options from a settings file of the exporter (KTAExp2.cfg, 24 bytes) or a "
                  "JSON object of their names, as in {\"sample-rate\": 3} (default: none)");
    group.AddPath("--save-preset", "FILE", options.savePreset,
                  "write the options of this run for --preset: a settings file where FILE ends in "
                  ".cfg, else JSON; needs no SCENE (default: not written)");
    app.add_flag("!--no-sidecar", options.sidecar,
                 "leave out the options that stand beside the scene in SCENE's name with .hdo.json "
                 "(default: they count more than a preset's, less than the command line's)")
        ->group("Presets");
}

void AddImport(CLI::App& app, Options& options) {
    Group group(app, "The scene");
    group
        .Add("--scale", "X", options.scale,
             "multiply the scene's lengths (vertices, translations, keys) once, at import "
             "(default: 1, one unit of the file is one unit of the scene)")
        ->check(Real([](float value) { return value > 0; }, "a finite number above 0"))
        ->configurable();
    group
        .AddChoice("--unit", "UNIT", options.unit, kUnits, "mm, cm, m, in or ft",
                   "convert lengths so that one unit of the scene is a mm, cm, m, in or ft; a "
                   "model that does not say its unit is refused (default: the file's unit stays)")
        ->configurable();
    group
        .AddAxis("--up", options.up,
                 "which way is up in a model file that does not say it, x, y or z (default: y); "
                 "docs/hdo-export.md has the formats that say it")
        ->configurable();
    group
        .Add("--frame-rate", "N", options.frameRate,
             "frames a second; ticks a frame follow, 4800 / N (default: the scene's)")
        ->check(Whole(1, 4800, "a whole number from 1 to 4800"))
        ->configurable();
    group
        .AddMoment("--start", options.start,
                   "where the animation range begins: ticks (480), frames (3f) or seconds (0.1s) "
                   "(default: the scene's)")
        ->configurable();
    group.AddMoment("--end", options.end, "where it ends (default: the scene's)")->configurable();
    group.AddPath("--save-scene", "FILE", options.saveScene,
                  "write the loaded scene as a scene description, - to standard output; without -o "
                  "nothing is exported (default: not written)");
    group.Add("--list", options.list,
              "list what is in the scene: nodes, materials, animations, cameras, lights, skins and "
              "morphs; nothing is exported (default: "
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

// The options of kExporterOptions, in order.
void AddDialogChoices(CLI::App& app, Options& options) {
    DialogChoiceAdder adder(app, options.choices.values);
    for (std::size_t i = 0; i < std::size(kExporterOptions); ++i) {
        bool& isChosen = options.choices.isChosen[i];
        adder.Add(kExporterOptions[i])
            ->each([&isChosen](const std::string&) { isChosen = true; })
            ->configurable();
    }
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
    group.AddPath("--textures", "DIR", options.textures,
                  "where textures go that stand inside a model's file; files of their names in DIR "
                  "are replaced; with --batch each scene has a directory of its own in DIR "
                  "(default: beside the export file, where none is that another one made)");
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
        ->check(Real([](float value) { return value >= 0; }, "a finite number of at least 0"))
        ->configurable();
    group.AddPath("--accept", "FILE", options.accept,
                  "a former receipt: a loss that it does not have is a failure, exit status 4 "
                  "(default: with --strict and a receipt or a report, any loss)");
    app.add_flag("!--no-times", options.times,
                 "leave the seconds out of receipt and report, so that the same export has the "
                 "same ones (default: they stand there)")
        ->group("Comparing the export with the scene");
}

void AddBatch(CLI::App& app, Options& options) {
    Group group(app, kBatchGroup);
    BatchOptions& batch = options.batch;
    const auto whole = [&](const char* names, const char* valueName, std::optional<int>& value,
                           const char* meaning) {
        group.Add(names, valueName, value, meaning)
            ->check(Whole(1, INT_MAX, "a whole number of at least 1"));
    };
    group
        .AddPath("--batch", "LIST|DIR|PATTERN", batch.items,
                 "export many scenes, each in a process of its own: those that a list names, one a "
                 "line (- is a list on standard input), those in a directory and below, those that "
                 "a quoted pattern matches (** for any directories), in any mixture. -o then names "
                 "a directory, in which subdirectories are kept (default: beside each scene); "
                 "--list lists the scenes, or with --all-animations the export of each animation; "
                 "--json reports each")
        ->allow_extra_args(true)
        ->expected(1, INT_MAX);
    whole("-j,--jobs", "N", batch.jobs, "as many exports at once (default: the number of cores)");
    app.add_option_function<float>(
           "--timeout", [&batch](float seconds) { batch.timeout = seconds; },
           "end an export that takes longer, which has failed then (default: no limit)")
        ->type_name("SECONDS")
        ->group(kBatchGroup)
        ->check(Real([](float value) { return value > 0; }, "a finite number above 0"));
    whole("--memory", "MB", batch.memory,
          "end an export that takes more memory, which has failed then (default: no limit)");
    group.Add("--force", batch.force,
              "export also what nothing has changed for (default: a scene is left as it is when "
              "the files it is read from, options, program and what was exported are the same)");
    group.Add("--count", batch.count,
              "print the number of scenes; nothing is exported (default: off)");
    whole("--array-index", "I", batch.arrayIndex,
          "export the I-th scene alone, counted from 1: for a job array (default: all)");
    whole("--array-size", "N", batch.arraySize,
          "beside --array-index, for fewer jobs than scenes: every N-th scene from the I-th on "
          "(default: the number of scenes)");
}

// What a batch tells the exports that it starts. Options without a group stand in no help.
void AddOptionsOfJobs(CLI::App& app, Options& options) {
    app.add_option("--clip", options.clip, "one of --all-animations, by its position")->group("");
    app.add_flag("--makes-directories", options.makesDirectories,
                 "of a dry run: directories that are not there would be made")
        ->group("");
}

void AddMessages(CLI::App& app, Options& options) {
    Group group(app, kMessageGroup);
    group.AddChoice("--progress", "MODE", options.progress,
                    {{"auto", ProgressMode::automatic},
                     {"always", ProgressMode::always},
                     {"never", ProgressMode::never}},
                    "auto, always or never",
                    "progress bar: auto, always or never (default: auto, when standard error is a "
                    "terminal)");
    kta::AddColorOption(app, options.color)->group("Messages");
    group.Add("--json", options.json,
              "print the summary, or what --list lists, as one JSON object, also of a run that "
              "fails (default: off, as text)");
    group.Add("-q,--quiet", options.quiet, "no summary as text (default: one)");
    group.Add("-v,--verbose", options.verbose,
              "name the settings file, and copy the log to standard error, on Windows to a "
              "debugger (default: off)");
    app.set_version_flag("--version", "hdo-export " HDO_VERSION, "print the version and end")
        ->group(kMessageGroup);
    app.set_help_flag("-h,--help", "print this help and end")->group(kMessageGroup);
}

}  // namespace

void AddOptions(CLI::App& app, Options& options) {
    app.option_defaults()->configurable(false);
    AddScene(app, options);
    AddPresets(app, options);
    AddImport(app, options);
    AddDialogChoices(app, options);
    AddDialogs(app, options);
    AddPlaces(app, options);
    AddBooks(app, options);
    AddBatch(app, options);
    AddOptionsOfJobs(app, options);
    AddMessages(app, options);
    AddSearch(app, options);
    AddTestOptions(app, options);
}

namespace {

// Of a switch: --name, --no-name, or --name=false where it has no such name.
std::string WordOf(const CLI::Option& option, bool isOn) {
    if (!isOn && !option.get_fnames().empty()) {
        return "--" + option.get_fnames().front();
    }
    return "--" + option.get_lnames().front() + (isOn ? "" : "=false");
}

}  // namespace

std::vector<std::string> PassedOn(const CLI::App& app) {
    std::vector<std::string> words;
    // What a batch itself does, or tells each export in words of its own.
    static const std::set<std::string> kOwn = {"output",   "list",    "all-animations",
                                               "textures", "dry-run", "clip"};
    for (const CLI::Option* const option : app.get_options()) {
        const std::string group = option->get_group();
        if (option->get_positional() || group == kBatchGroup || group == kMessageGroup ||
            kOwn.contains(option->get_lnames().front())) {
            continue;
        }
        for (const std::string& text : option->results()) {
            if (option->get_items_expected_max() > 0) {
                words.push_back("--" + option->get_lnames().front() +
                                (text.empty() ? "" : "=" + text));
                // An empty text behind = would take the next word.
                if (text.empty()) {
                    words.emplace_back();
                }
            } else {
                words.push_back(WordOf(*option, CLI::detail::to_flag_value(text) > 0));
            }
        }
    }
    return words;
}

}  // namespace maxhost::app
