// Included before everything else in builds for Windows: file names are UTF-8, as utf8.manifest has
// the programs run.
#pragma once

#if defined(__cplusplus) && __cplusplus >= 201703L
#include <filesystem>
#include <string>

namespace std::filesystem {

// GCC's library writes a path as UTF-8 (path::string) but reads it byte by byte as Latin-1, so that
// a name with another letter would not come back the same. Bytes that are no UTF-8 are still read so.
template <>
inline auto path::_S_convert<char>(const char* first, const char* last) {
    std::wstring wide;
    std::codecvt_utf8_utf16<wchar_t> utf8;
    if (!__str_codecvt_in_all(first, last, wide, utf8)) {
        wide.clear();
        for (const char* at = first; at != last; ++at) {
            wide += static_cast<wchar_t>(static_cast<unsigned char>(*at));
        }
    }
    return wide;
}

}  // namespace std::filesystem
#endif
