#include <euler.h>

#include <array>
#include <cfloat>
#include <cmath>
#include <cstddef>
#include <optional>

#include "host/sdk/rotation.h"

using namespace maxhost;

namespace {

// The axes in the order of their rotations, as static axes.
struct Order {
    std::array<int, 3> axes;
    bool reversed;  // the angles stand in the opposite order
};

std::optional<Order> OrderOf(int type) {
    constexpr std::array<std::array<int, 3>, 9> kAxes = {{{0, 1, 2},
                                                          {0, 2, 1},
                                                          {1, 2, 0},
                                                          {1, 0, 2},
                                                          {2, 0, 1},
                                                          {2, 1, 0},
                                                          {0, 1, 0},
                                                          {1, 2, 1},
                                                          {2, 0, 2}}};
    const bool rotating = type >= EULERTYPE_RF;
    const int number = rotating ? type - EULERTYPE_RF : type;
    if (number < 0 || number >= static_cast<int>(kAxes.size()))
        return std::nullopt;
    std::array<int, 3> axes = kAxes[static_cast<std::size_t>(number)];
    // Turning about axes that turn along is turning about static ones in the opposite order.
    if (rotating)
        std::swap(axes[0], axes[2]);
    return Order{axes, rotating};
}

struct Rotations {
    std::array<int, 3> axes;
    std::array<double, 3> angles;
};

std::optional<Rotations> RotationsOf(const float* ang, int type) {
    const std::optional<Order> order = OrderOf(type);
    if (!order)
        return std::nullopt;
    std::array<double, 3> angles = {ang[0], ang[1], ang[2]};
    if (order->reversed)
        std::swap(angles[0], angles[2]);
    return Rotations{order->axes, angles};
}

// Below this size of a sine or cosine the outer angles cannot be told apart in floats.
constexpr double kDegenerate = 16 * FLT_EPSILON;

// `sign`: 1 where i, j, k is a right-handed sequence of axes, else -1.
std::array<double, 3> AnglesOfThreeAxes(const DoubleRotation& rotation, int i, int j, int k,
                                        double sign) {
    const auto& m = rotation.m;
    const double cosine = std::hypot(m[i][i], m[i][j]);
    const double middle = std::atan2(-sign * m[i][k], cosine);
    if (cosine <= kDegenerate)
        return {std::atan2(-sign * m[k][j], m[j][j]), middle, 0};
    return {std::atan2(sign * m[j][k], m[k][k]), middle, std::atan2(sign * m[i][j], m[i][i])};
}

std::array<double, 3> AnglesOfTwoAxes(const DoubleRotation& rotation, int i, int j, int k,
                                      double sign) {
    const auto& m = rotation.m;
    const double sine = std::hypot(m[j][i], m[k][i]);
    const double middle = std::atan2(sine, m[i][i]);
    if (sine <= kDegenerate)
        return {std::atan2(-sign * m[k][j], m[j][j]), middle, 0};
    return {std::atan2(m[j][i], sign * m[k][i]), middle, std::atan2(m[i][j], -sign * m[i][k])};
}

void AnglesOf(const DoubleRotation& rotation, float* ang, int type) {
    ang[0] = ang[1] = ang[2] = 0;
    const std::optional<Order> order = OrderOf(type);
    if (!order)
        return;
    const auto [i, j, third] = order->axes;
    const int k = 3 - i - j;
    const double sign = j == (i + 1) % 3 ? 1 : -1;
    std::array<double, 3> angles = third == i ? AnglesOfTwoAxes(rotation, i, j, k, sign)
                                              : AnglesOfThreeAxes(rotation, i, j, k, sign);
    if (order->reversed)
        std::swap(angles[0], angles[2]);
    for (std::size_t n = 0; n < 3; ++n)
        ang[n] = static_cast<float>(angles[n]);
}

}  // namespace

void EulerToMatrix(float* ang, Matrix3& mat, int type) {
    DoubleRotation rotation;
    if (const std::optional<Rotations> turns = RotationsOf(ang, type)) {
        for (std::size_t n = 0; n < 3; ++n) {
            rotation = Product(rotation, RotationAbout(turns->axes[n], turns->angles[n]));
        }
    }
    mat = Rounded(rotation);
}

void EulerToQuat(float* ang, Quat& q, int type) {
    DoubleQuat product;
    if (const std::optional<Rotations> turns = RotationsOf(ang, type)) {
        for (std::size_t n = 0; n < 3; ++n) {
            product = Product(product, QuatAbout(turns->axes[n], turns->angles[n]));
        }
    }
    q = Rounded(product);
}

void MatrixToEuler(const Matrix3& mat, float* ang, int type, BOOL) {
    AnglesOf(RotationPartOf(mat), ang, type);
}

void QuatToEuler(const Quat& q, float* ang, int type, bool) {
    AnglesOf(RotationOf(ToDouble(q)), ang, type);
}
