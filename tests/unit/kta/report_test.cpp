#include <bit>
#include <cmath>
#include <cstdlib>
#include <map>
#include <nlohmann/json.hpp>
#include <random>
#include <sstream>

#include "kta/dump.h"
#include "kta/info.h"
#include "tests/unit/kta/sample.h"

namespace {

using namespace sample;
using nlohmann::json;

// The dump from the chunk at an offset on.
std::string DumpFrom(const std::string& bytes, std::size_t offset = 7) {
    const std::string text = DumpOf(bytes);
    return text.substr(text.find("\noffset " + std::to_string(offset) + ":"));
}

json DumpedChunk(const std::string& bytes, std::size_t chunk = 0) {
    return json::parse(JsonDumpOf(bytes)).at("chunks").at(chunk);
}

kta::Summary SummaryOf(const std::string& bytes) {
    return kta::Summarize(ReadExact(bytes).file.value());
}

// ---------------------------------------------------------------- dump

TEST(DumpTest, TextHasEveryFieldWithItsOffset) {
    EXPECT_EQ(DumpOf(ActorFile({DistinctNode()})),
              "x: actor file, 651 bytes\n"
              "\n"
              "offset 0: header\n"
              "           0  magic               \"KTA \"\n"
              "           4  version             [1,1]\n"
              "           6  kind                actor\n"
              "\n"
              "offset 7: node chunk, id 0, size 632, version 3\n"
              "          19  nodeName            \"Arm \\\"left\\\"\"\n"
              "         279  parentName          \"scene root\"\n"
              "         539  translation         [1.0,3.0,2.0]\n"
              "         551  rotation            [0.25,-0.5,0.75,0.125]\n"
              "         567  scale               [-1.5,-2.5,-3.5]\n"
              "         579  inverseWorldMatrix  [0.1,1.1,2.1,0.0]\n"
              "         595                      [4.1,5.1,6.1,0.0]\n"
              "         611                      [8.1,9.1,10.1,0.0]\n"
              "         627                      [12.1,13.1,14.1,0.0]\n"
              "         643  isBone              true\n"
              "         644  hasHelperSize       true\n"
              "         647  helperSize          12.5\n");
}

TEST(DumpTest, JsonHasTheDocumentedShape) {
    const json dump = json::parse(JsonDumpOf(ActorFile({DistinctNode(), {}})));
    EXPECT_EQ(dump.size(), 4u);
    EXPECT_EQ(dump.at("file"), "x");
    EXPECT_EQ(dump.at("kind"), "actor");
    EXPECT_EQ(dump.at("version"), json::array({1, 1}));
    ASSERT_EQ(dump.at("chunks").size(), 2u);
    const json& chunk = dump.at("chunks")[0];
    EXPECT_EQ(chunk.size(), 14u);
    EXPECT_EQ(chunk.at("id"), 0);
    EXPECT_EQ(chunk.at("name"), "node");
    EXPECT_EQ(chunk.at("offset"), 7);
    EXPECT_EQ(chunk.at("size"), 632);
    EXPECT_EQ(chunk.at("version"), 3);
    EXPECT_EQ(chunk.at("nodeName"), "Arm \"left\"");
    EXPECT_EQ(chunk.at("parentName"), "scene root");
    EXPECT_EQ(chunk.at("translation"), json::array({1, 3, 2}));
    EXPECT_EQ(chunk.at("rotation"), json::array({0.25, -0.5, 0.75, 0.125}));
    EXPECT_EQ(chunk.at("scale"), json::array({-1.5, -2.5, -3.5}));
    ASSERT_EQ(chunk.at("inverseWorldMatrix").size(), 4u);
    EXPECT_EQ(chunk.at("inverseWorldMatrix")[3], json::parse("[12.1, 13.1, 14.1, 0]"));
    EXPECT_EQ(chunk.at("isBone"), true);
    EXPECT_EQ(chunk.at("hasHelperSize"), true);
    EXPECT_EQ(chunk.at("helperSize"), 12.5);
    EXPECT_EQ(dump.at("chunks")[1].at("offset"), 651);
    EXPECT_EQ(dump.at("chunks")[1].at("isBone"), false);
}

TEST(DumpTest, JsonOfAFileWithoutChunks) {
    EXPECT_EQ(JsonDumpOf(kMotion),
              "{\"file\":\"x\",\n\"kind\":\"motion\",\n\"version\":[1,1],\n\"chunks\":[]}\n");
}

TEST(DumpTest, JsonOfAFaultyFileEndsWithItsFaults) {
    const json dump = json::parse(JsonDumpOf(ActorFile({{.isBone = 3}})));
    ASSERT_EQ(dump.at("faults").size(), 1u);
    EXPECT_EQ(dump.at("faults")[0], json({{"offset", 643},
                                          {"where", "node chunk"},
                                          {"text", "bone flag is 3, expected 0 or 1"},
                                          {"code", "flag-value"},
                                          {"found", "3"},
                                          {"expected", "0 or 1"}}));
    EXPECT_EQ(dump.at("chunks").size(), 1u);
}

// Every float's digits give the same 32 bits again, subnormals and limits included.
TEST(DumpTest, FloatsReadBackToTheSameBits) {
    std::mt19937 random(7);
    std::vector<float> values = {0.0f,
                                 -0.0f,
                                 0.1f,
                                 1.0f / 3,
                                 16777216.0f,
                                 std::numeric_limits<float>::max(),
                                 std::numeric_limits<float>::min(),
                                 std::numeric_limits<float>::denorm_min()};
    while (values.size() < 30000) {
        const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        if (std::isfinite(value)) {
            values.push_back(value);
        }
    }
    for (std::size_t i = 0; i + 3 <= values.size(); i += 3) {
        const std::string text =
            JsonDumpOf(ActorFile({{.translation = {values[i], values[i + 1], values[i + 2]}}}));
        const char* at = text.c_str() + text.find("\"translation\":[") + 15;
        for (std::size_t k = i; k < i + 3; ++k) {
            char* end = nullptr;
            const float read = std::strtof(at, &end);
            ASSERT_NE(end, at);
            ASSERT_EQ(std::bit_cast<std::uint32_t>(read), std::bit_cast<std::uint32_t>(values[k]))
                << text;
            at = end + 1;
        }
    }
}

TEST(DumpTest, FloatsThatAreNotFiniteAreTexts) {
    const json dump = json::parse(
        JsonDumpOf(ActorFile({{.translation = {std::nanf(""), kInfinity, -kInfinity}}})));
    EXPECT_EQ(dump.at("chunks")[0].at("translation"), json::array({"nan", "inf", "-inf"}));
}

TEST(DumpTest, TextBecomesUtf8) {
    EXPECT_EQ(kta::ToUtf8(""), "");
    EXPECT_EQ(kta::ToUtf8("plain"), "plain");
    // Valid sequences of two, three and four bytes stay.
    EXPECT_EQ(kta::ToUtf8("\xc3\xa9 \xe2\x82\xac \xf0\x9f\x90\xb4"),
              "\xc3\xa9 \xe2\x82\xac \xf0\x9f\x90\xb4");
    // A lone byte is its Latin-1 character, before, between and at the end of others.
    EXPECT_EQ(kta::ToUtf8("\xe9t\xe9"), "\xc3\xa9t\xc3\xa9");
    EXPECT_EQ(kta::ToUtf8("\xff"), "\xc3\xbf");
    EXPECT_EQ(kta::ToUtf8("\x80"), "\xc2\x80");
    // Cut, overlong, surrogate, and beyond the last code point: byte by byte.
    EXPECT_EQ(kta::ToUtf8("\xe2\x82"), "\xc3\xa2\xc2\x82");
    EXPECT_EQ(kta::ToUtf8("\xc0\x80"), "\xc3\x80\xc2\x80");
    EXPECT_EQ(kta::ToUtf8("\xed\xa0\x80"), "\xc3\xad\xc2\xa0\xc2\x80");
    EXPECT_EQ(kta::ToUtf8("\xf4\x90\x80\x80"), "\xc3\xb4\xc2\x90\xc2\x80\xc2\x80");
    EXPECT_EQ(kta::ToUtf8("\xf4\x8f\xbf\xbf"), "\xf4\x8f\xbf\xbf");
}

TEST(DumpTest, JsonIsValidForAnyNameAndPath) {
    std::string name;
    for (int byte = 1; byte < 256; ++byte) {
        name += static_cast<char>(byte);
    }
    std::ostringstream out;
    const kta::Reading reading = ReadExact(ActorFile({{.name = name}}));
    kta::DumpJson("dir\\\xe9.hdotemp1", reading, out);
    const json dump = json::parse(out.str());
    EXPECT_EQ(dump.at("file"), "dir\\\xc3\xa9.hdotemp1");
    EXPECT_EQ(dump.at("chunks")[0].at("nodeName"), kta::ToUtf8(name));
}

std::string GeometryFile() {
    MeshFields collision = Triangle(0, 0, 0);
    collision.isCollision = 1;
    collision.subMeshes.push_back(collision.subMeshes[0]);
    return kActor + MaterialChunk(Grey("Red \xe9")) +
           LayerChunk({.texture = "a.png", .material = 0}) +
           LayerChunk({.texture = "b.png", .type = 3, .material = 0}) +
           MaterialChunk(Grey("Blue")) + LayerChunk({.texture = "a.png", .material = 1}) +
           NodeChunk({}) + MeshChunk(Triangle(200, 1, 2)) + MeshChunk(collision);
}

TEST(DumpTest, TextOfMaterialsAndLayers) {
    MaterialFields red = Grey("Red");
    red.wire = 1;
    EXPECT_EQ(
        DumpFrom(kActor + MaterialChunk(red) + LayerChunk({.texture = "wood.png", .material = 0})),
        "\n"
        "offset 7: material chunk, id 6, size 108, version 2\n"
        "          19  materialName        \"Red\"\n"
        "          59  ambient             [0.0,0.0,0.0]\n"
        "          71  diffuse             [0.75,0.75,0.75]\n"
        "          83  specular            [1.0,1.0,1.0]\n"
        "          95  selfIllumination    [0.0,0.0,0.0]\n"
        "         107  shininess           0.0\n"
        "         111  shininessStrength   0.0\n"
        "         115  opacity             1.0\n"
        "         119  indexOfRefraction   1.5\n"
        "         123  twoSided            false\n"
        "         124  wire                true\n"
        "         125  transparencyType    \"F\"\n"
        "\n"
        "offset 127: material layer chunk, id 7, size 288, version 3\n"
        "         139  textureFileName     \"wood.png\"\n"
        "         399  layerType           1\n"
        "         401  parentMaterial      0\n"
        "         403  amount              1.0\n"
        "         407  uOffset             0.0\n"
        "         411  vOffset             0.0\n"
        "         415  uTiling             1.0\n"
        "         419  vTiling             1.0\n"
        "         423  rotationAngle       0.0\n");
}

TEST(DumpTest, TextOfAMesh) {
    EXPECT_EQ(DumpFrom(kActor + MeshChunk(Triangle(200, 1, 2))),
              "\n"
              "offset 7: mesh chunk, id 3, size 160, version 3\n"
              "          19  nodeNumber          0\n"
              "          23  originalVertexCount 9\n"
              "          27  vertexCount         3\n"
              "          31  indexCount          3\n"
              "          35  subMeshCount        1\n"
              "          39  mapChannelCount     1\n"
              "          43  isCollision         false\n"
              "          47  materialNumber      200\n"
              "          51  indexCount          3\n"
              "          55  vertexCount         3\n"
              "          63  vertex              2 [1.5,2.5,3.5] [4.5,5.5,6.5] [7.5,8.5] "
              "[9.5,10.5]\n"
              "         107  vertex              5 [11.5,12.5,13.5] [14.5,15.5,16.5] "
              "[17.5,18.5] [19.5,20.5]\n"
              "         151  vertex              8 [21.5,22.5,23.5] [24.5,25.5,26.5] "
              "[27.5,28.5] [29.5,30.5]\n"
              "         195  face                [0,2,1]\n");
}

TEST(DumpTest, JsonOfGeometry) {
    const std::string text = JsonDumpOf(GeometryFile());
    const json dump = json::parse(text);
    const json& chunks = dump.at("chunks");
    ASSERT_EQ(chunks.size(), 8u);
    EXPECT_EQ(chunks[0].at("materialName"), "Red \xc3\xa9");
    EXPECT_EQ(chunks[0].at("diffuse"), json::array({0.75, 0.75, 0.75}));
    EXPECT_EQ(chunks[0].at("transparencyType"), "F");
    EXPECT_EQ(chunks[0].size(), 5u + 12);
    EXPECT_EQ(chunks[2].at("textureFileName"), "b.png");
    EXPECT_EQ(chunks[2].at("layerType"), 3);
    EXPECT_EQ(chunks[2].size(), 5u + 9);
    EXPECT_EQ(chunks[4].at("parentMaterial"), 1);
    json mesh = chunks[6];
    EXPECT_EQ(mesh.at("subMeshes")[0].at("vertices")[1],
              json::parse(R"({"originalVertex": 5, "position": [11.5, 12.5, 13.5],
                              "normal": [14.5, 15.5, 16.5],
                              "textureCoordinates": [[17.5, 18.5], [19.5, 20.5]]})"));
    mesh.at("subMeshes")[0].erase("vertices");
    mesh.erase("offset");
    EXPECT_EQ(mesh, json::parse(R"({"id": 3, "name": "mesh", "size": 160, "version": 3,
        "nodeNumber": 0, "originalVertexCount": 9, "vertexCount": 3, "indexCount": 3,
        "subMeshCount": 1, "mapChannelCount": 1, "isCollision": false,
        "subMeshes": [{"materialNumber": 200, "indexCount": 3, "vertexCount": 3,
                       "faces": [[0, 2, 1]]}]})"));
    EXPECT_EQ(chunks[7].at("isCollision"), true);
    EXPECT_EQ(chunks[7].at("subMeshes").size(), 2u);
    EXPECT_EQ(chunks[7].at("subMeshes")[1].at("vertices")[2].at("textureCoordinates"),
              json::array());
}

// Each chunk, vertex and face begins a line of its own, so that dumps can be compared by lines.
TEST(DumpTest, JsonLines) {
    std::istringstream lines(JsonDumpOf(GeometryFile()));
    std::map<std::string, int> begins;
    for (std::string line; std::getline(lines, line);) {
        ++begins[line.substr(0, line.find_first_of(":0123456789"))];
    }
    EXPECT_EQ(begins["{\"id\""], 8);
    EXPECT_EQ(begins["{\"materialNumber\""], 3);
    EXPECT_EQ(begins["{\"originalVertex\""], 9);
    EXPECT_EQ(begins["["], 3);
}

// ---------------------------------------------------------------- info

TEST(InfoTest, CountsChunksNodesBonesAndHelpers) {
    const std::string file = ActorFile({{.name = "root"},
                                        {.name = "arm", .parentName = "root", .isBone = 1},
                                        {.name = "hand", .parentName = "arm", .isBone = 1},
                                        {.name = "light", .hasHelperSize = 1}});
    const kta::Summary summary = SummaryOf(file);
    ASSERT_EQ(summary.chunks.size(), 1u);
    EXPECT_EQ(summary.chunks[0].type->id, kChunkNode);
    EXPECT_EQ(summary.chunks[0].count, 4u);
    EXPECT_EQ(summary.chunks[0].bytes, 4u * 644);
    EXPECT_EQ(summary.nodes, 4u);
    EXPECT_EQ(summary.bones, 2u);
    EXPECT_EQ(summary.helpers, 1u);
    EXPECT_EQ(summary.depth, 3u);
    EXPECT_EQ(InfoOf(file),
              "x\n"
              "  kind                    actor\n"
              "  version                 1.1\n"
              "  size                    2583 bytes\n"
              "  chunks                  4\n"
              "    node                  4, 2576 bytes\n"
              "  nodes                   4\n"
              "  bones                   2\n"
              "  with helper size        1\n"
              "  hierarchy levels        3\n"
              "  materials               0\n"
              "  layers                  0\n"
              "  textures                0\n"
              "  meshes                  0\n"
              "  for collision           0\n"
              "  sub-meshes              0\n"
              "  triangles               0\n"
              "  vertices                0\n"
              "  vertices in the scene   0\n");
}

TEST(InfoTest, CountsGeometry) {
    const kta::Summary summary = SummaryOf(GeometryFile());
    EXPECT_EQ(summary.materials, 2u);
    EXPECT_EQ(summary.layers, 3u);
    EXPECT_EQ(summary.textures, 2u);
    EXPECT_EQ(summary.meshes, 2u);
    EXPECT_EQ(summary.collisionMeshes, 1u);
    EXPECT_EQ(summary.subMeshes, 3u);
    EXPECT_EQ(summary.triangles, 3u);
    EXPECT_EQ(summary.vertices, 9u);
    EXPECT_EQ(summary.originalVertices, 18u);
    ASSERT_EQ(summary.chunks.size(), 4u);
    EXPECT_EQ(summary.chunks[1].type->id, kChunkMesh);
    EXPECT_EQ(summary.chunks[1].bytes, (12u + 160 + 4 + 3 * 8) + (12 + 28 + 2 * (12 + 84 + 12)));
    const std::string info = InfoOf(GeometryFile());
    EXPECT_NE(info.find("  materials               2\n"
                        "  layers                  3\n"
                        "  textures                2\n"
                        "  meshes                  2\n"
                        "  for collision           1\n"
                        "  sub-meshes              3\n"
                        "  triangles               3\n"
                        "  vertices                9\n"
                        "  vertices in the scene   18\n"),
              std::string::npos)
        << info;
}

TEST(InfoTest, MotionFileHasNoNodeLines) {
    EXPECT_EQ(InfoOf(kMotion),
              "x\n"
              "  kind                    motion\n"
              "  version                 1.1\n"
              "  size                    7 bytes\n"
              "  chunks                  0\n");
}

TEST(InfoTest, SaysHowFarAFaultyFileWasRead) {
    EXPECT_NE(InfoOf(ActorFile({{}}) + '\0').find("652 bytes, read up to offset 651\n"),
              std::string::npos);
}

std::size_t DepthOf(const std::vector<NodeFields>& nodes) {
    return SummaryOf(ActorFile(nodes)).depth;
}

TEST(InfoTest, HierarchyLevels) {
    EXPECT_EQ(DepthOf({}), 0u);
    EXPECT_EQ(DepthOf({{.name = "a"}, {.name = "b"}}), 1u);
    // The parent may stand behind its child, or be missing from the file.
    EXPECT_EQ(DepthOf({{.name = "b", .parentName = "a"}, {.name = "a"}}), 2u);
    EXPECT_EQ(DepthOf({{.name = "a", .parentName = "hidden"}}), 1u);
    // Names that occur twice or make circles still give an answer.
    EXPECT_EQ(DepthOf({{.name = "a"}, {.name = "a", .parentName = "a"}}), 2u);
    EXPECT_EQ(DepthOf({{.name = "a", .parentName = "a"}}), 1u);
    EXPECT_EQ(DepthOf({{.name = "a", .parentName = "b"}, {.name = "b", .parentName = "a"}}), 2u);
}

TEST(InfoTest, LongChainOfNodes) {
    std::vector<NodeFields> nodes;
    for (int i = 20000; i > 0; --i) {
        nodes.push_back({.name = std::to_string(i), .parentName = std::to_string(i - 1)});
    }
    EXPECT_EQ(DepthOf(nodes), 20000u);
}

// ---------------------------------------------------------------- what hangs from nodes

// A skin with five vertices that have no record.
std::string UnrecordedFile() {
    return kActor + MeshChunk(Triangle(0, 0, 0)) +
           WeightsChunk(0, {{{2, 0.5f}, {-1, 0.25f}}, {}, {{2, 1}}, {{7, 1}}}, 5);
}

TEST(RigDumpTest, Weights) {
    EXPECT_EQ(DumpFrom(UnrecordedFile(), 155),
              "\n"
              "offset 155: skinning weights chunk, id 4, size 45, version 1\n"
              "         167  nodeNumber          0\n"
              "         171  vertex              2 [2,0.5] [-1,0.25]\n"
              "         188  vertex              0\n"
              "         189  vertex              1 [2,1.0]\n"
              "         198  vertex              1 [7,1.0]\n");
    EXPECT_EQ(DumpedChunk(UnrecordedFile(), 1),
              json::parse(R"({"id": 4, "name": "skinning weights", "offset": 155, "size": 45,
                  "version": 1, "nodeNumber": 0,
                  "vertices": [{"weightCount": 2, "weights": [[2, 0.5], [-1, 0.25]]},
                               {"weightCount": 0, "weights": []},
                               {"weightCount": 1, "weights": [[2, 1.0]]},
                               {"weightCount": 1, "weights": [[7, 1.0]]}]})"));
    EXPECT_EQ(DumpedChunk(kActor + WeightsChunk(0, {})).at("vertices"), json::array());
}

TEST(RigDumpTest, JointLimits) {
    const std::string file = kActor + JointLimitsChunk();
    EXPECT_EQ(DumpFrom(file),
              "\n"
              "offset 7: joint limits chunk, id 8, size 88, version 1\n"
              "          19  nodeNumber          3\n"
              "          23  positionMinimum     [-5.5,-4.5,-3.5]\n"
              "          35  positionMaximum     [-2.5,-1.5,-0.5]\n"
              "          47  rotationMinimum     [0.5,1.5,2.5]\n"
              "          59  rotationMaximum     [3.5,4.5,5.5]\n"
              "          71  at52                [1.0,1.0,1.0,1.0,1.0,1.0]\n"
              "          95  positionLimited     [true,false,false]\n"
              "          98  rotationLimited     [false,false,true]\n"
              "         101  at82                [0,0]\n"
              "         103  at84                0\n");
    const json chunk = DumpedChunk(file);
    EXPECT_EQ(chunk.size(), 5u + 10);
    EXPECT_EQ(chunk.at("rotationMaximum"), json::array({3.5, 4.5, 5.5}));
    EXPECT_EQ(chunk.at("rotationLimited"), json::array({false, false, true}));
}

// Packed coordinates, and what they are: here steps of 1 / 65535 of a hundredth of a unit.
TEST(RigDumpTest, Morph) {
    const std::string file = kActor + MorphChunk({.packed = {{0, 65535, 13107}, {1, 2, 3}}});
    const std::string text = DumpFrom(file);
    EXPECT_TRUE(
        text.starts_with("\n"
                         "offset 7: morph chunk, id 10, size 292, version 3\n"
                         "          19  channelName         \"Smile\"\n"
                         "         279  at260               0.0\n"
                         "         283  at264               1.0\n"
                         "         287  at268               0\n"
                         "         291  at272               0\n"
                         "         295  at276               1\n"
                         "         299  at280               0\n"
                         "         303  at284               0\n"
                         "         307  at288               0.0\n"
                         "         311  nodeName            \"Head\"\n"
                         "         571  pointCount          2\n"
                         "         575  minimum             0.0\n"
                         "         579  maximum             1.0\n"
                         "         583  at564               0\n"
                         "         587  point               0 [0,65535,13107] "
                         "[0.0,0.01,0.002]\n"
                         "         593  point               1 [1,2,3] ["))
        << text;
    const json chunk = DumpedChunk(file);
    EXPECT_EQ(chunk.size(), 5u + 14 + 1);
    const json& point = chunk.at("points")[0];
    EXPECT_EQ(point.at("pointNumber"), 0);
    EXPECT_EQ(point.at("packed"), json::array({0, 65535, 13107}));
    EXPECT_EQ(point.at("position")[1].get<float>(), 0.01f);
}

TEST(RigDumpTest, PositionsThatCannotBeTold) {
    const std::string file = kActor + MorphChunk({.maximum = 70000, .packed = {{0, 0, 0}}});
    EXPECT_EQ(DumpedChunk(file).at("points")[0].at("position"), json::array({"nan", "nan", "nan"}));
}

TEST(RigDumpTest, Wire) {
    const std::string file = kActor + SampleWire();
    EXPECT_EQ(DumpFrom(file),
              "\n"
              "offset 7: parameter wiring chunk, id 14, size 1116, version 1\n"
              "          19  firstNodeName       \"Driver\"\n"
              "         279  secondNodeName      \"Slave\"\n"
              "         539  firstExpression     \"\"\n"
              "         799  secondExpression    \"X_Position * 2\"\n"
              "        1059  secondVariable      \"Z_Scale\"\n"
              "        1079  firstVariable       \"\"\n"
              "        1099  firstPart           0\n"
              "        1103  secondPart          2\n"
              "        1107  firstComponent      0\n"
              "        1111  secondComponent     2\n"
              "        1115  firstWeight         1.0\n"
              "        1119  secondWeight        0.5\n"
              "        1123  firstListWeight     0.0\n"
              "        1127  secondListWeight    0.25\n"
              "        1131  linkKind            2\n");
    EXPECT_EQ(DumpedChunk(file).size(), 5u + 15);
    EXPECT_EQ(DumpedChunk(file).at("linkKind"), 2);
}

TEST(RigDumpTest, IkChain) {
    const std::string file = kActor + IkChainChunk();
    EXPECT_EQ(DumpFrom(file),
              "\n"
              "offset 7: IK chain chunk, id 15, size 1064, version 1\n"
              "          19  nodeName            \"Chain\"\n"
              "         279  startJoint          \"Thigh\"\n"
              "         539  endJoint            \"Foot\"\n"
              "         799  at780               true\n"
              "         800  solverNode          \"Target\"\n"
              "        1063  at1044              1.5\n"
              "        1067  at1048              7\n"
              "        1071  at1052              [2.0,4.0,3.0]\n");
    EXPECT_EQ(DumpedChunk(file).size(), 5u + 8);
}

TEST(RigInfoTest, CountsSkinsMorphsWiresAndChains) {
    ASSERT_TRUE(ReadExact(RigFile()).Good());
    const std::string text = InfoOf(RigFile());
    EXPECT_TRUE(
        text.ends_with("  vertices in the scene   9\n"
                       "  skinned meshes          1\n"
                       "  vertices with weights   9\n"
                       "  weights                 12\n"
                       "  most of one vertex      3\n"
                       "  bones with weights      2\n"
                       "  joint limits            1\n"
                       "  morph channels          1\n"
                       "  points of morphs        2\n"
                       "  wired parameters        1\n"
                       "  IK chains               1\n"))
        << text;
}

TEST(RigInfoTest, VerticesWithoutRecordHaveNoWeights) {
    ASSERT_TRUE(ReadExact(UnrecordedFile()).Good());
    const kta::Summary summary = SummaryOf(UnrecordedFile());
    EXPECT_EQ(summary.weights, 1u);
    EXPECT_EQ(summary.weightedVertices, 4u);
    EXPECT_EQ(summary.influences, 4u);
    EXPECT_EQ(summary.mostInfluences, 2u);
    EXPECT_EQ(summary.weightingBones, 2u);
    EXPECT_EQ(summary.jointLimits + summary.morphChannels + summary.wires + summary.ikChains, 0u);
}

// ---------------------------------------------------------------- motion

TEST(MotionDumpTest, Text) {
    const std::string file =
        kMotion + PosedPart("Box01") +
        SampledTrack('R', {{0, {0, 0, 0, 1}}, {0.5f, {0.5f, -0.5f, 0.5f, 0.5f}}}) +
        KeyframedTrack('S',
                       {KeyRecord(0.1f, {1, 2, 3}, 7, {5, 3, 4, 3, 3, 5}, {{0.5f, 2}, {1, -4}}),
                        KeyRecord(1, {4, 5, 6})});
    EXPECT_EQ(DumpOf(file),
              "x: motion file, 467 bytes\n"
              "\n"
              "offset 0: header\n"
              "           0  magic               \"KTA \"\n"
              "           4  version             [1,1]\n"
              "           6  kind                motion\n"
              "\n"
              "offset 7: motion part chunk, id 1, size 300, version 2\n"
              "          19  nodeName            \"Box01\"\n"
              "         279  translation         [1.0,3.0,2.0]\n"
              "         291  rotation            [0.5,-0.5,0.25,0.75]\n"
              "         307  scale               [4.0,6.0,5.0]\n"
              "\n"
              "offset 319: key track chunk, id 2, size 48, version 1\n"
              "         331  keyCount            2\n"
              "         335  interpolation       \"L\"\n"
              "         336  trackLetter         \"R\"\n"
              "         339  key                 0.0 [0.0,0.0,0.0,1.0]\n"
              "         359  key                 0.5 [0.5,-0.5,0.5,0.5]\n"
              "\n"
              "offset 379: key track chunk, id 2, size 8, version 2\n"
              "         391  keyCount            2\n"
              "         395  interpolation       \"L\"\n"
              "         396  trackLetter         \"S\"\n"
              "         399  key                 0.1 [1.0,2.0,3.0] 7 [5,3,4,3,3,5] [0.5,2.0] "
              "[1.0,-4.0]\n"
              "         441  key                 1.0 [4.0,5.0,6.0] 7 [3,3,3,3,3,3]\n");
}

TEST(MotionDumpTest, Json) {
    const std::string text = JsonDumpOf(TracksFile());
    const json dump = json::parse(text);
    EXPECT_EQ(dump.at("kind"), "motion");
    const json& chunks = dump.at("chunks");
    ASSERT_EQ(chunks.size(), 8u);
    EXPECT_EQ(chunks[0], json::parse(R"({"id": 1, "name": "motion part", "offset": 7, "size": 300,
        "version": 2, "nodeName": "Sampled", "translation": [1.0, 3.0, 2.0],
        "rotation": [0.5, -0.5, 0.25, 0.75], "scale": [4.0, 6.0, 5.0]})"));
    EXPECT_EQ(chunks[1], json::parse(R"({"id": 2, "name": "key track", "offset": 319, "size": 56,
        "version": 1, "keyCount": 3, "interpolation": "L", "trackLetter": "P",
        "keys": [{"time": 0.0, "values": [1.0, 3.0, 2.0]},
                 {"time": 0.5, "values": [2.0, 4.0, 3.0]},
                 {"time": 0.5, "values": [2.0, 4.0, 3.0]}]})"));
    EXPECT_EQ(chunks[2].at("keys")[1],
              json::parse(R"({"time": 0.5, "values": [0.5, -0.5, 0.5, 0.5]})"));
    EXPECT_EQ(chunks[5].at("version"), 2);
    EXPECT_EQ(chunks[5].at("keys"),
              json::parse(R"([{"time": 0.0, "values": [1.0, 2.0, 3.0], "axisMask": 7,
                               "tangentCodes": [5, 1, 3, 4, 1, 5],
                               "tangentRecords": [[0.5, 2.0], [1.0, -4.0]]},
                              {"time": 1.0, "values": [0.0, 7.0, 0.0], "axisMask": 2,
                               "tangentCodes": [1, 3, 1, 1, 4, 1], "tangentRecords": []}])"));
    EXPECT_EQ(chunks[6].at("trackLetter"), "r");
    // Keys begin lines of their own.
    std::istringstream lines(text);
    int keys = 0;
    for (std::string line; std::getline(lines, line);) {
        keys += line.starts_with("{\"time\"") ? 1 : 0;
    }
    EXPECT_EQ(keys, 3 + 2 + 1 + 2 + 1 + 1);
}

TEST(MotionDumpTest, TimesReadBackToTheSameBits) {
    for (const float time : {1 / 30.0f, 0.1f, 3.3333333f, 1e-5f, 16777217.0f}) {
        const json track = DumpedChunk(
            kMotion + PosedPart("Box01") + SampledTrack('P', {{time, {time, 0, 0}}}), 1);
        const json& key = track.at("keys")[0];
        EXPECT_EQ(key.at("time").get<float>(), time);
        EXPECT_EQ(key.at("values")[0].get<float>(), time);
    }
}

TEST(MotionInfoTest, CountsTracksAndKeys) {
    EXPECT_EQ(InfoOf(TracksFile()),
              "x\n"
              "  kind                    motion\n"
              "  version                 1.1\n"
              "  size                    1023 bytes\n"
              "  chunks                  8\n"
              "    motion part           2, 624 bytes\n"
              "    key track             6, 392 bytes\n"
              "  motion parts            2\n"
              "  key tracks              6\n"
              "    P sampled             1 track, 3 keys\n"
              "    P keyframed           1 track, 2 keys\n"
              "    R sampled             1 track, 2 keys\n"
              "    r keyframed           1 track, 1 key\n"
              "    S sampled             1 track, 1 key\n"
              "    S keyframed           1 track, 1 key\n"
              "  keys                    10\n"
              "  first time              0.0 s\n"
              "  last time               1.0 s\n"
              "  most keys               Sampled (6), Curves (4)\n");
}

TEST(MotionInfoTest, PartWithoutTracks) {
    const std::string info = InfoOf(kMotion + PosedPart("Box01"));
    EXPECT_TRUE(info.ends_with("  motion parts            1\n  key tracks              0\n"))
        << info;
}

TEST(MotionInfoTest, TrackWithoutPart) {
    const std::string info = InfoOf(kMotion + SampledTrack('P', {{2, {1, 2, 3}}}));
    EXPECT_TRUE(
        info.ends_with("  motion parts            0\n"
                       "  key tracks              1\n"
                       "    P sampled             1 track, 1 key\n"
                       "  keys                    1\n"
                       "  first time              2.0 s\n"
                       "  last time               2.0 s\n"))
        << info;
}

TEST(MotionInfoTest, FivePartsWithMostKeys) {
    std::string file = kMotion;
    const std::pair<const char*, int> parts[] = {{"a", 1}, {"b", 3}, {"c", 2}, {"d\n", 3},
                                                 {"e", 1}, {"f", 4}, {"g", 0}};
    for (const auto& [name, count] : parts) {
        file += PosedPart(name);
        if (count > 0) {
            file += SampledTrack('P', std::vector<SampleFields>(count, {2, {1, 2, 3}}));
        }
    }
    const std::string info = InfoOf(file);
    EXPECT_TRUE(info.ends_with("  most keys               f (4), b (3), d (3), c (2), a (1)\n"))
        << info;
}

TEST(MotionInfoTest, TimesThatAreNotFiniteDoNotCount) {
    const std::string file =
        kMotion + PosedPart("Box01") +
        SampledTrack('P', {{std::nanf(""), {1, 2, 3}}, {-2, {1, 2, 3}}, {kInfinity, {1, 2, 3}}});
    const kta::MotionSummary summary = kta::SummarizeMotion(ReadExact(file).file.value());
    EXPECT_EQ(summary.firstTime, -2);
    EXPECT_EQ(summary.lastTime, -2);
    EXPECT_EQ(summary.keys, 3u);
}

}  // namespace
