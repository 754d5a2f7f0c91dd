// A scene as an import hands it over, and the choices that it is made by.
#pragma once

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

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

// Choices between the things that a file offers.
struct ImportChoices {
    // The name or number of the animation, as FindAnimation() reads it; the first where there is no
    // such one, or none is chosen.
    std::optional<std::string> animation;
    // 1 to 4800, in place of the file's: frames a second, whose ticks the key times are.
    std::optional<int> frameRate;
};

// A scene with z up, in the file's own units. Nodes stand in depth-first child order. `warnings`
// names what was changed or left out, one line each; `coloredMeshes` counts the meshes that the
// file gives vertex colours, which are left out too; one that several nodes show counts once.
struct ImportedScene {
    scene::Scene scene;
    std::vector<std::string> warnings;
    std::vector<AnimationClip> animations;
    std::size_t coloredMeshes = 0;
};

}  // namespace maxhost::import
