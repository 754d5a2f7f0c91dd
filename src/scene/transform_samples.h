// Nodes' local transforms on the grid of frames of a sampled export.
#ifndef SCENE_TRANSFORM_SAMPLES_H
#define SCENE_TRANSFORM_SAMPLES_H

#include <max.h>
#include <maxapi.h>

#include <quat.h>

#include "core/array.h"
#include "core/types.h"
#include "scene/node.h"

// The factors of DecomposeTransform that tracks and poses hold.
struct TransformSample {
    Point3 translation;
    Quat rotation;
    Point3 scale;
};

// Evaluates and decomposes the local transform.
TransformSample SampleTransform(const NodePlace& place, TimeValue time);

// Evaluates the samples of many nodes together, time by time: 3ds Max remembers the transforms of
// one time alone, so a node asked for all times by itself would have all its ancestors evaluated
// anew at each of them. Keeps the samples for the detection of animation and up to three tracks,
// until the last node of the block has been released.
//
// The keys are the grid times (start, start + step, ... up to the range's end) and behind them one
// at the end itself, also where the last grid time is the end already.
class TransformSamples {
  public:
    enum { kMostKept = 4000000 };  // 160 MB

    // Evaluating a block ends early once the user has cancelled, unless `ip` is null; what is asked
    // for all the same is evaluated then.
    explicit TransformSamples(Interface* ip, Plinth::Int32 mostKept = kMostKept);

    // Announces a node that will be chosen, in the order in which they will be. Nodes that were
    // announced one after the other are evaluated in blocks of as many as can be kept, others by
    // themselves.
    void Announce(INode* node) { announced.AddAmortized(node); }

    // Chooses node, range and step, all in ticks; a step below 1 counts as 1. A range that ends
    // before it starts has no grid times. What is kept of the same choice stays.
    void Choose(INode* node, const Interval& range, Plinth::Int64 step);
    // Ends the choice; gives the storage back behind the last node of a block.
    void Release();

    Plinth::Int64 GridCount() const { return gridCount; }
    Plinth::Int64 KeyCount() const { return gridCount + 1; }
    TimeValue KeyTime(Plinth::Int64 key) const;
    // Lives until the next call. Samples behind the most that are kept are evaluated anew at each
    // call.
    const TransformSample& KeySample(Plinth::Int64 key);
    // The same at any time.
    const TransformSample& At(TimeValue time);

  private:
    TransformSamples(const TransformSamples&);
    TransformSamples& operator=(const TransformSamples&);

    void SetGrid(const Interval& range, Plinth::Int64 newStep);
    bool EndsOnGrid() const { return gridCount > 0 && KeyTime(gridCount - 1) == end; }
    void FillBlock(INode* const* nodes, Plinth::Int32 count);
    void FillKey(Plinth::Int32 key);

    Interface* const ip;
    const Plinth::Int32 mostKept;
    TimeValue start;
    TimeValue end;
    Plinth::Int64 step;
    Plinth::Int64 gridCount;

    Plinth::Array<INode*> announced;
    Plinth::Int32 numChosen;  // of the announced ones
    Plinth::Int32 blockEnd;   // behind the last announced one whose samples were evaluated

    Plinth::Array<NodePlace> places;      // of the block's nodes
    Plinth::Array<TransformSample> kept;  // node by node
    Plinth::Int32 keysKept;               // of each node
    Plinth::Int32 keysFilled;             // of these
    INode* chosen;                        // null: none
    Plinth::Int32 row;                    // of the chosen node in the block
    TransformSample unkept;
};

#endif
