// A colour of three floats, each 0 to 1 on the screen.
#ifndef HOST_SDK_INCLUDE_COLOR_H
#define HOST_SDK_INCLUDE_COLOR_H

#include <coreexp.h>
#include <windows.h>

class GEOMexport Color {
  public:
    float r, g, b;

    Color() {}  // leaves the components uninitialised
    Color(float R, float G, float B) : r(R), g(G), b(B) {}
    // From a COLORREF, 0x00BBGGRR; a byte v gives v / 255.
    explicit Color(DWORD rgb);
};

#endif  // HOST_SDK_INCLUDE_COLOR_H
