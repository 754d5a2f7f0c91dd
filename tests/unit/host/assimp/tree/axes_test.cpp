// The turn to z up, and units.
#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "host/assimp/tree/tree.h"
#include "tests/unit/host/assimp/shown_scene.h"
#include "tests/unit/host/assimp/source_scene.h"

using maxhost::import::AxisTurn;
using maxhost::import::FbxTurn;
using maxhost::import::ImportedScene;
using maxhost::import::kYUpToZUp;
using maxhost::import::Matrix4;
using maxhost::scene::Matrix;
using maxhost::scene::Vec3;

namespace {

Vec3 Turned(const AxisTurn& turn) {
    return turn.Apply({1, 2, 3});
}

struct FbxAxes {
    int up, upSign, right, rightSign;
};

Vec3 TurnedByFbx(const FbxAxes& axes) {
    aiMetadata settings;
    settings.Add("UpAxis", axes.up);
    settings.Add("UpAxisSign", axes.upSign);
    settings.Add("CoordAxis", axes.right);
    settings.Add("CoordAxisSign", axes.rightSign);
    return Turned(FbxTurn(&settings));
}

double Determinant(const AxisTurn& turn) {
    Matrix4 m;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            m[row][column] = turn.from[row] == column ? turn.sign[row] : 0;
        }
    }
    return m.Determinant();
}

const Matrix kUpAndOver = {Vec3{1, 0, 0}, Vec3{0, 1, 0}, Vec3{0, 0, 1}, Vec3{1, -3, 2}};

}  // namespace

TEST(Axes, YUpBecomesZUp) {
    EXPECT_EQ(Turned(kYUpToZUp), (Vec3{1, -3, 2}));
    EXPECT_EQ(kYUpToZUp.Apply({0, 1, 0}), (Vec3{0, 0, 1}));
}

TEST(Axes, ZerosKeepNoSign) {
    for (const float zero : kYUpToZUp.Apply({0, 0, 0})) {
        EXPECT_FALSE(std::signbit(zero));
    }
}

TEST(Axes, ConjugationCommutesWithTurning) {
    Matrix4 m(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 0, 0, 0, 1);
    const Matrix4 turned = kYUpToZUp.Conjugate(m);
    // turn(m * v) == turned * turn(v)
    const auto moved = m * aiVector3t<double>(1, 2, 3);
    const Vec3 left = kYUpToZUp.Apply(
        {static_cast<float>(moved.x), static_cast<float>(moved.y), static_cast<float>(moved.z)});
    const auto right = turned * aiVector3t<double>(1, -3, 2);
    EXPECT_EQ(left, (Vec3{static_cast<float>(right.x), static_cast<float>(right.y),
                          static_cast<float>(right.z)}));
}

TEST(Axes, FbxSettingsSayWhatIsUp) {
    EXPECT_EQ(TurnedByFbx({1, 1, 0, 1}), (Vec3{1, -3, 2}));    // y up
    EXPECT_EQ(TurnedByFbx({2, 1, 0, 1}), (Vec3{1, 2, 3}));     // z up, 3ds Max's own
    EXPECT_EQ(TurnedByFbx({0, 1, 1, 1})[2], 1);                // x up
    EXPECT_EQ(TurnedByFbx({2, -1, 0, 1}), (Vec3{1, -2, -3}));  // upside down
    EXPECT_EQ(TurnedByFbx({2, 1, 0, -1}), (Vec3{-1, -2, 3}));  // seen from behind
    EXPECT_EQ(TurnedByFbx({2, 1, 1, 1}), (Vec3{2, -1, 3}));    // y to the right
}

TEST(Axes, EveryFbxTurnIsARotation) {
    for (int up = 0; up < 3; ++up) {
        for (int right = 0; right < 3; ++right) {
            for (const int upSign : {-1, 1}) {
                for (const int rightSign : {-1, 1}) {
                    aiMetadata settings;
                    settings.Add("UpAxis", up);
                    settings.Add("UpAxisSign", upSign);
                    settings.Add("CoordAxis", right);
                    settings.Add("CoordAxisSign", rightSign);
                    const AxisTurn turn = FbxTurn(&settings);
                    EXPECT_EQ(Determinant(turn), 1) << up << right << upSign << rightSign;
                    Vec3 upwards{};
                    upwards[up] = static_cast<float>(upSign);
                    EXPECT_EQ(turn.Apply(upwards), (Vec3{0, 0, 1}));
                }
            }
        }
    }
}

TEST(Axes, FbxWithoutOrWithSenselessSettingsIsYUp) {
    EXPECT_EQ(Turned(FbxTurn(nullptr)), (Vec3{1, -3, 2}));
    EXPECT_EQ(TurnedByFbx({7, 1, 0, 1}), (Vec3{1, -3, 2}));
    EXPECT_EQ(TurnedByFbx({-1, 1, 0, 1}), (Vec3{1, -3, 2}));
    EXPECT_EQ(TurnedByFbx({1, 1, 1, 1}), (Vec3{1, -3, 2}));  // right and up the same
    EXPECT_EQ(TurnedByFbx({1, 1, 9, 1}), (Vec3{1, -3, 2}));
}

TEST(Axes, VerticesAndMatricesAreTurnedAndNoNodeIsAdded) {
    SourceScene source("Some Importer");
    source.Root()->mTransformation = Moved(1, 2, 3);
    SourceScene::Show(source.Root(),
                      {source.AddMesh("m", {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}, {{0, 1, 2}})});
    const ImportedScene imported = source.Convert();
    ASSERT_EQ(imported.scene.nodes.size(), 1u);
    EXPECT_EQ(MatrixOf(imported.scene.nodes[0]), kUpAndOver);
    EXPECT_EQ(imported.scene.nodes[0].object->mesh->vertices,
              (std::vector<Vec3>{{1, -3, 2}, {4, -6, 5}, {7, -9, 8}}));
    EXPECT_EQ(imported.scene.nodes[0].objectOffset, maxhost::scene::kIdentity);
}

TEST(Axes, ARotationAboutTheSourcesUpAxisIsOneAboutZ) {
    SourceScene source("Some Importer");
    aiMatrix4x4::RotationY(static_cast<float>(M_PI_2), source.Root()->mTransformation);
    const Matrix m = MatrixOf(source.Convert().scene.nodes[0]);
    // By the right-hand rule, in row-vector form.
    EXPECT_NEAR(m[0][1], 1, 1e-6);
    EXPECT_NEAR(m[1][0], -1, 1e-6);
    EXPECT_NEAR(m[2][2], 1, 1e-6);
}

TEST(Axes, FbxThatIsZUpStaysAsItIs) {
    SourceScene source(kFbx, "RootNode");
    source.Set("UpAxis", 2);
    source.Set("CoordAxis", 0);
    source.Set("UnitScaleFactor", 2.54);  // one unit of the file is one unit of the scene
    source.AddNode(source.Root(), "Box")->mTransformation = Moved(1, 2, 3);
    const ImportedScene imported = source.Convert();
    EXPECT_EQ(MatrixOf(imported.scene.nodes[0])[3], (Vec3{1, 2, 3}));
}

// The importers of 3ds Max's own formats turn the scene to y up with their root; below it the
// file's numbers stand.
TEST(Axes, ATurnOfTheImportersRootIsTakenBack) {
    for (const char* const importer : {k3ds, kAse}) {
        SourceScene source(importer, importer == kAse ? "<ASERoot>" : "<3DSRoot>");
        source.Root()->mTransformation =
            aiMatrix4x4(1, 0, 0, 0, 0, 0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1);
        aiNode* const box = source.AddNode(source.Root(), "Box");
        box->mTransformation = Moved(1, 2, 3);
        SourceScene::Show(box,
                          {source.AddMesh("m", {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}, {{0, 1, 2}})});
        const ImportedScene imported = source.Convert();
        ASSERT_EQ(NamesOf(imported.scene), (std::vector<std::string>{"Box"}));
        EXPECT_EQ(MatrixOf(imported.scene.nodes[0])[3], (Vec3{1, 2, 3}));
        EXPECT_EQ(imported.scene.nodes[0].object->mesh->vertices[2], (Vec3{7, 8, 9}));
    }
}

TEST(Axes, ColladasUnitIsNotApplied) {
    SourceScene source(kCollada, "VisualSceneNode");
    const float inch = 0.0254f;
    source.Root()->mTransformation =
        aiMatrix4x4(inch, 0, 0, 0, 0, 0, inch, 0, 0, -inch, 0, 0, 0, 0, 0, 1);  // z up, in inches
    source.AddNode(source.Root(), "Box")->mTransformation = Moved(1, 2, 3);
    const ImportedScene imported = source.Convert();
    EXPECT_EQ(MatrixOf(imported.scene.nodes[0]),
              (Matrix{Vec3{1, 0, 0}, Vec3{0, 1, 0}, Vec3{0, 0, 1}, Vec3{1, 2, 3}}));
}

TEST(Axes, AWrappersScaleGoesIntoItsChildren) {
    SourceScene source("Some Importer", "<Root>");
    source.Root()->mTransformation = aiMatrix4x4(2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1);
    source.AddNode(source.Root(), "Box")->mTransformation = Moved(1, 2, 3);
    const ImportedScene imported = source.Convert();
    EXPECT_EQ(MatrixOf(imported.scene.nodes[0]),
              (Matrix{Vec3{2, 0, 0}, Vec3{0, 2, 0}, Vec3{0, 0, 2}, Vec3{2, -6, 4}}));
}

TEST(Axes, AWrappersOtherMatrixGoesIntoItsChildren) {
    SourceScene source("Some Importer", "<Root>");
    source.Root()->mTransformation = Moved(10, 20, 30);
    source.AddNode(source.Root(), "A")->mTransformation = Moved(1, 2, 3);
    aiNode* const b = source.AddNode(source.Root(), "B");
    source.AddNode(b, "C")->mTransformation = Moved(1, 2, 3);
    const ImportedScene imported = source.Convert();
    ASSERT_EQ(NamesOf(imported.scene), (std::vector<std::string>{"A", "B", "C"}));
    EXPECT_EQ(MatrixOf(imported.scene.nodes[0])[3], (Vec3{11, -33, 22}));
    EXPECT_EQ(MatrixOf(imported.scene.nodes[1])[3], (Vec3{10, -30, 20}));
    EXPECT_EQ(MatrixOf(imported.scene.nodes[2])[3], (Vec3{1, -3, 2}));
}

// A mirroring or a shear is no change of axes.
TEST(Axes, AMirroringRootIsNoTurn) {
    SourceScene source("Some Importer", "<Root>");
    source.Root()->mTransformation = aiMatrix4x4(-1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1);
    source.AddNode(source.Root(), "Box");
    const ImportedScene imported = source.Convert();
    EXPECT_EQ(MatrixOf(imported.scene.nodes[0]),
              (Matrix{Vec3{-1, 0, 0}, Vec3{0, 1, 0}, Vec3{0, 0, 1}, Vec3{0, 0, 0}}));
}

// ---------------------------------------------------------------- files that do not say what is up

namespace {

// Imports with that axis up, and without a choice where it is absent.
ImportedScene WithUp(SourceScene& source, std::optional<int> up) {
    return source.Convert("no/such/file.x", {.animation = {}, .frameRate = {}, .up = up});
}

std::vector<Vec3> VerticesWithUp(std::optional<int> up) {
    SourceScene source("Some Importer");
    SourceScene::Show(source.Root(),
                      {source.AddMesh("m", {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}, {{0, 1, 2}})});
    return WithUp(source, up).scene.nodes[0].object->mesh->vertices;
}

// A scene of the importer whose root is turned from z up to y up, as readers of formats do that are
// z up by their definition.
ImportedScene WithTurnedRoot(const char* root, float rounding, std::optional<int> up) {
    SourceScene source("Some Importer", root);
    source.Root()->mTransformation =
        aiMatrix4x4(1, 0, 0, 0, 0, rounding, 1, 0, 0, -1, rounding, 0, 0, 0, 0, 1);
    source.AddNode(source.Root(), "Box");
    return WithUp(source, up);
}

using Lines = std::vector<std::string>;

}  // namespace

TEST(UpAxis, IsBroughtUpByARotation) {
    EXPECT_EQ(VerticesWithUp(std::nullopt)[0], (Vec3{1, -3, 2}));
    EXPECT_EQ(VerticesWithUp(1), VerticesWithUp(std::nullopt)) << "y by default";
    EXPECT_EQ(VerticesWithUp(2)[0], (Vec3{1, 2, 3}));
    EXPECT_EQ(VerticesWithUp(0)[0], (Vec3{2, 3, 1}));
}

TEST(UpAxis, SaysWhatWasDone) {
    SourceScene source("Some Importer");
    EXPECT_EQ(WithUp(source, std::nullopt).upAxis,
              "y, assumed, the file does not say (--up does), turned to z");
    EXPECT_EQ(WithUp(source, 2).upAxis, "z, by --up, not turned");
    EXPECT_EQ(WithUp(source, 0).upAxis, "x, by --up, turned to z");
    EXPECT_EQ(WithUp(source, 0).warnings, Lines{});
}

TEST(UpAxis, OfAFileThatSaysItStays) {
    const auto fbx = [](std::optional<int> stated, std::optional<int> up) {
        SourceScene source(kFbx, "RootNode");
        if (stated) {
            source.Set("UpAxis", *stated);
        }
        source.AddNode(source.Root(), "Box")->mTransformation = Moved(1, 2, 3);
        return WithUp(source, up);
    };
    EXPECT_EQ(MatrixOf(fbx(1, 2).scene.nodes[0])[3], (Vec3{1, -3, 2}));
    EXPECT_EQ(fbx(1, 2).warnings,
              Lines{"--up has no effect: the up axis is y, as the file says, turned to z"});
    EXPECT_EQ(fbx(2, 1).warnings,
              Lines{"--up has no effect: the up axis is z, as the file says, not turned"});
    EXPECT_EQ(fbx(2, std::nullopt).warnings, Lines{});
    EXPECT_EQ(MatrixOf(fbx(std::nullopt, 2).scene.nodes[0])[3], (Vec3{1, 2, 3}))
        << "an FBX file without the setting";
    EXPECT_EQ(fbx(7, 2).upAxis, "z, by --up, not turned") << "or a senseless one";

    SourceScene gltf(kGltf);
    EXPECT_EQ(
        WithUp(gltf, 2).warnings,
        Lines{"--up has no effect: the up axis is y, as in all files of the format, turned to z"});
    SourceScene collada(kCollada, "VisualSceneNode");
    EXPECT_EQ(WithUp(collada, 2).warnings,
              Lines{"--up has no effect: the up axis is y, as the file says, turned to z"});
}

TEST(UpAxis, OfAFileThatItsReaderTurnsStays) {
    // Roots that become nodes are turned with their own matrix.
    for (const char* const root : {"<MD5_Root>", "Group_0"}) {
        for (const float rounding : {0.0f, -4.37114e-08f}) {
            const ImportedScene plain = WithTurnedRoot(root, rounding, std::nullopt);
            const ImportedScene chosen = WithTurnedRoot(root, rounding, 2);
            EXPECT_EQ(plain.upAxis, "z, as the format's reader knows, not turned");
            EXPECT_EQ(plain.warnings, Lines{});
            EXPECT_EQ(chosen.warnings, Lines{"--up has no effect: the up axis is z, as the "
                                             "format's reader knows, not turned"});
            EXPECT_EQ(MatrixOf(chosen.scene.nodes.back()), MatrixOf(plain.scene.nodes.back()));
        }
    }
    SourceScene tilted("Some Importer", "<Root>");
    aiMatrix4x4::RotationX(0.3f, tilted.Root()->mTransformation);
    tilted.AddNode(tilted.Root(), "Box");
    EXPECT_EQ(WithUp(tilted, 2).upAxis, "z, by --up, not turned") << "a tilt is no change of axes";
}
