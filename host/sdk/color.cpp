#include <color.h>

namespace {

float FromByte(DWORD value) {
    return static_cast<float>(value & 0xff) / 255.0f;
}

DWORD ToByte(float component) {
    if (!(component > 0))
        return 0;
    return component >= 1 ? 255 : static_cast<DWORD>(double{component} * 255 + 0.5);
}

}  // namespace

Color::Color(DWORD rgb) : r(FromByte(rgb)), g(FromByte(rgb >> 8)), b(FromByte(rgb >> 16)) {
}

DWORD Color::toRGB() const {
    return ToByte(r) | ToByte(g) << 8 | ToByte(b) << 16;
}
