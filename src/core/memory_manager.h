// The one place through which strings and dynamic arrays get, grow and release storage.
#ifndef PLINTH_MEMORY_MANAGER_H
#define PLINTH_MEMORY_MANAGER_H

#include <stddef.h>

#include "core/instance_manager.h"
#include "core/memory_block.h"
#include "core/types.h"

namespace Plinth {

enum { kMemoryCategoryText = 1, kMemoryCategoryArray = 2, kMemoryAlignment = 16 };

// Of the allocations inside blocks. Sizes are in bytes, averages are integer quotients and 0 where
// their divisor is 0. Overheads, averages and maxima are those of the last allocation or release;
// a block that is added raises maxBlockMemory alone until then.
struct MemoryStatistics {
    UInt32 numAllocations;
    UInt32 numBlocks;
    UInt32 blockMemory;
    UInt32 allocatedBytes;
    UInt32 blockOverhead;       // blockMemory - alignmentOverhead - allocatedBytes
    UInt32 alignmentOverhead;   // padding between records and data
    UInt32 managementOverhead;  // allocation records
    UInt32 averageAllocSize;
    UInt32 averageBlockSize;
    UInt32 averageBlockOverhead;
    UInt32 averageAlignmentOverhead;
    UInt32 maxBlockMemory;
    UInt32 maxAllocatedBytes;
    UInt32 maxAllocations;
    UInt32 maxBlocks;
};

struct CategoryStatistics {
    UInt32 numAllocations;
    UInt32 allocatedBytes;
    UInt32 averageAllocSize;
};

// The allocation entries pass straight through to the C heap. Beside them stands a block
// sub-allocator with statistics and a leak listing, whose report goes to the debugger's output.
class MemoryManager {
  public:
    // Gives the manager's holder the destruction priority 10000: every other service goes first.
    MemoryManager();
    // Releases the blocks.
    ~MemoryManager();

    // ------------------------------------------------ the C heap

    // The C library's realloc, `memory` null included; the other arguments are not used.
    void* Reallocate(void* memory, size_t size, UInt32 category, UInt32 alignment, UInt32 blockId);
    void Free(void* memory);

    // ------------------------------------------------ blocks

    // Adds an empty block. Without memory for it throws std::bad_alloc.
    void AddBlock(UInt32 size);
    // Storage from the first block that has room; where none has, from a new block of 65536 bytes
    // or what the request needs. Without memory throws std::bad_alloc. `alignment` 0 counts as 1.
    void* AllocateInBlocks(UInt32 size, UInt32 category, UInt32 alignment, UInt32 blockId);
    // A block that becomes empty is removed. An address that AllocateInBlocks did not return, null
    // included, does nothing.
    void FreeInBlocks(void* data);

    // Frees all blocks, after a report with the leak listing when there is one at least. The
    // number and bytes of the allocations keep their values.
    void Release();

    // ------------------------------------------------ statistics

    void PrintReport(bool showLeaks) const;
    const MemoryStatistics& Statistics() const { return statistics; }
    CategoryStatistics StatisticsOf(UInt32 category) const;
    // The record of a data address; false, and `record` untouched, when there is none.
    bool FindAllocation(const void* data, AllocationRecord& record) const;

  private:
    MemoryManager(const MemoryManager&);
    MemoryManager& operator=(const MemoryManager&);

    // These return the address of an allocation record; null for none.
    char* PlaceIn(MemoryBlock* block, UInt32 size, UInt32 category, UInt32 alignment,
                  UInt32 blockId);
    char* FindRecord(const void* data, MemoryBlock*& block) const;

    void RemoveBlock(MemoryBlock* block);
    void CountAllocation(const char* recordAddress, bool added);
    void UpdateDerived();

    void PrintTotals() const;
    void PrintAverages() const;
    void PrintMaxima() const;
    void PrintLeaks() const;

    MemoryStatistics statistics;
    MemoryBlock** blocks;
    Int32 blockCount;
    MemoryBlock* lastUsedBlock;   // of the last allocation; null when that block is gone
    MemoryBlock* lastFreedBlock;  // of the last release; null when that block is gone
    UInt32 defaultBlockSize;
};

template <>
InstanceManager<MemoryManager>*& InstanceManager<MemoryManager>::HolderPointer();

// The one memory manager. The first use may throw, as InstanceManager::Get does.
MemoryManager& GetMemoryManager();

}  // namespace Plinth

#endif
