#include "core/memory_manager.h"

#include <stdlib.h>
#include <string.h>

#include <new>

#include <windows.h>

#include "core/format.h"
#include "core/holder.h"

namespace Plinth {

namespace {

enum { kDestructionPriority = 10000, kDefaultBlockSize = 65536, kPrintSize = 4096 };
enum { kPreviewLength = 127 };

const char kEmptyLine[] = "\n";
const char kDashes[] = "------------------------------------------------------------------";

UInt32 Quotient(UInt32 dividend, UInt32 divisor) {
    return divisor != 0 ? dividend / divisor : 0;
}

void RaiseTo(UInt32& maximum, UInt32 value) {
    if (value > maximum) {
        maximum = value;
    }
}

void DebugPrint(const char* format, ...) PLINTH_PRINTF(1, 2);

void DebugPrint(const char* format, ...) {
    char text[kPrintSize];
    va_list arguments;
    va_start(arguments, format);
    const int length = FormatBounded(text, kPrintSize - 1, format, arguments);
    va_end(arguments);
    text[length] = '\n';
    text[length + 1] = '\0';
    OutputDebugStringA(text);
}

int Bytes(UInt32 bytes) {
    return static_cast<int>(bytes);
}

int Kilobytes(UInt32 bytes) {
    return static_cast<int>(bytes >> 10);
}

double Megabytes(UInt32 bytes) {
    const Float32 perByte = 1.0f / 1048576.0f;
    return static_cast<Float32>(bytes) * perByte;
}

double Percentage(UInt32 part, UInt32 whole) {
    return static_cast<Float32>(part) / static_cast<Float32>(whole) * 100.0f;
}

void PrintNumber(const char* label, UInt32 number) {
    DebugPrint("%s = %d", label, static_cast<int>(number));
}

void PrintKilobytes(const char* label, UInt32 bytes) {
    DebugPrint("%s = %d bytes (%d kb)", label, Bytes(bytes), Kilobytes(bytes));
}

void PrintMegabytes(const char* label, UInt32 bytes) {
    DebugPrint("%s = %d bytes (%d kb / %.3f mb)", label, Bytes(bytes), Kilobytes(bytes),
               Megabytes(bytes));
}

void PrintShare(const char* label, UInt32 bytes, double percentage) {
    DebugPrint("%s = %d bytes (%d kb / %.3f mb / %.2f%%)", label, Bytes(bytes), Kilobytes(bytes),
               Megabytes(bytes), percentage);
}

void PrintLeak(int number, const AllocationRecord& record) {
    char preview[kPreviewLength + 1];
    UInt32 length = 0;
    for (; length < record.size && length < kPreviewLength; ++length) {
        const Int8 character = static_cast<Int8>(record.data[length]);
        preview[length] = character < 16 ? '.' : static_cast<char>(character);
    }
    preview[length] = '\0';
    DebugPrint("[MEMLEAK #%d] %d bytes at memory location 0x%x with category %d [data='%s']",
               number, Bytes(record.size),
               static_cast<UInt32>(reinterpret_cast<size_t>(record.data)),
               static_cast<int>(record.category), preview);
}

InstanceManager<MemoryManager>* memoryManagerHolder = NULL;

}  // namespace

template <>
InstanceManager<MemoryManager>*& InstanceManager<MemoryManager>::HolderPointer() {
    return memoryManagerHolder;
}

MemoryManager& GetMemoryManager() {
    return InstanceManager<MemoryManager>::Get();
}

MemoryManager::MemoryManager()
    : blocks(NULL),
      blockCount(0),
      lastUsedBlock(NULL),
      lastFreedBlock(NULL),
      defaultBlockSize(kDefaultBlockSize) {
    memset(&statistics, 0, sizeof(statistics));
    InstanceManager<MemoryManager>::Holder().SetPriority(kDestructionPriority);
}

MemoryManager::~MemoryManager() {
    Release();
}

// ---------------------------------------------------------------- the C heap

void* MemoryManager::Reallocate(void* memory, size_t size, UInt32, UInt32, UInt32) {
    return realloc(memory, size);
}

void MemoryManager::Free(void* memory) {
    free(memory);
}

// ---------------------------------------------------------------- blocks

void MemoryManager::AddBlock(UInt32 size) {
    ObjectHolder<MemoryBlock> block(new MemoryBlock(size));
    void* const grown = realloc(blocks, (blockCount + 1) * sizeof(*blocks));
    if (grown == NULL) {
        throw std::bad_alloc();
    }
    blocks = static_cast<MemoryBlock**>(grown);
    blocks[blockCount++] = block.Release();
    ++statistics.numBlocks;
    statistics.blockMemory += size;
    RaiseTo(statistics.maxBlockMemory, statistics.blockMemory);
}

void* MemoryManager::AllocateInBlocks(UInt32 size, UInt32 category, UInt32 alignment,
                                      UInt32 blockId) {
    const UInt32 reserved = kAllocationRecordSize + (alignment != 0 ? alignment - 1 : 0);
    if (size > 0xffffffffu - reserved || reserved < kAllocationRecordSize) {
        throw std::bad_alloc();
    }
    char* record = NULL;
    for (Int32 i = 0; i < blockCount && record == NULL; ++i) {
        record = PlaceIn(blocks[i], size, category, alignment, blockId);
    }
    if (record == NULL) {
        const UInt32 needed = size + reserved;
        AddBlock(needed > defaultBlockSize ? needed : defaultBlockSize);
        record = PlaceIn(blocks[blockCount - 1], size, category, alignment, blockId);
    }
    return LoadAllocationRecord(record).data;
}

char* MemoryManager::PlaceIn(MemoryBlock* block, UInt32 size, UInt32 category, UInt32 alignment,
                             UInt32 blockId) {
    char* const record = block->Place(size, category, alignment, blockId);
    if (record != NULL) {
        lastUsedBlock = block;
        CountAllocation(record, true);
    }
    return record;
}

void MemoryManager::FreeInBlocks(void* data) {
    MemoryBlock* block = NULL;
    char* const record = FindRecord(data, block);
    if (record == NULL) {
        return;
    }
    CountAllocation(record, false);
    block->Remove(record);
    lastFreedBlock = block;
    if (block->First() == NULL) {
        RemoveBlock(block);
    }
}

void MemoryManager::RemoveBlock(MemoryBlock* block) {
    Int32 index = 0;
    while (blocks[index] != block) {
        ++index;
    }
    --blockCount;
    memmove(blocks + index, blocks + index + 1, (blockCount - index) * sizeof(*blocks));
    if (blockCount == 0) {
        free(blocks);
        blocks = NULL;
    } else {
        void* const shrunk = realloc(blocks, blockCount * sizeof(*blocks));
        blocks = shrunk != NULL ? static_cast<MemoryBlock**>(shrunk) : blocks;
    }
    if (lastUsedBlock == block) {
        lastUsedBlock = NULL;
    }
    if (lastFreedBlock == block) {
        lastFreedBlock = NULL;
    }
    --statistics.numBlocks;
    statistics.blockMemory -= block->Size();
    delete block;
    UpdateDerived();
}

void MemoryManager::Release() {
    if (blockCount > 0) {
        PrintReport(true);
        DebugPrint("MemoryManager: Releasing unreleased memory from detected memory leaks...\n");
    }
    for (Int32 i = 0; i < blockCount; ++i) {
        delete blocks[i];
    }
    free(blocks);
    blocks = NULL;
    blockCount = 0;
    lastUsedBlock = NULL;
    lastFreedBlock = NULL;
    statistics.numBlocks = 0;
    statistics.blockMemory = 0;
    UpdateDerived();
}

// ---------------------------------------------------------------- statistics

void MemoryManager::CountAllocation(const char* recordAddress, bool added) {
    const UInt32 size = LoadAllocationRecord(recordAddress).size;
    const UInt32 padding = AlignmentPadding(recordAddress);
    if (added) {
        ++statistics.numAllocations;
        statistics.allocatedBytes += size;
        statistics.alignmentOverhead += padding;
    } else {
        --statistics.numAllocations;
        statistics.allocatedBytes -= size;
        statistics.alignmentOverhead -= padding;
    }
    UpdateDerived();
}

void MemoryManager::UpdateDerived() {
    MemoryStatistics& s = statistics;
    s.blockOverhead = s.blockMemory - s.alignmentOverhead - s.allocatedBytes;
    s.managementOverhead = s.numAllocations * kAllocationRecordSize;
    s.averageAllocSize = Quotient(s.allocatedBytes, s.numAllocations);
    s.averageBlockSize = Quotient(s.blockMemory, s.numBlocks);
    s.averageBlockOverhead = Quotient(s.blockOverhead, s.numAllocations);
    s.averageAlignmentOverhead = Quotient(s.alignmentOverhead, s.numAllocations);
    RaiseTo(s.maxBlockMemory, s.blockMemory);
    RaiseTo(s.maxAllocatedBytes, s.allocatedBytes);
    RaiseTo(s.maxAllocations, s.numAllocations);
    RaiseTo(s.maxBlocks, s.numBlocks);
}

CategoryStatistics MemoryManager::StatisticsOf(UInt32 category) const {
    CategoryStatistics result = {0, 0, 0};
    for (Int32 i = 0; i < blockCount; ++i) {
        char* address = blocks[i]->First();
        while (address != NULL) {
            const AllocationRecord record = LoadAllocationRecord(address);
            if (record.category == category) {
                ++result.numAllocations;
                result.allocatedBytes += record.size;
            }
            address = record.next;
        }
    }
    result.averageAllocSize = Quotient(result.allocatedBytes, result.numAllocations);
    return result;
}

bool MemoryManager::FindAllocation(const void* data, AllocationRecord& record) const {
    MemoryBlock* block = NULL;
    const char* const address = FindRecord(data, block);
    if (address == NULL) {
        return false;
    }
    record = LoadAllocationRecord(address);
    return true;
}

// An address can lie in two blocks, as the end of one and in the other, but it is the data address
// of one record at most: looking into the recent blocks first gives the same answer.
char* MemoryManager::FindRecord(const void* data, MemoryBlock*& block) const {
    if (data == NULL) {
        return NULL;
    }
    for (Int32 i = -2; i < blockCount; ++i) {
        block = i == -2 ? lastUsedBlock : (i == -1 ? lastFreedBlock : blocks[i]);
        if (block != NULL && block->Contains(data)) {
            char* const address = block->Find(data);
            if (address != NULL) {
                return address;
            }
        }
    }
    return NULL;
}

// ---------------------------------------------------------------- the report

void MemoryManager::PrintReport(bool showLeaks) const {
    DebugPrint("%s", kEmptyLine);
    DebugPrint("%s", kDashes);
    DebugPrint("MEMORY MANAGER REPORT");
    DebugPrint("%s", kDashes);
    PrintTotals();
    PrintAverages();
    PrintMaxima();
    if (!showLeaks) {
        DebugPrint("%s", kEmptyLine);
    } else if (statistics.numAllocations == 0) {
        DebugPrint("No memory leaks have been detected...");
    } else {
        PrintLeaks();
    }
}

// Here and among the averages, a percentage deliberately tests the number of allocations, not
// its divisor:
// 0.00% says that nothing is allocated, and the division by 0 that remains is seen as such.
void MemoryManager::PrintTotals() const {
    const MemoryStatistics& s = statistics;
    PrintNumber("Num blocks............................", s.numBlocks);
    PrintNumber("Num allocations.......................", s.numAllocations);
    PrintMegabytes("Allocated bytes.......................", s.allocatedBytes);
    PrintMegabytes("Allocated block mem...................", s.blockMemory);
    PrintShare("Block overhead........................", s.blockOverhead,
               s.numAllocations != 0 ? Percentage(s.blockOverhead, s.blockMemory) : 0.0);
    PrintKilobytes("Alignment overhead....................", s.alignmentOverhead);
    PrintKilobytes("Allocation management overhead........", s.managementOverhead);
}

void MemoryManager::PrintAverages() const {
    const MemoryStatistics& s = statistics;
    PrintMegabytes("Average alloc size....................", s.averageAllocSize);
    PrintMegabytes("Average block size....................", s.averageBlockSize);
    PrintShare(
        "Average block overhead per alloc......", s.averageBlockOverhead,
        s.numAllocations != 0 ? Percentage(s.averageBlockOverhead, s.averageAllocSize) : 0.0);
    DebugPrint("Average alignment overhead per alloc.. = %d bytes",
               Bytes(s.averageAlignmentOverhead));
}

void MemoryManager::PrintMaxima() const {
    const MemoryStatistics& s = statistics;
    PrintMegabytes("Maximum allocated memory..............", s.maxAllocatedBytes);
    PrintMegabytes("Maximum allocated block memory........", s.maxBlockMemory);
    PrintNumber("Maximum number of allocations.........", s.maxAllocations);
    PrintNumber("Maximum number of memory blocks.......", s.maxBlocks);
}

void MemoryManager::PrintLeaks() const {
    DebugPrint("%s", kEmptyLine);
    DebugPrint(
        "*** THE FOLLOWING %d MEMORY LEAK(S) HAVE BEEN DETECTED (totally %d bytes / %d kb): ***",
        static_cast<int>(statistics.numAllocations), Bytes(statistics.allocatedBytes),
        Kilobytes(statistics.allocatedBytes));
    int number = 0;
    for (Int32 i = 0; i < blockCount; ++i) {
        const char* address = blocks[i]->First();
        while (address != NULL) {
            const AllocationRecord record = LoadAllocationRecord(address);
            PrintLeak(++number, record);
            address = record.next;
        }
    }
    DebugPrint("%s", kEmptyLine);
}

}  // namespace Plinth
