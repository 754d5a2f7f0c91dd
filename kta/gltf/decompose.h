// Affine maps as what a glTF node can hold: translation, rotation and scale along the own axes.
#pragma once

#include <vector>

#include "kta/vector.h"

namespace kta::gltf {

// Whether the map moves nothing but by rounding; `size` is how large the numbers are that its
// translation was got from.
bool IsNearlyIdentity(const Affine& a, double size);

// A map with volume, in two parts: transform.ToAffine() * rest. The rest is nothing but for a map
// that scales along other axes than its own. A mirroring map has scales below 0 on all three axes.
struct Decomposition {
    Transform transform;
    Affine rest;
};
Decomposition Decompose(const Affine& a);

// The map as one transform, or as two, of which the second stands in the first.
std::vector<Transform> Factors(const Affine& a);

}  // namespace kta::gltf
