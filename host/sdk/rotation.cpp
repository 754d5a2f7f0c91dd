#include "host/sdk/rotation.h"

#include <cmath>

namespace maxhost {

DoubleQuat ToDouble(const Quat& q) {
    return {q.x, q.y, q.z, q.w};
}

DoubleRotation RotationPartOf(const Matrix3& matrix) {
    DoubleRotation part;
    const MRow* rows = matrix.GetAddr();
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j)
            part.m[i][j] = rows[i][j];
    }
    return part;
}

Quat Rounded(const DoubleQuat& q) {
    return Quat(q.x, q.y, q.z, q.w);
}

Matrix3 Rounded(const DoubleRotation& rotation) {
    const auto row = [&rotation](int i) {
        return Point3(rotation.m[i][0], rotation.m[i][1], rotation.m[i][2]);
    };
    return Matrix3(row(0), row(1), row(2), Point3(0, 0, 0));
}

DoubleQuat Product(const DoubleQuat& p, const DoubleQuat& q) {
    return {p.w * q.x + p.x * q.w + p.y * q.z - p.z * q.y,
            p.w * q.y - p.x * q.z + p.y * q.w + p.z * q.x,
            p.w * q.z + p.x * q.y - p.y * q.x + p.z * q.w,
            p.w * q.w - p.x * q.x - p.y * q.y - p.z * q.z};
}

DoubleRotation Product(const DoubleRotation& first, const DoubleRotation& next) {
    DoubleRotation product;
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            product.m[i][j] = first.m[i][0] * next.m[0][j] + first.m[i][1] * next.m[1][j] +
                              first.m[i][2] * next.m[2][j];
        }
    }
    return product;
}

DoubleQuat Normalized(const DoubleQuat& q) {
    const double length = std::sqrt(q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w);
    if (!(length > 0) || !std::isfinite(length))
        return {};
    return {q.x / length, q.y / length, q.z / length, q.w / length};
}

DoubleRotation RotationOf(const DoubleQuat& q) {
    const auto [x, y, z, w] = Normalized(q);
    return {{{1 - 2 * (y * y + z * z), 2 * (x * y - w * z), 2 * (x * z + w * y)},
             {2 * (x * y + w * z), 1 - 2 * (x * x + z * z), 2 * (y * z - w * x)},
             {2 * (x * z - w * y), 2 * (y * z + w * x), 1 - 2 * (x * x + y * y)}}};
}

DoubleQuat QuatOf(const DoubleRotation& rotation) {
    const auto& m = rotation.m;
    const double trace = m[0][0] + m[1][1] + m[2][2];
    // The component of largest size is found from the diagonal; the others are divided by it.
    // Every case gives four times that component times the quaternion.
    DoubleQuat q;
    if (trace >= m[0][0] && trace >= m[1][1] && trace >= m[2][2]) {
        q = {m[2][1] - m[1][2], m[0][2] - m[2][0], m[1][0] - m[0][1], 1 + trace};
    } else if (m[0][0] >= m[1][1] && m[0][0] >= m[2][2]) {
        q = {1 + 2 * m[0][0] - trace, m[0][1] + m[1][0], m[0][2] + m[2][0], m[2][1] - m[1][2]};
    } else if (m[1][1] >= m[2][2]) {
        q = {m[0][1] + m[1][0], 1 + 2 * m[1][1] - trace, m[1][2] + m[2][1], m[0][2] - m[2][0]};
    } else {
        q = {m[0][2] + m[2][0], m[1][2] + m[2][1], 1 + 2 * m[2][2] - trace, m[1][0] - m[0][1]};
    }
    if (q.w < 0)
        q = {-q.x, -q.y, -q.z, -q.w};
    const auto [x, y, z, w] = Normalized(q);
    return {x + 0.0, y + 0.0, z + 0.0, w + 0.0};  // no negative zeros
}

DoubleRotation RotationAbout(int axis, double angle) {
    const int next = (axis + 1) % 3;
    const int last = (axis + 2) % 3;
    DoubleRotation rotation;
    rotation.m[next][next] = rotation.m[last][last] = std::cos(angle);
    rotation.m[next][last] = std::sin(angle);
    rotation.m[last][next] = -std::sin(angle);
    return rotation;
}

DoubleQuat QuatAbout(int axis, double angle) {
    const double sine = -std::sin(angle / 2);
    return {axis == 0 ? sine : 0, axis == 1 ? sine : 0, axis == 2 ? sine : 0, std::cos(angle / 2)};
}

}  // namespace maxhost
