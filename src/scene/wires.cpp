#include "scene/wires.h"

#include <string.h>

using Plinth::HashTable;
using Plinth::Int32;
using Plinth::UInt32;
using Plinth::UInt8;

namespace {

UInt32 HashOfKeys(const Control* first, const Control* second) {
    return Plinth::HashOf(Plinth::AddressKey(first), Plinth::AddressKey(second));
}

}  // namespace

const char* MotionVariableName(int part, int component) {
    static const char* const kNames[3][3] = {{"X_Position", "Y_Position", "Z_Position"},
                                             {"X_Rotation", "Y_Rotation", "Z_Rotation"},
                                             {"X_Scale", "Y_Scale", "Z_Scale"}};
    const bool known = part >= 0 && part < 3 && component >= 0 && component < 3;
    return known ? kNames[part][component] : "Unknown var";
}

void PendingWires::AddChannel(Control* channel, INode* node, int part, int component) {
    const Record record = {channel, node, kNone, static_cast<UInt8>(part),
                           static_cast<UInt8>(component)};
    AddRecord(record, NULL);
}

void PendingWires::AddLink(Control* driver, const WireEnd& end) {
    const Link link = {driver,     records.Count(), end.driver,
                       end.weight, end.listWeight,  end.linkKind};
    links.AddAmortized(link);
    const Record record = {end.wire, end.node, links.Count() - 1, static_cast<UInt8>(end.part),
                           static_cast<UInt8>(end.component)};
    bySecond.Add(HashOfKeys(driver, NULL));
    AddRecord(record, driver);
}

void PendingWires::AddRecord(const Record& record, const Control* second) {
    records.AddAmortized(record);
    byKeys.Add(HashOfKeys(record.first, second));
}

bool PendingWires::Take(const Control* first, const Control* second, WireEnd& end) {
    const Int32 plain = Find(first, NULL);
    const Int32 linked = Find(first, second);
    if (plain == kNone && linked == kNone) {
        return false;
    }
    const bool plainIsOlder = linked == kNone || (plain != kNone && plain < linked);
    TakeRecord(plainIsOlder ? plain : linked, end);
    return true;
}

bool PendingWires::TakeBySecond(const Control* second, WireEnd& end) {
    HashTable::Walk walk(bySecond, HashOfKeys(second, NULL));
    while (walk.Current() >= 0) {
        ++numVisited;
        const Link& link = links[walk.Current()];
        if (records[link.record].node == NULL) {
            bySecond.Remove(walk);
        } else if (link.second == second) {
            TakeRecord(link.record, end);
            bySecond.Remove(walk);
            return true;
        } else {
            walk.Advance();
        }
    }
    return false;
}

const Control* PendingWires::SecondKey(const Record& record) const {
    return record.link == kNone ? NULL : links[record.link].second;
}

// The oldest record of these keys; kNone: there is none.
Int32 PendingWires::Find(const Control* first, const Control* second) {
    HashTable::Walk walk(byKeys, HashOfKeys(first, second));
    while (walk.Current() >= 0) {
        ++numVisited;
        const Int32 position = walk.Current();
        const Record& record = records[position];
        if (record.node == NULL) {
            byKeys.Remove(walk);
        } else if (record.first == first && SecondKey(record) == second) {
            return position;
        } else {
            walk.Advance();
        }
    }
    return kNone;
}

void PendingWires::TakeRecord(Int32 position, WireEnd& end) {
    Record& record = records[position];
    memset(&end, 0, sizeof(end));
    end.node = record.node;
    end.part = record.part;
    end.component = record.component;
    if (record.link != kNone) {
        const Link& link = links[record.link];
        end.wire = record.first;
        end.driver = link.driver;
        end.weight = link.weight;
        end.listWeight = link.listWeight;
        end.linkKind = link.linkKind;
    }
    record.node = NULL;
    ++numTaken;
}
