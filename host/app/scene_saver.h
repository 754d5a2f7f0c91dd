// --save-scene.
#pragma once

#include <string>

#include "host/scene/scene.h"

namespace maxhost::app {

// Writes the scene as a scene description. A file of that name is replaced as a whole, or, when
// writing fails, left as it is; then throws Failure(kExitRefused).
void SaveScene(const scene::Scene& scene, const std::string& path);

}  // namespace maxhost::app
