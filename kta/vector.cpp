#include "kta/vector.h"

#include <algorithm>

namespace kta {

Quaternion Normalized(const Quaternion& q) {
    const double length = std::sqrt(Dot(q, q));
    if (!(length > 0) || !std::isfinite(length)) {
        return {0, 0, 0, 1};
    }
    return {q[0] / length, q[1] / length, q[2] / length, q[3] / length};
}

Quaternion Slerp(const Quaternion& a, const Quaternion& b, double share) {
    constexpr double kNearlyEqual = 0.9999999;
    const double cosine = std::abs(Dot(a, b));
    double ofA = 1 - share;
    double ofB = share;
    if (cosine < kNearlyEqual) {
        const double angle = std::acos(cosine);
        ofA = std::sin(ofA * angle) / std::sin(angle);
        ofB = std::sin(ofB * angle) / std::sin(angle);
    }
    if (Dot(a, b) < 0) {
        ofB = -ofB;
    }
    Quaternion q{};
    for (std::size_t i = 0; i < 4; ++i) {
        q[i] = a[i] * ofA + b[i] * ofB;
    }
    return Normalized(q);
}

Affine operator*(const Affine& a, const Affine& b) {
    Affine product;
    for (std::size_t i = 0; i < 3; ++i) {
        product.axes[i] = a.Direction(b.axes[i]);
    }
    product.translation = a.Position(b.translation);
    return product;
}

double Determinant(const Affine& a) {
    return Dot(a.axes[0], Cross(a.axes[1], a.axes[2]));
}

bool IsFinite(const Affine& a) {
    return std::all_of(a.axes.begin(), a.axes.end(),
                       [](const Vector3& v) { return IsFinite(v); }) &&
           IsFinite(a.translation);
}

bool HasVolume(const Affine& a) {
    constexpr double kFlat = 1e-9;  // of what axes of that length could span
    const double most = Length(a.axes[0]) * Length(a.axes[1]) * Length(a.axes[2]);
    return IsFinite(a) && most > 0 && std::abs(Determinant(a)) > kFlat * most;
}

std::optional<Affine> Inverse(const Affine& a) {
    if (!HasVolume(a)) {
        return std::nullopt;
    }
    const double determinant = Determinant(a);
    const std::array<Vector3, 3> rows = {Cross(a.axes[1], a.axes[2]) * (1 / determinant),
                                         Cross(a.axes[2], a.axes[0]) * (1 / determinant),
                                         Cross(a.axes[0], a.axes[1]) * (1 / determinant)};
    Affine inverse;
    for (std::size_t i = 0; i < 3; ++i) {
        inverse.axes[i] = {rows[0][i], rows[1][i], rows[2][i]};
    }
    inverse.translation = inverse.Direction(a.translation) * -1;
    return IsFinite(inverse) ? std::optional(inverse) : std::nullopt;
}

Affine Transform::ToAffine() const {
    const auto [x, y, z, w] = Normalized(rotation);
    Affine a;
    a.axes[0] =
        Vector3{1 - 2 * (y * y + z * z), 2 * (x * y + w * z), 2 * (x * z - w * y)} * scale[0];
    a.axes[1] =
        Vector3{2 * (x * y - w * z), 1 - 2 * (x * x + z * z), 2 * (y * z + w * x)} * scale[1];
    a.axes[2] =
        Vector3{2 * (x * z + w * y), 2 * (y * z - w * x), 1 - 2 * (x * x + y * y)} * scale[2];
    a.translation = translation;
    return a;
}

}  // namespace kta
