#include <quat.h>

#include <cmath>

#include "host/sdk/math/affine.h"

namespace {

// Of unit length and without negative zeros; of a length that is not finite or zero, the identity.
Quat Normalized(double x, double y, double z, double w) {
    const double length = std::sqrt(x * x + y * y + z * z + w * w);
    if (!(length > 0) || !std::isfinite(length))
        return Quat(0.0f, 0.0f, 0.0f, 1.0f);
    return Quat(x / length + 0.0, y / length + 0.0, z / length + 0.0, w / length + 0.0);
}

}  // namespace

// The component of largest size is found from the diagonal; the others are divided by it. Every
// case gives four times that component times the quaternion.
Quat::Quat(const Matrix3& matrix) {
    const auto m = maxhost::ToAffine(matrix).rows;
    const double trace = m[0][0] + m[1][1] + m[2][2];
    double q[4];
    const auto set = [&q](double X, double Y, double Z, double W) {
        const double sign = W < 0 ? -1 : 1;
        q[0] = sign * X, q[1] = sign * Y, q[2] = sign * Z, q[3] = sign * W;
    };
    if (trace >= m[0][0] && trace >= m[1][1] && trace >= m[2][2]) {
        set(m[2][1] - m[1][2], m[0][2] - m[2][0], m[1][0] - m[0][1], 1 + trace);
    } else if (m[0][0] >= m[1][1] && m[0][0] >= m[2][2]) {
        set(1 + 2 * m[0][0] - trace, m[0][1] + m[1][0], m[0][2] + m[2][0], m[2][1] - m[1][2]);
    } else if (m[1][1] >= m[2][2]) {
        set(m[0][1] + m[1][0], 1 + 2 * m[1][1] - trace, m[1][2] + m[2][1], m[0][2] - m[2][0]);
    } else {
        set(m[0][2] + m[2][0], m[1][2] + m[2][1], 1 + 2 * m[2][2] - trace, m[1][0] - m[0][1]);
    }
    *this = Normalized(q[0], q[1], q[2], q[3]);
}

void AngAxisFromQ(const Quat& q, float* ang, Point3& axis) {
    const double w = q.w < -1 ? -1 : q.w < 1 ? q.w : 1;
    *ang = static_cast<float>(2 * std::acos(w));
    const Point3 vector(q.x, q.y, q.z);
    const double length = std::sqrt(double{q.x} * q.x + double{q.y} * q.y + double{q.z} * q.z);
    axis = length > 0 && std::isfinite(length) ? vector.Normalize() : Point3(1, 0, 0);
}
