#include "scene/transform_samples.h"

#include <decomp.h>

#include "scene/decompose.h"
#include "scene/node.h"

using Plinth::Int32;
using Plinth::Int64;

namespace {

TransformSample Evaluate(INode* node, TimeValue time) {
    AffineParts parts;
    DecomposeTransform(NodePlace(node).Local(time), parts);
    const TransformSample sample = {parts.t, parts.q, parts.k};
    return sample;
}

}  // namespace

TransformSamples::TransformSamples(Int32 most)
    : mostKept(most), node(NULL), start(0), end(0), step(1), gridCount(0) {
}

void TransformSamples::Choose(INode* newNode, const Interval& range, Int64 newStep) {
    if (newStep < 1) {
        newStep = 1;
    }
    if (node == newNode && start == range.Start() && end == range.End() && step == newStep) {
        return;
    }
    Clear();
    node = newNode;
    start = range.Start();
    end = range.End();
    step = newStep;
    gridCount = start > end ? 0 : (static_cast<Int64>(end) - start) / step + 1;
    kept.Reserve(KeyCount() < mostKept ? static_cast<Int32>(KeyCount()) : mostKept);
}

void TransformSamples::Clear() {
    node = NULL;
    gridCount = 0;
    kept.Clear();
}

TimeValue TransformSamples::KeyTime(Int64 key) const {
    return key < gridCount ? static_cast<TimeValue>(start + key * step) : end;
}

const TransformSample& TransformSamples::KeySample(Int64 key) {
    if (key == gridCount && gridCount > 0 && KeyTime(key - 1) == end) {
        --key;
    }
    if (key < kept.Count()) {
        return kept[static_cast<Int32>(key)];
    }
    unkept = Evaluate(node, KeyTime(key));
    if (key == kept.Count() && key < mostKept) {
        kept.Add(unkept);
    }
    return unkept;
}
