// Triangle meshes out of the pieces that Assimp splits a node's mesh into, one a material.
#pragma once

#include <assimp/scene.h>

#include <cstddef>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "host/import/assimp_tree.h"
#include "host/import/import_warnings.h"
#include "host/sdk/scene_desc.h"

namespace maxhost::import {

struct NodeMesh {
    std::shared_ptr<const scene::Mesh> mesh;
    std::vector<unsigned> materials;  // of the Assimp scene; a face's material id points in here
};

// Nodes that show the same pieces share one mesh. Keeps references to what it is made with.
class MeshFactory {
  public:
    MeshFactory(const aiScene& scene, const AxisTurn& turn, ImportWarnings& warnings)
        : scene_(scene), turn_(turn), warnings_(warnings) {}

    // The node must have meshes. Vertices of its pieces that are one (see source_vertices.h) are
    // joined. Normals that the file gives come back within 1 degree, in its own unit of length: by
    // smoothing groups or, where none do that, by a vertex for each place and normal with that as
    // its specified normal. Faces without normals in the file have no smoothing group and show
    // their own. Map channel i + 1 holds set i of the texture coordinates.
    const NodeMesh& Of(const SourceNode& node);

    // How many of the meshes so far have vertex colours in the file.
    std::size_t ColoredMeshes() const { return coloredMeshes_; }

  private:
    using Key = std::pair<std::vector<unsigned>, std::vector<double>>;

    NodeMesh Build(const SourceNode& node);

    const aiScene& scene_;
    const AxisTurn turn_;
    ImportWarnings& warnings_;
    std::map<Key, NodeMesh> made_;
    std::size_t coloredMeshes_ = 0;
};

}  // namespace maxhost::import
