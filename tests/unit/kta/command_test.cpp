// The command as users run it: as a process, with its streams and exit status.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>
#include <system_error>
#include <utility>

#include "tests/unit/kta/sample.h"

#ifndef _WIN32
#include <sys/wait.h>
#endif

namespace {

using namespace sample;

struct Result {
    int status = -1;
    std::string output;
    std::string errors;
};

// The text of a file with line ends as '\n' on every system.
std::string LinesOf(const std::string& path) {
    std::ifstream file(path);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

int System(const std::string& command) {
#ifdef _WIN32
    return std::system(("\"" + command + "\"").c_str());
#else
    const int status = std::system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
#endif
}

Result Kta(const std::string& arguments) {
    const std::string output = ScratchPath("output");
    const std::string errors = ScratchPath("errors");
    Result result;
    result.status =
        System("\"" KTA_PROGRAM "\" " + arguments + " > \"" + output + "\" 2> \"" + errors + "\"");
    result.output = LinesOf(output);
    result.errors = LinesOf(errors);
    return result;
}

std::string NoSuchFile() {
    return std::make_error_code(std::errc::no_such_file_or_directory).message();
}

// In the plane of the front view.
MeshFields UprightTriangle() {
    MeshFields mesh = Triangle(0, 0, 0);
    for (std::size_t i = 0; i < 3; ++i) {
        const std::array<std::array<float, 3>, 3> corners = {{{0, 0, 0}, {2, 0, 0}, {0, 2, 0}}};
        std::copy(corners[i].begin(), corners[i].end(),
                  std::begin(mesh.subMeshes[0].vertices[i].position));
    }
    return mesh;
}

std::string InQuotes(const std::string& path) {
    return "\"" + path + "\"";
}

TEST(CommandTest, HelpAndVersion) {
    const Result help = Kta("--help");
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.errors, "");
    for (const char* text : {"info", "dump", "preview", "--version", "Exit status:"}) {
        EXPECT_NE(help.output.find(text), std::string::npos) << text;
    }
    const Result version = Kta("--version");
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.output, "kta " KTA_VERSION "\n");
    const Result dumpHelp = Kta("dump --help");
    EXPECT_EQ(dumpHelp.status, 0);
    EXPECT_NE(dumpHelp.output.find("--json"), std::string::npos);
}

#ifdef __linux__
TEST(CommandTest, HelpIsWrappedToTheTerminal) {
    for (const std::string command : {"", "info", "dump", "check", "diff", "preview", "glb"}) {
        const std::string file = ScratchPath("narrow.txt");
        ASSERT_EQ(
            System("COLUMNS=60 \"" KTA_PROGRAM "\" " + command + " --help > " + InQuotes(file)), 0);
        std::ifstream lines(file);
        std::size_t longest = 0;
        for (std::string line; std::getline(lines, line);) {
            longest = std::max(longest, line.size());
        }
        EXPECT_LE(longest, 60u) << command;
        EXPECT_GT(longest, 45u) << command;
    }
}
#endif

TEST(CommandTest, BadUsage) {
    for (const char* arguments :
         {"", "info", "dump", "dump a b", "frobnicate x", "info --what x"}) {
        const Result result = Kta(arguments);
        EXPECT_EQ(result.status, 2) << arguments;
        EXPECT_EQ(result.output, "") << arguments;
        EXPECT_TRUE(result.errors.starts_with("kta: ")) << result.errors;
        EXPECT_EQ(result.errors.find('\n'), result.errors.size() - 1) << result.errors;
    }
}

TEST(CommandTest, TextsThatAreNoCommandAreNamed) {
    const auto expectLine = [](const std::string& arguments, const std::string& beginning) {
        const std::string errors = Kta(arguments).errors;
        EXPECT_TRUE(errors.starts_with(beginning + ", expected one of info, dump, ")) << errors;
        EXPECT_TRUE(errors.ends_with(" (see kta --help)\n")) << errors;
    };
    expectLine("frobnicate x", "kta: \"frobnicate\": no such command");
    expectLine("--json", "kta: \"--json\": no such command");
    expectLine("", "kta: no command given");
}

TEST(CommandTest, InfoShowsTheFirstFaultsAndDumpAll) {
    const std::string path = Save("faults", ActorFile(std::vector<NodeFields>(23, {.isBone = 2})));
    const Result info = Kta("info " + InQuotes(path));
    EXPECT_EQ(info.status, 1);
    EXPECT_EQ(std::count(info.errors.begin(), info.errors.end(), '\n'), 21);
    EXPECT_TRUE(info.errors.ends_with("\nkta: " + path + ": and 3 more faults\n")) << info.errors;
    const Result dump = Kta("dump " + InQuotes(path));
    EXPECT_EQ(std::count(dump.errors.begin(), dump.errors.end(), '\n'), 23);
}

TEST(CommandTest, InfoOfSeveralFiles) {
    const std::string a = Save("info_a", ActorFile({{}}));
    const std::string b = Save("info_b", ActorFile({}));
    const Result result = Kta("info " + InQuotes(a) + " " + InQuotes(b));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_TRUE(result.output.starts_with(a + "\n")) << result.output;
    EXPECT_NE(result.output.find("\n\n" + b + "\n"), std::string::npos) << result.output;
}

TEST(CommandTest, DumpAsTextAndJson) {
    const std::string path = Save("dump", ActorFile({{.name = "Box01"}}));
    const Result text = Kta("dump " + InQuotes(path));
    EXPECT_EQ(text.status, 0);
    EXPECT_NE(text.output.find("nodeName            \"Box01\"\n"), std::string::npos);
    const Result result = Kta("dump --json " + InQuotes(path));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    const auto dump = nlohmann::json::parse(result.output);
    EXPECT_EQ(dump.at("file"), path);
    EXPECT_EQ(dump.at("chunks").at(0).at("nodeName"), "Box01");
}

TEST(CommandTest, AListOfAnOptionIsOneWord) {
    const std::string path = Save("listed", ActorFile({{.name = "Box01"}}));
    const Result result = Kta("dump --chunks node " + InQuotes(path) + " --no-arrays");
    EXPECT_EQ(result.errors, "");
    EXPECT_NE(result.output.find("\"Box01\""), std::string::npos);
}

TEST(CommandTest, FaultyFile) {
    const std::string path = Save("faulty", std::string("KTA \1\1\7"));
    for (const std::string command : {"info ", "dump ", "info --json ", "dump --json "}) {
        const Result result = Kta(command + InQuotes(path));
        EXPECT_EQ(result.status, 1);
        if (command.find("json") == std::string::npos) {
            EXPECT_EQ(result.output, "");
        } else {
            const auto object = nlohmann::json::parse(result.output);
            EXPECT_EQ(object.at("file"), path);
            EXPECT_EQ(object.at("faults").at(0).at("offset"), 6);
        }
        EXPECT_EQ(result.errors, "kta: " + path +
                                     ": offset 6: header: file kind is 7, expected 0 (motion) or "
                                     "1 (actor)\n");
    }
}

TEST(CommandTest, JsonSaysThatAFileCannotBeRead) {
    for (const std::string command : {"info --json ", "dump --json "}) {
        const Result result = Kta(command + InQuotes(ScratchPath("missing")));
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(nlohmann::json::parse(result.output).at("error"),
                  "cannot be opened (" + NoSuchFile() + ")");
    }
}

TEST(CommandTest, InfoAsJson) {
    const std::string path =
        Save("actor", ActorFile({{.name = "Root"}, {.name = "Arm", .parentName = "Root"}}) +
                          MeshChunk(UprightTriangle()) + MaterialChunk(Grey("Skin")));
    const Result result = Kta("info --json " + InQuotes(path));
    EXPECT_EQ(result.status, 0) << result.errors;
    const auto info = nlohmann::json::parse(result.output);
    EXPECT_EQ(info.at("kind"), "actor");
    EXPECT_EQ(info.at("size"), std::filesystem::file_size(path));
    EXPECT_EQ(info.at("chunks").at("node").at("count"), 2);
    EXPECT_EQ(info.at("nodes").at(0).at("parent"), nullptr);
    EXPECT_EQ(info.at("nodes").at(1).at("name"), "Arm");
    EXPECT_EQ(info.at("nodes").at(1).at("parent"), 0);
    EXPECT_EQ(info.at("meshes").at(0).at("bounds").at("least"), nlohmann::json({0, 0, 0}));
    EXPECT_EQ(info.at("meshes").at(0).at("bounds").at("greatest"), nlohmann::json({2, 2, 0}));
    EXPECT_EQ(info.at("materials"), nlohmann::json({"Skin"}));
    EXPECT_EQ(info.at("textures"), nlohmann::json::array());
}

TEST(CommandTest, DumpOfSomeChunksWithoutArrays) {
    const std::string path =
        Save("actor", ActorFile({{.name = "Root"}}) + MeshChunk(UprightTriangle()) +
                          MaterialChunk(Grey("Skin")));
    const Result result = Kta("dump --json --chunks node,mesh --no-arrays " + InQuotes(path));
    EXPECT_EQ(result.status, 0) << result.errors;
    const auto chunks = nlohmann::json::parse(result.output).at("chunks");
    ASSERT_EQ(chunks.size(), 2u);
    EXPECT_EQ(chunks.at(0).at("nodeName"), "Root");
    EXPECT_EQ(chunks.at(1).at("name"), "mesh");
    EXPECT_FALSE(chunks.at(1).contains("subMeshes"));
    const Result mesh = Kta("dump --json --chunks mesh " + InQuotes(path));
    EXPECT_TRUE(nlohmann::json::parse(mesh.output).at("chunks").at(0).contains("subMeshes"));
    const Result text = Kta("dump --chunks mesh --no-arrays " + InQuotes(path));
    EXPECT_EQ(text.output.find("node chunk"), std::string::npos);
    EXPECT_EQ(text.output.find("vertex "), std::string::npos);
    EXPECT_EQ(Kta("dump --chunks nodes " + InQuotes(path)).status, 2);
}

TEST(CommandTest, StandardInput) {
    const std::string path = Save("actor", ActorFile({{.name = "Root"}}));
    for (const std::string command : {"info -", "dump -"}) {
        const Result result = Kta(command + " < " + InQuotes(path));
        EXPECT_EQ(result.status, 0) << result.errors;
        EXPECT_TRUE(result.output.starts_with("standard input")) << result.output;
    }
    const Result result = Kta("dump --json - < " + InQuotes(path));
    EXPECT_EQ(nlohmann::json::parse(result.output).at("chunks").at(0).at("nodeName"), "Root");
}

TEST(CommandTest, WhatWasReadOfAFaultyFileIsShown) {
    const std::string path = Save("flag", ActorFile({{.isBone = 2}}));
    const Result result = Kta("dump --json " + InQuotes(path));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(nlohmann::json::parse(result.output).at("faults").size(), 1u);
    EXPECT_NE(result.errors.find("offset 643: node chunk: bone flag is 2"), std::string::npos);
}

TEST(CommandTest, UnreadableFileOutranksFaultyOnesAndTheRestIsDone) {
    const std::string good = Save("good", ActorFile({}));
    const std::string faulty = Save("short", "K");
    const std::string missing = ScratchPath("missing");
    const Result result =
        Kta("info " + InQuotes(missing) + " " + InQuotes(faulty) + " " + InQuotes(good));
    EXPECT_EQ(result.status, 2);
    EXPECT_TRUE(result.errors.starts_with("kta: " + missing + ": cannot be opened ("))
        << result.errors;
    EXPECT_NE(result.errors.find("kta: " + faulty + ": offset 0: header: cut off"),
              std::string::npos);
    EXPECT_TRUE(result.output.starts_with(good + "\n")) << result.output;
}

// ---------------------------------------------------------------- preview

std::string TriangleFile() {
    return kActor + MeshChunk(UprightTriangle());
}

std::string BytesOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(PreviewCommandTest, Help) {
    const Result help = Kta("preview --help");
    EXPECT_EQ(help.status, 0);
    for (const char* text : {"--output", "--size", "800x600", "--azimuth", "--elevation",
                             "--collision", "--view", "--time", "--sheet", "--texture-dir"}) {
        EXPECT_NE(help.output.find(text), std::string::npos) << text;
    }
}

TEST(PreviewCommandTest, WritesTheSamePngEachTime) {
    const std::string path = Save("triangle", TriangleFile());
    const std::string a = ScratchPath("a.png");
    const std::string b = ScratchPath("b.PNG");
    for (const std::string& picture : {a, b}) {
        const Result result = Kta("preview " + InQuotes(path) + " -o " + InQuotes(picture) +
                                  " --size 320x200 --azimuth -20.5 --elevation 45 --collision");
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.output + result.errors, "");
    }
    const std::string bytes = BytesOf(a);
    EXPECT_EQ(bytes, BytesOf(b));
    ASSERT_GT(bytes.size(), 24u);
    // The signature, and width and height in the first chunk.
    EXPECT_TRUE(bytes.starts_with("\x89PNG\r\n\x1a\n"));
    EXPECT_EQ(bytes.substr(16, 8), std::string("\0\0\1\x40\0\0\0\xc8", 8));
}

TEST(PreviewCommandTest, BadUsage) {
    const std::string path = InQuotes(Save("triangle", TriangleFile()));
    const std::string picture = InQuotes(ScratchPath("x.png"));
    for (const std::string& arguments :
         {path, std::string("-o ") + picture, path + " -o x.htm", path + " -o x.html --bones",
          path + " -o png", path + " -o " + picture + " --size 800",
          path + " -o " + picture + " --size 0x5", path + " -o " + picture + " --size 10x8193",
          path + " -o " + picture + " --size 5x5x5", path + " -o " + picture + " --size -5x5",
          path + " -o " + picture + " --size 99999999999x5",
          path + " -o " + picture + " --azimuth nan", path + " -o " + picture + " --azimuth 361",
          path + " -o " + picture + " --elevation 91",
          path + " -o " + picture + " --elevation up"}) {
        const Result result = Kta("preview " + arguments);
        EXPECT_EQ(result.status, 2) << arguments;
        EXPECT_EQ(result.output, "") << arguments;
        EXPECT_TRUE(result.errors.starts_with("kta: ")) << result.errors;
        EXPECT_EQ(result.errors.find('\n'), result.errors.size() - 1) << result.errors;
    }
    EXPECT_FALSE(std::ifstream(ScratchPath("x.png")));
}

TEST(PreviewCommandTest, NothingToShow) {
    MeshFields collision = UprightTriangle();
    collision.isCollision = 1;
    const std::string path = Save("collision", kActor + MeshChunk(collision));
    const std::string picture = ScratchPath("x.png");
    std::remove(picture.c_str());  // an earlier run's
    const std::string arguments = "preview " + InQuotes(path) + " -o " + InQuotes(picture);
    const Result result = Kta(arguments);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors, "kta: " + path + ": no triangle to show, nothing written\n");
    EXPECT_FALSE(std::ifstream(picture));
    EXPECT_EQ(Kta(arguments + " --collision").status, 0);
}

TEST(PreviewCommandTest, TrianglesThatCoverNothing) {
    const std::string path = Save("triangle", TriangleFile());
    const std::string picture = ScratchPath("x.png");
    const Result result = Kta("preview " + InQuotes(path) + " -o " + InQuotes(picture) +
                              " --azimuth 90 --elevation 0");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors, "kta: " + path +
                                 ": nothing shows of 1 triangle, without area or seen from the "
                                 "edge, nothing written\n");
    EXPECT_FALSE(std::ifstream(picture));
}

TEST(PreviewCommandTest, FilesThatCannotBeDrawn) {
    const std::string picture = " -o " + InQuotes(ScratchPath("x.png"));
    const std::string missing = ScratchPath("missing");
    const Result none = Kta("preview " + InQuotes(missing) + picture);
    EXPECT_EQ(none.status, 2);
    EXPECT_TRUE(none.errors.starts_with("kta: " + missing + ": cannot be opened ("));

    const std::string motion = Save("motion", kMotion);
    const Result result = Kta("preview " + InQuotes(motion) + picture);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors, "kta: " + motion +
                                 ": offset 6: header: file kind is \"motion\", expected "
                                 "\"actor\"\n");
    EXPECT_FALSE(std::ifstream(ScratchPath("x.png")));
}

TEST(PreviewCommandTest, WhatWasReadOfAFaultyFileIsDrawn) {
    const std::string path = Save("faulty", TriangleFile() + '\0');
    const std::string picture = ScratchPath("x.png");
    std::remove(picture.c_str());  // an earlier run's
    const Result result = Kta("preview " + InQuotes(path) + " -o " + InQuotes(picture));
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.errors.find("chunk header: cut off"), std::string::npos);
    EXPECT_TRUE(std::ifstream(picture));
}

TEST(PreviewCommandTest, PictureThatCannotBeWritten) {
    const std::string path = Save("triangle", TriangleFile());
    const std::string picture = ScratchPath("no_such_directory") + "/x.png";
    const Result result = Kta("preview " + InQuotes(path) + " -o " + InQuotes(picture));
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors, "kta: " + picture + ": cannot be written (" + NoSuchFile() + ")\n");
}

#ifdef __linux__
// A file system of 64 KiB, of the command's own, with the picture's former file in it.
TEST(PreviewCommandTest, FullDisk) {
    const std::string path = Save("triangle", TriangleFile());
    const std::string disk = ScratchPath("disk");
    const std::string errors = ScratchPath("errors");
    std::filesystem::create_directories(disk);
    const std::string withDisk = "unshare -r -m sh -c 'mount -t tmpfs -o size=64k none \"" + disk +
                                 "\" || exit 99; cd \"" + disk + "\"; ";
    if (System(withDisk + "' 2> /dev/null") != 0) {
        GTEST_SKIP() << "no file system can be mounted here";
    }
    EXPECT_EQ(System(withDisk + "printf former > x.png; head -c 60000 /dev/zero > ballast; \"" +
                     KTA_PROGRAM "\" preview \"" + path + "\" -o x.png --size 2000x2000 2> \"" +
                     errors + "\"; echo \"status $?\" >> \"" + errors + "\"; ls -A >> \"" + errors +
                     "\"; cat x.png >> \"" + errors + "\"'"),
              0);
    EXPECT_EQ(LinesOf(errors),
              "kta: x.png: cannot be written (No space left on device)\nstatus 2\nballast\nx.png\n"
              "former");
}

// ---------------------------------------------------------------- glb

TEST(GlbCommandTest, WritesTheSameFileEachTime) {
    const std::string actor = Save("actor", ActorFile({{.name = "Box"}}));
    const std::string motion =
        Save("motion", kMotion + support::MotionPart("Box") +
                           SampledTrack('P', {{0, {0, 0, 0}}, {1, {1, 2, 3}}}));
    const std::string glb = ScratchPath("out.glb");
    const std::string arguments =
        "glb " + InQuotes(actor) + " " + InQuotes(motion) + " -o " + InQuotes(glb);
    EXPECT_EQ(Kta(arguments).status, 0);
    const std::string first = support::ReadFile(glb);
    EXPECT_EQ(first.substr(0, 4), "glTF");
    EXPECT_NE(first.find("\"animations\""), std::string::npos);
    EXPECT_EQ(Kta(arguments).status, 0);
    EXPECT_EQ(support::ReadFile(glb), first);
    // Without the motion nothing moves.
    EXPECT_EQ(Kta("glb " + InQuotes(actor) + " -o " + InQuotes(glb)).status, 0);
    EXPECT_EQ(support::ReadFile(glb).find("\"animations\""), std::string::npos);
}

TEST(GlbCommandTest, BadUsage) {
    const std::string actor = InQuotes(Save("actor", ActorFile({DistinctNode()})));
    const std::pair<std::string, std::string> cases[] = {
        {"", "--output is required"},
        {"-o out.gltf", "\"out.gltf\" is no GLB file, expected a name that ends in .glb"},
        {"-o out.glb --max-influences 0", "0"},
        {"-o out.glb --texture-dir nowhere", "nowhere"}};
    for (const auto& [arguments, text] : cases) {
        const Result result = Kta("glb " + actor + " " + arguments);
        EXPECT_EQ(result.status, 2) << arguments;
        EXPECT_NE(result.errors.find(text), std::string::npos) << result.errors;
    }
}

TEST(GlbCommandTest, FilesThatCannotBeShown) {
    const std::string glb = ScratchPath("out.glb");
    const std::string actor = Save("actor", ActorFile({DistinctNode()}));
    const std::string motion = Save("motion", TracksFile());
    const std::string empty = Save("empty", ActorFile({}));
    const std::pair<std::string, std::string> cases[] = {
        {InQuotes(motion), "expected"},
        {InQuotes(actor) + " " + InQuotes(actor), "expected"},
        {InQuotes(ScratchPath("none")), NoSuchFile()},
        {InQuotes(empty), "no node to show, nothing written"}};
    for (const auto& [files, text] : cases) {
        const Result result = Kta("glb " + files + " -o " + InQuotes(glb));
        EXPECT_EQ(result.status, 2) << files;
        EXPECT_NE(result.errors.find(text), std::string::npos) << result.errors;
        EXPECT_FALSE(std::filesystem::exists(glb));
    }
}

TEST(GlbCommandTest, WhatWasReadOfAFaultyFileIsShown) {
    const std::string glb = ScratchPath("out.glb");
    const std::string actor = Save("actor", ActorFile({DistinctNode()}) + "cut");
    EXPECT_EQ(Kta("glb " + InQuotes(actor) + " -o " + InQuotes(glb)).status, 1);
    EXPECT_TRUE(std::filesystem::exists(glb));
}

TEST(GlbCommandTest, TexturesThatAreNotFoundAreNamed) {
    const std::string glb = ScratchPath("out.glb");
    const std::string actor = Save("actor", kActor + ExtraMaterial() + MaterialChunk(Grey()) +
                                                LayerChunk({.texture = "brick.png"}) +
                                                NodeChunk({}) + MeshChunk(Triangle(1, 1, 1)));
    const Result result = Kta("glb " + InQuotes(actor) + " -o " + InQuotes(glb));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "kta: " + actor + ": 1 texture left out, not found: brick.png\n");
}

// ---------------------------------------------------------------- texts and streams

TEST(CommandTest, ControlCharactersOfNamesStayOutOfMessages) {
    EXPECT_TRUE(Kta("info \"/no\nsuch\x1b[31m\"")
                    .errors.starts_with("kta: /no such [31m: cannot be opened ("));
    EXPECT_TRUE(Kta("\"a\nb\"").errors.starts_with("kta: \"a b\": no such command"));
    const std::string path = Save("control\n\x1b[31m", ActorFile({}));
    const std::string shown = path.substr(0, path.find('\n')) + " [31m";
    EXPECT_TRUE(Kta("info " + InQuotes(path)).output.starts_with(shown + "\n"));
    EXPECT_TRUE(Kta("dump " + InQuotes(path)).output.starts_with(shown + ": actor file"));
}

// A full disk and a closed output, for each way of writing to it.
TEST(CommandTest, OutputThatCannotBeWritten) {
    const std::string path = Save("output", ActorFile({{}, {}}));
    const std::string errors = ScratchPath("errors");
    for (const std::string arguments : {"info", "dump", "dump --json"}) {
        for (const auto& [sink, reason] :
             {std::pair(" > /dev/full",
                        "kta: standard output: cannot be written (No space left on device)\n"),
              std::pair(" >&-",
                        "kta: standard output: cannot be written (Bad file descriptor)\n")}) {
            EXPECT_EQ(System("\"" KTA_PROGRAM "\" " + arguments + " " + InQuotes(path) + sink +
                             " 2> " + InQuotes(errors)),
                      2)
                << arguments << sink;
            EXPECT_EQ(LinesOf(errors), reason);
        }
    }
    EXPECT_EQ(System("\"" KTA_PROGRAM "\" --help > /dev/full 2> " + InQuotes(errors)), 2);
}

// The reader of the pipe is gone before a long dump is through.
TEST(CommandTest, ClosedPipe) {
    const std::string path = Save("pipe", ActorFile(std::vector<NodeFields>(2000)));
    EXPECT_NE(System("bash -c 'set -o pipefail; \"" KTA_PROGRAM "\" dump \"" + path +
                     "\" 2> /dev/null | head -n 1 > /dev/null'"),
              0);
}

TEST(CommandTest, EndlessInputThatIsNoKtaFile) {
    const Result result = Kta("info /dev/zero");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "kta: /dev/zero: offset 0: header: magic is \"\\x00\\x00\\x00\\x00\", expected "
              "\"KTA \"\n");
}
#endif

#ifndef _WIN32
TEST(EnvironmentTest, NoHomeIsNoError) {
    const std::string file = Save("triangle", TriangleFile());
    const std::string picture = ScratchPath("p.png");
    const std::string program = "env -i \"" KTA_PROGRAM "\" ";
    EXPECT_EQ(System(program + "info " + InQuotes(file) + " >\"" + ScratchPath("info") + "\""), 0);
    EXPECT_EQ(System(program + "preview -o " + InQuotes(picture) + " " + InQuotes(file)), 0);
    EXPECT_TRUE(std::filesystem::exists(picture));
}
#endif

}  // namespace
