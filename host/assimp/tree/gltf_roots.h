// What Assimp does not tell of a glTF file.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace maxhost::import {

struct GltfSceneFacts {
    std::size_t roots = 0;         // root nodes of the scene that the file shows
    std::size_t nodesOutside = 0;  // nodes of the file that stand in other scenes or in none
};

// Looks into a glTF 1 or 2 file (.gltf or .glb); none where it cannot be read as such or shows no
// scene.
std::optional<GltfSceneFacts> ReadGltfSceneFacts(const std::string& path);

}  // namespace maxhost::import
