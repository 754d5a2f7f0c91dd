// An Assimp scene at tick 0: its meshes are imported as they are then.
#pragma once

#include <assimp/anim.h>
#include <assimp/mesh.h>

#include <cstddef>
#include <map>
#include <string_view>
#include <vector>

#include "host/assimp/tree/tree.h"

namespace maxhost::import {

struct MorphWeights {
    std::vector<double> values;  // of each target
    bool areLost = false;        // the file may have others than 0, which Assimp loses
};

// Keeps a reference to the tree.
class StartPose {
  public:
    // `locals` are the matrices of the tree's nodes at tick 0, relative to their parents and before
    // the turn; `clip`, which may be null, moves morph targets.
    StartPose(const SourceTree& tree, SourceFormat format, std::vector<Matrix4> locals,
              const aiAnimation* clip);

    // From the node's space to its parent's, before the turn.
    const Matrix4& LocalOf(std::size_t node) const { return locals_[node]; }

    // From the node's space to the source's world, before the turn.
    const Matrix4& WorldOf(std::size_t node) const { return worlds_[node]; }

    // Of the piece's morph targets where the node shows it: what the clip says, by the node's name
    // or the piece's, else what the piece does.
    MorphWeights MorphWeightsOf(std::size_t node, const aiMesh& piece) const;

  private:
    const aiMeshMorphAnim* MotionOf(std::size_t node, const aiMesh& piece) const;

    const SourceTree& tree_;
    const SourceFormat format_;
    const std::vector<Matrix4> locals_;
    std::vector<Matrix4> worlds_;
    std::map<std::string_view, const aiMeshMorphAnim*> morphs_;
};

}  // namespace maxhost::import
