#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "kta/dump.h"
#include "kta/info.h"
#include "tests/unit/kta/sample_chunks.h"

namespace {

using namespace sample;
using nlohmann::json;

Bytes Skinned() {
    Writer writer;
    AddMesh(AddHeader(writer, Kind::actor), Triangle(0, 0, 0));
    return AddWeights(writer, 0, {{{2, 0.5f}, {-1, 0.25f}}, {}, {{2, 1}}, {{7, 1}}}, 5).bytes;
}

// What stands from the chunk at an offset on.
std::string TextOf(const Bytes& bytes, std::size_t offset = 7) {
    std::ostringstream out;
    kta::DumpText("x", kta::Read(bytes).file.value(), out);
    const std::string text = out.str();
    return text.substr(text.find("\noffset " + std::to_string(offset) + ":"));
}

json ChunkOf(const Bytes& bytes, std::size_t chunk = 0) {
    std::ostringstream out;
    const kta::Reading reading = kta::Read(bytes);
    kta::DumpJson("x", reading.file.value(), reading.faults, out);
    return json::parse(out.str()).at("chunks").at(chunk);
}

Writer Actor() {
    Writer writer;
    AddHeader(writer, Kind::actor);
    return writer;
}

TEST(RigDumpTest, Weights) {
    EXPECT_EQ(TextOf(Skinned(), 155),
              "\n"
              "offset 155: skinning weights chunk, id 4, size 45, version 1\n"
              "         167  nodeNumber          0\n"
              "         171  vertex              2 [2,0.5] [-1,0.25]\n"
              "         188  vertex              0\n"
              "         189  vertex              1 [2,1.0]\n"
              "         198  vertex              1 [7,1.0]\n");
    EXPECT_EQ(ChunkOf(Skinned(), 1),
              json::parse(R"({"id": 4, "name": "skinning weights", "offset": 155, "size": 45,
                  "version": 1, "nodeNumber": 0,
                  "vertices": [{"weightCount": 2, "weights": [[2, 0.5], [-1, 0.25]]},
                               {"weightCount": 0, "weights": []},
                               {"weightCount": 1, "weights": [[2, 1.0]]},
                               {"weightCount": 1, "weights": [[7, 1.0]]}]})"));
    Writer empty = Actor();
    EXPECT_EQ(ChunkOf(AddWeights(empty, 0, {}).bytes).at("vertices"), json::array());
}

TEST(RigDumpTest, JointLimits) {
    Writer writer = Actor();
    EXPECT_EQ(TextOf(AddJointLimits(writer).bytes),
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
    const json chunk = ChunkOf(writer.bytes);
    EXPECT_EQ(chunk.size(), 5u + 10);
    EXPECT_EQ(chunk.at("rotationMaximum"), json::array({3.5, 4.5, 5.5}));
    EXPECT_EQ(chunk.at("rotationLimited"), json::array({false, false, true}));
}

// Packed coordinates, and what they are: here steps of 1 / 65535 of a hundredth of a unit.
TEST(RigDumpTest, Morph) {
    Writer writer = Actor();
    AddMorph(writer, {.packed = {{0, 65535, 13107}, {1, 2, 3}}});
    const std::string text = TextOf(writer.bytes);
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
    const json chunk = ChunkOf(writer.bytes);
    EXPECT_EQ(chunk.size(), 5u + 14 + 1);
    const json& point = chunk.at("points")[0];
    EXPECT_EQ(point.at("pointNumber"), 0);
    EXPECT_EQ(point.at("packed"), json::array({0, 65535, 13107}));
    EXPECT_EQ(point.at("position")[1].get<float>(), 0.01f);
}

TEST(RigDumpTest, PositionsThatNothingTells) {
    Writer writer = Actor();
    AddMorph(writer, {.maximum = 70000, .packed = {{0, 0, 0}}});
    EXPECT_EQ(ChunkOf(writer.bytes).at("points")[0].at("position"),
              json::array({"nan", "nan", "nan"}));
}

TEST(RigDumpTest, Wire) {
    Writer writer = Actor();
    EXPECT_EQ(TextOf(AddWire(writer).bytes),
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
    EXPECT_EQ(ChunkOf(writer.bytes).size(), 5u + 15);
    EXPECT_EQ(ChunkOf(writer.bytes).at("linkKind"), 2);
}

TEST(RigDumpTest, IkChain) {
    Writer writer = Actor();
    EXPECT_EQ(TextOf(AddIkChain(writer).bytes),
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
    EXPECT_EQ(ChunkOf(writer.bytes).size(), 5u + 8);
}

TEST(RigInfoTest, CountsWhatHangsFromNodes) {
    const kta::Reading reading = kta::Read(RigFile());
    ASSERT_TRUE(reading.Good());
    std::ostringstream out;
    kta::WriteInfo("x", *reading.file, out);
    const std::string text = out.str();
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
    const kta::Reading reading = kta::Read(Skinned());
    ASSERT_TRUE(reading.Good());
    const kta::Summary summary = kta::Summarize(*reading.file);
    EXPECT_EQ(summary.weights, 1u);
    EXPECT_EQ(summary.weightedVertices, 4u);
    EXPECT_EQ(summary.influences, 4u);
    EXPECT_EQ(summary.mostInfluences, 2u);
    EXPECT_EQ(summary.weightingBones, 2u);
    EXPECT_EQ(summary.jointLimits + summary.morphChannels + summary.wires + summary.ikChains, 0u);
}

}  // namespace
