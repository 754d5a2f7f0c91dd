#include "host/assimp/maths.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace maxhost::import {
namespace {

double Dot(const Quaternion& a, const Quaternion& b) {
    return a.w * b.w + a.x * b.x + a.y * b.y + a.z * b.z;
}

// ---------------------------------------------------------------- Euler angles

constexpr double kPi = 3.14159265358979323846;

// The angle that differs from `angle` by whole turns and lies nearest to `near`.
double TurnedNear(double angle, double near) {
    return angle - 2 * kPi * std::round((angle - near) / (2 * kPi));
}

Vector TurnedNear(const Vector& angles, const Vector& near) {
    return {TurnedNear(angles.x, near.x), TurnedNear(angles.y, near.y),
            TurnedNear(angles.z, near.z)};
}

// The same rotation beyond the pole.
Vector OtherSide(const Vector& angles) {
    return {angles.x + kPi, kPi - angles.y, angles.z + kPi};
}

Vector Nearest(const Vector& angles, const Vector& near) {
    const Vector one = TurnedNear(angles, near);
    const Vector other = TurnedNear(OtherSide(angles), near);
    return (other - near).SquareLength() < (one - near).SquareLength() ? other : one;
}

// ---------------------------------------------------------------- the nearest pose

using Columns = std::array<Vector, 3>;

Matrix3 MatrixOf(const Columns& c) {
    return {c[0].x, c[1].x, c[2].x, c[0].y, c[1].y, c[2].y, c[0].z, c[1].z, c[2].z};
}

Columns ColumnsOf(const Matrix3& m) {
    return {Vector(m.a1, m.b1, m.c1), Vector(m.a2, m.b2, m.c2), Vector(m.a3, m.b3, m.c3)};
}

// How far from right angles the unit vectors are.
double Skew(const Columns& unit) {
    return std::max(
        {std::abs(unit[0] * unit[1]), std::abs(unit[1] * unit[2]), std::abs(unit[2] * unit[0])});
}

// The rotation nearest to a matrix with a positive determinant: the orthogonal factor of its polar
// decomposition, by Newton's iteration (Higham 1986).
Matrix3 NearestRotation(Matrix3 m) {
    constexpr int kSteps = 30;
    constexpr double kDone = 1e-14;
    for (int i = 0; i < kSteps; ++i) {
        Matrix3 inverse = m;
        inverse.Inverse().Transpose();
        double change = 0;
        for (unsigned row = 0; row < 3; ++row) {
            for (unsigned column = 0; column < 3; ++column) {
                const double next = (m[row][column] + inverse[row][column]) / 2;
                change = std::max(change, std::abs(next - m[row][column]));
                m[row][column] = next;
            }
        }
        if (!(change > kDone)) {
            break;
        }
    }
    return m;
}

// Rotation and scale whose product lies nearest to the columns (least squares), by turns the one
// for the other.
void FitSheared(const Columns& columns, const Columns& unit, Pose& pose) {
    constexpr int kSteps = 12;
    Columns weighted = unit;
    for (int i = 0; i < kSteps; ++i) {
        const Matrix3 rotation = NearestRotation(MatrixOf(weighted));
        const Columns axes = ColumnsOf(rotation);
        pose.rotation = Unit(Quaternion(rotation));
        for (unsigned k = 0; k < 3; ++k) {
            pose.scale[k] = columns[k] * axes[k];
            weighted[k] = columns[k] * pose.scale[k];
        }
    }
}

}  // namespace

// ---------------------------------------------------------------- numbers that are not finite

float FiniteFloat(double number, std::size_t& notFinite) {
    if (std::abs(number) <= std::numeric_limits<float>::max()) {
        return static_cast<float>(number);
    }
    ++notFinite;
    return 0;
}

Vector FiniteVector(const aiVector3D& source, std::size_t& notFinite) {
    Vector finite(source.x, source.y, source.z);
    for (unsigned i = 0; i < 3; ++i) {
        if (!std::isfinite(finite[i])) {
            finite[i] = 0;
            ++notFinite;
        }
    }
    return finite;
}

Matrix4 FiniteMatrix(const aiMatrix4x4& source, std::size_t& notFinite) {
    Matrix4 matrix(source);
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column) {
            if (!std::isfinite(matrix[row][column])) {
                matrix[row][column] = 0;
                ++notFinite;
            }
        }
    }
    return matrix;
}

// ---------------------------------------------------------------- matrices

Vector Column(const Matrix4& m, unsigned column) {
    return {m[0][column], m[1][column], m[2][column]};
}

std::optional<Matrix4> InverseOf(const Matrix4& m) {
    const double determinant = m.Determinant();
    if (determinant == 0 || !std::isfinite(determinant)) {
        return std::nullopt;
    }
    return Matrix4(m).Inverse();
}

Vector TurnedNormal(const Matrix4& m, const Vector& normal) {
    const double side = m.Determinant() < 0 ? -1 : 1;
    Vector turned;
    for (unsigned row = 0; row < 3; ++row) {
        for (unsigned column = 0; column < 3; ++column) {
            const unsigned r1 = (row + 1) % 3, r2 = (row + 2) % 3;
            const unsigned c1 = (column + 1) % 3, c2 = (column + 2) % 3;
            turned[row] += side * (m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1]) * normal[column];
        }
    }
    return turned;
}

scene::Matrix RowMatrix(const Matrix4& m, std::size_t& notFinite) {
    scene::Matrix rows;
    for (unsigned i = 0; i < 4; ++i) {
        for (unsigned k = 0; k < 3; ++k) {
            rows[i][k] = FiniteFloat(m[k][i] + 0.0, notFinite);  // never -0
        }
    }
    return rows;
}

Matrix4 ColumnMatrix(const scene::Matrix& rows) {
    Matrix4 m;
    for (int i = 0; i < 4; ++i) {
        for (int k = 0; k < 3; ++k) {
            m[k][i] = rows[i][k];
        }
    }
    return m;
}

// ---------------------------------------------------------------- turns of the axes

scene::Vec3 AxisTurn::Apply(const scene::Vec3& v) const {
    scene::Vec3 turned;
    for (int i = 0; i < 3; ++i) {
        turned[i] = static_cast<float>(sign[i]) * v[from[i]] + 0.0f;  // never -0
    }
    return turned;
}

Matrix4 AxisTurn::Turn(const Matrix4& m) const {
    Matrix4 turned;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 4; ++column) {
            turned[row][column] = sign[row] * m[from[row]][column] + 0.0;
        }
    }
    return turned;
}

Matrix4 AxisTurn::Conjugate(const Matrix4& m) const {
    Matrix4 turned;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            turned[row][column] = sign[row] * sign[column] * m[from[row]][from[column]] + 0.0;
        }
        turned[row][3] = sign[row] * m[from[row]][3] + 0.0;
    }
    return turned;
}

AxisTurn AxisTurn::After(const AxisTurn& first) const {
    AxisTurn both;
    for (int i = 0; i < 3; ++i) {
        both.from[i] = first.from[from[i]];
        both.sign[i] = sign[i] * first.sign[from[i]];
    }
    return both;
}

// ---------------------------------------------------------------- rotations

Quaternion Unit(const Quaternion& q) {
    const double length = LengthOf(q);
    return length > 0 ? 1 / length * q : q;
}

Quaternion operator+(const Quaternion& a, const Quaternion& b) {
    return {a.w + b.w, a.x + b.x, a.y + b.y, a.z + b.z};
}

Quaternion operator*(double factor, const Quaternion& q) {
    return {factor * q.w, factor * q.x, factor * q.y, factor * q.z};
}

double LengthOf(const Vector& v) {
    return v.Length();
}

double LengthOf(const Quaternion& q) {
    return std::sqrt(Dot(q, q));
}

Vector Between(const Vector& a, const Vector& b, double s) {
    return a + (b - a) * s;
}

Quaternion Between(const Quaternion& a, Quaternion b, double s) {
    constexpr double kNearlyOne = 1 - 1e-12;
    double cosine = Dot(a, b);
    if (cosine < 0) {
        cosine = -cosine;
        b = -1.0 * b;
    }
    if (cosine > kNearlyOne) {
        return Unit((1 - s) * a + s * b);
    }
    if (s == 0) {
        return a + 0.0 * b;  // to the bit what follows
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

Vector EulerNear(const Quaternion& rotation, const Vector& near, double poleAngle) {
    constexpr double kLeastPoleAngle = 1e-9;
    // Columns for column vectors are the rows for row vectors.
    const aiMatrix3x3t<double> m = rotation.GetMatrix();
    const double cosine = std::hypot(m.a1, m.b1);
    const double y = std::atan2(-m.c1, cosine);
    if (cosine > std::max(poleAngle, kLeastPoleAngle)) {
        return Nearest({std::atan2(m.c2, m.c3), y, std::atan2(m.b1, m.a1)}, near);
    }
    // At the upper pole x - z is given, at the lower one x + z.
    const double sign = y > 0 ? -1 : 1;
    const double sum = std::atan2(-sign * m.a2, m.b2);
    const double rest = TurnedNear(sum, near.x + sign * near.z) - (near.x + sign * near.z);
    const double one = TurnedNear(y, near.y);
    const double other = TurnedNear(kPi - y, near.y);
    return {near.x + rest / 2, std::abs(other - near.y) < std::abs(one - near.y) ? other : one,
            near.z + sign * rest / 2};
}

Quaternion RotationOfEuler(const Vector& angles) {
    const Quaternion x(std::cos(angles.x / 2), std::sin(angles.x / 2), 0, 0);
    const Quaternion y(std::cos(angles.y / 2), 0, std::sin(angles.y / 2), 0);
    const Quaternion z(std::cos(angles.z / 2), 0, 0, std::sin(angles.z / 2));
    return z * y * x;
}

// ---------------------------------------------------------------- poses

Pose PoseOf(const Matrix4& matrix, const Quaternion* reference) {
    constexpr double kRightAngles = 1e-9;
    constexpr double kFlat = 1e-6;
    const Quaternion rest = reference ? *reference : Quaternion();
    const Columns axes = ColumnsOf(rest.GetMatrix());
    Columns columns, unit;
    Pose pose;
    pose.position = PositionOf(matrix);
    for (int k = 0; k < 3; ++k) {
        columns[k] = Column(matrix, k);
        const double length = columns[k].Length();
        pose.scale[k] = reference && columns[k] * axes[k] < 0 ? -length : length;
        unit[k] = length > 0 ? columns[k] / pose.scale[k] : axes[k];
    }
    double volume = MatrixOf(unit).Determinant();
    if (volume < 0) {
        for (unsigned k = 0; k < 3; ++k) {
            pose.scale[k] = -pose.scale[k];
            unit[k] = unit[k] * -1.0;
        }
        volume = -volume;
    }
    pose.shear = Skew(unit);
    if (pose.shear <= kRightAngles) {
        pose.rotation = Unit(Quaternion(MatrixOf(unit)));
    } else if (volume > kFlat) {
        FitSheared(columns, unit, pose);
    } else {
        pose.rotation = rest;
    }
    return pose;
}

}  // namespace maxhost::import
