// Which of a file's animations a person names.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace maxhost::import {

// The position of the animation. A name counts before a number: "1" is the first animation of that
// name, and animation 1 (counted from 0) only where none has it. Nothing: there is no such.
std::optional<std::size_t> FindAnimation(const std::string& wanted,
                                         const std::vector<std::string>& names);

}  // namespace maxhost::import
