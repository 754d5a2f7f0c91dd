#include <gtest/gtest.h>

#include <bit>
#include <cstdlib>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>
#include <random>
#include <sstream>

#include "kta/dump.h"
#include "kta/info.h"
#include "tests/unit/kta/sample_file.h"

namespace {

using nlohmann::json;

kta::Reading ReadNodes(const std::vector<sample::Node>& nodes) {
    return kta::Read(sample::ActorFile(nodes));
}

std::string JsonOf(const kta::Reading& reading, const std::string& path = "x.hdotemp1") {
    std::ostringstream out;
    kta::DumpJson(path, reading.file.value(), reading.faults, out);
    return out.str();
}

// ---------------------------------------------------------------- dump

TEST(DumpTest, TextHasEveryFieldWithItsOffset) {
    std::ostringstream out;
    kta::DumpText("x.hdotemp1", ReadNodes({sample::DistinctNode()}).file.value(), out);
    EXPECT_EQ(out.str(),
              "x.hdotemp1: actor file, 651 bytes\n"
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
    const json dump = json::parse(JsonOf(ReadNodes({sample::DistinctNode(), {}})));
    EXPECT_EQ(dump.size(), 4u);
    EXPECT_EQ(dump.at("file"), "x.hdotemp1");
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
    sample::Writer writer;
    AddHeader(writer, sample::Kind::motion);
    EXPECT_EQ(JsonOf(kta::Read(writer.bytes), "m"),
              "{\"file\":\"m\",\n\"kind\":\"motion\",\n\"version\":[1,1],\n\"chunks\":[]}\n");
}

TEST(DumpTest, JsonOfAFaultyFileEndsWithItsFaults) {
    const json dump = json::parse(JsonOf(ReadNodes({{.isBone = 3}})));
    ASSERT_EQ(dump.at("faults").size(), 1u);
    EXPECT_EQ(dump.at("faults")[0], json({{"offset", 643},
                                          {"where", "node chunk"},
                                          {"text", "bone flag is 3, expected 0 or 1"}}));
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
            JsonOf(ReadNodes({{.translation = {values[i], values[i + 1], values[i + 2]}}}));
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
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const json dump =
        json::parse(JsonOf(ReadNodes({{.translation = {std::nanf(""), kInfinity, -kInfinity}}})));
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
    const json dump = json::parse(JsonOf(ReadNodes({{.name = name}}), "dir\\\xe9.hdotemp1"));
    EXPECT_EQ(dump.at("file"), "dir\\\xc3\xa9.hdotemp1");
    EXPECT_EQ(dump.at("chunks")[0].at("nodeName"), kta::ToUtf8(name));
}

sample::Bytes GeometryFile() {
    sample::Writer writer;
    AddMaterial(AddHeader(writer, sample::Kind::actor), {.name = "Red \xe9"});
    AddLayer(writer, {.texture = "a.png"});
    AddLayer(writer, {.texture = "b.png", .type = 3});
    AddMaterial(writer, {.name = "Blue"});
    AddLayer(writer, {.texture = "a.png", .material = 1});
    AddNode(writer, {});
    AddMesh(writer, sample::Triangle(200, 1, 2));
    sample::Mesh collision = sample::Triangle(0, 0, 0);
    collision.isCollision = 1;
    collision.subMeshes.push_back(collision.subMeshes[0]);
    return AddMesh(writer, collision).bytes;
}

std::string TextOfChunks(const sample::Writer& file) {
    std::ostringstream out;
    kta::DumpText("x", kta::Read(file.bytes).file.value(), out);
    const std::string text = out.str();
    return text.substr(text.find("\noffset 7:"));
}

TEST(DumpTest, TextOfMaterialsAndLayers) {
    sample::Writer writer;
    AddMaterial(AddHeader(writer, sample::Kind::actor), {.name = "Red", .wire = 1});
    AddLayer(writer, {});
    EXPECT_EQ(TextOfChunks(writer),
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
    sample::Writer writer;
    AddMesh(AddHeader(writer, sample::Kind::actor), sample::Triangle(200, 1, 2));
    EXPECT_EQ(TextOfChunks(writer),
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
    const std::string text = JsonOf(kta::Read(GeometryFile()));
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
    std::istringstream lines(JsonOf(kta::Read(GeometryFile())));
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
    const kta::Reading reading = ReadNodes({{.name = "root"},
                                            {.name = "arm", .parentName = "root", .isBone = 1},
                                            {.name = "hand", .parentName = "arm", .isBone = 1},
                                            {.name = "light", .hasHelperSize = 1}});
    const kta::Summary summary = kta::Summarize(reading.file.value());
    ASSERT_EQ(summary.chunks.size(), 1u);
    EXPECT_EQ(summary.chunks[0].type->id, kChunkNode);
    EXPECT_EQ(summary.chunks[0].count, 4u);
    EXPECT_EQ(summary.chunks[0].bytes, 4u * 644);
    EXPECT_EQ(summary.nodes, 4u);
    EXPECT_EQ(summary.bones, 2u);
    EXPECT_EQ(summary.helpers, 1u);
    EXPECT_EQ(summary.depth, 3u);

    std::ostringstream out;
    kta::WriteInfo("x", reading.file.value(), out);
    EXPECT_EQ(out.str(),
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
    const kta::Reading reading = kta::Read(GeometryFile());
    ASSERT_TRUE(reading.Good());
    const kta::Summary summary = kta::Summarize(*reading.file);
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

    std::ostringstream out;
    kta::WriteInfo("x", *reading.file, out);
    EXPECT_NE(out.str().find("  materials               2\n"
                             "  layers                  3\n"
                             "  textures                2\n"
                             "  meshes                  2\n"
                             "  for collision           1\n"
                             "  sub-meshes              3\n"
                             "  triangles               3\n"
                             "  vertices                9\n"
                             "  vertices in the scene   18\n"),
              std::string::npos)
        << out.str();
}

TEST(InfoTest, MotionFileHasNoNodeLines) {
    sample::Writer writer;
    AddHeader(writer, sample::Kind::motion);
    std::ostringstream out;
    kta::WriteInfo("m", kta::Read(writer.bytes).file.value(), out);
    EXPECT_EQ(out.str(),
              "m\n"
              "  kind                    motion\n"
              "  version                 1.1\n"
              "  size                    7 bytes\n"
              "  chunks                  0\n");
}

TEST(InfoTest, SaysHowFarAFaultyFileWasRead) {
    sample::Writer writer;
    AddNode(AddHeader(writer, sample::Kind::actor), {});
    writer.U8(0);
    std::ostringstream out;
    kta::WriteInfo("x", kta::Read(writer.bytes).file.value(), out);
    EXPECT_NE(out.str().find("652 bytes, read up to offset 651\n"), std::string::npos);
}

std::size_t DepthOf(const std::vector<sample::Node>& nodes) {
    return kta::Summarize(ReadNodes(nodes).file.value()).depth;
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
    std::vector<sample::Node> nodes;
    for (int i = 20000; i > 0; --i) {
        nodes.push_back({.name = std::to_string(i), .parentName = std::to_string(i - 1)});
    }
    EXPECT_EQ(DepthOf(nodes), 20000u);
}

}  // namespace
