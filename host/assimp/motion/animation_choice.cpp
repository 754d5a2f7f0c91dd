#include "host/assimp/motion/animation_choice.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace maxhost::import {

std::optional<std::size_t> FindAnimation(const std::string& wanted,
                                         const std::vector<std::string>& names) {
    const auto named = std::find(names.begin(), names.end(), wanted);
    if (named != names.end()) {
        return static_cast<std::size_t>(named - names.begin());
    }
    std::size_t number = 0;
    const char* const end = wanted.data() + wanted.size();
    const auto [stop, error] = std::from_chars(wanted.data(), end, number);
    const bool isNumber = error == std::errc() && stop == end;
    return isNumber && number < names.size() ? std::optional(number) : std::nullopt;
}

}  // namespace maxhost::import
