// A scene as an import hands it over, and the choices that it is made by.
#pragma once

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "host/scene/losses.h"
#include "host/scene/scene.h"

namespace maxhost::import {

// A scene file that cannot be read. The message is one line without the file's name.
class ImportError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct AnimationClip {
    std::string name;
    double seconds = 0;
    int channels = 0;  // animated nodes, meshes and morphs together
};

// A texture that stands inside the model's file, to become a file of its own.
struct EmbeddedTexture {
    std::string name;  // a file's name alone, of at most 200 bytes
    std::string bytes;
};

// A texture that stands beside the model, or should.
struct TextureFile {
    std::string name;  // as maps have it
    std::string file;  // absolute; empty: not found
};

// Choices between the things that a file offers.
struct ImportChoices {
    // The name or number of the animation, as FindAnimation() reads it; the first where there is no
    // such one, or none is chosen.
    std::optional<std::string> animation;
    // 1 to 4800, in place of the file's: frames a second, whose ticks the key times are.
    std::optional<int> frameRate;
    // The axis that is up (0 x, 1 y, 2 z) in a file that does not say it; y where none is chosen.
    std::optional<int> up{};
    // Lengths are not left in the file's unit.
    bool convertsUnit = false;
    // By its position, in the place of `animation`; the others are no loss then.
    std::optional<std::size_t> clip{};
};

// A scene with z up, in the file's own units. Nodes stand in depth-first child order. `warnings`
// names what was changed or left out, one line each, of which `codes` has the kinds in the same
// order and `losses` every case; `coloredMeshes` counts the meshes that the
// file gives vertex colours, which are left out too; one that several nodes show counts once.
// `textures` stand in the file itself; no two of them have one name, in large or small letters, and
// maps name them by it. `upAxis` says which axis is up in the file, what says so, and whether it
// was turned: "y, as the file says, turned to z". `unit` is the size of one of the scene's units in
// metres, 0 where neither the file nor its format says it; `unitSource` says which of them does.
struct ImportedScene {
    scene::Scene scene;
    std::vector<std::string> warnings;
    std::vector<scene::LossCode> codes;
    std::vector<scene::Loss> losses;
    std::vector<AnimationClip> animations;
    std::size_t coloredMeshes = 0;
    std::vector<EmbeddedTexture> textures;
    std::vector<TextureFile> textureFiles;  // that maps name, but for `textures`
    std::string upAxis;
    double unit = 0;
    std::string unitSource;
    // The files that the reader opened or looked for, there or not; absolute, sorted.
    std::vector<std::string> files{};
};

// The position of the animation. A name counts before a number: "1" is the first animation of that
// name, and animation 1 (counted from 0) only where none has it. Nothing: there is no such.
inline std::optional<std::size_t> FindAnimation(const std::string& wanted,
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
