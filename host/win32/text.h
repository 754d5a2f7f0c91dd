// Text helpers of this library.
#pragma once

#include <string>
#include <string_view>

namespace win32 {

// ASCII letters are equal whatever their case.
bool EqualIgnoringCase(std::string_view a, std::string_view b);

// A surrogate without its partner becomes U+FFFD.
std::string Utf8FromUtf16(std::u16string_view text);

// The longest prefix of at most `size` bytes that does not end inside a UTF-8 sequence.
std::string_view CutUtf8(std::string_view text, std::size_t size);

}  // namespace win32
