// The weights of a skinned mesh's vertices: reading them from the modifier, and how few of them are
// written.
#ifndef SCENE_WEIGHTS_H
#define SCENE_WEIGHTS_H

#include <max.h>

#include "core/array.h"
#include "core/types.h"

struct BoneWeight {
    INode* bone;  // null: the modifier names none
    Plinth::Float32 weight;
    Plinth::Int32 order;  // the optimiser's own
};
typedef Plinth::Array<BoneWeight> BoneWeights;

// Leaves out weights below the threshold, but for the last one left, and of more than `most` the
// smallest ones, the first of equal ones first; the order of the others stays. They are then scaled
// to a sum of 1, unless their sum is 0, or 1 or more. Needs no memory; n log n for n weights.
void OptimizeBoneWeights(BoneWeights& weights, Plinth::Float32 threshold, Plinth::Int32 most);

// The enabled modifiers of a node's stack that say what moves its vertices; null: there is none.
// Physique counts where there are both.
struct SkinModifiers {
    Modifier* physique;
    Modifier* skin;
};

enum VertexWeightKind {
    kNoVertex,       // the modifier does not know the vertex
    kRigidVertex,    // follows one bone, whole
    kWeightedVertex  // follows any number of bones
};

// Holds the modifier's interfaces while it lives.
class WeightReader {
  public:
    virtual ~WeightReader() {}

    // To be called first when bones or weights are exported. They log what stands in the way, and
    // are false then.
    virtual bool BeginBones() = 0;
    virtual bool BeginWeights() = 0;
    // Whether a weights chunk is written at all, even an empty one; logs what stands in the way.
    virtual bool MayWriteChunk() = 0;

    virtual Plinth::Int32 NumVertices() const = 0;
    // Replaces `weights` by those of a vertex, in the modifier's order.
    virtual VertexWeightKind Gather(Plinth::Int32 vertex, BoneWeights& weights) = 0;

  protected:
    WeightReader() {}

  private:
    WeightReader(const WeightReader&);
    WeightReader& operator=(const WeightReader&);
};

// The reader belongs to the caller. Null without modifiers.
WeightReader* MakeWeightReader(INode* node, const SkinModifiers& modifiers);

#endif
