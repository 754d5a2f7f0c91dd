// The vertices of a node's mesh as they are at tick 0, with the skin and the morph channels that
// move them on.
#pragma once

#include <assimp/mesh.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "host/assimp/maths.h"
#include "host/assimp/mesh/pose.h"
#include "host/assimp/mesh/skin.h"
#include "host/assimp/tree/tree.h"
#include "host/assimp/warnings.h"
#include "host/scene/scene.h"

namespace maxhost::import {

// The scene and all that was found out about it, from which its meshes are made.
struct MeshSource {
    const aiScene& scene;
    const SourceTree& tree;
    const SourceFormat format;
    const StartPose& pose;
    const BoneNodes& bones;
    ImportWarnings& warnings;
    // Told how much of a mesh is made, 0 to 1.
    std::function<void(double share)> reportMesh = [](double) {};
};

// The channels of a node's mesh. Pieces have one in common where their targets have one name; those
// of one name within a piece are told apart by their order, so that targets without a name go by
// their number.
class MorphChannels {
  public:
    // The position of the channel of each target of the piece.
    std::vector<std::size_t> ChannelsOf(const aiMesh& piece);

    // Takes the next point of the channel. A channel's missing points are those of `rest`.
    void Add(std::size_t channel, const scene::Vec3& point, const std::vector<scene::Vec3>& rest);

    // All channels with as many points as `rest` has. Those without a name get one.
    std::vector<scene::MorphChannel> Finish(const std::vector<scene::Vec3>& rest);

    bool AreNone() const { return channels_.empty(); }

  private:
    std::vector<scene::MorphChannel> channels_;
    std::map<std::pair<std::string, std::size_t>, std::size_t> byName_;
};

// All pieces' vertices, one piece behind the other, in the node's space.
struct SourceVertices {
    std::vector<scene::Vec3> positions;
    // Of unit length; (0, 0, 0) where the source gives none. Empty where no piece has normals.
    std::vector<scene::Vec3> normals;
    VertexWeights weights;
    std::vector<scene::MorphChannel> channels;  // each with a point for every vertex
};

// Keeps a reference to the source.
class NodeVertices {
  public:
    // Makes room for `most` vertices; more may come.
    NodeVertices(const MeshSource& source, std::size_t node, std::size_t most)
        : source_(source),
          node_(node),
          most_(most),
          skin_(source.tree, node, source.pose, source.bones, source.warnings) {
        vertices_.positions.reserve(most);
    }

    // Appends those of the piece and counts the numbers that were taken as 0. `name` is the piece's
    // for messages.
    void Append(const aiMesh& piece, const std::string& name, std::size_t& notFinite);

    // The vertices of all pieces; nothing can be appended any more.
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
    const std::size_t most_;
    NodeSkin skin_;
    MorphChannels channels_;
    std::vector<scene::Vec3> rest_;  // positions without morph targets; empty before any target
    SourceVertices vertices_;
};

}  // namespace maxhost::import
