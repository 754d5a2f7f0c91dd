// Numbers by address.
#ifndef PLINTH_POINTER_INDEX_H
#define PLINTH_POINTER_INDEX_H

#include <stddef.h>

#include "core/key_index.h"
#include "core/types.h"

namespace Plinth {

// A KeyIndex whose keys are addresses, the null one included. Not copyable.
class PointerIndex {
  public:
    PointerIndex() {}

    // Returns whether the address has a number; `value` stays untouched when it has none.
    bool Find(const void* address, Int32& value) const { return index.Find(Key(address), value); }
    // Sets or replaces the address's number.
    void Set(const void* address, Int32 value) { index.Set(Key(address), value); }
    // Room for `count` addresses in all.
    void Reserve(Int32 count) { index.Reserve(count); }
    // Forgets all and gives the storage back.
    void Clear() { index.Clear(); }

    Int32 Count() const { return index.Count(); }

  private:
    PointerIndex(const PointerIndex&);
    PointerIndex& operator=(const PointerIndex&);

    static UInt64 Key(const void* address) { return reinterpret_cast<size_t>(address); }

    KeyIndex index;
};

}  // namespace Plinth

#endif
