#include "scene/transform_samples.h"

#include <decomp.h>

#include "scene/decompose.h"

using Plinth::Int32;
using Plinth::Int64;

TransformSample SampleTransform(const NodePlace& place, TimeValue time) {
    AffineParts parts;
    DecomposeTransform(place.Local(time), parts);
    const TransformSample sample = {parts.t, parts.q, parts.k};
    return sample;
}

TransformSamples::TransformSamples(Interface* maxInterface, Int32 most)
    : ip(maxInterface),
      mostKept(most),
      start(0),
      end(0),
      step(0),
      gridCount(0),
      numChosen(0),
      blockEnd(0),
      keysKept(0),
      keysFilled(0),
      chosen(NULL),
      row(0) {
}

void TransformSamples::Choose(INode* node, const Interval& range, Int64 newStep) {
    if (newStep < 1) {
        newStep = 1;
    }
    const bool isSameGrid = start == range.Start() && end == range.End() && step == newStep;
    if (chosen == node && isSameGrid) {
        return;
    }
    if (!isSameGrid) {
        SetGrid(range, newStep);
    }
    chosen = node;
    if (numChosen >= announced.Count() || announced[numChosen] != node) {
        FillBlock(&node, 1);
        blockEnd = numChosen;
        row = 0;
        return;
    }
    if (numChosen >= blockEnd) {
        const Int32 left = announced.Count() - numChosen;
        const Int64 fitting = mostKept / KeyCount();
        const Int32 count = fitting < 1 ? 1 : fitting < left ? static_cast<Int32>(fitting) : left;
        FillBlock(announced.Data() + numChosen, count);
        blockEnd = numChosen + count;
    }
    row = numChosen - (blockEnd - places.Count());
    ++numChosen;
}

void TransformSamples::Release() {
    chosen = NULL;
    if (numChosen >= blockEnd) {
        places.Clear();
        kept.Clear();
        keysFilled = 0;
    }
}

void TransformSamples::SetGrid(const Interval& range, Int64 newStep) {
    start = range.Start();
    end = range.End();
    step = newStep;
    gridCount = start > end ? 0 : (static_cast<Int64>(end) - start) / step + 1;
    blockEnd = numChosen;
}

// The block's storage is made anew: its size may be another.
void TransformSamples::FillBlock(INode* const* nodes, Int32 count) {
    kept.Clear();
    places.Clear();
    places.Reserve(count);
    for (Int32 i = 0; i < count; ++i) {
        places.Add(NodePlace(nodes[i]));
    }
    const Int32 most = mostKept / count;
    keysKept = KeyCount() < most ? static_cast<Int32>(KeyCount()) : most;
    kept.Reserve(count * keysKept);
    kept.Resize(count * keysKept);
    for (keysFilled = 0; keysFilled < keysKept; ++keysFilled) {
        if (keysFilled > 0 && ip != NULL && ip->GetCancel()) {
            break;
        }
        FillKey(keysFilled);
    }
}

void TransformSamples::FillKey(Int32 key) {
    const TimeValue time = KeyTime(key);
    const bool isKnown = key == gridCount && EndsOnGrid();
    for (Int32 i = 0; i < places.Count(); ++i) {
        TransformSample& sample = kept[i * keysKept + key];
        sample = isKnown ? kept[i * keysKept + key - 1] : SampleTransform(places[i], time);
    }
}

TimeValue TransformSamples::KeyTime(Int64 key) const {
    return key < gridCount ? static_cast<TimeValue>(start + key * step) : end;
}

const TransformSample& TransformSamples::KeySample(Int64 key) {
    if (key < keysFilled) {
        return kept[row * keysKept + static_cast<Int32>(key)];
    }
    unkept = SampleTransform(places[row], KeyTime(key));
    return unkept;
}

const TransformSample& TransformSamples::At(TimeValue time) {
    const Int64 passed = static_cast<Int64>(time) - start;
    if (passed >= 0 && passed % step == 0 && passed / step < gridCount) {
        return KeySample(passed / step);
    }
    unkept = SampleTransform(places[row], time);
    return unkept;
}
