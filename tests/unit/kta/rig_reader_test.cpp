#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/unit/kta/sample_chunks.h"

namespace {

using namespace sample;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr std::size_t kBody = 7 + 12;             // of the file's first chunk
constexpr std::size_t kWeights = 7 + 148;         // of the chunk behind a mesh of one triangle
constexpr std::size_t kVertices = kWeights + 16;  // the weights of the first vertex

Writer Actor() {
    Writer writer;
    AddHeader(writer, Kind::actor);
    return writer;
}

template <typename Body>
const Body& BodyOf(const kta::Reading& reading, std::size_t chunk = 0) {
    return std::get<Body>(reading.file.value().chunks.at(chunk).body);
}

std::string Fault(std::size_t offset, const std::string& where, const std::string& text) {
    return "f: offset " + std::to_string(offset) + ": " + where + " chunk: " + text;
}

// ---------------------------------------------------------------- weights

std::string WeightsFault(std::size_t offset, const std::string& text) {
    return Fault(offset, "skinning weights", text);
}

// Behind a mesh of 9 original vertices, whose node is 0.
Writer Skinned(const std::vector<Entries>& vertices, std::uint32_t unrecorded = 0) {
    Writer writer = Actor();
    AddMesh(writer, Triangle(0, 0, 0));
    return AddWeights(writer, 0, vertices, unrecorded);
}

TEST(WeightsReaderTest, EntriesOfVertices) {
    const Bytes bytes = Skinned({{{2, 0.5f}, {-1, 0.25f}}, {}, {{7, 1}}}).bytes;
    ASSERT_EQ(bytes.size(), kVertices + 17 + 1 + 9);
    const kta::Reading reading = ReadExact(bytes);
    ASSERT_TRUE(reading.Good()) << FaultsOf(bytes)[0];
    const kta::Chunk& chunk = reading.file->chunks.at(1);
    EXPECT_EQ(chunk.type->id, kChunkWeights);
    EXPECT_EQ(chunk.size, 4u + 24 + 3);
    EXPECT_EQ(chunk.version, 1u);
    const auto& weights = std::get<kta::Weights>(chunk.body);
    EXPECT_EQ(weights.node, 0);
    EXPECT_EQ(weights.numVertices, 3u);
    EXPECT_EQ(weights.counts, (std::vector<std::uint8_t>{2, 0, 1}));
    ASSERT_EQ(weights.entries.size(), 3u);
    EXPECT_EQ(weights.entries[0].bone, 2);
    EXPECT_EQ(weights.entries[0].weight, 0.5f);
    EXPECT_EQ(weights.entries[1].bone, -1);
    EXPECT_EQ(weights.entries[2].bone, 7);
    EXPECT_EQ(weights.entries[2].weight, 1);
}

// A skin without context has the node number alone, whatever its mesh.
TEST(WeightsReaderTest, SizeFour) {
    Writer writer = Skinned({});
    EXPECT_EQ(writer.bytes.size(), kVertices);
    EXPECT_TRUE(ReadExact(writer.bytes).Good());
    AddNode(writer, {});
    const kta::Reading reading = ReadExact(writer.bytes);
    ASSERT_TRUE(reading.Good());
    EXPECT_EQ(reading.file->chunks.size(), 3u);
    EXPECT_EQ(BodyOf<kta::Weights>(reading, 1).numVertices, 0u);
}

// Vertices that Physique tells nothing of have no bytes, though the size counts them: the body
// ends where the next chunk or the end of the file is.
TEST(WeightsReaderTest, VerticesWithoutRecord) {
    const std::vector<std::vector<Entries>> recorded = {
        {}, {{}}, {{{0, 1}}}, {{{0, 1}}, {}, {{0, 0.5f}, {1, 0.5f}}}};
    for (const auto& vertices : recorded) {
        const auto unrecorded = static_cast<std::uint32_t>(9 - vertices.size());
        const Writer alone = Skinned(vertices, unrecorded);
        std::vector<Writer> files(8, alone);
        AddNode(files[1], {});
        AddMesh(files[2], Triangle(0, 0, 0));
        AddJointLimits(files[3]);
        AddMorph(files[4], {});
        AddWire(files[5]);
        AddIkChain(files[6]);
        AddWeights(files[7], 0, vertices, unrecorded);
        for (const Writer& file : files) {
            const kta::Reading reading = ReadExact(file.bytes);
            ASSERT_TRUE(reading.Good()) << FaultsOf(file.bytes)[0];
            const auto& weights = BodyOf<kta::Weights>(reading, 1);
            EXPECT_EQ(weights.counts.size(), vertices.size());
            EXPECT_EQ(weights.numVertices, 9u);
            EXPECT_EQ(reading.file->chunks.size(), &file == &files[0] ? 2u : 3u);
        }
    }
}

// Where the mesh has another number of vertices, the size is wrong or the file is cut.
TEST(WeightsReaderTest, MissingRecordsThatTheMeshDoesNotExplain) {
    Writer writer = Skinned({{{0, 1}}}, 9);
    const std::size_t end = writer.bytes.size();
    EXPECT_EQ(OnlyFaultOf(writer.bytes),
              WeightsFault(end, "weights cut off: 9 bytes expected, 0 are there"));
    EXPECT_EQ(OnlyFaultOf(AddNode(writer, {}).bytes),
              WeightsFault(kWeights + 4, "size is 22, expected 13, what stands there"));
    EXPECT_EQ(ReadExact(writer.bytes).file->chunks.size(), 3u);
    Writer noMesh = Actor();
    AddNode(AddWeights(noMesh, 0, {{{0, 1}}}, 8), {});
    EXPECT_EQ(OnlyFaultOf(noMesh.bytes),
              WeightsFault(11, "size is 21, expected 13, what stands there"));
}

TEST(WeightsReaderTest, MeshOfTheSameNodeCounts) {
    Writer writer = Actor();
    AddMesh(writer, Triangle(0, 0, 0));
    Mesh other = Triangle(0, 0, 0);
    other.node = 1;
    other.numOriginalVertices = 20;
    AddWeights(AddMesh(writer, other), 0, {{{0, 1}}}, 8);
    EXPECT_TRUE(ReadExact(AddNode(writer, {}).bytes).Good());
}

TEST(WeightsReaderTest, MostWeightsOfAVertex) {
    const kta::Reading reading = ReadExact(Skinned({Entries(255, {3, 0.5f}), {{1, 1}}}).bytes);
    ASSERT_TRUE(reading.Good());
    EXPECT_EQ(BodyOf<kta::Weights>(reading, 1).counts, (std::vector<std::uint8_t>{255, 1}));
}

TEST(WeightsReaderTest, PaddingMeansNothing) {
    EXPECT_TRUE(ReadExact(PatchedU8(Skinned({{{0, 1}}}).bytes, kVertices + 4, 99)).Good());
}

TEST(WeightsReaderFaultTest, Numbers) {
    const Bytes file = Skinned({{{0, 1}}, {{0, 1}, {0, 1}}}).bytes;
    EXPECT_EQ(OnlyFaultOf(PatchedU32(file, kWeights + 4, 3)),
              WeightsFault(kWeights + 4, "size is 3, expected 4 or more"));
    EXPECT_EQ(OnlyFaultOf(PatchedU32(file, kWeights + 12, 0xfffffffe)),
              WeightsFault(kWeights + 12, "node number is -2, expected -1 or more"));
    EXPECT_EQ(OnlyFaultOf(PatchedU8(file, kVertices + 9, 3)),
              WeightsFault(kVertices + 9,
                           "weight count is 3, expected at most 2, what the size "
                           "leaves"));
    EXPECT_EQ(OnlyFaultOf(PatchedU32(file, kWeights + 4, 4 + 9 + 16)),
              WeightsFault(kVertices + 9,
                           "weight count is 2, expected at most 1, what the size "
                           "leaves"));
    EXPECT_EQ(
        OnlyFaultOf(
            PatchedF32(PatchedF32(file, kVertices + 5, kInfinity), kVertices + 22, -kInfinity)),
        WeightsFault(kVertices + 5, "weight is not a finite number, nor are 1 more of the chunk"));
}

TEST(WeightsReaderFaultTest, SizeBeyondTheFile) {
    const Bytes file = Skinned({{{0, 1}}, {{0, 1}}}).bytes;
    EXPECT_EQ(OnlyFaultOf(PatchedU32(file, kWeights + 4, 0xffffffff)),
              WeightsFault(file.size(), "weights cut off: 4294967273 bytes expected, 0 are there"));
    EXPECT_EQ(OnlyFaultOf(Prefix(file, kVertices + 9 + 1 + 3)),
              WeightsFault(kVertices + 10,
                           "weights of a vertex cut off: 8 bytes expected, 3 are "
                           "there"));
}

// Each body ends at the next chunk, though its size reaches on: reading stays linear.
TEST(WeightsReaderTest, ManyShortBodies) {
    constexpr std::size_t kCount = 200000;
    Mesh mesh = Triangle(0, 0, 0);
    mesh.numOriginalVertices = 1600000;
    Writer writer = Actor();
    AddMesh(writer, mesh);
    for (std::size_t i = 0; i < kCount; ++i) {
        AddWeights(writer, 0, {}, 1600000);
    }
    const kta::Reading reading = ReadExact(writer.bytes);
    EXPECT_TRUE(reading.Good());
    EXPECT_EQ(reading.file->chunks.size(), 1 + kCount);
}

// ---------------------------------------------------------------- joint limits

TEST(JointLimitsReaderTest, FieldsComeFromTheirOffsets) {
    Writer writer = Actor();
    const Bytes bytes = AddJointLimits(writer).bytes;
    ASSERT_EQ(bytes.size(), kBody + 88);
    const kta::Reading reading = ReadExact(bytes);
    ASSERT_TRUE(reading.Good()) << FaultsOf(bytes)[0];
    const auto& limits = BodyOf<kta::JointLimits>(reading);
    EXPECT_EQ(limits.node, 3);
    EXPECT_EQ(limits.positionMinimum, (std::array<float, 3>{-5.5f, -4.5f, -3.5f}));
    EXPECT_EQ(limits.positionMaximum, (std::array<float, 3>{-2.5f, -1.5f, -0.5f}));
    EXPECT_EQ(limits.rotationMinimum, (std::array<float, 3>{0.5f, 1.5f, 2.5f}));
    EXPECT_EQ(limits.rotationMaximum, (std::array<float, 3>{3.5f, 4.5f, 5.5f}));
    EXPECT_EQ(limits.at52, (std::array<float, 6>{1, 1, 1, 1, 1, 1}));
    EXPECT_EQ(limits.positionLimited, (std::array<bool, 3>{true, false, false}));
    EXPECT_EQ(limits.rotationLimited, (std::array<bool, 3>{false, false, true}));
}

// Of a rotation about z the limits stand at 32 and 44, and the flag at 80.
TEST(JointLimitsReaderTest, RotationAboutZ) {
    Writer writer = Actor();
    Bytes bytes = AddJointLimits(writer).bytes;
    bytes = PatchedF32(PatchedF32(bytes, kBody + 32, -20), kBody + 44, 30);
    const kta::Reading reading = ReadExact(PatchedU8(bytes, kBody + 80, 1));
    ASSERT_TRUE(reading.Good());
    const auto& limits = BodyOf<kta::JointLimits>(reading);
    EXPECT_EQ(limits.rotationMinimum[1], -20);
    EXPECT_EQ(limits.rotationMaximum[1], 30);
    EXPECT_TRUE(limits.rotationLimited[1]);
}

TEST(JointLimitsReaderTest, Faults) {
    Writer writer = Actor();
    const Bytes file = AddJointLimits(writer).bytes;
    const auto fault = [](std::size_t field, const std::string& text) {
        return Fault(kBody + field, "joint limits", text);
    };
    EXPECT_EQ(OnlyFaultOf(PatchedU32(file, 11, 84)),
              Fault(11, "joint limits", "size is 84, expected 88"));
    EXPECT_EQ(OnlyFaultOf(PatchedU32(file, kBody, 0x80000000)),
              fault(0, "node number is -2147483648, expected -1 or more"));
    EXPECT_EQ(OnlyFaultOf(PatchedF32(file, kBody + 48, kInfinity)),
              fault(48, "rotation maximum is not a finite number"));
    EXPECT_EQ(OnlyFaultOf(PatchedF32(file, kBody + 72, 0.5f)),
              fault(72, "number at 52 is 0.5, expected 1"));
    EXPECT_EQ(OnlyFaultOf(PatchedU8(file, kBody + 78, 2)),
              fault(78, "position flag is 2, expected 0 or 1"));
    EXPECT_EQ(OnlyFaultOf(PatchedU8(file, kBody + 81, 9)),
              fault(81, "rotation flag is 9, expected 0 or 1"));
    EXPECT_EQ(OnlyFaultOf(PatchedU8(file, kBody + 83, 1)),
              fault(83, "byte at 82 is 1, expected 0"));
    EXPECT_EQ(OnlyFaultOf(PatchedU32(file, kBody + 84, 5)),
              fault(84, "number at 84 is 5, expected 0"));
}

// ---------------------------------------------------------------- morphs

Bytes MorphFile(const sample::Morph& morph) {
    Writer writer = Actor();
    return AddMorph(writer, morph).bytes;
}

std::string MorphFault(std::size_t field, const std::string& text) {
    return Fault(kBody + field, "morph", text);
}

TEST(MorphReaderTest, PointsStandBehindTheDeclaredSize) {
    Writer writer = Actor();
    AddMorph(writer, {"Smile", "Head", -2.5f, 4, {{0, 1, 0x1234}, {65535, 40000, 2}}});
    ASSERT_EQ(writer.bytes.size(), kBody + 292 + 276 + 2 * 6 + 2 * 3 + 2 * 4);
    AddMorph(writer, {"Frown", "Head", 0, 1, {{1, 2, 3}}});
    const kta::Reading reading = ReadExact(AddNode(writer, {}).bytes);
    ASSERT_TRUE(reading.Good()) << FaultsOf(writer.bytes)[0];
    ASSERT_EQ(reading.file->chunks.size(), 3u);
    EXPECT_EQ(reading.file->chunks[0].size, 292u);
    const auto& morph = BodyOf<kta::Morph>(reading);
    EXPECT_EQ(morph.channelName, "Smile");
    EXPECT_EQ(morph.nodeName, "Head");
    EXPECT_EQ(morph.minimum, -2.5f);
    EXPECT_EQ(morph.maximum, 4);
    EXPECT_EQ(morph.at264, 1);
    EXPECT_EQ(morph.at276, 1);
    ASSERT_EQ(morph.packedPoints.size(), 2u);
    EXPECT_EQ(morph.packedPoints[0], (std::array<std::uint16_t, 3>{0, 1, 0x1234}));
    EXPECT_EQ(morph.packedPoints[1], (std::array<std::uint16_t, 3>{65535, 40000, 2}));
    EXPECT_EQ(morph.pointNumbers, (std::vector<std::int32_t>{0, 1}));
    EXPECT_EQ(BodyOf<kta::Morph>(reading, 1).channelName, "Frown");
}

// Values of a channel from -0.25 to 0.25 units: a range of 50, 65535 / 50 = 1310 steps each.
TEST(MorphReaderTest, PositionsOfAWideRange) {
    const kta::Reading reading =
        ReadExact(MorphFile({"c", "n", -25, 25, {{0, 65500, 32750}, {1310, 13100, 1}}}));
    const auto& morph = BodyOf<kta::Morph>(reading);
    EXPECT_EQ(kta::MorphPosition(morph, 0), (std::array<float, 3>{-0.25f, 0.25f, 0}));
    const std::array<float, 3> second = kta::MorphPosition(morph, 1);
    EXPECT_EQ(second[0], -0.24f);
    EXPECT_EQ(second[1], -0.15f);
    EXPECT_NEAR(second[2], -0.25 + 1 / 131000.0, 1e-8);
}

// A range of 0.5 is stretched to 1 before it is packed.
TEST(MorphReaderTest, PositionsOfANarrowRange) {
    const kta::Reading reading = ReadExact(MorphFile({"c", "n", 1, 1.5f, {{0, 65535, 13107}}}));
    const std::array<float, 3> position = kta::MorphPosition(BodyOf<kta::Morph>(reading), 0);
    EXPECT_EQ(position, (std::array<float, 3>{0.01f, 0.015f, 0.011f}));
}

TEST(MorphReaderTest, PositionsOfOddRanges) {
    const auto position = [](float minimum, float maximum, std::uint16_t packed) {
        const kta::Reading reading =
            ReadExact(MorphFile({"c", "n", minimum, maximum, {{0, 0, packed}}}));
        return kta::MorphPosition(BodyOf<kta::Morph>(reading), 0)[2];
    };
    EXPECT_EQ(position(150, 150, 0), 1.5f);       // all coordinates are alike
    EXPECT_EQ(position(100, 101, 65535), 1.01f);  // a range of 1 is not stretched
    EXPECT_EQ(position(0, 65535, 200), 2);        // one step a hundredth of a unit
    EXPECT_EQ(position(0, 30000, 5), 0.025f);     // 2.18 steps are cut to 2
    // 1309.9999... steps, but 1310 in f32.
    EXPECT_EQ(position(0, 50.02671813964844f, 65500), 0.5f);
    EXPECT_TRUE(std::isnan(position(0, 65536, 0)));  // no step: nothing is told
    EXPECT_TRUE(std::isnan(position(5, 4, 0)));
    EXPECT_TRUE(std::isnan(position(0, kInfinity, 0)));
}

TEST(MorphReaderTest, LongNames) {
    const std::string name(259, 'm');
    const kta::Reading reading = ReadExact(MorphFile({name, name}));
    EXPECT_TRUE(reading.Good());
    EXPECT_EQ(BodyOf<kta::Morph>(reading).channelName, name);
    EXPECT_EQ(BodyOf<kta::Morph>(reading).nodeName, name);
}

TEST(MorphReaderFaultTest, Records) {
    const Bytes file = MorphFile({});
    EXPECT_EQ(OnlyFaultOf(PatchedU32(file, 11, 581)),
              Fault(11, "morph", "size is 581, expected 292"));
    const struct {
        std::size_t field;
        const char* text;
    } zeros[] = {{260, "number at 260 is 2, expected 0"},
                 {264, "number at 264 is 2, expected 1"},
                 {288, "number at 288 is 2, expected 0"}};
    for (const auto& [field, text] : zeros) {
        EXPECT_EQ(OnlyFaultOf(PatchedF32(file, kBody + field, 2)), MorphFault(field, text));
    }
    for (const auto& [field, expected] : {std::pair(268, 0), {276, 1}, {280, 0}, {284, 0}}) {
        EXPECT_EQ(OnlyFaultOf(PatchedU32(file, kBody + field, 0xffffffff)),
                  MorphFault(field, "number at " + std::to_string(field) + " is -1, expected " +
                                        std::to_string(expected)));
    }
    for (const std::size_t field : {272, 564}) {
        EXPECT_EQ(OnlyFaultOf(PatchedU8(file, kBody + field, 3)),
                  MorphFault(field, "byte at " + std::to_string(field) + " is 3, expected 0"));
    }
    EXPECT_TRUE(ReadExact(PatchedU8(file, kBody + 273, 3)).Good());
    EXPECT_EQ(OnlyFaultOf(PatchedF32(file, kBody + 556, 1.5f)),
              MorphFault(556, "minimum is 1.5, expected at most 1, the maximum"));
    EXPECT_EQ(OnlyFaultOf(PatchedF32(file, kBody + 560, kInfinity)),
              MorphFault(560, "maximum is not a finite number"));
}

// No memory is asked for before the bytes are known to be there.
TEST(MorphReaderFaultTest, PointCounts) {
    const Bytes file = MorphFile({});
    EXPECT_EQ(OnlyFaultOf(PatchedU32(file, kBody + 552, 0)),
              MorphFault(552, "point count is 0, expected 1 or more"));
    EXPECT_EQ(OnlyFaultOf(PatchedU32(file, kBody + 552, 0xffffffff)),
              MorphFault(552, "point count is -1, expected 1 or more"));
    EXPECT_EQ(OnlyFaultOf(PatchedU32(file, kBody + 552, 0x7fffffff)),
              MorphFault(568, "points cut off: 27917287411 bytes expected, 13 are there"));
}

TEST(MorphReaderFaultTest, WhatStandsBehindThePoints) {
    const Bytes file = MorphFile({.packed = {{1, 2, 3}, {4, 5, 6}}});
    const Bytes zeros = PatchedU8(PatchedU8(file, kBody + 568 + 12, 7), kBody + 568 + 17, 8);
    EXPECT_EQ(OnlyFaultOf(zeros), MorphFault(568 + 12,
                                             "byte behind the points is 7, expected 0, and so for "
                                             "1 more of the channel"));
    const Bytes numbers = PatchedU32(file, kBody + 568 + 18 + 4, 0);
    EXPECT_EQ(OnlyFaultOf(numbers), MorphFault(568 + 18 + 4, "point number is 0, expected 1"));
    EXPECT_EQ(BodyOf<kta::Morph>(ReadExact(numbers)).pointNumbers,
              (std::vector<std::int32_t>{0, 0}));
}

// ---------------------------------------------------------------- wires and IK chains

TEST(WireReaderTest, FieldsComeFromTheirOffsets) {
    Writer writer = Actor();
    const Bytes bytes = AddWire(writer).bytes;
    ASSERT_EQ(bytes.size(), kBody + 1116);
    const kta::Reading reading = ReadExact(bytes);
    ASSERT_TRUE(reading.Good()) << FaultsOf(bytes)[0];
    const auto& wire = BodyOf<kta::Wire>(reading);
    EXPECT_EQ(wire.first.nodeName, "Driver");
    EXPECT_EQ(wire.first.expression, "");
    EXPECT_EQ(wire.first.variable, "");
    EXPECT_EQ(wire.first.part, 0);
    EXPECT_EQ(wire.first.component, 0);
    EXPECT_EQ(wire.first.weight, 1);
    EXPECT_EQ(wire.first.listWeight, 0);
    EXPECT_EQ(wire.second.nodeName, "Slave");
    EXPECT_EQ(wire.second.expression, "X_Position * 2");
    EXPECT_EQ(wire.second.variable, "Z_Scale");
    EXPECT_EQ(wire.second.part, 2);
    EXPECT_EQ(wire.second.component, 2);
    EXPECT_EQ(wire.second.weight, 0.5f);
    EXPECT_EQ(wire.second.listWeight, 0.25f);
    EXPECT_EQ(wire.linkKind, 2);
}

// Every channel has its name; a plain first end has none.
TEST(WireReaderTest, NamesOfChannels) {
    const char* const names[3][3] = {{"X_Position", "Y_Position", "Z_Position"},
                                     {"X_Rotation", "Y_Rotation", "Z_Rotation"},
                                     {"X_Scale", "Y_Scale", "Z_Scale"}};
    Writer writer = Actor();
    const Bytes file = AddWire(writer).bytes;
    for (std::uint32_t part = 0; part < 3; ++part) {
        for (std::uint32_t component = 0; component < 3; ++component) {
            const std::string name = names[part][component];
            Bytes bytes = file;
            for (const std::size_t end : {0, 1}) {
                bytes = PatchedU32(bytes, kBody + 1080 + end * 4, part);
                bytes = PatchedU32(bytes, kBody + 1088 + end * 4, component);
                const std::size_t field = kBody + (end == 0 ? 1060 : 1040);
                std::copy_n(name.c_str(), name.size() + 1,
                            bytes.begin() + static_cast<std::ptrdiff_t>(field));
            }
            EXPECT_TRUE(ReadExact(bytes).Good()) << name;
        }
    }
}

TEST(WireReaderTest, Faults) {
    Writer writer = Actor();
    const Bytes file = AddWire(writer).bytes;
    const auto fault = [](std::size_t field, const std::string& text) {
        return Fault(kBody + field, "parameter wiring", text);
    };
    EXPECT_EQ(OnlyFaultOf(PatchedU32(file, 11, 0)),
              Fault(11, "parameter wiring", "size is 0, expected 1116"));
    EXPECT_EQ(OnlyFaultOf(PatchedU32(file, kBody + 1080, 3)),
              fault(1080, "first part is 3, expected 0 to 2"));
    EXPECT_EQ(OnlyFaultOf(PatchedU32(file, kBody + 1092, 0xffffffff)),
              fault(1092, "second component is -1, expected 0 to 2"));
    EXPECT_EQ(
        OnlyFaultOf(PatchedU32(file, kBody + 1092, 1)),
        fault(1040, "second variable is not that of its part and component, expected Y_Scale"));
    EXPECT_EQ(OnlyFaultOf(PatchedU8(file, kBody + 1060, 'X')),
              fault(1060,
                    "first variable is not that of its part and component, expected X_Position or "
                    "none"));
    EXPECT_EQ(OnlyFaultOf(PatchedU8(file, kBody + 1112, 0)),
              fault(1112, "link kind is 0, expected 1 or 2"));
    EXPECT_EQ(OnlyFaultOf(PatchedF32(file, kBody + 1108, kInfinity)),
              fault(1108, "second list weight is not a finite number"));
    EXPECT_TRUE(ReadExact(PatchedU8(file, kBody + 1113, 9)).Good());
}

TEST(IkChainReaderTest, FieldsComeFromTheirOffsets) {
    Writer writer = Actor();
    const Bytes bytes = AddIkChain(writer).bytes;
    ASSERT_EQ(bytes.size(), kBody + 1064);
    const kta::Reading reading = ReadExact(bytes);
    ASSERT_TRUE(reading.Good()) << FaultsOf(bytes)[0];
    const auto& chain = BodyOf<kta::IkChain>(reading);
    EXPECT_EQ(chain.nodeName, "Chain");
    EXPECT_EQ(chain.startJoint, "Thigh");
    EXPECT_EQ(chain.endJoint, "Foot");
    EXPECT_TRUE(chain.at780);
    EXPECT_EQ(chain.solverNode, "Target");
    EXPECT_EQ(chain.at1044, 1.5f);
    EXPECT_EQ(chain.at1048, 7);
    EXPECT_EQ(chain.at1052, (std::array<float, 3>{2, 4, 3}));
}

TEST(IkChainReaderTest, Faults) {
    Writer writer = Actor();
    const Bytes file = AddIkChain(writer).bytes;
    EXPECT_EQ(OnlyFaultOf(PatchedU32(file, 11, 1063)),
              Fault(11, "IK chain", "size is 1063, expected 1064"));
    EXPECT_EQ(OnlyFaultOf(PatchedU8(file, kBody + 780, 2)),
              Fault(kBody + 780, "IK chain", "flag at 780 is 2, expected 0 or 1"));
    EXPECT_EQ(OnlyFaultOf(PatchedF32(file, kBody + 1060, kInfinity)),
              Fault(kBody + 1060, "IK chain", "number at 1052 is not a finite number"));
}

// ---------------------------------------------------------------- cut and damaged files

TEST(RigReaderTruncationTest, EveryPrefix) {
    ReadPrefixes(RigFile());
}

TEST(RigReaderMutationTest, DamagedFilesAreReportedInBounds) {
    const int faulty = ReadDamaged(RigFile());
    EXPECT_GT(faulty, 5000);
    EXPECT_LT(faulty, 10000);
}

}  // namespace
