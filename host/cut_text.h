// Text that is shown or copied in part.
#pragma once

#include <cstddef>
#include <string_view>

namespace maxhost {

// The longest prefix of at most `size` bytes that does not end within a UTF-8 character. Of text
// that is no UTF-8 it may be shorter by as many bytes as look like the rest of a character.
inline std::string_view CutUtf8(std::string_view text, std::size_t size) {
    if (text.size() <= size) {
        return text;
    }
    while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xc0) == 0x80) {
        --size;
    }
    return text.substr(0, size);
}

}  // namespace maxhost
