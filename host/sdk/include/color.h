// A colour of three floats, each 0 to 1 on the screen.
#ifndef HOST_SDK_INCLUDE_COLOR_H
#define HOST_SDK_INCLUDE_COLOR_H

#include <coreexp.h>
#include <point3.h>
#include <windows.h>

class GEOMexport Color {
  public:
    float r, g, b;

    Color() {}  // leaves the components uninitialised
    Color(float R, float G, float B) : r(R), g(G), b(B) {}
    Color(double R, double G, double B) : r((float)R), g((float)G), b((float)B) {}
    Color(const Point3& p) : r(p.x), g(p.y), b(p.z) {}
    // From a COLORREF, 0x00BBGGRR; a byte v gives v / 255.
    explicit Color(DWORD rgb);

    // As a COLORREF; a component is cut to 0 .. 1 (not a number: 0) and rounded to the nearest
    // of 255 steps.
    DWORD toRGB() const;
    operator Point3() const { return Point3(r, g, b); }

    // `i` from 0 to 2.
    float& operator[](int i) { return i == 0 ? r : i == 1 ? g : b; }
    const float& operator[](int i) const { return i == 0 ? r : i == 1 ? g : b; }

    Color operator+(const Color& c) const { return Color(r + c.r, g + c.g, b + c.b); }
    Color operator-(const Color& c) const { return Color(r - c.r, g - c.g, b - c.b); }
    Color operator*(const Color& c) const { return Color(r * c.r, g * c.g, b * c.b); }
    Color operator*(float f) const { return Color(r * f, g * f, b * f); }
    Color operator/(float f) const { return Color(r / f, g / f, b / f); }
    int operator==(const Color& c) const { return r == c.r && g == c.g && b == c.b; }
    int operator!=(const Color& c) const { return !(*this == c); }
};

inline Color operator*(float f, const Color& c) {
    return c * f;
}

#endif  // HOST_SDK_INCLUDE_COLOR_H
