// Euler angles without jumps, arcs between rotations, and poses of matrices.
#include "host/assimp/maths.h"

#include <gtest/gtest.h>

#include <numbers>

namespace maxhost::import {

namespace {

void ExpectAngles(const Vector& angles, double x, double y, double z) {
    EXPECT_NEAR(angles.x * 180 / std::numbers::pi, x, 1e-9);
    EXPECT_NEAR(angles.y * 180 / std::numbers::pi, y, 1e-9);
    EXPECT_NEAR(angles.z * 180 / std::numbers::pi, z, 1e-9);
}

Vector Radians(double x, double y, double z) {
    return Vector(x, y, z) * (std::numbers::pi / 180);
}

}  // namespace

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

}  // namespace maxhost::import
