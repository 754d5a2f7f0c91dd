#include "host/app/options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/app/exit_status.h"
#include "tests/unit/host/app/support.h"

namespace maxhost::app {
namespace {

using Arguments = std::vector<std::string>;

Options Parse(Arguments arguments) {
    arguments.emplace_back("scene.fbx");
    const CommandLine line = ParseCommandLine(arguments);
    EXPECT_TRUE(line.options) << line.error;
    return line.options.value_or(Options());
}

std::string ErrorOf(const Arguments& arguments) {
    const CommandLine line = ParseCommandLine(arguments);
    EXPECT_FALSE(line.options);
    EXPECT_EQ(line.exitStatus, kExitRefused);
    EXPECT_EQ(line.out, "");
    EXPECT_EQ(line.error.find('\n'), std::string::npos);
    return line.error;
}

TEST(OptionsTest, DefaultsAreThoseOfTheHelp) {
    const Options options = Parse({});
    EXPECT_EQ(options.scene, "scene.fbx");
    EXPECT_FALSE(options.output);
    EXPECT_FALSE(options.selectedOnly);
    EXPECT_TRUE(options.select.empty());
    EXPECT_FALSE(options.allowEmpty);
    EXPECT_FALSE(options.strict);
    EXPECT_TRUE(NamesOf(options.choices).empty());
    EXPECT_FALSE(options.defaults);
    EXPECT_FALSE(options.cancelDialog);
    EXPECT_EQ(options.cancelAfter, 0);
    EXPECT_FALSE(options.configDir);
    EXPECT_TRUE(options.pluginDirs.empty());
    EXPECT_FALSE(options.plugin);
    EXPECT_FALSE(options.saveScene);
    EXPECT_FALSE(options.list);
    EXPECT_FALSE(options.animation);
    EXPECT_EQ(options.scale, 1);
    EXPECT_FALSE(options.frameRate);
    EXPECT_FALSE(options.start);
    EXPECT_FALSE(options.end);
    EXPECT_FALSE(options.about);
    EXPECT_FALSE(options.showDialog);
    EXPECT_EQ(options.progress, ProgressMode::automatic);
    EXPECT_FALSE(options.quiet);
    EXPECT_FALSE(options.verbose);
}

TEST(OptionsTest, EveryOptionIsStored) {
    const Options options = Parse(
        {"-o",           "out.hdo", "--selected", "--defaults", "--cancel-after", "3",
         "--config-dir", "c",       "--plugin",   "p.so",       "--save-scene",   "s.maxscene.json",
         "--animation",  "walk",    "--scale",    "2.5",        "--frame-rate",   "25",
         "--start",      "-160",    "--end",      "4800",       "--about",        "--show-dialog",
         "--progress",   "never",   "-v"});
    EXPECT_EQ(options.output, "out.hdo");
    EXPECT_TRUE(options.selectedOnly);
    EXPECT_TRUE(options.defaults);
    EXPECT_TRUE(Parse({"--cancel-dialog"}).cancelDialog);
    EXPECT_EQ(options.cancelAfter, 3);
    EXPECT_EQ(options.configDir, "c");
    EXPECT_EQ(options.plugin, "p.so");
    EXPECT_EQ(options.saveScene, "s.maxscene.json");
    EXPECT_EQ(options.animation, "walk");
    EXPECT_EQ(options.scale, 2.5f);
    EXPECT_EQ(options.frameRate, 25);
    EXPECT_EQ(options.start.value().count, -160);
    EXPECT_EQ(options.end.value().count, 4800);
    EXPECT_TRUE(options.about);
    EXPECT_TRUE(options.showDialog);
    EXPECT_EQ(options.progress, ProgressMode::never);
    EXPECT_TRUE(options.verbose);
    EXPECT_TRUE(Parse({"--list"}).list);
    EXPECT_TRUE(Parse({"-q"}).quiet);
    EXPECT_TRUE(Parse({"--select", "a"}).selectedOnly);
    EXPECT_TRUE(Parse({"--allow-empty"}).allowEmpty);
    EXPECT_TRUE(Parse({"--strict"}).strict);
    EXPECT_TRUE(Parse({"--bisect"}).bisect);
    EXPECT_EQ(Parse({"--bisect"}).tries, 1000);
    EXPECT_EQ(Parse({"--tries", "5"}).tries, 5);
    EXPECT_EQ(Parse({"--try-seconds", "7"}).trySeconds, 7);
    EXPECT_TRUE(Parse({"--bisect", "--scramble"}).scramble);
    EXPECT_TRUE(Parse({"--save-scene", "x", "--scramble"}).scramble);
    EXPECT_EQ(Parse({"--output", "x"}).output, "x");
    EXPECT_EQ(Parse({"--progress", "always"}).progress, ProgressMode::always);
    EXPECT_EQ(Parse({"--progress", "auto"}).progress, ProgressMode::automatic);
}

TEST(OptionsTest, RepeatableOptionsKeepTheirOrder) {
    const Options options = Parse({"--select", "b", "--plugin-dir", "y", "--select", "a",
                                   "--plugin-dir", "x", "--select", "-o"});
    EXPECT_EQ(options.select, (Arguments{"b", "a", "-o"}));
    EXPECT_EQ(options.pluginDirs, (Arguments{"y", "x"}));
    EXPECT_EQ(options.scene, "scene.fbx");
}

TEST(OptionsTest, DialogChoicesAreStored) {
    const DialogChoices on =
        Parse({"--export-hidden", "--non-renderable", "--morphers", "--optimize-skin",
               "--weight-threshold", "0.25", "--motions-for-hidden", "--sample-animation",
               "--sample-rate", "5"})
            .choices;
    EXPECT_EQ(Chosen(on, &ExportOptions::exportHidden), true);
    EXPECT_EQ(Chosen(on, &ExportOptions::nonRenderable), true);
    EXPECT_EQ(Chosen(on, &ExportOptions::morphers), true);
    EXPECT_EQ(Chosen(on, &ExportOptions::optimizeSkin), true);
    EXPECT_EQ(Chosen(on, &ExportOptions::weightThreshold), 0.25f);
    EXPECT_EQ(Chosen(on, &ExportOptions::motionsForHidden), true);
    EXPECT_EQ(Chosen(on, &ExportOptions::sampleAnimation), true);
    EXPECT_EQ(Chosen(on, &ExportOptions::sampleRate), 5);
    EXPECT_EQ(NamesOf(on),
              (Arguments{"--export-hidden", "--non-renderable", "--morphers", "--optimize-skin",
                         "--weight-threshold", "--motions-for-hidden", "--sample-animation",
                         "--sample-rate"}));
}

TEST(OptionsTest, DialogChoicesHaveNegativeForms) {
    const DialogChoices off =
        Parse({"--no-export-hidden", "--no-non-renderable", "--no-morphers", "--no-optimize-skin",
               "--no-motions-for-hidden", "--no-sample-animation"})
            .choices;
    EXPECT_EQ(Chosen(off, &ExportOptions::exportHidden), false);
    EXPECT_EQ(Chosen(off, &ExportOptions::nonRenderable), false);
    EXPECT_EQ(Chosen(off, &ExportOptions::morphers), false);
    EXPECT_EQ(Chosen(off, &ExportOptions::optimizeSkin), false);
    EXPECT_FALSE(Chosen(off, &ExportOptions::weightThreshold));
    EXPECT_EQ(Chosen(off, &ExportOptions::motionsForHidden), false);
    EXPECT_EQ(Chosen(off, &ExportOptions::sampleAnimation), false);
    EXPECT_FALSE(Chosen(off, &ExportOptions::sampleRate));
    EXPECT_EQ(NamesOf(off), (Arguments{"--no-export-hidden", "--no-non-renderable", "--no-morphers",
                                       "--no-optimize-skin", "--no-motions-for-hidden",
                                       "--no-sample-animation"}));
}

TEST(OptionsTest, TheLastOfTwoFormsCounts) {
    EXPECT_EQ(Chosen(Parse({"--morphers", "--no-morphers"}).choices, &ExportOptions::morphers),
              false);
    EXPECT_EQ(Chosen(Parse({"--no-morphers", "--morphers"}).choices, &ExportOptions::morphers),
              true);
}

TEST(OptionsTest, BoundsOfNumbersAreAccepted) {
    EXPECT_EQ(Chosen(Parse({"--weight-threshold", "0"}).choices, &ExportOptions::weightThreshold),
              0.0f);
    EXPECT_EQ(
        Chosen(Parse({"--weight-threshold", "0.9999"}).choices, &ExportOptions::weightThreshold),
        0.9999f);
    EXPECT_EQ(Chosen(Parse({"--sample-rate", "1"}).choices, &ExportOptions::sampleRate), 1);
    EXPECT_EQ(Chosen(Parse({"--sample-rate", "0"}).choices, &ExportOptions::sampleRate), 0)
        << "for the dialog to refuse";
    EXPECT_EQ(Chosen(Parse({"--sample-rate", "-5"}).choices, &ExportOptions::sampleRate), -5);
    EXPECT_EQ(Parse({}).up, std::nullopt);
    EXPECT_EQ(Parse({"--up", "x"}).up, 0);
    EXPECT_EQ(Parse({"--up", "y"}).up, 1);
    EXPECT_EQ(Parse({"--up", "z"}).up, 2);
    EXPECT_EQ(Parse({"--frame-rate", "1"}).frameRate, 1);
    EXPECT_EQ(Parse({"--frame-rate", "4800"}).frameRate, 4800);
    EXPECT_EQ(Parse({"--start", "-2147483648", "--end", "2147483647"}).end->count, 2147483647);
    EXPECT_EQ(Parse({"--start", "5", "--end", "5"}).start->count, 5);
}

TEST(OptionsTest, BadNumbersAreRefused) {
    for (const char* const value : {"0", "-1", "nan", "inf", "1e39", "x", "2x", ""}) {
        EXPECT_EQ(ErrorOf({"x", "--scale", value}),
                  "--scale: \"" + std::string(value) + "\", expected a finite number above 0");
    }
    for (const char* const value : {"-0.1", "1", "nan"}) {
        EXPECT_EQ(ErrorOf({"x", "--weight-threshold", value}),
                  "--weight-threshold: \"" + std::string(value) +
                      "\", expected a number from 0 to 0.9999");
    }
    for (const char* const value : {"1.5", "99999999999", "3x", "abc", ""}) {
        EXPECT_EQ(ErrorOf({"x", "--sample-rate", value}),
                  "--sample-rate: \"" + std::string(value) +
                      "\", expected a whole number that fits 32 bits");
    }
    EXPECT_EQ(ErrorOf({"x", "--tries", "0"}),
              "--tries: \"0\", expected a whole number of at least 1");
    EXPECT_EQ(ErrorOf({"x", "--bisect", "--list"}), "--bisect: excludes --list");
    for (const std::string option :
         {"--output", "--log", "--receipt", "--report", "--save-preset"}) {
        EXPECT_EQ(ErrorOf({"x", option.c_str(), "-"}),
                  option + ": \"-\", expected the name of a file");
    }
    EXPECT_EQ(ErrorOf({"x", "--all-animations", "--dry-run"}),
              "--all-animations: excludes --dry-run");
    EXPECT_EQ(ErrorOf({"--batch", "x", "--all-animations", "--log", "l"}),
              "--log: is of one scene alone, expected no --batch beside it");
    EXPECT_EQ(ErrorOf({"x", "--scramble"}),
              "--scramble: changes the scene that is saved, expected --save-scene or --bisect "
              "beside it");
    EXPECT_EQ(ErrorOf({"x", "--up", "w"}), "--up: \"w\", expected x, y or z");
    EXPECT_EQ(ErrorOf({"x", "--up", "xy"}), "--up: \"xy\", expected x, y or z");
    EXPECT_EQ(ErrorOf({"x", "--frame-rate", "0"}),
              "--frame-rate: \"0\", expected a whole number from 1 to 4800");
    EXPECT_EQ(ErrorOf({"x", "--frame-rate", "4801"}),
              "--frame-rate: \"4801\", expected a whole number from 1 to 4800");
    EXPECT_EQ(ErrorOf({"x", "--cancel-after", "-1"}),
              "--cancel-after: \"-1\", expected a whole number of at least 0");
    for (const char* const value : {"2147483648", "1.5", "3x", "f", "", "1ff", "nans", "1e400s"}) {
        EXPECT_EQ(ErrorOf({"x", "--end", value}),
                  "--end: \"" + std::string(value) +
                      "\", expected whole ticks that fit 32 bits (480), frames (3f) or seconds "
                      "(0.1s)");
    }
    EXPECT_EQ(ErrorOf({"x", "--start", "6", "--end", "5"}),
              "--start: behind --end, expected a time that is not");
}

TEST(OptionsTest, BadUsageIsRefused) {
    EXPECT_EQ(ErrorOf({}),
              "SCENE: none given, expected a scene file (hdo-export --help explains all options)");
    EXPECT_EQ(ErrorOf({""}),
              "SCENE: none given, expected a scene file (hdo-export --help explains all options)");
    EXPECT_EQ(ErrorOf({"a", "b"}), "b: not expected, expected options and one SCENE");
    EXPECT_EQ(ErrorOf({"a", "--bogus"}), "--bogus: not expected, expected options and one SCENE");
    EXPECT_EQ(ErrorOf({"a", "--progress", "maybe"}),
              "--progress: \"maybe\", expected auto, always or never");
    EXPECT_EQ(ErrorOf({"a", "--progress", "0"}),
              "--progress: \"0\", expected auto, always or never");
    EXPECT_TRUE(Parse({"-q", "-v"}).quiet && Parse({"-q", "-v"}).verbose);
    EXPECT_EQ(ErrorOf({"a", "--list", "-o", "b"}),
              "--list: excludes --output, expected one of them");
    EXPECT_THAT(ErrorOf({"a", "-o"}), testing::HasSubstr("--output"));
    EXPECT_THAT(ErrorOf({"a", "-o", "b", "-o", "c"}), testing::HasSubstr("--output"));
}

TEST(OptionsTest, EmptyPathsAreRefused) {
    for (const char* const name :
         {"--output", "--save-scene", "--config-dir", "--plugin-dir", "--plugin"}) {
        EXPECT_EQ(ErrorOf({"a", name, ""}), std::string(name) + ": \"\", expected a name");
    }
}

TEST(OptionsTest, AboutNeedsNoScene) {
    EXPECT_TRUE(ParseCommandLine({"--about"}).options);
    EXPECT_TRUE(ErrorOf({"--show-dialog"}).starts_with("SCENE: none given"));
}

TEST(OptionsTest, WhatAPersonAnswersIsNotAnsweredHere) {
    const std::string ending = ", which answers the dialog in the person's place";
    EXPECT_EQ(ErrorOf({"x", "--show-dialog", "--cancel-dialog"}),
              "--show-dialog: excludes --cancel-dialog" + ending);
    EXPECT_EQ(ErrorOf({"x", "--show-dialog", "--sample-rate", "3", "--no-morphers"}),
              "--show-dialog: excludes --no-morphers" + ending);
}

TEST(OptionsTest, VersionIsPrinted) {
    const CommandLine line = ParseCommandLine({"--version"});
    EXPECT_FALSE(line.options);
    EXPECT_EQ(line.exitStatus, kExitDone);
    EXPECT_EQ(line.out, "hdo-export " HDO_VERSION);
}

// Each option's block of the help: its names, then its description.
std::vector<std::string> HelpBlocks(const std::string& help) {
    std::vector<std::string> blocks;
    for (const std::string& line : Lines(help)) {
        if (line.starts_with("  -")) {
            blocks.push_back(line.substr(2));
        } else if (line.starts_with("   ") && !blocks.empty()) {
            blocks.back().append(" ").append(line, line.find_first_not_of(' '));
        }
    }
    return blocks;
}

TEST(OptionsTest, HelpExplainsEveryOptionWithItsDefault) {
    const CommandLine line = ParseCommandLine({"--help"});
    EXPECT_FALSE(line.options);
    EXPECT_EQ(line.exitStatus, kExitDone);
    const std::vector<std::string> blocks = HelpBlocks(line.out);
    const std::vector<std::string> names = {"-o, --output FILE",
                                            "--selected",
                                            "--select NAME",
                                            "--allow-empty",
                                            "--strict",
                                            "--[no-]export-hidden",
                                            "--[no-]non-renderable",
                                            "--[no-]morphers",
                                            "--[no-]optimize-skin",
                                            "--weight-threshold X",
                                            "--[no-]motions-for-hidden",
                                            "--[no-]sample-animation",
                                            "--sample-rate N",
                                            "--dry-run",
                                            "--preset FILE",
                                            "--save-preset FILE",
                                            "--no-sidecar",
                                            "--defaults",
                                            "--saved-settings",
                                            "--keep-partial",
                                            "--config-dir DIR",
                                            "--log FILE",
                                            "--textures DIR",
                                            "--plugin-dir DIR",
                                            "--plugin FILE",
                                            "--save-scene FILE",
                                            "--list",
                                            "--animation NAME|N",
                                            "--all-animations",
                                            "--scale X",
                                            "--unit UNIT",
                                            "--up AXIS",
                                            "--frame-rate N",
                                            "--start T",
                                            "--end T",
                                            "--about",
                                            "--show-dialog",
                                            "--progress MODE",
                                            "--color MODE",
                                            "--json",
                                            "--receipt FILE",
                                            "--report FILE",
                                            "--max-error X",
                                            "--accept FILE",
                                            "--no-times",
                                            "-q, --quiet",
                                            "-v, --verbose",
                                            "--bisect",
                                            "--scramble",
                                            "--tries N",
                                            "--try-seconds N",
                                            "--batch LIST|DIR|PATTERN",
                                            "-j, --jobs N",
                                            "--timeout SECONDS",
                                            "--memory MB",
                                            "--force",
                                            "--count",
                                            "--array-index I",
                                            "--array-size N",
                                            "--cancel-dialog",
                                            "--cancel-after N"};
    for (const std::string& name : names) {
        EXPECT_THAT(blocks, testing::Contains(testing::AllOf(testing::StartsWith(name + " "),
                                                             testing::HasSubstr("default"))))
            << name;
    }
    EXPECT_EQ(blocks.size(), names.size() + 3) << "the rest is --help, --version and --generate";
}

TEST(OptionsTest, HelpTellsTheExportersOwnDefaults) {
    const std::vector<std::string> blocks = HelpBlocks(ParseCommandLine({"--help"}).out);
    const std::pair<const char*, const char*> defaults[] = {
        {"--[no-]export-hidden", "off"},    {"--[no-]non-renderable", "off"},
        {"--[no-]morphers", "on"},          {"--[no-]optimize-skin", "on"},
        {"--weight-threshold", "0.075"},    {"--[no-]motions-for-hidden", "off"},
        {"--[no-]sample-animation", "off"}, {"--sample-rate", "2"}};
    for (const auto& [name, value] : defaults) {
        EXPECT_THAT(blocks, testing::Contains(testing::AllOf(
                                testing::StartsWith(std::string(name) + " "),
                                testing::EndsWith(std::string("(default: ") + value + ")"))))
            << name;
    }
}

TEST(OptionsTest, OptionsInForceAreACommandLine) {
    ExportOptions options = DefaultExportOptions();
    EXPECT_EQ(OnCommandLine(options),
              "--no-export-hidden --no-non-renderable --morphers --optimize-skin "
              "--weight-threshold 0.075 --no-motions-for-hidden --no-sample-animation");
    options.optimizeSkin = 0;
    options.sampleAnimation = 1;
    options.sampleRate = 7;
    EXPECT_EQ(OnCommandLine(options),
              "--no-export-hidden --no-non-renderable --morphers --no-optimize-skin "
              "--no-motions-for-hidden --sample-animation --sample-rate 7");
}

TEST(OptionsTest, SavedSettingsHaveOnePlace) {
    EXPECT_TRUE(ParseCommandLine({"--saved-settings", "s"}).options->savedSettings);
    const CommandLine both = ParseCommandLine({"--saved-settings", "--config-dir", "c", "s"});
    EXPECT_FALSE(both.options);
    EXPECT_THAT(both.error, testing::HasSubstr("--saved-settings"));
}

TEST(OptionsTest, HelpFitsTheTerminal) {
    const auto longest = [](const std::string& help) {
        std::size_t columns = 0;
        for (const std::string& line : Lines(help)) {
            columns = std::max(columns, line.size());
        }
        return columns;
    };
    EXPECT_LE(longest(ParseCommandLine({"--help"}).out), 80u);
    for (const std::size_t columns : {45, 60, 72, 80, 100}) {
        const std::size_t width = longest(ParseCommandLine({"--help"}, columns).out);
        EXPECT_LE(width, columns);
        EXPECT_GE(width, columns - 5);
    }
    EXPECT_LE(longest(ParseCommandLine({"--help"}, 300).out), 100u);
}

TEST(OptionsTest, OptionsForTestsStandLast) {
    const std::string help = ParseCommandLine({"--help"}).out;
    const std::size_t heading = help.find("\nFor tests:\n");
    ASSERT_NE(heading, std::string::npos);
    EXPECT_GT(help.find("--cancel-dialog"), heading);
    EXPECT_GT(help.find("--cancel-after"), heading);
    EXPECT_LT(help.rfind("--verbose"), heading);
}

TEST(OptionsTest, TimesAreTicksFramesOrSeconds) {
    const Options options = Parse({"--start", "-1.5f", "--end", "0.4s"});
    EXPECT_EQ(options.start->count, -1.5);
    EXPECT_EQ(options.start->unit, Moment::Unit::frames);
    EXPECT_EQ(options.end->count, 0.4);
    EXPECT_EQ(options.end->unit, Moment::Unit::seconds);
    EXPECT_EQ(Parse({"--end", "480"}).end->unit, Moment::Unit::ticks);
    EXPECT_TRUE(Parse({"--start", "4800", "--end", "31f"}).end) << "compared in the scene's time";
}

TEST(OptionsTest, EachExportOfABatchGetsTheOptionsOfTheSceneAlone) {
    const CommandLine commandLine = ParseCommandLine({"-j",
                                                      "2",
                                                      "-q",
                                                      "--json",
                                                      "--no-morphers",
                                                      "--select",
                                                      "a b",
                                                      "--select",
                                                      "",
                                                      "--strict",
                                                      "--allow-empty=false",
                                                      "--sample-rate",
                                                      "3",
                                                      "-o",
                                                      "out",
                                                      "--no-times",
                                                      "--timeout",
                                                      "2",
                                                      "--all-animations",
                                                      "--dry-run",
                                                      "--textures",
                                                      "t",
                                                      "--memory",
                                                      "7",
                                                      "--batch",
                                                      "list",
                                                      "dir"});
    ASSERT_TRUE(commandLine.options) << commandLine.error;
    const Options& options = *commandLine.options;
    EXPECT_THAT(options.batch.items, testing::ElementsAre("list", "dir"));
    EXPECT_EQ(options.batch.jobs, 2);
    EXPECT_EQ(options.batch.timeout, 2);
    EXPECT_EQ(options.batch.memory, 7);
    EXPECT_THAT(options.passedOn, testing::UnorderedElementsAre(
                                      "--no-morphers", "--select=a b", "--select", "", "--strict",
                                      "--allow-empty=false", "--sample-rate=3", "--no-times"));
}

}  // namespace
}  // namespace maxhost::app
