#include "host/sdk/math/affine.h"

namespace maxhost {
namespace {

Double3 Transform(const Double3& row, const Affine& by) {
    Double3 result;
    for (int column = 0; column < 3; ++column) {
        result[column] =
            row[0] * by.rows[0][column] + row[1] * by.rows[1][column] + row[2] * by.rows[2][column];
    }
    return result;
}

}  // namespace

Affine Affine::operator*(const Affine& next) const {
    Affine result;
    for (int row = 0; row < 4; ++row) {
        result.rows[row] = Transform(rows[row], next);
    }
    for (int column = 0; column < 3; ++column) {
        result.rows[3][column] += next.rows[3][column];
    }
    return result;
}

Affine ToAffine(const scene::Matrix& matrix) {
    Affine result;
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 3; ++column) {
            result.rows[row][column] = matrix[row][column];
        }
    }
    return result;
}

Affine ToAffine(const Matrix3& matrix) {
    Affine result;
    for (int row = 0; row < 4; ++row) {
        const Point3 values = matrix.GetRow(row);
        result.rows[row] = {values.x, values.y, values.z};
    }
    return result;
}

Matrix3 ToMatrix3(const Affine& transform) {
    const auto row = [&transform](int i) {
        const Double3& values = transform.rows[i];
        return Point3(values[0], values[1], values[2]);
    };
    return Matrix3(row(0), row(1), row(2), row(3));
}

}  // namespace maxhost
