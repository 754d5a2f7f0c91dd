// The scene that a reader rebuilds from an actor file and its motion file.
#pragma once

#include <cstddef>
#include <vector>

#include "tests/corpus/actor_file.h"
#include "tests/corpus/model_nodes.h"
#include "tests/corpus/motion_file.h"

namespace corpus {

// The actor with its nodes, and what hangs from them, in the order of the model's nodes: a file has
// the bones of a skin ahead, right behind the first mesh that they move. Of nodes of one name the
// nearest is meant. Throws Difference where a bone is no node of the model.
Actor InOrderOf(const ModelPoses& model, Actor actor);

// World matrices in z up; a node's vertices stand in its own axes.
class RebuiltScene {
  public:
    // `nodes` tell the hierarchy, node for node. Throws Difference where a motion part fits no
    // node.
    RebuiltScene(const Actor& actor, std::vector<MotionPart> parts,
                 const std::vector<ModelNode>& nodes);

    const std::vector<MotionPart>& Parts() const { return parts_; }
    // Null: the node does not move.
    const MotionPart* PartOf(std::size_t node) const { return partOf_[node]; }
    // As the actor file says it; zero for a node without extent.
    const Matrix& AtTickZero(std::size_t node) const { return atTickZero_[node]; }
    // Relative to the parent.
    Matrix Local(std::size_t node, double seconds) const;
    std::vector<Matrix> Worlds(double seconds) const;

  private:
    void MatchParts(const Actor& actor);

    std::vector<MotionPart> parts_;
    std::vector<int> parents_;
    std::vector<const MotionPart*> partOf_;
    std::vector<Matrix> atTickZero_;
};

}  // namespace corpus
