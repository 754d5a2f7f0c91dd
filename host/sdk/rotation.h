// Rotations in double, and the one place that knows how the SDK's left-handed quaternions stand to
// its right-handed matrices.
#pragma once

#include <matrix3.h>
#include <quat.h>

namespace maxhost {

// Hamilton's quaternion in the SDK's convention.
struct DoubleQuat {
    double x = 0, y = 0, z = 0, w = 1;
};

// Row-vector matrix of a rotation.
struct DoubleRotation {
    double m[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
};

DoubleQuat ToDouble(const Quat& q);
// The 3 x 3 part as it stands.
DoubleRotation RotationPartOf(const Matrix3& matrix);

Quat Rounded(const DoubleQuat& q);
// Without translation.
Matrix3 Rounded(const DoubleRotation& rotation);

// Turns by `p` first, then by `q`.
DoubleQuat Product(const DoubleQuat& p, const DoubleQuat& q);
DoubleRotation Product(const DoubleRotation& first, const DoubleRotation& next);

// A quaternion of length zero, or of no finite one, gives the identity.
DoubleQuat Normalized(const DoubleQuat& q);
DoubleRotation RotationOf(const DoubleQuat& q);
// Unit quaternion with w >= 0 of a matrix that neither scales nor mirrors.
DoubleQuat QuatOf(const DoubleRotation& rotation);

// By the right-hand rule about axis 0, 1 or 2.
DoubleRotation RotationAbout(int axis, double angle);
DoubleQuat QuatAbout(int axis, double angle);

}  // namespace maxhost
