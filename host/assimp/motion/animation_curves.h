// Curves of positions, rotations and scales over time, as the formats define them between keys.
#pragma once

#include <assimp/types.h>

#include <vector>

namespace maxhost::import {

using Vector = aiVector3t<double>;
using Quaternion = aiQuaterniont<double>;

// linear: the straight line, of rotations the shorter great arc. step: the first key's value.
// cubic: Hermite's curve with the keys' slopes, component by component, of rotations brought to
// unit length.
enum class Interpolation { linear, step, cubic };

template <typename T>
struct CurveKey {
    double time = 0;
    T value;
    T inSlope, outSlope;  // of a cubic curve, in value per time, both forward in time
};

// A curve over keys whose times ascend. Held before the first and behind the last. Of keys with one
// time the last counts at that time.
template <typename T>
struct Curve {
    std::vector<CurveKey<T>> keys;
    Interpolation interpolation = Interpolation::linear;

    T At(double time) const;  // there must be a key
    // Whether the value is the same, to `tolerance` in each component, at all times.
    bool IsConstant(double tolerance) const;
};

// The shorter way from `a` (s = 0) to `b` (s = 1); both of unit length.
Quaternion Slerp(const Quaternion& a, Quaternion b, double s);

// Of the rotation between the two, in radians, 0 to pi.
double AngleBetween(const Quaternion& a, const Quaternion& b);

double DistanceBetween(const Vector& a, const Vector& b);

// Of unit length; zero stays zero.
Quaternion Unit(const Quaternion& q);

// A value as a curve shows it: a rotation is of unit length.
Vector OnCurve(const Vector& v);
Quaternion OnCurve(const Quaternion& q);

Quaternion operator+(const Quaternion& a, const Quaternion& b);
Quaternion operator*(double factor, const Quaternion& q);

// The channel's three curves are a node's translation, rotation and scale (column vectors:
// translation * rotation * scale). None is without keys.
struct Channel {
    Curve<Vector> position;
    Curve<Quaternion> rotation;
    Curve<Vector> scale;

    aiMatrix4x4t<double> At(double time) const;
};

}  // namespace maxhost::import
