// Vectors of three doubles.
#pragma once

#include <array>
#include <cmath>

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

// A vector of no length, or of none that is finite, gives (0, 0, 0).
inline Vector3 Normalized(const Vector3& a) {
    const double length = std::hypot(a[0], a[1], a[2]);
    return length > 0 && std::isfinite(length) ? a * (1 / length) : Vector3{};
}

inline bool IsFinite(const Vector3& a) {
    return std::isfinite(a[0]) && std::isfinite(a[1]) && std::isfinite(a[2]);
}

}  // namespace kta
