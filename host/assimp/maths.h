// Numbers, vectors, matrices and rotations of the import, on the types of Assimp's own maths, in
// double so that long products cost no precision. Matrices are for column vectors.
#pragma once

#include <assimp/types.h>

#include <array>
#include <cstddef>
#include <optional>

#include "host/scene/scene.h"

namespace maxhost::import {

using Vector = aiVector3t<double>;
using Quaternion = aiQuaterniont<double>;
using Matrix3 = aiMatrix3x3t<double>;
using Matrix4 = aiMatrix4x4t<double>;

// ---------------------------------------------------------------- numbers that are not finite

// 0 for what is not finite as f32, which is counted.
float FiniteFloat(double number, std::size_t& notFinite);

// With 0 for what is not finite, which is counted.
Vector FiniteVector(const aiVector3D& source, std::size_t& notFinite);
Matrix4 FiniteMatrix(const aiMatrix4x4& source, std::size_t& notFinite);

// ---------------------------------------------------------------- matrices

Vector Column(const Matrix4& m, unsigned column);
inline Vector PositionOf(const Matrix4& m) {
    return Column(m, 3);
}

// None where the determinant is 0 or not finite.
std::optional<Matrix4> InverseOf(const Matrix4& m);

// Takes a normal where the matrix takes positions, up to its length.
Vector TurnedNormal(const Matrix4& m, const Vector& normal);

// Rows for row vectors from columns for column vectors, and back. Numbers that are not finite as
// f32 become 0 and are counted; -0 becomes 0.
scene::Matrix RowMatrix(const Matrix4& m, std::size_t& notFinite);
Matrix4 ColumnMatrix(const scene::Matrix& rows);

// ---------------------------------------------------------------- turns of the axes

// A rotation that takes each axis to an axis: component i of the result is sign[i] times component
// from[i] of the source. Exact: nothing is rounded.
struct AxisTurn {
    std::array<int, 3> from{0, 1, 2};
    std::array<int, 3> sign{1, 1, 1};

    scene::Vec3 Apply(const scene::Vec3& v) const;
    Matrix4 Turn(const Matrix4& m) const;       // turn * m
    Matrix4 Conjugate(const Matrix4& m) const;  // turn * m * inverse turn
    AxisTurn After(const AxisTurn& first) const;
};

// From y up, x right, z to the viewer to z up, x right, y away from the viewer.
constexpr AxisTurn kYUpToZUp{{0, 2, 1}, {1, -1, 1}};

// ---------------------------------------------------------------- rotations

Quaternion operator+(const Quaternion& a, const Quaternion& b);
Quaternion operator*(double factor, const Quaternion& q);

// Of unit length; zero stays zero.
Quaternion Unit(const Quaternion& q);

double LengthOf(const Vector& v);
double LengthOf(const Quaternion& q);

// The way from `a` (s = 0) to `b` (s = 1): the straight line; of rotations, both of unit length,
// the shorter great arc (Shoemake's slerp).
Vector Between(const Vector& a, const Vector& b, double s);
Quaternion Between(const Quaternion& a, Quaternion b, double s);

// Of the rotation between the two, in radians, 0 to pi.
double AngleBetween(const Quaternion& a, const Quaternion& b);

// The angles (radians, any number of turns) whose rotation rotX(x) * rotY(y) * rotZ(z), row vectors
// and right-hand rule, is `rotation` (of unit length), and that lie nearest to `near` of all that
// do. Where the rotation is within `poleAngle` (radians) of y = +-90 degrees, x and z turn about
// the same axis and share what is to be turned, so that both move least; the rotation then is off
// by at most twice that angle.
Vector EulerNear(const Quaternion& rotation, const Vector& near, double poleAngle);

Quaternion RotationOfEuler(const Vector& angles);

// ---------------------------------------------------------------- poses

// translation * rotation * scale.
struct Pose {
    Vector position;
    Quaternion rotation;
    Vector scale{1, 1, 1};
    double shear = 0;  // what the three leave of the matrix, in parts of its axes' lengths
};

// The pose nearest to the matrix. `reference` decides what the matrix leaves open: the signs of the
// scale's factors, and the rotation of axes without length. Without one the factors are all
// positive or all negative.
Pose PoseOf(const Matrix4& matrix, const Quaternion* reference = nullptr);

}  // namespace maxhost::import
