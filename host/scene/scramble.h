// Makes a scene unrecognisable, so that it may be shown to others.
#pragma once

#include <span>

#include "host/scene/scene.h"

namespace maxhost::scene {

// Something of a scene that can be scrambled by itself.
struct ScrambleKind {
    const char* name;  // in the plural: "names of nodes"
    void (*scramble)(Scene& scene);
};

// Names become n1, n2, ... in their order, equal ones equal names; so do those of materials (m1),
// controllers (c1, in the wires that name them too), morph channels (s1), wires' expressions (e1)
// and textures' files (t1 with the former extension). User properties go. Every coordinate of
// vertices, morph points, translations, positions' keys and objects' sizes is multiplied by a
// number from 0.5 to 1.5 that its point's bits decide; normals and texture coordinates are others.
// So equal points stay equal, numbers keep their sign and about their size, and what is not
// geometry (hierarchy, counts, smoothing, materials' values, weights, times) stays. The same scene
// gives the same result.
std::span<const ScrambleKind> ScrambleKinds();

// All kinds.
void Scramble(Scene& scene);

}  // namespace maxhost::scene
