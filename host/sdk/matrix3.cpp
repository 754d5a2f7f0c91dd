#include <matrix3.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <optional>

#include "host/sdk/rotation.h"

using namespace maxhost;

namespace {

double LengthSquared(const float* row) {
    return double{row[0]} * row[0] + double{row[1]} * row[1] + double{row[2]} * row[2];
}

// Determinant of the 3 x 3 part; 0 where it cannot be told from 0 in double.
double Determinant(const MRow* m) {
    double sum = 0, size = 0;
    for (int i = 0; i < 3; ++i) {
        const int j = (i + 1) % 3;
        const int k = (i + 2) % 3;
        const double plus = double{m[0][i]} * m[1][j] * m[2][k];
        const double minus = double{m[0][i]} * m[1][k] * m[2][j];
        sum += plus - minus;
        size += std::fabs(plus) + std::fabs(minus);
    }
    return std::fabs(sum) <= 8 * DBL_EPSILON * size ? 0 : sum;
}

std::optional<DoubleRotation> InverseOfAxes(const MRow* m) {
    const double determinant = Determinant(m);
    if (determinant == 0)
        return std::nullopt;
    DoubleRotation inverse;
    for (int i = 0; i < 3; ++i) {
        const int i1 = (i + 1) % 3;
        const int i2 = (i + 2) % 3;
        for (int j = 0; j < 3; ++j) {
            const int j1 = (j + 1) % 3;
            const int j2 = (j + 2) % 3;
            const double cofactor = double{m[i1][j1]} * m[i2][j2] - double{m[i1][j2]} * m[i2][j1];
            inverse.m[j][i] = cofactor / determinant;
        }
    }
    return inverse;
}

// `v` times the 3 x 3 part plus `offset`.
Point3 Transformed(const Point3& v, const double (&axes)[3][3], const Point3& offset) {
    const auto component = [&](int j) {
        return v.x * axes[0][j] + v.y * axes[1][j] + v.z * axes[2][j];
    };
    return Point3(component(0) + offset.x, component(1) + offset.y, component(2) + offset.z);
}

bool IsFinite(const Matrix3& matrix) {
    const float* first = matrix.GetAddr()[0];
    return std::all_of(first, first + 12, [](float element) { return std::isfinite(element); });
}

DWORD FlagIf(bool condition, DWORD flag) {
    return condition ? flag : 0;
}

}  // namespace

Matrix3::Matrix3() {
    Zero();
}

Matrix3::Matrix3(BOOL init) {
    if (init) {
        IdentityMatrix();
    } else {
        Zero();
    }
}

Matrix3::Matrix3(const Point3& U, const Point3& V, const Point3& N, const Point3& T) {
    const Point3* rows[4] = {&U, &V, &N, &T};
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 3; ++j)
            m_[i][j] = (*rows[i])[j];
    }
    ValidateFlags();
}

void Matrix3::ValidateFlags() {
    bool straight = true, unscaled = true;
    for (int i = 0; i < 3; ++i) {
        const float* row = m_[i];
        const bool along = row[(i + 1) % 3] == 0 && row[(i + 2) % 3] == 0;
        straight = straight && along && row[i] >= 0;
        // The axes of a rotation in floats have length 1 within rounding alone.
        unscaled = unscaled &&
                   (along ? std::fabs(row[i]) == 1 : std::fabs(LengthSquared(row) - 1) <= 2e-6);
    }
    const bool stays = m_[3][0] == 0 && m_[3][1] == 0 && m_[3][2] == 0;
    flags_ = FlagIf(stays, POS_IDENT) | FlagIf(straight, ROT_IDENT) | FlagIf(unscaled, SCL_IDENT);
}

void Matrix3::SetRow(int i, const Point3& row) {
    for (int j = 0; j < 3; ++j)
        m_[i][j] = row[j];
    ValidateFlags();
}

void Matrix3::Zero() {
    const Point3 zero(0, 0, 0);
    *this = Matrix3(zero, zero, zero, zero);
}

void Matrix3::IdentityMatrix() {
    *this = Matrix3(Point3(1, 0, 0), Point3(0, 1, 0), Point3(0, 0, 1), Point3(0, 0, 0));
}

void Matrix3::NoRot() {
    const float sign = Parity() ? -1.0f : 1.0f;
    for (int i = 0; i < 3; ++i) {
        const float length = sign * static_cast<float>(std::sqrt(LengthSquared(m_[i])));
        std::fill_n(m_[i], 3, 0.0f);
        m_[i][i] = length;
    }
    ValidateFlags();
}

void Matrix3::NoScale() {
    for (int i = 0; i < 3; ++i)
        SetRow(i, GetRow(i).Normalize());
}

void Matrix3::Translate(const Point3& translation) {
    SetTrans(GetTrans() + translation);
}

void Matrix3::RotateX(float angle) {
    *this = *this * RotateXMatrix(angle);
}

void Matrix3::RotateY(float angle) {
    *this = *this * RotateYMatrix(angle);
}

void Matrix3::RotateZ(float angle) {
    *this = *this * RotateZMatrix(angle);
}

void Matrix3::Scale(const Point3& scale, BOOL trans) {
    for (int i = 0; i < (trans ? 4 : 3); ++i)
        SetRow(i, GetRow(i) * scale);
}

void Matrix3::PreTranslate(const Point3& translation) {
    SetTrans(PointTransform(translation));
}

void Matrix3::PreRotateX(float angle) {
    *this = RotateXMatrix(angle) * *this;
}

void Matrix3::PreRotateY(float angle) {
    *this = RotateYMatrix(angle) * *this;
}

void Matrix3::PreRotateZ(float angle) {
    *this = RotateZMatrix(angle) * *this;
}

void Matrix3::PreScale(const Point3& scale) {
    for (int i = 0; i < 3; ++i)
        SetRow(i, GetRow(i) * scale[i]);
}

void Matrix3::Invert() {
    *this = Inverse(*this);
}

BOOL Matrix3::Parity() const {
    return Determinant(m_) < 0;
}

int Matrix3::Equals(const Matrix3& other, float epsilon) const {
    for (int i = 0; i < 4; ++i) {
        if (!GetRow(i).Equals(other.GetRow(i), epsilon))
            return 0;
    }
    return 1;
}

Matrix3 Matrix3::operator*(const Matrix3& next) const {
    const DoubleRotation axes = RotationPartOf(next);
    const Point3 none(0, 0, 0);
    return Matrix3(Transformed(GetRow(0), axes.m, none), Transformed(GetRow(1), axes.m, none),
                   Transformed(GetRow(2), axes.m, none),
                   Transformed(GetTrans(), axes.m, next.GetTrans()));
}

Point3 Matrix3::PointTransform(const Point3& point) const {
    return Transformed(point, RotationPartOf(*this).m, GetTrans());
}

Point3 Matrix3::VectorTransform(const Point3& vector) const {
    return Transformed(vector, RotationPartOf(*this).m, Point3(0, 0, 0));
}

Point3 operator*(const Matrix3& matrix, const Point3& point) {
    return matrix.PointTransform(point);
}

Point3 operator*(const Point3& point, const Matrix3& matrix) {
    return matrix.PointTransform(point);
}

Point3 VectorTransform(const Matrix3& matrix, const Point3& vector) {
    return matrix.VectorTransform(vector);
}

Matrix3 Inverse(const Matrix3& matrix) {
    const std::optional<DoubleRotation> axes = InverseOfAxes(matrix.GetAddr());
    if (!axes)
        return Matrix3(1);
    Matrix3 inverse = Rounded(*axes);
    inverse.SetTrans(Transformed(-matrix.GetTrans(), axes->m, Point3(0, 0, 0)));
    return IsFinite(inverse) ? inverse : Matrix3(1);
}

Matrix3 RotateXMatrix(float angle) {
    return Rounded(RotationAbout(0, angle));
}

Matrix3 RotateYMatrix(float angle) {
    return Rounded(RotationAbout(1, angle));
}

Matrix3 RotateZMatrix(float angle) {
    return Rounded(RotationAbout(2, angle));
}

Matrix3 TransMatrix(const Point3& translation) {
    Matrix3 matrix(1);
    matrix.SetTrans(translation);
    return matrix;
}

Matrix3 ScaleMatrix(const Point3& scale) {
    Matrix3 matrix(1);
    matrix.PreScale(scale);
    return matrix;
}
