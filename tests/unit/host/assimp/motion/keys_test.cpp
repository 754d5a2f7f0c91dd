// Where the keys of an imported animation stand and what they hold.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <sstream>

#include "host/assimp/import.h"
#include "host/scene/check.h"
#include "host/scene/scale.h"
#include "host/scene_file/scene_description.h"
#include "tests/support/every_field.h"
#include "tests/unit/host/assimp/shown_scene.h"
#include "tests/unit/host/assimp/source_scene.h"

using maxhost::import::ConvertScene;
using maxhost::import::ImportedScene;
using maxhost::scene::Node;
using maxhost::scene::Tangent;
using maxhost::scene::Vec3;
using Lines = std::vector<std::string>;
using Ticks = std::vector<int>;
using Values = std::vector<float>;
using Degrees = std::vector<double>;

namespace {

const aiVector3D kX(1, 0, 0), kY(0, 1, 0), kZ(0, 0, 1);

// A scene of 100 units with one node that moves, at one key time a second.
class OneMoving {
  public:
    explicit OneMoving(const std::string& importer = kOther) : source(importer) {
        moving = source.AddNode(source.Root(), "moving");
        source.AddNode(source.Root(), "far")->mTransformation = Moved(100, 0, 0);
        animation = &source.AddAnimation("walk", 10, 1, {"moving"});
    }
    aiNodeAnim& Channel() { return *animation->mChannels[0]; }
    ImportedScene Convert(const maxhost::import::ImportChoices& choices = {}) {
        return ConvertScene(source.Scene(), "no/such/file.x", choices);
    }

    SourceScene source;
    aiNode* moving = nullptr;
    aiAnimation* animation = nullptr;
};

// FBX with z up, so that nothing is turned.
void SetZUp(SourceScene& source) {
    source.Set("UpAxis", 2);
    source.Set("CoordAxis", 0);
}

void ExpectPoses(OneMoving& scene, const ImportedScene& imported) {
    const PoseError worst = WorstPose(scene.source.Scene(), "no/such/file.x", 0, imported);
    EXPECT_LE(worst.degrees, 0.1) << worst.where;
    EXPECT_LE(worst.distance, 0.001) << worst.where;
}

}  // namespace

TEST(AnimationKeys, OfALinePositionAreTheSourcesWithZUp) {
    OneMoving scene;
    SetKeys(scene.Channel(), {{0, {1, 2, 3}}, {1, {4, 2, -5}}, {2.5, {4, 2, 7}}});
    const ImportedScene imported = scene.Convert();
    const Node& node = imported.scene.nodes[1];
    for (int axis = 0; axis < 3; ++axis) {
        EXPECT_EQ(TimesOf(PositionKeysOf(node, axis)), (Ticks{0, 4800, 12000}));
        EXPECT_TRUE(RotationKeysOf(node, axis).empty());
        for (const auto& key : PositionKeysOf(node, axis)) {
            EXPECT_EQ(key.inType, Tangent::linear);
            EXPECT_EQ(key.outType, Tangent::linear);
        }
    }
    EXPECT_EQ(ValuesOf(PositionKeysOf(node, 0)), (Values{1, 4, 4}));
    EXPECT_EQ(ValuesOf(PositionKeysOf(node, 1)), (Values{-3, 5, -7}));
    EXPECT_EQ(ValuesOf(PositionKeysOf(node, 2)), (Values{2, 2, 2}));  // constant, with the others
    EXPECT_TRUE(ScaleOf(node).keys.empty());
    EXPECT_EQ(ScaleOf(node).value, (Vec3{1, 1, 1}));
    EXPECT_EQ(imported.warnings, Lines{});
    EXPECT_EQ(imported.scene.time.end, 48000);
}

TEST(AnimationKeys, OfAScaleAreTurnedWithoutSigns) {
    OneMoving scene;
    SetKeys(scene.Channel(), {{0, {0, 0, 0}}}, {{0, aiQuaternion()}},
            {{0, {1, 2, -3}}, {2, {4, 5, -6}}});
    const ImportedScene imported = scene.Convert();
    const auto& scale = ScaleOf(imported.scene.nodes[1]);
    ASSERT_EQ(scale.keys.size(), 2u);
    EXPECT_EQ(scale.keys[0].value, (Vec3{1, -3, 2}));
    EXPECT_EQ(scale.keys[1].value, (Vec3{4, -6, 5}));
    EXPECT_EQ(scale.keys[1].time, 9600);
    EXPECT_EQ(scale.keys[1].inType, Tangent::linear);
    ExpectPoses(scene, imported);
}

// Turns by +90 degrees about y up become turns about z.
TEST(AnimationKeys, OfATurnGoOnBeyond180Degrees) {
    OneMoving scene;
    RotationKeys keys;
    for (int i = 0; i <= 8; ++i) {
        keys.push_back({i, Turned(kY, 90 * i)});
    }
    SetKeys(scene.Channel(), {{0, {5, 0, 0}}}, keys);
    const ImportedScene imported = scene.Convert();
    const Node& node = imported.scene.nodes[1];
    EXPECT_EQ(DegreesOf(RotationKeysOf(node, 2)),
              (Degrees{0, 90, 180, 270, 360, 450, 540, 630, 720}));
    EXPECT_EQ(DegreesOf(RotationKeysOf(node, 0)), Degrees(9, 0));
    EXPECT_EQ(DegreesOf(RotationKeysOf(node, 1)), Degrees(9, 0));
    EXPECT_EQ(RotationKeysOf(node, 1)[3].time, 14400);
    EXPECT_TRUE(PositionKeysOf(node, 0).empty());
    EXPECT_EQ(MatrixAt(node, 0)[3], (Vec3{5, 0, 0}));
    ExpectPoses(scene, imported);
}

TEST(AnimationKeys, TurnTheShorterWay) {
    OneMoving scene;
    SetKeys(scene.Channel(), {{0, {0, 0, 0}}},
            {{0, Turned(kX, 170)}, {1, Turned(kX, -170)}, {2, Turned(kX, 20)}});
    const Node node = scene.Convert().scene.nodes[1];
    EXPECT_EQ(DegreesOf(RotationKeysOf(node, 0)), (Degrees{170, 190, 20}));
}

// Turned about the axis that is y in 3ds Max, past 90 degrees: no other angle jumps.
TEST(AnimationKeys, GoThroughThePoleWithoutAFlip) {
    OneMoving scene;
    RotationKeys keys;
    for (int i = 0; i <= 6; ++i) {
        keys.push_back({i, Turned(kZ, -30 * i)});
    }
    SetKeys(scene.Channel(), {{0, {0, 0, 0}}}, keys);
    const ImportedScene imported = scene.Convert();
    const Node& node = imported.scene.nodes[1];
    const AxisKeys& y = RotationKeysOf(node, 1);
    EXPECT_EQ(DegreesOf(y), (Degrees{0, 30, 60, 90, 120, 150, 180}));
    EXPECT_EQ(DegreesOf(RotationKeysOf(node, 0)), Degrees(7, 0));
    EXPECT_EQ(DegreesOf(RotationKeysOf(node, 2)), Degrees(7, 0));
    ExpectPoses(scene, imported);
}

// At the pole the motion goes on about another axis: x and z must turn by 90 degrees there.
TEST(AnimationKeys, TurnAtThePoleWhereTheyMust) {
    OneMoving scene(kFbx);
    SetZUp(scene.source);
    const aiQuaternion up = Turned(kY, 90);
    SetKeys(scene.Channel(), {{0, {0, 0, 0}}},
            {{0, aiQuaternion()}, {1, up}, {2, Turned(kX, 90) * up}});
    const ImportedScene imported = scene.Convert();
    ExpectPoses(scene, imported);
    const Node& node = imported.scene.nodes[0];
    EXPECT_EQ(TimesOf(RotationKeysOf(node, 1)), (Ticks{0, 4800, 4801, 9600}));
    EXPECT_LE(DegreesOf(RotationKeysOf(node, 1))[1], 90.001);
}

TEST(AnimationKeys, StandAtFramesInBetweenWhereALineWouldStray) {
    OneMoving scene;
    aiVector3D skew(1, 2, 3);
    SetKeys(scene.Channel(), {{0, {0, 0, 0}}},
            {{0, aiQuaternion()}, {1, Turned(skew.Normalize(), 150)}});
    const ImportedScene imported = scene.Convert();
    ExpectPoses(scene, imported);
    const Node& node = imported.scene.nodes[1];
    const Ticks times = TimesOf(RotationKeysOf(node, 0));
    EXPECT_GT(times.size(), 4u);
    EXPECT_LE(times.size(), 31u);
    for (const int time : times) {
        EXPECT_EQ(time % 160, 0);
    }
    EXPECT_EQ(times, TimesOf(RotationKeysOf(node, 1)));
    EXPECT_EQ(times, TimesOf(RotationKeysOf(node, 2)));
}

TEST(AnimationKeys, BendBetweenNeighbouringFramesWhereALineWouldStray) {
    OneMoving scene;
    scene.animation->mTicksPerSecond = 30;
    aiVector3D skew(1, 2, 3);
    SetKeys(scene.Channel(), {{0, {0, 0, 0}}},
            {{0, aiQuaternion()}, {1, Turned(skew.Normalize(), 25)}});
    const ImportedScene imported = scene.Convert();
    ExpectPoses(scene, imported);
    const AxisKeys& x = RotationKeysOf(imported.scene.nodes[1], 0);
    EXPECT_EQ(TimesOf(x), (Ticks{0, 160}));
    EXPECT_EQ(x[0].outType, Tangent::custom);
    EXPECT_EQ(x[1].inType, Tangent::custom);
}

// An arm of ten joints keeps its end in place, though each joint strays a little.
TEST(AnimationKeys, KeepTheEndOfALongChainInPlace) {
    SourceScene source(kOther);
    aiNode* parent = source.Root();
    std::vector<std::string> names;
    for (int i = 0; i < 10; ++i) {
        names.push_back("joint" + std::to_string(i));
        parent = source.AddNode(parent, names.back());
        parent->mTransformation = Moved(0, 10, 0);
    }
    aiAnimation& animation = source.AddAnimation("wave", 4, 1, names);
    for (unsigned i = 0; i < 10; ++i) {
        aiVector3D axis(1, static_cast<float>(i), 2);
        SetKeys(*animation.mChannels[i], {{0, {0, 10, 0}}},
                {{0, aiQuaternion()}, {1.3, Turned(axis.Normalize(), 40)}, {4, aiQuaternion()}});
    }
    const ImportedScene imported = source.Convert();
    const PoseError worst = WorstPose(source.Scene(), "no/such/file.x", 0, imported);
    EXPECT_LE(worst.degrees, 0.1) << worst.where;
    EXPECT_LE(worst.distance, 0.001) << worst.where;
    EXPECT_NEAR(worst.diagonal, 100, 1e-3);
}

TEST(AnimationKeys, OfWhatStandsStillAreNone) {
    OneMoving scene;
    scene.moving->mTransformation = Moved(1, 2, 3);
    scene.source.AddNode(scene.source.Root(), "turned");
    SetKeys(scene.Channel(), {{0, {1, 2, 3}}, {1, {1, 2, 3}}});
    const ImportedScene still = scene.Convert();
    ASSERT_TRUE(IsConstant(still.scene.nodes[1]));
    EXPECT_EQ(MatrixOf(still.scene.nodes[1])[3], (Vec3{1, -3, 2}));
    EXPECT_TRUE(IsConstant(still.scene.nodes[0]));
}

TEST(AnimationKeys, HoldANodeAwayFromWhereItRests) {
    OneMoving scene;
    SetKeys(scene.Channel(), {{0, {7, 8, 9}}});
    const ImportedScene imported = scene.Convert();
    ASSERT_TRUE(IsConstant(imported.scene.nodes[1]));
    EXPECT_EQ(MatrixOf(imported.scene.nodes[1])[3], (Vec3{7, -9, 8}));
}

TEST(AnimationKeys, OnOneTickStayAJump) {
    OneMoving scene;
    SetKeys(scene.Channel(), {{0, {0, 0, 0}}, {1, {1, 0, 0}}, {1, {5, 0, 0}}, {2, {6, 0, 0}}});
    const Node jump = scene.Convert().scene.nodes[1];
    EXPECT_EQ(TimesOf(PositionKeysOf(jump, 0)), (Ticks{0, 4799, 4800, 9600}));
    EXPECT_EQ(ValuesOf(PositionKeysOf(jump, 0)), (Values{0, 1, 5, 6}));

    OneMoving close;
    SetKeys(close.Channel(),
            {{0, {0, 0, 0}}, {1, {1, 0, 0}}, {1.00005, {5, 0, 0}}, {2, {6, 0, 0}}});
    const Node behind = close.Convert().scene.nodes[1];
    EXPECT_EQ(TimesOf(PositionKeysOf(behind, 0)), (Ticks{0, 4800, 4801, 9600}));
    EXPECT_EQ(ValuesOf(PositionKeysOf(behind, 0)), (Values{0, 1, 5, 6}));
}

TEST(AnimationKeys, OutOfOrderOrNotFiniteAreSaid) {
    OneMoving scene;
    SetKeys(scene.Channel(),
            {{2, {2, 0, 0}},
             {0, {0, 0, 0}},
             {1, {kNan, 0, 0}},
             {std::nan(""), {1, 0, 0}},
             {1e18, {1, 0, 0}}},
            {{0, aiQuaternion(0, 0, 0, 0)}});
    const ImportedScene imported = scene.Convert();
    EXPECT_EQ(TimesOf(PositionKeysOf(imported.scene.nodes[1], 0)), (Ticks{0, 9600}));
    EXPECT_EQ(ValuesOf(PositionKeysOf(imported.scene.nodes[1], 0)), (Values{0, 2}));
    EXPECT_EQ(imported.warnings,
              (Lines{"keys of animations that are not finite, or beyond the range of times, left "
                     "out (4)",
                     "keys of animations put in the order of their times"}));
    EXPECT_NO_THROW(maxhost::scene::Check(imported.scene));
}

TEST(AnimationKeys, InBetweenAreLeftOutOfAnEndlessClip) {
    OneMoving scene;
    scene.animation->mDuration = 400000;
    aiVector3D skew(1, 2, 3);
    SetKeys(scene.Channel(), {{0, {0, 0, 0}}},
            {{0, aiQuaternion()}, {200000, Turned(skew.Normalize(), 150)}});
    const ImportedScene imported = scene.Convert();
    EXPECT_EQ(TimesOf(RotationKeysOf(imported.scene.nodes[1], 0)), (Ticks{0, 960000000}));
    EXPECT_EQ(imported.warnings,
              Lines{"keys between the animation's own left out, it has too many frames"});
}

TEST(AnimationKeys, OfMorphsAndLostNodesAreSaid) {
    OneMoving scene;
    aiAnimation& animation = scene.source.AddAnimation("morphs", 1, 1, {"nobody"});
    animation.mNumMorphMeshChannels = 1;
    animation.mMorphMeshChannels = new aiMeshMorphAnim* [1] { new aiMeshMorphAnim };
    SetKeys(*animation.mChannels[0], {{0, {0, 0, 0}}});
    EXPECT_EQ(scene.Convert({"morphs", {}}).warnings,
              (Lines{"animation of nodes that are not there left out",
                     "animation of meshes and morph targets left out",
                     "animations left out beside the one imported (--animation chooses another)"}));
}

// ---------------------------------------------------------------- which clip, which times

TEST(AnimationChoice, IsByNameOrNumber) {
    OneMoving scene;
    SetKeys(scene.Channel(), {{0, {0, 0, 0}}, {1, {1, 0, 0}}});
    aiAnimation& run = scene.source.AddAnimation("run", 4, 1, {"moving"});
    SetKeys(*run.mChannels[0], {{0, {0, 0, 0}}, {2, {2, 0, 0}}});
    const std::pair<const char*, int> kChoices[] = {
        {"walk", 4800}, {"0", 4800}, {"run", 9600}, {"1", 9600}};
    for (const auto& [name, time] : kChoices) {
        const ImportedScene imported = scene.Convert({name, {}});
        EXPECT_EQ(TimesOf(PositionKeysOf(imported.scene.nodes[1], 0)), (Ticks{0, time})) << name;
        EXPECT_EQ(imported.scene.time.end, time == 4800 ? 48000 : 19200) << name;
    }
    EXPECT_EQ(TimesOf(PositionKeysOf(scene.Convert().scene.nodes[1], 0)), (Ticks{0, 4800}));
}

// Ten seconds stay ten seconds at each frame rate: first and last pose, keys and range.
TEST(AnimationTimes, StayInSecondsAtEveryFrameRate) {
    const std::pair<int, int> kRates[] = {{24, 200}, {25, 192}, {30, 160}, {60, 80}, {29, 165}};
    for (const auto& [rate, ticksPerFrame] : kRates) {
        OneMoving scene;
        SetKeys(scene.Channel(), {{0, {1, 0, 0}}, {10, {3, 0, 0}}});
        const ImportedScene imported = scene.Convert({{}, rate});
        const int last = 10 * rate * ticksPerFrame;
        EXPECT_EQ(imported.scene.time.frameRate, rate);
        EXPECT_EQ(imported.scene.time.ticksPerFrame, ticksPerFrame);
        EXPECT_EQ(imported.scene.time.end, last);
        EXPECT_EQ(TimesOf(PositionKeysOf(imported.scene.nodes[1], 0)), (Ticks{0, last}));
        EXPECT_EQ(MatrixAt(imported.scene.nodes[1], 0)[3][0], 1);
        EXPECT_EQ(MatrixAt(imported.scene.nodes[1], last)[3][0], 3);
    }
}

// 300 frames of 1001/30000 s: 10.01 s, at 30 frames a second.
TEST(AnimationTimes, OfAFilmRateStayInSeconds) {
    OneMoving scene(kBvh);
    scene.animation->mTicksPerSecond = 30000.0 / 1001;
    scene.animation->mDuration = 300;
    SetKeys(scene.Channel(), {{0, {1, 0, 0}}, {100, {2, 0, 0}}, {300, {3, 0, 0}}});
    const ImportedScene imported = scene.Convert();
    EXPECT_EQ(imported.scene.time.frameRate, 30);
    EXPECT_EQ(imported.scene.time.end, 48048);
    EXPECT_EQ(TimesOf(PositionKeysOf(imported.scene.nodes[1], 0)), (Ticks{0, 16016, 48048}));
}

TEST(AnimationTimes, AClipWithoutALengthLastsToItsLastKey) {
    OneMoving scene;
    scene.animation->mDuration = 0;
    SetKeys(scene.Channel(), {{0, {1, 0, 0}}, {3, {3, 0, 0}}});
    EXPECT_EQ(scene.Convert().scene.time.end, 14400);
}

// ---------------------------------------------------------------- chains and frames

// A node that FBX's importer splits: each step moves on its own.
TEST(AnimationOfPivots, IsThatOfTheWholeChain) {
    SourceScene source(kFbx, "RootNode");
    SetZUp(source);
    aiNode* const translation = source.AddNode(source.Root(), "Box_$AssimpFbx$_Translation");
    translation->mTransformation = Moved(1, 2, 3);
    aiNode* const pivot = source.AddNode(translation, "Box_$AssimpFbx$_RotationPivot");
    pivot->mTransformation = Moved(10, 0, 0);
    aiNode* const rotation = source.AddNode(pivot, "Box_$AssimpFbx$_Rotation");
    aiNode* const back = source.AddNode(rotation, "Box_$AssimpFbx$_RotationPivotInverse");
    back->mTransformation = Moved(-10, 0, 0);
    source.AddNode(back, "Box");
    aiAnimation& animation =
        source.AddAnimation("spin", 2, 1, {translation->mName.C_Str(), rotation->mName.C_Str()});
    SetKeys(*animation.mChannels[0], {{0, {0, 0, 0}}, {2, {40, 0, 0}}});
    SetKeys(*animation.mChannels[1], {{0, {0, 0, 0}}}, {{0, aiQuaternion()}, {1, Turned(kZ, 90)}});
    const ImportedScene imported = source.Convert();
    ASSERT_EQ(NamesOf(imported.scene), Lines{"Box"});
    const PoseError worst = WorstPose(source.Scene(), "no/such/file.x", 0, imported);
    EXPECT_LE(worst.degrees, 0.1) << worst.where;
    EXPECT_LE(worst.distance * worst.diagonal, 0.05) << worst.where;
    // After a second: at (20, 0, 0), turned about (10, 0, 0) of its own.
    const auto matrix = MatrixAt(imported.scene.nodes[0], 4800);
    EXPECT_NEAR(matrix[3][0], 30, 0.01);
    EXPECT_NEAR(matrix[3][1], -10, 0.01);
    EXPECT_NEAR(matrix[0][1], 1, 1e-5);
    EXPECT_EQ(DegreesOf(RotationKeysOf(imported.scene.nodes[0], 2)).back(), 90);
    EXPECT_TRUE(ScaleOf(imported.scene.nodes[0]).keys.empty());
}

// A turn below an uneven scale shears; the keys hold the nearest pose that does not.
TEST(AnimationOfPivots, ThatShearsIsSaid) {
    SourceScene source(kFbx, "RootNode");
    SetZUp(source);
    aiNode* const scaling = source.AddNode(source.Root(), "Box_$AssimpFbx$_Scaling");
    scaling->mTransformation.a1 = 2;
    source.AddNode(scaling, "Box");
    aiAnimation& animation = source.AddAnimation("spin", 2, 1, {"Box"});
    SetKeys(*animation.mChannels[0], {{0, {1, 0, 0}}}, {{0, aiQuaternion()}, {1, Turned(kZ, 90)}});
    const ImportedScene imported = source.Convert();
    EXPECT_EQ(
        imported.warnings,
        Lines{"node 'Box': sheared in its animation, the nearest pose without shear is kept"});
    EXPECT_EQ(MatrixAt(imported.scene.nodes[0], 0)[3], (Vec3{2, 0, 0}));
    // Unsheared at both ends: scaled along x of the world, which is y of the box after the turn.
    const auto end = MatrixAt(imported.scene.nodes[0], 4800);
    EXPECT_NEAR(end[0][1], 1, 1e-4);
    EXPECT_NEAR(end[1][0], -2, 1e-4);
}

// By symmetry half way, at 45 degrees, the scale is even and the turn is the shear's half.
TEST(AnimationOfPivots, KeepsTheNearestPoseOfAShear) {
    SourceScene source(kFbx, "RootNode");
    SetZUp(source);
    aiNode* const scaling = source.AddNode(source.Root(), "Box_$AssimpFbx$_Scaling");
    scaling->mTransformation.a1 = 2;
    source.AddNode(scaling, "Box");
    aiAnimation& animation = source.AddAnimation("spin", 2, 1, {"Box"});
    SetKeys(*animation.mChannels[0], {{0, {0, 0, 0}}}, {{0, aiQuaternion()}, {1, Turned(kZ, 90)}});
    const auto middle = MatrixAt(source.Convert().scene.nodes[0], 2400);
    // The columns (2, 1)/sqrt(2) and (-2, 1)/sqrt(2) lie 63.43 degrees to both sides of y.
    EXPECT_NEAR(std::atan2(middle[0][1], middle[0][0]) * 180 / 3.14159265, 45, 0.2);
    EXPECT_NEAR(std::hypot(middle[0][0], middle[0][1]), 1.5, 0.01);
    EXPECT_NEAR(std::hypot(middle[1][0], middle[1][1]), 1.5, 0.01);
}

// Keys of a camera are keys of the frame that looks the same way; its child stays where it is.
TEST(AnimationOfCameras, TurnsTheirViews) {
    OneMoving scene(kGltf);
    scene.source.AddCamera("moving");
    scene.source.Scene().mCameras[0]->mLookAt = {0, 0, -1};
    scene.source.AddNode(scene.moving, "child")->mTransformation = Moved(0, 0, 1);
    SetKeys(scene.Channel(), {{0, {0, 0, 0}}, {2, {0, 0, 8}}},
            {{0, aiQuaternion()}, {2, Turned(kY, 60)}});
    const ImportedScene imported = scene.Convert();
    ASSERT_EQ(NamesOf(imported.scene), (Lines{"Root", "moving", "child", "far"}));
    ExpectPoses(scene, imported);
    EXPECT_EQ(TimesOf(PositionKeysOf(imported.scene.nodes[1], 1)), (Ticks{0, 9600}));
    EXPECT_EQ(ValuesOf(PositionKeysOf(imported.scene.nodes[1], 1)), (Values{0, -8}));
}

// ---------------------------------------------------------------- what becomes of them

TEST(AnimationKeys, AreScaledWithTheScene) {
    OneMoving scene;
    SetKeys(scene.Channel(), {{0, {1, 2, 3}}, {1, {4, 2, -5}}}, {{0, aiQuaternion()}},
            {{0, {1, 1, 1}}, {1, {2, 2, 2}}});
    ImportedScene imported = scene.Convert();
    maxhost::scene::ScaleLengths(imported.scene, 2.5f);
    EXPECT_EQ(ValuesOf(PositionKeysOf(imported.scene.nodes[1], 0)), (Values{2.5f, 10}));
    EXPECT_EQ(ScaleOf(imported.scene.nodes[1]).keys[1].value, (Vec3{2, 2, 2}));
}

TEST(AnimationKeys, ComeBackFromASavedScene) {
    OneMoving scene;
    aiVector3D skew(1, 2, 3);
    SetKeys(scene.Channel(), {{0, {1, 2, 3}}, {0.7, {4, 2, -5}}},
            {{0, aiQuaternion()}, {0.3, Turned(skew.Normalize(), 170)}},
            {{0, {1, 1, 1}}, {1.1, {2, 3, 4}}});
    const ImportedScene imported = scene.Convert();
    std::stringstream text;
    maxhost::scene_file::WriteSceneDescription(imported.scene, text);
    const auto loaded = maxhost::scene_file::ReadSceneDescription(text);
    EXPECT_EQ(Difference(imported.scene, loaded), "");
    EXPECT_EQ(TimesOf(PositionKeysOf(loaded.nodes[1], 0)), (Ticks{0, 3360}));
}
