// Faults of a scene description, told in one line.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

namespace maxhost::scene {

// The message names no file; the caller knows it. It reads "<JSON pointer>: <what stands there>,
// expected <what>", the root's pointer being "/", or "line L, column C: <what>" for text that is
// not JSON.
class SceneError : public std::runtime_error {
  public:
    explicit SceneError(const std::string& line) : std::runtime_error(line) {}
    SceneError(std::string_view pointer, std::string_view found, std::string_view expected)
        : std::runtime_error(std::string(pointer.empty() ? "/" : pointer) + ": " +
                             std::string(found) + ", expected " + std::string(expected)) {}
};

// Appends "/" and the step, with ~ and / escaped as JSON pointers have it. Control characters are
// written as \u00XX, and a name of more than 100 bytes is cut, so that the line stays one line.
void AppendStep(std::string& pointer, std::string_view name);
void AppendStep(std::string& pointer, std::size_t index);

// As a message shows it: a text in quotes (cut after 60 bytes), or the shortest number that reads
// back to the same f32.
std::string Shown(std::string_view text);
std::string Shown(float number);

}  // namespace maxhost::scene
