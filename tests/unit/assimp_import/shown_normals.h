// The normals that a mesh shows in 3ds Max.
#pragma once

#include <array>
#include <vector>

#include "host/scene/scene.h"

using CornerNormals = std::array<maxhost::scene::Vec3, 3>;

// Of each face's corners: what the SDK's mesh, filled with this one, has built at the vertex for
// the face's smoothing groups, or the face's own normal where that is nothing. They are looked up
// as a plug-in does that takes the first normal of a vertex with a group of the face.
std::vector<CornerNormals> ShownNormals(const maxhost::scene::Mesh& description);
