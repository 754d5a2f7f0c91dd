#include <matrix3.h>

#include <cfloat>
#include <cmath>
#include <optional>

#include "host/sdk/math/affine.h"

using namespace maxhost;

namespace {

// Determinant of the 3 x 3 part; 0 where it cannot be told from 0 in double.
double Determinant(const Affine& matrix) {
    const auto& m = matrix.rows;
    double sum = 0, size = 0;
    for (int i = 0; i < 3; ++i) {
        const int j = (i + 1) % 3;
        const int k = (i + 2) % 3;
        const double plus = m[0][i] * m[1][j] * m[2][k];
        const double minus = m[0][i] * m[1][k] * m[2][j];
        sum += plus - minus;
        size += std::fabs(plus) + std::fabs(minus);
    }
    return std::fabs(sum) <= 8 * DBL_EPSILON * size ? 0 : sum;
}

// The inverse of the 3 x 3 part, without translation.
std::optional<Affine> InverseOfAxes(const Affine& matrix) {
    const double determinant = Determinant(matrix);
    if (determinant == 0)
        return std::nullopt;
    const auto& m = matrix.rows;
    Affine inverse;
    for (int i = 0; i < 3; ++i) {
        const int i1 = (i + 1) % 3;
        const int i2 = (i + 2) % 3;
        for (int j = 0; j < 3; ++j) {
            const int j1 = (j + 1) % 3;
            const int j2 = (j + 2) % 3;
            const double cofactor = m[i1][j1] * m[i2][j2] - m[i1][j2] * m[i2][j1];
            inverse.rows[j][i] = cofactor / determinant;
        }
    }
    return inverse;
}

// `v` times the 3 x 3 part plus `offset`.
Point3 Transformed(const Point3& v, const Affine& axes, const Point3& offset) {
    const auto component = [&](int j) {
        return v.x * axes.rows[0][j] + v.y * axes.rows[1][j] + v.z * axes.rows[2][j];
    };
    return Point3(component(0) + offset.x, component(1) + offset.y, component(2) + offset.z);
}

bool IsFinite(const Matrix3& matrix) {
    for (int i = 0; i < 4; ++i) {
        const Point3 row = matrix.GetRow(i);
        if (!std::isfinite(row.x) || !std::isfinite(row.y) || !std::isfinite(row.z))
            return false;
    }
    return true;
}

}  // namespace

Matrix3::Matrix3() : Matrix3(FALSE) {
}

Matrix3::Matrix3(BOOL init) {
    const int one = init ? 1 : 0;
    *this = Matrix3(Point3(one, 0, 0), Point3(0, one, 0), Point3(0, 0, one), Point3(0, 0, 0));
}

Matrix3::Matrix3(const Point3& U, const Point3& V, const Point3& N, const Point3& T)
    : rows_{U, V, N, T} {
}

void Matrix3::NoTrans() {
    rows_[3] = Point3(0, 0, 0);
}

void Matrix3::NoScale() {
    for (int i = 0; i < 3; ++i)
        rows_[i] = rows_[i].Normalize();
}

Matrix3 Matrix3::operator*(const Matrix3& next) const {
    const Affine axes = ToAffine(next);
    const Point3 none(0, 0, 0);
    return Matrix3(Transformed(rows_[0], axes, none), Transformed(rows_[1], axes, none),
                   Transformed(rows_[2], axes, none), Transformed(rows_[3], axes, next.rows_[3]));
}

Point3 operator*(const Matrix3& matrix, const Point3& point) {
    return Transformed(point, ToAffine(matrix), matrix.GetTrans());
}

Point3 VectorTransform(const Matrix3& matrix, const Point3& vector) {
    return Transformed(vector, ToAffine(matrix), Point3(0, 0, 0));
}

Matrix3 Inverse(const Matrix3& matrix) {
    const std::optional<Affine> axes = InverseOfAxes(ToAffine(matrix));
    if (!axes)
        return Matrix3(TRUE);
    const Matrix3 rounded = ToMatrix3(*axes);
    const Matrix3 inverse(rounded.GetRow(0), rounded.GetRow(1), rounded.GetRow(2),
                          Transformed(-matrix.GetTrans(), *axes, Point3(0, 0, 0)));
    return IsFinite(inverse) ? inverse : Matrix3(TRUE);
}
