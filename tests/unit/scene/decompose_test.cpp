#include "scene/decompose.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "tests/support/sdk_values.h"

namespace {

constexpr float kQuarter = 1.57079632679f;

Point3 P(float x, float y, float z) {
    return Point3(x, y, z);
}

Matrix3 FromRows(Point3 a, Point3 b, Point3 c, Point3 t = P(0, 0, 0)) {
    return Matrix3(a, b, c, t);
}

// (inverse(u) * diag(k) * u) * f * q * t, by the SDK's own conversions.
Matrix3 Recompose(const AffineParts& parts) {
    const Matrix3 u = MatrixOf(parts.u);
    const Matrix3 sign = ScaleMatrix(P(parts.f, parts.f, parts.f));
    return WithTranslation(Inverse(u) * ScaleMatrix(parts.k) * u * sign * MatrixOf(parts.q),
                           parts.t);
}

float LargestElement(const Matrix3& m) {
    float largest = 0;
    for (int i = 0; i < 3; ++i) {
        const Point3 row = m.GetRow(i);
        largest = std::max({largest, std::fabs(row.x), std::fabs(row.y), std::fabs(row.z)});
    }
    return largest;
}

void ExpectMultipliesBack(const Matrix3& matrix) {
    AffineParts parts;
    DecomposeTransform(matrix, parts);
    const Matrix3 again = Recompose(parts);
    const float tolerance = 4e-6f * LargestElement(matrix);
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            EXPECT_NEAR(again.GetRow(i)[j], matrix.GetRow(i)[j], tolerance)
                << "row " << i << " column " << j;
        }
    }
    const Point3 t = matrix.GetTrans();
    EXPECT_EQ(parts.t.x, t.x);
    EXPECT_EQ(parts.t.y, t.y);
    EXPECT_EQ(parts.t.z, t.z);
    EXPECT_NEAR(parts.q.x * parts.q.x + parts.q.y * parts.q.y + parts.q.z * parts.q.z +
                    parts.q.w * parts.q.w,
                1.0, 1e-5);
    EXPECT_GE(std::min({parts.k.x, parts.k.y, parts.k.z}), -tolerance);
    EXPECT_TRUE(parts.f == 1.0f || parts.f == -1.0f);
}

void ExpectQuat(const Quat& q, float x, float y, float z, float w) {
    EXPECT_NEAR(q.x, x, 1e-6);
    EXPECT_NEAR(q.y, y, 1e-6);
    EXPECT_NEAR(q.z, z, 1e-6);
    EXPECT_NEAR(q.w, w, 1e-6);
}

class RandomMatrices {
  public:
    Point3 Vector() { return P(Number(), Number(), Number()); }
    float Number() { return distribution_(engine_); }
    Matrix3 Any() { return FromRows(Vector(), Vector(), Vector(), Vector()); }

  private:
    std::mt19937 engine_{20120406};
    std::uniform_real_distribution<float> distribution_{-10.0f, 10.0f};
};

TEST(Decompose, IdentityIsExact) {
    AffineParts parts;
    DecomposeTransform(Matrix3(TRUE), parts);
    for (const Quat& q : {parts.q, parts.u}) {
        EXPECT_EQ(q.x, 0.0f);
        EXPECT_EQ(q.y, 0.0f);
        EXPECT_EQ(q.z, 0.0f);
        EXPECT_EQ(q.w, 1.0f);
        EXPECT_FALSE(std::signbit(q.x));
    }
    EXPECT_EQ(parts.k.x, 1.0f);
    EXPECT_EQ(parts.k.y, 1.0f);
    EXPECT_EQ(parts.k.z, 1.0f);
    EXPECT_EQ(parts.f, 1.0f);
}

TEST(Decompose, QuarterTurnAboutZFollowsTheSdksQuaternionRule) {
    AffineParts parts;
    DecomposeTransform(FromRows(P(0, 1, 0), P(-1, 0, 0), P(0, 0, 1)), parts);
    ExpectQuat(parts.q, 0, 0, -0.70710678f, 0.70710678f);
    ExpectQuat(parts.u, 0, 0, 0, 1);
    EXPECT_EQ(parts.f, 1.0f);
}

TEST(Decompose, FileQuaternionIsARightHandedRotationInTheFilesAxes) {
    // The file exchanges y and z. A quarter turn about 3ds Max's z takes x to y; in the file's axes
    // it takes (1,0,0) to (0,0,1), which is the right-handed rotation by -90 degrees about (0,1,0).
    AffineParts parts;
    DecomposeTransform(RotateZMatrix(kQuarter), parts);
    const double x = parts.q.x, y = parts.q.z, z = parts.q.y, w = parts.q.w;  // as stored
    // First column of the right-handed rotation matrix of (x, y, z, w): where (1,0,0) goes.
    EXPECT_NEAR(1 - 2 * (y * y + z * z), 0, 1e-6);
    EXPECT_NEAR(2 * (x * y + w * z), 0, 1e-6);
    EXPECT_NEAR(2 * (x * z - w * y), 1, 1e-6);
}

TEST(Decompose, RotatedAndAxisScaledPoseIsGivenBackFromTheRecordsFields) {
    Matrix3 local =
        ScaleMatrix(P(2, 3, 5)) * RotateXMatrix(0.3f) * RotateYMatrix(-1.1f) * RotateZMatrix(2.0f);
    AffineParts parts;
    DecomposeTransform(local, parts);
    // The values as the file holds them, in the file's axes.
    const double q[4] = {parts.q.x, parts.q.z, parts.q.y, parts.q.w};
    const double k[3] = {parts.k.x, parts.k.z, parts.k.y};
    const double x = q[0], y = q[1], z = q[2], w = q[3];
    const double r[3][3] = {// column-vector rotation matrix, right-hand rule
                            {1 - 2 * (y * y + z * z), 2 * (x * y - w * z), 2 * (x * z + w * y)},
                            {2 * (x * y + w * z), 1 - 2 * (x * x + z * z), 2 * (y * z - w * x)},
                            {2 * (x * z - w * y), 2 * (y * z + w * x), 1 - 2 * (x * x + y * y)}};
    const int axis[3] = {0, 2, 1};
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            // Row-vector matrix: scale first, then the rotation's transpose.
            EXPECT_NEAR(k[i] * r[j][i], local.GetRow(axis[i])[axis[j]], 1e-5);
        }
    }
}

TEST(Decompose, RandomMatricesMultiplyBack) {
    RandomMatrices random;
    for (int i = 0; i < 2000; ++i) {
        ExpectMultipliesBack(random.Any());
    }
}

TEST(Decompose, MirroredMatricesMultiplyBackWithNegativeSign) {
    RandomMatrices random;
    for (int i = 0; i < 500; ++i) {
        Matrix3 m = random.Any();
        const bool mirrored = Determinant(m) < 0;
        AffineParts parts;
        DecomposeTransform(m, parts);
        EXPECT_EQ(parts.f, mirrored ? -1.0f : 1.0f);
    }
    AffineParts parts;
    DecomposeTransform(ScaleMatrix(P(-1, 1, 1)), parts);
    EXPECT_EQ(parts.f, -1.0f);
    ExpectMultipliesBack(ScaleMatrix(P(-1, 1, 1)));
    ExpectMultipliesBack(ScaleMatrix(P(-2, -3, -4)));
}

TEST(Decompose, ShearedMatricesMultiplyBack) {
    RandomMatrices random;
    for (int i = 0; i < 500; ++i) {
        const Matrix3 shear =
            FromRows(P(1, random.Number(), random.Number()), P(0, 1, random.Number()), P(0, 0, 1));
        ExpectMultipliesBack(shear * RotateXMatrix(random.Number()));
    }
}

TEST(Decompose, FlatMatricesMultiplyBack) {
    ExpectMultipliesBack(ScaleMatrix(P(1, 1, 0)));
    ExpectMultipliesBack(ScaleMatrix(P(-1, 1, 0)));
    ExpectMultipliesBack(ScaleMatrix(P(0, 2, 3)));
    RandomMatrices random;
    for (int i = 0; i < 500; ++i) {
        ExpectMultipliesBack(ScaleMatrix(P(random.Number(), random.Number(), 0)) *
                             RotateXMatrix(random.Number()) * RotateYMatrix(random.Number()));
        const Point3 a = random.Vector(), b = random.Vector();
        ExpectMultipliesBack(FromRows(a, b, a + b));
        ExpectMultipliesBack(FromRows(a, b, a));
    }
}

TEST(Decompose, SingularMatricesAreNotMirroring) {
    RandomMatrices random;
    for (int i = 0; i < 20000; ++i) {
        const Point3 a = random.Vector(), c = random.Vector();
        for (const Matrix3& m : {FromRows(a, a, c), FromRows(a, c, a * -2.0f)}) {
            AffineParts parts;
            DecomposeTransform(m, parts);
            ASSERT_EQ(parts.f, 1.0f);
        }
    }
}

TEST(Decompose, NearlyFlatMatricesKeepTheirSign) {
    for (const float thickness : {1e-3f, 1e-10f, 1e-30f}) {
        AffineParts parts;
        DecomposeTransform(FromRows(P(1, 0, 0), P(1, thickness, 0), P(0, 0, -1)), parts);
        EXPECT_EQ(parts.f, -1.0f) << thickness;
        DecomposeTransform(FromRows(P(1, 0, 0), P(1, thickness, 0), P(0, 0, 1)), parts);
        EXPECT_EQ(parts.f, 1.0f) << thickness;
    }
}

TEST(Decompose, RankOneAndZeroMultiplyBack) {
    ExpectMultipliesBack(Matrix3(FALSE));
    ExpectMultipliesBack(ScaleMatrix(P(0, 0, 3)));
    ExpectMultipliesBack(ScaleMatrix(P(0, -3, 0)));
    RandomMatrices random;
    for (int i = 0; i < 500; ++i) {
        const Point3 a = random.Vector();
        ExpectMultipliesBack(FromRows(a * 2.0f, a * -3.0f, a));
        ExpectMultipliesBack(FromRows(P(0, 0, 0), a, P(0, 0, 0)));
        ExpectMultipliesBack(FromRows(a * random.Number(), a * random.Number(), a));
    }
}

TEST(Decompose, ExtremeMagnitudesMultiplyBack) {
    RandomMatrices random;
    for (const float magnitude : {1e-30f, 1e-12f, 1e12f, 1e30f}) {
        for (int i = 0; i < 50; ++i) {
            const Matrix3 m = random.Any();
            ExpectMultipliesBack(FromRows(m.GetRow(0) * magnitude, m.GetRow(1) * magnitude,
                                          m.GetRow(2) * magnitude));
        }
    }
}

TEST(Decompose, NonFiniteMatricesEndAndKeepTheirTranslation) {
    AffineParts parts;
    for (const float bad : {INFINITY, -INFINITY, NAN}) {
        DecomposeTransform(FromRows(P(bad, 0, 0), P(0, bad, 0), P(1, 2, 3), P(4, 5, 6)), parts);
        EXPECT_EQ(parts.t.x, 4.0f);
        EXPECT_EQ(parts.t.z, 6.0f);
    }
}

TEST(Decompose, AxisScaleKeepsItsAxesAndOrder) {
    const float factors[][3] = {{2, 3, 5}, {5, 3, 2}, {3, 5, 2}, {4, 4, 9}, {9, 4, 4}, {4, 9, 4}};
    for (const auto& k : factors) {
        AffineParts parts;
        DecomposeTransform(ScaleMatrix(P(k[0], k[1], k[2])) * RotateYMatrix(0.7f), parts);
        EXPECT_NEAR(parts.k.x, k[0], 1e-5);
        EXPECT_NEAR(parts.k.y, k[1], 1e-5);
        EXPECT_NEAR(parts.k.z, k[2], 1e-5);
        EXPECT_NEAR(std::fabs(parts.u.w), 1, 1e-5);
    }
}

TEST(Decompose, StretchRotationIsTheSmallestOne) {
    // Of the 24 ways to assign three different factors to axes, the smallest turn of the stretch
    // axes never exceeds 62.8 degrees (the farthest any rotation lies from the cube's symmetries).
    RandomMatrices random;
    for (int i = 0; i < 2000; ++i) {
        AffineParts parts;
        DecomposeTransform(random.Any(), parts);
        EXPECT_LE(2 * std::acos(std::min(1.0f, std::fabs(parts.u.w))), 1.0965f);
    }
}

TEST(Decompose, StretchAlongADiagonalIsTurnedByItsAngle) {
    // Stretched by 4 along the direction 30 degrees from x in the xy plane.
    const float angle = kQuarter / 3;
    const Matrix3 turn = RotateZMatrix(angle);
    AffineParts parts;
    DecomposeTransform(Inverse(turn) * ScaleMatrix(P(4, 2, 1)) * turn, parts);
    EXPECT_NEAR(parts.k.x, 4, 1e-5);
    EXPECT_NEAR(parts.k.y, 2, 1e-5);
    EXPECT_NEAR(parts.k.z, 1, 1e-5);
    EXPECT_NEAR(std::fabs(parts.u.z), std::sin(angle / 2), 1e-5);
    ExpectMultipliesBack(Inverse(turn) * ScaleMatrix(P(4, 2, 1)) * turn);
}

// Stretched by 3 and 1 along the diagonals of the xz plane, which lie equally near to both axes:
// the factor for z is the one that the published order of Jacobi rotations puts there.
TEST(Decompose, StretchHalfwayBetweenTwoAxes) {
    const Matrix3 matrix(P(2, 0, 1), P(0, 5, 0), P(1, 0, 2), P(0, 0, 0));
    AffineParts parts;
    DecomposeTransform(matrix, parts);
    EXPECT_NEAR(parts.k.x, 1, 1e-5);
    EXPECT_NEAR(parts.k.y, 5, 1e-5);
    EXPECT_NEAR(parts.k.z, 3, 1e-5);
    ExpectMultipliesBack(matrix);
}

}  // namespace
