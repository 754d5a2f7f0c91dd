// The objects of an Assimp scene's nodes besides meshes: bones, cameras and lights; and the
// directions that cameras and lights look in.
#pragma once

#include <assimp/camera.h>
#include <assimp/light.h>

#include <vector>

#include "host/assimp/tree/tree.h"
#include "host/assimp/warnings.h"

namespace maxhost::import {

// A node has one object; of these it shows the first that it has, but a camera or a light only
// where it has no mesh.
struct Role {
    bool isBone = false;
    const aiCamera* camera = nullptr;
    const aiLight* light = nullptr;
};

// Ties the cameras and lights of the scene, which Assimp names after their nodes, to the nodes of
// the tree; one role for each. `isBone` says of each node whether it is a bone of a mesh.
std::vector<Role> FindRoles(const aiScene& scene, const SourceTree& tree, SourceFormat format,
                            const std::vector<bool>& isBone, ImportWarnings& warnings);

// The camera or light that the node shows, with the other null; both null where it shows neither.
Role ShownBeside(const SourceNode& node, const Role& role);

// A camera or light of 3ds Max looks along its node's -z with y up. Formats have conventions of
// their own, which the turn to z up does not make this one; so each node that shows a camera or a
// light gets a frame, a rigid matrix of the turned scene: the node's local matrix (and any key of
// it) is to be multiplied by the frame on the right, its children's by the inverse on the left, so
// that they stay where they are. The frame also holds where in the node the camera or light stands.
// It is the identity for a node that shows neither, and turns nothing for lights that shine in all
// directions and for cameras whose direction Assimp loses, which is a warning.
Matrix4 ViewFrame(const SourceNode& node, const Role& shown, const AxisTurn& turn,
                  SourceFormat format, ImportWarnings& warnings);

}  // namespace maxhost::import
