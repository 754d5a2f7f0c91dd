#include "kta/gltf/decompose.h"

#include <algorithm>

namespace kta::gltf {
namespace {

using Axes = std::array<Vector3, 3>;  // a matrix by its columns

Vector3 Times(const Axes& m, const Vector3& v) {
    return m[0] * v[0] + m[1] * v[1] + m[2] * v[2];
}

// The transposed m times n.
Axes TransposedTimes(const Axes& m, const Axes& n) {
    Axes product{};
    for (std::size_t column = 0; column < 3; ++column) {
        for (std::size_t row = 0; row < 3; ++row) {
            product[column][row] = Dot(m[row], n[column]);
        }
    }
    return product;
}

// The rotation nearest to a matrix with volume that mirrors nothing: Newton's iteration (Higham,
// Computing the Polar Decomposition, 1986) averages it with its transposed inverse.
Axes NearestRotation(Axes m) {
    constexpr int kMostSteps = 60;
    constexpr double kConverged = 1e-14;
    for (int step = 0; step < kMostSteps; ++step) {
        const double determinant = Dot(m[0], Cross(m[1], m[2]));
        const Axes inverse = {Cross(m[1], m[2]) * (1 / determinant),
                              Cross(m[2], m[0]) * (1 / determinant),
                              Cross(m[0], m[1]) * (1 / determinant)};
        double change = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            const Vector3 next = (m[i] + inverse[i]) * 0.5;
            change = std::max(change, Length(next - m[i]));
            m[i] = next;
        }
        if (!(change > kConverged)) {
            break;
        }
    }
    return m;
}

// Of a rotation (Shepperd, Quaternion from Rotation Matrix, 1978): from the greatest of the four
// components, so that none is lost in rounding.
Quaternion QuaternionOf(const Axes& m) {
    const double trace = m[0][0] + m[1][1] + m[2][2];
    const std::array<double, 4> squares = {m[0][0], m[1][1], m[2][2], trace};
    const auto greatest = static_cast<std::size_t>(
        std::max_element(squares.begin(), squares.end()) - squares.begin());
    if (greatest == 3) {
        return Normalized(
            Quaternion{m[1][2] - m[2][1], m[2][0] - m[0][2], m[0][1] - m[1][0], 1 + trace});
    }
    const std::size_t i = greatest, j = (i + 1) % 3, k = (i + 2) % 3;
    Quaternion q{};
    q[i] = 1 + m[i][i] - m[j][j] - m[k][k];
    q[j] = m[j][i] + m[i][j];
    q[k] = m[k][i] + m[i][k];
    q[3] = m[j][k] - m[k][j];
    return Normalized(q);
}

// The off-diagonal of a symmetric matrix, as a share of its diagonal.
double OffDiagonal(const Axes& s) {
    const double diagonal = std::max({std::abs(s[0][0]), std::abs(s[1][1]), std::abs(s[2][2])});
    return std::max({std::abs(s[1][0]), std::abs(s[2][0]), std::abs(s[2][1])}) / diagonal;
}

// The axes along which a symmetric matrix scales, by Jacobi's rotations, as a rotation.
Axes PrincipalAxes(Axes s) {
    constexpr int kMostSweeps = 30;
    constexpr double kConverged = 1e-15;
    Axes axes = Affine().axes;
    for (int sweep = 0; sweep < kMostSweeps && OffDiagonal(s) > kConverged; ++sweep) {
        for (std::size_t p = 0; p < 2; ++p) {
            for (std::size_t q = p + 1; q < 3; ++q) {
                if (s[q][p] == 0) {
                    continue;
                }
                const double theta = (s[q][q] - s[p][p]) / (2 * s[q][p]);
                const double t = (theta < 0 ? -1 : 1) / (std::abs(theta) + std::hypot(theta, 1.0));
                const double cosine = 1 / std::hypot(t, 1.0);
                const double sine = t * cosine;
                Axes turn = Affine().axes;
                turn[p][p] = turn[q][q] = cosine;
                turn[q][p] = sine;
                turn[p][q] = -sine;
                Axes turned{};
                for (std::size_t i = 0; i < 3; ++i) {
                    turned[i] = Times(s, turn[i]);
                }
                s = TransposedTimes(turn, turned);
                for (std::size_t i = 0; i < 3; ++i) {
                    turned[i] = Times(axes, turn[i]);
                }
                axes = turned;
            }
        }
    }
    return axes;
}

// The parts of a map with volume: sign * rotation * stretch, the stretch symmetric.
struct Polar {
    double sign = 1;
    Axes rotation;
    Axes stretch;
};

Polar PolarOf(const Affine& a) {
    Polar polar;
    polar.sign = Determinant(a) < 0 ? -1 : 1;
    const Axes positive = {a.axes[0] * polar.sign, a.axes[1] * polar.sign, a.axes[2] * polar.sign};
    polar.rotation = NearestRotation(positive);
    polar.stretch = TransposedTimes(polar.rotation, positive);
    return polar;
}

// An angle of 0.006 degrees between axes and right ones is rounding of what they were got from.
constexpr double kNoShear = 1e-4;

Vector3 Diagonal(const Axes& m, double sign) {
    return Vector3{m[0][0], m[1][1], m[2][2]} * sign;
}

}  // namespace

bool IsNearlyIdentity(const Affine& a, double size) {
    constexpr double kShare = 1e-5;
    const Affine identity;
    for (std::size_t i = 0; i < 3; ++i) {
        if (!(Length(a.axes[i] - identity.axes[i]) <= kShare)) {
            return false;
        }
    }
    return Length(a.translation) <= kShare * (size + 1e-3);
}

Decomposition Decompose(const Affine& a) {
    const Polar polar = PolarOf(a);
    Decomposition parts;
    parts.transform.translation = a.translation;
    parts.transform.rotation = QuaternionOf(polar.rotation);
    parts.transform.scale = Diagonal(polar.stretch, polar.sign);
    if (OffDiagonal(polar.stretch) > kNoShear) {
        for (std::size_t column = 0; column < 3; ++column) {
            for (std::size_t row = 0; row < 3; ++row) {
                parts.rest.axes[column][row] = polar.stretch[column][row] / polar.stretch[row][row];
            }
        }
    }
    return parts;
}

std::vector<Transform> Factors(const Affine& a) {
    const Polar polar = PolarOf(a);
    if (OffDiagonal(polar.stretch) <= kNoShear) {
        return {Decompose(a).transform};
    }
    const Axes axes = PrincipalAxes(polar.stretch);
    Axes turned{}, stretched{};
    for (std::size_t i = 0; i < 3; ++i) {
        turned[i] = Times(polar.rotation, axes[i]);
        stretched[i] = Times(polar.stretch, axes[i]);
    }
    const Quaternion back = QuaternionOf(axes);
    return {{a.translation, QuaternionOf(turned),
             Diagonal(TransposedTimes(axes, stretched), polar.sign)},
            {{}, {-back[0], -back[1], -back[2], back[3]}, {1, 1, 1}}};
}

}  // namespace kta::gltf
