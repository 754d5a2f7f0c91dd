// The objects of nodes; cameras and lights look as in 3ds Max, along -z of their node with y up.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <limits>

#include "tests/unit/host/assimp/shown_scene.h"
#include "tests/unit/host/assimp/source_scene.h"

using maxhost::import::ImportedScene;
using maxhost::import::ImportWithAssimp;
using maxhost::scene::ClassId;
using maxhost::scene::kNone;
using maxhost::scene::Matrix;
using maxhost::scene::Node;
using maxhost::scene::Object;
using maxhost::scene::Scene;
using maxhost::scene::Vec3;
using Lines = std::vector<std::string>;

namespace {

using Point = std::array<double, 3>;
using World = std::array<Point, 4>;

constexpr char kOpenGex[] = "Open Game Engine Exchange";

World WorldOf(const Scene& scene, std::size_t index) {
    World world{Point{1, 0, 0}, Point{0, 1, 0}, Point{0, 0, 1}, Point{0, 0, 0}};
    for (int at = static_cast<int>(index); at != kNone;) {
        const Node& node = scene.nodes.at(static_cast<std::size_t>(at));
        const Matrix& local = MatrixOf(node);
        World next{};
        for (std::size_t row = 0; row < 4; ++row) {
            for (std::size_t i = 0; i < 3; ++i) {
                next[row][i] = world[row][0] * local[0][i] + world[row][1] * local[1][i] +
                               world[row][2] * local[2][i] + (row == 3 ? local[3][i] : 0);
            }
        }
        world = next;
        at = node.parent;
    }
    return world;
}

Point Unit(const Point& v, double sign) {
    const double length = std::hypot(v[0], v[1], v[2]);
    return {sign * v[0] / length, sign * v[1] / length, sign * v[2] / length};
}

Point LookOf(const Scene& scene, std::size_t node) {
    return Unit(WorldOf(scene, node)[2], -1);
}

Point UpOf(const Scene& scene, std::size_t node) {
    return Unit(WorldOf(scene, node)[1], 1);
}

void ExpectNear(const Point& found, const Point& expected, double tolerance = 1e-6) {
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(found[i], expected[i], tolerance) << "component " << i;
    }
}

// A scene whose node 1, "Eye", shows the camera or light that is added to it.
class OneView {
  public:
    // FBX's root is no node.
    explicit OneView(const std::string& importer = kOther)
        : source(importer),
          eye(source.AddNode(
              importer == kFbx ? source.AddNode(source.Root(), "Top") : source.Root(), "Eye")) {}

    // An FBX scene with 3ds Max's own axes.
    static OneView OfZUp() {
        OneView view(kFbx);
        view.source.Set("UpAxis", 2);
        return view;
    }

    OneView& Camera(const aiVector3D& look, const aiVector3D& up) {
        source.AddCamera("Eye");
        source.Scene().mCameras[0]->mLookAt = look;
        source.Scene().mCameras[0]->mUp = up;
        return *this;
    }
    OneView& Light(aiLightSourceType type, const aiVector3D& look, const aiVector3D& up) {
        source.AddLight("Eye", type);
        source.Scene().mLights[0]->mDirection = look;
        source.Scene().mLights[0]->mUp = up;
        return *this;
    }

    SourceScene source;
    aiNode* eye;
};

void ExpectView(OneView& view, const Point& look, const Point& up) {
    const ImportedScene imported = view.source.Convert();
    ASSERT_EQ(imported.scene.nodes.at(1).name, "Eye");
    ExpectNear(LookOf(imported.scene, 1), look);
    ExpectNear(UpOf(imported.scene, 1), up);
    EXPECT_EQ(imported.scene.nodes[1].objectOffset, maxhost::scene::kIdentity);
}

}  // namespace

// glTF's and Collada's cameras look along -z of their node, y up; so an unturned one is level.
TEST(Views, AnUnturnedCameraOfAYUpFileIsLevel) {
    for (const char* const importer : {kGltf, kOther}) {
        OneView view(importer);
        ExpectView(view.Camera({0, 0, -1}, {0, 1, 0}), {0, 1, 0}, {0, 0, 1});
        EXPECT_EQ(MatrixOf(view.source.Convert().scene.nodes[1]),
                  (Matrix{Vec3{1, 0, 0}, Vec3{0, 0, 1}, Vec3{0, -1, 0}, Vec3{0, 0, 0}}));
    }
}

TEST(Views, AnUnturnedCameraOfAZUpFileStaysAsItIs) {
    OneView view = OneView::OfZUp();
    ExpectView(view.Camera({0, 0, -1}, {0, 1, 0}), {0, 0, -1}, {0, 1, 0});
    EXPECT_EQ(MatrixOf(view.source.Convert().scene.nodes[1]), maxhost::scene::kIdentity);
}

TEST(Views, FbxCamerasLookAlongX) {
    OneView zUp = OneView::OfZUp();
    ExpectView(zUp.Camera({1, 0, 0}, {0, 1, 0}), {1, 0, 0}, {0, 1, 0});
    OneView yUp(kFbx);
    ExpectView(yUp.Camera({1, 0, 0}, {0, 1, 0}), {1, 0, 0}, {0, 0, 1});
}

TEST(Views, AimedLightsLookAsTheirDirectionSays) {
    for (const aiLightSourceType type : {aiLightSource_SPOT, aiLightSource_DIRECTIONAL}) {
        OneView down;
        ExpectView(down.Light(type, {0, -1, 0}, {0, 0, -1}), {0, 0, -1}, {0, 1, 0});
        OneView zUp = OneView::OfZUp();
        ExpectView(zUp.Light(type, {0, -1, 0}, {0, 0, -1}), {0, -1, 0}, {0, 0, -1});
    }
}

TEST(Views, LightsThatShineInAllDirectionsAreNotTurned) {
    for (const aiLightSourceType type : {aiLightSource_POINT, aiLightSource_AMBIENT}) {
        OneView view;
        view.Light(type, {0, -1, 0}, {0, 0, -1});
        EXPECT_EQ(MatrixOf(view.source.Convert().scene.nodes[1]), maxhost::scene::kIdentity);
    }
}

// Every direction, below turned and scaled nodes, against the source's own matrices.
TEST(Views, TheWorldsDirectionIsTheSources) {
    for (const aiVector3D& look :
         {aiVector3D(0, 0, -1), aiVector3D(3, -1, 2), aiVector3D(0, -4, 0), aiVector3D(-1, 0, 0)}) {
        OneView view;
        aiMatrix4x4::Rotation(0.7f, aiVector3D(0.6f, 0, 0.8f), view.source.Root()->mTransformation);
        aiMatrix4x4 turn, scale;
        aiMatrix4x4::Rotation(-2, aiVector3D(0, 0.8f, 0.6f), turn);
        view.eye->mTransformation =
            Moved(1, 2, 3) * turn * aiMatrix4x4::Scaling(aiVector3D(100, 100, 100), scale);
        const aiVector3D up = look ^ aiVector3D(0.3f, 0.2f, 0.9f);
        view.Camera(look, up);
        const auto expected = [&](const aiVector3D& v) {
            const aiMatrix4x4 world =
                view.source.Root()->mTransformation * view.eye->mTransformation;
            const aiVector3D turned = aiMatrix3x3(world) * v;
            return Unit({turned.x, -turned.z, turned.y}, 1);
        };
        ExpectView(view, expected(look), expected(up));
    }
}

TEST(Views, AnUpThatIsNotAcrossIsMadeSo) {
    OneView slanted;
    ExpectView(slanted.Camera({0, 0, -2}, {0, 1, 1}), {0, 1, 0}, {0, 0, 1});
    OneView along;
    ExpectView(along.Camera({0, -1, 0}, {0, 1, 0}), {0, 0, -1}, {0, -1, 0});
    OneView none;
    ExpectView(none.Light(aiLightSource_SPOT, {0, 0, -1}, {0, 0, 0}), {0, 1, 0}, {0, 0, 1});
}

TEST(Views, WithoutASensibleDirectionItIsMinusZ) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const aiVector3D& look : {aiVector3D(0, 0, 0), aiVector3D(nan, 0, 0)}) {
        OneView view;
        ExpectView(view.Camera(look, {0, 1, 0}), {0, 1, 0}, {0, 0, 1});
    }
}

// Their readers leave Assimp's own default, +z, in place.
TEST(Views, FormatsWhoseReadersLeaveTheDirectionOut) {
    for (const char* const importer : {kAse, kOpenGex}) {
        OneView view(importer);
        ExpectView(view.Camera({0, 0, 1}, {0, 1, 0}), {0, 1, 0}, {0, 0, 1});
    }
    OneView said;
    ExpectView(said.Camera({0, 0, 1}, {0, 1, 0}), {0, -1, 0}, {0, 0, 1});
    OneView lost(k3ds);
    lost.Camera({0, 0, 1}, {0, 1, 0});
    const ImportedScene imported = lost.source.Convert();
    EXPECT_EQ(MatrixOf(imported.scene.nodes[1]), maxhost::scene::kIdentity);
    EXPECT_EQ(imported.warnings, Lines{"camera 'Eye': direction left out, the reader loses it"});
}

TEST(Views, ChildrenStayWhereTheyAre) {
    World worlds[2];
    for (const bool hasCamera : {false, true}) {
        OneView view;
        view.eye->mTransformation = Moved(1, 2, 3);
        aiNode* const child = view.source.AddNode(view.eye, "Child");
        aiMatrix4x4::RotationX(0.5f, child->mTransformation);
        child->mTransformation = Moved(4, 5, 6) * child->mTransformation;
        view.source.AddNode(child, "Grandchild")->mTransformation = Moved(7, 8, 9);
        if (hasCamera) {
            view.Camera({1, -2, 3}, {0, 1, 0});
        }
        const ImportedScene imported = view.source.Convert();
        ASSERT_EQ(imported.scene.nodes.at(3).name, "Grandchild");
        worlds[hasCamera ? 1 : 0] = WorldOf(imported.scene, 3);
        EXPECT_EQ(MatrixOf(imported.scene.nodes[3])[3], (Vec3{7, -9, 8}));
    }
    for (std::size_t row = 0; row < 4; ++row) {
        ExpectNear(worlds[1][row], worlds[0][row], 1e-5);
    }
}

TEST(Views, ACameraBelowACamera) {
    OneView view;
    view.source.AddNode(view.eye, "Inner");
    view.Camera({0, 0, -1}, {0, 1, 0});
    view.source.AddCamera("Inner");
    view.source.Scene().mCameras[1]->mLookAt = {1, 0, 0};
    const ImportedScene imported = view.source.Convert();
    ExpectNear(LookOf(imported.scene, 1), {0, 1, 0});
    ExpectNear(LookOf(imported.scene, 2), {1, 0, 0});
}

TEST(Views, ANodeThatShowsAMeshIsNotTurned) {
    OneView view;
    SourceScene::Show(view.eye, {view.source.AddTriangle("m")});
    view.Camera({0, 0, -1}, {0, 1, 0});
    EXPECT_EQ(MatrixOf(view.source.Convert().scene.nodes[1]), maxhost::scene::kIdentity);
}

TEST(Views, APlaceInTheNodeMovesTheNodeUnlessItIsTheNodesOwn) {
    const auto placeOf = [](const char* importer) {
        OneView view(importer);
        view.eye->mTransformation = Moved(1, 2, 3);
        view.Camera({0, 0, -1}, {0, 1, 0});
        view.source.Scene().mCameras[0]->mPosition = {1, 2, 3};
        return MatrixOf(view.source.Convert().scene.nodes[1])[3];
    };
    EXPECT_EQ(placeOf(kOther), (Vec3{2, -6, 4}));
    EXPECT_EQ(placeOf(kGltf), (Vec3{1, -3, 2}));
    EXPECT_EQ(placeOf(k3ds), (Vec3{1, -3, 2}));
    OneView lamp;
    lamp.Light(aiLightSource_POINT, {0, 0, 0}, {0, 0, 0});
    lamp.source.Scene().mLights[0]->mPosition = {1, 2, 3};
    EXPECT_EQ(MatrixOf(lamp.source.Convert().scene.nodes[1])[3], (Vec3{1, -3, 2}));
}

// Files whose authors aimed the camera at what stands about the origin.
TEST(Views, CamerasOfRealFilesLookAtWhatTheyShow) {
    const std::pair<const char*, const char*> kFiles[] = {
        {"FBX/spider.fbx", "Camera"},
        {"Collada/cube_UTF8BOM.dae", "Camera"},
        {"glTF2/2CylinderEngine-glTF-Binary/2CylinderEngine.glb", "nodes[81]"},
        {"BLEND/BlenderDefault_248.blend", "Camera"},
        {"OpenGEX/camera.ogex", "Camera"},
        {"ASE/CameraRollAnim.ase", "Camera01"},
        {"NFF/NFF/WithCamera.nff", "<NFF_Camera>"}};
    for (const auto& [file, name] : kFiles) {
        SCOPED_TRACE(file);
        const Scene scene = ImportWithAssimp(std::filesystem::path(HDO_ASSIMP_MODELS) / file).scene;
        std::size_t cameras = 0;
        for (std::size_t i = 0; i < scene.nodes.size(); ++i) {
            if (scene.nodes[i].name == name && scene.nodes[i].object) {
                ++cameras;
                EXPECT_EQ(scene.nodes[i].object->superClassId, 0x20u);
                const Point toOrigin = Unit(WorldOf(scene, i)[3], -1);
                const Point look = LookOf(scene, i);
                EXPECT_GT(look[0] * toOrigin[0] + look[1] * toOrigin[1] + look[2] * toOrigin[2],
                          0.97);
                EXPECT_GE(UpOf(scene, i)[2], 0.2);
            }
        }
        EXPECT_EQ(cameras, 1u);
    }
}

// ---------------------------------------------------------------- objects

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
