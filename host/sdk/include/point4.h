#ifndef HOST_SDK_INCLUDE_POINT4_H
#define HOST_SDK_INCLUDE_POINT4_H

class Point4 {
  public:
    float x, y, z, w;

    Point4() {}  // leaves the components uninitialised
    Point4(float X, float Y, float Z, float W) : x(X), y(Y), z(Z), w(W) {}

    // `i` from 0 to 3.
    float& operator[](int i) { return i == 0 ? x : i == 1 ? y : i == 2 ? z : w; }
    const float& operator[](int i) const { return i == 0 ? x : i == 1 ? y : i == 2 ? z : w; }

    int operator==(const Point4& b) const { return x == b.x && y == b.y && z == b.z && w == b.w; }
    int operator!=(const Point4& b) const { return !(*this == b); }
};

#endif  // HOST_SDK_INCLUDE_POINT4_H
