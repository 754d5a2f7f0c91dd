// Runs as other programs start and read them: JSON, standard input and standard output.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <nlohmann/json.hpp>

#include "host/app/exit_status.h"
#include "tests/unit/host/app/support.h"

#ifndef _WIN32
#include <sys/wait.h>
#endif

namespace maxhost::app {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::StartsWith;

class JsonTest : public ProgramTest {
  protected:
    // What the run prints, which is to be one JSON object and nothing else.
    json RunJson(const std::string& arguments, int status) const {
        const Outcome outcome = RunReal("--json " + arguments);
        EXPECT_EQ(outcome.status, status) << outcome.error;
        json summary = json::parse(outcome.out, nullptr, false);
        EXPECT_TRUE(summary.is_object()) << outcome.out;
        EXPECT_EQ(summary["status"], status);
        EXPECT_EQ(summary["program"], "hdo-export");
        return summary;
    }
};

TEST_F(JsonTest, TellsWhatAnExportMade) {
    const json summary =
        RunJson("--select root --select leaf --sample-animation s.maxscene.json", kExitDone);
    EXPECT_EQ(summary["scene"], "s.maxscene.json");
    EXPECT_EQ(summary["inputs"],
              json::array({Path("s.maxscene.json").string(), Path("s.hdo.json").string()}));
    EXPECT_FALSE(summary.contains("error"));
    EXPECT_EQ(summary["nodes"], (json{{"inScene", 3}, {"exported", 2}}));
    EXPECT_EQ(summary["notExported"],
              (json::array(
                  {{{"name", "hidden"}, {"code", "node-not-selected"}, {"why", "not selected"}}})));
    ASSERT_EQ(summary["files"].size(), 5u);
    const char* const kinds[] = {"converter", "preview", "log", "actor", "motion"};
    for (const int i : {0, 1, 2, 3, 4}) {
        const json& file = summary["files"][static_cast<std::size_t>(i)];
        EXPECT_EQ(file["kind"], kinds[i]);
        EXPECT_EQ(file["bytes"], Read(file["path"].get<std::string>()).size());
    }
    EXPECT_EQ(summary["files"][3]["chunks"]["node"]["count"], 2);
    EXPECT_EQ(summary["options"]["sample-rate"], 2);
    EXPECT_EQ(summary["options"]["weight-threshold"], 0.075);
    EXPECT_EQ(summary["options"]["morphers"], true);
    EXPECT_GE(summary["seconds"]["all"], summary["seconds"]["exporting"]);
    EXPECT_GT(summary["seconds"]["exporting"], 0);
}

#ifndef _WIN32  // where models are not read
TEST_F(JsonTest, TellsTheFilesThatWereReadAndThoseThatAreMissing) {
    Write("m.obj", "mtllib m.mtl\nmtllib none.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    Write("m.mtl", "newmtl a\n");
    std::filesystem::create_directory(Path("d"));
    for (const char* const words : {"m.obj", "-o x.hdo d/../m.obj"}) {
        const std::vector<std::string> inputs = RunJson(words, kExitDone)["inputs"];
        for (const char* const name : {"m.obj", "m.mtl", "none.mtl"}) {
            EXPECT_THAT(inputs, testing::Contains(Path(name).string())) << words;
        }
    }
}
#endif

TEST_F(JsonTest, ALogOfItsOwnStandsThereHoweverTheRunEnds) {
    for (const int status : {kExitDone, kExitCancelled}) {
        const json files = RunJson(std::string(status == kExitDone ? "" : "--cancel-after 1 ") +
                                       "--log own.txt s.maxscene.json",
                                   status)["files"];
        std::vector<std::string> logs;
        for (const json& file : files) {
            if (file["kind"] == "log") {
                logs.push_back(file["path"]);
                EXPECT_EQ(file["bytes"], Read("own.txt").size());
            }
        }
        EXPECT_EQ(logs, std::vector<std::string>{Path("own.txt").string()});
    }
}

TEST_F(JsonTest, OptionsThatTheirSwitchDisablesAreNotInForce) {
    const json options = RunJson("--no-optimize-skin s.maxscene.json", kExitDone)["options"];
    EXPECT_EQ(options["optimize-skin"], false);
    EXPECT_FALSE(options.contains("weight-threshold"));
    EXPECT_FALSE(options.contains("sample-rate"));
}

TEST_F(JsonTest, WarningsHaveTheirCodes) {
    Write("two.maxscene.json", R"({"maxscene": 1, "nodes": [{"name": "a"}, {"name": "a"}]})");
    const json summary = RunJson("two.maxscene.json", kExitDone);
    ASSERT_EQ(summary["warnings"].size(), 1u);
    EXPECT_EQ(summary["warnings"][0]["code"], "name-shared");
    EXPECT_THAT(summary["warnings"][0]["text"].get<std::string>(),
                StartsWith("two.maxscene.json: several nodes of one name"));
    const json strict = RunJson("--strict two.maxscene.json", kExitFaultyOutput);
    EXPECT_EQ(strict["warnings"][0]["code"], "name-shared");
    EXPECT_EQ(strict["error"],
              "two.maxscene.json: 1 warning, expected none with --strict; nothing is written");
    EXPECT_FALSE(strict.contains("files"));
}

#ifndef _WIN32  // where models are not read
TEST_F(JsonTest, WarningsOfReadingHaveTheirCodes) {
    Write("m.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\nl 1 2\n");
    const json summary = RunJson("m.obj", kExitDone);
    std::vector<std::string> codes;
    for (const json& warning : summary["warnings"]) {
        codes.push_back(warning["code"]);
    }
    EXPECT_THAT(codes, testing::Contains("points-and-lines"));
}
#endif

TEST_F(JsonTest, RunsThatFailSayWhy) {
    EXPECT_EQ(RunJson("none.maxscene.json", kExitRefused)["error"],
              "none.maxscene.json: does not exist, expected a scene file");
    EXPECT_EQ(RunJson("--bogus s.maxscene.json", kExitRefused)["error"],
              "--bogus: not expected, expected options and one SCENE");
    EXPECT_THAT(
        RunJson("--plugin none.so s.maxscene.json", kExitNoPlugIn)["error"].get<std::string>(),
        HasSubstr("the plug-in did not load"));
    EXPECT_THAT(
        RunJson("-o none/x.hdo s.maxscene.json", kExitExportFailed)["error"].get<std::string>(),
        HasSubstr("does not exist"));
    const json cancelled = RunJson("--cancel-after 1 s.maxscene.json", kExitCancelled);
    EXPECT_THAT(cancelled["error"].get<std::string>(), HasSubstr("cancelled in the progress bar"));
    EXPECT_TRUE(cancelled["files"].empty());
    EXPECT_EQ(cancelled["messages"].size(), 2u) << "that nothing was put in place";
}

#ifdef __linux__
TEST_F(JsonTest, NamesThatAreNoUtf8AreTakenAsLatin1) {
    EXPECT_EQ(RunJson("n\xe4.maxscene.json", kExitRefused)["scene"], "n\xc3\xa4.maxscene.json");
}
#endif

TEST_F(JsonTest, ListsTheScene) {
    const json list = RunJson("--list s.maxscene.json", kExitDone);
    ASSERT_EQ(list["nodes"].size(), 3u);
    EXPECT_EQ(list["nodes"][0], (json{{"index", 0},
                                      {"name", "root"},
                                      {"parent", nullptr},
                                      {"depth", 0},
                                      {"kind", "helper"}}));
    EXPECT_EQ(list["nodes"][2]["parent"], 1);
    EXPECT_EQ(list["nodes"][2]["depth"], 2);
    EXPECT_EQ(list["materials"], json::array());
    EXPECT_EQ(list["animations"], json::array());
    EXPECT_FALSE(list.contains("files"));
}

// ---------------------------------------------------------------- standard streams

TEST_F(ProgramTest, ADescriptionOnStandardInputIsExportedAlike) {
    ASSERT_EQ(RunReal("-q -o a.hdo s.maxscene.json").status, kExitDone);
    const Outcome outcome = RunReal("-q -o b.hdo - <s.maxscene.json");
    EXPECT_EQ(outcome.status, kExitDone) << outcome.error;
    EXPECT_EQ(Read("a.hdotemp1"), Read("b.hdotemp1"));
    EXPECT_EQ(RunReal("--list - <s.maxscene.json").out, RunReal("--list s.maxscene.json").out);
}

TEST_F(ProgramTest, WhatIsWrongWithStandardInputIsToldUnderItsName) {
    Write("broken", "{\"maxscene\": 1,");
    const Outcome broken = RunReal("-o x.hdo - <broken");
    EXPECT_EQ(broken.status, kExitRefused);
    EXPECT_THAT(broken.error, StartsWith("hdo-export: standard input: line 1, column "));
    const Outcome nameless = RunReal("- <s.maxscene.json");
    EXPECT_EQ(nameless.status, kExitRefused);
    EXPECT_THAT(nameless.error, HasSubstr("standard input has no name to export by"));
}

TEST_F(ProgramTest, TheSavedSceneAloneGoesToStandardOutput) {
    ASSERT_EQ(RunReal("--save-scene t.maxscene.json s.maxscene.json").status, kExitDone);
    const Outcome saved = RunReal("--save-scene - s.maxscene.json");
    EXPECT_EQ(saved.status, kExitDone) << saved.error;
    EXPECT_EQ(saved.out, Read("t.maxscene.json"));
    EXPECT_EQ(saved.error, "");
    const Outcome exported = RunReal("--save-scene - -o x.hdo s.maxscene.json");
    EXPECT_EQ(exported.status, kExitDone);
    EXPECT_EQ(exported.out, saved.out);
    EXPECT_THAT(exported.error, HasSubstr("exported 2 of 3 nodes"));
    EXPECT_EQ(RunReal("--save-scene - --json s.maxscene.json").status, kExitRefused);
    EXPECT_EQ(RunReal("--save-scene - --list s.maxscene.json").status, kExitRefused);
}

#ifdef __linux__  // Wine's shell does not find the program behind a pipe
TEST_F(ProgramTest, ScenesPassThroughPipes) {
    const Outcome piped = RunReal("--save-scene - s.maxscene.json | \"" HDO_EXPORT "\" --list -");
    EXPECT_EQ(piped.status, kExitDone) << piped.error;
    EXPECT_EQ(piped.out, RunReal("--list s.maxscene.json").out);
}

TEST_F(ProgramTest, ASavedSceneThatStandardOutputLosesIsStatus2) {
    const int result =
        std::system("\"" HDO_EXPORT "\" --save-scene - s.maxscene.json >/dev/full 2>e.txt");
    ASSERT_TRUE(WIFEXITED(result));
    EXPECT_EQ(WEXITSTATUS(result), kExitRefused);
    EXPECT_EQ(Read("e.txt"), "hdo-export: standard output: cannot be written\n");
}
#endif

}  // namespace
}  // namespace maxhost::app
