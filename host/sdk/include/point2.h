#ifndef HOST_SDK_INCLUDE_POINT2_H
#define HOST_SDK_INCLUDE_POINT2_H

class Point2 {
  public:
    float x, y;

    Point2() {}  // leaves the components uninitialised
    Point2(float X, float Y) : x(X), y(Y) {}
    Point2(double X, double Y) : x((float)X), y((float)Y) {}
    Point2(int X, int Y) : x((float)X), y((float)Y) {}

    // `i` is 0 or 1.
    float& operator[](int i) { return i == 0 ? x : y; }
    const float& operator[](int i) const { return i == 0 ? x : y; }

    Point2 operator-() const { return Point2(-x, -y); }
    Point2 operator+(const Point2& b) const { return Point2(x + b.x, y + b.y); }
    Point2 operator-(const Point2& b) const { return Point2(x - b.x, y - b.y); }
    int operator==(const Point2& b) const { return x == b.x && y == b.y; }
    int operator!=(const Point2& b) const { return !(*this == b); }
};

inline Point2 operator*(float f, const Point2& a) {
    return Point2(a.x * f, a.y * f);
}
inline Point2 operator*(const Point2& a, float f) {
    return Point2(a.x * f, a.y * f);
}
inline Point2 operator/(const Point2& a, float f) {
    return Point2(a.x / f, a.y / f);
}

#endif  // HOST_SDK_INCLUDE_POINT2_H
