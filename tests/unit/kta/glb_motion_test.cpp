#include <cmath>
#include <numeric>

#include "tests/unit/kta/glb_sample.h"

namespace {

using namespace sample;

// ---------------------------------------------------------------- skins and morphs

std::string SkinnedActor(const std::vector<support::VertexWeights>& weights) {
    return ActorOf(
        {RootAt("Mesh", {0, 5, 0}), RootAt("A", {}), NodeAt("B", "A", {0, 0, 7}, {0, 0, 7})},
        MeshChunk(FacingTriangleOf(0)) + WeightsChunk(0, weights));
}

TEST(GlbMotionTest, SkinStandsInTheWorld) {
    const TakenGlb glb = GlbOf(SkinnedActor({{{1, 0.25f}, {2, 0.75f}}, {{2, 1}}, {{1, 1}}}));
    const json& holder = glb.Node("Mesh skin");
    EXPECT_EQ(holder, json({{"name", "Mesh skin"}, {"mesh", 0}, {"skin", 0}}));
    EXPECT_FALSE(glb.Node("Mesh").contains("mesh"));
    const json& skin = glb.root["skins"][0];
    EXPECT_EQ(skin["joints"], json({1, 2}));
    const std::vector<float> matrices = glb.Values(skin["inverseBindMatrices"]);
    ASSERT_EQ(matrices.size(), 32u);
    EXPECT_EQ(std::vector<float>(matrices.begin() + 28, matrices.end()),
              (std::vector<float>{0, 0, 7, 1}));  // glTF's z is the file's turned over
    EXPECT_EQ(glb.Values<std::uint8_t>(glb.Primitive()["attributes"]["JOINTS_0"]),
              (std::vector<std::uint8_t>{1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(glb.Attribute("WEIGHTS_0"),
              (std::vector<float>{0.75f, 0.25f, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0}));
    EXPECT_EQ(glb.root["scenes"][0]["nodes"].size(), 3u);
}

// Without bones a vertex goes with the mesh's node. The joints A and Mesh have no node above both.
TEST(GlbMotionTest, JointsHaveACommonRoot) {
    const TakenGlb glb = GlbOf(SkinnedActor({{{1, 1}}, {{1, 1}}, {}}));
    EXPECT_EQ(glb.root["skins"][0]["joints"], json({0, 1}));
    EXPECT_EQ(glb.Node("Scene Root")["children"], json({0, 1}));
    EXPECT_EQ(glb.root["scenes"][0]["nodes"].size(), 2u);
}

TEST(GlbMotionTest, AnyNumberOfBones) {
    std::vector<NodeFields> nodes = {RootAt("Root", {})};
    support::VertexWeights weights;
    for (int i = 1; i <= 9; ++i) {
        nodes.push_back(NodeAt("Bone" + std::to_string(i), "Root", {}, {}));
        weights.push_back({static_cast<std::int16_t>(i), 0.1f * static_cast<float>(i)});
    }
    const std::string actor = ActorOf(
        nodes, MeshChunk(FacingTriangleOf(0)) + WeightsChunk(0, {weights, weights, weights}));
    const TakenGlb glb = GlbOf(actor);
    double sum = 0;
    for (const char* const set : {"WEIGHTS_0", "WEIGHTS_1", "WEIGHTS_2"}) {
        const std::vector<float> values = glb.Attribute(set);
        sum = std::accumulate(values.begin(), values.begin() + 4, sum);
    }
    EXPECT_NEAR(sum, 1, 1e-6);
    EXPECT_NEAR(glb.Attribute("WEIGHTS_0")[0], 0.9 / 4.5, 1e-6);  // the greatest comes first
    EXPECT_EQ(glb.Values<std::uint8_t>(glb.Primitive()["attributes"]["JOINTS_0"])[0], 8);
    const TakenGlb cut = GlbOf(actor, "", {.mostInfluences = 4});
    EXPECT_FALSE(cut.Primitive()["attributes"].contains("WEIGHTS_1"));
    std::vector<float> kept = cut.Attribute("WEIGHTS_0");
    kept.resize(4);
    ExpectFloats(kept, {0.3f, 0.8f / 3, 0.7f / 3, 0.2f});
    EXPECT_EQ(cut.root["skins"][0]["joints"], json({6, 7, 8, 9}));
}

TEST(GlbMotionTest, WeightsOfWhichRecordsAreMissing) {
    const TakenGlb glb =
        GlbOf(ActorOf({RootAt("Mesh", {}), RootAt("A", {})},
                      MeshChunk(FacingTriangleOf(0)) + WeightsChunk(0, {{{1, 1}}, {{1, 1}}}, 1)));
    EXPECT_EQ(glb.root["skins"][0]["joints"], json::array({0}));
    EXPECT_EQ(glb.warnings,
              (std::vector<std::string>{"\"Mesh\": 1 vertex without weights, it is not known "
                                        "which: moves with its node only"}));
}

TEST(GlbMotionTest, MorphTargets) {
    MorphFields morph;
    morph.node = "Box";
    morph.maximum = 65535;
    morph.packed = {{100, 200, 300}, {200, 200, 1300}, {100, 900, 300}};
    const TakenGlb glb =
        GlbOf(ActorOf({RootAt("Box", {})}, MeshChunk(FacingTriangleOf(0)) + MorphChunk(morph)));
    EXPECT_EQ(glb.root["meshes"][0]["extras"]["targetNames"], json({"Smile"}));
    EXPECT_EQ(glb.root["meshes"][0]["weights"], json({0.0}));
    ExpectFloats(glb.Values(glb.Primitive()["targets"][0]["POSITION"]),
                 {0, 0, 0, 0, 0, -10, 0, 5, 0});
    // The triangle's edges become (1, 0, -10) and (0, 7, 0), so that it faces (10, 0, 1) and no
    // more (0, 0, 1); its normals, (0, 0, -1), turn as much.
    const float length = std::sqrt(101.0f);
    const float x = -10 / length, z = 1 - 1 / length;
    ExpectFloats(glb.Values(glb.Primitive()["targets"][0]["NORMAL"]), {x, 0, z, x, 0, z, x, 0, z});
}

// ---------------------------------------------------------------- motion

TEST(GlbMotionTest, SampledTracks) {
    const TakenGlb glb = GlbOf(
        TriangleActor(), MotionOf("Box", {},
                                  SampledTrack('P', {{0, {0, 0, 0}}, {1, {1, 2, 3}}}) +
                                      SampledTrack('R', {{0, {0, 0, 0, 1}},
                                                         {1, {0, -kRootOfHalf, 0, kRootOfHalf}}}) +
                                      SampledTrack('S', {{0, {1, 1, 1}}, {1, {2, 3, 4}}})));
    EXPECT_EQ(glb.root["animations"].size(), 1u);
    const json& translation = glb.Sampler("Box", "translation");
    EXPECT_EQ(translation["interpolation"], "LINEAR");
    EXPECT_EQ(glb.Values(translation["input"]), (std::vector<float>{0, 1}));
    EXPECT_EQ(glb.Values(translation["output"]), (std::vector<float>{0, 0, 0, 1, 2, -3}));
    const json& rotation = glb.Sampler("Box", "rotation");
    EXPECT_EQ(rotation["input"], translation["input"]);  // the same times stand there once
    ExpectFloats(glb.Values(rotation["output"]), {0, 0, 0, 1, 0, kRootOfHalf, 0, kRootOfHalf});
    EXPECT_EQ(glb.Values(glb.Sampler("Box", "scale")["output"]),
              (std::vector<float>{1, 1, 1, 2, 3, 4}));
}

TEST(GlbMotionTest, KeyframedTracks) {
    const TakenGlb glb = GlbOf(
        TriangleActor(),
        MotionOf("Box", {},
                 KeyframedTrack('P', {KeyRecord(0, {0, 0, 0}, 7, {3, 3, 3, 5, 3, 3}, {{1, 3}}),
                                      KeyRecord(2, {1, 2, 3}, 7, {5, 3, 3, 3, 3, 3}, {{1, 0}})}) +
                     KeyframedTrack('r', {KeyRecord(0, {0, 0, 0}, 7, {4, 4, 4, 4, 4, 4}),
                                          KeyRecord(1, {0, 0, 90}, 7, {4, 4, 4, 4, 4, 4})})));
    const json& translation = glb.Sampler("Box", "translation");
    EXPECT_EQ(translation["interpolation"], "CUBICSPLINE");
    // In, value, out of both keys; x leaves with 3 a second, y and z go straight.
    EXPECT_EQ(glb.Values(translation["output"]),
              (std::vector<float>{0, 0, 0, 0, 0, 0, 3, 1.5f, -1,  //
                                  0, 1.5f, -1, 1, 3, -2, 0, 0, 0}));
    const json& rotation = glb.Sampler("Box", "rotation");
    EXPECT_EQ(rotation["interpolation"], "STEP");
    // 90 degrees about the scene's z axis, which is glTF's y.
    ExpectFloats(glb.Values(rotation["output"]), {0, 0, 0, 1, 0, kRootOfHalf, 0, kRootOfHalf});
}

TEST(GlbMotionTest, MotionBefore0BeginsAt0) {
    const TakenGlb glb =
        GlbOf(TriangleActor(),
              MotionOf("Box", {}, SampledTrack('P', {{-0.5f, {0, 0, 0}}, {1, {1, 0, 0}}})));
    EXPECT_EQ(glb.Values(glb.Sampler("Box", "translation")["input"]),
              (std::vector<float>{0, 1.5f}));
    EXPECT_EQ(glb.warnings, (std::vector<std::string>{"the motion begins at -0.5 s, which becomes "
                                                      "0 s: glTF has no earlier time"}));
}

TEST(GlbMotionTest, MirroredNodeMovesMirrored) {
    NodeFields node = RootAt("Box", {});
    node.scale = {-1, -1, -1};
    node.matrix[0] = node.matrix[5] = node.matrix[10] = -1;
    const TakenGlb glb =
        GlbOf(ActorOf({node}, MeshChunk(FacingTriangleOf(0))),
              MotionOf("Box", {}, SampledTrack('S', {{0, {1, 1, 1}}, {1, {2, 2, 2}}})));
    EXPECT_EQ(Floats(glb.Node("Box")["scale"]), (std::vector<float>{-1, -1, -1}));
    EXPECT_EQ(glb.Values(glb.Sampler("Box", "scale")["output"]),
              (std::vector<float>{-1, -1, -1, -2, -2, -2}));
}

// The keys are those of the node, beside whose pivot its object stands: the vertices are moved.
TEST(GlbMotionTest, ObjectOffsetOfAKeyframedNode) {
    const TakenGlb glb = GlbOf(
        ActorOf({RootAt("Box", {12, 0, 0})}, MeshChunk(FacingTriangleOf(0))),
        MotionOf("Box", {.translation = {12, 0, 0}},
                 KeyframedTrack('P', {KeyRecord(0, {10, 0, 0}), KeyRecord(1, {10, 0, 0})}) +
                     KeyframedTrack('r', {KeyRecord(0, {0, 0, 0}), KeyRecord(1, {0, 0, 90})})));
    EXPECT_EQ(Floats(glb.Node("Box")["translation"]), (std::vector<float>{10, 0, 0}));
    EXPECT_EQ(glb.Attribute("POSITION")[0], 3);
}

// A moving child of a parent that was not exported has it for its carrier.
TEST(GlbMotionTest, CarrierOfAMovingNode) {
    const TakenGlb glb = GlbOf(ActorOf({NodeAt("Child", "Elsewhere", {1, 0, 0}, {101, 0, 0})},
                                       MeshChunk(FacingTriangleOf(0))),
                               MotionOf("Child", {.translation = {1, 0, 0}},
                                        SampledTrack('P', {{0, {1, 0, 0}}, {1, {2, 0, 0}}})));
    EXPECT_EQ(Floats(glb.Node("Child carrier")["translation"]), (std::vector<float>{100, 0, 0}));
    EXPECT_EQ(glb.Node("Child carrier")["children"], json::array({0}));
    EXPECT_EQ(Floats(glb.Node("Child")["translation"]), (std::vector<float>{1, 0, 0}));
    EXPECT_EQ(glb.root["scenes"][0]["nodes"], json({1}));
}

TEST(GlbMotionTest, PartOfNoNode) {
    const TakenGlb glb =
        GlbOf(TriangleActor(), MotionOf("Ghost", {}, SampledTrack('P', {{0, {1, 2, 3}}})));
    EXPECT_FALSE(glb.root.contains("animations"));
    EXPECT_EQ(glb.warnings, (std::vector<std::string>{"1 motion part left out, of nodes that the "
                                                      "actor file lacks, such as \"Ghost\""}));
}

// ---------------------------------------------------------------- damaged files

// Whatever a file holds, what is made of it is JSON and data, without a crash; the sanitizers look
// on.
TEST(GlbMotionTest, DamagedFiles) {
    const std::string actor =
        SkinnedActor({{{1, 0.25f}, {2, 0.75f}}, {{2, 1}}, {{1, 1}}}) + MorphChunk({.node = "Mesh"});
    const std::string motion =
        MotionOf("A", {},
                 KeyframedTrack(
                     'P', {KeyRecord(0, {0, 0, 0}, 7, {3, 3, 3, 5, 5, 5}, {{1, 3}, {2, 1}, {1, 1}}),
                           KeyRecord(1, {1, 2, 3})}) +
                     KeyframedTrack('r', {KeyRecord(0, {0, 0, 0}), KeyRecord(1, {0, 0, 90})})) +
        support::MotionPart("B") + SampledTrack('S', {{0, {1, 1, 1}}, {1, {2, 2, 2}}});
    constexpr int kRounds = 300;
    std::mt19937 random(3);
    std::size_t encoded = 0;
    for (int round = 0; round < kRounds; ++round) {
        std::string files[] = {actor, motion};
        for (int i = 0; i < 3; ++i) {
            std::string& file = files[random() % 2];
            const char bytes[] = {'\0', '\x7f', '\xff', static_cast<char>(random())};
            file[7 + random() % (file.size() - 7)] = bytes[random() % 4];
        }
        const kta::Reading actorReading = ReadExact(files[0]);
        const kta::Reading motionReading = ReadExact(files[1]);
        std::vector<std::string> warnings;
        const std::vector<std::uint8_t> bytes =
            kta::EncodeGlb(*actorReading.file, &*motionReading.file, {}, warnings);
        const std::size_t size =
            std::size_t{bytes[12]} | std::size_t{bytes[13]} << 8 | std::size_t{bytes[14]} << 16;
        ASSERT_FALSE(json::parse(bytes.begin() + 20, bytes.begin() + 20 + std::ptrdiff_t(size))
                         .is_discarded());
        ++encoded;
    }
    EXPECT_EQ(encoded, std::size_t{kRounds});
}

}  // namespace
