#include "core/memory_block.h"

#include <stdlib.h>
#include <string.h>

#include <new>

namespace Plinth {

namespace {

void StoreAllocationRecord(char* address, const AllocationRecord& record) {
    memcpy(address, &record, sizeof(record));
}

void SetNext(char* address, char* next) {
    AllocationRecord record = LoadAllocationRecord(address);
    record.next = next;
    StoreAllocationRecord(address, record);
}

void SetPrevious(char* address, char* previous) {
    AllocationRecord record = LoadAllocationRecord(address);
    record.previous = previous;
    StoreAllocationRecord(address, record);
}

// From a record at an address to its data.
size_t DataOffset(const char* address, UInt32 alignment) {
    const size_t step = alignment != 0 ? alignment : 1;
    const size_t excess = (reinterpret_cast<size_t>(address) + kAllocationRecordSize) % step;
    return kAllocationRecordSize + (excess != 0 ? step - excess : 0);
}

}  // namespace

AllocationRecord LoadAllocationRecord(const char* address) {
    AllocationRecord record;
    memcpy(&record, address, sizeof(record));
    return record;
}

UInt32 AlignmentPadding(const char* address) {
    const size_t offset = LoadAllocationRecord(address).data - address;
    return static_cast<UInt32>(offset - kAllocationRecordSize);
}

MemoryBlock::MemoryBlock(UInt32 blockSize)
    : start(static_cast<char*>(malloc(blockSize))), first(NULL), size(blockSize) {
    if (start == NULL) {
        throw std::bad_alloc();
    }
}

MemoryBlock::~MemoryBlock() {
    free(start);
}

bool MemoryBlock::Contains(const void* address) const {
    const size_t begin = reinterpret_cast<size_t>(start);
    const size_t position = reinterpret_cast<size_t>(address);
    return position >= begin && position - begin <= size;
}

bool MemoryBlock::FindGap(size_t dataSize, UInt32 alignment, Gap& best) const {
    // The gap of an empty block has the block's size; no other can reach it.
    size_t bestSize = static_cast<size_t>(size) + 1;
    bool found = false;
    Gap gap = {start, 0, NULL, first};
    for (;;) {
        char* const end = gap.next != NULL ? gap.next : start + size;
        gap.size = end - gap.start;
        const size_t offset = DataOffset(gap.start, alignment);
        if (gap.size != 0 && gap.size < bestSize && gap.size >= dataSize &&
            gap.size - dataSize >= offset) {
            best = gap;
            bestSize = gap.size;
            found = true;
            if (gap.size - dataSize == offset) {
                return true;
            }
        }
        if (gap.next == NULL) {
            return found;
        }
        const AllocationRecord record = LoadAllocationRecord(gap.next);
        gap.start = record.data + record.size;
        gap.previous = gap.next;
        gap.next = record.next;
    }
}

char* MemoryBlock::Place(UInt32 dataSize, UInt32 category, UInt32 alignment, UInt32 blockId) {
    Gap gap;
    if (!FindGap(dataSize, alignment, gap)) {
        return NULL;
    }
    char* const data = gap.start + DataOffset(gap.start, alignment);
    const AllocationRecord record = {gap.previous, gap.next,  data,   dataSize,
                                     category,     alignment, blockId};
    StoreAllocationRecord(gap.start, record);
    if (gap.previous != NULL) {
        SetNext(gap.previous, gap.start);
    } else {
        first = gap.start;
    }
    if (gap.next != NULL) {
        SetPrevious(gap.next, gap.start);
    }
    return gap.start;
}

char* MemoryBlock::Find(const void* data) const {
    char* address = first;
    while (address != NULL) {
        const AllocationRecord record = LoadAllocationRecord(address);
        if (record.data == data) {
            return address;
        }
        address = record.next;
    }
    return NULL;
}

void MemoryBlock::Remove(char* address) {
    const AllocationRecord record = LoadAllocationRecord(address);
    if (record.previous != NULL) {
        SetNext(record.previous, record.next);
    } else {
        first = record.next;
    }
    if (record.next != NULL) {
        SetPrevious(record.next, record.previous);
    }
}

}  // namespace Plinth
