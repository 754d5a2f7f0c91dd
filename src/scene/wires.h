// The channels of a transform that can be wired, and wires of which one end has been exported and
// that wait for the other one.
#ifndef SCENE_WIRES_H
#define SCENE_WIRES_H

#include <max.h>

#include "core/array.h"
#include "core/hash_table.h"
#include "core/types.h"

// The name of a channel: `part` 0 is position, 1 rotation, 2 scale; `component` 0 is X, 1 Y, 2 Z.
// "Unknown var" for any other pair. The text is static.
const char* MotionVariableName(int part, int component);

// The first end of a wire, as it was met.
struct WireEnd {
    INode* node;
    int part;       // of the node's transform; see MotionVariableName
    int component;  // x, y, z
    Control* wire;  // the wire controller; null: a plain channel, whose other members are unused
    int driver;     // which of the wire's drivers the other end is
    Plinth::Float32 weight;
    Plinth::Float32 listWeight;
    Plinth::UInt8 linkKind;  // as in KTAWire
};

// A list of half-filled records in the order in which they were added. A record has two keys, a
// controller and a second one or none; what takes a record from the list gives the oldest that
// matches. Served by indexes: adding and taking need constant time on average. Takes 32 bytes a
// record and 40 more for one with two keys, all of it as much again at most for room to grow, and 4
// to 8 for the indexes; the room of a record that was taken is not used again. Does not own what it
// points to. Not copyable.
class PendingWires {
  public:
    PendingWires() : numTaken(0), numVisited(0) {}

    // The record of a plain channel, keyed (channel, none). Without memory for it throws
    // std::bad_alloc, and the list is of no use any more; so does AddLink.
    void AddChannel(Control* channel, INode* node, int part, int component);
    // The record of a wire, keyed (end.wire, driver).
    void AddLink(Control* driver, const WireEnd& end);

    // Takes the oldest record keyed (first, none) or (first, second); false when there is none.
    bool Take(const Control* first, const Control* second, WireEnd& end);
    // Takes the oldest record with that second key; false when there is none.
    bool TakeBySecond(const Control* second, WireEnd& end);

    // The records in the list.
    Plinth::Int32 Count() const { return records.Count() - numTaken; }
    // The records that the two ways of taking have looked at so far: what they cost.
    Plinth::UInt64 NumVisited() const { return numVisited; }

  private:
    PendingWires(const PendingWires&);
    PendingWires& operator=(const PendingWires&);

    enum { kNone = -1 };

    struct Record {
        Control* first;
        INode* node;  // null: the record has been taken
        Plinth::Int32 link;
        Plinth::UInt8 part, component;
    };
    struct Link {
        Control* second;
        Plinth::Int32 record;
        Plinth::Int32 driver;
        Plinth::Float32 weight;
        Plinth::Float32 listWeight;
        Plinth::UInt8 linkKind;
    };

    void AddRecord(const Record& record, const Control* second);
    const Control* SecondKey(const Record& record) const;
    Plinth::Int32 Find(const Control* first, const Control* second);
    void TakeRecord(Plinth::Int32 position, WireEnd& end);

    Plinth::Array<Record> records;
    Plinth::HashTable byKeys;  // one number a record
    Plinth::Array<Link> links;
    Plinth::HashTable bySecond;  // one number a link
    Plinth::Int32 numTaken;
    Plinth::UInt64 numVisited;
};

#endif
