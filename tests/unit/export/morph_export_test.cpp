#include <gtest/gtest.h>
#include <max.h>

#include <cmath>

#include "tests/support/kta_bytes.h"
#include "tests/unit/export/rig_scene.h"

namespace {

namespace scene = maxhost::scene;
using scene::MorphChannel;
using scene::Node;
using scene::Vec3;
using support::Bytes;
using support::Chunk;
using support::Export;
using support::ExportChoices;
using support::ExportRun;
using support::MakeNode;
using support::SceneOf;

constexpr std::uint32_t kMorphChunk = 10;

Node Face(std::vector<MorphChannel> channels) {
    Node node = MakeNode("Face");
    node.modifiers = {{true, scene::Morpher{std::move(channels)}}};
    return node;
}

std::vector<Chunk> Morphs(const ExportRun& run) {
    return support::ChunksOf(run.actor.value(), kMorphChunk);
}
std::vector<Chunk> MorphsOf(const Node& node) {
    return Morphs(Export(SceneOf({node})));
}

std::string ChannelRecord(const std::string& name) {
    return support::MorphChunk({.channel = name}).substr(12, 292);
}

// `packed` are the integers in the file's order.
std::string Points(const std::string& node, float minimum, float maximum,
                   const std::vector<std::uint16_t>& packed) {
    std::vector<std::array<std::uint16_t, 3>> points;
    for (std::size_t i = 0; i < packed.size(); i += 3) {
        points.push_back({packed[i], packed[i + 1], packed[i + 2]});
    }
    return support::MorphChunk({"", node, minimum, maximum, points}).substr(12 + 292);
}

// The points of a channel as they stand in the file.
std::string PointsOf(const std::vector<Vec3>& points) {
    const std::vector<Chunk> chunks = MorphsOf(Face({{"m", points}}));
    EXPECT_EQ(chunks.size(), 1u);
    return chunks.empty() ? "" : chunks[0].body.substr(292);
}

TEST(MorphExport, ChannelByteForByte) {
    // Scaled: 0, 25 and 50. Steps of a unit: 65535 / 50 without its fraction, 1310.
    const std::vector<Chunk> chunks =
        MorphsOf(Face({{"Smile", {{0, 0.25f, 0.5f}, {0.5f, 0, 0.25f}}}}));
    ASSERT_EQ(chunks.size(), 1u);
    EXPECT_EQ(chunks[0].size, 292u);
    EXPECT_EQ(chunks[0].version, 3u);
    EXPECT_EQ(chunks[0].body, Bytes()
                                  .Name("Smile")
                                  .F32({0, 1})
                                  .U32(0)
                                  .U8(0)
                                  .U8(0)
                                  .U16(0)
                                  .U32(1)
                                  .U32(0)
                                  .U32(0)
                                  .F32({0})
                                  .Name("Face")
                                  .U32(2)
                                  .F32({0, 50})
                                  .U8(0)
                                  .U8(0)
                                  .U16(0)
                                  .U16(0)
                                  .U16(50 * 1310)
                                  .U16(25 * 1310)
                                  .U16(50 * 1310)
                                  .U16(25 * 1310)
                                  .U16(0)
                                  .Text(std::string(6, '\0'))
                                  .U32(0)
                                  .U32(1)
                                  .Str());
}

TEST(MorphExport, RangeOverAllCoordinatesOfAllPoints) {
    // From -200 to 300 scaled: 65535 / 500 gives 131 steps.
    EXPECT_EQ(
        PointsOf({{1, -2, 0}, {0.5f, 2, 3}}),
        Points("Face", -200, 300, {300 * 131, 200 * 131, 0, 250 * 131, 500 * 131, 400 * 131}));
}

TEST(MorphExport, NarrowRangeIsWidenedToOne) {
    // Half a unit: the f32 next to 0.005, times 100, is 0.5. Twice that is 1, in 65535 steps.
    ASSERT_EQ(0.005f * 100.0f, 0.5f);
    ASSERT_EQ(0.0025f * 100.0f, 0.25f);
    EXPECT_EQ(PointsOf({{0, 0.005f, 0.0025f}}), Points("Face", 0, 0.5f, {0, 32767, 65535}));
    EXPECT_EQ(PointsOf({{-0.0025f, 0, 0.0025f}}), Points("Face", -0.25f, 0.25f, {0, 65535, 32767}));
}

TEST(MorphExport, RangeOfOneIsNotWidened) {
    ASSERT_EQ(0.01f * 100.0f, 1.0f);
    EXPECT_EQ(PointsOf({{0, 0, 0.01f}}), Points("Face", 0, 1, {0, 65535, 0}));
}

TEST(MorphExport, RangeOfZeroStoresZeros) {
    EXPECT_EQ(PointsOf({{2, 2, 2}, {2, 2, 2}}), Points("Face", 200, 200, {0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(PointsOf({{0, 0, 0}}), Points("Face", 0, 0, {0, 0, 0}));
    // f32 makes it 66558 steps, of which 16 bits are kept.
    EXPECT_EQ(PointsOf({{2, 2, 2.00001f}}), Points("Face", 200, 2.00001f * 100.0f, {0, 1022, 0}));
}

TEST(MorphExport, RangeAboveTheIntegersHasNoSteps) {
    EXPECT_EQ(PointsOf({{0, 0, 655}}), Points("Face", 0, 65500, {0, 65500, 0})) << "one step";
    EXPECT_EQ(PointsOf({{0, 0, 656}}), Points("Face", 0, 65600, {0, 0, 0}));
    EXPECT_EQ(PointsOf({{0, 328, -328}}), Points("Face", -32800, 32800, {0, 0, 0}));
}

TEST(MorphExport, CoordinatesBeyondTheStartOfTheSearch) {
    // The search begins at 1e10 and -1e10, which stay where every coordinate lies beyond them.
    EXPECT_EQ(PointsOf({{2e8f, 2e8f, 2e8f}}), Points("Face", 1e10f, 2e8f * 100, {0, 0, 0}));
    EXPECT_EQ(PointsOf({{-2e8f, -2e8f, -2e8f}}), Points("Face", -2e8f * 100, -1e10f, {0, 0, 0}));
    const float infinity = HUGE_VALF;
    EXPECT_EQ(PointsOf({{3e38f, 0, -3e38f}}), Points("Face", -infinity, infinity, {0, 0, 0}));
}

TEST(MorphExport, SmallestRangeIsNoFault) {
    const float tiny = 1e-44f;  // the f32 next to it, times 100, is not 0
    ASSERT_GT(tiny * 100.0f, 0.0f);
    // Its inverse is no f32.
    EXPECT_EQ(PointsOf({{0, 0, tiny}}), Points("Face", 0, tiny * 100, {0, 0, 0}));
}

TEST(MorphExport, ChannelsWithoutPointsAreLeftOut) {
    EXPECT_TRUE(MorphsOf(Face({{"a", {}}, {"b", {}}})).empty());
    EXPECT_TRUE(MorphsOf(Face({})).empty());
    const std::vector<Chunk> chunks =
        MorphsOf(Face({{"a", {}}, {"b", {{0, 0, 1}}}, {"c", {}}, {"d", {{0, 1, 0}}}}));
    ASSERT_EQ(chunks.size(), 2u);
    EXPECT_EQ(chunks[0].body, ChannelRecord("b") + Points("Face", 0, 100, {0, 65500, 0}));
    EXPECT_EQ(chunks[1].body, ChannelRecord("d") + Points("Face", 0, 100, {0, 0, 65500}));
}

TEST(MorphExport, LongNamesAreCutTo259Characters) {
    Node node = Face({{std::string(300, 'c'), {{0, 0, 0}}}});
    node.name = std::string(300, 'n');
    const std::vector<Chunk> chunks = MorphsOf(node);
    ASSERT_EQ(chunks.size(), 1u);
    EXPECT_EQ(chunks[0].body, ChannelRecord(std::string(259, 'c')) +
                                  Points(std::string(259, 'n'), 0, 0, {0, 0, 0}));
}

TEST(MorphExport, WithoutTheChoiceOrAMorpherNothingIsWritten) {
    Node disabled = Face({{"m", {{0, 0, 0}}}});
    disabled.modifiers[0].enabled = false;
    EXPECT_TRUE(MorphsOf(disabled).empty());
    EXPECT_TRUE(MorphsOf(MakeNode("none")).empty());
    ExportChoices without;
    // The fifth byte is the choice; the later ones keep their defaults.
    without.settings = std::string("\1\0\1\0\0", 5);
    EXPECT_TRUE(Morphs(Export(SceneOf({Face({{"m", {{0, 0, 0}}}})}), without)).empty());
}

TEST(MorphExport, TheTopmostEnabledMorpherCounts) {
    const auto morpher = [](const std::string& name, bool enabled) {
        return scene::Modifier{enabled, scene::Morpher{{{name, {{0, 0, 0}}}}}};
    };
    Node node = MakeNode("Face");
    node.modifiers = {morpher("below", true)};
    node.referenceModifiers = {{true, scene::OtherModifier{{1, 2}}},
                               morpher("off", false),
                               morpher("top", true),
                               morpher("second", true)};
    const std::vector<Chunk> chunks = MorphsOf(node);
    ASSERT_EQ(chunks.size(), 1u);
    EXPECT_EQ(chunks[0].body.substr(0, 260), Bytes().Name("top").Str());
}

TEST(MorphExport, AnotherModifierOfTheMorphersClassHasNoChannels) {
    Node node = MakeNode("Face");
    node.modifiers = {{true, scene::OtherModifier{{0x17bb6854, 0xa5cba2a3}}}};
    EXPECT_TRUE(MorphsOf(node).empty());
}

}  // namespace
