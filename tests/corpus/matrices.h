// Matrices for column vectors, in the comparisons with the models.
#pragma once

#include <algorithm>
#include <cmath>

#include "tests/corpus/model.h"

namespace corpus {

inline Matrix Inverse(Matrix m) {
    return m.Inverse();
}

inline Vector Column(const Matrix& m, unsigned i) {
    return {m[0][i], m[1][i], m[2][i]};
}

// Takes normals where the matrix with this inverse takes positions.
inline Vector TurnNormal(const Matrix& inverse, const Vector& n) {
    return {inverse.a1 * n.x + inverse.b1 * n.y + inverse.c1 * n.z,
            inverse.a2 * n.x + inverse.b2 * n.y + inverse.c2 * n.z,
            inverse.a3 * n.x + inverse.b3 * n.y + inverse.c3 * n.z};
}

// The determinant as a share of what the columns' lengths allow: 1 for a rotation with scales, -1
// for a mirrored one.
inline double Share(const Matrix& m) {
    const double lengths = Column(m, 0).Length() * Column(m, 1).Length() * Column(m, 2).Length();
    return lengths > 0 ? m.Determinant() / lengths : 0;
}

// Squeezed so far that nothing can be said of what stands in it.
inline bool IsFlat(const Matrix& m) {
    constexpr double kFlat = 1e-6;
    const double share = Share(m);
    return !(share > kFlat || share < -kFlat);
}

// Newton's iteration to the orthogonal polar factor.
inline Matrix RotationPart(Matrix m) {
    m.a4 = m.b4 = m.c4 = 0;
    for (int i = 0; i < 40; ++i) {
        Matrix inverse = Inverse(m);
        inverse.Transpose();
        double change = 0;
        for (unsigned row = 0; row < 3; ++row) {
            for (unsigned column = 0; column < 3; ++column) {
                const double next = (m[row][column] + inverse[row][column]) / 2;
                change = std::max(change, std::abs(next - m[row][column]));
                m[row][column] = next;
            }
        }
        if (change < 1e-12) {
            break;
        }
    }
    return m;
}

// How far the rotation parts are turned apart.
inline double DegreesBetween(const Matrix& a, const Matrix& b) {
    const Matrix first = RotationPart(a), second = RotationPart(b);
    double squares = 0;
    for (unsigned row = 0; row < 3; ++row) {
        for (unsigned column = 0; column < 3; ++column) {
            const double difference = first[row][column] - second[row][column];
            squares += difference * difference;
        }
    }
    return 2 * std::asin(std::min(1.0, std::sqrt(squares / 8))) * 180 / 3.14159265358979323846;
}

}  // namespace corpus
