// Where an actor's nodes stand, at rest and at a time of its motion.
//
// Everything is in the file's axes: x, z, y of the exported scene. Transforms are maps of positions
// (see Affine): a node's world transform takes what stands in the node's own space to the world,
// and is its parent's world transform behind its own local one, World(parent) * Local(node).
// Rotations are right-handed by the numbers, x to z to y to x of the scene. Times are seconds.
#pragma once

#include <span>
#include <string>

#include "kta/tracks.h"

namespace kta {

constexpr std::size_t kNoNode = static_cast<std::size_t>(-1);

// The parent of each node by its name: the first node of that name. kNoNode for an empty name, and
// for one that no node has. There may be circles.
std::vector<std::size_t> ParentsByName(std::span<const KTANode* const> nodes);

// How a node moves. Its local transform at a time is link * At(time) * offset.
struct NodeMotion {
    const KTAMotionPart* part = nullptr;
    Transform rest;  // of the part
    Track position;  // each may be without keys
    Track rotation;
    Track scale;
    // What stands between the parent's world and what the tracks tell: of a parent with an object
    // offset in 3ds Max, and of one that was not exported. Else nothing.
    Affine link;
    // What the tracks leave out: the node's own object offset where the tracks are keyframed, its
    // mirroring, and a scale along other axes than its own. Else nothing.
    Affine offset;

    Transform At(double seconds) const;
    // At tick 0, where the actor file tells how the node stands. Samples may begin later, but the
    // part itself tells that of sampled nodes.
    Transform AtTickZero() const;
};

// The nodes of an actor file, in their order, and their motion. Linear in the files' sizes, but
// where many nodes share a name: then up to 1000 of them are looked at for each child.
class NodeTree {
  public:
    // `motion` may be null. Both files must outlive the tree.
    explicit NodeTree(const File& actor, const File* motion = nullptr);

    std::size_t Size() const { return nodes_.size(); }
    const KTANode& Record(std::size_t node) const { return *nodes_[node].record; }
    // By name. Of several nodes of that name the first is meant upon which the node stands where
    // its world matrix says, and if there is none the first. kNoNode where there is no such node,
    // and for the last link of a circle, which is cut.
    std::size_t Parent(std::size_t node) const { return nodes_[node].parent; }
    // All nodes, each behind its parent.
    const std::vector<std::size_t>& ParentsFirst() const { return order_; }

    // At tick 0, by the actor file: from the node's world matrix, and where it has none with an
    // inverse (or stands below a node without extent) from the local transforms.
    const Affine& BindWorld(std::size_t node) const { return nodes_[node].bindWorld; }
    const Affine& BindLocal(std::size_t node) const { return nodes_[node].bindLocal; }
    // From the world to the node's space. For a node without extent the identity.
    const Affine& FromBindWorld(std::size_t node) const { return nodes_[node].fromBindWorld; }

    // Null for a node without a motion part. Of several nodes of the part's name the first is meant
    // whose pose is the part's.
    const NodeMotion* MotionOf(std::size_t node) const;
    // Of nodes that the actor file does not have.
    const std::vector<std::string>& StrayParts() const { return strayParts_; }
    // Of all keys; 0 without any.
    double FirstTime() const { return firstTime_; }
    double LastTime() const { return lastTime_; }

    Affine Local(std::size_t node, double seconds) const;
    // The world transforms of all nodes.
    std::vector<Affine> Worlds(double seconds) const;

  private:
    struct Node {
        const KTANode* record = nullptr;
        std::size_t parent = kNoNode;
        std::optional<Affine> stored;  // the world transform that the record tells
        Affine bindWorld;
        Affine bindLocal;
        Affine fromBindWorld;
        std::size_t motion = kNoNode;  // position in motions_
    };

    void FindParents();
    void SortParentsFirst();
    void PlaceAll();
    void AddMotions(const File& motion);
    void Place(std::size_t node, NodeMotion& motion) const;

    std::vector<Node> nodes_;
    std::vector<std::size_t> order_;
    std::vector<NodeMotion> motions_;
    std::vector<std::string> strayParts_;
    double firstTime_ = 0;
    double lastTime_ = 0;
};

}  // namespace kta
