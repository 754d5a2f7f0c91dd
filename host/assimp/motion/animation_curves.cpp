#include "host/assimp/motion/animation_curves.h"

#include <algorithm>
#include <cmath>

namespace maxhost::import {
namespace {

double Dot(const Quaternion& a, const Quaternion& b) {
    return a.w * b.w + a.x * b.x + a.y * b.y + a.z * b.z;
}

double Length(const Vector& v) {
    return v.Length();
}

double Length(const Quaternion& q) {
    return std::sqrt(Dot(q, q));
}

Vector Straight(const Vector& a, const Vector& b, double s) {
    return a + (b - a) * s;
}

Quaternion Straight(const Quaternion& a, const Quaternion& b, double s) {
    return Slerp(a, b, s);
}

template <typename T>
T Hermite(const CurveKey<T>& from, const CurveKey<T>& to, double s) {
    const double duration = to.time - from.time;
    const double v = 1 - s;
    return OnCurve((1 + 2 * s) * v * v * from.value + s * v * v * duration * from.outSlope +
                   s * s * (3 - 2 * s) * to.value + -s * s * v * duration * to.inSlope);
}

}  // namespace

Vector OnCurve(const Vector& v) {
    return v;
}

Quaternion OnCurve(const Quaternion& q) {
    return Unit(q);
}

template <typename T>
T Curve<T>::At(double time) const {
    const auto after =
        std::upper_bound(keys.begin(), keys.end(), time,
                         [](double t, const CurveKey<T>& key) { return t < key.time; });
    if (after == keys.begin() || after == keys.end()) {
        return OnCurve((after == keys.begin() ? keys.front() : keys.back()).value);
    }
    const CurveKey<T>& from = *(after - 1);
    const double s = (time - from.time) / (after->time - from.time);
    switch (interpolation) {
        case Interpolation::step:
            return OnCurve(from.value);
        case Interpolation::cubic:
            return Hermite(from, *after, s);
        default:
            return Straight(from.value, after->value, s);
    }
}

template <typename T>
bool Curve<T>::IsConstant(double tolerance) const {
    const T& first = keys.front().value;
    for (std::size_t i = 1; i < keys.size(); ++i) {
        const CurveKey<T>& key = keys[i];
        const CurveKey<T>& before = keys[i - 1];
        // A rotation's two quaternions are one rotation on an arc, but not on a cubic curve.
        const bool isOpposite = interpolation != Interpolation::cubic &&
                                Length(key.value + -1.0 * first) > Length(key.value + first);
        const double change = Length(key.value + (isOpposite ? 1.0 : -1.0) * first);
        const double bulge =
            (key.time - before.time) * std::max(Length(before.outSlope), Length(key.inSlope));
        if (change > tolerance || (interpolation == Interpolation::cubic && bulge > tolerance)) {
            return false;
        }
    }
    return true;
}

template struct Curve<Vector>;
template struct Curve<Quaternion>;

Quaternion Slerp(const Quaternion& a, Quaternion b, double s) {
    constexpr double kNearlyOne = 1 - 1e-12;
    double cosine = Dot(a, b);
    if (cosine < 0) {
        cosine = -cosine;
        b = -1.0 * b;
    }
    if (cosine > kNearlyOne) {
        return Unit((1 - s) * a + s * b);
    }
    const double angle = std::acos(cosine);
    const double sine = std::sin(angle);
    return std::sin((1 - s) * angle) / sine * a + std::sin(s * angle) / sine * b;
}

double AngleBetween(const Quaternion& a, const Quaternion& b) {
    Quaternion inverse = a;
    inverse.Conjugate();
    const Quaternion turn = inverse * b;
    const double sine = std::sqrt(turn.x * turn.x + turn.y * turn.y + turn.z * turn.z);
    return 2 * std::atan2(sine, std::abs(turn.w));
}

double DistanceBetween(const Vector& a, const Vector& b) {
    return (a - b).Length();
}

Quaternion Unit(const Quaternion& q) {
    const double length = Length(q);
    return length > 0 ? 1 / length * q : q;
}

Quaternion operator+(const Quaternion& a, const Quaternion& b) {
    return {a.w + b.w, a.x + b.x, a.y + b.y, a.z + b.z};
}

Quaternion operator*(double factor, const Quaternion& q) {
    return {factor * q.w, factor * q.x, factor * q.y, factor * q.z};
}

aiMatrix4x4t<double> Channel::At(double time) const {
    const aiMatrix3x3t<double> m = rotation.At(time).GetMatrix();
    const Vector p = position.At(time);
    const Vector s = scale.At(time);
    return {m.a1 * s.x, m.a2 * s.y, m.a3 * s.z, p.x, m.b1 * s.x, m.b2 * s.y, m.b3 * s.z, p.y,
            m.c1 * s.x, m.c2 * s.y, m.c3 * s.z, p.z, 0,          0,          0,          1};
}

}  // namespace maxhost::import
