#include "host/scene/error.h"

#include <utf8.h>

#include <charconv>
#include <cstdio>

#include "host/cut_text.h"

namespace maxhost::scene {
namespace {

constexpr std::size_t kLongestName = 100;
constexpr std::size_t kLongestShown = 60;

void AppendEscaped(std::string& line, const char* format, char c) {
    char escaped[8];
    std::snprintf(escaped, sizeof escaped, format, static_cast<unsigned char>(c));
    line += escaped;
}

void AppendPlain(std::string& line, char c) {
    if (static_cast<unsigned char>(c) >= 0x20 && c != 0x7f) {
        line += c;
    } else {
        AppendEscaped(line, "\\u%04x", c);
    }
}

}  // namespace

void AppendStep(std::string& pointer, std::string_view name) {
    pointer += '/';
    const std::string_view shown = CutUtf8(name, kLongestName);
    for (const char c : shown) {
        if (c == '~') {
            pointer += "~0";
        } else if (c == '/') {
            pointer += "~1";
        } else {
            AppendPlain(pointer, c);
        }
    }
    if (shown.size() < name.size()) {
        pointer += "...";
    }
}

void AppendStep(std::string& pointer, std::size_t index) {
    pointer += '/';
    pointer += std::to_string(index);
}

std::string Shown(std::string_view text) {
    std::string line = "\"";
    const std::string_view shown = CutUtf8(text, kLongestShown);
    const bool isUtf8 = utf8::is_valid(shown.begin(), shown.end());
    for (const char c : shown) {
        if (isUtf8 || static_cast<unsigned char>(c) < 0x80) {
            AppendPlain(line, c);
        } else {
            AppendEscaped(line, "\\x%02x", c);
        }
    }
    line += shown.size() < text.size() ? "...\"" : "\"";
    return line;
}

std::string Shown(float number) {
    char text[32];
    const std::to_chars_result end = std::to_chars(text, text + sizeof text, number);
    return {text, end.ptr};
}

}  // namespace maxhost::scene
