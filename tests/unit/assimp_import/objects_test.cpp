// What object a node has.
#include <gtest/gtest.h>

#include "tests/unit/assimp_import/source_scene.h"

using maxhost::import::ImportedScene;
using maxhost::scene::ClassId;
using maxhost::scene::Object;

namespace {

constexpr ClassId kBone = {0x28bf6e8d, 0x2ecca840};

const Object& ObjectAt(const ImportedScene& imported, std::size_t node) {
    return imported.scene.nodes.at(node).object.value();
}

}  // namespace

TEST(Objects, AMeshIsGeometryOfTheMeshsOwnClass) {
    SourceScene source("Some Importer");
    SourceScene::Show(source.Root(), {source.AddTriangle("m")});
    const ImportedScene imported = source.Convert();
    const Object& object = ObjectAt(imported, 0);
    EXPECT_TRUE(object.mesh);
    EXPECT_EQ(object.superClassId, std::nullopt);  // 0x10, as every mesh
    EXPECT_EQ(object.classId, std::nullopt);       // [9, 0]
    EXPECT_EQ(object.parameter0, std::nullopt);
}

TEST(Objects, ANodeWithoutAnythingIsAHelper) {
    SourceScene source("Some Importer");
    EXPECT_EQ(source.Convert().scene.nodes[0].object, std::nullopt);
}

TEST(Objects, Cameras) {
    SourceScene source("Some Importer");
    source.AddNode(source.Root(), "Camera01");
    source.AddCamera("Camera01");
    const ImportedScene imported = source.Convert();
    EXPECT_EQ(ObjectAt(imported, 1).superClassId, 0x20u);
    EXPECT_EQ(ObjectAt(imported, 1).classId, (ClassId{0x1001, 0}));
    EXPECT_FALSE(ObjectAt(imported, 1).mesh);
    EXPECT_EQ(imported.scene.nodes[0].object, std::nullopt);
}

TEST(Objects, LightsByTheirType) {
    const std::pair<aiLightSourceType, std::uint32_t> kTypes[] = {
        {aiLightSource_POINT, 0x1011},       {aiLightSource_SPOT, 0x1014},
        {aiLightSource_DIRECTIONAL, 0x1013}, {aiLightSource_AMBIENT, 0x1011},
        {aiLightSource_AREA, 0x1011},        {aiLightSource_UNDEFINED, 0x1011},
    };
    for (const auto& [type, classId] : kTypes) {
        SourceScene source("Some Importer");
        source.AddLight("Root", type);
        const ImportedScene imported = source.Convert();
        EXPECT_EQ(ObjectAt(imported, 0).superClassId, 0x30u);
        EXPECT_EQ(ObjectAt(imported, 0).classId, (ClassId{classId, 0}));
    }
}

TEST(Objects, BonesAreTheNodesThatSkinsName) {
    SourceScene source("Some Importer");
    source.AddNode(source.Root(), "Thigh");
    source.AddNode(source.Root(), "Hand");
    source.AddBone(source.AddTriangle("m"), "Thigh");
    const ImportedScene imported = source.Convert();
    EXPECT_EQ(ObjectAt(imported, 1).superClassId, 0x10u);
    EXPECT_EQ(ObjectAt(imported, 1).classId, kBone);
    EXPECT_FALSE(ObjectAt(imported, 1).mesh);
    EXPECT_EQ(imported.scene.nodes[2].object, std::nullopt);
}

TEST(Objects, ABonesMeshIsKept) {
    SourceScene source("Some Importer");
    const unsigned mesh = source.AddTriangle("m");
    SourceScene::Show(source.AddNode(source.Root(), "Bip01"), {mesh});
    source.AddBone(mesh, "Bip01");
    const ImportedScene imported = source.Convert();
    EXPECT_EQ(ObjectAt(imported, 1).classId, kBone);
    EXPECT_TRUE(ObjectAt(imported, 1).mesh);
}

TEST(Objects, ABoneNameOfSeveralNodesMeansTheFirstWithoutAMesh) {
    SourceScene source("Some Importer");
    const unsigned mesh = source.AddTriangle("m");
    SourceScene::Show(source.AddNode(source.Root(), "Arm"), {mesh});
    source.AddNode(source.Root(), "Arm");
    source.AddNode(source.Root(), "Arm");
    source.AddBone(mesh, "Arm");
    const ImportedScene imported = source.Convert();
    EXPECT_EQ(ObjectAt(imported, 1).classId, std::nullopt);
    EXPECT_EQ(ObjectAt(imported, 2).classId, kBone);
    EXPECT_EQ(imported.scene.nodes[3].object, std::nullopt);
    EXPECT_EQ(imported.warnings[0],
              "bone 'Arm': several nodes have this name, the first without a mesh is taken");
}

TEST(Objects, ABoneNameOfNodesThatAllHaveMeshesMeansTheFirst) {
    SourceScene source("Some Importer");
    const unsigned mesh = source.AddTriangle("m");
    for (int i = 0; i < 2; ++i) {
        SourceScene::Show(source.AddNode(source.Root(), "Arm"), {source.AddTriangle("other")});
    }
    SourceScene::Show(source.AddNode(source.Root(), "Skin"), {mesh});
    source.AddBone(mesh, "Arm");
    const ImportedScene imported = source.Convert();
    EXPECT_EQ(ObjectAt(imported, 1).classId, kBone);
    EXPECT_EQ(ObjectAt(imported, 2).classId, std::nullopt);
    EXPECT_EQ(imported.warnings[0], "bone 'Arm': several nodes have this name, the first is taken");
}

TEST(Objects, WhatHasNoNodeIsLeftOutWithAWarning) {
    SourceScene source("Some Importer");
    source.AddBone(source.AddTriangle("m"), "Ghost");
    source.AddCamera("Eye");
    source.AddLight("Sun", aiLightSource_DIRECTIONAL);
    const ImportedScene imported = source.Convert();
    EXPECT_EQ(imported.warnings,
              (std::vector<std::string>{"bone 'Ghost': left out, there is no such node",
                                        "camera 'Eye': left out, there is no such node",
                                        "light 'Sun': left out, there is no such node"}));
}

TEST(Objects, LikeNamedCamerasStandAtLikeNamedNodes) {
    SourceScene source("Some Importer");
    source.AddNode(source.Root(), "Camera");
    source.AddNode(source.Root(), "Camera");
    source.AddCamera("Camera");
    source.AddCamera("Camera");
    const ImportedScene imported = source.Convert();
    EXPECT_EQ(ObjectAt(imported, 1).superClassId, 0x20u);
    EXPECT_EQ(ObjectAt(imported, 2).superClassId, 0x20u);
    EXPECT_TRUE(imported.warnings.empty());
}

TEST(Objects, AMeshComesBeforeACameraOrALight) {
    SourceScene source("Some Importer");
    SourceScene::Show(source.Root(), {source.AddTriangle("m")});
    source.AddCamera("Root");
    source.AddLight("Root", aiLightSource_SPOT);
    const ImportedScene imported = source.Convert();
    EXPECT_TRUE(ObjectAt(imported, 0).mesh);
    EXPECT_EQ(imported.warnings,
              std::vector<std::string>{
                  "node 'Root': cameras and lights left out, the node has another object (2)"});
}

TEST(Objects, EveryNodeOfABvhFileIsABone) {
    SourceScene source(kBvh, "Hips");
    source.AddNode(source.AddNode(source.Root(), "Chest"), "EndSite_Chest");
    const ImportedScene imported = source.Convert();
    ASSERT_EQ(imported.scene.nodes.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(ObjectAt(imported, i).superClassId, 0x10u);
        EXPECT_EQ(ObjectAt(imported, i).classId, kBone);
    }
}

TEST(Objects, FbxNodesThatAreNotShownAreHidden) {
    SourceScene source(kFbx, "RootNode");
    for (const bool isShown : {true, false}) {
        aiNode* const node = source.AddNode(source.Root(), "Box");
        node->mMetaData = new aiMetadata;
        node->mMetaData->Add("Show", isShown);
    }
    const ImportedScene imported = source.Convert();
    EXPECT_FALSE(imported.scene.nodes[0].hidden);
    EXPECT_TRUE(imported.scene.nodes[1].hidden);
}

TEST(Objects, MetadataBecomesTheUserPropertyBuffer) {
    SourceScene source(kGltf);
    source.Root()->mMetaData = new aiMetadata;
    source.Root()->mMetaData->Add("CollisionMesh", true);
    EXPECT_EQ(source.Convert().scene.nodes[0].userProperties, "CollisionMesh = true\r\n");
}
