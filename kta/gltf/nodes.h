// An actor's nodes as glTF nodes.
#pragma once

#include "kta/gltf/document.h"
#include "kta/pose.h"

namespace kta::gltf {

// How a node stands in glTF: with `transform` in its carriers, and these, one in the other, in its
// parent. Its world transform by the files is that of its glTF node * offset: what stands in the
// node's space goes through the offset.
struct NodePlace {
    Transform transform;
    std::vector<Transform> carriers{};  // mostly none
    Affine offset{};                    // mostly nothing
    // Of the file's scales to those of the glTF node, where the node moves.
    Vector3 scaleFactor = {1, 1, 1};
    bool hasOffset = false;
};

// At rest. A node that does not move stands where its bind pose is; one that moves has the pose of
// tick 0 with what stands between it and its parent in carriers.
std::vector<NodePlace> PlaceNodes(const NodeTree& tree);

// A number for each of a set of joints, in the nodes' order.
using Joints = std::vector<std::size_t>;

// Adds the actor's nodes, at their own numbers, and behind them their carriers. Joints of one skin
// need a common node above them; where some have none, one named "Scene Root" gets all. Returns the
// nodes that have none above them.
std::vector<std::size_t> AddNodes(const NodeTree& tree, const std::vector<NodePlace>& places,
                                  const std::vector<Joints>& skins, Document& document);

}  // namespace kta::gltf
