// What a scene holds, by the words of the closing line.
#pragma once

#include <string>
#include <vector>

#include "host/sdk/scene_desc.h"

namespace maxhost::app {

// What of the scene this version does not export: those of materials, meshes, skinning, morph
// targets, joint limits, wired parameters, IK chains and motion that it has, in this order. For a
// checked scene; linear.
std::vector<std::string> NotExported(const scene::Scene& scene);

}  // namespace maxhost::app
