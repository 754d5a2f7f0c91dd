#include <cmath>

#include "tests/unit/kta/sample.h"

namespace {

using namespace sample;
using kta::TextOf;

constexpr std::size_t kWeights = 7 + 148;         // of the chunk behind a mesh of one triangle
constexpr std::size_t kVertices = kWeights + 16;  // the weights of the first vertex

// ---------------------------------------------------------------- weights

std::string WeightsFault(std::size_t offset, const std::string& text) {
    return FaultLine(offset, "skinning weights", text);
}

// Behind a mesh of 9 original vertices, whose node is 0.
std::string SkinFile(const std::vector<VertexWeights>& vertices, std::uint32_t unrecorded = 0) {
    return kActor + MeshChunk(Triangle(0, 0, 0)) + WeightsChunk(0, vertices, unrecorded);
}

TEST(WeightsReaderTest, EntriesOfVertices) {
    const std::string bytes = SkinFile({{{2, 0.5f}, {-1, 0.25f}}, {}, {{7, 1}}});
    ASSERT_EQ(bytes.size(), kVertices + 17 + 1 + 9);
    const kta::Reading reading = ReadExact(bytes);
    ASSERT_TRUE(reading.Good()) << FaultsOf(bytes)[0];
    const kta::Chunk& chunk = reading.file->chunks.at(1);
    EXPECT_EQ(chunk.type->id, kChunkWeights);
    EXPECT_EQ(chunk.size, 4u + 24 + 3);
    EXPECT_EQ(chunk.version, 1u);
    const auto& weights = BodyOf<kta::Weights>(reading, 1);
    EXPECT_EQ(weights.head.nodeNumber, 0);
    EXPECT_EQ(weights.vertexCount, 3u);
    EXPECT_EQ(weights.weightCounts, (std::vector<std::uint8_t>{2, 0, 1}));
    ASSERT_EQ(weights.weights.size(), 3u);
    EXPECT_EQ(weights.weights[0].bone, 2);
    EXPECT_EQ(weights.weights[0].weight, 0.5f);
    EXPECT_EQ(weights.weights[1].bone, -1);
    EXPECT_EQ(weights.weights[2].bone, 7);
    EXPECT_EQ(weights.weights[2].weight, 1);
}

// A skin without context has the node number alone, whatever its mesh.
TEST(WeightsReaderTest, SizeFour) {
    const std::string file = SkinFile({});
    EXPECT_EQ(file.size(), kVertices);
    EXPECT_TRUE(ReadExact(file).Good());
    const kta::Reading reading = ReadExact(file + NodeChunk({}));
    ASSERT_TRUE(reading.Good());
    EXPECT_EQ(reading.file->chunks.size(), 3u);
    EXPECT_EQ(BodyOf<kta::Weights>(reading, 1).vertexCount, 0u);
}

// Vertices that Physique tells nothing of have no bytes, though the size counts them: the body
// ends where the next chunk or the end of the file is.
TEST(WeightsReaderTest, VerticesWithoutRecord) {
    const std::vector<std::vector<VertexWeights>> recorded = {
        {}, {{}}, {{{0, 1}}}, {{{0, 1}}, {}, {{0, 0.5f}, {1, 0.5f}}}};
    for (const auto& vertices : recorded) {
        const auto unrecorded = static_cast<std::uint32_t>(9 - vertices.size());
        for (const std::string& next : {std::string(), NodeChunk({}), MeshChunk(Triangle(0, 0, 0)),
                                        JointLimitsChunk(), MorphChunk({}), SampleWire(),
                                        IkChainChunk(), WeightsChunk(0, vertices, unrecorded)}) {
            const std::string file = SkinFile(vertices, unrecorded) + next;
            const kta::Reading reading = ReadExact(file);
            ASSERT_TRUE(reading.Good()) << FaultsOf(file)[0];
            const auto& weights = BodyOf<kta::Weights>(reading, 1);
            EXPECT_EQ(weights.weightCounts.size(), vertices.size());
            EXPECT_EQ(weights.vertexCount, 9u);
            EXPECT_EQ(reading.file->chunks.size(), next.empty() ? 2u : 3u);
        }
    }
}

// Where the mesh has another number of vertices, the size is wrong or the file is cut.
TEST(WeightsReaderTest, MissingRecordsThatTheMeshDoesNotExplain) {
    const std::string file = SkinFile({{{0, 1}}}, 9);
    EXPECT_EQ(OnlyFaultOf(file),
              WeightsFault(file.size(), "weights cut off: 9 bytes expected, 0 are there"));
    EXPECT_EQ(OnlyFaultOf(file + NodeChunk({})),
              WeightsFault(kWeights + 4, "size is 22, expected 13, what stands there"));
    EXPECT_EQ(ReadExact(file + NodeChunk({})).file->chunks.size(), 3u);
    EXPECT_EQ(OnlyFaultOf(kActor + WeightsChunk(0, {{{0, 1}}}, 8) + NodeChunk({})),
              WeightsFault(11, "size is 21, expected 13, what stands there"));
}

TEST(WeightsReaderTest, MeshOfTheSameNodeCounts) {
    MeshFields other = Triangle(0, 0, 0);
    other.node = 1;
    other.originalVertexCount = 20;
    EXPECT_TRUE(ReadExact(kActor + MeshChunk(Triangle(0, 0, 0)) + MeshChunk(other) +
                          WeightsChunk(0, {{{0, 1}}}, 8) + NodeChunk({}))
                    .Good());
}

TEST(WeightsReaderTest, MostWeightsOfAVertex) {
    const kta::Reading reading = ReadExact(SkinFile({VertexWeights(255, {3, 0.5f}), {{1, 1}}}));
    ASSERT_TRUE(reading.Good());
    EXPECT_EQ(BodyOf<kta::Weights>(reading, 1).weightCounts, (std::vector<std::uint8_t>{255, 1}));
}

TEST(WeightsReaderTest, PaddingMeansNothing) {
    EXPECT_TRUE(ReadExact(PatchedU8(SkinFile({{{0, 1}}}), kVertices + 4, 99)).Good());
}

TEST(WeightsReaderFaultTest, Numbers) {
    const std::string file = SkinFile({{{0, 1}}, {{0, 1}, {0, 1}}});
    ExpectFaults(
        file, "skinning weights",
        {{kWeights + 4, U32(3), "size is 3, expected 4 or more"},
         {kWeights + 12, U32(0xfffffffe), "node number is -2, expected -1 or more"},
         {kVertices + 9, U8(3), "weight count is 3, expected at most 2, what the size leaves"}});
    EXPECT_EQ(
        OnlyFaultOf(PatchedU32(file, kWeights + 4, 4 + 9 + 16)),
        WeightsFault(kVertices + 9, "weight count is 2, expected at most 1, what the size leaves"));
    EXPECT_EQ(
        OnlyFaultOf(
            PatchedF32(PatchedF32(file, kVertices + 5, kInfinity), kVertices + 22, -kInfinity)),
        WeightsFault(kVertices + 5, "weight is not a finite number, nor are 1 more of the chunk"));
}

TEST(WeightsReaderFaultTest, SizeBeyondTheFile) {
    const std::string file = SkinFile({{{0, 1}}, {{0, 1}}});
    EXPECT_EQ(OnlyFaultOf(PatchedU32(file, kWeights + 4, 0xffffffff)),
              WeightsFault(file.size(), "weights cut off: 4294967273 bytes expected, 0 are there"));
    EXPECT_EQ(
        OnlyFaultOf(file.substr(0, kVertices + 9 + 1 + 3)),
        WeightsFault(kVertices + 10, "weights of a vertex cut off: 8 bytes expected, 3 are there"));
}

// Each body ends at the next chunk, though its size reaches on: reading stays linear.
TEST(WeightsReaderTest, ManyShortBodies) {
    constexpr std::size_t kCount = 200000;
    MeshFields mesh = Triangle(0, 0, 0);
    mesh.originalVertexCount = 1600000;
    std::string file = kActor + MeshChunk(mesh);
    const std::string weights = WeightsChunk(0, {}, 1600000);
    for (std::size_t i = 0; i < kCount; ++i) {
        file += weights;
    }
    const kta::Reading reading = ReadExact(file);
    EXPECT_TRUE(reading.Good());
    EXPECT_EQ(reading.file->chunks.size(), 1 + kCount);
}

// ---------------------------------------------------------------- joint limits

TEST(JointLimitsReaderTest, FieldsComeFromTheirOffsets) {
    const std::string bytes = kActor + JointLimitsChunk();
    ASSERT_EQ(bytes.size(), kBody + 88);
    const kta::Reading reading = ReadExact(bytes);
    ASSERT_TRUE(reading.Good()) << FaultsOf(bytes)[0];
    const auto& limits = BodyOf<KTAJointLimits>(reading);
    EXPECT_EQ(limits.nodeNumber, 3);
    EXPECT_EQ(ListOf(limits.positionMinimum), (std::vector<float>{-5.5f, -4.5f, -3.5f}));
    EXPECT_EQ(ListOf(limits.positionMaximum), (std::vector<float>{-2.5f, -1.5f, -0.5f}));
    EXPECT_EQ(ListOf(limits.rotationMinimum), (std::vector<float>{0.5f, 1.5f, 2.5f}));
    EXPECT_EQ(ListOf(limits.rotationMaximum), (std::vector<float>{3.5f, 4.5f, 5.5f}));
    EXPECT_EQ(ListOf(limits.at52), (std::vector<float>{1, 1, 1, 1, 1, 1}));
    EXPECT_EQ(ListOf(limits.positionLimited), (std::vector<std::uint8_t>{1, 0, 0}));
    EXPECT_EQ(ListOf(limits.rotationLimited), (std::vector<std::uint8_t>{0, 0, 1}));
}

// Of a rotation about z the limits stand at 32 and 44, and the flag at 80.
TEST(JointLimitsReaderTest, RotationAboutZ) {
    std::string bytes = kActor + JointLimitsChunk();
    bytes = PatchedF32(PatchedF32(bytes, kBody + 32, -20), kBody + 44, 30);
    const kta::Reading reading = ReadExact(PatchedU8(bytes, kBody + 80, 1));
    ASSERT_TRUE(reading.Good());
    const auto& limits = BodyOf<KTAJointLimits>(reading);
    EXPECT_EQ(limits.rotationMinimum[1], -20);
    EXPECT_EQ(limits.rotationMaximum[1], 30);
    EXPECT_EQ(limits.rotationLimited[1], 1);
}

TEST(JointLimitsReaderTest, Faults) {
    ExpectFaults(kActor + JointLimitsChunk(), "joint limits",
                 {{11, U32(84), "size is 84, expected 88"},
                  {kBody, U32(0x80000000), "node number is -2147483648, expected -1 or more"},
                  {kBody + 48, F32(kInfinity), "rotation maximum is not a finite number"},
                  {kBody + 72, F32(0.5f), "number at 52 is 0.5, expected 1"},
                  {kBody + 78, U8(2), "position flag is 2, expected 0 or 1"},
                  {kBody + 81, U8(9), "rotation flag is 9, expected 0 or 1"},
                  {kBody + 83, U8(1), "byte at 82 is 1, expected 0"},
                  {kBody + 84, U32(5), "number at 84 is 5, expected 0"}});
}

// ---------------------------------------------------------------- morphs

std::string MorphFile(const MorphFields& morph) {
    return kActor + MorphChunk(morph);
}

std::string MorphFault(std::size_t field, const std::string& text) {
    return FaultLine(kBody + field, "morph", text);
}

TEST(MorphReaderTest, PointsStandBehindTheDeclaredSize) {
    std::string bytes = MorphFile({"Smile", "Head", -2.5f, 4, {{0, 1, 0x1234}, {65535, 40000, 2}}});
    ASSERT_EQ(bytes.size(), kBody + 292 + 276 + 2 * 6 + 2 * 3 + 2 * 4);
    bytes += MorphChunk({"Frown", "Head", 0, 1, {{1, 2, 3}}}) + NodeChunk({});
    const kta::Reading reading = ReadExact(bytes);
    ASSERT_TRUE(reading.Good()) << FaultsOf(bytes)[0];
    ASSERT_EQ(reading.file->chunks.size(), 3u);
    EXPECT_EQ(reading.file->chunks[0].size, 292u);
    const auto& morph = BodyOf<kta::Morph>(reading);
    EXPECT_EQ(TextOf(morph.channel.channelName), "Smile");
    EXPECT_EQ(TextOf(morph.head.nodeName), "Head");
    EXPECT_EQ(morph.head.minimum, -2.5f);
    EXPECT_EQ(morph.head.maximum, 4);
    EXPECT_EQ(morph.channel.at264, 1);
    EXPECT_EQ(morph.channel.at276, 1);
    ASSERT_EQ(morph.points.size(), 2u);
    EXPECT_EQ(ListOf(morph.points[0].packed), (std::vector<std::uint16_t>{0, 1, 0x1234}));
    EXPECT_EQ(ListOf(morph.points[1].packed), (std::vector<std::uint16_t>{65535, 40000, 2}));
    EXPECT_EQ(morph.pointNumbers, (std::vector<std::int32_t>{0, 1}));
    EXPECT_EQ(TextOf(BodyOf<kta::Morph>(reading, 1).channel.channelName), "Frown");
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
    EXPECT_EQ(TextOf(BodyOf<kta::Morph>(reading).channel.channelName), name);
    EXPECT_EQ(TextOf(BodyOf<kta::Morph>(reading).head.nodeName), name);
}

TEST(MorphReaderFaultTest, Records) {
    const std::string file = MorphFile({});
    ExpectFaults(file, "morph",
                 {{11, U32(581), "size is 581, expected 292"},
                  {kBody + 260, F32(2), "number at 260 is 2, expected 0"},
                  {kBody + 264, F32(2), "number at 264 is 2, expected 1"},
                  {kBody + 268, U32(0xffffffff), "number at 268 is -1, expected 0"},
                  {kBody + 272, U8(3), "byte at 272 is 3, expected 0"},
                  {kBody + 276, U32(0xffffffff), "number at 276 is -1, expected 1"},
                  {kBody + 280, U32(0xffffffff), "number at 280 is -1, expected 0"},
                  {kBody + 284, U32(0xffffffff), "number at 284 is -1, expected 0"},
                  {kBody + 288, F32(2), "number at 288 is 2, expected 0"},
                  {kBody + 556, F32(1.5f), "minimum is 1.5, expected at most 1, the maximum"},
                  {kBody + 560, F32(kInfinity), "maximum is not a finite number"},
                  {kBody + 564, U8(3), "byte at 564 is 3, expected 0"}});
    EXPECT_TRUE(ReadExact(PatchedU8(file, kBody + 273, 3)).Good());
}

// No memory is asked for before the bytes are known to be there.
TEST(MorphReaderFaultTest, PointCounts) {
    const std::string file = MorphFile({});
    ExpectFaults(file, "morph",
                 {{kBody + 552, U32(0), "point count is 0, expected 1 or more"},
                  {kBody + 552, U32(0xffffffff), "point count is -1, expected 1 or more"}});
    EXPECT_EQ(OnlyFaultOf(PatchedU32(file, kBody + 552, 0x7fffffff)),
              MorphFault(568, "points cut off: 27917287411 bytes expected, 13 are there"));
}

TEST(MorphReaderFaultTest, ZerosAndNumbersBehindThePoints) {
    const std::string file = MorphFile({.packed = {{1, 2, 3}, {4, 5, 6}}});
    const std::string zeros = PatchedU8(PatchedU8(file, kBody + 568 + 12, 7), kBody + 568 + 17, 8);
    EXPECT_EQ(OnlyFaultOf(zeros), MorphFault(568 + 12,
                                             "byte behind the points is 7, expected 0, and so for "
                                             "1 more of the channel"));
    const std::string numbers = PatchedU32(file, kBody + 568 + 18 + 4, 0);
    EXPECT_EQ(OnlyFaultOf(numbers), MorphFault(568 + 18 + 4, "point number is 0, expected 1"));
    EXPECT_EQ(BodyOf<kta::Morph>(ReadExact(numbers)).pointNumbers,
              (std::vector<std::int32_t>{0, 0}));
}

// ---------------------------------------------------------------- wires and IK chains

TEST(WireReaderTest, FieldsComeFromTheirOffsets) {
    const std::string bytes = kActor + SampleWire();
    ASSERT_EQ(bytes.size(), kBody + 1116);
    const kta::Reading reading = ReadExact(bytes);
    ASSERT_TRUE(reading.Good()) << FaultsOf(bytes)[0];
    const auto& wire = BodyOf<KTAWire>(reading);
    EXPECT_EQ(TextOf(wire.firstNodeName), "Driver");
    EXPECT_EQ(TextOf(wire.firstExpression), "");
    EXPECT_EQ(TextOf(wire.firstVariable), "");
    EXPECT_EQ(wire.firstPart, 0);
    EXPECT_EQ(wire.firstComponent, 0);
    EXPECT_EQ(wire.firstWeight, 1);
    EXPECT_EQ(wire.firstListWeight, 0);
    EXPECT_EQ(TextOf(wire.secondNodeName), "Slave");
    EXPECT_EQ(TextOf(wire.secondExpression), "X_Position * 2");
    EXPECT_EQ(TextOf(wire.secondVariable), "Z_Scale");
    EXPECT_EQ(wire.secondPart, 2);
    EXPECT_EQ(wire.secondComponent, 2);
    EXPECT_EQ(wire.secondWeight, 0.5f);
    EXPECT_EQ(wire.secondListWeight, 0.25f);
    EXPECT_EQ(wire.linkKind, 2);
}

// Every channel has its name; a plain first end has none.
TEST(WireReaderTest, NamesOfChannels) {
    const char* const names[3][3] = {{"X_Position", "Y_Position", "Z_Position"},
                                     {"X_Rotation", "Y_Rotation", "Z_Rotation"},
                                     {"X_Scale", "Y_Scale", "Z_Scale"}};
    const std::string file = kActor + SampleWire();
    for (std::uint32_t part = 0; part < 3; ++part) {
        for (std::uint32_t component = 0; component < 3; ++component) {
            const std::string name = names[part][component];
            std::string bytes = file;
            for (const std::size_t end : {0, 1}) {
                bytes = PatchedU32(bytes, kBody + 1080 + end * 4, part);
                bytes = PatchedU32(bytes, kBody + 1088 + end * 4, component);
                const std::size_t field = kBody + (end == 0 ? 1060 : 1040);
                bytes = Patched(bytes, field, name + '\0');
            }
            EXPECT_TRUE(ReadExact(bytes).Good()) << name;
        }
    }
}

TEST(WireReaderTest, Faults) {
    const std::string file = kActor + SampleWire();
    ExpectFaults(file, "parameter wiring",
                 {{11, U32(0), "size is 0, expected 1116"},
                  {kBody + 1060, U8('X'),
                   "first variable is not that of its part and component, expected X_Position or "
                   "none"},
                  {kBody + 1080, U32(3), "first part is 3, expected 0 to 2"},
                  {kBody + 1092, U32(0xffffffff), "second component is -1, expected 0 to 2"},
                  {kBody + 1108, F32(kInfinity), "second list weight is not a finite number"},
                  {kBody + 1112, U8(0), "link kind is 0, expected 1 or 2"}});
    EXPECT_EQ(OnlyFaultOf(PatchedU32(file, kBody + 1092, 1)),
              FaultLine(kBody + 1040, "parameter wiring",
                        "second variable is not that of its part and component, expected "
                        "Y_Scale"));
    EXPECT_TRUE(ReadExact(PatchedU8(file, kBody + 1113, 9)).Good());
}

TEST(IkChainReaderTest, FieldsComeFromTheirOffsets) {
    const std::string bytes = kActor + IkChainChunk();
    ASSERT_EQ(bytes.size(), kBody + 1064);
    const kta::Reading reading = ReadExact(bytes);
    ASSERT_TRUE(reading.Good()) << FaultsOf(bytes)[0];
    const auto& chain = BodyOf<KTAIKChain>(reading);
    EXPECT_EQ(TextOf(chain.nodeName), "Chain");
    EXPECT_EQ(TextOf(chain.startJoint), "Thigh");
    EXPECT_EQ(TextOf(chain.endJoint), "Foot");
    EXPECT_EQ(chain.at780, 1);
    EXPECT_EQ(TextOf(chain.solverNode), "Target");
    EXPECT_EQ(chain.at1044, 1.5f);
    EXPECT_EQ(chain.at1048, 7);
    EXPECT_EQ(ListOf(chain.at1052), (std::vector<float>{2, 4, 3}));
}

TEST(IkChainReaderTest, Faults) {
    ExpectFaults(kActor + IkChainChunk(), "IK chain",
                 {{11, U32(1063), "size is 1063, expected 1064"},
                  {kBody + 780, U8(2), "flag at 780 is 2, expected 0 or 1"},
                  {kBody + 1060, F32(kInfinity), "number at 1052 is not a finite number"}});
}

// ---------------------------------------------------------------- cut and damaged files

TEST(RigReaderTruncationTest, EveryPrefix) {
    ReadPrefixes(RigFile());
}

TEST(RigReaderMutationTest, DamagedRigsAreReportedInBounds) {
    const int faulty = ReadDamaged(RigFile());
    EXPECT_GT(faulty, 5000);
    EXPECT_LT(faulty, 10000);
}

}  // namespace
