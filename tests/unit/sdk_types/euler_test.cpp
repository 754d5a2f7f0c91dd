#include <euler.h>

#include <array>
#include <cmath>

#include "tests/unit/sdk_types/support.h"

namespace {

constexpr int kOrders = 9;
constexpr std::array<const char*, kOrders> kNames = {"XYZ", "XZY", "YZX", "YXZ", "ZXY",
                                                     "ZYX", "XYX", "YZY", "ZXZ"};

Matrix3 RotationAbout(char axis, float angle) {
    return axis == 'X'   ? RotateXMatrix(angle)
           : axis == 'Y' ? RotateYMatrix(angle)
                         : RotateZMatrix(angle);
}

// The product that the order's name spells.
Matrix3 Spelled(int type, const float* ang) {
    const char* axes = kNames[static_cast<std::size_t>(type % EULERTYPE_RF)];
    const Matrix3 a = RotationAbout(axes[0], ang[0]);
    const Matrix3 b = RotationAbout(axes[1], ang[1]);
    const Matrix3 c = RotationAbout(axes[2], ang[2]);
    return type >= EULERTYPE_RF ? c * b * a : a * b * c;
}

Matrix3 MatrixOf(const Quat& q) {
    Matrix3 matrix;
    q.MakeMatrix(matrix);
    return matrix;
}

class Euler : public testing::TestWithParam<int> {};

}  // namespace

TEST(EulerTypes, HaveTheNumbersOfTheSdk) {
    EXPECT_EQ(EULERTYPE_XYZ, 0);
    EXPECT_EQ(EULERTYPE_ZYX, 5);
    EXPECT_EQ(EULERTYPE_XYX, 6);
    EXPECT_EQ(EULERTYPE_ZXZ, 8);
    EXPECT_EQ(EULERTYPE_RF, 16);
}

TEST(EulerXyz, TurnsAboutXThenYThenZ) {
    float ang[3] = {kPi / 2, 0, kPi / 2};
    Matrix3 matrix;
    EulerToMatrix(ang, matrix, EULERTYPE_XYZ);
    // y goes to z by the turn about x, and z stays where it is; x stays and then goes to y.
    ExpectNear(Point3(0, 1, 0) * matrix, Point3(0, 0, 1));
    ExpectNear(Point3(1, 0, 0) * matrix, Point3(0, 1, 0));
    ExpectNear(Point3(0, 0, 1) * matrix, Point3(1, 0, 0));
}

TEST_P(Euler, MatrixIsTheProductOfItsName) {
    RandomValues random;
    for (int n = 0; n < 100; ++n) {
        float ang[3] = {random.Between(-4, 4), random.Between(-4, 4), random.Between(-4, 4)};
        Matrix3 matrix;
        EulerToMatrix(ang, matrix, GetParam());
        ExpectNear(matrix, Spelled(GetParam(), ang));
        Quat q;
        EulerToQuat(ang, q, GetParam());
        ExpectNear(MatrixOf(q), matrix);
    }
}

TEST_P(Euler, AnglesComeBack) {
    RandomValues random;
    const bool twoAxes = GetParam() % EULERTYPE_RF >= EULERTYPE_XYX;
    for (int n = 0; n < 100; ++n) {
        float ang[3] = {random.Between(-3, 3), random.Between(-1.4f, 1.4f), random.Between(-3, 3)};
        if (twoAxes)
            ang[1] += 1.57f;
        float again[3] = {9, 9, 9};
        MatrixToEuler(Spelled(GetParam(), ang), again, GetParam());
        for (int i = 0; i < 3; ++i)
            EXPECT_NEAR(again[i], ang[i], 1e-5f) << "angle " << i;
        Quat q;
        EulerToQuat(ang, q, GetParam());
        QuatToEuler(q, again, GetParam());
        for (int i = 0; i < 3; ++i)
            EXPECT_NEAR(again[i], ang[i], 1e-5f) << "angle " << i;
    }
}

TEST_P(Euler, UndeterminedAnglesGiveTheSameMatrix) {
    const bool twoAxes = GetParam() % EULERTYPE_RF >= EULERTYPE_XYX;
    for (const float middle : {twoAxes ? 0.0f : -kPi / 2, twoAxes ? kPi : kPi / 2}) {
        const float ang[3] = {0.3f, middle, 0.4f};
        float again[3] = {9, 9, 9};
        const Matrix3 matrix = Spelled(GetParam(), ang);
        MatrixToEuler(matrix, again, GetParam());
        EXPECT_EQ(again[GetParam() >= EULERTYPE_RF ? 0 : 2], 0);
        ExpectNear(Spelled(GetParam(), again), matrix);
    }
}

INSTANTIATE_TEST_SUITE_P(Static, Euler, testing::Range(0, kOrders));
INSTANTIATE_TEST_SUITE_P(Rotating, Euler, testing::Range(EULERTYPE_RF, EULERTYPE_RF + kOrders));

TEST(EulerTypes, AnUnknownOrderTurnsNothing) {
    for (const int type : {-1, 9, 15, 25, 32}) {
        float ang[3] = {1, 2, 3};
        Matrix3 matrix = RotateXMatrix(1);
        EulerToMatrix(ang, matrix, type);
        EXPECT_TRUE(matrix.IsIdentity()) << type;
        Quat q(RotateXMatrix(1));
        EulerToQuat(ang, q, type);
        EXPECT_TRUE(q.IsIdentity()) << type;
        MatrixToEuler(RotateXMatrix(1), ang, type);
        EXPECT_EQ(ang[0], 0) << type;
        ang[2] = 3;
        QuatToEuler(Quat(RotateXMatrix(1)), ang, type);
        EXPECT_EQ(ang[2], 0) << type;
    }
}

TEST(EulerXyz, KeepsMoreThanATurnInTheQuaternion) {
    float ang[3] = {0, 0, 2 * kPi};
    Quat q;
    EulerToQuat(ang, q, EULERTYPE_XYZ);
    ExpectNear(q, Quat(0.0f, 0.0f, 0.0f, -1.0f));
}
