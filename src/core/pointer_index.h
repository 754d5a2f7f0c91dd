// Numbers by address.
#ifndef PLINTH_POINTER_INDEX_H
#define PLINTH_POINTER_INDEX_H

#include "core/types.h"

namespace Plinth {

// A hash from addresses, the null one included, to numbers: open addressing with linear probing and
// multiplicative hashing (Knuth, The Art of Computer Programming 3, 6.4), at most half full, its
// capacity doubled when that is passed. Finding and setting take constant time on average. There is
// no way to walk the entries, because their order would follow addresses. Not copyable.
class PointerIndex {
  public:
    PointerIndex();
    ~PointerIndex();

    // Returns whether the address has a number; `value` stays untouched when it has none.
    bool Find(const void* address, Int32& value) const;
    // Sets or replaces the address's number. False, and nothing changed, where memory is missing.
    bool Set(const void* address, Int32 value);
    // Room for `count` addresses in all. False where memory is missing.
    bool Reserve(Int32 newCount);
    // Forgets all and gives the storage back.
    void Clear();

    Int32 Count() const { return count; }

  private:
    PointerIndex(const PointerIndex&);
    PointerIndex& operator=(const PointerIndex&);

    struct Slot {
        const void* address;
        Int32 value;
        Int32 used;
    };

    Slot* SlotOf(const void* address) const;
    bool Rebuild(UInt32 newSlotCount);

    Slot* slots;
    UInt32 slotCount;  // 0 or a power of two
    Int32 count;
};

}  // namespace Plinth

#endif
