// Blend shapes: the channels of the Morpher, and what their weights at tick 0 make of the mesh.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <limits>

#include "host/assimp/mesh/mesh.h"
#include "host/assimp/mesh/pose.h"
#include "host/assimp/motion/clips.h"
#include "host/scene/scale.h"
#include "tests/unit/host/assimp/shown_scene.h"
#include "tests/unit/host/assimp/source_scene.h"

using maxhost::import::ImportedScene;
using maxhost::import::ImportWithAssimp;
using maxhost::import::MorphWeights;
using maxhost::import::SourceFormat;
using maxhost::import::SourceTree;
using maxhost::import::StartPose;
using maxhost::scene::Mesh;
using maxhost::scene::MorphChannel;
using maxhost::scene::Morpher;
using maxhost::scene::Node;
using maxhost::scene::Skin;
using maxhost::scene::Vec3;
using Lines = std::vector<std::string>;
using Points = std::vector<Vec3>;

namespace {

const std::vector<aiVector3D> kRest = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
const Points kRestPoints = {{0, 0, 0}, {1, 0, 0}, {0, 0, 1}};

// A y-up scene of any format, with a triangle at node 1.
struct OneMorph {
    explicit OneMorph(const char* importer = kOther) : source(importer, "Top") {
        node = source.AddNode(source.Root(), "Node");
        mesh = source.AddMesh("m", kRest, {{0, 1, 2}});
        SourceScene::Show(node, {mesh});
    }

    Node Convert(std::size_t at = 1) {
        imported = source.Convert();
        return imported.scene.nodes.at(at);
    }

    SourceScene source;
    aiNode* node;
    unsigned mesh;
    ImportedScene imported;
};

const std::vector<MorphChannel>& ChannelsOf(const Node& node) {
    return std::get<Morpher>(node.modifiers.back().kind).channels;
}

Lines ChannelNamesOf(const Node& node) {
    Lines names;
    for (const MorphChannel& channel : ChannelsOf(node)) {
        names.push_back(channel.name);
    }
    return names;
}

}  // namespace

// ---------------------------------------------------------------- channels

TEST(ImportedMorph, HasTheTargetsAsChannels) {
    OneMorph scene;
    scene.source.AddMorphTarget(scene.mesh, "smile", {{0, 0, 0}, {1, 2, 3}, {0, 1, 0}});
    scene.source.AddMorphTarget(scene.mesh, "frown", {{4, 0, 0}, {1, 0, 0}, {0, 1, 0}});
    const Node node = scene.Convert();
    ASSERT_EQ(node.modifiers.size(), 1u);
    EXPECT_TRUE(node.modifiers[0].enabled);
    EXPECT_EQ(MeshOf(node).vertices, kRestPoints);
    EXPECT_EQ(ChannelNamesOf(node), (Lines{"smile", "frown"}));
    EXPECT_EQ(ChannelsOf(node)[0].points, (Points{{0, 0, 0}, {1, -3, 2}, {0, 0, 1}}));
    EXPECT_EQ(ChannelsOf(node)[1].points, (Points{{4, 0, 0}, {1, 0, 0}, {0, 0, 1}}));
    EXPECT_EQ(scene.imported.warnings, Lines{});
}

TEST(ImportedMorph, HasAPointForEachJoinedVertex) {
    OneMorph scene;
    const unsigned twice = scene.source.AddMesh(
        "twice", {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 0}, {1, 0, 0}, {0, 1, 0}},
        {{0, 1, 2}, {5, 4, 3}});
    scene.source.AddMorphTarget(twice, "x",
                                {{5, 0, 0}, {1, 0, 0}, {0, 1, 0}, {5, 0, 0}, {1, 0, 8}, {0, 1, 0}});
    SourceScene::Show(scene.node, {twice});
    const Node node = scene.Convert();
    EXPECT_EQ(MeshOf(node).vertices, (Points{{0, 0, 0}, {1, 0, 0}, {0, 0, 1}, {1, 0, 0}}));
    EXPECT_EQ(ChannelsOf(node).at(0).points, (Points{{5, 0, 0}, {1, 0, 0}, {0, 0, 1}, {1, -8, 0}}));
}

TEST(ImportedMorph, TakesTargetsOfOneNameTogetherAcrossPieces) {
    OneMorph scene;
    const unsigned plain =
        scene.source.AddMesh("plain", {{7, 0, 0}, {8, 0, 0}, {7, 1, 0}}, {{0, 1, 2}});
    const unsigned other =
        scene.source.AddMesh("other", {{4, 0, 0}, {5, 0, 0}, {4, 1, 0}}, {{0, 1, 2}});
    const unsigned last =
        scene.source.AddMesh("last", {{9, 0, 0}, {10, 0, 0}, {9, 1, 0}}, {{0, 1, 2}});
    scene.source.AddMorphTarget(scene.mesh, "x", {{0, 2, 0}, {1, 0, 0}, {0, 1, 0}});
    scene.source.AddMorphTarget(other, "y", {{4, 3, 0}, {5, 0, 0}, {4, 1, 0}});
    scene.source.AddMorphTarget(other, "x", {{4, 4, 0}, {5, 0, 0}, {4, 1, 0}});
    SourceScene::Show(scene.node, {plain, scene.mesh, other, last});
    const Node node = scene.Convert();
    EXPECT_EQ(ChannelNamesOf(node), (Lines{"x", "y"}));
    Points x = MeshOf(node).vertices, y = x;
    ASSERT_EQ(x.size(), 12u);
    x[3] = {0, 0, 2};
    x[6] = {4, 0, 4};
    y[6] = {4, 0, 3};
    EXPECT_EQ(ChannelsOf(node)[0].points, x);
    EXPECT_EQ(ChannelsOf(node)[1].points, y);
}

TEST(ImportedMorph, TellsTargetsOfOneNameApartByTheirOrder) {
    OneMorph scene;
    for (const float x : {2.0f, 3.0f}) {
        scene.source.AddMorphTarget(scene.mesh, "x", {{x, 0, 0}, {1, 0, 0}, {0, 1, 0}});
    }
    const Node node = scene.Convert();
    EXPECT_EQ(ChannelNamesOf(node), (Lines{"x", "x"}));
    EXPECT_EQ(ChannelsOf(node)[0].points[0], (Vec3{2, 0, 0}));
    EXPECT_EQ(ChannelsOf(node)[1].points[0], (Vec3{3, 0, 0}));
}

TEST(ImportedMorph, NamesTheUnnamed) {
    OneMorph scene;
    for (const char* const name : {"", "Morph1", "", "x"}) {
        scene.source.AddMorphTarget(scene.mesh, name, kRest);
    }
    EXPECT_EQ(ChannelNamesOf(scene.Convert()), (Lines{"Morph5", "Morph1", "Morph3", "x"}));
}

TEST(ImportedMorph, LeavesAVertexWithoutANumberWhereItIs) {
    OneMorph scene;
    scene.source.AddMorphTarget(scene.mesh, "short", {{0, 9, 0}});
    scene.source.AddMorphTarget(scene.mesh, "none", {});
    aiAnimMesh& none = *scene.source.Mesh(scene.mesh).mAnimMeshes[1];
    delete[] none.mVertices;
    none.mVertices = nullptr;
    scene.source.AddMorphTarget(scene.mesh, "broken", {{kNan, 9, -kNan}, {1, 0, 0}, {0, 1, 0}});
    const Node node = scene.Convert();
    EXPECT_EQ(ChannelsOf(node).at(0).points, (Points{{0, 0, 9}, {1, 0, 0}, {0, 0, 1}}));
    EXPECT_EQ(ChannelsOf(node).at(1).points, kRestPoints);
    EXPECT_EQ(ChannelsOf(node).at(2).points, (Points{{0, 0, 9}, {1, 0, 0}, {0, 0, 1}}));
    EXPECT_EQ(scene.imported.warnings,
              Lines{"mesh 'm': numbers that are not finite replaced by 0 (2)"});
}

TEST(ImportedMorph, OfARelativeColladaMorphHoldsChanges) {
    OneMorph scene(kCollada);
    SourceScene::Show(scene.node, {scene.mesh});
    scene.source.AddMorphTarget(scene.mesh, "x", {{0, 0, 0}, {0, 2, 0}, {0, 0, 0}}, 0.5f);
    scene.source.Mesh(scene.mesh).mMethod = aiMorphingMethod_MORPH_RELATIVE;
    Node node = scene.Convert(0);
    EXPECT_EQ(MeshOf(node).vertices, (Points{{0, 0, 0}, {1, 0, 1}, {0, 0, 1}}));
    EXPECT_EQ(ChannelsOf(node).at(0).points, (Points{{0, 0, 0}, {1, 0, 2}, {0, 0, 1}}));
    scene.source.Mesh(scene.mesh).mMethod = aiMorphingMethod_MORPH_NORMALIZED;
    node = scene.Convert(0);
    EXPECT_EQ(ChannelsOf(node).at(0).points, (Points{{0, 0, 0}, {0, 0, 2}, {0, 0, 0}}));
}

TEST(ImportedMorph, IsTheSameForNodesThatShowOneMesh) {
    OneMorph scene;
    scene.source.AddMorphTarget(scene.mesh, "x", {{0, 2, 0}, {1, 0, 0}, {0, 1, 0}});
    SourceScene::Show(scene.source.AddNode(scene.source.Root(), "Second"), {scene.mesh});
    const Node first = scene.Convert(1);
    const Node second = scene.imported.scene.nodes.at(2);
    EXPECT_EQ(first.object.value().mesh, second.object.value().mesh);
    EXPECT_EQ(ChannelsOf(second).at(0).points, ChannelsOf(first).at(0).points);
}

TEST(ImportedMorph, ScalesWithTheScene) {
    OneMorph scene;
    scene.source.AddMorphTarget(scene.mesh, "x", {{0, 2, 0}, {1, 0, 0}, {0, 1, 0}});
    scene.Convert();
    maxhost::scene::ScaleLengths(scene.imported.scene, 10);
    EXPECT_EQ(ChannelsOf(scene.imported.scene.nodes.at(1)).at(0).points,
              (Points{{0, 0, 20}, {10, 0, 0}, {0, 0, 10}}));
}

// ---------------------------------------------------------------- tick 0

// A channel's points are its shape alone, whatever the weights are.
TEST(MorphedVertices, AreWhereTheWeightsPutThem) {
    OneMorph scene;
    scene.source.AddMorphTarget(scene.mesh, "x", {{0, 4, 0}, {1, 0, 0}, {0, 1, 0}}, 0.5f);
    scene.source.AddMorphTarget(scene.mesh, "y", {{8, 0, 0}, {1, 0, 0}, {0, 3, 0}}, 0.25f);
    const unsigned plain =
        scene.source.AddMesh("plain", {{7, 0, 0}, {8, 0, 0}, {7, 1, 0}}, {{0, 1, 2}});
    SourceScene::Show(scene.node, {scene.mesh, plain});
    const Node node = scene.Convert();
    EXPECT_EQ(MeshOf(node).vertices,
              (Points{{2, 0, 2}, {1, 0, 0}, {0, 0, 1.5f}, {7, 0, 0}, {8, 0, 0}, {7, 0, 1}}));
    EXPECT_EQ(ChannelsOf(node)[0].points,
              (Points{{0, 0, 4}, {1, 0, 0}, {0, 0, 1}, {7, 0, 0}, {8, 0, 0}, {7, 0, 1}}));
    EXPECT_EQ(ChannelsOf(node)[1].points,
              (Points{{8, 0, 0}, {1, 0, 0}, {0, 0, 3}, {7, 0, 0}, {8, 0, 0}, {7, 0, 1}}));
}

TEST(MorphedVertices, OfAPieceWithoutTheTargetRestInItsChannel) {
    OneMorph scene;
    scene.source.AddMorphTarget(scene.mesh, "x", {{0, 4, 0}, {1, 0, 0}, {0, 1, 0}}, 1);
    const unsigned other =
        scene.source.AddMesh("other", {{4, 0, 0}, {5, 0, 0}, {4, 1, 0}}, {{0, 1, 2}});
    scene.source.AddMorphTarget(other, "y", {{4, 3, 0}, {5, 0, 0}, {4, 1, 0}}, 1);
    SourceScene::Show(scene.node, {scene.mesh, other});
    const Node node = scene.Convert();
    EXPECT_EQ(ChannelsOf(node)[0].points[3], (Vec3{4, 0, 0}));
    EXPECT_EQ(ChannelsOf(node)[1].points[0], (Vec3{0, 0, 0}));
}

TEST(MorphedVertices, TakeTheirNormalsAlong) {
    OneMorph scene;
    aiMesh& piece = scene.source.Mesh(scene.mesh);
    piece.mNormals = new aiVector3D[3]{{1, 0, 0}, {1, 0, 0}, {1, 0, 0}};
    aiAnimMesh& target = scene.source.AddMorphTarget(scene.mesh, "x", kRest, 0.5f);
    target.mNormals = new aiVector3D[3]{{0, 1, 0}, {1, 0, 0}, {-1, 0, 0}};
    const Mesh mesh = MeshOf(scene.Convert());
    const float root = std::sqrt(0.5f);
    EXPECT_NEAR(mesh.normals.at(0)[0], root, 1e-6);
    EXPECT_NEAR(mesh.normals.at(0)[2], root, 1e-6);
    EXPECT_EQ(mesh.normals.at(1), (Vec3{1, 0, 0}));
    EXPECT_EQ(mesh.normals.count(2), 0u);
    EXPECT_EQ(scene.imported.warnings, Lines{"mesh 'm': normals without a direction left out"});
}

// Points and vertices are in one space, so that their difference is the shape's.
TEST(MorphedVertices, AreMovedByTheirBonesAndSoAreThePoints) {
    OneMorph scene;
    scene.node->mTransformation = Moved(10, 0, 0);
    scene.source.AddMorphTarget(scene.mesh, "x", {{0, 4, 0}, {1, 2, 0}, {0, 1, 0}}, 0.5f);
    scene.source.AddBone(scene.mesh, "bone", {{0, 1}}, Moved(10, 0, 0));
    scene.source.AddNode(scene.source.Root(), "bone")->mTransformation = Moved(0, 100, 0);
    const Node node = scene.Convert();
    ASSERT_EQ(node.modifiers.size(), 2u);
    EXPECT_TRUE(std::holds_alternative<Skin>(node.modifiers[0].kind));
    EXPECT_EQ(MeshOf(node).vertices, (Points{{0, 0, 102}, {1, 0, 1}, {0, 0, 1}}));
    EXPECT_EQ(ChannelsOf(node).at(0).points, (Points{{0, 0, 104}, {1, 0, 2}, {0, 0, 1}}));
}

// Assimp's FBX reader says 1 whatever a shape's percentage is.
TEST(MorphedVertices, OfAnFbxFileRest) {
    OneMorph scene(kFbx);
    scene.source.AddMorphTarget(scene.mesh, "x", {{0, 4, 0}, {1, 0, 0}, {0, 1, 0}}, 1);
    const Node node = scene.Convert(0);
    EXPECT_EQ(MeshOf(node).vertices, kRestPoints);
    EXPECT_EQ(ChannelsOf(node).at(0).points[0], (Vec3{0, 0, 4}));
    EXPECT_EQ(scene.imported.warnings,
              Lines{"mesh 'm': the reader loses the weights of blend shapes, taken as 0"});
}

// ---------------------------------------------------------------- weights in motion

namespace {

struct MorphKey {
    double time;
    std::vector<std::pair<unsigned, double>> weights;
};

// A clip that moves the targets of what bears the name.
std::unique_ptr<aiAnimation> ClipOf(const std::string& name, const std::vector<MorphKey>& keys) {
    auto clip = std::make_unique<aiAnimation>();
    clip->mNumMorphMeshChannels = 1;
    auto* const motion = new aiMeshMorphAnim;
    clip->mMorphMeshChannels = new aiMeshMorphAnim* [1] { motion };
    motion->mName = name;
    motion->mNumKeys = static_cast<unsigned>(keys.size());
    motion->mKeys = new aiMeshMorphKey[keys.size()];
    for (std::size_t i = 0; i < keys.size(); ++i) {
        aiMeshMorphKey& key = motion->mKeys[i];
        const std::size_t count = keys[i].weights.size();
        key.mTime = keys[i].time;
        key.mNumValuesAndWeights = static_cast<unsigned>(count);
        key.mValues = new unsigned[count];
        key.mWeights = new double[count];
        for (std::size_t k = 0; k < count; ++k) {
            std::tie(key.mValues[k], key.mWeights[k]) = keys[i].weights[k];
        }
    }
    return clip;
}

// Of two targets that have the weights 0.5 and 0.75 in the mesh "m" at the node "Node".
MorphWeights WeightsWith(const aiAnimation* clip, SourceFormat format = SourceFormat::other) {
    OneMorph scene;
    scene.source.AddMorphTarget(scene.mesh, "x", kRest, 0.5f);
    scene.source.AddMorphTarget(scene.mesh, "y", kRest, 0.75f);
    SourceTree tree;
    tree.nodes.push_back({scene.node, maxhost::scene::kNone, {}, {}, {}, 0});
    const StartPose pose(tree, format, {aiMatrix4x4t<double>()}, clip);
    return pose.MorphWeightsOf(0, scene.source.Mesh(scene.mesh));
}

using Numbers = std::vector<double>;

}  // namespace

TEST(MorphWeightsAtStart, AreThePiecesWithoutAClip) {
    EXPECT_EQ(WeightsWith(nullptr).values, (Numbers{0.5, 0.75}));
    EXPECT_EQ(WeightsWith(ClipOf("Somebody", {{0, {{0, 1}}}}).get()).values, (Numbers{0.5, 0.75}));
    EXPECT_EQ(WeightsWith(ClipOf("Node", {}).get()).values, (Numbers{0.5, 0.75}));
}

TEST(MorphWeightsAtStart, AreTheClipsByTheNameOfNodeOrMesh) {
    for (const char* const name : {"Node", "m", "Node*0"}) {
        EXPECT_EQ(WeightsWith(ClipOf(name, {{0, {{1, 0.25}, {0, 1}}}, {9, {{0, 7}}}}).get()).values,
                  (Numbers{1, 0.25}));
    }
}

TEST(MorphWeightsAtStart, AreTheFirstKeysWhereItComesLaterAndTheLastWhereItIsPast) {
    EXPECT_EQ(WeightsWith(ClipOf("m", {{3, {{0, 0.1}}}, {4, {{0, 0.2}}}}).get()).values,
              (Numbers{0.1, 0.75}));
    EXPECT_EQ(WeightsWith(ClipOf("m", {{-4, {{0, 0.1}}}, {-3, {{0, 0.2}}}}).get()).values,
              (Numbers{0.2, 0.75}));
}

TEST(MorphWeightsAtStart, AreBetweenTheKeysAroundIt) {
    const auto clip = ClipOf("m", {{-9, {{0, 5}}}, {-1, {{0, 1}, {1, 0}}}, {3, {{0, 0}, {1, 8}}}});
    EXPECT_EQ(WeightsWith(clip.get()).values, (Numbers{0.75, 2}));
}

TEST(MorphWeightsAtStart, AreFiniteAndOfTargetsThatExist) {
    EXPECT_EQ(WeightsWith(ClipOf("m", {{0, {{0, kNan}, {2, 1}, {4000000000u, 1}}}}).get()).values,
              (Numbers{0, 0.75}));
}

TEST(MorphWeightsAtStart, AreLostInFbxUnlessAClipTellsThem) {
    EXPECT_TRUE(WeightsWith(nullptr, SourceFormat::fbx).areLost);
    EXPECT_EQ(WeightsWith(nullptr, SourceFormat::fbx).values, (Numbers{0, 0}));
    const auto clip = ClipOf("Node*0", {{0, {{0, 0.25}}}});
    EXPECT_FALSE(WeightsWith(clip.get(), SourceFormat::fbx).areLost);
    EXPECT_EQ(WeightsWith(clip.get(), SourceFormat::fbx).values, (Numbers{0.25, 0}));
}

TEST(MorphWeightsAtStart, OfTheClipThatIsImportedMoveTheVertices) {
    OneMorph scene;
    scene.source.AddMorphTarget(scene.mesh, "x", {{4, 0, 0}, {1, 0, 0}, {0, 1, 0}}, 0.5f);
    EXPECT_EQ(MeshOf(scene.Convert()).vertices.at(0), (Vec3{2, 0, 0}));
    aiAnimation& clip = scene.source.AddAnimation("wink", 9, 1);
    const auto moved = ClipOf("Node", {{0, {{0, 0.25}}}, {9, {{0, 1}}}});
    std::swap(clip.mMorphMeshChannels, moved->mMorphMeshChannels);
    std::swap(clip.mNumMorphMeshChannels, moved->mNumMorphMeshChannels);
    EXPECT_EQ(MeshOf(scene.Convert()).vertices.at(0), (Vec3{1, 0, 0}));
}

TEST(MorphWeightsAtStart, MakeAMeshOfItsOwnWhereTheyDiffer) {
    OneMorph scene;
    scene.source.AddMorphTarget(scene.mesh, "x", {{4, 0, 0}, {1, 0, 0}, {0, 1, 0}}, 0.5f);
    for (const char* const name : {"Second", "Third"}) {
        SourceScene::Show(scene.source.AddNode(scene.source.Root(), name), {scene.mesh});
    }
    const auto clip = ClipOf("Second", {{0, {{0, 0.25}}}});
    const SourceTree tree = maxhost::import::FlattenTree(scene.source.Scene(), "a.x");
    const StartPose pose(tree, SourceFormat::other, maxhost::import::LocalsAtStart(tree, {}),
                         clip.get());
    maxhost::import::ImportWarnings warnings;
    const maxhost::import::BoneNodes bones(scene.source.Scene(), tree, pose, warnings);
    maxhost::import::MeshFactory meshes(
        {scene.source.Scene(), tree, SourceFormat::other, pose, bones, warnings});
    EXPECT_EQ(meshes.Of(1).mesh->vertices.at(0), (Vec3{2, 0, 0}));
    EXPECT_EQ(meshes.Of(2).mesh->vertices.at(0), (Vec3{1, 0, 0}));
    EXPECT_EQ(meshes.Of(3).mesh, meshes.Of(1).mesh);
}

// ---------------------------------------------------------------- a file

TEST(MorphOfAFile, AnimatedMorphCube) {
    const ImportedScene imported =
        ImportWithAssimp(std::filesystem::path(HDO_ASSIMP_MODELS) /
                         "glTF2/glTF-Sample-Models/AnimatedMorphCube-glTF/AnimatedMorphCube.gltf");
    ASSERT_EQ(imported.scene.nodes.size(), 1u);
    const Node& node = imported.scene.nodes[0];
    EXPECT_EQ(ChannelNamesOf(node), (Lines{"Morph1", "Morph2"}));
    // As far as the file's own bounds of its targets say, upwards.
    const Points& rest = MeshOf(node).vertices;
    for (std::size_t i = 0; i < 2; ++i) {
        const Points& points = ChannelsOf(node)[i].points;
        ASSERT_EQ(points.size(), rest.size());
        float most = 0;
        for (std::size_t k = 0; k < points.size(); ++k) {
            EXPECT_EQ(points[k][0], rest[k][0]);
            EXPECT_EQ(points[k][1], rest[k][1]);
            most = std::max(most, points[k][2] - rest[k][2]);
        }
        EXPECT_NEAR(most, i == 0 ? 0.01893253f : 0.0198908355f, 1e-8);
    }
}
