// Smoothing groups that give a mesh's faces the normals that its file states.
#pragma once

#include <vector>

#include "host/scene/scene.h"

namespace maxhost::import {

// Gives the faces smoothing groups with which Mesh::buildNormals() makes each corner's normal one
// within 1 degree of what is stated for it; false where no such groups were found, and the faces
// then have none. The corners of face i state `normals` at sources[i].v: of unit length, or (0, 0,
// 0) for none, which any normal will do for. Faces that state none at all get no smoothing group,
// so that they show their own normals, and so do single faces that state just those.
//
// Faces that state the same normals at both ends of a common edge form patches, and patches that
// meet at a vertex get different groups; so no mesh is found groups for whose normals fade along an
// edge from hard to smooth, are smooth across a change of material id, or are not weighted by area.
bool FindSmoothingGroups(scene::Mesh& mesh, const std::vector<scene::Vec3>& normals,
                         const std::vector<scene::Face>& sources);

}  // namespace maxhost::import
