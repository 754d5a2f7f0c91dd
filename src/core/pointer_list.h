// A list of distinct pointers in the order in which they were added, with their positions served
// from an index.
#ifndef PLINTH_POINTER_LIST_H
#define PLINTH_POINTER_LIST_H

#include "core/array.h"
#include "core/hash_table.h"
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
        HashTable::Walk walk(table, Hash(entry));
        while (walk.Current() >= 0 && entries[walk.Current()] != entry) {
            walk.Advance();
        }
        return walk.Current();
    }

    // Appends an entry that is not in the list yet; returns its position in either case. Without
    // memory for it throws std::bad_alloc and adds nothing.
    Int32 Add(T* entry) {
        const Int32 known = Find(entry);
        if (known >= 0) {
            return known;
        }
        entries.MakeRoom();
        table.Add(Hash(entry));
        entries.Add(entry);
        return entries.Count() - 1;
    }

    // Room for `count` entries in all.
    void Reserve(Int32 count) {
        entries.Reserve(count);
        table.Reserve(count);
    }

  private:
    static UInt32 Hash(const T* entry) { return HashOf(AddressKey(entry), 0); }

    Array<T*> entries;  // by number in `table`
    HashTable table;
};

}  // namespace Plinth

#endif
