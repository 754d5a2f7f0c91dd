// The channels of a clip of an Assimp scene.
#pragma once

#include <assimp/scene.h>

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/assimp/import_warnings.h"
#include "host/assimp/motion/animated_chain.h"
#include "host/assimp/motion/animation_curves.h"
#include "host/assimp/tree/tree.h"

namespace maxhost::import {

// By the node that each moves: the node's own transform at each time, in ticks, before the turn to
// z up. Rotations are of unit length, times ascend, and all is finite.
using Channels = std::unordered_map<const aiNode*, Channel>;

// The channels of clip `clip`, with `ticksPerSecond` ticks a second: of a glTF file as the file
// itself has them (Assimp drops their interpolation), else Assimp's, whose keys are joined by
// straight lines and great arcs. `path` is the file's. What is left out is a warning: keys that are
// not finite or beyond the range of times, channels of no node, and what moves no node.
Channels ReadChannels(const aiScene& scene, std::size_t clip, SourceFormat format,
                      const std::string& path, double ticksPerSecond, ImportWarnings& warnings);

// Appends the node's local matrix over time, after the turn, to the chain. `stillness` as there.
void AppendLocal(AnimatedChain& chain, const SourceNode& node, const Channels& channels,
                 const AxisTurn& turn, double stillness);

// The matrices of the tree's nodes at tick 0, relative to their parents and before the turn: where
// their channels put them, else as the file has them at rest.
std::vector<Matrix4> LocalsAtStart(const SourceTree& tree, const Channels& channels);

}  // namespace maxhost::import
