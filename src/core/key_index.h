// Numbers by integer keys.
#ifndef PLINTH_KEY_INDEX_H
#define PLINTH_KEY_INDEX_H

#include "core/types.h"

namespace Plinth {

// A hash from 64-bit keys to numbers: open addressing with linear probing and multiplicative
// hashing (Knuth, The Art of Computer Programming 3, 6.4), at most half full, its capacity doubled
// when that is passed. Finding and setting take constant time on average. There is no way to walk
// the entries, because their order would follow the hash. Not copyable.
class KeyIndex {
  public:
    KeyIndex();
    ~KeyIndex();

    // Returns whether the key has a number; `value` stays untouched when it has none.
    bool Find(UInt64 key, Int32& value) const;
    // Sets or replaces the key's number. Without memory throws std::bad_alloc and changes nothing.
    void Set(UInt64 key, Int32 value);
    // Room for `newCount` keys in all.
    void Reserve(Int32 newCount);
    // Forgets all and gives the storage back.
    void Clear();

    Int32 Count() const { return count; }

  private:
    KeyIndex(const KeyIndex&);
    KeyIndex& operator=(const KeyIndex&);

    struct Slot {
        UInt64 key;
        Int32 value;
        Int32 used;
    };

    Slot* SlotOf(UInt64 key) const;
    void Rebuild(UInt32 newSlotCount);

    Slot* slots;
    UInt32 slotCount;  // 0 or a power of two
    Int32 count;
};

// Two numbers as one key.
inline UInt64 PairKey(Int32 first, Int32 second) {
    return (static_cast<UInt64>(static_cast<UInt32>(first)) << 32) | static_cast<UInt32>(second);
}

}  // namespace Plinth

#endif
