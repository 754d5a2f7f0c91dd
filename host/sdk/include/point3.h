// A point or vector of three floats.
#ifndef HOST_SDK_INCLUDE_POINT3_H
#define HOST_SDK_INCLUDE_POINT3_H

#include <coreexp.h>

class GEOMexport Point3 {
  public:
    float x, y, z;

    Point3() {}  // leaves the components uninitialised
    Point3(float X, float Y, float Z) : x(X), y(Y), z(Z) {}
    Point3(double X, double Y, double Z) : x((float)X), y((float)Y), z((float)Z) {}
    Point3(int X, int Y, int Z) : x((float)X), y((float)Y), z((float)Z) {}

    // `i` from 0 to 2.
    float& operator[](int i) { return i == 0 ? x : i == 1 ? y : z; }
    const float& operator[](int i) const { return i == 0 ? x : i == 1 ? y : z; }

    Point3 operator-() const { return Point3(-x, -y, -z); }
    Point3 operator+(const Point3& b) const { return Point3(x + b.x, y + b.y, z + b.z); }
    Point3 operator-(const Point3& b) const { return Point3(x - b.x, y - b.y, z - b.z); }

    // The cross product. Mind the precedence of the operators: + and - bind tighter than ^.
    Point3 operator^(const Point3& b) const;

    // A copy of length 1; a vector without length, or of no finite one, is given back as it is.
    Point3 Normalize() const;
};

inline Point3 Normalize(const Point3& a) {
    return a.Normalize();
}

#endif  // HOST_SDK_INCLUDE_POINT3_H
