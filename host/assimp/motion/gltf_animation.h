// The animations of a glTF 2 file with the interpolation of their samplers, which Assimp drops.
#pragma once

#include <assimp/scene.h>

#include <cstddef>
#include <map>

#include "host/assimp/motion/animation_curves.h"
#include "host/assimp/tree/gltf_file.h"

namespace maxhost::import {

struct GltfClip {
    // By node number. Times are seconds; a curve without keys is not animated. Rotations are as
    // the file has them, of any length.
    std::map<std::size_t, Channel> channels;
    std::size_t unreadable = 0;  // channels that are not as the format wants them
};

GltfClip ReadGltfClip(GltfFile& file, std::size_t animation);

// The nodes of Assimp's tree by the number of the file's node that each stands for: names do not
// tell them apart. Empty where the two trees do not agree.
std::map<std::size_t, const aiNode*> MatchGltfNodes(const GltfFile& file, const aiScene& scene);

// The translation, rotation and scale that the node states, or their defaults, as curves of one
// key; of a node with a matrix those of the matrix.
Channel RestOfGltfNode(const GltfFile& file, std::size_t node, const aiNode& imported);

}  // namespace maxhost::import
