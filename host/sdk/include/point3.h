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
    Point3(const float components[3]) : x(components[0]), y(components[1]), z(components[2]) {}

    // `i` from 0 to 2.
    float& operator[](int i) { return i == 0 ? x : i == 1 ? y : z; }
    const float& operator[](int i) const { return i == 0 ? x : i == 1 ? y : z; }

    Point3 operator-() const { return Point3(-x, -y, -z); }
    Point3 operator+() const { return *this; }

    Point3& operator+=(const Point3& b) { return *this = *this + b; }
    Point3& operator-=(const Point3& b) { return *this = *this - b; }
    Point3& operator*=(float f) { return *this = Point3(x * f, y * f, z * f); }
    Point3& operator/=(float f) { return *this = Point3(x / f, y / f, z / f); }
    Point3& operator*=(const Point3& b) { return *this = *this * b; }

    Point3 operator+(const Point3& b) const { return Point3(x + b.x, y + b.y, z + b.z); }
    Point3 operator-(const Point3& b) const { return Point3(x - b.x, y - b.y, z - b.z); }
    Point3 operator*(const Point3& b) const { return Point3(x * b.x, y * b.y, z * b.z); }
    Point3 operator/(const Point3& b) const { return Point3(x / b.x, y / b.y, z / b.z); }

    // Products of vectors. Mind the precedence of the operators: + and - bind tighter than ^.
    float operator%(const Point3& b) const;   // dot product
    Point3 operator^(const Point3& b) const;  // cross product

    int operator==(const Point3& b) const { return x == b.x && y == b.y && z == b.z; }
    int operator!=(const Point3& b) const { return !(*this == b); }
    // Whether no component differs by more than `epsilon`.
    int Equals(const Point3& b, float epsilon = 1E-6f) const;

    float Length() const;
    float LengthSquared() const;
    // A copy of length 1; a vector without length, or of no finite one, is given back as it is.
    Point3 Normalize() const;
    Point3& Unify() { return *this = Normalize(); }
};

inline Point3 operator*(float f, const Point3& a) {
    return Point3(a.x * f, a.y * f, a.z * f);
}
inline Point3 operator*(const Point3& a, float f) {
    return Point3(a.x * f, a.y * f, a.z * f);
}
inline Point3 operator/(const Point3& a, float f) {
    return Point3(a.x / f, a.y / f, a.z / f);
}

inline float Length(const Point3& a) {
    return a.Length();
}
inline float LengthSquared(const Point3& a) {
    return a.LengthSquared();
}
inline Point3 Normalize(const Point3& a) {
    return a.Normalize();
}
inline float DotProd(const Point3& a, const Point3& b) {
    return a % b;
}
inline Point3 CrossProd(const Point3& a, const Point3& b) {
    return a ^ b;
}

#endif  // HOST_SDK_INCLUDE_POINT3_H
