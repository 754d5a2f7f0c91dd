// The vertices of an actor's meshes, and how bones and morph channels move them. In the axes of
// kta/pose.h.
#pragma once

#include "kta/pose.h"

namespace kta {

// A mesh with what hangs from its node.
struct ActorMesh {
    const Mesh* mesh = nullptr;
    std::size_t node = kNoNode;
    const Weights* weights = nullptr;  // null: not skinned, its vertices stand in the node's space
    std::vector<const Morph*> morphs{};  // in file order
};

// In file order. A morph chunk belongs to the last node of its node's name that stands before it;
// those of nodes without mesh are left out. The file must outlive the result.
std::vector<ActorMesh> MeshesOf(const File& actor);

// The share of a bone in how a vertex moves.
struct Influence {
    std::size_t node = kNoNode;  // kNoNode: stands still
    double share = 0;
};

// The bones of a skinned mesh. Each vertex has shares above 0 that sum to 1, the greatest first and
// each bone once; one that no bone moves has the mesh's own node.
class Skin {
  public:
    // Of a mesh with weights.
    Skin(const NodeTree& tree, const ActorMesh& mesh);

    std::span<const Influence> Of(std::int32_t originalVertex) const;
    // The vertices without record: it is not known which those are, so all go with the mesh's node.
    std::size_t VerticesWithoutRecord() const { return withoutRecord_; }

  private:
    void Add(const NodeTree& tree, std::span<const KTAWeight> weights);

    std::vector<Influence> influences_;
    std::vector<std::size_t> ends_;  // in influences_, of each vertex
    Influence own_;
    std::size_t withoutRecord_ = 0;
};

// Of each node, the way from where it stands at rest to where it stands at a time, in the world.
std::vector<Affine> WaysFromBind(const NodeTree& tree, double seconds);

// Where bones take a position that stands in the world at rest.
Vector3 SkinnedPosition(std::span<const Influence> influences, std::span<const Affine> waysFromBind,
                        const Vector3& position);

// A morph channel of a mesh.
class MorphTarget {
  public:
    MorphTarget(const NodeTree& tree, const ActorMesh& mesh, const Morph& morph);

    // From where the vertex stands to where the channel at full weight (100 in 3ds Max) takes it,
    // in the space of the mesh's vertices. Nothing where the channel has no point for it, or one
    // that cannot be told, or is off by no more than what packing rounds away.
    Vector3 Displacement(const KTAVertex& vertex) const;

  private:
    const Morph* morph_;
    Affine space_;  // from the node's to that of the vertices
    double step_;   // between two packed coordinates
};

// At the channels' weights, 1 for full. As many weights as targets.
Vector3 MorphedPosition(std::span<const MorphTarget> targets, std::span<const double> weights,
                        const KTAVertex& vertex);

}  // namespace kta
