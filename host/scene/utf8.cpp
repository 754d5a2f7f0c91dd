#include "host/scene/utf8.h"

namespace maxhost::import {
namespace {

// The length of the well-formed sequence at the start of `text`, 0 where there is none.
std::size_t SequenceLength(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned lead = byte(0);
    const std::size_t length = lead < 0x80                    ? 1
                               : lead >= 0xc2 && lead <= 0xdf ? 2
                               : lead >= 0xe0 && lead <= 0xef ? 3
                               : lead >= 0xf0 && lead <= 0xf4 ? 4
                                                              : 0;
    if (length == 0 || length > text.size()) {
        return 0;
    }
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xc0) != 0x80) {
            return 0;
        }
    }
    // Overlong forms, surrogates and what lies above U+10FFFF differ in the second byte alone.
    const bool valid =
        length < 3 || !((lead == 0xe0 && byte(1) < 0xa0) || (lead == 0xed && byte(1) > 0x9f) ||
                        (lead == 0xf0 && byte(1) < 0x90) || (lead == 0xf4 && byte(1) > 0x8f));
    return valid ? length : 0;
}

}  // namespace

std::size_t FindIllFormed(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = SequenceLength(text.substr(at));
        if (length == 0) {
            return at;
        }
        at += length;
    }
    return std::string_view::npos;
}

bool IsUtf8(std::string_view text) {
    return FindIllFormed(text) == std::string_view::npos;
}

std::string ToUtf8(std::string_view text, bool* recoded) {
    if (IsUtf8(text)) {
        return std::string(text);
    }
    if (recoded) {
        *recoded = true;
    }
    std::string result;
    for (const char c : text) {
        const unsigned char byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            result += c;
        } else {
            result += static_cast<char>(0xc0 | (byte >> 6));
            result += static_cast<char>(0x80 | (byte & 0x3f));
        }
    }
    return result;
}

}  // namespace maxhost::import
