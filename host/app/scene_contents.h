// What a scene holds, by the words of the closing line.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/sdk/scene_desc.h"

namespace maxhost::app {

// What of the scene this version does not export: those of morph targets, joint limits, wired
// parameters and IK chains that it has, in this order. For a checked scene; linear.
std::vector<std::string> NotExported(const scene::Scene& scene);

// An export of more materials is refused: a few that refer to each other may stand for more than a
// disk holds.
constexpr std::uint64_t kMostMaterials = 1'000'000;

// How many materials the nodes of a checked scene have, each counted wherever it stands or is
// referred to below a node's; kMostMaterials + 1 for any more than kMostMaterials. Linear.
std::uint64_t CountMaterials(const scene::Scene& scene);

}  // namespace maxhost::app
