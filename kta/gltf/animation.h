// A motion file's tracks as a glTF animation.
#pragma once

#include "kta/gltf/nodes.h"

namespace kta::gltf {

// Adds one animation with all tracks, if there are any: of nodes at their own numbers. It begins at
// 0 where the file's first key stands before that. Returns what is not shown as it is, a line each.
std::vector<std::string> AddAnimation(const NodeTree& tree, const std::vector<NodePlace>& places,
                                      Document& document);

}  // namespace kta::gltf
