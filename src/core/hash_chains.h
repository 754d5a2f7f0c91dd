// Numbers by hash, several a hash, the oldest first.
#ifndef PLINTH_HASH_CHAINS_H
#define PLINTH_HASH_CHAINS_H

#include "core/array.h"
#include "core/types.h"

namespace Plinth {

// Gives out the numbers 0, 1, 2, ... and finds them again by the hash that each was added with:
// chained hashing (Knuth, The Art of Computer Programming 3, 6.4) with two numbers a chain at most
// on average. Takes 8 bytes a number, as much again where the storage has just grown, and 4 to 8
// for the chains. Not copyable.
class HashChains {
  public:
    HashChains() {}

    // Adds the number Count(). Without memory throws std::bad_alloc and adds nothing.
    void Add(UInt32 hash);
    // The numbers that have been given out, removed ones included.
    Int32 Count() const { return entries.Count(); }
    // Forgets all and gives the storage back.
    void Clear();

    // Goes through the numbers of one hash in ascending order. Of several walks at a time none may
    // remove, and none survives Add or Clear.
    class Walk {
      public:
        Walk(HashChains& chains, UInt32 hash);
        // The number that the walk has reached; -1 behind the last one.
        Int32 Current() const { return current; }
        void Advance();
        // Takes the current number out of its chain and advances.
        void Remove();

      private:
        Walk(const Walk&);
        Walk& operator=(const Walk&);

        void SkipOthers();

        HashChains& chains;
        const UInt32 hash;
        Int32 previous;  // in the chain, whatever its hash; -1: none
        Int32 current;
    };

  private:
    HashChains(const HashChains&);
    HashChains& operator=(const HashChains&);

    enum { kNone = -1, kRemoved = -2 };

    struct Entry {
        UInt32 hash;
        Int32 next;  // kNone at the end of a chain
    };
    struct Chain {
        Int32 first, last;
    };

    friend class Walk;

    Chain& ChainOf(UInt32 hash) {
        return chains[static_cast<Int32>(hash & static_cast<UInt32>(chains.Count() - 1))];
    }
    void Append(Int32 number);
    void Rebuild(Int32 numChains);

    Array<Entry> entries;
    Array<Chain> chains;  // none, or a power of two
};

// A hash of two addresses, the null one included.
UInt32 HashOfPair(const void* first, const void* second);

}  // namespace Plinth

#endif
