// Names of files, made of names in which anything may stand.
#pragma once

#include <algorithm>
#include <cstring>
#include <string>

namespace maxhost {

// Capital letters A to Z become small.
inline std::string InSmallLetters(std::string text) {
    std::ranges::transform(text, text.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return text;
}

// Whether Windows keeps the name for a device, whatever stands behind its first dot.
inline bool IsDeviceName(const std::string& name) {
    const std::string base = InSmallLetters(name.substr(0, name.find('.')));
    if (base.size() == 4 && (base.starts_with("com") || base.starts_with("lpt"))) {
        return base[3] >= '0' && base[3] <= '9';
    }
    return base == "con" || base == "prn" || base == "aux" || base == "nul";
}

// The name with _ for what a file system or a shell takes for something else, separators included,
// without blanks and dots at its ends, and with _ before a device's. Empty where nothing is left.
inline std::string FittingFileName(std::string name) {
    std::replace_if(
        name.begin(), name.end(),
        [](char c) {
            const auto byte = static_cast<unsigned char>(c);
            return byte < 0x20 || byte == 0x7f || std::strchr("/\\<>:\"|?*", c) != nullptr;
        },
        '_');
    name.erase(name.find_last_not_of(" .") + 1);
    name.erase(0, name.find_first_not_of(" ."));
    return IsDeviceName(name) ? "_" + name : name;
}

}  // namespace maxhost
