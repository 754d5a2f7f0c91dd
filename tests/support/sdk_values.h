// Comparisons of the SDK's vectors and matrices, and matrices made for tests.
#pragma once

#include <decomp.h>
#include <gtest/gtest.h>
#include <matrix3.h>
#include <point3.h>
#include <quat.h>

#include <cmath>
#include <random>
#include <string>

inline bool operator==(const Point3& a, const Point3& b) {
    return a.x == b.x && a.y == b.y && a.z == b.z;
}

inline Point3 operator*(const Point3& a, float factor) {
    return Point3(a.x * factor, a.y * factor, a.z * factor);
}

// ---------------------------------------------------------------- comparisons

inline bool IsNear(const Point3& a, const Point3& b, float tolerance = 1e-6f) {
    return std::fabs(a.x - b.x) <= tolerance && std::fabs(a.y - b.y) <= tolerance &&
           std::fabs(a.z - b.z) <= tolerance;
}

inline void ExpectNear(const Point3& actual, const Point3& expected, float tolerance = 1e-6f) {
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(actual[i], expected[i], tolerance) << "component " << i;
}

inline void ExpectNear(const Quat& actual, const Quat& expected, float tolerance = 1e-6f) {
    EXPECT_NEAR(actual.x, expected.x, tolerance) << "x";
    EXPECT_NEAR(actual.y, expected.y, tolerance) << "y";
    EXPECT_NEAR(actual.z, expected.z, tolerance) << "z";
    EXPECT_NEAR(actual.w, expected.w, tolerance) << "w";
}

inline void ExpectNear(const Matrix3& actual, const Matrix3& expected, float tolerance = 1e-6f) {
    for (int i = 0; i < 4; ++i) {
        SCOPED_TRACE("row " + std::to_string(i));
        ExpectNear(actual.GetRow(i), expected.GetRow(i), tolerance);
    }
}

inline bool IsNear(const Matrix3& a, const Matrix3& b, float tolerance = 1e-6f) {
    for (int i = 0; i < 4; ++i) {
        if (!IsNear(a.GetRow(i), b.GetRow(i), tolerance))
            return false;
    }
    return true;
}

// Bit by bit, but for the signs of zeros.
inline bool IsTruly(const Matrix3& actual, const Matrix3& expected) {
    for (int i = 0; i < 4; ++i) {
        if (!(actual.GetRow(i) == expected.GetRow(i)))
            return false;
    }
    return true;
}

// ---------------------------------------------------------------- matrices for row vectors

// Turns by the right-hand rule, in radians.
inline Matrix3 RotateXMatrix(float angle) {
    const double s = std::sin(double{angle}), c = std::cos(double{angle});
    return Matrix3(Point3(1, 0, 0), Point3(0.0, c, s), Point3(0.0, -s, c), Point3(0, 0, 0));
}
inline Matrix3 RotateYMatrix(float angle) {
    const double s = std::sin(double{angle}), c = std::cos(double{angle});
    return Matrix3(Point3(c, 0.0, -s), Point3(0, 1, 0), Point3(s, 0.0, c), Point3(0, 0, 0));
}
inline Matrix3 RotateZMatrix(float angle) {
    const double s = std::sin(double{angle}), c = std::cos(double{angle});
    return Matrix3(Point3(c, s, 0.0), Point3(-s, c, 0.0), Point3(0, 0, 1), Point3(0, 0, 0));
}
inline Matrix3 ScaleMatrix(const Point3& scale) {
    return Matrix3(Point3(scale.x, 0.0f, 0.0f), Point3(0.0f, scale.y, 0.0f),
                   Point3(0.0f, 0.0f, scale.z), Point3(0, 0, 0));
}
inline Matrix3 TransMatrix(const Point3& translation) {
    return Matrix3(Point3(1, 0, 0), Point3(0, 1, 0), Point3(0, 0, 1), translation);
}
// The same axes with another translation.
inline Matrix3 WithTranslation(const Matrix3& axes, const Point3& translation) {
    return Matrix3(axes.GetRow(0), axes.GetRow(1), axes.GetRow(2), translation);
}

// Of the 3 x 3 part.
inline double Determinant(const Matrix3& m) {
    const Point3 a = m.GetRow(0), b = m.GetRow(1), c = m.GetRow(2);
    return a.x * (double{b.y} * c.z - double{b.z} * c.y) +
           a.y * (double{b.z} * c.x - double{b.x} * c.z) +
           a.z * (double{b.x} * c.y - double{b.y} * c.x);
}

// The SDK's matrix of a quaternion, made of length 1: element by element the textbook's
// column-vector matrix.
inline Matrix3 MatrixOf(const Quat& q) {
    const double length =
        std::sqrt(double{q.x} * q.x + double{q.y} * q.y + double{q.z} * q.z + double{q.w} * q.w);
    const double x = q.x / length, y = q.y / length, z = q.z / length, w = q.w / length;
    return Matrix3(Point3(1 - 2 * (y * y + z * z), 2 * (x * y - w * z), 2 * (x * z + w * y)),
                   Point3(2 * (x * y + w * z), 1 - 2 * (x * x + z * z), 2 * (y * z - w * x)),
                   Point3(2 * (x * z - w * y), 2 * (y * z + w * x), 1 - 2 * (x * x + y * y)),
                   Point3(0, 0, 0));
}

// ---------------------------------------------------------------- random values

// The same on every system.
class RandomValues {
  public:
    float Between(float low, float high) {
        return low + (high - low) * static_cast<float>(generator_() / 4294967296.0);
    }
    Point3 Vector(float size) {
        const float x = Between(-size, size);
        const float y = Between(-size, size);
        return Point3(x, y, Between(-size, size));
    }
    Quat UnitQuat() {
        const double x = Between(-1, 1), y = Between(-1, 1), z = Between(-1, 1), w = Between(-1, 1);
        const double length = std::sqrt(x * x + y * y + z * z + w * w);
        return Quat(x / length, y / length, z / length, w / length);
    }

  private:
    std::mt19937 generator_{20120411};
};
