// The skin of a node out of the bones that Assimp gives for the pieces of its mesh.
#pragma once

#include <assimp/mesh.h>

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/assimp/import_warnings.h"
#include "host/assimp/mesh/bones.h"
#include "host/assimp/mesh/pose.h"
#include "host/assimp/mesh/source_vertices.h"
#include "host/assimp/tree/tree.h"

namespace maxhost::import {

using Vector = aiVector3t<double>;

// What the bones of a piece do to its vertices at tick 0.
class PieceSkin {
  public:
    // From the piece's space to the node's, before the turn: the mean of what the vertex's bones
    // make of it, by their weights. None for a vertex that no weight holds, which stands with its
    // node.
    std::optional<Matrix4> MatrixAt(unsigned vertex) const;

    // How far from its `place` in the node a bone alone would put the vertex that is at `v` in the
    // piece, by the bone's share in it; the most for any of its bones. 0 in the bind pose.
    double StrayAt(unsigned vertex, const Vector& v, const Vector& place) const;

  private:
    friend class NodeSkin;

    struct Hold {
        unsigned bone;
        float weight;
    };

    void Sort(const std::vector<std::pair<unsigned, Hold>>& holds, unsigned vertices);
    std::span<const Hold> HoldsOf(unsigned vertex) const {
        const std::size_t begin = vertex > 0 ? ends_[vertex - 1] : 0;
        return std::span(holds_).subspan(begin, ends_[vertex] - begin);
    }
    double SumAt(unsigned vertex) const;

    std::vector<Matrix4> matrices_;  // of each bone; none where no vertex can be moved
    std::vector<Hold> holds_;
    std::vector<std::size_t> ends_;  // of each vertex's holds
};

// Keeps references to what it is made with.
class NodeSkin {
  public:
    NodeSkin(const SourceTree& tree, std::size_t node, const StartPose& pose,
             const BoneNodes& bones, ImportWarnings& warnings);

    // Appends the weights of the piece, whose first vertex is vertex `first` of the node's mesh, to
    // `weights`, in the order of Bones(): as the file has them, but for those of 0, those of bones
    // that are no node, and what is no weight of a vertex, which is a warning. `name` is the
    // piece's for messages.
    PieceSkin Append(const aiMesh& piece, const std::string& name, std::size_t first,
                     VertexWeights& weights);

    // The nodes of the bones that any piece has, in order of appearance.
    const std::vector<int>& Bones() const { return bones_; }

  private:
    using Holds = std::vector<std::pair<unsigned, PieceSkin::Hold>>;  // by vertex

    std::vector<int> SlotsOf(const aiMesh& piece);
    Holds HoldsOf(const aiMesh& piece, const std::string& name, const std::vector<int>& slots);
    std::vector<Matrix4> MatricesOf(const aiMesh& piece, const std::string& name,
                                    const std::vector<int>& slots);

    const SourceNode& node_;
    const std::size_t index_;
    const StartPose& pose_;
    const BoneNodes& boneNodes_;
    ImportWarnings& warnings_;
    std::optional<Matrix4> fromWorld_;  // none where the node's matrix has no inverse
    std::vector<int> bones_;
    std::unordered_map<int, int> slotOf_;  // by node
};

}  // namespace maxhost::import
