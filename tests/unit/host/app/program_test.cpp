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

TEST_F(ProgramTest, ExportsAScene) {
    const Outcome outcome = RunReal("s.maxscene.json");
    EXPECT_EQ(outcome.status, kExitDone) << outcome.error;
    EXPECT_EQ(outcome.error, "");
    EXPECT_THAT(Names(), ElementsAre("cfg", "s.hdo", "s.hdo.glb", "s.hdo.log", "s.hdotemp1",
                                     "s.hdotemp2", "s.maxscene.json"));
    EXPECT_THAT(Lines(outcome.out),
                testing::Contains(StartsWith(Path("s.hdo.log").string() + ": log")));
    EXPECT_THAT(Lines(outcome.out), testing::Contains(Path("s.hdo.glb").string() + ": preview"));
    EXPECT_EQ(Read("s.hdo.glb").substr(0, 4), "glTF");
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

TEST_F(ProgramTest, NodesByNameAreTheSelectionAndItIsExported) {
    const Outcome outcome = RunReal("--select leaf -o x.hdo s.maxscene.json");
    EXPECT_EQ(outcome.status, kExitDone) << outcome.error;
    EXPECT_THAT(Lines(outcome.out), testing::Contains("exported 1 of 3 nodes"));
    ASSERT_EQ(RunReal("-q --selected --select leaf -o y.hdo s.maxscene.json").status, kExitDone);
    EXPECT_EQ(Read("x.hdotemp1"), Read("y.hdotemp1"));
}

TEST_F(ProgramTest, NodesThatAreNotExportedAreNamedWithTheReason) {
    EXPECT_THAT(
        Lines(RunReal("s.maxscene.json").out),
        testing::IsSupersetOf({"exported 2 of 3 nodes", "not exported: \"hidden\": hidden"}));
    EXPECT_THAT(
        Lines(RunReal("--select leaf s.maxscene.json").out),
        testing::IsSupersetOf({"exported 1 of 3 nodes", "not exported: \"root\": not selected",
                               "not exported: \"hidden\": not selected"}));
    EXPECT_THAT(RunReal("--export-hidden s.maxscene.json").out,
                testing::Not(testing::HasSubstr("not exported")));
    EXPECT_THAT(Lines(RunReal("--cancel-after 2 --keep-partial s.maxscene.json").out),
                testing::Contains("not exported: \"leaf\": cancelled before"));
}

TEST_F(ProgramTest, ABipedFootprintIsNamedAsTheReason) {
    Write("b.maxscene.json", R"({"maxscene": 1, "nodes": [{"name": "a"}, {"name": "b",
        "transform": {"class": "footprint"}}]})");
    const Outcome outcome = RunReal("b.maxscene.json");
    EXPECT_THAT(
        Lines(outcome.out),
        testing::IsSupersetOf({"exported 1 of 2 nodes", "not exported: \"b\": a biped footprint"}))
        << outcome.error;
}

TEST_F(ProgramTest, TenNodesThatAreNotExportedAreNamedAndAllOnRequest) {
    std::string nodes = R"({"name": "shown\n"})";
    for (int i = 0; i < 13; ++i) {
        nodes += R"(, {"hidden": true, "name": "n)" + std::to_string(i) + "\"}";
    }
    // Of two nodes with one name the hidden one is left out.
    nodes += R"(, {"name": "shown\n", "hidden": true})";
    Write("t.maxscene.json", R"({"maxscene": 1, "nodes": [)" + nodes + "]}");
    const std::string few = RunReal("t.maxscene.json").out;
    EXPECT_THAT(Lines(few),
                testing::IsSupersetOf({"exported 1 of 15 nodes", "not exported: \"n9\": hidden",
                                       "not exported: 4 other nodes (-v names all)"}));
    EXPECT_THAT(few, testing::Not(testing::HasSubstr("\"n10\"")));
    const std::string all = RunReal("-v t.maxscene.json").out;
    EXPECT_THAT(Lines(all), testing::IsSupersetOf({"not exported: \"n12\": hidden",
                                                   "not exported: \"shown\\x0a\": hidden"}));
    EXPECT_THAT(all, testing::Not(testing::HasSubstr("other node")));
}

TEST_F(ProgramTest, TheRangeIsGivenInTicksFramesOrSeconds) {
    const auto range = [this](const std::string& arguments) {
        EXPECT_EQ(RunReal(arguments + " --save-scene t.maxscene.json s.maxscene.json").status,
                  kExitDone);
        const scene::Time time = LoadScene("t.maxscene.json").scene.time;
        return std::pair(time.start, time.end);
    };
    EXPECT_EQ(range("--start 480 --end 960"), std::pair(480, 960));
    EXPECT_EQ(range("--start 3f --end 12.5f"), std::pair(480, 2000));
    EXPECT_EQ(range("--start 0.1s --end 12f --frame-rate 25"), std::pair(480, 12 * 192));
    EXPECT_EQ(range("--start 1f --end 0.4s --frame-rate 29"), std::pair(165, 29 * 165 * 2 / 5));
    const Outcome outcome = RunReal("--start 0.5s --end 3f s.maxscene.json");
    EXPECT_EQ(outcome.status, kExitRefused);
    EXPECT_THAT(outcome.error, testing::HasSubstr("--start: the range would be 2400 to 480"));
    EXPECT_EQ(RunReal("--end 1e9s s.maxscene.json").status, kExitRefused);
}

#ifndef _WIN32
TEST_F(ProgramTest, NoHomeIsNoError) {
    ASSERT_EQ(
        std::system("env -i \"" HDO_EXPORT "\" -o x.hdo s.maxscene.json >out.txt 2>error.txt"), 0)
        << Read("error.txt");
    EXPECT_EQ(Read("error.txt"), "");
    EXPECT_THAT(Lines(Read("out.txt")), testing::Contains("exported 2 of 3 nodes"));
    EXPECT_THAT(Names(), ElementsAre("error.txt", "out.txt", "s.maxscene.json", "x.hdo",
                                     "x.hdo.glb", "x.hdo.log", "x.hdotemp1", "x.hdotemp2"));
}

TEST_F(ProgramTest, HelpIsWrappedToTheTerminal) {
    ASSERT_EQ(std::system("COLUMNS=60 \"" HDO_EXPORT "\" --help >narrow.txt"), 0);
    ASSERT_EQ(std::system("COLUMNS=90 \"" HDO_EXPORT "\" --help >wide.txt"), 0);
    std::size_t narrow = 0, wide = 0;
    for (const std::string& line : Lines(Read("narrow.txt"))) {
        narrow = std::max(narrow, line.size());
    }
    for (const std::string& line : Lines(Read("wide.txt"))) {
        wide = std::max(wide, line.size());
    }
    EXPECT_LE(narrow, 60u);
    EXPECT_GT(wide, 80u);
    EXPECT_LE(wide, 90u);
}

TEST_F(ProgramTest, QuietRunsCopyTheLogAllTheSame) {
    const Outcome outcome = RunReal("-q -v s.maxscene.json");
    EXPECT_EQ(outcome.status, kExitDone);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.error, testing::HasSubstr("Exporting node 'leaf'"));
}
#endif

#ifndef _WIN32
TEST_F(ProgramTest, TheLogsCopyCannotSteerATerminal) {
    Write("e.maxscene.json", R"({"maxscene": 1, "nodes": [{"name": "a\u001b[2Jb"}]})");
    ASSERT_EQ(std::system("script -qec '\"" HDO_EXPORT
                          "\" --config-dir cfg -v -o x.hdo e.maxscene.json' /dev/null >seen.txt "
                          "</dev/null"),
              0);
    EXPECT_THAT(Read("seen.txt"), testing::HasSubstr("Exporting node 'a\\x1b[2Jb'"));
    EXPECT_THAT(Read("seen.txt"), testing::Not(testing::HasSubstr("\x1b[2J")));
    EXPECT_THAT(RunReal("-v -o x.hdo e.maxscene.json").error,
                testing::HasSubstr("Exporting node 'a\x1b[2Jb'"))
        << "to the byte where there is no terminal";
}

#if !defined(__SANITIZE_ADDRESS__)
// A sanitizer's allocator ends the process where memory is refused; the release runs this.
TEST_F(ProgramTest, AModelThatAsksForTooMuchMemoryIsStatus2AndSaysTheLimit) {
    Write("i.dae", R"(<?xml version="1.0"?>
<COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1">
 <library_geometries><geometry id="g"><mesh>
  <source id="p"><float_array id="pa" count="9">0 0 0 1 0 0 0 1 0</float_array><technique_common>
   <accessor source="#pa" count="3" stride="3"><param name="X" type="float"/>
    <param name="Y" type="float"/><param name="Z" type="float"/></accessor></technique_common>
  </source>
  <vertices id="v"><input semantic="POSITION" source="#p"/></vertices>
  <triangles count="1"><input semantic="VERTEX" source="#v" offset="0"/><p>0 [] 2</p></triangles>
 </mesh></geometry></library_geometries>
 <library_visual_scenes><visual_scene id="s"><node id="n"><instance_geometry url="#g"/></node>
 </visual_scene></library_visual_scenes>
 <scene><instance_visual_scene url="#s"/></scene>
</COLLADA>)");
    const Outcome outcome = RunReal("-o x.hdo i.dae");
    EXPECT_EQ(outcome.status, kExitRefused);
    EXPECT_THAT(outcome.error,
                testing::HasSubstr("not enough memory, the reader may take 512 MiB, the limit for "
                                   "its size (512 MiB and 400 times its bytes)"));
}
#endif
#endif

TEST_F(ProgramTest, EmptySelectionIsStatus2UnlessAllowed) {
    Write("x.hdotemp1", "former");
    const Outcome outcome = RunReal("--selected -o x.hdo s.maxscene.json");
    EXPECT_EQ(outcome.status, kExitRefused);
    EXPECT_EQ(
        Lines(outcome.error).at(0),
        "hdo-export: --selected: nothing is selected in s.maxscene.json, expected a selection "
        "(--allow-empty lets it pass)");
    EXPECT_EQ(Read("x.hdotemp1"), "former");
    const Outcome allowed = RunReal("--selected --allow-empty -o x.hdo s.maxscene.json");
    EXPECT_EQ(allowed.status, kExitDone);
    EXPECT_THAT(Lines(allowed.out), testing::Contains("exported 0 of 3 nodes"));
}

TEST_F(ProgramTest, AnEmptySceneDescriptionIsNoError) {
    Write("e.maxscene.json", R"({"maxscene": 1, "nodes": []})");
    const Outcome outcome = RunReal("--strict e.maxscene.json");
    EXPECT_EQ(outcome.status, kExitDone) << outcome.error;
    EXPECT_THAT(Lines(outcome.out), testing::Contains("exported 0 of 0 nodes"));
}

TEST_F(ProgramTest, WarningsAreFailuresOnRequest) {
    Write("t.maxscene.json", R"({"maxscene": 1, "nodes": [{"name": "a"}, {"name": "a"}]})");
    Write("x.hdotemp1", "former");
    const Outcome outcome =
        RunReal("--strict --save-scene u.maxscene.json -o x.hdo t.maxscene.json");
    EXPECT_EQ(outcome.status, kExitFaultyOutput);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(Lines(outcome.error),
                testing::IsSupersetOf({"hdo-export: t.maxscene.json: warning: several nodes of one "
                                       "name, and the files tell parents by name: \"a\" (2 nodes)",
                                       "hdo-export: t.maxscene.json: 1 warning, expected none with "
                                       "--strict; nothing is written"}));
    EXPECT_EQ(Read("x.hdotemp1"), "former");
    EXPECT_FALSE(std::filesystem::exists("x.hdotemp2"));
    EXPECT_FALSE(std::filesystem::exists("u.maxscene.json"));
    EXPECT_EQ(RunReal("-q --strict -o y.hdo s.maxscene.json").status, kExitDone);
}

#ifndef _WIN32  // where models are not read
TEST_F(ProgramTest, WarningsOfAModelAreFailuresOnRequest) {
    Write("m.ply",
          "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
          "property float z\nelement face 1\nproperty list uchar int vertex_indices\n"
          "end_header\n0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n");
    const Outcome outcome = RunReal("--strict -o x.hdo m.ply");
    EXPECT_EQ(outcome.status, kExitFaultyOutput);
    EXPECT_THAT(outcome.error, testing::HasSubstr("1 warning, expected none with --strict"));
    EXPECT_FALSE(std::filesystem::exists("x.hdotemp1"));
    EXPECT_EQ(RunReal("-q -o x.hdo m.ply").status, kExitDone);
}

TEST_F(ProgramTest, AModelWithoutNodesIsStatus2UnlessAllowed) {
    Write("e.obj", "# nothing in it\n");
    Write("x.hdotemp1", "former");
    const Outcome outcome = RunReal("-o x.hdo e.obj");
    EXPECT_EQ(outcome.status, kExitRefused);
    EXPECT_EQ(Lines(outcome.error).at(0),
              "hdo-export: e.obj: no node in it, expected a model with at least one (--allow-empty "
              "lets it pass)");
    EXPECT_EQ(Read("x.hdotemp1"), "former");
    const Outcome allowed = RunReal("--allow-empty -o x.hdo e.obj");
    EXPECT_EQ(allowed.status, kExitDone) << allowed.error;
    EXPECT_THAT(Lines(allowed.out), testing::Contains("exported 0 of 0 nodes"));
}

#ifdef __linux__
// Readers take what there is of these files: a node, and no face.
TEST_F(ProgramTest, AModelThatWasCutOffBeforeItsFacesIsStatus2UnlessAllowed) {
    const std::string ply =
        "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
        "property float z\nelement face ";
    const std::string list =
        "\nproperty list uchar int vertex_indices\nend_header\n0 0 0\n1 0 0\n0 1 0\n";
    Write("c.ply", ply + "1" + list);
    Write("c.off", "OFF\n3 1 0\n0 0 0\n1 0 0\n0 1 0\n");
    Write("c.smd", "version 1\nnodes\n0 \"root\" -1\nend\nskeleton\ntime 0\n0 0 0 0 0 0 0\n");
    Write("x.hdotemp1", "former");
    for (const std::string name : {"c.ply", "c.off", "c.smd"}) {
        const Outcome outcome = RunReal("-o x.hdo " + name);
        EXPECT_EQ(outcome.status, kExitRefused) << name;
        EXPECT_EQ(Lines(outcome.error).at(0),
                  "hdo-export: " + name +
                      ": cut off, no face in it, expected those that it announces (--allow-empty "
                      "lets it pass)");
        EXPECT_EQ(Read("x.hdotemp1"), "former");
    }
    EXPECT_EQ(RunReal("--allow-empty -o x.hdo c.ply").status, kExitDone);
    Write("points.ply", ply + "0" + list);
    EXPECT_EQ(RunReal("-o x.hdo points.ply").status, kExitDone) << "points alone are a model";
}
#endif

TEST_F(ProgramTest, GarbageUnderTheNameOfATextFormatIsStatus2) {
    Write("g.obj", std::string("v 0 0 0\0", 8));
    const Outcome outcome = RunReal("--allow-empty -o x.hdo g.obj");
    EXPECT_EQ(outcome.status, kExitRefused);
    EXPECT_THAT(Lines(outcome.error),
                ElementsAre("hdo-export: g.obj: not text, which .obj files are: character 0x00 at "
                            "offset 7"));
}

TEST_F(ProgramTest, Utf16ModelExportsTheSameBytes) {
    const std::string text = "v 0 0 0\nv 1 0 0\nv 0 1 0\no box\nf 1 2 3\n";
    Write("m.obj", text);
    ASSERT_EQ(RunReal("-q -o a.hdo m.obj").status, kExitDone);
    std::string coded = "\xff\xfe";
    for (const char c : text) {
        coded += {c, '\0'};
    }
    Write("m.obj", coded);
    const Outcome outcome = RunReal("-q -o b.hdo m.obj");
    EXPECT_EQ(outcome.status, kExitDone) << outcome.error;
    EXPECT_GT(Read("a.hdotemp1").size(), 632u);
    EXPECT_EQ(Read("a.hdotemp1"), Read("b.hdotemp1"));
}
#endif

// By way of the command line and the exporter's own dialog.
TEST_F(ProgramTest, EveryOptionOfTheExporterReachesItsSettingAndNoOther) {
    for (const ExporterOption& option : kExporterOptions) {
        ExportOptions expected = DefaultExportOptions();
        std::string arguments = "-q ";
        std::filesystem::remove_all("cfg");
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

TEST_F(ProgramTest, ADirectoryInAFilesPlaceFailsTheExport) {
    std::filesystem::create_directory("x.hdotemp2");
    const Outcome outcome = RunReal("-o x.hdo s.maxscene.json");
    EXPECT_EQ(outcome.status, kExitExportFailed);
    EXPECT_THAT(Lines(outcome.error),
                ElementsAre("hdo-export: " + Path("x.hdo").string() + ": the export failed: " +
                            Path("x.hdotemp2").string() + " is a directory"));
    EXPECT_FALSE(std::filesystem::exists("x.hdotemp1"));
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
    // The stand-in's result would say that the files are good.
    EXPECT_EQ(RunReal("--keep-partial s.maxscene.json").status, kExitFaultyOutput);
    EXPECT_THAT(Names(), testing::Contains("s.hdotemp1"));
    EXPECT_THAT(Names(), testing::Not(testing::Contains("s.hdo")));
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
        RunReal("--cancel-dialog --save-scene q.maxscene.json -o x.hdo s.maxscene.json");
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
    std::filesystem::remove_all("cfg");
    EXPECT_EQ(RunReal("-q --weight-threshold 0.0001 s.maxscene.json").status, kExitDone);
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
