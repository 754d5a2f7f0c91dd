// One factor for all lengths of a scene, as for a change of units.
#pragma once

#include "host/scene/scene.h"

namespace maxhost::scene {

// Multiplies every length by `factor`, each once, data that several places share included (it stays
// shared): vertices and morph points; the translation rows of transforms, samples and object
// offsets; position controllers with the values and tangents of their keys and of the controllers
// below them; limits of sliding joints; and parameter 0 of geometry, shapes and helpers, which is
// such an object's size. Not changed: what cameras and lights have as parameter 0 (an angle, an
// intensity), expressions of wires, and everything without the dimension of a length. Throws
// SceneError when a length is no longer finite.
void ScaleLengths(Scene& scene, float factor);

}  // namespace maxhost::scene
