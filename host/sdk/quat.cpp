#include <quat.h>

#include <cmath>

#include "host/sdk/rotation.h"

using namespace maxhost;

namespace {

DoubleQuat Inverted(const DoubleQuat& q) {
    const double norm = q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w;
    if (!(norm > 0) || !std::isfinite(norm))
        return {};
    return {-q.x / norm, -q.y / norm, -q.z / norm, q.w / norm};
}

}  // namespace

AngAxis::AngAxis(const Quat& q) {
    AngAxisFromQ(q, &angle, axis);
}

Quat::Quat(const Matrix3& matrix) {
    *this = Rounded(QuatOf(RotationPartOf(matrix)));
}

Quat::Quat(const AngAxis& angAxis) {
    *this = QFromAngAxis(angAxis.angle, angAxis.axis);
}

Quat Quat::operator*(const Quat& next) const {
    return Rounded(Product(ToDouble(*this), ToDouble(next)));
}

int Quat::Equals(const Quat& b, float epsilon) const {
    return std::fabs(x - b.x) <= epsilon && std::fabs(y - b.y) <= epsilon &&
           std::fabs(z - b.z) <= epsilon && std::fabs(w - b.w) <= epsilon;
}

Quat& Quat::Invert() {
    return *this = Rounded(Inverted(ToDouble(*this)));
}

Quat& Quat::Normalize() {
    return *this = Rounded(Normalized(ToDouble(*this)));
}

void Quat::MakeMatrix(Matrix3& matrix) const {
    matrix = Rounded(RotationOf(ToDouble(*this)));
}

Quat IdentQuat() {
    return Quat(0.0f, 0.0f, 0.0f, 1.0f);
}

Quat Inverse(const Quat& q) {
    return Quat(q).Invert();
}

Quat Normalize(const Quat& q) {
    return Quat(q).Normalize();
}

void AngAxisFromQ(const Quat& q, float* ang, Point3& axis) {
    const double w = q.w < -1 ? -1 : q.w < 1 ? q.w : 1;
    *ang = static_cast<float>(2 * std::acos(w));
    const Point3 vector(q.x, q.y, q.z);
    const double length = std::sqrt(double{q.x} * q.x + double{q.y} * q.y + double{q.z} * q.z);
    axis = length > 0 && std::isfinite(length) ? vector.Normalize() : Point3(1, 0, 0);
}

Quat QFromAngAxis(float ang, const Point3& axis) {
    const double length =
        std::sqrt(double{axis.x} * axis.x + double{axis.y} * axis.y + double{axis.z} * axis.z);
    if (!(length > 0) || !std::isfinite(length) || !std::isfinite(ang))
        return IdentQuat();
    const double scale = std::sin(ang / 2.0) / length;
    return Quat(axis.x * scale, axis.y * scale, axis.z * scale, std::cos(ang / 2.0));
}

void RotateMatrix(Matrix3& matrix, const Quat& q) {
    Matrix3 rotation;
    q.MakeMatrix(rotation);
    matrix = matrix * rotation;
}

void RotateMatrix(Matrix3& matrix, const AngAxis& angAxis) {
    RotateMatrix(matrix, Quat(angAxis));
}

void PreRotateMatrix(Matrix3& matrix, const Quat& q) {
    Matrix3 rotation;
    q.MakeMatrix(rotation);
    matrix = rotation * matrix;
}

void PreRotateMatrix(Matrix3& matrix, const AngAxis& angAxis) {
    PreRotateMatrix(matrix, Quat(angAxis));
}
