// The vertices of a node's mesh as they are at tick 0, with the skin and the morph channels that
// move them on.
#pragma once

#include <assimp/mesh.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/assimp/import_warnings.h"
#include "host/assimp/mesh/bones.h"
#include "host/assimp/mesh/morph.h"
#include "host/assimp/mesh/pose.h"
#include "host/assimp/mesh/skin.h"
#include "host/assimp/mesh/source_vertices.h"
#include "host/assimp/tree/tree.h"

namespace maxhost::import {

// 0 for what is not finite as f32, which is counted.
float FiniteFloat(double number, std::size_t& notFinite);

// What the meshes of a scene are made with.
struct MeshSource {
    const aiScene& scene;
    const SourceTree& tree;
    const SourceFormat format;
    const StartPose& pose;
    const BoneNodes& bones;
    ImportWarnings& warnings;
};

// Keeps a reference to the source.
class NodeVertices {
  public:
    NodeVertices(const MeshSource& source, std::size_t node)
        : source_(source),
          node_(node),
          skin_(source.tree, node, source.pose, source.bones, source.warnings) {}

    // Appends those of the piece and counts the numbers that were taken as 0. `name` is the piece's
    // for messages.
    void Append(const aiMesh& piece, const std::string& name, std::size_t& notFinite);

    // What all pieces make; nothing can be appended any more.
    const SourceVertices& Finish();

    // The modifiers of a mesh of these of the vertices, top first: Skin where any vertex has a
    // weight, Morpher where there are channels.
    std::vector<scene::Modifier> ModifiersFor(const std::vector<std::uint32_t>& vertices) const;

    std::size_t Count() const { return vertices_.positions.size(); }

  private:
    struct Piece;

    Piece Prepare(const aiMesh& piece, const std::string& name);
    void AppendVertex(Piece& piece, unsigned vertex, std::size_t& notFinite);
    void AppendNormal(Piece& piece, unsigned vertex, const Matrix4* matrix);
    scene::Vec3 Place(const Vector& v, const Matrix4* matrix, std::size_t& notFinite) const;
    void CatchUpRest();
    void WarnOfPose(const Piece& piece) const;

    const MeshSource& source_;
    const std::size_t node_;
    NodeSkin skin_;
    MorphChannels channels_;
    std::vector<scene::Vec3> rest_;  // positions without morph targets; empty before any target
    SourceVertices vertices_;
};

}  // namespace maxhost::import
