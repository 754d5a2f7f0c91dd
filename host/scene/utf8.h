// UTF-8 as the scene has it: no overlong forms, no surrogates, nothing above U+10FFFF.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace maxhost::import {

// Where the first character that is not well-formed begins; npos where there is none.
std::size_t FindIllFormed(std::string_view text);

bool IsUtf8(std::string_view text);

// `text` as it stands if it is UTF-8; else taken as Latin-1 and recoded, which sets `*recoded`
// (left alone otherwise; may be null).
std::string ToUtf8(std::string_view text, bool* recoded = nullptr);

}  // namespace maxhost::import
