#include "core/hash_chains.h"

#include <stddef.h>

namespace Plinth {

namespace {

enum { kFirstNumChains = 16, kMaxNumChains = 0x40000000, kNumbersAChain = 2 };

// Low bits of addresses are zeros; the product's high bits depend on all bits.
UInt64 Mix(UInt64 key) {
    const UInt64 golden = (static_cast<UInt64>(0x9e3779b9u) << 32) | 0x7f4a7c15u;
    const UInt64 product = key * golden;
    return product ^ (product >> 32);
}

}  // namespace

UInt32 HashOfPair(const void* first, const void* second) {
    const UInt64 mixed = Mix(Mix(reinterpret_cast<size_t>(first)) +
                             static_cast<UInt64>(reinterpret_cast<size_t>(second)));
    return static_cast<UInt32>(mixed);
}

void HashChains::Add(UInt32 hash) {
    const Int32 number = entries.Count();
    entries.MakeRoom();
    if (chains.Count() == 0) {
        Rebuild(kFirstNumChains);
    } else if (number / kNumbersAChain >= chains.Count() && chains.Count() < kMaxNumChains) {
        Rebuild(2 * chains.Count());
    }
    const Entry entry = {hash, kNone};
    entries.Add(entry);
    Append(number);
}

void HashChains::Clear() {
    entries.Clear();
    chains.Clear();
}

void HashChains::Append(Int32 number) {
    Chain& chain = ChainOf(entries[number].hash);
    entries[number].next = kNone;
    if (chain.last == kNone) {
        chain.first = number;
    } else {
        entries[chain.last].next = number;
    }
    chain.last = number;
}

void HashChains::Rebuild(Int32 numChains) {
    chains.Reserve(numChains);
    chains.Resize(numChains);
    for (Int32 i = 0; i < numChains; ++i) {
        chains[i].first = kNone;
        chains[i].last = kNone;
    }
    for (Int32 i = 0; i < entries.Count(); ++i) {
        if (entries[i].next != kRemoved) {
            Append(i);
        }
    }
}

HashChains::Walk::Walk(HashChains& walked, UInt32 wantedHash)
    : chains(walked), hash(wantedHash), previous(kNone), current(kNone) {
    if (chains.chains.Count() > 0) {
        current = chains.ChainOf(hash).first;
        SkipOthers();
    }
}

void HashChains::Walk::Advance() {
    previous = current;
    current = chains.entries[current].next;
    SkipOthers();
}

void HashChains::Walk::Remove() {
    Chain& chain = chains.ChainOf(hash);
    const Int32 next = chains.entries[current].next;
    if (previous == kNone) {
        chain.first = next;
    } else {
        chains.entries[previous].next = next;
    }
    if (next == kNone) {
        chain.last = previous;
    }
    chains.entries[current].next = kRemoved;
    current = next;
    SkipOthers();
}

void HashChains::Walk::SkipOthers() {
    while (current != kNone && chains.entries[current].hash != hash) {
        previous = current;
        current = chains.entries[current].next;
    }
}

}  // namespace Plinth
