// Bones as a picture shows them.
#pragma once

#include "kta/pose.h"
#include "kta/preview/scene.h"

namespace kta {

// Of each node the nearest bone above it; kNoNode without one.
std::vector<std::size_t> BonesAbove(const NodeTree& nodes);

// Adds an octahedron for each node that is a bone, and from the nearest bone above it a longer one
// that points to it. `worlds` are the nodes' world transforms, or none at rest.
void AddSkeleton(const NodeTree& nodes, std::span<const Affine> worlds, PreviewScene& scene);

}  // namespace kta
