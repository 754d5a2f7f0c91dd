// Which nodes the bones of an Assimp scene's meshes are; Assimp tells them by name alone.
#pragma once

#include <assimp/mesh.h>
#include <assimp/scene.h>

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <set>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/assimp/import_warnings.h"
#include "host/assimp/mesh/pose.h"
#include "host/assimp/tree/tree.h"

namespace maxhost::import {

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

    // Whether the node is a bone of any mesh.
    bool IsBone(std::size_t node) const { return isBone_[node]; }

  private:
    using Nodes = std::vector<int>;

    struct Found {
        std::vector<int> nodes;
        std::vector<bool> isGuess;
    };

    // What is known of the piece so far.
    struct Search {
        int nearTo;                      // the first bone that was found, or what shows the piece
        std::optional<Matrix4> binding;  // where that bone takes the piece
        std::optional<std::array<aiVector3t<double>, 8>> corners;  // of a box around the piece
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

}  // namespace maxhost::import
