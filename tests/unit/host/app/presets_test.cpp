#include "host/app/presets.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "host/app/exit_status.h"
#include "tests/unit/host/app/support.h"

namespace maxhost::app {
namespace {

using Arguments = std::vector<std::string>;

class PresetsTest : public InDirectory {
  protected:
    static Options Parse(const Arguments& arguments) {
        const CommandLine line = ParseCommandLine(arguments);
        EXPECT_TRUE(line.options) << line.error;
        return line.options.value_or(Options());
    }
    static std::string ErrorOf(const Arguments& arguments) {
        const CommandLine line = ParseCommandLine(arguments);
        EXPECT_FALSE(line.options);
        EXPECT_EQ(line.exitStatus, kExitRefused);
        return line.error;
    }
    // Of a preset with that text.
    static std::string Refusal(const std::string& text) {
        Write("p.json", text);
        return ErrorOf({"--preset", "p.json", "robot.fbx"});
    }
    static std::string Bytes(const ExportOptions& options) {
        std::string bytes(sizeof(options), '\0');
        std::memcpy(bytes.data(), &options, sizeof(options));
        return bytes;
    }
};

std::string OriginOf(const Options& options, const std::string& name) {
    for (const GivenOption& given : options.given) {
        if (given.name == name) {
            return NameOf(given.origin);
        }
    }
    return "not given";
}

TEST_F(PresetsTest, EveryKindOfValueIsTaken) {
    Write("p.json", R"({"morphers": false, "weight-threshold": 0.5, "sample-animation": true,
                        "sample-rate": 7, "select": ["Torso", "", "-x"], "up": "x", "start": -160,
                        "end": "3f", "animation": 2, "strict": true, "selected": false,
                        "max-error": 0.25, "frame-rate": 25, "scale": 2.5})");
    const Options options = Parse({"robot.fbx", "--preset", "p.json"});
    EXPECT_EQ(Chosen(options.choices, &ExportOptions::morphers), 0);
    EXPECT_EQ(Chosen(options.choices, &ExportOptions::weightThreshold), 0.5f);
    EXPECT_EQ(Chosen(options.choices, &ExportOptions::sampleAnimation), 1);
    EXPECT_EQ(Chosen(options.choices, &ExportOptions::sampleRate), 7);
    EXPECT_FALSE(Chosen(options.choices, &ExportOptions::exportHidden));
    EXPECT_THAT(options.select, testing::ElementsAre("Torso", "", "-x"));
    EXPECT_EQ(options.up, 0);
    EXPECT_EQ(options.start.value().count, -160);
    EXPECT_EQ(options.end.value().unit, Moment::Unit::frames);
    EXPECT_EQ(options.animation, "2");
    EXPECT_TRUE(options.strict);
    EXPECT_EQ(options.maxError, 0.25);
    EXPECT_EQ(options.frameRate, 25);
    EXPECT_EQ(options.scale, 2.5f);
}

TEST_F(PresetsTest, TheCommandLineCountsMoreThanTheSidecarAndThatMoreThanThePreset) {
    Write("p.json", R"({"scale": 2, "frame-rate": 10, "up": "x", "strict": true})");
    Write("robot.hdo.json", R"({"scale": 3, "frame-rate": 20})");
    const Options options =
        Parse({"--preset", "p.json", "--scale", "4", "--strict=false", "robot.fbx"});
    EXPECT_EQ(options.scale, 4);
    EXPECT_EQ(options.frameRate, 20);
    EXPECT_EQ(options.up, 0);
    EXPECT_FALSE(options.strict);
    EXPECT_EQ(OriginOf(options, "scale"), "command line");
    EXPECT_EQ(OriginOf(options, "frame-rate"), "sidecar");
    EXPECT_EQ(OriginOf(options, "up"), "preset");
    EXPECT_EQ(OriginOf(options, "end"), "not given");
    EXPECT_EQ(options.sidecarFile, "robot.hdo.json");

    const Options alone = Parse({"--no-sidecar", "robot.maxscene.json"});
    EXPECT_FALSE(alone.frameRate);
    EXPECT_FALSE(alone.sidecarFile);
    EXPECT_EQ(Parse({"robot.maxscene.json"}).frameRate, 20);
    EXPECT_FALSE(Parse({"-o", "x.hdo", "-"}).sidecarFile);
    EXPECT_FALSE(Parse({"robot2.fbx"}).sidecarFile);
}

TEST_F(PresetsTest, WhatASwitchThatCountsAsMuchTurnsOffIsLeftUnused) {
    const auto rate = [](const Options& options) {
        return Chosen(options.choices, &ExportOptions::sampleRate);
    };
    Write("off.json", R"({"sample-animation": false, "sample-rate": 7})");
    Write("on.json", R"({"sample-animation": true, "sample-rate": 7})");
    Write("alone.json", R"({"sample-rate": 7})");
    EXPECT_FALSE(rate(Parse({"--preset", "off.json", "robot.fbx"})));
    EXPECT_EQ(rate(Parse({"--preset", "off.json", "--sample-animation", "robot.fbx"})), 7);
    EXPECT_FALSE(rate(Parse({"--preset", "on.json", "--no-sample-animation", "robot.fbx"})));
    // Nobody turned it off: the dialog refuses it, as without a preset.
    EXPECT_EQ(rate(Parse({"--preset", "alone.json", "robot.fbx"})), 7);
    EXPECT_EQ(rate(Parse({"--preset", "off.json", "--sample-rate", "3", "robot.fbx"})), 3);
}

TEST_F(PresetsTest, WhatDoesNotFitIsRefusedWithItsPlace) {
    EXPECT_EQ(Refusal(R"({"sampel-rate": 3})"),
              "p.json: /sampel-rate: unknown option 'sampel-rate': did you mean 'sample-rate'?");
    EXPECT_EQ(
        Refusal(R"({"no-morphers": true})"),
        "p.json: /no-morphers: unknown option 'no-morphers': did you mean 'morphers', false?");
    EXPECT_THAT(Refusal(R"({"colour": 3})"),
                testing::StartsWith("p.json: /colour: unknown option 'colour', expected one of "));
    EXPECT_EQ(Refusal(R"({"sample-rate": "3"})"), "p.json: /sample-rate: \"3\", expected a number");
    EXPECT_EQ(Refusal(R"({"frame-rate": 0})"),
              "p.json: /frame-rate: 0, expected a whole number from 1 to 4800");
    EXPECT_EQ(Refusal(R"({"weight-threshold": 2})"),
              "p.json: /weight-threshold: 2, expected a number from 0 to 0.9999");
    EXPECT_EQ(Refusal(R"({"strict": 1})"), "p.json: /strict: 1, expected true or false");
    EXPECT_EQ(Refusal(R"({"up": true})"), "p.json: /up: true, expected a text");
    EXPECT_EQ(Refusal(R"({"select": ["a", 3]})"), "p.json: /select/1: 3, expected a text");
    EXPECT_EQ(Refusal(R"({"scale": 1, "scale": 2})"),
              "p.json: /scale: a field given twice, expected it once");
    EXPECT_EQ(Refusal("[]"), "p.json: /: an empty list, expected an object of options");
    EXPECT_THAT(Refusal("{\n\"scale\": }"), testing::StartsWith("p.json: line 2, column 10: "));
}

TEST_F(PresetsTest, NoFileOfOptionsNamesFilesOrSaysHowTheProgramRuns) {
    for (const char* name : {"plugin", "plugin-dir", "output", "config-dir", "receipt", "log",
                             "save-scene", "preset", "accept", "help", "quiet"}) {
        EXPECT_EQ(Refusal("{\"" + std::string(name) + "\": \"x\"}"),
                  "p.json: /" + std::string(name) +
                      ": stands on the command line alone, expected an option that presets may "
                      "hold");
    }
}

TEST_F(PresetsTest, FilesThatAreNone) {
    EXPECT_EQ(ErrorOf({"--preset", "no.json", "robot.fbx"}),
              "no.json: does not exist, expected a file of options");
    EXPECT_EQ(ErrorOf({"--preset", ".", "robot.fbx"}),
              ".: is a directory, expected a file of options");
    Write("long.json", std::string((1 << 20) + 1, ' '));
    EXPECT_EQ(ErrorOf({"--preset", "long.json", "robot.fbx"}),
              "long.json: has more than 1 MiB, expected a file of options");
    Write("robot.hdo.json", "{");
    EXPECT_THAT(ErrorOf({"robot.fbx"}), testing::StartsWith("robot.hdo.json: line 1, column 2: "));
}

TEST_F(PresetsTest, ASettingsFileIsAPreset) {
    ExportOptions saved = DefaultExportOptions();
    saved.exportHidden = 9;
    saved.sampleAnimation = 1;
    saved.sampleRate = 12;
    saved.optimizeSkin = 0;
    saved.maxWeightsPerVertex = 2;
    Write("KTAExp2.cfg", Bytes(saved));
    Write("other", Bytes(saved));
    for (const char* name : {"KTAExp2.cfg", "other"}) {
        const Options options = Parse({"--preset", name, "robot.fbx"});
        EXPECT_EQ(Chosen(options.choices, &ExportOptions::exportHidden), 1);
        EXPECT_EQ(Chosen(options.choices, &ExportOptions::sampleRate), 12);
        EXPECT_EQ(Chosen(options.choices, &ExportOptions::optimizeSkin), 0);
        EXPECT_FALSE(Chosen(options.choices, &ExportOptions::weightThreshold));
        EXPECT_EQ(options.presetSettings.value().maxWeightsPerVertex, 2);
    }
    EXPECT_EQ(ErrorOf({"--preset", "other", "--saved-settings", "robot.fbx"}),
              "--preset: other has choices without a control of the dialog (bytes 0, 2 and 12 to "
              "15), which cannot be made in saved settings; expected it without --saved-settings "
              "and --config-dir");
    Write("short.cfg", Bytes(saved).substr(1));
    EXPECT_EQ(ErrorOf({"--preset", "short.cfg", "robot.fbx"}),
              "short.cfg: has 23 bytes, expected the 24 bytes of a settings file");
    saved.weightThreshold = 3;
    Write("wrong.cfg", Bytes(saved));
    EXPECT_EQ(ErrorOf({"--preset", "wrong.cfg", "robot.fbx"}),
              "wrong.cfg: byte 8 (weight-threshold): \"3\", expected a number from 0 to 0.9999");
}

TEST_F(PresetsTest, WhatIsSavedReadsBackToTheSame) {
    const Options options =
        Parse({"--sample-animation", "--sample-rate", "5", "--select", "a", "--select", "b",
               "--max-error", ".5", "--start", "480", "--save-preset", "s.json"});
    SavePreset(options, Path("s.json"), DefaultExportOptions());
    const Options again = Parse({"--preset", "s.json", "robot.fbx"});
    EXPECT_EQ(Chosen(again.choices, &ExportOptions::sampleRate), 5);
    EXPECT_EQ(Chosen(again.choices, &ExportOptions::weightThreshold), 0.075f);
    EXPECT_THAT(again.select, testing::ElementsAre("a", "b"));
    EXPECT_EQ(again.maxError, 0.5);
    EXPECT_EQ(again.start.value().count, 480);

    const Options exporters = Parse({"--no-morphers", "--save-preset", "s.cfg"});
    SavePreset(exporters, Path("s.cfg"), DefaultExportOptions());
    ExportOptions expected = DefaultExportOptions();
    expected.morphers = 0;
    EXPECT_EQ(Read("s.cfg"), Bytes(expected));
    EXPECT_EQ(Catch([&] { SavePreset(options, Path("t.CFG"), DefaultExportOptions()); }).line,
              "--save-preset: a settings file holds the exporter's options alone, not --select, "
              "expected a name that does not end in .cfg");
    expected.meshes = 0;
    EXPECT_EQ(Catch([&] { SavePreset(exporters, Path("t.json"), expected); }).line,
              "--save-preset: choices without a control of the dialog (bytes 0, 2 and 12 to 15) "
              "stand in settings files alone, expected a name that ends in .cfg");
    EXPECT_THAT(Names(), testing::ElementsAre("s.cfg", "s.json"));
}

TEST_F(PresetsTest, AMistypedOptionIsToldWithTheNearestOne) {
    const std::string expected = ": not expected, expected options and one SCENE";
    EXPECT_EQ(ErrorOf({"--sampel-rate", "3", "robot.fbx"}),
              "--sampel-rate" + expected + "; did you mean --sample-rate?");
    EXPECT_EQ(ErrorOf({"--no-morfers", "robot.fbx"}),
              "--no-morfers" + expected + "; did you mean --no-morphers?");
    EXPECT_EQ(ErrorOf({"--qwertyuiop", "robot.fbx"}), "--qwertyuiop" + expected);
    EXPECT_EQ(ErrorOf({"robot.fbx", "second.fbx"}), "second.fbx" + expected);
}

}  // namespace
}  // namespace maxhost::app
