// Comparison and random values for the tests of the helper types.
#pragma once

#include <gtest/gtest.h>
#include <matrix3.h>
#include <point3.h>
#include <quat.h>

#include <cstdint>
#include <random>

constexpr float kPi = 3.14159265f;

inline void ExpectNear(const Point3& actual, const Point3& expected, float tolerance = 1e-6f) {
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(actual[i], expected[i], tolerance) << "component " << i;
}

inline void ExpectNear(const Quat& actual, const Quat& expected, float tolerance = 1e-6f) {
    for (int i = 0; i < 4; ++i)
        EXPECT_NEAR(actual[i], expected[i], tolerance) << "component " << i;
}

inline void ExpectNear(const Matrix3& actual, const Matrix3& expected, float tolerance = 1e-6f) {
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 3; ++j) {
            EXPECT_NEAR(actual.GetAddr()[i][j], expected.GetAddr()[i][j], tolerance)
                << "row " << i << ", column " << j;
        }
    }
}

// The same values on every system.
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
        const Point3 vector = Vector(1);
        return Quat(vector.x, vector.y, vector.z, Between(-1, 1)).Normalize();
    }

  private:
    std::mt19937 generator_{20120411};
};
