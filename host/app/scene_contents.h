// What a scene holds that bounds an export.
#pragma once

#include <cstdint>

#include "host/scene/scene.h"

namespace maxhost::app {

// An export of more materials is refused: a few that refer to each other may stand for more than a
// disk holds.
constexpr std::uint64_t kMostMaterials = 1'000'000;

// How many materials the nodes of a checked scene have, each counted wherever it stands or is
// referred to below a node's; kMostMaterials + 1 for any more than kMostMaterials. Linear.
std::uint64_t CountMaterials(const scene::Scene& scene);

}  // namespace maxhost::app
