#include "host/win32/text.h"

#include <algorithm>
#include <cstdint>

namespace win32 {
namespace {

char LowerAscii(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool IsHighSurrogate(char32_t unit) {
    return unit >= 0xd800 && unit < 0xdc00;
}
bool IsLowSurrogate(char32_t unit) {
    return unit >= 0xdc00 && unit < 0xe000;
}

void AppendUtf8(std::string& out, char32_t point) {
    const auto byte = [](char32_t bits) { return static_cast<char>(bits); };
    const auto tail = [&](int shift) { return byte(0x80 | ((point >> shift) & 0x3f)); };
    if (point < 0x80) {
        out += byte(point);
    } else if (point < 0x800) {
        out += {byte(0xc0 | (point >> 6)), tail(0)};
    } else if (point < 0x10000) {
        out += {byte(0xe0 | (point >> 12)), tail(6), tail(0)};
    } else {
        out += {byte(0xf0 | (point >> 18)), tail(12), tail(6), tail(0)};
    }
}

}  // namespace

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return LowerAscii(x) == LowerAscii(y); });
}

std::string Utf8FromUtf16(std::u16string_view text) {
    constexpr char32_t kReplacement = 0xfffd;
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t point = text[i];
        if (IsHighSurrogate(point) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
            point = 0x10000 + ((point - 0xd800) << 10) + (text[++i] - 0xdc00);
        } else if (IsHighSurrogate(point) || IsLowSurrogate(point)) {
            point = kReplacement;
        }
        AppendUtf8(out, point);
    }
    return out;
}

std::string_view CutUtf8(std::string_view text, std::size_t size) {
    if (text.size() <= size) {
        return text;
    }
    while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xc0) == 0x80) {
        --size;
    }
    return text.substr(0, size);
}

}  // namespace win32
