// A node's local transform on the grid of frames of a sampled export.
#ifndef SCENE_TRANSFORM_SAMPLES_H
#define SCENE_TRANSFORM_SAMPLES_H

#include <max.h>

#include <quat.h>

#include "core/array.h"
#include "core/types.h"

// The factors of DecomposeTransform that tracks hold.
struct TransformSample {
    Point3 translation;
    Quat rotation;
    Point3 scale;
};

// Evaluates and decomposes each sample when it is first asked for, and keeps it for whoever asks
// again: the detection of animation and up to three tracks ask for the same ones.
//
// The keys are the grid times (start, start + step, ... up to the range's end) and behind them one
// at the end itself, also where the last grid time is the end already.
class TransformSamples {
  public:
    enum { kMostKept = 4000000 };  // 160 MB

    explicit TransformSamples(Plinth::Int32 mostKept = kMostKept);

    // Chooses node, range and step, all in ticks; a step below 1 counts as 1. A range that ends
    // before it starts has no grid times. What is kept of the same choice stays.
    void Choose(INode* node, const Interval& range, Plinth::Int64 step);
    // Forgets the node and gives the storage back.
    void Clear();

    Plinth::Int64 GridCount() const { return gridCount; }
    Plinth::Int64 KeyCount() const { return gridCount + 1; }
    TimeValue KeyTime(Plinth::Int64 key) const;
    // Lives until the next call. Samples behind the most that are kept are evaluated anew at each
    // call.
    const TransformSample& KeySample(Plinth::Int64 key);

  private:
    TransformSamples(const TransformSamples&);
    TransformSamples& operator=(const TransformSamples&);

    const Plinth::Int32 mostKept;
    INode* node;
    TimeValue start;
    TimeValue end;
    Plinth::Int64 step;
    Plinth::Int64 gridCount;
    Plinth::Array<TransformSample> kept;  // of the first keys
    TransformSample unkept;
};

#endif
