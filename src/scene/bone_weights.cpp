#include "scene/bone_weights.h"

#include <stdlib.h>

using Plinth::Float32;
using Plinth::Float64;
using Plinth::Int32;

namespace {

void RemoveBelow(BoneWeights& weights, Float32 threshold) {
    Int32 kept = 0;
    Int32 left = weights.Count();
    for (Int32 i = 0; i < weights.Count(); ++i) {
        if (left > 1 && weights[i].weight < threshold) {
            --left;
        } else {
            weights[kept++] = weights[i];
        }
    }
    weights.Resize(kept);
}

// What is not a number comes first, so that the order is total.
int CompareWeights(const void* a, const void* b) {
    const BoneWeight& first = *static_cast<const BoneWeight*>(a);
    const BoneWeight& second = *static_cast<const BoneWeight*>(b);
    const int firstIsNumber = first.weight == first.weight;
    const int secondIsNumber = second.weight == second.weight;
    if (firstIsNumber != secondIsNumber) {
        return firstIsNumber - secondIsNumber;
    }
    if (firstIsNumber && first.weight != second.weight) {
        return first.weight < second.weight ? -1 : 1;
    }
    return first.order < second.order ? -1 : 1;
}

int CompareOrders(const void* a, const void* b) {
    const Int32 first = static_cast<const BoneWeight*>(a)->order;
    const Int32 second = static_cast<const BoneWeight*>(b)->order;
    return first < second ? -1 : first > second;
}

void RemoveSmallest(BoneWeights& weights, Int32 most) {
    const Int32 kept = most < 0 ? 0 : most;
    const Int32 count = weights.Count();
    if (count <= kept) {
        return;
    }
    for (Int32 i = 0; i < count; ++i) {
        weights[i].order = i;
    }
    qsort(weights.Data(), static_cast<size_t>(count), sizeof(BoneWeight), CompareWeights);
    for (Int32 i = 0; i < kept; ++i) {
        weights[i] = weights[count - kept + i];
    }
    weights.Resize(kept);
    qsort(weights.Data(), static_cast<size_t>(kept), sizeof(BoneWeight), CompareOrders);
}

// Sums above 1 are deliberately left as they are.
void ScaleToOne(BoneWeights& weights) {
    Float64 sum = 0.0;
    for (Int32 i = 0; i < weights.Count(); ++i) {
        sum += weights[i].weight;
    }
    if (sum >= 1.0 || sum == 0.0) {
        return;
    }
    for (Int32 i = 0; i < weights.Count(); ++i) {
        const Float64 weight = weights[i].weight;
        weights[i].weight = static_cast<Float32>(weight / sum * (1.0 - sum) + weight);
    }
}

}  // namespace

void OptimizeBoneWeights(BoneWeights& weights, Float32 threshold, Int32 most) {
    RemoveBelow(weights, threshold);
    RemoveSmallest(weights, most);
    ScaleToOne(weights);
}
