#include "core/hash_table.h"

namespace Plinth {

namespace {

enum { kFirstNumChains = 16, kMostChains = 0x40000000 };

}  // namespace

void HashTable::Add(UInt32 hash) {
    const Int32 number = entries.Count();
    entries.MakeRoom();
    if (number >= lastOfChain.Count() && lastOfChain.Count() < kMostChains) {
        Rebuild(number == 0 ? static_cast<Int32>(kFirstNumChains) : 2 * lastOfChain.Count());
    }
    const Entry entry = {hash, kNone};
    entries.Add(entry);
    Append(number);
}

void HashTable::Append(Int32 number) {
    Int32& last = lastOfChain[ChainOf(entries[number].hash)];
    if (last == kNone) {
        entries[number].next = number;
    } else {
        entries[number].next = entries[last].next;
        entries[last].next = number;
    }
    last = number;
}

void HashTable::Rebuild(Int32 numChains) {
    lastOfChain.Reserve(numChains);
    lastOfChain.Resize(numChains);
    for (Int32 i = 0; i < numChains; ++i) {
        lastOfChain[i] = kNone;
    }
    for (Int32 i = 0; i < entries.Count(); ++i) {
        if (entries[i].next != kRemoved) {
            Append(i);
        }
    }
}

HashTable::Walk::Walk(const HashTable& walked, UInt32 wantedHash)
    : table(walked), hash(wantedHash), last(kNone), previous(kNone), current(kNone) {
    if (table.lastOfChain.Count() > 0) {
        last = table.lastOfChain[table.ChainOf(hash)];
    }
    if (last != kNone) {
        previous = last;
        current = table.entries[last].next;
        SkipOthers();
    }
}

void HashTable::Walk::Advance() {
    previous = current;
    current = current == last ? static_cast<Int32>(kNone) : table.entries[current].next;
    SkipOthers();
}

void HashTable::Walk::SkipOthers() {
    while (current != kNone && table.entries[current].hash != hash) {
        previous = current;
        current = current == last ? static_cast<Int32>(kNone) : table.entries[current].next;
    }
}

void HashTable::Remove(Walk& walk) {
    const Int32 removed = walk.current;
    const Int32 next = entries[removed].next;
    const bool isLast = removed == walk.last;
    if (next == removed) {
        walk.last = kNone;
    } else {
        entries[walk.previous].next = next;
        walk.last = isLast ? walk.previous : walk.last;
    }
    lastOfChain[ChainOf(walk.hash)] = walk.last;
    entries[removed].next = kRemoved;
    walk.current = isLast ? static_cast<Int32>(kNone) : next;
    walk.SkipOthers();
}

bool KeyIndex::Find(UInt64 key, Int32& value) const {
    const Int32 place = PlaceOf(key);
    if (place >= 0) {
        value = entries[place].value;
    }
    return place >= 0;
}

void KeyIndex::Set(UInt64 key, Int32 value) {
    const Int32 place = PlaceOf(key);
    if (place >= 0) {
        entries[place].value = value;
        return;
    }
    entries.MakeRoom();
    table.Add(HashOf(key, 0));
    const Entry entry = {key, value};
    entries.Add(entry);
}

Int32 KeyIndex::PlaceOf(UInt64 key) const {
    HashTable::Walk walk(table, HashOf(key, 0));
    while (walk.Current() >= 0 && entries[walk.Current()].key != key) {
        walk.Advance();
    }
    return walk.Current();
}

}  // namespace Plinth
