// A block of memory that is handed out in pieces.
#ifndef PLINTH_MEMORY_BLOCK_H
#define PLINTH_MEMORY_BLOCK_H

#include <stddef.h>

#include "core/types.h"

namespace Plinth {

// The record in a block in front of each allocation's padding and data. The records of a block are
// a doubly linked list in address order; null ends it on both sides. A record may lie at any
// address, so it is loaded and stored by copying.
struct AllocationRecord {
    char* previous;
    char* next;
    char* data;
    UInt32 size;
    UInt32 category;
    UInt32 alignment;
    UInt32 blockId;
};

enum { kAllocationRecordSize = 48 };
PLINTH_STATIC_ASSERT(sizeof(AllocationRecord) <= kAllocationRecordSize, allocation_record_fits);

// The record at an address of a block.
AllocationRecord LoadAllocationRecord(const char* address);

// Padding between a record and its data.
UInt32 AlignmentPadding(const char* address);

class MemoryBlock {
  public:
    // Memory from the C heap; without it throws std::bad_alloc.
    explicit MemoryBlock(UInt32 blockSize);
    // Gives the memory back, with all allocations in it.
    ~MemoryBlock();

    const char* Start() const { return start; }
    UInt32 Size() const { return size; }
    // The first record's address; null for an empty block.
    char* First() const { return first; }
    // Start to start + size, inclusive.
    bool Contains(const void* address) const;

    // Places an allocation in the smallest gap that holds its record, padding and data, the first
    // in address order among equal ones, and returns its record's address; null when none does.
    // `alignment` 0 counts as 1; it needs not be a power of two.
    char* Place(UInt32 dataSize, UInt32 category, UInt32 alignment, UInt32 blockId);
    // The address of the record whose data address is `data`; null when there is none.
    char* Find(const void* data) const;
    // Takes the record at an address out of the list.
    void Remove(char* address);

  private:
    MemoryBlock(const MemoryBlock&);
    MemoryBlock& operator=(const MemoryBlock&);

    struct Gap {
        char* start;
        size_t size;
        char* previous;  // the record in front of it, or null
        char* next;      // the record behind it, or null
    };

    bool FindGap(size_t dataSize, UInt32 alignment, Gap& best) const;

    char* start;
    char* first;
    UInt32 size;
};

}  // namespace Plinth

#endif
