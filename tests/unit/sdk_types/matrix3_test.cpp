#include <cmath>
#include <limits>

#include "tests/unit/sdk_types/support.h"

namespace {

const Point3 kOrigin(0, 0, 0);

Matrix3 AnyMatrix() {
    return Matrix3(Point3(1, 2, 3), Point3(0, 1, 4), Point3(5, 6, 0), Point3(7, 8, 9));
}

bool IsTruly(const Matrix3& matrix, const Matrix3& expected) {
    return matrix.Equals(expected, 0);
}

}  // namespace

TEST(Matrix3, IsIdentityOrZero) {
    const Matrix3 identity(1);
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 3; ++j)
            EXPECT_EQ(identity.GetAddr()[i][j], i == j ? 1 : 0);
    }
    EXPECT_TRUE(identity.IsIdentity());
    const Matrix3 zero(0);
    for (int i = 0; i < 4; ++i)
        EXPECT_TRUE(zero.GetRow(i) == kOrigin);
    EXPECT_FALSE(zero.IsIdentity());
    EXPECT_FALSE(Matrix3().IsIdentity());
}

TEST(Matrix3, HasRowsAndColumns) {
    const Matrix3 m = AnyMatrix();
    EXPECT_TRUE(m.GetRow(0) == Point3(1, 2, 3));
    EXPECT_TRUE(m.GetRow(2) == Point3(5, 6, 0));
    EXPECT_TRUE(m.GetTrans() == Point3(7, 8, 9));
    EXPECT_TRUE(m.GetColumn(0) == Point4(1, 0, 5, 7));
    EXPECT_TRUE(m.GetColumn(2) == Point4(3, 4, 0, 9));
    EXPECT_EQ(m.GetAddr()[1][2], 4);
}

TEST(Matrix3, SetsRows) {
    Matrix3 m(1);
    m.SetRow(1, Point3(2, 3, 4));
    m.SetTrans(Point3(5, 6, 7));
    EXPECT_TRUE(
        IsTruly(m, Matrix3(Point3(1, 0, 0), Point3(2, 3, 4), Point3(0, 0, 1), Point3(5, 6, 7))));
    m.NoTrans();
    EXPECT_TRUE(m.GetTrans() == kOrigin);
    m.IdentityMatrix();
    EXPECT_TRUE(IsTruly(m, Matrix3(1)));
    m.Zero();
    EXPECT_TRUE(IsTruly(m, Matrix3(0)));
}

TEST(Matrix3, RotatesByTheRightHandRule) {
    const float quarter = kPi / 2;
    EXPECT_TRUE(RotateZMatrix(quarter).Equals(
        Matrix3(Point3(0, 1, 0), Point3(-1, 0, 0), Point3(0, 0, 1), kOrigin)));
    ExpectNear(Point3(1, 0, 0) * RotateZMatrix(quarter), Point3(0, 1, 0));
    ExpectNear(Point3(0, 1, 0) * RotateXMatrix(quarter), Point3(0, 0, 1));
    ExpectNear(Point3(0, 0, 1) * RotateYMatrix(quarter), Point3(1, 0, 0));
}

TEST(Matrix3, RotationsAreSinesAndCosinesOfDoublesRoundedOnce) {
    const float angle = 0.7f;
    EXPECT_EQ(RotateXMatrix(angle).GetAddr()[1][2], static_cast<float>(std::sin(double{angle})));
    EXPECT_EQ(RotateXMatrix(angle).GetAddr()[2][1], -static_cast<float>(std::sin(double{angle})));
    EXPECT_EQ(RotateYMatrix(angle).GetAddr()[2][2], static_cast<float>(std::cos(double{angle})));
}

TEST(Matrix3, ProductAppliesTheLeftOneFirst) {
    const Matrix3 turn = RotateZMatrix(kPi / 2);
    const Matrix3 move = TransMatrix(Point3(10, 0, 0));
    ExpectNear(Point3(1, 0, 0) * (turn * move), Point3(10, 1, 0));
    ExpectNear(Point3(1, 0, 0) * (move * turn), Point3(0, 11, 0));
    Matrix3 product = turn;
    product *= move;
    EXPECT_TRUE(IsTruly(product, turn * move));
}

TEST(Matrix3, ProductMatchesTheElementwiseFormula) {
    const Matrix3 b(Point3(2, 0, 1), Point3(1, 3, 0), Point3(0, 1, 4), Point3(-1, -2, -3));
    EXPECT_TRUE(IsTruly(AnyMatrix() * b, Matrix3(Point3(4, 9, 13), Point3(1, 7, 16),
                                                 Point3(16, 18, 5), Point3(21, 31, 40))));
}

TEST(Matrix3, ProductSumsInDouble) {
    Matrix3 a(1), b(1);
    a.SetRow(0, Point3(1e8f, 1.0f, -1e8f));
    b.SetRow(0, Point3(1, 0, 0));
    b.SetRow(1, Point3(1, 1, 0));
    b.SetRow(2, Point3(1, 0, 1));
    EXPECT_EQ((a * b).GetRow(0).x, 1.0f);
}

TEST(Matrix3, TransformsPointsAndVectors) {
    const Matrix3 m = AnyMatrix();
    const Point3 p(1, -1, 2);
    const Point3 image(18, 21, 8), turned(11, 13, -1);
    EXPECT_TRUE(p * m == image);
    EXPECT_TRUE(m * p == image);
    EXPECT_TRUE(m.PointTransform(p) == image);
    EXPECT_TRUE(VectorTransform(m, p) == turned);
    EXPECT_TRUE(m.VectorTransform(p) == turned);
}

TEST(Matrix3, ChangesFromTheRight) {
    const Matrix3 m = AnyMatrix();
    const Point3 v(2, 3, 4);
    Matrix3 changed = m;
    changed.Translate(v);
    EXPECT_TRUE(IsTruly(changed, m * TransMatrix(v)));
    changed = m;
    changed.RotateX(0.3f);
    changed.RotateY(0.4f);
    changed.RotateZ(0.5f);
    EXPECT_TRUE(
        IsTruly(changed, m * RotateXMatrix(0.3f) * RotateYMatrix(0.4f) * RotateZMatrix(0.5f)));
    changed = m;
    changed.Scale(v, TRUE);
    EXPECT_TRUE(IsTruly(changed, m * ScaleMatrix(v)));
    changed = m;
    changed.Scale(v);
    EXPECT_TRUE(changed.GetRow(0) == Point3(2, 6, 12));
    EXPECT_TRUE(changed.GetTrans() == m.GetTrans());
}

TEST(Matrix3, ChangesFromTheLeft) {
    const Matrix3 m = AnyMatrix();
    const Point3 v(2, 3, 4);
    Matrix3 changed = m;
    changed.PreTranslate(v);
    EXPECT_TRUE(IsTruly(changed, TransMatrix(v) * m));
    changed = m;
    changed.PreRotateX(0.3f);
    EXPECT_TRUE(IsTruly(changed, RotateXMatrix(0.3f) * m));
    changed.PreRotateY(0.4f);
    changed.PreRotateZ(0.5f);
    EXPECT_TRUE(
        IsTruly(changed, RotateZMatrix(0.5f) * (RotateYMatrix(0.4f) * (RotateXMatrix(0.3f) * m))));
    changed = m;
    changed.PreScale(v);
    EXPECT_TRUE(IsTruly(changed, ScaleMatrix(v) * m));
    EXPECT_TRUE(changed.GetTrans() == m.GetTrans());
}

TEST(Matrix3, InvertsByHandComputedNumbers) {
    Matrix3 inverse = AnyMatrix();
    inverse.Invert();
    EXPECT_TRUE(IsTruly(inverse, Matrix3(Point3(-24, 18, 5), Point3(20, -15, -4), Point3(-5, 4, 1),
                                         Point3(53, -42, -12))));
}

TEST(Matrix3, InvertsRandomMatrices) {
    RandomValues random;
    for (int n = 0; n < 1000; ++n) {
        Matrix3 m;
        random.UnitQuat().MakeMatrix(m);
        Matrix3 turn;
        random.UnitQuat().MakeMatrix(turn);
        const float sign = n % 2 ? -1.0f : 1.0f;
        const float x = random.Between(0.5f, 2), y = random.Between(0.5f, 2);
        m = m * ScaleMatrix(Point3(sign * x, y, random.Between(0.5f, 2))) * turn;
        m.SetTrans(random.Vector(10));
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
    EXPECT_TRUE(Inverse(Matrix3(0)).IsIdentity());
    EXPECT_TRUE(Inverse(ScaleMatrix(Point3(1, 1, 0))).IsIdentity());
    // The third row is the sum of the others, exactly; double cannot hold the products, though.
    const Point3 a(-7338669, 74742, 4537634), b(7181548, -2393010, -2202045);
    Matrix3 flat(a, b, a + b, Point3(1, 2, 3));
    ASSERT_TRUE(flat.GetRow(2) - b == a);
    EXPECT_TRUE(Inverse(flat).IsIdentity());
    flat.Invert();
    EXPECT_TRUE(flat.IsIdentity());
}

TEST(Matrix3, InverseThatIsNotFiniteIsTheIdentity) {
    const float infinity = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(Inverse(ScaleMatrix(Point3(1e-40f, 1.0f, 1.0f))).IsIdentity());
    EXPECT_TRUE(Inverse(ScaleMatrix(Point3(nan, 1.0f, 1.0f))).IsIdentity());
    EXPECT_TRUE(Inverse(ScaleMatrix(Point3(infinity, 1.0f, 1.0f))).IsIdentity());
    EXPECT_TRUE(Inverse(TransMatrix(Point3(infinity, 1.0f, 1.0f))).IsIdentity());
    Matrix3 distant = ScaleMatrix(Point3(1e-10f, 1e-10f, 1e-10f));
    distant.SetTrans(Point3(3e38f, 0.0f, 0.0f));
    EXPECT_TRUE(Inverse(distant).IsIdentity());
}

TEST(Matrix3, ParityTellsMirrored) {
    EXPECT_FALSE(Matrix3(1).Parity());
    EXPECT_FALSE(RotateXMatrix(2).Parity());
    EXPECT_TRUE(ScaleMatrix(Point3(-1, 1, 1)).Parity());
    EXPECT_FALSE(ScaleMatrix(Point3(-1, -1, 1)).Parity());
    EXPECT_TRUE(ScaleMatrix(Point3(-2, -3, -4)).Parity());
    EXPECT_TRUE((RotateYMatrix(1) * ScaleMatrix(Point3(1, 1, -1)) * RotateZMatrix(1)).Parity());
    EXPECT_FALSE(ScaleMatrix(Point3(-1, 1, 0)).Parity());
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

TEST(Matrix3, NoRotKeepsLengthsAndMirror) {
    Matrix3 m = ScaleMatrix(Point3(2, 3, 4)) * RotateXMatrix(1) * TransMatrix(Point3(5, 6, 7));
    m.NoRot();
    ExpectNear(m, ScaleMatrix(Point3(2, 3, 4)) * TransMatrix(Point3(5, 6, 7)));
    m = ScaleMatrix(Point3(-2, 3, 4)) * RotateXMatrix(1);
    m.NoRot();
    ExpectNear(m, ScaleMatrix(Point3(-2, -3, -4)));
    EXPECT_TRUE(m.Parity());
}

TEST(Matrix3, ComparesWithinATolerance) {
    Matrix3 close = AnyMatrix();
    close.SetTrans(Point3(7.0f, 8.0f, 9.01f));
    EXPECT_FALSE(close.Equals(AnyMatrix()));
    EXPECT_TRUE(close.Equals(AnyMatrix(), 0.02f));
}

TEST(Matrix3, FlagsTellWhatItDoesNot) {
    EXPECT_EQ(TransMatrix(Point3(1, 0, 0)).GetIdentFlag(), DWORD{ROT_IDENT | SCL_IDENT});
    EXPECT_EQ(ScaleMatrix(Point3(1, 2, 1)).GetIdentFlag(), DWORD{POS_IDENT | ROT_IDENT});
    EXPECT_EQ(RotateXMatrix(1).GetIdentFlag(), DWORD{POS_IDENT | SCL_IDENT});
    EXPECT_EQ(RotateXMatrix(0).GetIdentFlag(), DWORD{MAT_IDENT});
    EXPECT_EQ(AnyMatrix().GetIdentFlag(), 0u);
    EXPECT_EQ(ScaleMatrix(Point3(-1, -1, 1)).GetIdentFlag(), DWORD{POS_IDENT | SCL_IDENT});
    EXPECT_EQ(POS_IDENT, 1);
    EXPECT_EQ(ROT_IDENT, 2);
    EXPECT_EQ(SCL_IDENT, 4);
    EXPECT_EQ(MAT_IDENT, 7);
}

TEST(Matrix3, FlagsStayTrueThroughChanges) {
    Matrix3 m(1);
    m.Translate(Point3(1, 2, 3));
    EXPECT_FALSE(m.IsIdentity());
    m.Translate(Point3(-1, -2, -3));
    EXPECT_TRUE(m.IsIdentity());
    EXPECT_TRUE((m * m).IsIdentity());
    EXPECT_TRUE(
        (ScaleMatrix(Point3(2, 4, 8)) * ScaleMatrix(Point3(0.5, 0.25, 0.125))).IsIdentity());
    // A scale so close to 1 is no identity.
    EXPECT_FALSE(ScaleMatrix(Point3(1.0000001f, 1.0f, 1.0f)).IsIdentity());
}

TEST(Matrix3, FlagsAreStaleAfterWritingThroughTheAddress) {
    Matrix3 m(1);
    m.GetAddr()[3][0] = 5;
    EXPECT_TRUE(m.IsIdentity());
    m.ValidateFlags();
    EXPECT_FALSE(m.IsIdentity());
    EXPECT_EQ(m.GetIdentFlag(), DWORD{ROT_IDENT | SCL_IDENT});
}

TEST(Matrix3, FlagsCanBeCleared) {
    Matrix3 m(1);
    m.ClearIdentFlag(POS_IDENT);
    EXPECT_EQ(m.GetIdentFlag(), DWORD{ROT_IDENT | SCL_IDENT});
    EXPECT_FALSE(m.IsIdentity());
    m.SetNotIdent();
    EXPECT_EQ(m.GetIdentFlag(), 0u);
    EXPECT_TRUE(IsTruly(m, Matrix3(1)));
}
