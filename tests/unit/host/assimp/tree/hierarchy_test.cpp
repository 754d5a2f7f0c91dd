// The nodes that come into the scene, their order and their names.
#include <gtest/gtest.h>

#include <limits>

#include "tests/support/temporary_directory.h"
#include "tests/unit/host/assimp/shown_scene.h"
#include "tests/unit/host/assimp/source_scene.h"

using maxhost::import::ImportedScene;
using maxhost::scene::kNone;
using maxhost::scene::Matrix;
using maxhost::scene::Node;
using maxhost::scene::Vec3;
using Names = std::vector<std::string>;

namespace {

std::vector<int> ParentsOf(const maxhost::scene::Scene& scene) {
    std::vector<int> parents;
    for (const Node& node : scene.nodes) {
        parents.push_back(node.parent);
    }
    return parents;
}

Names NamesUnder(const std::string& importer, const std::string& rootName) {
    SourceScene source(importer, rootName);
    source.AddNode(source.Root(), "a");
    source.AddNode(source.Root(), "b");
    return NamesOf(source.Convert().scene);
}

const Names kWithoutRoot = {"a", "b"};

std::string GltfWithRoots(const std::string& roots) {
    return R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[)" + roots +
           R"(]}],"nodes":[{"name":"ROOT","children":[1,2]},{"name":"a"},{"name":"b"}]})";
}

}  // namespace

TEST(Hierarchy, NodesStandDepthFirstInChildOrder) {
    SourceScene source("Some Importer");
    aiNode* const a = source.AddNode(source.Root(), "a");
    source.AddNode(source.Root(), "b");
    aiNode* const c = source.AddNode(source.Root(), "c");
    source.AddNode(a, "a1");
    source.AddNode(a, "a2");
    source.AddNode(c, "c1");
    const ImportedScene imported = source.Convert();
    EXPECT_EQ(NamesOf(imported.scene), (Names{"Root", "a", "a1", "a2", "b", "c", "c1"}));
    EXPECT_EQ(ParentsOf(imported.scene), (std::vector<int>{kNone, 0, 1, 1, 0, 0, 5}));
    EXPECT_TRUE(imported.warnings.empty());
}

TEST(Hierarchy, NodesHangFromTheSiblingThatTheyNameAsTheirParent) {
    SourceScene source("Some Importer");
    aiNode* const hip = source.AddNode(source.Root(), "hip");
    aiNode* const knee = source.AddNode(source.Root(), "knee");
    aiNode* const neck = source.AddNode(source.Root(), "neck");
    aiNode* const foot = source.AddNode(source.Root(), "foot");
    source.AddNode(foot, "toe");
    knee->mParent = neck->mParent = hip;
    foot->mParent = knee;
    const ImportedScene imported = source.Convert();
    EXPECT_EQ(NamesOf(imported.scene), (Names{"Root", "hip", "knee", "foot", "toe", "neck"}));
    EXPECT_EQ(ParentsOf(imported.scene), (std::vector<int>{kNone, 0, 1, 2, 3, 1}));
}

TEST(Hierarchy, NodesThatNameAnyOtherParentStayWhereTheyAre) {
    SourceScene source("Some Importer");
    aiNode* const a = source.AddNode(source.Root(), "a");
    aiNode* const b = source.AddNode(source.Root(), "b");
    aiNode* const inner = source.AddNode(a, "inner");
    a->mParent = b;  // which comes later
    b->mParent = nullptr;
    inner->mParent = source.Root();
    const ImportedScene imported = source.Convert();
    EXPECT_EQ(NamesOf(imported.scene), (Names{"Root", "a", "inner", "b"}));
    EXPECT_EQ(ParentsOf(imported.scene), (std::vector<int>{kNone, 0, 1, 0}));
}

TEST(Hierarchy, ASceneWithoutNodesIsEmpty) {
    SourceScene source("Some Importer");
    delete source.Scene().mRootNode;
    source.Scene().mRootNode = nullptr;
    const ImportedScene imported = source.Convert();
    EXPECT_TRUE(imported.scene.nodes.empty());
    EXPECT_EQ(imported.warnings, Names{});
}

TEST(Hierarchy, ASceneWithoutAnythingIsEmpty) {
    SourceScene source("Some Importer");
    delete source.Scene().mRootNode;
    source.Scene().mRootNode = nullptr;
    delete source.Scene().mMetaData;
    source.Scene().mMetaData = nullptr;
    source.Scene().mFlags = AI_SCENE_FLAGS_INCOMPLETE;
    EXPECT_TRUE(source.Convert().scene.nodes.empty());
}

TEST(Hierarchy, AMissingChildIsPassedOver) {
    SourceScene source("Some Importer");
    source.AddNode(source.Root(), "a");
    source.AddNode(source.Root(), "b");
    delete source.Root()->mChildren[0];
    source.Root()->mChildren[0] = nullptr;
    EXPECT_EQ(NamesOf(source.Convert().scene), (Names{"Root", "b"}));
}

TEST(Hierarchy, AHundredThousandLevels) {
    SourceScene source("Some Importer");
    aiNode* node = source.Root();
    constexpr int kLevels = 100000;
    for (int i = 0; i < kLevels; ++i) {
        node = source.AddNode(node, "n");
    }
    const ImportedScene imported = source.Convert();
    EXPECT_EQ(imported.scene.nodes.size(), static_cast<std::size_t>(kLevels) + 1);
    EXPECT_EQ(imported.scene.nodes.back().parent, kLevels - 1);
    // Assimp's destructor is recursive.
    for (node = source.Root(); node->mNumChildren > 0;) {
        aiNode* const child = node->mChildren[0];
        node->mNumChildren = 0;
        if (node != source.Root()) {
            delete node;
        }
        node = child;
    }
    delete node;
}

// ---------------------------------------------------------------- roots

TEST(WrapperRoot, RootsOfImportersAndFormatsAreNoNodes) {
    EXPECT_EQ(NamesUnder(kFbx, "RootNode"), kWithoutRoot);
    EXPECT_EQ(NamesUnder(kCollada, "MaxScene"), kWithoutRoot);
    EXPECT_EQ(NamesUnder(kGltf, "ROOT"), kWithoutRoot);
    EXPECT_EQ(NamesUnder(k3ds, "<3DSDummyRoot>"), kWithoutRoot);
    EXPECT_EQ(NamesUnder("Blender 3D Importer", "<BlenderRoot>"), kWithoutRoot);
    EXPECT_EQ(NamesUnder("Direct3D XFile Importer", "$dummy_root"), kWithoutRoot);
    EXPECT_EQ(NamesUnder("Any Importer", ""), kWithoutRoot);
    EXPECT_EQ(NamesUnder("Wavefront Object Importer", "file.x"), kWithoutRoot);
    EXPECT_EQ(NamesUnder("Extensible 3D(X3D) Importer", "no/such/file.x"), kWithoutRoot);
    EXPECT_EQ(NamesUnder("3mf Importer", "3MF"), kWithoutRoot);
}

TEST(WrapperRoot, OtherRootsAreNodes) {
    EXPECT_EQ(NamesUnder(kGltf, "Car"), (Names{"Car", "a", "b"}));
    EXPECT_EQ(NamesUnder(kBvh, "Hips"), (Names{"Hips", "a", "b"}));
    EXPECT_EQ(NamesUnder("Any Importer", "Car"), (Names{"Car", "a", "b"}));
}

TEST(WrapperRoot, ARootWithAMeshIsANode) {
    SourceScene source(kFbx, "RootNode");
    SourceScene::Show(source.Root(), {source.AddTriangle("m")});
    EXPECT_EQ(NamesOf(source.Convert().scene), Names{"RootNode"});
}

TEST(WrapperRoot, ANodeThatSomethingRefersToIsNoWrapper) {
    SourceScene animated("Any Importer", "<Root>");
    animated.AddAnimation("walk", 1, 1, {"<Root>"});
    EXPECT_EQ(animated.Convert().scene.nodes.size(), 1u);

    SourceScene bone("Any Importer", "<Root>");
    bone.AddBone(bone.AddTriangle("m"), "<Root>");
    EXPECT_EQ(bone.Convert().scene.nodes.size(), 1u);

    SourceScene camera("Any Importer", "<Root>");
    camera.AddCamera("<Root>");
    EXPECT_EQ(camera.Convert().scene.nodes.size(), 1u);

    SourceScene withData("Any Importer", "<Root>");
    withData.Root()->mMetaData = new aiMetadata;
    withData.Root()->mMetaData->Add("CollisionMesh", true);
    EXPECT_EQ(withData.Convert().scene.nodes.size(), 1u);
}

TEST(WrapperRoot, ARootThatStaysButHasNoNameOfItsOwnIsCalledAfterTheFile) {
    for (const char* const name : {"", "<STL_BINARY>", "/models/gear.stl"}) {
        SourceScene source("Stereolithography (STL) Importer", name);
        SourceScene::Show(source.Root(), {source.AddTriangle("m")});
        EXPECT_EQ(NamesOf(source.Convert("/models/gear.stl").scene), Names{"gear"});
    }
}

TEST(WrapperRoot, FbxNodesMayBeCalledAsTheImportersRoot) {
    SourceScene source(kFbx, "RootNode");
    source.AddNode(source.Root(), "RootNode");
    source.AddAnimation("walk", 1, 1, {"RootNode"});
    const ImportedScene imported = source.Convert();
    EXPECT_EQ(NamesOf(imported.scene), Names{"RootNode"});
    EXPECT_EQ(imported.scene.nodes[0].parent, kNone);
}

TEST(WrapperRoot, AseHasTwo) {
    SourceScene source(kAse, "<ASERoot>");
    aiNode* const second = source.AddNode(source.Root(), "");
    source.AddNode(second, "Box01");
    source.AddNode(second, "Box02");
    const ImportedScene imported = source.Convert();
    EXPECT_EQ(NamesOf(imported.scene), (Names{"Box01", "Box02"}));
    EXPECT_EQ(ParentsOf(imported.scene), (std::vector<int>{kNone, kNone}));
}

// Assimp's name for a root of its own is one that a file's only root may have too.
TEST(WrapperRoot, AGltfFilesOwnRootCalledRootStays) {
    const support::TemporaryDirectory files;
    using maxhost::import::ImportWithAssimp;
    EXPECT_EQ(NamesOf(ImportWithAssimp(files.Write("own.gltf", GltfWithRoots("0"))).scene),
              (Names{"ROOT", "a", "b"}));
    EXPECT_EQ(NamesOf(ImportWithAssimp(files.Write("two.gltf", GltfWithRoots("1,2"))).scene),
              (Names{"a", "b"}));
    EXPECT_EQ(NamesOf(ImportWithAssimp(files.Write("none.gltf", GltfWithRoots(""))).scene),
              Names{});
}

TEST(WrapperRoot, TheSameForBinaryGltf) {
    const support::TemporaryDirectory files;
    for (const auto& [roots, names] :
         {std::pair{"0", Names{"ROOT", "a", "b"}}, std::pair{"1,2", Names{"a", "b"}}}) {
        std::string json = GltfWithRoots(roots);
        json.resize((json.size() + 3) / 4 * 4, ' ');
        const auto size = static_cast<unsigned>(json.size());
        const auto bytes = [](unsigned number) {
            return std::string{static_cast<char>(number & 255), static_cast<char>(number >> 8), 0,
                               0};
        };
        const std::string file = "glTF" + bytes(2) + bytes(size + 20) + bytes(size) + "JSON" + json;
        EXPECT_EQ(NamesOf(maxhost::import::ImportWithAssimp(files.Write("f.glb", file)).scene),
                  names);
    }
}

// ---------------------------------------------------------------- FBX pivots

TEST(FbxPivots, TheChainOfANodeIsFoldedIntoIt) {
    SourceScene source(kFbx, "RootNode");
    source.Set("UpAxis", 2);
    aiNode* const t = source.AddNode(source.Root(), "Box_$AssimpFbx$_Translation");
    t->mTransformation = Moved(1, 2, 3);
    aiNode* const r = source.AddNode(t, "Box_$AssimpFbx$_Rotation");
    aiMatrix4x4::RotationZ(static_cast<float>(M_PI_2), r->mTransformation);
    aiNode* const inverse = source.AddNode(r, "Box_$AssimpFbx$_RotationPivotInverse");
    inverse->mTransformation = Moved(-5, 0, 0);
    aiNode* const box = source.AddNode(inverse, "Box");
    source.AddNode(box, "Child");
    const ImportedScene imported = source.Convert();
    ASSERT_EQ(NamesOf(imported.scene), (Names{"Box", "Child"}));
    EXPECT_EQ(ParentsOf(imported.scene), (std::vector<int>{kNone, 0}));
    const Matrix& m = MatrixOf(imported.scene.nodes[0]);
    EXPECT_NEAR(m[3][0], 1, 1e-6);
    EXPECT_NEAR(m[3][1], -3, 1e-6);
    EXPECT_NEAR(m[3][2], 3, 1e-6);
    EXPECT_NEAR(m[0][1], 1, 1e-6);
    EXPECT_EQ(MatrixOf(imported.scene.nodes[1]), maxhost::scene::kIdentity);
}

// 3ds Max writes an object's offset from its pivot as the geometric transform.
TEST(FbxPivots, TheGeometricTransformMovesVerticesAndNotChildren) {
    SourceScene source(kFbx, "RootNode");
    source.Set("UpAxis", 2);
    const unsigned mesh = source.AddTriangle("m");
    aiNode* const t = source.AddNode(source.Root(), "Box_$AssimpFbx$_GeometricTranslation");
    t->mTransformation = Moved(10, 20, 30);
    aiNode* const box = source.AddNode(t, "Box");
    SourceScene::Show(box, {mesh});
    aiNode* const back = source.AddNode(box, "Box_$AssimpFbx$_GeometricTranslationInverse");
    back->mTransformation = Moved(-10, -20, -30);
    source.AddNode(back, "Child")->mTransformation = Moved(1, 1, 1);
    aiNode* const other = source.AddNode(source.Root(), "Other");
    SourceScene::Show(other, {mesh});

    const ImportedScene imported = source.Convert();
    ASSERT_EQ(NamesOf(imported.scene), (Names{"Box", "Child", "Other"}));
    EXPECT_EQ(ParentsOf(imported.scene), (std::vector<int>{kNone, 0, kNone}));
    EXPECT_EQ(MatrixOf(imported.scene.nodes[0]), maxhost::scene::kIdentity);
    EXPECT_EQ(imported.scene.nodes[0].object->mesh->vertices[1], (Vec3{11, 20, 30}));
    EXPECT_EQ(MatrixOf(imported.scene.nodes[1])[3], (Vec3{1, 1, 1}));
    EXPECT_EQ(imported.scene.nodes[2].object->mesh->vertices[1], (Vec3{1, 0, 0}));
}

TEST(FbxPivots, AMirroringGeometricTransformTurnsTheFacesOver) {
    SourceScene source(kFbx, "RootNode");
    source.Set("UpAxis", 2);
    aiNode* const s = source.AddNode(source.Root(), "Box_$AssimpFbx$_GeometricScaling");
    s->mTransformation.a1 = -1;
    SourceScene::Show(source.AddNode(s, "Box"), {source.AddTriangle("m")});
    const ImportedScene imported = source.Convert();
    const auto& mesh = *imported.scene.nodes[0].object->mesh;
    EXPECT_EQ(mesh.vertices[1], (Vec3{-1, 0, 0}));
    EXPECT_EQ(mesh.faces[0].v, (std::array<std::uint32_t, 3>{0, 2, 1}));
}

TEST(FbxPivots, ANodeThatOnlyBearsSuchANameStays) {
    SourceScene source(kFbx, "RootNode");
    source.AddNode(source.Root(), "Leaf_$AssimpFbx$_Rotation");
    EXPECT_EQ(NamesOf(source.Convert().scene), Names{"Leaf_$AssimpFbx$_Rotation"});

    SourceScene other(kGltf);
    other.AddNode(other.AddNode(other.Root(), "A_$AssimpFbx$_Rotation"), "A");
    EXPECT_EQ(other.Convert().scene.nodes.size(), 3u);
}

// ---------------------------------------------------------------- names

TEST(Names, AreKeptEvenWhereTheyAreNotUnique) {
    SourceScene source("Some Importer");
    source.AddNode(source.Root(), "Box");
    source.AddNode(source.Root(), "Box");
    source.AddNode(source.Root(), "W\xc3\xbcrfel \t<1>");
    const ImportedScene imported = source.Convert();
    EXPECT_EQ(NamesOf(imported.scene), (Names{"Root", "Box", "Box", "W\xc3\xbcrfel \t<1>"}));
    EXPECT_TRUE(imported.warnings.empty());
}

TEST(Names, Latin1IsRecodedOnceAndSaid) {
    SourceScene source("Some Importer");
    source.AddNode(source.Root(), "W\xfcrfel");
    const ImportedScene imported = source.Convert();
    EXPECT_EQ(imported.scene.nodes[1].name, "W\xc3\xbcrfel");
    EXPECT_EQ(imported.warnings,
              Names{"node 'W\xc3\xbcrfel': name was not UTF-8, read as Latin-1"});
}

TEST(Names, NodesWithoutANameGetOneThatIsFree) {
    SourceScene source("Some Importer");
    source.AddNode(source.Root(), "");
    source.AddNode(source.Root(), "Node002");
    source.AddNode(source.Root(), "");
    const ImportedScene imported = source.Convert();
    EXPECT_EQ(NamesOf(imported.scene), (Names{"Root", "Node001", "Node002", "Node003"}));
    EXPECT_EQ(imported.warnings, (Names{"node 'Node001': given this name, the file has none",
                                        "node 'Node003': given this name, the file has none"}));
}

TEST(Names, ColladaNodesWithAnIdAloneAreCalledByIt) {
    SourceScene source(kCollada, "Scene");
    aiNode* const node = source.AddNode(source.Root(), "$ColladaAutoName$_0");
    node->mMetaData = new aiMetadata;
    node->mMetaData->Add("Collada_id", aiString("Box-node"));
    const ImportedScene imported = source.Convert();
    EXPECT_EQ(NamesOf(imported.scene), Names{"Box-node"});
    EXPECT_EQ(imported.scene.nodes[0].userProperties, "");
}

// ---------------------------------------------------------------- matrices

TEST(NodeMatrix, WhatIsNotFiniteBecomesZeroWithAWarning) {
    SourceScene source("Some Importer");
    source.Root()->mTransformation = Moved(std::numeric_limits<float>::quiet_NaN(), 2, 3);
    aiNode* const child = source.AddNode(source.Root(), "Child");
    child->mTransformation = Moved(1, std::numeric_limits<float>::infinity(), 3);
    child->mTransformation.a1 = -std::numeric_limits<float>::infinity();
    const ImportedScene imported = source.Convert();
    EXPECT_EQ(MatrixOf(imported.scene.nodes[0])[3], (Vec3{0, -3, 2}));
    EXPECT_EQ(MatrixOf(imported.scene.nodes[1])[0], (Vec3{0, 0, 0}));
    EXPECT_EQ(imported.warnings,
              (Names{"node 'Root': numbers that are not finite replaced by 0",
                     "node 'Child': numbers that are not finite replaced by 0 (2)"}));
}

TEST(NodeMatrix, RowsAreForRowVectors) {
    SourceScene source(kFbx, "RootNode");
    source.Set("UpAxis", 2);
    source.AddNode(source.Root(), "Box")->mTransformation =
        aiMatrix4x4(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 0, 0, 0, 1);
    EXPECT_EQ(MatrixOf(source.Convert().scene.nodes[0]),
              (Matrix{Vec3{1, 5, 9}, Vec3{2, 6, 10}, Vec3{3, 7, 11}, Vec3{4, 8, 12}}));
}
