// Vectors, rotations and affine maps, in double.
#pragma once

#include <array>
#include <cmath>
#include <optional>

namespace kta {

using Vector3 = std::array<double, 3>;

inline Vector3 operator+(const Vector3& a, const Vector3& b) {
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}

inline Vector3 operator-(const Vector3& a, const Vector3& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

inline Vector3 operator*(const Vector3& a, double factor) {
    return {a[0] * factor, a[1] * factor, a[2] * factor};
}

inline double Dot(const Vector3& a, const Vector3& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

inline Vector3 Cross(const Vector3& a, const Vector3& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

inline double Length(const Vector3& a) {
    return std::hypot(a[0], a[1], a[2]);
}

// A vector of no length, or of none that is finite, gives (0, 0, 0).
inline Vector3 Normalized(const Vector3& a) {
    const double length = Length(a);
    return length > 0 && std::isfinite(length) ? a * (1 / length) : Vector3{};
}

inline bool IsFinite(const Vector3& a) {
    return std::isfinite(a[0]) && std::isfinite(a[1]) && std::isfinite(a[2]);
}

// x, y, z, w: by the angle 2 acos(w) about the axis (x, y, z), where a quarter turn about the
// third axis takes the first axis to the second.
using Quaternion = std::array<double, 4>;

inline double Dot(const Quaternion& a, const Quaternion& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2] + a[3] * b[3];
}

// Turns by b, then by a.
inline Quaternion operator*(const Quaternion& a, const Quaternion& b) {
    const Vector3 u = {a[0], a[1], a[2]};
    const Vector3 v = {b[0], b[1], b[2]};
    const Vector3 xyz = v * a[3] + u * b[3] + Cross(u, v);
    return {xyz[0], xyz[1], xyz[2], a[3] * b[3] - Dot(u, v)};
}

// One without length, or with none that is finite, gives that of no turn.
Quaternion Normalized(const Quaternion& q);

// The way from a, where share is 0, to b, where it is 1, at even speed and by the shorter of the
// two arcs. Both of length 1.
Quaternion Slerp(const Quaternion& a, const Quaternion& b, double share);

// Takes a position p to axes[0] * p[0] + axes[1] * p[1] + axes[2] * p[2] + translation: for column
// vectors, the axes are a matrix's first three columns and the translation is its fourth.
struct Affine {
    std::array<Vector3, 3> axes = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    Vector3 translation{};

    Vector3 Direction(const Vector3& d) const {
        return axes[0] * d[0] + axes[1] * d[1] + axes[2] * d[2];
    }
    Vector3 Position(const Vector3& p) const { return Direction(p) + translation; }
};

// What b does, and then a: (a * b).Position(p) is a.Position(b.Position(p)).
Affine operator*(const Affine& a, const Affine& b);

double Determinant(const Affine& a);
bool IsFinite(const Affine& a);

// Whether something of volume keeps one: not flat, not even nearly, and finite.
bool HasVolume(const Affine& a);
// None of what has no volume.
std::optional<Affine> Inverse(const Affine& a);

// Scale along the own axes, then rotation, then translation.
struct Transform {
    Vector3 translation{};
    Quaternion rotation = {0, 0, 0, 1};
    Vector3 scale = {1, 1, 1};

    Affine ToAffine() const;
};

}  // namespace kta
