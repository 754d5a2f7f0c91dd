// Times on ticks, Euler angles without jumps, and the quaternion curves between keys.
#include <gtest/gtest.h>

#include <cmath>

#include "host/assimp/maths.h"
#include "host/assimp/motion/curves.h"
#include "host/assimp/motion/key_fit.h"

using namespace maxhost::import;
using maxhost::scene::Tangent;

namespace {

constexpr double kPi = 3.14159265358979323846;

struct Placed {
    int tick;
    std::size_t key;
};

void ExpectKnots(const std::vector<double>& times, bool isStep, const std::vector<Placed>& places) {
    const std::vector<Knot> knots = KnotsOf(times, isStep);
    ASSERT_EQ(knots.size(), places.size());
    for (std::size_t i = 0; i < places.size(); ++i) {
        EXPECT_EQ(knots[i].tick, places[i].tick) << i;
        EXPECT_EQ(knots[i].key, places[i].key) << i;
    }
}

void ExpectAngles(const Vector& angles, double x, double y, double z) {
    EXPECT_NEAR(angles.x * 180 / kPi, x, 1e-9);
    EXPECT_NEAR(angles.y * 180 / kPi, y, 1e-9);
    EXPECT_NEAR(angles.z * 180 / kPi, z, 1e-9);
}

Vector Radians(double x, double y, double z) {
    return Vector(x, y, z) * (kPi / 180);
}

}  // namespace

TEST(Knots, AreTheNearestTicks) {
    ExpectKnots({-1.6, 0.4, 99.5, 159.9998}, false, {{-2, 0}, {0, 1}, {100, 2}, {160, 3}});
}

TEST(Knots, OfOneTickMoveApart) {
    ExpectKnots({10, 10}, false, {{9, 0}, {10, 1}});
    ExpectKnots({9.7, 10}, false, {{9, 0}, {10, 1}});
    ExpectKnots({10, 10.3}, false, {{10, 0}, {11, 1}});
    ExpectKnots({9, 9.8, 10}, false, {{9, 0}, {10, 2}});     // nowhere to go
    ExpectKnots({10, 10.3, 11}, false, {{10, 1}, {11, 2}});  // nor here
    ExpectKnots({10, 10.1, 10.2, 10.3}, false, {{10, 0}, {11, 3}});
}

// What holds at a tick must hold from it on: never before its time, but for noise.
TEST(Knots, OfStepsAreTheFirstTicksBehind) {
    ExpectKnots({0, 10.4, 19.999, 20.005, 30.02}, true, {{0, 0}, {11, 1}, {20, 3}, {31, 4}});
}

TEST(EulerAngles, AreTheRotationsOwn) {
    for (int x = -170; x <= 170; x += 34) {
        for (int y = -80; y <= 80; y += 32) {
            for (int z = -170; z <= 170; z += 34) {
                const Vector angles = Radians(x, y, z);
                ExpectAngles(EulerNear(RotationOfEuler(angles), angles, 1e-6), x, y, z);
            }
        }
    }
}

TEST(EulerAngles, AreTheNearestOfAllThatDo) {
    const Quaternion turn = RotationOfEuler(Radians(10, 20, 30));
    ExpectAngles(EulerNear(turn, Radians(10 + 720, 20, 30 - 360), 1e-6), 730, 20, -330);
    ExpectAngles(EulerNear(turn, Radians(200, 150, 200), 1e-6), 190, 160, 210);  // beyond the pole
}

TEST(EulerAngles, ShareTheTurnAtAPole) {
    ExpectAngles(EulerNear(RotationOfEuler(Radians(40, 90, 0)), Radians(0, 80, 0), 1e-4), 20, 90,
                 -20);
    ExpectAngles(EulerNear(RotationOfEuler(Radians(40, -90, 0)), Radians(0, -80, 0), 1e-4), 20, -90,
                 20);
}

TEST(QuaternionCurves, GoTheShorterWayAtAnEvenPace) {
    const Quaternion start(Vector(0, 0, 1), 0.2), end(Vector(0, 0, 1), 1.4);
    const Quaternion third = Between(start, -1.0 * end, 1.0 / 3);
    EXPECT_NEAR(AngleBetween(start, third), 0.4, 1e-12);
    EXPECT_NEAR(AngleBetween(third, end), 0.8, 1e-12);
}

TEST(VectorCurves, OfEveryInterpolation) {
    Curve<Vector> curve;
    curve.keys = {{0, {0, 0, 0}, {}, {8, 0, 0}}, {2, {4, 0, 0}, {-4, 0, 0}, {}}};
    EXPECT_DOUBLE_EQ(curve.At(0.5).x, 1);
    EXPECT_DOUBLE_EQ(curve.At(-1).x, 0);
    EXPECT_DOUBLE_EQ(curve.At(3).x, 4);
    curve.interpolation = Interpolation::step;
    EXPECT_DOUBLE_EQ(curve.At(1.999).x, 0);
    EXPECT_DOUBLE_EQ(curve.At(2).x, 4);
    curve.interpolation = Interpolation::cubic;
    // Half way: the mean, and an eighth of the duration times the slopes' difference.
    EXPECT_DOUBLE_EQ(curve.At(1).x, 2 + 2.0 / 8 * (8 + 4));
    EXPECT_FALSE(curve.IsConstant(0.1));
    curve.keys[1].value = {0, 0, 0};
    EXPECT_FALSE(curve.IsConstant(0.1));  // it bulges
    curve.interpolation = Interpolation::linear;
    EXPECT_TRUE(curve.IsConstant(0.1));
}

TEST(CurveKeys, AreTheCurvesOwnWithItsSlopes) {
    Curve<Vector> curve;
    curve.interpolation = Interpolation::cubic;
    curve.keys = {{0, {0, 0, 0}, {1, 2, 3}, {4, 5, 6}}, {100, {10, 0, 0}, {7, 8, 9}, {}}};
    const std::vector<FittedKey> keys = KeysOf(curve, 1);
    ASSERT_EQ(keys.size(), 2u);
    EXPECT_EQ(keys[0].outType, Tangent::custom);
    EXPECT_EQ(keys[0].outTangent, Vector(4, 5, 6));
    EXPECT_EQ(keys[1].inType, Tangent::custom);
    EXPECT_EQ(keys[1].inTangent, Vector(-7, -8, -9));
}

// Half a tick of a fast line is more than a fine tolerance, but not more than a coarse one.
TEST(CurveKeys, HoldTheCurvesValueAtTheirTickWhereRoundingCosts) {
    Curve<Vector> curve;
    curve.keys = {{0, {0, 0, 0}, {}, {}}, {10.4, {104, 0, 0}, {}, {}}, {20, {200, 0, 0}, {}, {}}};
    EXPECT_DOUBLE_EQ(KeysOf(curve, 100)[1].value.x, 104);
    EXPECT_DOUBLE_EQ(KeysOf(curve, 1)[1].value.x, 100);
}

TEST(Poses, OfMirroredAndFlatMatrices) {
    Matrix4 mirrored;
    mirrored.a1 = -2;
    mirrored.b2 = 3;
    mirrored.a4 = 5;
    const Quaternion none;
    const Pose pose = PoseOf(mirrored, &none);
    EXPECT_EQ(pose.scale, Vector(-2, 3, 1));
    EXPECT_NEAR(AngleBetween(pose.rotation, none), 0, 1e-9);
    EXPECT_EQ(pose.position, Vector(5, 0, 0));
    const Quaternion turn(Vector(1, 0, 0), 0.5);
    Matrix4 flat;
    flat.a1 = flat.b2 = flat.c3 = 0;
    EXPECT_NEAR(AngleBetween(PoseOf(flat, &turn).rotation, turn), 0, 1e-9);
    EXPECT_EQ(PoseOf(flat, &turn).scale, Vector());
}
