// The rules of the scene description that go beyond the shape of a field: what a position, an id, a
// time or a number may be, so that whoever builds a scene may rely on them.
#pragma once

#include "host/scene/scene.h"

namespace maxhost::scene {

constexpr int kMostLevels = 64;      // of materials, maps and list controllers in one another
constexpr int kMostMapChannel = 99;  // from 1
constexpr int kMostMapSlot = 999;    // from 0; far beyond what any material of 3ds Max has

// Throws SceneError for the first fault, with the JSON pointer that the place has in the
// scene's description; costs time linear in the scene, whatever its shape. Held to here: numbers
// are finite; texts are UTF-8 without NUL; ticks a second fit 32 bits; positions lie in the list
// they point into; parents and materials form no cycles; materials (references to the scene's
// materials counted), maps and list controllers are nested at most kMostLevels deep; ids are given
// once, and wires name existing ones; times of keys and samples ascend strictly; a map channel has
// as many faces as its mesh, or is empty; a slot stands once in a material; a multi material has no
// maps; a joint has 1 to 6 degrees of freedom; no quaternion is zero; a class without a class id of
// its own has one; and what the plain data says is never null is not.
void Check(const Scene& scene);

}  // namespace maxhost::scene
