// A list of distinct pointers in the order in which they were added, with their positions served
// from an index.
#ifndef PLINTH_POINTER_LIST_H
#define PLINTH_POINTER_LIST_H

#include "core/array.h"
#include "core/pointer_index.h"
#include "core/types.h"

namespace Plinth {

// The list does not own what it points to.
template <class T>
class PointerList {
  public:
    Int32 Count() const { return entries.Count(); }
    T* operator[](Int32 position) const { return entries[position]; }

    // The 0-based position of an entry; -1 when it is not in the list.
    Int32 Find(const T* entry) const {
        Int32 position = -1;
        return index.Find(entry, position) ? position : -1;
    }

    // Appends an entry that is not in the list yet; returns its position in either case. Without
    // memory for it throws std::bad_alloc and adds nothing.
    Int32 Add(T* entry) {
        const Int32 known = Find(entry);
        if (known >= 0) {
            return known;
        }
        const Int32 position = entries.Count();
        entries.MakeRoom();
        index.Set(entry, position);
        entries.Add(entry);
        return position;
    }

    // Room for `count` entries in all.
    void Reserve(Int32 count) {
        entries.Reserve(count);
        index.Reserve(count);
    }

    void Clear() {
        entries.Clear();
        index.Clear();
    }

  private:
    Array<T*> entries;
    PointerIndex index;
};

}  // namespace Plinth

#endif
