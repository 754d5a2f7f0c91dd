// Bones, weights and the place of skinned vertices at tick 0.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>

#include "host/assimp/import.h"
#include "host/assimp/process/scene_blob.h"
#include "host/scene_file/scene_description.h"
#include "tests/support/every_field.h"
#include "tests/unit/host/assimp/shown_scene.h"
#include "tests/unit/host/assimp/source_scene.h"

using maxhost::import::ImportedScene;
using maxhost::scene::Mesh;
using maxhost::scene::Node;
using maxhost::scene::Skin;
using maxhost::scene::SkinWeight;
using maxhost::scene::Vec3;
using Lines = std::vector<std::string>;
using Corners = std::array<std::uint32_t, 3>;

namespace {

constexpr char kOutOfPose[] = "vertices whose bones are not in their bind pose at the start";

// A z-up scene, so that numbers stay as they are, with the triangle (0, 0, 0), (1, 0, 0), (0, 1, 0)
// at node 0 and the bones "a" and "b" at nodes 1 and 2.
struct OneSkin {
    OneSkin() : source(kFbx, "RootNode") {
        source.Set("UpAxis", 2);
        node = source.AddNode(source.Root(), "Node");
        a = source.AddNode(source.Root(), "a");
        b = source.AddNode(source.Root(), "b");
        mesh = source.AddTriangle("m");
        SourceScene::Show(node, {mesh});
    }

    Node Convert(std::size_t at = 0) {
        imported = source.Convert();
        return imported.scene.nodes.at(at);
    }

    SourceScene source;
    aiNode *node, *a, *b;
    unsigned mesh;
    ImportedScene imported;
};

const Skin& SkinOf(const Node& node) {
    return std::get<Skin>(node.modifiers.at(0).kind);
}

using Weights = std::vector<std::vector<std::pair<int, float>>>;

Weights WeightsOf(const Node& node) {
    Weights weights;
    for (const auto& list : SkinOf(node).weights) {
        weights.emplace_back();
        for (const SkinWeight& weight : list) {
            weights.back().emplace_back(weight.slot, weight.weight);
        }
    }
    return weights;
}

void ExpectVec3Near(const Vec3& found, const Vec3& expected) {
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(found[i], expected[i], 1e-5) << "coordinate " << i;
    }
}

aiMatrix4x4 QuarterTurnAboutZ() {
    aiMatrix4x4 turn;
    turn.a1 = turn.b2 = 0;
    turn.a2 = -1;
    turn.b1 = 1;
    return turn;
}

aiMatrix4x4 Scaled(float x, float y, float z) {
    aiMatrix4x4 matrix;
    return aiMatrix4x4::Scaling({x, y, z}, matrix);
}

}  // namespace

// ---------------------------------------------------------------- the modifier

TEST(ImportedSkin, HoldsBonesAndWeights) {
    OneSkin scene;
    scene.source.AddBone(scene.mesh, "b", {{0, 1}, {1, 0.25f}});
    scene.source.AddBone(scene.mesh, "a", {{1, 0.75f}});
    const Node node = scene.Convert();
    ASSERT_EQ(node.modifiers.size(), 1u);
    EXPECT_TRUE(node.modifiers[0].enabled);
    EXPECT_TRUE(SkinOf(node).context);
    EXPECT_EQ(SkinOf(node).bones, (std::vector<int>{2, 1}));
    EXPECT_EQ(WeightsOf(node), (Weights{{{0, 1}}, {{0, 0.25f}, {1, 0.75f}}, {}}));
    EXPECT_TRUE(scene.imported.warnings.empty());
}

TEST(ImportedSkin, ListsBonesOnceInTheOrderOfThePieces) {
    OneSkin scene;
    const unsigned second =
        scene.source.AddMesh("n", {{5, 0, 0}, {6, 0, 0}, {5, 1, 0}}, {{0, 1, 2}});
    scene.source.AddNode(scene.source.Root(), "c");
    scene.source.AddBone(scene.mesh, "b", {{0, 1}});
    scene.source.AddBone(second, "c", {{0, 0.5f}});
    scene.source.AddBone(second, "a");
    scene.source.AddBone(second, "b", {{0, 0.5f}});
    SourceScene::Show(scene.node, {scene.mesh, second});
    const Node node = scene.Convert();
    EXPECT_EQ(SkinOf(node).bones, (std::vector<int>{2, 3, 1}));
    EXPECT_EQ(WeightsOf(node), (Weights{{{0, 1}}, {}, {}, {{0, 0.5f}, {1, 0.5f}}, {}, {}}));
}

TEST(ImportedSkin, IsOneListAVertexAfterJoining) {
    OneSkin scene;
    const unsigned twice = scene.source.AddMesh(
        "twice", {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 0}, {1, 0, 0}, {0, 1, 0}},
        {{0, 1, 2}, {5, 4, 3}});
    scene.source.AddBone(twice, "a", {{0, 1}, {3, 1}, {1, 1}});
    SourceScene::Show(scene.node, {twice});
    const Node node = scene.Convert();
    EXPECT_EQ(MeshOf(node).vertices.size(), 4u);
    EXPECT_EQ(WeightsOf(node), (Weights{{{0, 1}}, {{0, 1}}, {}, {}}));
}

TEST(ImportedSkin, LeavesOutWhatIsNoWeight) {
    OneSkin scene;
    scene.source.AddBone(scene.mesh, "a", {{0, 1}, {1, 0}, {3, 1}, {4000000000u, 1}, {2, kNan}});
    scene.source.AddBone(scene.mesh, "b", {{2, -kNan}, {2, 0.5f}});
    const Node node = scene.Convert();
    EXPECT_EQ(WeightsOf(node), (Weights{{{0, 1}}, {}, {{1, 0.5f}}}));
    EXPECT_EQ(scene.imported.warnings,
              (Lines{"mesh 'm': bone weights with a vertex number out of range left out (2)",
                     "mesh 'm': bone weights that are not finite left out (2)"}));
}

TEST(ImportedSkin, IsNotThereWithoutWeights) {
    OneSkin scene;
    scene.source.AddBone(scene.mesh, "a", {{0, 0}});
    EXPECT_TRUE(scene.Convert().modifiers.empty());
    EXPECT_TRUE(scene.imported.scene.nodes.at(1).object);
}

TEST(ImportedSkin, LeavesOutABoneWithoutANode) {
    OneSkin scene;
    scene.a->mTransformation = Moved(0, 0, 8);
    scene.source.AddBone(scene.mesh, "ghost", {{0, 0.75f}, {1, 1}});
    scene.source.AddBone(scene.mesh, "a", {{0, 0.25f}});
    const Node node = scene.Convert();
    EXPECT_EQ(SkinOf(node).bones, std::vector<int>{1});
    EXPECT_EQ(WeightsOf(node), (Weights{{{0, 0.25f}}, {}, {}}));
    EXPECT_EQ(MeshOf(node).vertices, (std::vector<Vec3>{{0, 0, 8}, {1, 0, 0}, {0, 1, 0}}));
    EXPECT_EQ(scene.imported.warnings, Lines{"bone 'ghost': left out, there is no such node"});
}

TEST(ImportedSkin, ComesThroughTheReaderProcessAndTheSceneDescription) {
    OneSkin scene;
    scene.source.AddBone(scene.mesh, "a", {{0, 0.1f}, {1, 1}});
    scene.source.AddBone(scene.mesh, "b", {{0, 0.9f}});
    scene.source.AddMorphTarget(scene.mesh, "smile", {{0, 0, 0.3f}, {1, 0, 0}, {0, 1, 0}});
    ASSERT_EQ(scene.Convert().modifiers.size(), 2u);
    const auto coded = maxhost::import::DecodeScene(maxhost::import::EncodeScene(scene.imported));
    EXPECT_EQ(Difference(coded.scene, scene.imported.scene), "");
    std::ostringstream text;
    maxhost::scene_file::WriteSceneDescription(scene.imported.scene, text);
    const auto read = maxhost::scene_file::ReadSceneDescriptionFromText(text.str());
    EXPECT_EQ(Difference(read, scene.imported.scene), "");
}

// ---------------------------------------------------------------- places

// A bone takes a vertex by its offset matrix into its own space and on into the world.
TEST(SkinnedVertices, StandWhereTheirBonesPutThem) {
    OneSkin scene;
    scene.node->mTransformation = Moved(10, 0, 0);
    scene.a->mTransformation = Moved(0, 0, 5);
    scene.b->mTransformation = Moved(3, 0, 0);
    scene.source.AddBone(scene.mesh, "a", {{0, 1}, {1, 0.25f}}, Moved(10, 0, -3));
    scene.source.AddBone(scene.mesh, "b", {{1, 0.75f}}, Moved(7, 4, 0));
    const Node node = scene.Convert();
    // The bones move by (10, 0, 2) and (10, 4, 0), of which the node's own place is taken back.
    EXPECT_EQ(MeshOf(node).vertices, (std::vector<Vec3>{{0, 0, 2}, {1, 3, 0.5f}, {0, 1, 0}}));
}

TEST(SkinnedVertices, AreInTheSpaceOfANodeUnderAMovedParent) {
    OneSkin scene;
    aiNode* const above = scene.source.AddNode(scene.source.Root(), "Above");
    above->mTransformation = Moved(10, 20, 0) * QuarterTurnAboutZ();
    aiNode* const inner = scene.source.AddNode(above, "Inner");
    inner->mTransformation = Scaled(2, 2, 2);
    const unsigned mesh =
        scene.source.AddMesh("inner", {{1, 2, 3}, {4, 2, 3}, {1, 2, 5}}, {{0, 1, 2}});
    scene.source.AddBone(mesh, "a", {{0, 1}});
    scene.a->mTransformation = Moved(1, 0, 0);
    SourceScene::Show(inner, {mesh});
    const Node node = scene.Convert(4);
    ASSERT_EQ(node.name, "Inner");
    // In the world (2, 2, 3): (-8, -18, 3) from the parent, turned back (-18, 8, 3), and half.
    ExpectVec3Near(MeshOf(node).vertices.at(0), {-9, 4, 1.5f});
    EXPECT_EQ(MeshOf(node).vertices.at(1), (Vec3{4, 2, 3}));
}

TEST(SkinnedVertices, AreTurnedToZUp) {
    SourceScene source("Some Importer");
    const unsigned mesh = source.AddMesh("m", {{1, 2, 3}, {4, 2, 3}, {1, 2, 5}}, {{0, 1, 2}});
    SourceScene::Show(source.AddNode(source.Root(), "Node"), {mesh});
    source.AddNode(source.Root(), "bone")->mTransformation = Moved(0, 5, 0);
    source.AddBone(mesh, "bone", {{0, 1}});
    const Node node = source.Convert().scene.nodes.at(1);
    EXPECT_EQ(MeshOf(node).vertices.at(0), (Vec3{1, -3, 7}));
    EXPECT_EQ(MeshOf(node).vertices.at(1), (Vec3{4, -3, 2}));
}

// Files round their weights, and a bone that is left out takes its share along.
TEST(SkinnedVertices, StandAtTheMeanWhateverTheWeightsSumTo) {
    OneSkin scene;
    scene.a->mTransformation = Moved(4, 0, 0);
    scene.b->mTransformation = Moved(0, 8, 0);
    scene.source.AddBone(scene.mesh, "a", {{0, 0.25f}, {1, 2}, {2, -1}});
    scene.source.AddBone(scene.mesh, "b", {{0, 0.25f}, {1, 6}});
    const Node node = scene.Convert();
    EXPECT_EQ(MeshOf(node).vertices, (std::vector<Vec3>{{2, 4, 0}, {2, 6, 0}, {0, 1, 0}}));
    EXPECT_EQ(WeightsOf(node), (Weights{{{0, 0.25f}, {1, 0.25f}}, {{0, 2}, {1, 6}}, {{0, -1}}}));
}

TEST(SkinnedVertices, AreEachNodesOwn) {
    OneSkin scene;
    scene.node->mTransformation = Moved(1, 0, 0);
    aiNode* const second = scene.source.AddNode(scene.source.Root(), "Second");
    second->mTransformation = Moved(0, 2, 0);
    SourceScene::Show(second, {scene.mesh});
    scene.source.AddBone(scene.mesh, "a", {{0, 1}});
    EXPECT_EQ(MeshOf(scene.Convert(0)).vertices.at(0), (Vec3{-1, 0, 0}));
    EXPECT_EQ(MeshOf(scene.Convert(3)).vertices.at(0), (Vec3{0, -2, 0}));
    EXPECT_EQ(SkinOf(scene.Convert(3)).bones, std::vector<int>{1});
}

// The offset matrices of an FBX file begin behind the geometric transform.
TEST(SkinnedVertices, OfFbxAreMovedByTheGeometricTransformFirst) {
    OneSkin scene;
    aiNode* const step =
        scene.source.AddNode(scene.source.Root(), "Inner_$AssimpFbx$_GeometricTranslation");
    step->mTransformation = Moved(100, 0, 0);
    aiNode* const inner = scene.source.AddNode(step, "Inner");
    SourceScene::Show(inner, {scene.mesh});
    scene.a->mTransformation = QuarterTurnAboutZ();
    scene.source.AddBone(scene.mesh, "a", {{0, 1}});
    const Node node = scene.Convert(3);
    ASSERT_EQ(node.name, "Inner");
    ExpectVec3Near(MeshOf(node).vertices.at(0), {0, 100, 0});
    ExpectVec3Near(MeshOf(node).vertices.at(1), {101, 0, 0});
}

TEST(SkinnedVertices, StayInANodeWithoutSize) {
    OneSkin scene;
    scene.node->mTransformation = Scaled(1, 0, 1);
    scene.a->mTransformation = Moved(4, 0, 0);
    scene.source.AddBone(scene.mesh, "a", {{0, 1}});
    const Node node = scene.Convert();
    EXPECT_EQ(MeshOf(node).vertices, (std::vector<Vec3>{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}));
    EXPECT_EQ(WeightsOf(node), (Weights{{{0, 1}}, {}, {}}));
    EXPECT_EQ(scene.imported.warnings,
              Lines{"mesh 'm': not moved by their bones, the matrix of their node has no inverse"});
}

TEST(SkinnedVertices, OfBonesThatAreNotFinite) {
    OneSkin scene;
    aiMatrix4x4 offset;
    offset.a4 = kNan;
    offset.b4 = 3;
    scene.source.AddBone(scene.mesh, "a", {{0, 1}}, offset);
    scene.source.AddBone(scene.mesh, "b", {{1, 1}}, Scaled(3e38f, 1, 1));
    scene.b->mTransformation = Scaled(10, 1, 1);
    EXPECT_EQ(MeshOf(scene.Convert()).vertices,
              (std::vector<Vec3>{{0, 3, 0}, {0, 0, 0}, {0, 1, 0}}));
    EXPECT_EQ(scene.imported.warnings,
              (Lines{"mesh 'm': numbers of bones' matrices that are not finite replaced by 0",
                     "mesh 'm': numbers that are not finite replaced by 0"}));
}

// ---------------------------------------------------------------- in the pose of a clip

namespace {

// The node and the bone "a" rest elsewhere than the clip holds them, and move on.
struct MovingSkin : OneSkin {
    MovingSkin() {
        node->mTransformation = Moved(1, 0, 0);
        a->mTransformation = Moved(0, 0, 1);
        b->mTransformation = Moved(0, 2, 0);
        source.AddBone(mesh, "a", {{0, 1}, {1, 0.5f}}, Moved(0, 0, -1));
        source.AddBone(mesh, "b", {{1, 0.5f}});
    }

    void AddClip(const std::string& name, const PositionKeys& ofNode, const PositionKeys& ofBone) {
        aiAnimation& clip = source.AddAnimation(name, 2, 1, {"Node", "a"});
        SetKeys(*clip.mChannels[0], ofNode);
        SetKeys(*clip.mChannels[1], ofBone);
    }
};

Vec3 PlaceOf(const Node& node) {
    return MatrixOf(node)[3];
}

}  // namespace

TEST(SkinnedVertices, AreInThePoseThatTheClipHasAtTheStart) {
    MovingSkin scene;
    scene.AddClip("walk", {{0, {10, 0, 0}}, {2, {20, 0, 0}}}, {{0, {5, 0, 0}}, {2, {5, 0, 9}}});
    const Node node = scene.Convert();
    // Bone "a" moves by (5, 0, -1) and "b" by (0, 2, 0); the node's own place is (10, 0, 0).
    EXPECT_EQ(MeshOf(node).vertices,
              (std::vector<Vec3>{{-5, 0, -1}, {-6.5f, 1, -0.5f}, {0, 1, 0}}));
    EXPECT_EQ(PlaceOf(node), (Vec3{10, 0, 0}));
    EXPECT_EQ(PlaceOf(scene.imported.scene.nodes[1]), (Vec3{5, 0, 0}));
    EXPECT_EQ(PlaceOf(scene.imported.scene.nodes[2]), (Vec3{0, 2, 0}));
}

TEST(SkinnedVertices, AreInThePoseBetweenTheKeysAroundTheStart) {
    MovingSkin scene;
    scene.AddClip("walk", {{1, {3, 0, 0}}}, {{-1, {0, 0, 0}}, {3, {16, 0, 0}}});
    const Node node = scene.Convert();
    EXPECT_EQ(MeshOf(node).vertices.at(0), (Vec3{1, 0, -1}));
    EXPECT_EQ(PlaceOf(node), (Vec3{3, 0, 0}));
    EXPECT_EQ(PlaceOf(scene.imported.scene.nodes[1]), (Vec3{4, 0, 0}));
}

TEST(SkinnedVertices, AreInThePoseOfTheClipThatIsChosen) {
    MovingSkin scene;
    scene.AddClip("walk", {{0, {10, 0, 0}}}, {{0, {5, 0, 0}}});
    scene.AddClip("run", {{0, {0, 0, 0}}}, {{0, {7, 0, 0}}, {2, {8, 0, 0}}});
    const auto imported =
        maxhost::import::ConvertScene(scene.source.Scene(), "no/such/file.x", {"run", {}});
    EXPECT_EQ(MeshOf(imported.scene.nodes[0]).vertices.at(0), (Vec3{7, 0, -1}));
}

// ---------------------------------------------------------------- normals and faces

TEST(SkinnedNormals, TurnWithTheBones) {
    OneSkin scene;
    aiMesh& piece = scene.source.Mesh(scene.mesh);
    piece.mNormals = new aiVector3D[3]{{0, 0, 1}, {0, 0, 1}, {0, 0, 1}};
    aiMatrix4x4 turn;
    turn.b2 = turn.c3 = 0;  // from y to z and from z to -y
    turn.b3 = -1;
    turn.c2 = 1;
    scene.a->mTransformation = turn;
    scene.source.AddBone(scene.mesh, "a", {{0, 1}, {1, 1}, {2, 1}});
    const Mesh mesh = MeshOf(scene.Convert());
    EXPECT_EQ(mesh.vertices, (std::vector<Vec3>{{0, 0, 0}, {1, 0, 0}, {0, 0, 1}}));
    ExpectVec3Near(ShownNormals(mesh).at(0)[0], {0, -1, 0});
}

// Half of a quarter turn and of none is an eighth's turn, shrunk.
TEST(SkinnedNormals, OfTwoBonesTurnWithTheirMean) {
    OneSkin scene;
    aiMesh& piece = scene.source.Mesh(scene.mesh);
    piece.mNormals = new aiVector3D[3]{{1, 0, 0}, {0, 0, 1}, {0, 0, 1}};
    scene.a->mTransformation = QuarterTurnAboutZ();
    scene.source.AddBone(scene.mesh, "a", {{0, 0.5f}});
    scene.source.AddBone(scene.mesh, "b", {{0, 0.5f}});
    const Mesh mesh = MeshOf(scene.Convert());
    const float root = std::sqrt(0.5f);
    ExpectVec3Near(mesh.normals.at(0), {root, root, 0});
}

// An exported skin is in the world, where the file's own winding holds.
TEST(SkinnedFaces, WindAsInTheFileInAMirroredNode) {
    OneSkin scene;
    scene.node->mTransformation = Scaled(-1, 1, 1);
    aiMesh& piece = scene.source.Mesh(scene.mesh);
    piece.mNormals = new aiVector3D[3]{{0, 0, 1}, {0, 0, 1}, {0, 0, 1}};
    scene.source.AddBone(scene.mesh, "a", {{0, 1}, {1, 1}, {2, 1}});
    const Mesh mesh = MeshOf(scene.Convert());
    EXPECT_EQ(mesh.vertices, (std::vector<Vec3>{{0, 0, 0}, {-1, 0, 0}, {0, 1, 0}}));
    EXPECT_EQ(mesh.faces.at(0).v, (Corners{0, 1, 2}));
    EXPECT_EQ(ShownNormals(mesh).at(0)[0], (Vec3{0, 0, 1}));
}

// ---------------------------------------------------------------- the bind pose

TEST(BindPose, IsLeftWhereTheBonesOfAVertexDisagree) {
    OneSkin scene;
    scene.a->mTransformation = Moved(0, 0, 1);
    scene.source.AddBone(scene.mesh, "a", {{0, 0.5f}, {1, 1}, {2, 0.5f}});
    scene.source.AddBone(scene.mesh, "b", {{0, 0.5f}, {2, 0.5f}});
    scene.Convert();
    EXPECT_EQ(scene.imported.warnings, Lines{"mesh 'm': " + std::string(kOutOfPose) + " (2)"});
}

TEST(BindPose, IsKeptWhereTheyAgree) {
    OneSkin scene;
    scene.a->mTransformation = Moved(0, 0, 1);
    scene.b->mTransformation = Moved(0, 0, 3.0001f);
    scene.source.AddBone(scene.mesh, "a", {{0, 0.5f}, {1, 1}}, Moved(0, 0, 1));
    scene.source.AddBone(scene.mesh, "b", {{0, 0.5f}, {2, 1}}, Moved(0, 0, -1));
    EXPECT_EQ(MeshOf(scene.Convert()).vertices.at(1), (Vec3{1, 0, 2}));
    EXPECT_EQ(scene.imported.warnings, Lines{});
}

// A bone of next to no weight moves a vertex by next to nothing.
TEST(BindPose, CountsABoneByItsShare) {
    OneSkin scene;
    scene.a->mTransformation = Moved(0, 0, 1);
    scene.source.AddBone(scene.mesh, "a", {{0, 0.0001f}});
    scene.source.AddBone(scene.mesh, "b", {{0, 0.9999f}});
    scene.Convert();
    EXPECT_EQ(scene.imported.warnings, Lines{});
}

// ---------------------------------------------------------------- bones of one name

namespace {

// Two skeletons with the same names, "hip" above "spine", at nodes 0 and 2 of the file's root or
// below nodes of their own.
struct TwoSkeletons {
    TwoSkeletons() : source(kFbx, "RootNode") {
        source.Set("UpAxis", 2);
        for (int i = 0; i < 2; ++i) {
            figures[i] = source.AddNode(source.Root(), i == 0 ? "Left" : "Right");
            hips[i] = source.AddNode(figures[i], "hip");
            spines[i] = source.AddNode(hips[i], "spine");
            spines[i]->mTransformation = Moved(0, 0, 1);
        }
    }

    // With a vertex at each bone, bound to skeleton `i` as it stands.
    unsigned AddSkin(int i) {
        const unsigned mesh = source.AddTriangle("m");
        aiMatrix4x4 hip = figures[i]->mTransformation * hips[i]->mTransformation;
        aiMatrix4x4 spine = hip * spines[i]->mTransformation;
        source.AddBone(mesh, "hip", {{0, 1}}, hip.Inverse());
        source.AddBone(mesh, "spine", {{1, 1}}, spine.Inverse());
        return mesh;
    }

    std::vector<int> BonesOf(const std::string& name) {
        const ImportedScene imported = source.Convert();
        EXPECT_EQ(imported.warnings, expectedWarnings);
        for (const Node& node : imported.scene.nodes) {
            if (node.name == name) {
                return SkinOf(node).bones;
            }
        }
        return {};
    }

    SourceScene source;
    aiNode *figures[2], *hips[2], *spines[2];
    Lines expectedWarnings;
};

const std::vector<int> kLeft = {1, 2}, kRight = {4, 5};

}  // namespace

TEST(BonesOfOneName, AreThoseInTheBindPose) {
    TwoSkeletons scene;
    scene.figures[1]->mTransformation = Moved(9, 0, 0);
    for (int i = 0; i < 2; ++i) {
        SourceScene::Show(scene.source.AddNode(scene.source.Root(), i == 0 ? "A" : "B"),
                          {scene.AddSkin(i)});
    }
    EXPECT_EQ(scene.BonesOf("A"), kLeft);
    EXPECT_EQ(scene.BonesOf("B"), kRight);
}

TEST(BonesOfOneName, AreThoseNearestToTheMesh) {
    TwoSkeletons scene;
    for (int i = 0; i < 2; ++i) {
        SourceScene::Show(scene.source.AddNode(scene.figures[i], i == 0 ? "A" : "B"),
                          {scene.AddSkin(0)});
    }
    EXPECT_EQ(scene.BonesOf("A"), kLeft);
    EXPECT_EQ(scene.BonesOf("B"), (std::vector<int>{5, 6}));
}

TEST(BonesOfOneName, AreThoseNearestToABoneOfItsOwnName) {
    TwoSkeletons scene;
    scene.hips[1]->mName = "pelvis";
    const unsigned mesh = scene.source.AddTriangle("m");
    scene.source.AddBone(mesh, "spine", {{1, 1}});
    scene.source.AddBone(mesh, "pelvis", {{0, 1}}, Moved(0, 0, 1));
    SourceScene::Show(scene.source.AddNode(scene.source.Root(), "A"), {mesh});
    EXPECT_EQ(scene.BonesOf("A"), (std::vector<int>{5, 4}));
}

TEST(BonesOfOneName, AreDifferentNodesForBonesOfOneMesh) {
    TwoSkeletons scene;
    const unsigned mesh = scene.source.AddTriangle("m");
    scene.figures[1]->mTransformation = Moved(9, 0, 0);
    scene.source.AddBone(mesh, "hip", {{0, 1}}, Moved(-9, 0, 0));
    scene.source.AddBone(mesh, "hip", {{1, 1}});
    SourceScene::Show(scene.source.AddNode(scene.source.Root(), "A"), {mesh});
    EXPECT_EQ(scene.BonesOf("A"), (std::vector<int>{4, 1}));
}

TEST(BonesOfOneName, AreDifferentNodesEvenWhereNoPoseFits) {
    TwoSkeletons scene;
    const unsigned mesh = scene.source.AddTriangle("m");
    scene.source.AddBone(mesh, "hip", {{0, 1}}, Moved(5, 0, 0));
    scene.source.AddBone(mesh, "hip", {{1, 1}}, Moved(7, 0, 0));
    SourceScene::Show(scene.source.AddNode(scene.source.Root(), "A"), {mesh});
    scene.expectedWarnings = {
        "bone 'hip': several nodes have this name, the first without a mesh is taken"};
    EXPECT_EQ(scene.BonesOf("A"), (std::vector<int>{1, 4}));
}

TEST(BonesOfOneName, AreTheFirstWithAWarningWhereNothingTellsThemApart) {
    TwoSkeletons scene;
    SourceScene::Show(scene.source.AddNode(scene.source.Root(), "A"), {scene.AddSkin(0)});
    scene.expectedWarnings = {
        "bone 'hip': several nodes have this name, the first without a mesh is taken"};
    EXPECT_EQ(scene.BonesOf("A"), kLeft);
}

TEST(BonesOfOneName, AreNodesWithoutMeshesBeforeOthers) {
    OneSkin scene;
    scene.source.AddBone(scene.mesh, "Node", {{0, 1}});
    scene.source.AddNode(scene.b, "Node");
    EXPECT_EQ(SkinOf(scene.Convert()).bones, std::vector<int>{3});
    EXPECT_EQ(scene.imported.warnings, Lines{});
}

// ---------------------------------------------------------------- size

// Each bone of the name could be each node of the name, far below each other.
TEST(ManyBones, OfOneNameInADeepTree) {
    constexpr int kMany = 3000;
    OneSkin scene;
    aiNode* node = scene.source.Root();
    for (int i = 0; i < kMany; ++i) {
        node = scene.source.AddNode(node, "bone");
    }
    SourceScene::Show(scene.source.AddNode(node, "Deep"), {scene.mesh});
    for (int i = 0; i < kMany; ++i) {
        scene.source.AddBone(scene.mesh, "bone", {{0, 1}});
    }
    const Node shown = scene.Convert();
    EXPECT_EQ(SkinOf(shown).bones.size(), 64u);
    EXPECT_EQ(WeightsOf(shown).at(0).size(), static_cast<std::size_t>(kMany));
}

TEST(ManyBones, WithAMillionWeights) {
    constexpr unsigned kMany = 1000000;
    OneSkin scene;
    std::vector<aiVector3D> vertices(kMany);
    std::vector<aiVertexWeight> weights;
    for (unsigned i = 0; i < kMany; ++i) {
        vertices[i] = {static_cast<float>(i), 1, 0};
        weights.push_back({kMany - 1 - i, 1});
    }
    const unsigned mesh = scene.source.AddMesh("many", vertices, {{0, 1, 2}});
    scene.source.AddBone(mesh, "a", weights);
    scene.a->mTransformation = Moved(0, 0, 7);
    SourceScene::Show(scene.node, {mesh});
    const Node node = scene.Convert();
    EXPECT_EQ(MeshOf(node).vertices.at(kMany - 1), (Vec3{kMany - 1, 1, 7}));
    EXPECT_EQ(SkinOf(node).weights.size(), std::size_t{kMany});
}
