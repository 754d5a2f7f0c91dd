#include <decomp.h>

#include <cmath>
#include <limits>

#include "tests/support/sdk_values.h"

namespace {

Quat RotationAboutZ(float angle) {
    return Quat(0.0f, 0.0f, -std::sin(angle / 2), std::cos(angle / 2));
}

// One of q and -q.
Quat WithPositiveW(const Quat& q) {
    return q.w < 0 ? Quat(-q.x, -q.y, -q.z, -q.w) : q;
}

bool IsIdentity(const Quat& q) {
    return q.x == 0 && q.y == 0 && q.z == 0 && q.w == 1;
}

}  // namespace

TEST(Quat, IsLeftHandedAgainstTheMatrices) {
    for (const float angle : {0.0f, 0.5f, 1.5707964f, 3.0f, -0.5f, -3.0f}) {
        ExpectNear(Quat(RotateZMatrix(angle)), RotationAboutZ(angle));
        ExpectNear(MatrixOf(RotationAboutZ(angle)), RotateZMatrix(angle));
    }
    // A quarter turn about z, with rows (0, 1, 0), (-1, 0, 0), (0, 0, 1).
    ExpectNear(Quat(Matrix3(Point3(0, 1, 0), Point3(-1, 0, 0), Point3(0, 0, 1), Point3(0, 0, 0))),
               Quat(0.0f, 0.0f, -0.70710678f, 0.70710678f));
    ExpectNear(Quat(RotateXMatrix(1)), Quat(-std::sin(0.5f), 0.0f, 0.0f, std::cos(0.5f)));
    ExpectNear(Quat(RotateYMatrix(1)), Quat(0.0f, -std::sin(0.5f), 0.0f, std::cos(0.5f)));
}

TEST(Quat, ComesBackFromItsMatrix) {
    RandomValues random;
    for (int n = 0; n < 1000; ++n) {
        const Quat q = random.UnitQuat();
        ExpectNear(Quat(MatrixOf(q)), WithPositiveW(q), 2e-6f);
    }
}

TEST(Quat, ComesFromHalfTurns) {
    ExpectNear(Quat(ScaleMatrix(Point3(1, -1, -1))), Quat(1.0f, 0.0f, 0.0f, 0.0f));
    ExpectNear(Quat(ScaleMatrix(Point3(-1, 1, -1))), Quat(0.0f, 1.0f, 0.0f, 0.0f));
    ExpectNear(Quat(ScaleMatrix(Point3(-1, -1, 1))), Quat(0.0f, 0.0f, 1.0f, 0.0f));
    // Half a turn about the diagonal of x and y exchanges them.
    ExpectNear(Quat(Matrix3(Point3(0, 1, 0), Point3(1, 0, 0), Point3(0, 0, -1), Point3(0, 0, 0))),
               Quat(0.70710678f, 0.70710678f, 0.0f, 0.0f));
}

TEST(Quat, HasNoNegativeZeros) {
    const Quat q(RotateZMatrix(0.5f));
    EXPECT_FALSE(std::signbit(q.x));
    EXPECT_FALSE(std::signbit(q.y));
}

TEST(Quat, OfAMatrixWithoutRotationIsTheIdentity) {
    EXPECT_TRUE(IsIdentity(Quat(Matrix3(1))));
    EXPECT_TRUE(IsIdentity(Quat(Matrix3(0))));
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(IsIdentity(Quat(ScaleMatrix(Point3(nan, nan, nan)))));
}

TEST(AngAxis, ComesFromAQuaternion) {
    float angle = 0;
    Point3 axis(9, 9, 9);
    AngAxisFromQ(Quat(0.0f, 0.6f, 0.0f, 0.8f), &angle, axis);
    EXPECT_FLOAT_EQ(angle, static_cast<float>(2 * std::acos(double{0.8f})));
    ExpectNear(axis, Point3(0, 1, 0));
    // w is negative: more than half a turn.
    AngAxisFromQ(Quat(0.0f, 0.0f, -0.6f, -0.8f), &angle, axis);
    EXPECT_FLOAT_EQ(angle, static_cast<float>(2 * std::acos(double{-0.8f})));
    ExpectNear(axis, Point3(0, 0, -1));
}

TEST(AngAxis, OfNoRotationHasTheXAxis) {
    float angle = 9;
    Point3 axis(9, 9, 9);
    AngAxisFromQ(Quat(0.0f, 0.0f, 0.0f, 1.0f), &angle, axis);
    EXPECT_EQ(angle, 0);
    EXPECT_TRUE(axis == Point3(1, 0, 0));
    AngAxisFromQ(Quat(0.0f, 0.0f, 0.0f, -1.0f), &angle, axis);
    EXPECT_FLOAT_EQ(angle, 2 * 3.14159265f);
    EXPECT_TRUE(axis == Point3(1, 0, 0));
}

TEST(AngAxis, CutsWToOne) {
    float angle = 9;
    Point3 axis(9, 9, 9);
    AngAxisFromQ(Quat(0.0f, 1e-4f, 0.0f, 1.0000001f), &angle, axis);
    EXPECT_EQ(angle, 0);
    EXPECT_TRUE(axis == Point3(0, 1, 0));
    AngAxisFromQ(Quat(0.0f, 1e-4f, 0.0f, -1.0000001f), &angle, axis);
    EXPECT_FLOAT_EQ(angle, 2 * 3.14159265f);
}

TEST(AngAxis, IsFiniteForNumbersThatAreNot) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    float angle = 9;
    Point3 axis(9, 9, 9);
    AngAxisFromQ(Quat(nan, 0.0f, infinity, nan), &angle, axis);
    EXPECT_EQ(angle, 0);
    EXPECT_TRUE(axis == Point3(1, 0, 0));
}

// The axis and angle of a quaternion by the left-hand rule, made a quaternion again.
TEST(AngAxis, IsTheQuaternions) {
    RandomValues random;
    for (int n = 0; n < 1000; ++n) {
        const Quat q = random.UnitQuat();
        float angle = 0;
        Point3 axis;
        AngAxisFromQ(q, &angle, axis);
        const double sine = std::sin(angle / 2.0);
        ExpectNear(Quat(axis.x * sine, axis.y * sine, axis.z * sine, std::cos(angle / 2.0)), q,
                   2e-6f);
        ExpectNear(axis.Normalize(), axis);
    }
}

TEST(AffineParts, FactorsMultiplyToTheMatrix) {
    // A stretch by 2 along y, seen from axes that stand a quarter turn about z off, then a turn.
    AffineParts parts;
    parts.t = Point3(1, 2, 3);
    parts.q = Quat(RotateXMatrix(3.14159265f / 2));
    parts.u = Quat(RotateZMatrix(3.14159265f / 2));
    parts.k = Point3(2, 1, 1);
    parts.f = 1;
    const Matrix3 u = MatrixOf(parts.u);
    Matrix3 whole = Inverse(u) * ScaleMatrix(parts.k) * u * MatrixOf(parts.q) *
                    ScaleMatrix(Point3(parts.f, parts.f, parts.f)) * TransMatrix(parts.t);
    ExpectNear(whole, Matrix3(Point3(1, 0, 0), Point3(0, 0, 2), Point3(0, -1, 0), Point3(1, 2, 3)));
}
