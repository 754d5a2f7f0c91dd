// What an export asks of 3ds Max, call by call, on scenes of a known size.
#include "host/sdk/calls.h"

#include <gtest/gtest.h>

#include "export/export_options.h"
#include "host/sdk/host.h"
#include "tests/support/export_run.h"
#include "tests/support/scene_parts.h"

namespace {

namespace scene = maxhost::scene;
using maxhost::CallCounts;
using support::Axes;
using support::Constant;
using support::Keyed;
using support::MakeNode;
using support::Prs;

// From value to value, straight, with a key every `step` ticks.
scene::FloatController Curve(int keys, int step) {
    std::vector<scene::Key> made(static_cast<std::size_t>(keys));
    for (int i = 0; i < keys; ++i) {
        scene::Key& key = made[static_cast<std::size_t>(i)];
        key.time = i * step;
        key.value = static_cast<float>(i * i);
        key.inType = key.outType = scene::Tangent::linear;
    }
    return Keyed(std::move(made));
}

constexpr int kStep = 160;

// Moves and turns.
scene::Transform Moving(int keys) {
    const auto curves = Axes(Curve(keys, kStep), Curve(keys, kStep), Curve(keys, kStep));
    return Prs(curves, curves);
}

CallCounts CallsOf(const scene::Scene& scene, bool isSampled) {
    ExportOptions options = DefaultExportOptions();
    options.sampleAnimation = isSampled;
    options.sampleRate = 1;
    support::ExportChoices choices;
    choices.settings = std::string(reinterpret_cast<const char*>(&options), sizeof options);
    maxhost::Host::Instance().KeepOneTransformANode(true);
    const CallCounts before = maxhost::CountedCalls();
    EXPECT_EQ(support::Export(scene, choices).result, 1);
    const CallCounts calls = maxhost::CallsSince(before);
    maxhost::Host::Instance().KeepOneTransformANode(false);
    return calls;
}

// A tree of bones in which each has two below it, over so many frames.
scene::Scene Rig(int bones, int frames) {
    scene::Scene rig;
    rig.time = {30, kStep, 0, (frames - 1) * kStep};
    for (int i = 0; i < bones; ++i) {
        rig.nodes.push_back(MakeNode("bone" + std::to_string(i), i == 0 ? scene::kNone : i / 2));
        rig.nodes.back().transform = Moving(frames);
    }
    return rig;
}

// The vertices of a strip of so many triangles, with two sets of texture coordinates; of a class
// that has to be converted to a triangle mesh.
scene::Node Strip(int faces) {
    scene::Mesh mesh;
    for (int i = 0; i < faces + 2; ++i) {
        mesh.vertices.push_back({static_cast<float>(i / 2), static_cast<float>(i % 2), 0});
    }
    for (std::uint32_t i = 0; i < static_cast<std::uint32_t>(faces); ++i) {
        mesh.faces.push_back({{i, i + 1, i + 2}, 1, 0});
    }
    scene::Node node = MakeNode("strip");
    node.object.emplace().mesh = std::make_shared<const scene::Mesh>(std::move(mesh));
    node.object->classId = {0x1bf8338d, 0x192f6098};
    return node;
}

constexpr std::uint64_t kBones = 60, kFrames = 250;

TEST(Calls, SampledMotion) {
    const CallCounts calls = CallsOf(Rig(kBones, kFrames), true);
    // Its own and its parent's, for the node record and for each sample; the pose is one of these.
    EXPECT_EQ(calls.nodeTransforms, kBones * (2 + 2 * kFrames));
    // The first time is that of the node record, whose transforms are still there.
    EXPECT_EQ(calls.transformEvaluations, kBones * kFrames);
    // To prepare each pass, and for what kind of node it is.
    EXPECT_EQ(calls.objectEvaluations, kBones * (2 + 2));
    EXPECT_EQ(calls.keys, 0u);
}

TEST(Calls, KeyframedMotion) {
    const CallCounts calls = CallsOf(Rig(kBones, kFrames), false);
    // Three axes of the position and three of the rotation.
    EXPECT_EQ(calls.keys, kBones * 6 * kFrames);
    EXPECT_EQ(calls.keyCounts, kBones * (2 + 6));
    EXPECT_EQ(calls.transformEvaluations, kBones);
}

constexpr int kFaces = 1000;
constexpr std::uint64_t kVertices = kFaces + 2;

TEST(Calls, Mesh) {
    scene::Scene scene;
    scene.nodes.push_back(Strip(kFaces));
    const CallCounts calls = CallsOf(scene, false);
    // Both passes are prepared and ask for the kind of node; the mesh is evaluated once.
    EXPECT_EQ(calls.objectEvaluations, 2u + 2u + 1u);
    EXPECT_EQ(calls.conversions, 1u);
    EXPECT_EQ(calls.normalBuilds, 1u);
    EXPECT_EQ(calls.renderVertices, 3u * kFaces);
    EXPECT_EQ(calls.faceNormals, 0u);
    // To prepare the pass, and for the mesh.
    EXPECT_EQ(calls.nodeMaterials, 2u);
}

TEST(Calls, Skin) {
    constexpr int kInfluences = 8;
    scene::Scene scene = Rig(kInfluences, 1);
    scene.nodes.push_back(Strip(kFaces));
    scene::Skin skin;
    for (int i = 0; i < kInfluences; ++i) {
        skin.bones.push_back(i);
    }
    skin.weights.resize(kVertices);
    for (auto& weights : skin.weights) {
        for (int i = 0; i < kInfluences; ++i) {
            weights.push_back({i, 1.0f / kInfluences});
        }
    }
    scene.nodes.back().modifiers.push_back({true, std::move(skin)});
    const CallCounts calls = CallsOf(scene, false);
    EXPECT_EQ(calls.skinContexts, 1u);
    EXPECT_EQ(calls.skinVertices, kVertices);
    EXPECT_EQ(calls.skinBones, kInfluences + 0u);
    EXPECT_EQ(calls.skinWeights, kVertices * kInfluences);
}

TEST(Calls, Morphs) {
    constexpr std::uint64_t kChannels = 5, kPoints = 1000;
    scene::Scene scene;
    scene.nodes.push_back(Strip(1));
    const scene::MorphChannel channel{"smile", std::vector<scene::Vec3>(kPoints)};
    scene::Morpher morpher{std::vector<scene::MorphChannel>(kChannels, channel)};
    scene.nodes.back().modifiers.push_back({true, std::move(morpher)});
    EXPECT_EQ(CallsOf(scene, false).morphPoints, kChannels * kPoints);
}

}  // namespace
