// The library's one hash table, as it serves those who keep their own entries, and with keys.
#ifndef PLINTH_HASH_TABLE_H
#define PLINTH_HASH_TABLE_H

#include <stddef.h>

#include "core/array.h"
#include "core/types.h"

namespace Plinth {

// Gives out the numbers 0, 1, 2, ... and finds them again by the hash that each was added with,
// several a hash, the oldest first: chained hashing (Knuth, The Art of Computer Programming 3, 6.4)
// with at most one number a chain on average. The owner keeps what belongs to a number, and tells
// keys of one hash apart. Takes 8 bytes a number, as much again where the storage has just grown,
// and 4 to 8 for the chains. Adding and finding take constant time on average. Not copyable.
class HashTable {
  public:
    HashTable() {}

    // Adds the number Count(). Without memory throws std::bad_alloc and adds nothing.
    void Add(UInt32 hash);
    // The numbers that have been given out, removed ones included.
    Int32 Count() const { return entries.Count(); }
    // Makes the room for numbers exactly `count`, also when that is less than before.
    void Reserve(Int32 count) { entries.Reserve(count); }

    // Goes through the numbers of one hash in ascending order. Of several walks at a time none may
    // remove, and none survives Add.
    class Walk {
      public:
        Walk(const HashTable& table, UInt32 hash);
        // The number that the walk has reached; -1 behind the last one.
        Int32 Current() const { return current; }
        void Advance();

      private:
        friend class HashTable;

        void SkipOthers();

        const HashTable& table;
        const UInt32 hash;
        Int32 last;      // of the chain
        Int32 previous;  // in the chain, whatever its hash
        Int32 current;
    };

    // Takes the walk's current number out of the table and advances the walk.
    void Remove(Walk& walk);

  private:
    HashTable(const HashTable&);
    HashTable& operator=(const HashTable&);

    enum { kNone = -1, kRemoved = -2 };

    // A chain is a ring: behind its last number comes its first.
    struct Entry {
        UInt32 hash;
        Int32 next;
    };

    Int32 ChainOf(UInt32 hash) const {
        return static_cast<Int32>(hash & static_cast<UInt32>(lastOfChain.Count() - 1));
    }
    void Append(Int32 number);
    void Rebuild(Int32 numChains);

    Array<Entry> entries;
    Array<Int32> lastOfChain;  // none, or a power of two; kNone for an empty chain
};

// A hash whose bits all depend on all bits of both words; addresses, for instance, end in zeros.
inline UInt32 HashOf(UInt64 first, UInt64 second) {
    const UInt64 golden = (static_cast<UInt64>(0x9e3779b9u) << 32) | 0x7f4a7c15u;
    UInt64 mixed = first * golden;
    mixed = ((mixed ^ (mixed >> 32)) + second) * golden;
    return static_cast<UInt32>(mixed ^ (mixed >> 32));
}

// Two numbers, or an address, the null one included, as one key.
inline UInt64 PairKey(Int32 first, Int32 second) {
    return (static_cast<UInt64>(static_cast<UInt32>(first)) << 32) | static_cast<UInt32>(second);
}
inline UInt64 AddressKey(const void* address) {
    return reinterpret_cast<size_t>(address);
}

// Numbers by 64-bit keys. Takes 28 to 56 bytes a key. Not copyable.
class KeyIndex {
  public:
    KeyIndex() {}

    // Returns whether the key has a number; `value` stays untouched when it has none.
    bool Find(UInt64 key, Int32& value) const;
    // Sets or replaces the key's number. Without memory throws std::bad_alloc and changes nothing.
    void Set(UInt64 key, Int32 value);

  private:
    KeyIndex(const KeyIndex&);
    KeyIndex& operator=(const KeyIndex&);

    struct Entry {
        UInt64 key;
        Int32 value;
    };

    // The place of the key's entry; -1 when it has none.
    Int32 PlaceOf(UInt64 key) const;

    HashTable table;
    Array<Entry> entries;  // by number in `table`
};

}  // namespace Plinth

#endif
