// The table that --list prints.
#pragma once

#include <string>
#include <vector>

#include "host/app/scene_loader.h"
#include "host/scene/scene.h"

namespace maxhost::app {

// geometry, camera, light, bone, helper, shape or other.
const char* KindOf(const scene::Node& node);

// Fields are separated by tabs; names are escaped. In this order:
//   node, position in the scene, depth (0 below the root), kind, name: depth first, in child order
//   material, position, standard|multi|other, name
//   animation, position, seconds, name
std::vector<std::string> ListScene(const LoadedScene& loaded);

}  // namespace maxhost::app
