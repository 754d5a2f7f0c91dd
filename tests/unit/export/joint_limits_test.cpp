#include <gtest/gtest.h>
#include <max.h>

#include "tests/support/kta_bytes.h"
#include "tests/unit/export/rig_scene.h"

namespace {

namespace scene = maxhost::scene;
using scene::JointParams;
using scene::Node;
using support::Bytes;
using support::Chunk;
using support::CountLines;
using support::Export;
using support::ExportRun;
using support::MakeNode;
using support::SceneOf;

constexpr std::uint32_t kJointLimitsChunk = 8;
constexpr std::uint32_t kPosition = 0x80000000, kRotation = 0x40000000;
// Active and limited.
constexpr std::uint32_t kX = 0x9, kY = 0x12, kZ = 0x24;

JointParams Params(std::uint32_t flags) {
    JointParams params;
    params.flags = flags;
    params.min = {-1, -2, -3, -4, -5, -6};
    params.max = {1, 2, 3, 4, 5, 6};
    return params;
}

using Three = std::optional<scene::ThreeAxisController>;

Three WithParams(const std::optional<JointParams>& params) {
    scene::ThreeAxisController controller = support::Axes(0, 0, 0);
    controller.jointParams = params;
    return controller;
}

Node Joint(const std::optional<JointParams>& position, const std::optional<JointParams>& rotation) {
    Node node = MakeNode("Knee");
    node.transform = support::Prs(WithParams(position), WithParams(rotation));
    return node;
}

std::vector<Chunk> Limits(const ExportRun& run) {
    return support::ChunksOf(run.actor.value(), kJointLimitsChunk);
}

// The body of the one chunk of a scene of this node alone.
std::string BodyOf(const Node& node) {
    const std::vector<Chunk> chunks = Limits(Export(SceneOf({node})));
    EXPECT_EQ(chunks.size(), 1u);
    return chunks.empty() ? "" : chunks[0].body;
}

constexpr std::initializer_list<float> kZeros = {0, 0, 0, 0, 0, 0};
constexpr std::initializer_list<float> kOnes = {1, 1, 1, 1, 1, 1};
const std::string kNothing(3, '\0');

std::string Limited(std::uint8_t x, std::uint8_t z, std::uint8_t y) {
    return Bytes().U8(x).U8(z).U8(y).Str();
}

TEST(JointLimits, PositionAndRotationShareAChunkByteForByte) {
    JointParams rotation = Params(kRotation | kY);
    rotation.min = {-0.5f, -1.5f, -2.5f};
    rotation.max = {0.25f, 1.25f, 2.25f};
    const ExportRun run =
        Export(SceneOf({MakeNode("Hip"), Joint(Params(kPosition | kX | kZ), rotation)}));
    const std::vector<Chunk> chunks = Limits(run);
    ASSERT_EQ(chunks.size(), 1u);
    EXPECT_EQ(chunks[0].size, 88u);
    EXPECT_EQ(chunks[0].version, 1u);
    EXPECT_EQ(chunks[0].body, Bytes()
                                  .U32(1)
                                  .F32({-1, -3, -2})
                                  .F32({1, 3, 2})
                                  .F32({-0.5f, -2.5f, -1.5f})
                                  .F32({0.25f, 2.25f, 1.25f})
                                  .F32(kOnes)
                                  .Text(Limited(1, 1, 0))
                                  .Text(Limited(0, 0, 1))
                                  .U16(0)
                                  .U32(0)
                                  .Str());
    EXPECT_EQ(CountLines(run, "- Exporting joint limits for node 'Knee'"), 1);
    EXPECT_EQ(support::ChunkIds(run), (std::vector<std::uint32_t>{0, 0, 8}));
}

TEST(JointLimits, RotationThatLimitsZAlone) {
    JointParams params;
    params.flags = kRotation | kZ;
    params.min = {0, 0, -0.75f};
    params.max = {0, 0, 0.5f};
    EXPECT_EQ(BodyOf(Joint({}, params)), Bytes()
                                             .U32(0)
                                             .F32(kZeros)
                                             .F32({0, -0.75f, 0})  // z stands at 32
                                             .F32({0, 0.5f, 0})    // and at 44
                                             .F32(kOnes)
                                             .Text(kNothing)
                                             .Text(Limited(0, 1, 0))
                                             .U16(0)
                                             .U32(0)
                                             .Str());
}

TEST(JointLimits, DefaultOrMissingParametersWriteAndLogNothing) {
    JointParams standard = Params(kPosition | kX);
    standard.isDefault = true;
    Node none = MakeNode("none"), matrix = MakeNode("matrix"), noParts = MakeNode("no parts");
    none.transform.reset();
    matrix.transform.emplace().kind = scene::MatrixTransform{};
    noParts.transform = support::Prs({}, {});
    const ExportRun run =
        Export(SceneOf({Joint(standard, standard), Joint({}, {}), none, matrix, noParts}));
    EXPECT_TRUE(Limits(run).empty());
    for (const std::string& line : run.log) {
        EXPECT_EQ(line.find("oint"), std::string::npos) << line;
    }
}

TEST(JointLimits, OneOfTwoIsEnough) {
    JointParams standard = Params(kPosition | kX);
    standard.isDefault = true;
    const std::string position = Bytes()
                                     .U32(0)
                                     .F32({-1, -3, -2, 1, 3, 2})
                                     .F32(kZeros)
                                     .F32(kOnes)
                                     .Text(Limited(0, 0, 1))
                                     .Text(kNothing)
                                     .U16(0)
                                     .U32(0)
                                     .Str();
    EXPECT_EQ(BodyOf(Joint(Params(kPosition | kY), {})), position);
    EXPECT_EQ(BodyOf(Joint(Params(kPosition | kY), standard)), position);
    const std::string rotation = Bytes()
                                     .U32(0)
                                     .F32(kZeros)
                                     .F32({-1, -3, -2, 1, 3, 2})
                                     .F32(kOnes)
                                     .Text(kNothing)
                                     .Text(Limited(0, 0, 1))
                                     .U16(0)
                                     .U32(0)
                                     .Str();
    EXPECT_EQ(BodyOf(Joint(standard, Params(kRotation | kY))), rotation);
    Node node = MakeNode("rotation alone");
    node.transform = support::Prs({}, WithParams(Params(kRotation | kY)));
    EXPECT_EQ(BodyOf(node), rotation);
}

TEST(JointLimits, ScaleHasNone) {
    Node node = MakeNode("scaled");
    node.transform = support::Prs({}, {}, WithParams(Params(kPosition | kX)));
    EXPECT_TRUE(Limits(Export(SceneOf({node}))).empty());
}

TEST(JointLimits, AnAxisIsLimitedWhenItIsActiveAndLimited) {
    const struct {
        std::uint32_t flags;
        std::string limited;
    } rows[] = {{0x01, kNothing},         {0x08, kNothing},         {0x09, Limited(1, 0, 0)},
                {0x02, kNothing},         {0x10, kNothing},         {0x12, Limited(0, 0, 1)},
                {0x04, kNothing},         {0x20, kNothing},         {0x24, Limited(0, 1, 0)},
                {0x3f, Limited(1, 1, 1)}, {0x0c, kNothing},         {0x1b, Limited(1, 0, 1)},
                {0xfc0, kNothing},        {0x0e4, Limited(0, 1, 0)}};
    for (const auto& row : rows) {
        const std::string body = BodyOf(Joint(Params(kPosition | row.flags), {}));
        EXPECT_EQ(body.substr(76, 3), row.limited) << std::hex << row.flags;
        EXPECT_EQ(body.substr(4, 12), Bytes().F32({-1, -3, -2}).Str()) << "limited or not";
    }
}

TEST(JointLimits, FlagsTellTheKindWhicheverControllerTheyStemFrom) {
    const std::string values = Bytes().F32({-1, -3, -2, 1, 3, 2}).Str();
    const std::string zeros = Bytes().F32(kZeros).Str();
    // The position's own set is one of rotation, and the other way round.
    EXPECT_EQ(BodyOf(Joint(Params(kRotation | kX), {})).substr(4, 48), zeros + values);
    EXPECT_EQ(BodyOf(Joint({}, Params(kPosition | kX))).substr(4, 48), values + zeros);
    // Only the top bits 1 and 0 say position.
    for (const std::uint32_t kind : {kPosition | kRotation, 0u}) {
        EXPECT_EQ(BodyOf(Joint(Params(kind | kX), {})).substr(4, 48), zeros + values);
    }
}

TEST(JointLimits, TheLaterOfTwoSetsOfAKindCounts) {
    JointParams later = Params(kPosition | kZ);
    later.dofs = 1;
    later.min[0] = 7;
    later.max[0] = 8;
    const ExportRun run = Export(SceneOf({Joint(Params(kPosition | kX | kY), later)}));
    EXPECT_EQ(support::CountLines(
                  run, "*** Warning: Joint limit has not 3 position DOFS, but 1 DOFS ***"),
              1)
        << "by the set's flags, not by its controller";
    const std::string body = Limits(run).at(0).body;
    // It has but one value, and all of the limited bytes.
    EXPECT_EQ(body.substr(4, 24), Bytes().F32({7, -3, -2, 8, 3, 2}).Str());
    EXPECT_EQ(body.substr(76, 6), Limited(0, 1, 0) + kNothing);
}

TEST(JointLimits, OtherNumbersOfDegreesOfFreedomAreWarnedOf) {
    JointParams two = Params(kPosition | kX | kZ), six = Params(kRotation | kX | kY | kZ);
    two.dofs = 2;
    six.dofs = 6;
    const ExportRun run = Export(SceneOf({Joint(two, six)}));
    const std::vector<Chunk> chunks = Limits(run);
    ASSERT_EQ(chunks.size(), 1u);
    EXPECT_EQ(chunks[0].body, Bytes()
                                  .U32(0)
                                  .F32({-1, 0, -2})
                                  .F32({1, 0, 2})
                                  .F32({-1, -3, -2})
                                  .F32({1, 3, 2})
                                  .F32(kOnes)
                                  .Text(Limited(1, 1, 0))
                                  .Text(Limited(1, 1, 1))
                                  .U16(0)
                                  .U32(0)
                                  .Str());
    const std::vector<std::string> expected = {
        "*** Warning: Joint limit has not 3 position DOFS, but 2 DOFS ***",
        "*** Warning: Joint limit has not 3 rotation DOFS, but 6 DOFS ***",
        "- Exporting joint limits for node 'Knee'", "Closing file"};
    const auto first = std::find(run.log.begin(), run.log.end(), expected[0]);
    ASSERT_GE(run.log.end() - first, 4);
    EXPECT_EQ(std::vector(first, first + 4), expected);
}

TEST(JointLimits, StandBehindTheMesh) {
    scene::Mesh mesh;
    mesh.vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    mesh.faces = {{{0, 1, 2}}};
    Node node = Joint(Params(kPosition | kX), {});
    node.object.emplace().mesh = std::make_shared<const scene::Mesh>(mesh);
    EXPECT_EQ(support::ChunkIds(Export(SceneOf({node}))), (std::vector<std::uint32_t>{0, 3, 8}));
}

}  // namespace
