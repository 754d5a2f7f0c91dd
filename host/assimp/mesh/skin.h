// The bones of an Assimp scene's meshes, which Assimp tells by name alone, and the skins that they
// make.
#pragma once

#include <assimp/mesh.h>
#include <assimp/scene.h>

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/assimp/maths.h"
#include "host/assimp/mesh/pose.h"
#include "host/assimp/tree/tree.h"
#include "host/assimp/warnings.h"
#include "host/scene/scene.h"

namespace maxhost::import {

// ---------------------------------------------------------------- bones

class Ancestry;

// Of several nodes of a bone's name, those come first that are no other bone's of the mesh yet,
// then those without meshes, then those in whose pose at tick 0 the bone leaves the mesh where the
// bones before it do (or, where none is sure yet, where the mesh's node does), then those nearest
// to that bone (or node) in the tree. Where that leaves several, the first is taken, with a
// warning. At most 64 nodes of one name are looked at. Keeps references to what it is made with.
class BoneNodes {
  public:
    BoneNodes(const aiScene& scene, const SourceTree& tree, const StartPose& pose,
              ImportWarnings& warnings);
    ~BoneNodes();

    // The node of each bone of the piece where `node` shows it; kNone where none has its name.
    std::vector<int> Of(std::size_t node, const aiMesh& piece) const;

    // Of each node of the tree: whether it is a bone of any mesh.
    const std::vector<bool>& AreBones() const { return isBone_; }

  private:
    using Nodes = std::vector<int>;

    struct Found {
        std::vector<int> nodes;
        std::vector<bool> isGuess;
    };

    // The facts that are known of the piece so far.
    struct Search {
        int nearTo;                      // the first bone that was found, or what shows the piece
        std::optional<Matrix4> binding;  // where that bone takes the piece
        std::optional<std::array<Vector, 8>> corners;  // of a box around the piece
        std::set<int> taken;
    };

    Found Find(int shownBy, const aiMesh& piece) const;
    Nodes Narrow(Nodes nodes, const aiBone& bone, const Search& search) const;
    void Settle(Search& search, int node, const aiBone& bone) const;
    const Matrix4& WorldOf(int node) const { return pose_.WorldOf(static_cast<std::size_t>(node)); }
    Matrix4 Binding(int node, const aiBone& bone) const {
        return WorldOf(node) * Matrix4(bone.mOffsetMatrix);
    }
    void Note(const aiMesh& piece, const Found& found, ImportWarnings& warnings);

    const SourceTree& tree_;
    const StartPose& pose_;
    std::unordered_map<std::string_view, Nodes> byName_;
    std::unique_ptr<const Ancestry> ancestry_;
    std::vector<bool> isBone_;
    std::set<std::string_view> told_;  // bones that a warning is about
};

// ---------------------------------------------------------------- skins

// Lists of skin weights, one a vertex.
class VertexWeights {
  public:
    // Begins the list of this vertex, which comes behind all that have one.
    void Begin(std::size_t vertex) { ends_.resize(vertex + 1, weights_.size()); }
    // Adds to the list begun last.
    void Add(const scene::SkinWeight& weight) {
        weights_.push_back(weight);
        ++ends_.back();
    }

    std::span<const scene::SkinWeight> Of(std::size_t vertex) const {
        const std::size_t begin = vertex > 0 ? EndOf(vertex - 1) : 0;
        return std::span(weights_).subspan(begin, EndOf(vertex) - begin);
    }
    bool IsEmpty() const { return weights_.empty(); }

  private:
    std::size_t EndOf(std::size_t vertex) const {
        return vertex < ends_.size() ? ends_[vertex] : weights_.size();
    }

    std::vector<scene::SkinWeight> weights_;
    std::vector<std::size_t> ends_;  // of each vertex's list; none behind the last that was begun
};

// The effect of a piece's bones on its vertices at tick 0.
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
