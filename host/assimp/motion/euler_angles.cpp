#include "host/assimp/motion/euler_angles.h"

#include <algorithm>
#include <cmath>

namespace maxhost::import {
namespace {

constexpr double kPi = 3.14159265358979323846;

// The angle that differs from `angle` by whole turns and lies nearest to `near`.
double TurnedNear(double angle, double near) {
    return angle - 2 * kPi * std::round((angle - near) / (2 * kPi));
}

Vector TurnedNear(const Vector& angles, const Vector& near) {
    return {TurnedNear(angles.x, near.x), TurnedNear(angles.y, near.y),
            TurnedNear(angles.z, near.z)};
}

// The same rotation beyond the pole.
Vector OtherSide(const Vector& angles) {
    return {angles.x + kPi, kPi - angles.y, angles.z + kPi};
}

Vector Nearest(const Vector& angles, const Vector& near) {
    const Vector one = TurnedNear(angles, near);
    const Vector other = TurnedNear(OtherSide(angles), near);
    return (other - near).SquareLength() < (one - near).SquareLength() ? other : one;
}

}  // namespace

Vector EulerNear(const Quaternion& rotation, const Vector& near, double poleAngle) {
    constexpr double kLeastPoleAngle = 1e-9;
    // Columns for column vectors are the rows for row vectors.
    const aiMatrix3x3t<double> m = rotation.GetMatrix();
    const double cosine = std::hypot(m.a1, m.b1);
    const double y = std::atan2(-m.c1, cosine);
    if (cosine > std::max(poleAngle, kLeastPoleAngle)) {
        return Nearest({std::atan2(m.c2, m.c3), y, std::atan2(m.b1, m.a1)}, near);
    }
    // At the upper pole x - z is given, at the lower one x + z.
    const double sign = y > 0 ? -1 : 1;
    const double sum = std::atan2(-sign * m.a2, m.b2);
    const double rest = TurnedNear(sum, near.x + sign * near.z) - (near.x + sign * near.z);
    const double one = TurnedNear(y, near.y);
    const double other = TurnedNear(kPi - y, near.y);
    return {near.x + rest / 2, std::abs(other - near.y) < std::abs(one - near.y) ? other : one,
            near.z + sign * rest / 2};
}

Quaternion RotationOfEuler(const Vector& angles) {
    const Quaternion x(std::cos(angles.x / 2), std::sin(angles.x / 2), 0, 0);
    const Quaternion y(std::cos(angles.y / 2), 0, std::sin(angles.y / 2), 0);
    const Quaternion z(std::cos(angles.z / 2), 0, 0, std::sin(angles.z / 2));
    return z * y * x;
}

}  // namespace maxhost::import
