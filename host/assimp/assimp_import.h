// Scene files of the formats that Assimp reads (FBX, Collada, 3DS, ASE, glTF, BVH, ...).
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

// What of a file is imported, where it leaves a choice.
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

// Reads the file at `path`; throws ImportError.
ImportedScene ImportWithAssimp(const std::string& path, const ImportChoices& choices = {});

// Whether Assimp has a reader for the file's extension. It finds some formats by their content
// alone, so an import may succeed where this says no.
bool AssimpKnows(const std::string& path);

}  // namespace maxhost::import
