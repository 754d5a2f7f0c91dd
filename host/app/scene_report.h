// Reports on a scene: the table of --list, and what an export of it would lose.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/app/loaded_scene.h"
#include "host/scene/scene.h"

namespace maxhost::app {

// geometry, camera, light, bone, helper, shape or other.
const char* KindOf(const scene::Node& node);
// standard, multi or other.
const char* KindOf(scene::MaterialKind kind);

struct ListedNode {
    std::size_t index = 0;  // in the scene
    int depth = 0;          // 0 below the root
};

// Depth first, in child order.
std::vector<ListedNode> NodesInOrder(const scene::Scene& scene);

// Fields are separated by tabs; names are escaped. In this order:
//   node, position in the scene, depth (0 below the root), kind, name: depth first, in child order
//   material, position, standard|multi|other, name
//   animation, position, seconds, name
std::vector<std::string> ListScene(const LoadedScene& loaded);

// The name as far as the exported files' field holds it.
std::string_view NameInFile(const scene::Node& node);

// A line each, where there is cause: node names that are longer than the field that holds them, and
// names that several nodes have, as far as the field holds them. At most five names a line, each
// shortened and in quotes. Linear.
std::vector<Warning> NameWarnings(const scene::Scene& scene);

// An export of more materials is refused: a few that refer to each other may stand for more than a
// disk holds.
constexpr std::uint64_t kMostMaterials = 1'000'000;

// How many materials the nodes of a checked scene have, each counted wherever it stands or is
// referred to below a node's; kMostMaterials + 1 for any more than kMostMaterials. Linear.
std::uint64_t CountMaterials(const scene::Scene& scene);

}  // namespace maxhost::app
