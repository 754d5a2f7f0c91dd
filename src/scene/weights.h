// The weights of a skinned mesh's vertices: reading them from the modifier, and how few of them are
// written.
#ifndef SCENE_WEIGHTS_H
#define SCENE_WEIGHTS_H

#include <max.h>

#include "core/array.h"
#include "core/pointer_list.h"
#include "core/types.h"

struct BoneWeight {
    Plinth::Int32 bone;  // its position among the skin's bones; -1: the modifier names none
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

// What a modifier says of a vertex.
struct VertexWeights {
    BoneWeights weights;                   // in the modifier's order
    Plinth::Array<Plinth::Int32> noBones;  // negative bone numbers, whose weights are left out
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
    // Replaces `gathered` by what the modifier says of a vertex.
    virtual VertexWeightKind Gather(Plinth::Int32 vertex, VertexWeights& gathered) = 0;
    // The bones of the vertices gathered so far, in order of appearance.
    const Plinth::PointerList<INode>& Bones() const { return bones; }

  protected:
    WeightReader() {}
    // The position of a bone; -1 for null.
    Plinth::Int32 BoneOf(INode* bone) { return bone == NULL ? -1 : bones.Add(bone); }

  private:
    Plinth::PointerList<INode> bones;

    WeightReader(const WeightReader&);
    WeightReader& operator=(const WeightReader&);
};

// The reader belongs to the caller. Null without modifiers.
WeightReader* MakeWeightReader(INode* node, const SkinModifiers& modifiers);

#endif
