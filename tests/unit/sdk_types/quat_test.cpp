#include <decomp.h>

#include <array>
#include <cmath>
#include <limits>

#include "tests/unit/sdk_types/support.h"

namespace {

Quat RotationAboutZ(float angle) {
    return Quat(0.0f, 0.0f, -std::sin(angle / 2), std::cos(angle / 2));
}

Matrix3 MatrixOf(const Quat& q) {
    Matrix3 matrix;
    q.MakeMatrix(matrix);
    return matrix;
}

// The textbook's matrix of a unit quaternion for column vectors, element by element.
Matrix3 TextbookMatrix(const Quat& q) {
    const double x = q.x, y = q.y, z = q.z, w = q.w;
    return Matrix3(Point3(w * w + x * x - y * y - z * z, 2 * (x * y - w * z), 2 * (x * z + w * y)),
                   Point3(2 * (x * y + w * z), w * w - x * x + y * y - z * z, 2 * (y * z - w * x)),
                   Point3(2 * (x * z - w * y), 2 * (y * z + w * x), w * w - x * x - y * y + z * z),
                   Point3(0, 0, 0));
}

// One of q and -q.
Quat WithPositiveW(const Quat& q) {
    return q.w < 0 ? -q : q;
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

TEST(Quat, MatrixIsTheTextbooksColumnVectorMatrix) {
    RandomValues random;
    for (int n = 0; n < 1000; ++n) {
        const Quat q = random.UnitQuat();
        ExpectNear(MatrixOf(q), TextbookMatrix(q));
    }
}

TEST(Quat, MatrixDoesNotDependOnTheLength) {
    const Quat q(1.0f, -2.0f, 3.0f, 4.0f);
    Quat unit = q;
    unit.Normalize();
    ExpectNear(MatrixOf(q), MatrixOf(unit));
    EXPECT_TRUE(MatrixOf(Quat(0.0f, 0.0f, 0.0f, 0.0f)).IsIdentity());
    EXPECT_TRUE(MatrixOf(IdentQuat()).IsIdentity());
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
    EXPECT_TRUE(Quat(Matrix3(1)).IsIdentity());
    EXPECT_TRUE(Quat(Matrix3(0)).IsIdentity());
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(Quat(ScaleMatrix(Point3(nan, nan, nan))).IsIdentity());
}

TEST(Quat, ProductIsHamiltons) {
    const Quat i(1.0f, 0.0f, 0.0f, 0.0f), j(0.0f, 1.0f, 0.0f, 0.0f), k(0.0f, 0.0f, 1.0f, 0.0f);
    EXPECT_TRUE(i * j == k);
    EXPECT_TRUE(j * k == i);
    EXPECT_TRUE(k * i == j);
    EXPECT_TRUE(j * i == -k);
    EXPECT_TRUE(i * i == Quat(0.0f, 0.0f, 0.0f, -1.0f));
    EXPECT_TRUE(Quat(1.0f, 2.0f, 3.0f, 4.0f) * Quat(5.0f, 6.0f, 7.0f, 8.0f) ==
                Quat(24.0f, 48.0f, 48.0f, -6.0f));
}

TEST(Quat, ProductAppliesTheLeftOneFirst) {
    RandomValues random;
    for (int n = 0; n < 1000; ++n) {
        const Quat p = random.UnitQuat();
        const Quat q = random.UnitQuat();
        ExpectNear(MatrixOf(p * q), MatrixOf(p) * MatrixOf(q), 2e-6f);
    }
    Quat product = Quat(RotateZMatrix(0.4f));
    product *= Quat(RotateXMatrix(0.7f));
    ExpectNear(MatrixOf(product), RotateZMatrix(0.4f) * RotateXMatrix(0.7f));
}

TEST(Quat, Inverts) {
    Quat q(RotateYMatrix(0.6f));
    ExpectNear(Inverse(q), Quat(RotateYMatrix(-0.6f)));
    ExpectNear(Quat(q).Invert() * q, IdentQuat());
    const Quat longer(1.0f, 2.0f, 3.0f, 4.0f);
    ExpectNear(Inverse(longer) * longer, IdentQuat());
    ExpectNear(Inverse(longer), Quat(-1 / 30.0, -2 / 30.0, -3 / 30.0, 4 / 30.0));
    EXPECT_TRUE(Inverse(Quat(0.0f, 0.0f, 0.0f, 0.0f)).IsIdentity());
}

TEST(Quat, Normalizes) {
    Quat q(1.0f, 3.0f, 5.0f, 1.0f);
    EXPECT_EQ(&q.Normalize(), &q);
    ExpectNear(q, Quat(1 / 6.0, 3 / 6.0, 5 / 6.0, 1 / 6.0));
    ExpectNear(Normalize(Quat(0.0f, 3e-30f, 4e-30f, 0.0f)), Quat(0.0f, 0.6f, 0.8f, 0.0f));
    EXPECT_TRUE(Normalize(Quat(0.0f, 0.0f, 0.0f, 0.0f)).IsIdentity());
}

TEST(Quat, IndexesItsComponents) {
    Quat q(1.0f, 2.0f, 3.0f, 4.0f);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(q[i], i + 1);
    q[3] = 9;
    EXPECT_EQ(q.w, 9);
    EXPECT_TRUE(q.Identity() == IdentQuat());
    EXPECT_TRUE(q.IsIdentity());
}

TEST(Quat, ComparesWithinATolerance) {
    const Quat q(0.1f, 0.2f, 0.3f, 0.4f);
    EXPECT_TRUE(q.Equals(Quat(0.1f, 0.2f, 0.3f, 0.4000005f)));
    EXPECT_FALSE(q.Equals(Quat(0.1f, 0.2f, 0.3f, 0.40001f)));
    EXPECT_TRUE(q.Equals(Quat(0.1f, 0.2f, 0.3f, 0.45f), 0.1f));
    EXPECT_FALSE(q.Equals(-q));
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
    AngAxisFromQ(IdentQuat(), &angle, axis);
    EXPECT_EQ(angle, 0);
    EXPECT_TRUE(axis == Point3(1, 0, 0));
    AngAxisFromQ(Quat(0.0f, 0.0f, 0.0f, -1.0f), &angle, axis);
    EXPECT_FLOAT_EQ(angle, 2 * kPi);
    EXPECT_TRUE(axis == Point3(1, 0, 0));
}

TEST(AngAxis, CutsWToOne) {
    float angle = 9;
    Point3 axis(9, 9, 9);
    AngAxisFromQ(Quat(0.0f, 1e-4f, 0.0f, 1.0000001f), &angle, axis);
    EXPECT_EQ(angle, 0);
    EXPECT_TRUE(axis == Point3(0, 1, 0));
    AngAxisFromQ(Quat(0.0f, 1e-4f, 0.0f, -1.0000001f), &angle, axis);
    EXPECT_FLOAT_EQ(angle, 2 * kPi);
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

TEST(AngAxis, IsLeftHandedLikeTheQuaternion) {
    // A right-handed turn about z is a left-handed one about -z.
    const AngAxis turn{Quat(RotateZMatrix(0.5f))};
    EXPECT_FLOAT_EQ(turn.angle, 0.5f);
    ExpectNear(turn.axis, Point3(0, 0, -1));
    ExpectNear(QFromAngAxis(0.5f, Point3(0, 0, -1)), Quat(RotateZMatrix(0.5f)));
    ExpectNear(Quat(AngAxis(Point3(0, 0, 1), -0.5f)), Quat(RotateZMatrix(0.5f)));
}

TEST(AngAxis, RoundTrips) {
    RandomValues random;
    for (int n = 0; n < 1000; ++n) {
        const Quat q = random.UnitQuat();
        float angle = 0;
        Point3 axis;
        AngAxisFromQ(q, &angle, axis);
        EXPECT_NEAR(axis.Length(), 1, 1e-6f);
        ExpectNear(QFromAngAxis(angle, axis), q, 2e-6f);
    }
}

TEST(AngAxis, TakesAnyAxisAndMoreThanATurn) {
    ExpectNear(QFromAngAxis(1, Point3(0, 0, 7)), QFromAngAxis(1, Point3(0, 0, 1)));
    EXPECT_TRUE(QFromAngAxis(1, Point3(0, 0, 0)).IsIdentity());
    ExpectNear(QFromAngAxis(3 * kPi, Point3(0, 1, 0)), Quat(0.0f, -1.0f, 0.0f, 0.0f));
}

TEST(RotateMatrix, MultipliesFromTheRight) {
    const Matrix3 m = ScaleMatrix(Point3(1, 2, 3)) * TransMatrix(Point3(4, 5, 6));
    const Quat q(RotateXMatrix(0.8f));
    Matrix3 turned = m;
    RotateMatrix(turned, q);
    ExpectNear(turned, m * RotateXMatrix(0.8f), 1e-5f);
    turned = m;
    RotateMatrix(turned, AngAxis(Point3(-1, 0, 0), 0.8f));
    ExpectNear(turned, m * RotateXMatrix(0.8f), 1e-5f);
}

TEST(RotateMatrix, PreMultipliesFromTheLeft) {
    const Matrix3 m = ScaleMatrix(Point3(1, 2, 3)) * TransMatrix(Point3(4, 5, 6));
    const Quat q(RotateXMatrix(0.8f));
    Matrix3 turned = m;
    PreRotateMatrix(turned, q);
    ExpectNear(turned, RotateXMatrix(0.8f) * m, 1e-5f);
    turned = m;
    PreRotateMatrix(turned, AngAxis(Point3(-1, 0, 0), 0.8f));
    ExpectNear(turned, RotateXMatrix(0.8f) * m, 1e-5f);
}

TEST(AffineParts, FactorsMultiplyToTheMatrix) {
    // A stretch by 2 along y, seen from axes that stand a quarter turn about z off, then a turn.
    AffineParts parts;
    parts.t = Point3(1, 2, 3);
    parts.q = Quat(RotateXMatrix(kPi / 2));
    parts.u = Quat(RotateZMatrix(kPi / 2));
    parts.k = Point3(2, 1, 1);
    parts.f = 1;
    const Matrix3 u = MatrixOf(parts.u);
    Matrix3 whole = Inverse(u) * ScaleMatrix(parts.k) * u * MatrixOf(parts.q) *
                    ScaleMatrix(Point3(parts.f, parts.f, parts.f)) * TransMatrix(parts.t);
    ExpectNear(whole, Matrix3(Point3(1, 0, 0), Point3(0, 0, 2), Point3(0, -1, 0), Point3(1, 2, 3)));
}
