// The motion of an Assimp scene's nodes as controllers with keys.
#pragma once

#include <cstddef>
#include <vector>

#include "host/assimp/motion/curves.h"
#include "host/assimp/tree/tree.h"
#include "host/assimp/warnings.h"
#include "host/scene/scene.h"

namespace maxhost::import {

// Two matrices around a node's own transform in the turned scene: its local matrix is
// before * (the node's, turned) * after.
struct NodeFrame {
    Matrix4 before, after;
};

// Gives those of `nodes` that move a transform with keys in place of their constant matrix. `nodes`
// stands for `tree` node by node, as it is at tick 0, with their meshes; so does `frames`.
//
// Position becomes positionXYZ, rotation eulerXYZ, scale bezierScale; what of the three does not
// move is constant. The keys stand at the channels' times, rounded to ticks, with their
// interpolation, and where no node of the scene would else keep within 0.1 degrees and 0.1% of the
// scene's bounding diagonal (at tick 0) of its pose, at frames and halfway between, at frames in
// between. A clip of more frames than can be looked at keeps its own keys alone, with a warning.
void AnimateNodes(const Channels& channels, const SourceTree& tree,
                  const std::vector<NodeFrame>& frames, const scene::Time& time,
                  std::vector<scene::Node>& nodes, ImportWarnings& warnings);

}  // namespace maxhost::import
