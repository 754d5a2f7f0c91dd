// The bones that move a vertex, by how much, and how few of them are written.
#ifndef SCENE_BONE_WEIGHTS_H
#define SCENE_BONE_WEIGHTS_H

#include "core/array.h"
#include "core/types.h"

class INode;

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

#endif
