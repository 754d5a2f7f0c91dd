// Triangle meshes out of the pieces that Assimp splits a node's mesh into, one a material.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "host/assimp/mesh/vertices.h"
#include "host/scene/scene.h"

namespace maxhost::import {

struct NodeMesh {
    std::shared_ptr<const scene::Mesh> mesh;
    std::vector<unsigned> materials;  // of the Assimp scene; a face's material id points in here
    std::vector<scene::Modifier> modifiers;
};

// Nodes that show the same pieces share one mesh, unless bones move it.
class MeshFactory {
  public:
    explicit MeshFactory(const MeshSource& source) : source_(source) {}

    // The node must have meshes. Vertices are where they are at tick 0, moved by bones and morph
    // targets, in the node's space. The points of a morph channel are where its target alone would
    // take them at full weight, moved by the same bones: in the space of the vertices. Vertices of
    // its pieces that are one are joined. Normals that the file gives come
    // back within 1 degree, in its own unit of length: by smoothing groups or, where none do that,
    // by a vertex for each place and normal with that as its specified normal. Faces without
    // normals in the file have no smoothing group and show their own. Map channel i + 1 holds set i
    // of the texture coordinates.
    NodeMesh Of(std::size_t node);

    // How many of the meshes so far have vertex colours in the file.
    std::size_t ColoredMeshes() const { return coloredMeshes_; }

  private:
    using Key = std::pair<std::vector<unsigned>, std::vector<double>>;

    NodeMesh Build(std::size_t node);

    const MeshSource source_;
    std::map<Key, NodeMesh> made_;
    std::size_t coloredMeshes_ = 0;
};

}  // namespace maxhost::import
