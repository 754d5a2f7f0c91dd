#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <iostream>

#include "core/log.h"
#include "host/sdk/host.h"
#include "host/sdk/live_objects.h"
#include "tests/support/array_storage.h"
#include "tests/support/chunks.h"
#include "tests/support/export_run.h"
#include "tests/support/kta_bytes.h"
#include "tests/support/open_pass.h"

namespace {

namespace scene = maxhost::scene;
using scene::Modifier;
using scene::Scene;
using support::Bytes;
using support::Chunk;
using support::CountLines;
using support::Export;
using support::ExportChoices;
using support::ExportRun;

using Lines = std::vector<std::string>;
using Slots = std::vector<std::vector<scene::SkinWeight>>;

constexpr std::uint32_t kNodeChunk = 0, kSkinMeshChunk = 3, kWeightsChunk = 4;

// ---------------------------------------------------------------- scenes

scene::Node Bone(const std::string& name, int parent = scene::kNone) {
    scene::Node node;
    node.name = name;
    node.parent = parent;
    return node;
}

// A triangle, or as many vertices as are asked for.
scene::Node Skinned(std::vector<Modifier> modifiers, std::size_t numVertices = 3) {
    scene::Mesh mesh;
    mesh.vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    mesh.vertices.resize(std::max<std::size_t>(numVertices, 3));
    mesh.faces = {{{0, 1, 2}}};
    scene::Node node = Bone("Skinned");
    node.object.emplace().mesh = std::make_shared<const scene::Mesh>(std::move(mesh));
    node.modifiers = std::move(modifiers);
    return node;
}

Modifier SkinOf(std::vector<int> bones, Slots weights) {
    return {true, scene::Skin{std::move(bones), std::move(weights), true}};
}

using PhysiqueVertices = decltype(scene::Physique::vertices);

Modifier Physique(PhysiqueVertices vertices) {
    return {true, scene::Physique{std::move(vertices)}};
}

Modifier Disabled(Modifier modifier) {
    modifier.enabled = false;
    return modifier;
}

// Bones "B0" and on at positions 0 and on, and the skinned node behind them.
Scene BonesFirst(std::size_t numBones, std::vector<Modifier> modifiers,
                 std::size_t numVertices = 3) {
    Scene scene;
    for (std::size_t i = 0; i < numBones; ++i) {
        scene.nodes.push_back(Bone("B" + std::to_string(i)));
    }
    scene.nodes.push_back(Skinned(std::move(modifiers), numVertices));
    return scene;
}

struct Optimizing {
    bool isOn = true;
    float threshold = 0.075f;
    std::uint32_t most = 4;
};

ExportRun ExportWith(const Scene& scene, const Optimizing& how, ExportChoices choices = {}) {
    Bytes settings;
    settings.U8(1).U8(0).U8(1).U8(0).U8(1).U8(how.isOn).U16(0);
    choices.settings = settings.F32({how.threshold}).U32(how.most).Str();
    return Export(scene, choices);
}

constexpr Optimizing kOff = {false, 0.075f, 4};

// ---------------------------------------------------------------- what is expected

using Entries = support::VertexWeights;

std::string WeightsBody(int node, const std::vector<Entries>& vertices) {
    return support::WeightsChunk(static_cast<std::uint32_t>(node), vertices).substr(12);
}

Chunk OnlyWeights(const ExportRun& run) {
    const std::vector<Chunk> chunks = support::ChunksOf(run.actor.value(), kWeightsChunk);
    EXPECT_EQ(chunks.size(), 1u);
    return chunks.empty() ? Chunk{} : chunks[0];
}

void ExpectWeights(const ExportRun& run, int node, const std::vector<Entries>& vertices) {
    const Chunk chunk = OnlyWeights(run);
    EXPECT_EQ(chunk.version, 1u);
    EXPECT_EQ(chunk.body, WeightsBody(node, vertices));
    EXPECT_EQ(chunk.size, chunk.body.size());
}

// The chunks behind the materials: a node by its name, others by what they are.
Lines Order(const std::string& actor) {
    Lines order;
    for (const Chunk& chunk : support::Chunks(actor)) {
        if (chunk.id == kNodeChunk) {
            order.emplace_back(chunk.body.c_str());
        } else if (chunk.id == kSkinMeshChunk) {
            order.emplace_back("mesh");
        } else if (chunk.id == kWeightsChunk) {
            order.push_back("weights of " + std::to_string(support::U32At(chunk.body, 0)));
        }
    }
    return order;
}

// The lines from the last one of a mesh to the next node or the end of the pass.
Lines SkinLog(const ExportRun& run) {
    const std::string before = "    + Vertex ratio factor = ";
    auto begin = std::find_if(run.log.begin(), run.log.end(),
                              [&](const std::string& line) { return line.starts_with(before); });
    EXPECT_NE(begin, run.log.end());
    begin += begin != run.log.end();
    const auto end = std::find_if(begin, run.log.end(), [](const std::string& line) {
        return line == "Closing file" || line.empty();
    });
    return {begin, end};
}

// ---------------------------------------------------------------- whole chunks

TEST(SkinExport, SkinByteForByte) {
    const Scene scene =
        BonesFirst(2, {SkinOf({0, 1}, {{{0, 0.25f}, {1, 0.75f}}, {}, {{1, 1.0f}}})});
    const ExportRun run = Export(scene);
    const Chunk chunk = OnlyWeights(run);
    EXPECT_EQ(chunk.version, 1u);
    EXPECT_EQ(chunk.size, 3 * 8 + 3 + 4u);
    const std::string expected = Bytes()
                                     .U32(2)
                                     .U8(2)
                                     .U16(0)
                                     .U16(0)
                                     .F32({0.25f})
                                     .U16(1)
                                     .U16(0)
                                     .F32({0.75f})
                                     .U8(0)
                                     .U8(1)
                                     .U16(1)
                                     .U16(0)
                                     .F32({1.0f})
                                     .Str();
    EXPECT_EQ(chunk.body, expected);
    EXPECT_EQ(Order(*run.actor), (Lines{"B0", "B1", "Skinned", "mesh", "weights of 2"}));
}

TEST(SkinExport, LogOfASkin) {
    const Scene scene = BonesFirst(
        3, {SkinOf({2, 0, 1}, {{{1, 0.5f}, {0, 0.5f}}, {{0, 0.9f}, {1, 0.05f}}, {{1, 1.0f}}})});
    const Lines expected = {
        "    + Exporting bones...",
        "*** Skin modifier found, exporting bones ***",
        "Bones influencing node 'Skinned':",
        "#1 : B0",
        "#2 : B2",
        "    + Exporting weights...",
        "*** Skin modifier found, exporting weights ***",
        "   + Skin modifier reports 3 skinned vertices...",
        "The weights of vertex 1 have been optimized from 2 into 1 weight(s)",
    };
    EXPECT_EQ(SkinLog(Export(scene)), expected);
}

TEST(SkinExport, PhysiqueByteForByte) {
    const Scene scene = BonesFirst(
        2, {Physique({scene::PhysiqueRigid{1}, scene::PhysiqueBlended{{{1, 0.25f}, {0, 0.5f}}},
                      scene::PhysiqueBlended{}})});
    ExpectWeights(ExportWith(scene, kOff), 2, {{{1, 1.0f}}, {{1, 0.25f}, {0, 0.5f}}, {}});
}

TEST(SkinExport, LogOfAPhysique) {
    const Scene scene = BonesFirst(
        2, {Physique({scene::PhysiqueRigid{1}, scene::PhysiqueBlended{{{1, 0.05f}, {0, 0.5f}}},
                      scene::PhysiqueRigid{1}})});
    const Lines expected = {
        "    + Exporting bones...",
        "Bones influencing node 'Skinned':",
        "#1 : B1",
        "#2 : B0",
        "    + Exporting weights...",
        "The weights of vertex 1 have been optimized from 2 into 1 weight(s)",
    };
    const ExportRun run = Export(scene);
    EXPECT_EQ(SkinLog(run), expected);
    ExpectWeights(run, 2, {{{1, 1.0f}}, {{0, 1.0f}}, {{1, 1.0f}}});
}

TEST(SkinExport, PhysiqueVerticesWithoutInterfaceWriteNothingButAreAnnounced) {
    // The second one is null, the fourth stands behind the list's end.
    const Scene scene = BonesFirst(
        1, {Physique({scene::PhysiqueRigid{0}, std::monostate{}, scene::PhysiqueRigid{0}})}, 4);
    const ExportRun run = Export(scene);
    const std::string expected =
        Bytes().U32(4).U32(2 * 8 + 4 + 4).U32(1).Str() + WeightsBody(1, {{{0, 1.0f}}, {{0, 1.0f}}});
    EXPECT_TRUE(run.actor->ends_with(expected));
}

TEST(SkinExport, SkinVerticesAreThoseOfItsContext) {
    const Scene scene = BonesFirst(1, {SkinOf({0}, {{{0, 1.0f}}})}, 5);
    const ExportRun run = Export(scene);
    ExpectWeights(run, 1, {{{0, 1.0f}}});
    EXPECT_EQ(CountLines(run, "   + Skin modifier reports 1 skinned vertices..."), 1);
}

// ---------------------------------------------------------------- optimisation

ExportRun ExportVertex(const std::vector<float>& weights, const Optimizing& how) {
    std::vector<int> bones;
    Slots slots(1);
    for (const float weight : weights) {
        slots[0].push_back({static_cast<int>(bones.size()), weight});
        bones.push_back(static_cast<int>(bones.size()));
    }
    return ExportWith(BonesFirst(bones.size(), {SkinOf(bones, slots)}), how);
}

TEST(SkinOptimisation, SmallWeightsGoAndTheRestIsScaled) {
    const ExportRun run = ExportVertex({0.5f, 0.3f, 0.15f, 0.05f}, {});
    // Divided by their sum, 0.95.
    ExpectWeights(run, 4, {{{0, 0.526315808f}, {1, 0.31578949f}, {2, 0.157894745f}}});
    EXPECT_EQ(
        CountLines(run, "The weights of vertex 0 have been optimized from 4 into 3 weight(s)"), 1);
    // The bone that was left out is one of the influencing ones all the same.
    EXPECT_EQ(CountLines(run, "#4 : B3"), 1);
}

TEST(SkinOptimisation, TheOnlyWeightStays) {
    const ExportRun run = ExportVertex({0.01f}, {});
    ExpectWeights(run, 1, {{{0, 1.0f}}});
    EXPECT_EQ(
        CountLines(run, "The weights of vertex 0 have been optimized from 1 into 1 weight(s)"), 0);
}

TEST(SkinOptimisation, OfFiveEqualOnesTheFirstGoes) {
    const ExportRun run = ExportVertex({0.2f, 0.2f, 0.2f, 0.2f, 0.2f}, {});
    ExpectWeights(run, 5, {{{1, 0.25f}, {2, 0.25f}, {3, 0.25f}, {4, 0.25f}}});
    EXPECT_EQ(
        CountLines(run, "The weights of vertex 0 have been optimized from 5 into 4 weight(s)"), 1);
}

TEST(SkinOptimisation, SumsAboveOneStay) {
    ExpectWeights(ExportVertex({0.7f, 0.5f}, {}), 2, {{{0, 0.7f}, {1, 0.5f}}});
}

TEST(SkinOptimisation, SumsOfZeroStay) {
    ExpectWeights(ExportVertex({0.0f, 0.0f}, {}), 2, {{{1, 0.0f}}});
    ExpectWeights(ExportVertex({0.0f, 0.0f}, {true, 0.0f, 4}), 2, {{{0, 0.0f}, {1, 0.0f}}});
}

TEST(SkinOptimisation, FollowsThresholdAndMaximumOfTheSettings) {
    const std::vector<float> weights = {0.1f, 0.2f, 0.3f, 0.4f};
    ExpectWeights(ExportVertex(weights, {true, 0.25f, 4}), 4,
                  {{{2, 0.428571433f}, {3, 0.571428537f}}});
    ExpectWeights(ExportVertex(weights, {true, 0.0f, 2}), 4,
                  {{{2, 0.428571433f}, {3, 0.571428537f}}});
    ExpectWeights(ExportVertex(weights, {true, 0.0f, 0}), 4, {{}});
}

TEST(SkinOptimisation, SwitchedOffWritesWhatWasGathered) {
    const ExportRun run = ExportVertex({0.5f, 0.3f, 0.01f, 0.05f, 0.02f, 0.0f}, kOff);
    ExpectWeights(run, 6, {{{0, 0.5f}, {1, 0.3f}, {2, 0.01f}, {3, 0.05f}, {4, 0.02f}, {5, 0.0f}}});
}

TEST(SkinOptimisation, LeavesRigidPhysiqueVerticesAlone) {
    const Scene scene = BonesFirst(
        1, {Physique({scene::PhysiqueRigid{0}, scene::PhysiqueRigid{0}, scene::PhysiqueRigid{0}})});
    const std::vector<Entries> expected(3, Entries{{0, 1.0f}});
    ExpectWeights(ExportWith(scene, kOff), 1, expected);
    // A maximum of 0 takes all weights of other vertices.
    ExpectWeights(ExportWith(scene, {true, 0.9f, 0}), 1, expected);
}

TEST(SkinOptimisation, OptimizesBlendedPhysiqueVertices) {
    const Scene scene = BonesFirst(
        2, {Physique(PhysiqueVertices(3, scene::PhysiqueBlended{{{0, 0.25f}, {1, 0.05f}}}))});
    const ExportRun run = Export(scene);
    ExpectWeights(run, 2, std::vector<Entries>(3, Entries{{0, 1.0f}}));
    EXPECT_EQ(
        CountLines(run, "The weights of vertex 2 have been optimized from 2 into 1 weight(s)"), 1);
}

TEST(SkinOptimisation, TheSameBoneMayStandTwice) {
    const Scene scene = BonesFirst(1, {SkinOf({0, 0}, {{{0, 0.25f}, {1, 0.75f}, {0, 0.5f}}})});
    const ExportRun run = Export(scene);
    ExpectWeights(run, 1, {{{0, 0.25f}, {0, 0.75f}, {0, 0.5f}}});
    EXPECT_EQ(CountLines(run, "#1 : B0"), 1);
    EXPECT_EQ(CountLines(run, "#2 : B0"), 0);
}

// ---------------------------------------------------------------- what is missing

TEST(SkinExport, NegativeBoneNumbersAreLeftOutWithAMessage) {
    const Scene scene = BonesFirst(1, {SkinOf({0}, {{{-1, 0.5f}, {0, 0.5f}}, {{-7, 1.0f}}})});
    const ExportRun run = ExportWith(scene, kOff);
    ExpectWeights(run, 1, {{{0, 0.5f}}, {}});
    const Lines expected = {
        "    + Exporting bones...",
        "*** Skin modifier found, exporting bones ***",
        "Help! BoneNr is < 0 (-1)",
        "Help! BoneNr is < 0 (-7)",
        "Bones influencing node 'Skinned':",
        "#1 : B0",
        "    + Exporting weights...",
        "*** Skin modifier found, exporting weights ***",
        "   + Skin modifier reports 2 skinned vertices...",
        "Help! BoneNr is < 0 (-1)",
        "Help! BoneNr is < 0 (-7)",
    };
    EXPECT_EQ(SkinLog(run), expected);
}

TEST(SkinExport, WithoutContextTheChunkHoldsTheNodeNumberAlone) {
    const Scene scene =
        BonesFirst(1, {{true, scene::Skin{{0}, {{{0, 1.0f}}, {{0, 1.0f}}}, false}}});
    const ExportRun run = Export(scene);
    ExpectWeights(run, 1, {});
    EXPECT_EQ(OnlyWeights(run).size, 4u);
    const Lines expected = {
        "    + Exporting bones...",
        "*** Skin modifier found, exporting bones ***",
        "*** Failed to get the skin context for node 'Skinned' ***",
        "    + Exporting weights...",
        "*** Skin modifier found, exporting weights ***",
        "*** Failed to get the skin context for node 'Skinned' ***",
    };
    EXPECT_EQ(SkinLog(run), expected);
}

TEST(SkinExport, WithoutSkinInterfaceThereIsNoChunk) {
    const ExportRun run = Export(BonesFirst(0, {{true, scene::OtherModifier{{9815843, 87654}}}}));
    EXPECT_TRUE(support::ChunksOf(*run.actor, kWeightsChunk).empty());
    const Lines expected = {
        "    + Exporting bones...", "*** Skin modifier found, exporting bones ***",
        "skin == NULL!!",           "    + Exporting weights...",
        "skin == NULL!!",
    };
    EXPECT_EQ(SkinLog(run), expected);
}

TEST(SkinExport, WithoutPhysiqueInterfaceTheChunkBreaksOffBehindTheNodeNumber) {
    const ExportRun run = Export(BonesFirst(0, {{true, scene::OtherModifier{{0x100, 0}}}}, 5));
    EXPECT_TRUE(run.actor->ends_with(Bytes().U32(4).U32(4 + 5).U32(1).U32(0).Str()));
    EXPECT_EQ(SkinLog(run), (Lines{"    + Exporting bones...", "    + Exporting weights..."}));
}

TEST(SkinExport, SkinWithoutWeightsNamesNoBones) {
    const ExportRun run = Export(BonesFirst(1, {SkinOf({0}, {{}, {}})}));
    ExpectWeights(run, 1, {{}, {}});
    EXPECT_EQ(CountLines(run, "Bones influencing node 'Skinned':"), 0);
}

TEST(SkinExport, MeshesThatAreNotWrittenHaveNoSkin) {
    Scene scene = BonesFirst(1, {SkinOf({0}, {{{0, 1.0f}}})});
    scene.nodes[1].object->mesh = std::make_shared<const scene::Mesh>();
    const ExportRun run = Export(scene);
    EXPECT_EQ(Order(*run.actor), (Lines{"B0", "Skinned"}));
    EXPECT_EQ(CountLines(run, "    + Exporting bones..."), 0);
}

TEST(SkinExport, CollisionMeshesHaveTheirSkin) {
    Scene scene = BonesFirst(1, {SkinOf({0}, {{{0, 1.0f}}})});
    scene.nodes[1].userProperties = "CollisionMesh";
    ExpectWeights(ExportWith(scene, {}), 1, {{{0, 1.0f}}});
}

// ---------------------------------------------------------------- which modifier

TEST(SkinExport, DisabledModifiersCountForNothing) {
    const Modifier skin = SkinOf({0}, {{{0, 1.0f}}});
    const Modifier physique = Physique(PhysiqueVertices(3, scene::PhysiqueRigid{0}));
    const ExportRun none = Export(BonesFirst(1, {Disabled(skin), Disabled(physique)}));
    EXPECT_TRUE(support::ChunksOf(*none.actor, kWeightsChunk).empty());
    EXPECT_EQ(CountLines(none, "    + Exporting bones..."), 0);
    ExpectWeights(Export(BonesFirst(1, {Disabled(physique), skin})), 1, {{{0, 1.0f}}});
    // The topmost enabled one of a class.
    ExpectWeights(
        Export(BonesFirst(2, {Disabled(SkinOf({0}, {{}, {}})), SkinOf({1}, {{{0, 1.0f}}}), skin})),
        2, {{{1, 1.0f}}});
}

TEST(SkinExport, PhysiqueCountsWhereThereAreBoth) {
    const Modifier physique = Physique(PhysiqueVertices(3, scene::PhysiqueRigid{1}));
    const ExportRun run = Export(BonesFirst(2, {SkinOf({0}, {{{0, 1.0f}}}), physique}));
    ExpectWeights(run, 2, std::vector<Entries>(3, Entries{{1, 1.0f}}));
    EXPECT_EQ(CountLines(run, "*** Skin modifier found, exporting bones ***"), 0);
}

TEST(SkinExport, ModifiersOfAReferenceCount) {
    Scene scene = BonesFirst(1, {});
    scene.nodes[1].referenceModifiers = {SkinOf({0}, {{{0, 1.0f}}})};
    ExpectWeights(Export(scene), 1, {{{0, 1.0f}}});
}

// ---------------------------------------------------------------- bones

TEST(SkinBones, AreWrittenBeforeTheWeights) {
    Scene scene;
    scene.nodes = {Skinned({SkinOf({2, 1, 3}, {{{0, 0.5f}, {1, 0.5f}}, {{1, 1.0f}}})}),
                   Bone("First"), Bone("Second", 1), Bone("Unused", 2)};
    const ExportRun run = Export(scene);
    EXPECT_EQ(Order(*run.actor),
              (Lines{"Skinned", "mesh", "Second", "First", "weights of 0", "Unused"}));
    ExpectWeights(run, 0, {{{1, 0.5f}, {2, 0.5f}}, {{2, 1.0f}}});
    // The walk does not write them again.
    EXPECT_EQ(CountLines(run, "- Exporting node 'First'"), 1);
    // Nor does it matter which of them would have been left out.
    EXPECT_EQ(Order(*ExportWith(scene, {true, 0.9f, 1}).actor), Order(*run.actor));
}

TEST(SkinBones, HiddenOnesAreWritten) {
    Scene scene;
    scene.nodes = {Bone("Hidden"), Skinned({SkinOf({0}, {{{0, 1.0f}}})}), Bone("HiddenToo")};
    scene.nodes[0].hidden = true;
    scene.nodes[2].hidden = true;
    const ExportRun run = Export(scene);
    EXPECT_EQ(Order(*run.actor), (Lines{"Skinned", "mesh", "Hidden", "weights of 0"}));
    ExpectWeights(run, 0, {{{1, 1.0f}}});
}

TEST(SkinBones, ThoseOutsideTheSelectionAreWritten) {
    Scene scene;
    scene.nodes = {Bone("Outside"), Skinned({SkinOf({0}, {{{0, 1.0f}}})})};
    scene.selection = {1};
    ExportChoices choices;
    choices.selectedOnly = true;
    const ExportRun run = Export(scene, choices);
    EXPECT_EQ(Order(*run.actor), (Lines{"Skinned", "mesh", "Outside", "weights of 0"}));
    ExpectWeights(run, 0, {{{1, 1.0f}}});
}

TEST(SkinBones, SlotsWithoutNodeHaveNoNumber) {
    const Scene skin = BonesFirst(1, {SkinOf({scene::kNone, 0}, {{{0, 0.5f}, {1, 0.5f}}})});
    const ExportRun run = ExportWith(skin, kOff);
    ExpectWeights(run, 1, {{{-1, 0.5f}, {0, 0.5f}}});
    EXPECT_EQ(CountLines(run, "#1 : B0"), 1);
    const scene::PhysiqueBlended blended = {{{scene::kNone, 0.5f}, {0, 0.5f}}};
    ExpectWeights(
        ExportWith(
            BonesFirst(1, {Physique({scene::PhysiqueRigid{}, blended, scene::PhysiqueRigid{0}})}),
            kOff),
        1, {{{-1, 1.0f}}, {{-1, 0.5f}, {0, 0.5f}}, {{0, 1.0f}}});
}

// All of a vertex's weights are gathered, with what is to be said of them, before its bones.
TEST(SkinBones, OfAVertexFollowWhatIsSaidOfItsWeights) {
    Scene scene;
    scene.nodes = {Skinned({SkinOf({1}, {{{0, 0.5f}, {-1, 0.5f}}})}), Bone("Late")};
    const Lines log = ExportWith(scene, kOff).log;
    const auto said = std::find(log.begin(), log.end(), "Help! BoneNr is < 0 (-1)");
    const auto bone = std::find(log.begin(), log.end(), "- Exporting node 'Late'");
    ASSERT_NE(bone, log.end());
    EXPECT_LT(said, bone);
}

TEST(SkinBones, FootprintsHaveNoNumber) {
    Scene scene = BonesFirst(1, {SkinOf({0}, {{{0, 0.5f}}, {{0, 1.0f}, {0, 1.0f}}})});
    scene.nodes[0].transform.emplace().kind = scene::FootprintTransform{};
    const ExportRun run = ExportWith(scene, kOff);
    ExpectWeights(run, 0, {{{-1, 0.5f}}, {{-1, 1.0f}, {-1, 1.0f}}});
    // Once in its turn, then for each weight that names it.
    EXPECT_EQ(CountLines(run, "  + Skipped, because it's a biped footprint"), 4);
    EXPECT_EQ(CountLines(run, "#1 : B0"), 1);
}

// Each node is a bone of the one before.
TEST(SkinBones, MayBeSkinnedThemselves) {
    Scene scene;
    for (int i = 0; i < 3; ++i) {
        scene.nodes.push_back(Skinned({SkinOf({(i + 1) % 3}, {{{0, 1.0f}}})}));
        scene.nodes.back().name = "S" + std::to_string(i);
    }
    const ExportRun run = Export(scene);
    EXPECT_EQ(Order(*run.actor), (Lines{"S0", "mesh", "S1", "mesh", "S2", "mesh", "weights of 2",
                                        "weights of 1", "weights of 0"}));
    const std::vector<Chunk> weights = support::ChunksOf(*run.actor, kWeightsChunk);
    ASSERT_EQ(weights.size(), 3u);
    EXPECT_EQ(weights[0].body, WeightsBody(2, {{{0, 1.0f}}}));
    EXPECT_EQ(weights[1].body, WeightsBody(1, {{{2, 1.0f}}}));
    EXPECT_EQ(weights[2].body, WeightsBody(0, {{{1, 1.0f}}}));
}

TEST(SkinBones, NodeMayBeItsOwnBone) {
    ExpectWeights(Export(BonesFirst(0, {SkinOf({0}, {{{0, 1.0f}}})})), 0, {{{0, 1.0f}}});
}

// ---------------------------------------------------------------- limits

TEST(SkinLimits, A256thWeightIsLeftOutWithAMessage) {
    std::vector<scene::SkinWeight> weights(256, {0, 0.5f});
    weights[254].weight = 0.25f;
    const Scene scene = BonesFirst(1, {SkinOf({0}, {weights, {{0, 1.0f}}})});
    const ExportRun run = ExportWith(scene, kOff);
    Entries expected(255, {0, 0.5f});
    expected[254].second = 0.25f;
    ExpectWeights(run, 1, {expected, {{0, 1.0f}}});
    EXPECT_EQ(
        CountLines(run, "WARNING: Vertex 0 has 256 weights, of which the first 255 are written"),
        1);
}

TEST(SkinLimits, TwoHundredAndFiftyFiveWeightsAreWritten) {
    const Scene scene =
        BonesFirst(1, {SkinOf({0}, {std::vector<scene::SkinWeight>(255, {0, 0.5f})})});
    const ExportRun run = ExportWith(scene, kOff);
    ExpectWeights(run, 1, {Entries(255, {0, 0.5f})});
    for (const std::string& line : run.log) {
        EXPECT_FALSE(line.starts_with("WARNING")) << line;
    }
}

// Opens the scene and exports its nodes without log and driver.
class DirectExport {
  public:
    explicit DirectExport(Scene scene) {
        maxhost::Host::Instance().OpenScene(std::move(scene));
        pass_.emplace();
    }
    ~DirectExport() {
        pass_.reset();
        maxhost::Host::Instance().CloseScene();
    }

    void ExportNodes(std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            ExportNode(**pass_, maxhost::Host::Instance().Nodes()[i]);
        }
    }
    void Run() { ExportNodes(0, maxhost::Host::Instance().Nodes().size()); }
    std::string Written() { return pass_->Written(); }
    std::string LastBytes(std::size_t count) {
        const std::string written = pass_->Written();
        return written.substr(written.size() - count);
    }

  private:
    std::optional<support::OpenPass> pass_;
};

TEST(SkinLimits, BonesWhoseNumbersDoNotFitAreWrittenAsNone) {
    const support::WorkDirectory directory;
    DirectExport direct(BonesFirst(32769, {SkinOf({32767, 32768}, {{{0, 0.5f}, {1, 0.5f}}})}));
    direct.ExportNodes(0, 32769);
    Plinth::GetLogManager().AddLogFileCallback("log");
    direct.ExportNodes(32769, 32770);
    Plinth::GetLogManager().ClearLogCallbacks();
    EXPECT_EQ(direct.LastBytes(4 + 1 + 2 * 8), WeightsBody(32769, {{{32767, 0.5f}, {-1, 0.5f}}}));
    EXPECT_NE(support::ReadFile("log").find(
                  "WARNING: 1 weight(s) are written without their bones, whose numbers do not fit"),
              std::string::npos);
}

TEST(SkinLimits, SkinsOnSkinsToAnyDepth) {
    constexpr int kDepth = 10000;
    Scene scene;
    for (int i = 0; i < kDepth; ++i) {
        scene.nodes.push_back(Skinned({SkinOf({std::min(i + 1, kDepth - 1)}, {{{0, 1.0f}}})}));
    }
    DirectExport direct(std::move(scene));
    direct.Run();
    // The first node's weights come last.
    EXPECT_EQ(direct.LastBytes(4 + 1 + 8), WeightsBody(0, {{{1, 1.0f}}}));
}

// ---------------------------------------------------------------- what is given back

TEST(SkinExport, ReleasesWhatItAskedPhysiqueForOnce) {
    const maxhost::LoanCounts before = maxhost::CountLoans();
    const Modifier physique =
        Physique({scene::PhysiqueRigid{0}, scene::PhysiqueBlended{{{0, 0.5f}, {1, 0.5f}}},
                  std::monostate{}});
    Export(BonesFirst(2, {physique}));
    const maxhost::LoanCounts after = maxhost::CountLoans();
    // Two vertices, the context and the modifier's interface.
    EXPECT_EQ(after.lent - before.lent, 2 + 1 + 1);
    EXPECT_EQ(after.outstanding, before.outstanding);
    EXPECT_EQ(after.wrongReleases, before.wrongReleases);
}

TEST(SkinExport, GivesBackWhatItAskedForWhereMemoryIsMissing) {
    const PhysiqueVertices vertices = {scene::PhysiqueRigid{1},
                                       scene::PhysiqueBlended{{{2, 0.5f}, {3, 0.5f}}},
                                       scene::PhysiqueRigid{2}};
    for (const Modifier& modifier :
         {Physique(vertices), SkinOf({1, 2, 3}, {{{0, 0.5f}, {1, 0.5f}}, {{2, 1.0f}}})}) {
        Scene scene;
        scene.nodes = {Skinned({modifier}), Bone("A"), Bone("B"), Bone("C")};
        const maxhost::LoanCounts before = maxhost::CountLoans();
        int failing = 0;
        for (bool done = false; !done; ++failing) {
            DirectExport direct(scene);
            const ArrayStorage storage(failing);
            try {
                direct.Run();
                done = true;
            } catch (const std::bad_alloc&) {
            }
            ASSERT_EQ(done, storage.Requests() <= failing);
        }
        EXPECT_GT(failing, 10);
        EXPECT_EQ(maxhost::CountLoans().outstanding, before.outstanding);
        EXPECT_EQ(maxhost::CountLoans().wrongReleases, before.wrongReleases);
    }
}

// ---------------------------------------------------------------- cost

double SecondsOfSkin(int numBones, int numVertices) {
    Scene scene;
    std::vector<int> bones;
    Slots weights(static_cast<std::size_t>(numVertices));
    for (int i = 0; i < numBones; ++i) {
        bones.push_back(i + 1);
    }
    std::vector<std::uint16_t> numbers(bones.size(), 0);
    std::uint16_t number = 0, numNumbered = 0;
    for (int i = 0; i < numVertices; ++i) {
        for (int k = 0; k < 4; ++k) {
            const int slot = (i * 7 + k * 1237) % numBones;
            weights[static_cast<std::size_t>(i)].push_back({slot, 0.25f});
            std::uint16_t& own = numbers[static_cast<std::size_t>(slot)];
            own = own != 0 ? own : ++numNumbered;
            number = own;
        }
    }
    // Behind the skinned node: each has to be found to be not exported yet.
    scene.nodes = {Skinned({SkinOf(std::move(bones), std::move(weights))})};
    for (int i = 0; i < numBones; ++i) {
        scene.nodes.push_back(Bone("B"));
    }
    DirectExport direct(std::move(scene));
    const std::clock_t begin = std::clock();
    direct.Run();
    const double seconds = static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
    // Bones are written, and so numbered, in order of appearance.
    EXPECT_EQ(direct.LastBytes(8), Bytes().U16(number).U16(0).F32({0.25f}).Str());
    return seconds;
}

// Four times the vertices and bones in at most twice four times as long; to search a list of ten
// thousand bones for each of 800,000 weights would take sixteen times as long.
TEST(SkinCost, GrowsLinearly) {
    const double quarter = SecondsOfSkin(2500, 50000);
    const double whole = SecondsOfSkin(10000, 200000);
    std::cout << "10,000 bones, 200,000 vertices of 4 weights: " << whole << " s\n";
    EXPECT_LT(whole, 8 * quarter + 0.1);
}

}  // namespace
