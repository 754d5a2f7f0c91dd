// The nodes of a model that are exported, and where they stand.
#pragma once

#include <assimp/scene.h>

#include <cstddef>
#include <vector>

#include "tests/corpus/model.h"

namespace corpus {

struct ModelNode {
    const aiNode* node;
    int parent;                        // position in the list; -1: none
    std::vector<const aiNode*> chain;  // from below the parent down to the node itself
};

// The nodes of the model in depth-first order, without the wrappers that a format or Assimp put at
// the top: how many there are shows in the number of nodes that were exported. Throws Difference
// where no number of wrappers gives that number.
std::vector<ModelNode> MatchNodes(const aiScene& scene, std::size_t exported);

// World matrices of a model: z up, in its exported unit of length.
class ModelPoses {
  public:
    ModelPoses(const aiScene& scene, std::vector<ModelNode> nodes, unsigned clip);

    const std::vector<ModelNode>& Nodes() const { return nodes_; }
    const Clip& TheClip() const { return clip_; }
    std::vector<Matrix> Worlds(double seconds) const;
    // Of the nodes and of their meshes' vertices as they stand in the file, at tick 0.
    double BoundingDiagonal() const;

  private:
    const aiScene& scene_;
    std::vector<ModelNode> nodes_;
    Clip clip_;
    Matrix turn_;  // from the model's axes and unit
};

}  // namespace corpus
