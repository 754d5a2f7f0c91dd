#include <cmath>
#include <limits>

#include "tests/support/sdk_values.h"

namespace {

const Point3 kOrigin(0, 0, 0);

Matrix3 AnyMatrix() {
    return Matrix3(Point3(1, 2, 3), Point3(0, 1, 4), Point3(5, 6, 0), Point3(7, 8, 9));
}

bool IsIdentity(const Matrix3& matrix) {
    return IsTruly(matrix, Matrix3(Point3(1, 0, 0), Point3(0, 1, 0), Point3(0, 0, 1), kOrigin));
}

}  // namespace

TEST(Matrix3, IsIdentityOrZero) {
    EXPECT_TRUE(IsIdentity(Matrix3(1)));
    const Matrix3 zero(0);
    for (int i = 0; i < 4; ++i)
        EXPECT_TRUE(zero.GetRow(i) == kOrigin);
    EXPECT_TRUE(IsTruly(Matrix3(), zero));
}

TEST(Matrix3, HasRows) {
    Matrix3 m = AnyMatrix();
    EXPECT_TRUE(m.GetRow(0) == Point3(1, 2, 3));
    EXPECT_TRUE(m.GetRow(2) == Point3(5, 6, 0));
    EXPECT_TRUE(m.GetTrans() == Point3(7, 8, 9));
    m.NoTrans();
    EXPECT_TRUE(m.GetTrans() == kOrigin);
    EXPECT_TRUE(m.GetRow(2) == Point3(5, 6, 0));
}

TEST(Matrix3, ProductAppliesTheLeftOneFirst) {
    const Matrix3 turn = RotateZMatrix(1.5707963f);
    const Matrix3 move = TransMatrix(Point3(10, 0, 0));
    ExpectNear((turn * move) * Point3(1, 0, 0), Point3(10, 1, 0));
    ExpectNear((move * turn) * Point3(1, 0, 0), Point3(0, 11, 0));
}

TEST(Matrix3, ProductMatchesTheElementwiseFormula) {
    const Matrix3 b(Point3(2, 0, 1), Point3(1, 3, 0), Point3(0, 1, 4), Point3(-1, -2, -3));
    EXPECT_TRUE(IsTruly(AnyMatrix() * b, Matrix3(Point3(4, 9, 13), Point3(1, 7, 16),
                                                 Point3(16, 18, 5), Point3(21, 31, 40))));
}

TEST(Matrix3, ProductSumsInDouble) {
    const Matrix3 a(Point3(1e8f, 1.0f, -1e8f), Point3(0, 1, 0), Point3(0, 0, 1), kOrigin);
    const Matrix3 b(Point3(1, 0, 0), Point3(1, 1, 0), Point3(1, 0, 1), kOrigin);
    EXPECT_EQ((a * b).GetRow(0).x, 1.0f);
}

TEST(Matrix3, TransformsPointsAndVectors) {
    const Matrix3 m = AnyMatrix();
    const Point3 p(1, -1, 2);
    const Point3 image(18, 21, 8), turned(11, 13, -1);
    EXPECT_TRUE(m * p == image);
    EXPECT_TRUE(VectorTransform(m, p) == turned);
}

TEST(Matrix3, InvertsByHandComputedNumbers) {
    EXPECT_TRUE(IsTruly(Inverse(AnyMatrix()), Matrix3(Point3(-24, 18, 5), Point3(20, -15, -4),
                                                      Point3(-5, 4, 1), Point3(53, -42, -12))));
}

TEST(Matrix3, InvertsRandomMatrices) {
    RandomValues random;
    for (int n = 0; n < 1000; ++n) {
        const Matrix3 first = MatrixOf(random.UnitQuat()), last = MatrixOf(random.UnitQuat());
        const float sign = n % 2 ? -1.0f : 1.0f;
        const float x = random.Between(0.5f, 2), y = random.Between(0.5f, 2);
        const Matrix3 scale = ScaleMatrix(Point3(sign * x, y, random.Between(0.5f, 2)));
        const Matrix3 m = WithTranslation(first * scale * last, random.Vector(10));
        ExpectNear(m * Inverse(m), Matrix3(1), 2e-5f);
        ExpectNear(Inverse(m) * m, Matrix3(1), 2e-5f);
    }
}

TEST(Matrix3, InvertsVerySmallAndVeryLargeScales) {
    EXPECT_TRUE(IsTruly(Inverse(ScaleMatrix(Point3(1e-30f, 1e-30f, 1e-30f))),
                        ScaleMatrix(Point3(1e30f, 1e30f, 1e30f))));
    EXPECT_TRUE(IsTruly(Inverse(ScaleMatrix(Point3(1e30f, 1.0f, 1e-30f))),
                        ScaleMatrix(Point3(1e-30f, 1.0f, 1e30f))));
}

TEST(Matrix3, InverseOfASingularMatrixIsTheIdentity) {
    EXPECT_TRUE(IsIdentity(Inverse(Matrix3(0))));
    EXPECT_TRUE(IsIdentity(Inverse(ScaleMatrix(Point3(1, 1, 0)))));
    // The third row is the sum of the others, exactly; double cannot hold the products, though.
    const Point3 a(-7338669, 74742, 4537634), b(7181548, -2393010, -2202045);
    const Matrix3 flat(a, b, a + b, Point3(1, 2, 3));
    ASSERT_TRUE(flat.GetRow(2) - b == a);
    EXPECT_TRUE(IsIdentity(Inverse(flat)));
}

TEST(Matrix3, InverseThatIsNotFiniteIsTheIdentity) {
    const float infinity = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(IsIdentity(Inverse(ScaleMatrix(Point3(1e-40f, 1.0f, 1.0f)))));
    EXPECT_TRUE(IsIdentity(Inverse(ScaleMatrix(Point3(nan, 1.0f, 1.0f)))));
    EXPECT_TRUE(IsIdentity(Inverse(ScaleMatrix(Point3(infinity, 1.0f, 1.0f)))));
    EXPECT_TRUE(IsIdentity(Inverse(TransMatrix(Point3(infinity, 1.0f, 1.0f)))));
    const Matrix3 small = ScaleMatrix(Point3(1e-10f, 1e-10f, 1e-10f));
    EXPECT_TRUE(IsIdentity(Inverse(WithTranslation(small, Point3(3e38f, 0.0f, 0.0f)))));
}

TEST(Matrix3, NoScaleGivesEveryAxisLengthOne) {
    Matrix3 m(Point3(0, -5, 0), Point3(3, 4, 0), Point3(0, 0, 0), Point3(7, 8, 9));
    m.NoScale();
    ExpectNear(
        m, Matrix3(Point3(0, -1, 0), Point3(0.6f, 0.8f, 0.0f), Point3(0, 0, 0), Point3(7, 8, 9)));
    Matrix3 mirrored = ScaleMatrix(Point3(-2, 3, 4));
    mirrored.NoScale();
    EXPECT_TRUE(IsTruly(mirrored, ScaleMatrix(Point3(-1, 1, 1))));
}
