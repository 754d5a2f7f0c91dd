// The program itself with the real plug-in and converter, as a user runs it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <variant>

#include "host/app/exit_status.h"
#include "host/app/loaded_scene.h"
#include "host/app/options.h"
#include "tests/unit/host/app/support.h"

#ifndef _WIN32
#include <sys/wait.h>
#endif

namespace maxhost::app {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

class ProgramTest : public InDirectory {
  protected:
    void SetUp() override {
        Write("s.maxscene.json", R"({
            "maxscene": 1,
            "nodes": [
                {"name": "root"},
                {"name": "hidden", "parent": 0, "hidden": true},
                {"name": "leaf", "parent": 1}
            ]})");
    }

    Outcome RunReal(const std::string& arguments) const {
        // Beside the directory: what the program starts may hold them open for longer than it runs.
        const std::string beside = (std::filesystem::path("..") / directory_.filename()).string();
        const std::string out = beside + ".out";
        const std::string error = beside + ".error";
        const std::string command =
            "\"" HDO_EXPORT "\" --config-dir cfg " + arguments + " >" + out + " 2>" + error;
        const int result = std::system(command.c_str());
        Outcome outcome;
#ifdef _WIN32
        outcome.status = result;
#else
        outcome.status = WIFEXITED(result) ? WEXITSTATUS(result) : -1;
#endif
        outcome.out = Read(out);
        outcome.error = Read(error);
        std::error_code ignored;
        std::filesystem::remove(out, ignored);
        std::filesystem::remove(error, ignored);
        return outcome;
    }
};

TEST_F(ProgramTest, ExportsAScene) {
    const Outcome outcome = RunReal("s.maxscene.json");
    EXPECT_EQ(outcome.status, kExitDone) << outcome.error;
    EXPECT_EQ(outcome.error, "");
    EXPECT_THAT(Names(), ElementsAre("KTAExporter.log", "cfg", "s.hdotemp1", "s.hdotemp2",
                                     "s.maxscene.json"));
    EXPECT_THAT(Lines(outcome.out),
                testing::Contains(StartsWith(Path("KTAExporter.log").string() + ": log")));
    EXPECT_THAT(Lines(outcome.out), testing::Contains("exported 2 of 3 nodes"));
}

#ifndef _WIN32  // where models are not read
TEST_F(ProgramTest, LostVertexColoursOfAModelAreSaid) {
    const std::string head =
        "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
        "property float z\n";
    const std::string faces =
        "element face 1\nproperty list uchar int vertex_indices\nend_header\n";
    Write("m.ply", head + "property uchar red\nproperty uchar green\nproperty uchar blue\n" +
                       faces + "0 0 0 255 0 0\n1 0 0 0 255 0\n0 1 0 0 0 255\n3 0 1 2\n");
    const std::string line = "not exported: vertex colours of 1 mesh";
    const Outcome coloured = RunReal("m.ply");
    EXPECT_EQ(coloured.status, kExitDone) << coloured.error;
    EXPECT_THAT(Lines(coloured.out), testing::Contains(line));
    Write("n.ply", head + faces + "0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n");
    const Outcome plain = RunReal("n.ply");
    EXPECT_EQ(plain.status, kExitDone) << plain.error;
    EXPECT_THAT(Lines(plain.out), testing::Not(testing::Contains(line)));
}
#endif

TEST_F(ProgramTest, ExportsTheSameBytesAgain) {
    ASSERT_EQ(RunReal("-q -o a.hdo s.maxscene.json").status, kExitDone);
    ASSERT_EQ(RunReal("-q --progress always -o b.hdo s.maxscene.json").status, kExitDone);
    EXPECT_GT(Read("a.hdotemp1").size(), 7u);
    EXPECT_EQ(Read("a.hdotemp1"), Read("b.hdotemp1"));
    EXPECT_EQ(Read("a.hdotemp2"), Read("b.hdotemp2"));
}

TEST_F(ProgramTest, SavedSceneExportsTheSameBytes) {
    ASSERT_EQ(RunReal("-q -o a.hdo --save-scene t.maxscene.json s.maxscene.json").status,
              kExitDone);
    ASSERT_EQ(RunReal("-q -o b.hdo t.maxscene.json").status, kExitDone);
    EXPECT_EQ(Read("a.hdotemp1"), Read("b.hdotemp1"));
}

// By way of the command line and the exporter's own dialog.
TEST_F(ProgramTest, EveryOptionOfTheExporterReachesItsSettingAndNoOther) {
    for (const ExporterOption& option : kExporterOptions) {
        ExportOptions expected = DefaultExportOptions();
        std::string arguments = "-q --defaults ";
        if (option.enabledBy && std::string(option.enabledBy) == "sample-animation") {
            expected.sampleAnimation = 1;
            arguments += "--sample-animation ";
        }
        const std::string name = option.name;
        if (const auto* box = std::get_if<Plinth::UInt8 ExportOptions::*>(&option.setting)) {
            arguments += (expected.**box ? "--no-" : "--") + name;
            expected.** box = expected.**box ? 0 : 1;
        } else if (const auto* real =
                       std::get_if<Plinth::Float32 ExportOptions::*>(&option.setting)) {
            arguments += "--" + name + " 0.25";
            expected.** real = 0.25f;
        } else {
            arguments += "--" + name + " 7";
            expected.*std::get<Plinth::Int32 ExportOptions::*>(option.setting) = 7;
        }
        ASSERT_EQ(RunReal(arguments + " s.maxscene.json").status, kExitDone) << arguments;
        EXPECT_EQ(Read("cfg/KTAExp2.cfg"),
                  std::string(reinterpret_cast<const char*>(&expected), sizeof(expected)))
            << arguments;
    }
}

TEST_F(ProgramTest, ActorFileIsCalledWholeWhereOnlyTheMotionFileFailed) {
    std::filesystem::create_directory("x.hdotemp2");
    const Outcome outcome = RunReal("-o x.hdo s.maxscene.json");
    EXPECT_EQ(outcome.status, kExitExportFailed);
    EXPECT_THAT(Lines(outcome.error),
                ElementsAre("hdo-export: " + Path("x.hdo").string() + ": the export failed: " +
                                Path("x.hdotemp2").string() + " is a directory",
                            "hdo-export: " + Path("x.hdotemp1").string() +
                                ": left behind by the failed export, but whole and given to the "
                                "converter"));
    ASSERT_EQ(RunReal("-q -o whole.hdo s.maxscene.json").status, kExitDone);
    EXPECT_EQ(Read("x.hdotemp1"), Read("whole.hdotemp1"));
}

TEST_F(ProgramTest, BadUsageAndBadScenesAreStatus2) {
    EXPECT_EQ(RunReal("").status, kExitRefused);
    EXPECT_EQ(RunReal("--bogus s.maxscene.json").status, kExitRefused);
    const Outcome outcome = RunReal("missing.maxscene.json");
    EXPECT_EQ(outcome.status, kExitRefused);
    EXPECT_THAT(Lines(outcome.error),
                ElementsAre("hdo-export: missing.maxscene.json: does not exist, expected a scene "
                            "file"));
    EXPECT_THAT(Names(), ElementsAre("s.maxscene.json"));
}

TEST_F(ProgramTest, NumbersThatOverflowAreStatus4) {
    Write("s.maxscene.json", R"({
        "maxscene": 1,
        "nodes": [
            {"name": "huge", "transform":
                {"matrix": [[1e38, 0, 0], [0, 1e38, 0], [0, 0, 1e38], [0, 0, 0]]}},
            {"name": "beyond", "parent": 0, "transform":
                {"matrix": [[1e38, 0, 0], [0, 1e38, 0], [0, 0, 1e38], [1, 2, 3]]}}
        ]})");
    const Outcome outcome = RunReal("s.maxscene.json");
    EXPECT_EQ(outcome.status, kExitFaultyOutput);
    EXPECT_THAT(outcome.error, testing::HasSubstr("node chunk: scale is not a finite number"));
}

TEST_F(ProgramTest, MissingConverterIsStatus3) {
    const Outcome outcome = RunReal("--plugin-dir . s.maxscene.json");
    EXPECT_EQ(outcome.status, kExitNoPlugIn);
    EXPECT_EQ(Lines(outcome.error).size(), 1u);
    EXPECT_THAT(outcome.error, testing::HasSubstr("no plug-in directory holds haldenexport: " +
                                                  directory_.string()));
    EXPECT_THAT(Names(), ElementsAre("s.maxscene.json"));
}

TEST_F(ProgramTest, CancelledDialogLeavesTheSavedScene) {
    const Outcome outcome =
        RunReal("--cancel-dialog --defaults --save-scene q.maxscene.json -o x.hdo s.maxscene.json");
    EXPECT_EQ(outcome.status, kExitDone);
    EXPECT_THAT(outcome.error, testing::HasSubstr("; no export was written"));
    EXPECT_TRUE(std::filesystem::exists("q.maxscene.json"));
    EXPECT_TRUE(std::filesystem::is_empty("cfg"));
}

TEST_F(ProgramTest, CancelledDialogIsStatus0) {
    const Outcome outcome = RunReal("--cancel-dialog s.maxscene.json");
    EXPECT_EQ(outcome.status, kExitDone);
    EXPECT_THAT(outcome.error, testing::HasSubstr("cancelled in the options dialog"));
    EXPECT_FALSE(std::filesystem::exists("s.hdotemp1"));
    EXPECT_FALSE(std::filesystem::exists("cfg/KTAExp2.cfg")) << "settings are not saved";
}

TEST_F(ProgramTest, SkinBelowAnotherModifierIsReportedInOneLine) {
    Write("skin.maxscene.json", R"({"maxscene": 1, "nodes": [{"name": "m",
        "object": {"class": "mesh", "vertices": [], "faces": []},
        "modifiers": [{"class": "other", "classId": [1, 2]},
                      {"class": "skin", "bones": [], "weights": []}]}]})");
    const Outcome outcome = RunReal("skin.maxscene.json");
    EXPECT_EQ(outcome.status, kExitExportFailed);
    const std::string file = "hdo-export: " + Path("skin.hdo").string() + ": ";
    EXPECT_THAT(
        Lines(outcome.error),
        ElementsAre(file + "Modifier Order Issue: Your object contains meshes that combine skin "
                           "modifiers with other modifiers. Please make sure that the skin "
                           "modifiers are at the end of the stack.",
                    file + "the export failed: the exporter says why above"));
}

// The settings file as 24 bytes of hexadecimal digits.
std::string Hex(const std::string& bytes) {
    std::string text;
    for (const unsigned char byte : bytes) {
        constexpr const char* kDigits = "0123456789abcdef";
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

TEST_F(ProgramTest, ChoicesSetEveryField) {
    const Outcome on = RunReal(
        "-q --export-hidden --non-renderable --morphers --optimize-skin --weight-threshold 0.5 "
        "--motions-for-hidden --sample-animation --sample-rate 7 s.maxscene.json");
    EXPECT_EQ(on.status, kExitDone) << on.error;
    EXPECT_EQ(Hex(Read("cfg/KTAExp2.cfg")),
              "00010101010100000000003f04000000"
              "0101000007000000");
    const Outcome off = RunReal(
        "-q --no-export-hidden --no-non-renderable --no-morphers --no-optimize-skin "
        "--no-motions-for-hidden --no-sample-animation s.maxscene.json");
    EXPECT_EQ(off.status, kExitDone) << off.error;
    EXPECT_EQ(Hex(Read("cfg/KTAExp2.cfg")),
              "00000100000000000000003f04000000"
              "0000000007000000");
    EXPECT_EQ(RunReal("-q s.maxscene.json").status, kExitDone);
    EXPECT_EQ(Hex(Read("cfg/KTAExp2.cfg")),
              "00000100000000000000003f04000000"
              "0000000007000000");
    EXPECT_EQ(RunReal("-q --defaults --weight-threshold 0.0001 s.maxscene.json").status, kExitDone);
    EXPECT_EQ(Hex(Read("cfg/KTAExp2.cfg")),
              "00000100010100001"
              "7b7d13804000000"
              "0000000002000000");
}

TEST_F(ProgramTest, ChoicesCountInTheExportItself) {
    EXPECT_THAT(Lines(RunReal("--export-hidden s.maxscene.json").out),
                testing::Contains("exported 3 of 3 nodes"));
    EXPECT_THAT(Lines(RunReal("--no-export-hidden s.maxscene.json").out),
                testing::Contains("exported 2 of 3 nodes"));
}

#ifndef _WIN32
// Two clips of a second that move node "a" by 1 and by 2.
constexpr char kTwoClips[] =
    R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],
"nodes":[{"name":"a"}],"buffers":[{"byteLength":56,"uri":"data:application/octet-stream;base64,)"
    "AAAAAAAAgD8AAAAAAAAAAAAAAAAAAIA/AAAAAAAAAAAAAAAAAAAAAAAAAAAAAABAAAAAAAAAAAA="
    R"("}],
"bufferViews":[{"buffer":0,"byteLength":8},{"buffer":0,"byteOffset":8,"byteLength":24},
{"buffer":0,"byteOffset":32,"byteLength":24}],
"accessors":[{"bufferView":0,"componentType":5126,"type":"SCALAR","count":2},
{"bufferView":1,"componentType":5126,"type":"VEC3","count":2},
{"bufferView":2,"componentType":5126,"type":"VEC3","count":2}],
"animations":[{"name":"walk","samplers":[{"input":0,"output":1}],
"channels":[{"sampler":0,"target":{"node":0,"path":"translation"}}]},
{"name":"run","samplers":[{"input":0,"output":2}],
"channels":[{"sampler":0,"target":{"node":0,"path":"translation"}}]}]})";

TEST_F(ProgramTest, TheAnimationChosenIsSavedWithItsKeys) {
    Write("m.gltf", kTwoClips);
    ASSERT_EQ(RunReal("-q --animation run --frame-rate 29 --scale 3 --save-scene s.maxscene.json "
                      "-o a.hdo m.gltf")
                  .status,
              kExitDone);
    const scene::Scene saved = LoadScene("s.maxscene.json").scene;
    EXPECT_EQ(saved.time.end, 29 * 165);
    const auto& prs = std::get<scene::PrsTransform>(saved.nodes.at(0).transform.value().kind);
    const auto& three = std::get<scene::ThreeAxes>(prs.position.value().kind);
    const auto& keys = std::get<scene::BezierFloat>(three.axes[0].value().kind).keys;
    ASSERT_EQ(keys.size(), 2u);
    EXPECT_EQ(keys[1].time, 29 * 165);
    EXPECT_EQ(keys[1].value, 6);
    ASSERT_EQ(RunReal("-q -o b.hdo s.maxscene.json").status, kExitDone);
    EXPECT_EQ(Read("a.hdotemp1"), Read("b.hdotemp1"));
    EXPECT_EQ(Read("a.hdotemp2"), Read("b.hdotemp2"));
}

TEST_F(ProgramTest, AnAnimationThatIsNotThereIsStatus2) {
    Write("m.gltf", kTwoClips);
    const Outcome outcome = RunReal("--animation jump -o a.hdo m.gltf");
    EXPECT_EQ(outcome.status, kExitRefused);
    EXPECT_THAT(Lines(outcome.error),
                testing::Contains("hdo-export: --animation: \"jump\", expected a name or number of "
                                  "the scene's 2 animations: 0 \"walk\", 1 \"run\""));
    EXPECT_FALSE(std::filesystem::exists("a.hdotemp1"));
}
#endif

TEST_F(ProgramTest, ChoicesThatTheDialogRefusesAreStatus2) {
    ASSERT_EQ(RunReal("-q --sample-animation --sample-rate 3 -o a.hdo s.maxscene.json").status,
              kExitDone);
    const std::string settings = Read("cfg/KTAExp2.cfg");
    for (const char* const rate : {"0", "-5"}) {
        const Outcome outcome = RunReal("--export-hidden --sample-rate " + std::string(rate) +
                                        " -o b.hdo s.maxscene.json");
        EXPECT_EQ(outcome.status, kExitRefused);
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(Lines(outcome.error),
                    ElementsAre("hdo-export: " + Path("b.hdo").string() +
                                ": Invalid value: The motion sample rate cannot be below one! A "
                                "value of two gives high quality results. Higher values will "
                                "result in lower quality."));
        EXPECT_EQ(Read("cfg/KTAExp2.cfg"), settings);
        EXPECT_FALSE(std::filesystem::exists("b.hdotemp1"));
        EXPECT_FALSE(std::filesystem::exists("b.hdotemp2"));
    }
}

TEST_F(ProgramTest, ChoicesThatAreDisabledAreStatus2) {
    const Outcome rate = RunReal("--sample-rate 5 s.maxscene.json");
    EXPECT_EQ(rate.status, kExitRefused);
    EXPECT_THAT(Lines(rate.error),
                ElementsAre("hdo-export: --sample-rate: is disabled in the options dialog, "
                            "expected --sample-animation beside it"));
    const Outcome threshold = RunReal("--no-optimize-skin --weight-threshold 0.5 s.maxscene.json");
    EXPECT_EQ(threshold.status, kExitRefused);
    EXPECT_THAT(Lines(threshold.error),
                ElementsAre("hdo-export: --weight-threshold: is disabled in the options dialog, "
                            "expected --optimize-skin beside it"));
    EXPECT_FALSE(std::filesystem::exists("s.hdotemp1"));
    EXPECT_FALSE(std::filesystem::exists("cfg/KTAExp2.cfg"));
}

#ifndef _WIN32

TEST_F(ProgramTest, SavedModelExportsTheSameBytes) {
    Write("m.obj",
          "mtllib m.mtl\no first\nv 0 0 0\nv 1.5 0 0\nv 0 2 0.25\nv 0 0 3\nusemtl red\n"
          "f 1 2 3\nf 1 3 4\no second\nv 5 5 5\nv 6 5 5\nv 5 6.1 5\nf 5 6 7\n");
    Write("m.mtl", "newmtl red\nKd 1 0 0\n");
    ASSERT_EQ(RunReal("-q -o a.hdo --save-scene t.maxscene.json m.obj").status, kExitDone);
    ASSERT_EQ(RunReal("-q -o b.hdo t.maxscene.json").status, kExitDone);
    EXPECT_GT(Read("a.hdotemp1").size(), 2u * 632);
    EXPECT_EQ(Read("a.hdotemp1"), Read("b.hdotemp1"));
    EXPECT_EQ(Read("a.hdotemp2").substr(0, 4), "KTA ");
    EXPECT_EQ(Read("a.hdotemp2"), Read("b.hdotemp2"));
}

TEST_F(ProgramTest, RunsWithDefaultsSideBySideAllSucceed) {
    const std::string command =
        "for i in 1 2 3 4 5 6 7 8 9 10 11 12; do (\"" HDO_EXPORT
        "\" --config-dir cfg --defaults -q -o x$i.hdo s.maxscene.json; echo $? >$i.status) & "
        "done; wait";
    for (int round = 0; round < 3; ++round) {
        ASSERT_EQ(std::system(command.c_str()), 0);
        for (int i = 1; i <= 12; ++i) {
            EXPECT_EQ(Read(std::to_string(i) + ".status"), "0\n");
        }
        EXPECT_EQ(std::filesystem::file_size("cfg/KTAExp2.cfg"), 24u);
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator("cfg"), {}), 1)
            << "nothing but the settings";
    }
}

TEST_F(ProgramTest, LostOutputIsStatus2) {
    if (!std::filesystem::exists("/dev/full")) {
        GTEST_SKIP();
    }
    const int result = std::system("\"" HDO_EXPORT "\" --list s.maxscene.json >/dev/full 2>e.txt");
    ASSERT_TRUE(WIFEXITED(result));
    EXPECT_EQ(WEXITSTATUS(result), kExitRefused);
    EXPECT_EQ(Read("e.txt"), "hdo-export: standard output: cannot be written\n");
}

#endif

}  // namespace
}  // namespace maxhost::app
