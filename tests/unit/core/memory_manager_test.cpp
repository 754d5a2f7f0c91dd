#include "core/memory_manager.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "core/array.h"
#include "core/hash_table.h"
#include "core/log.h"
#include "core/string.h"
#include "tests/support/debug_output.h"
#include "wrapped_calls.h"

namespace {

using Plinth::AllocationRecord;
using Plinth::MemoryManager;
using Plinth::MemoryStatistics;
using support::DebugOutput;

// ---------------------------------------------------------------- the C heap

TEST(MemoryManagerHeap, ReallocatesAndFrees) {
    MemoryManager& manager = Plinth::GetMemoryManager();
    char* memory = static_cast<char*>(manager.Reallocate(nullptr, 10, 1, 16, 1));
    ASSERT_NE(memory, nullptr);
    std::memcpy(memory, "123456789", 10);
    memory = static_cast<char*>(manager.Reallocate(memory, 100000, 2, 16, 2));
    ASSERT_NE(memory, nullptr);
    EXPECT_STREQ(memory, "123456789");
    memory = static_cast<char*>(manager.Reallocate(memory, 4, 1, 16, 1));
    ASSERT_NE(memory, nullptr);
    EXPECT_EQ(std::string(memory, 4), "1234");
    manager.Free(memory);
    manager.Free(nullptr);
}

TEST(MemoryManagerHeap, IsNotCounted) {
    MemoryManager manager;
    void* const memory = manager.Reallocate(nullptr, 10, 1, 16, 1);
    EXPECT_EQ(manager.Statistics().numAllocations, 0u);
    EXPECT_EQ(manager.Statistics().allocatedBytes, 0u);
    manager.Free(memory);
}

// ---------------------------------------------------------------- what the library asks for

// One request at least was made, and each for the category, which is also the block's identifier.
bool AllFor(unsigned category, const std::vector<StorageRequest>& requests) {
    const auto expected = static_cast<std::ptrdiff_t>(requests.size());
    return expected > 0 && std::count(requests.begin(), requests.end(),
                                      StorageRequest{category, 16, category}) == expected;
}

TEST(MemoryManagerRequests, TextIsCategory1) {
    StorageRequests requests;
    Plinth::String text("abc");
    EXPECT_TRUE(AllFor(1, requests.Take()));
    text.Resize(10);
    EXPECT_TRUE(AllFor(1, requests.Take()));
    text.Append("abc");
    EXPECT_TRUE(AllFor(1, requests.Take()));
    text.Assign("abcdef");
    EXPECT_TRUE(AllFor(1, requests.Take()));
    text.Format("%d", 5);
    EXPECT_TRUE(AllFor(1, requests.Take()));
    text.FormatAdd("%3000d", 5);
    EXPECT_TRUE(AllFor(1, requests.Take()));
    const Plinth::String sum = text + text;
    EXPECT_TRUE(AllFor(1, requests.Take()));
}

TEST(MemoryManagerRequests, ArraysAreCategory2) {
    StorageRequests requests;
    Plinth::Array<double> array;
    array.Add(1.0);
    EXPECT_TRUE(AllFor(2, requests.Take()));
    array.Resize(10);
    EXPECT_TRUE(AllFor(2, requests.Take()));
    array.Reserve(20);
    EXPECT_TRUE(AllFor(2, requests.Take()));
    Plinth::KeyIndex index;
    index.Set(Plinth::AddressKey(&array), 1);
    EXPECT_TRUE(AllFor(2, requests.Take()));
}

class IdleSink : public Plinth::LogCallback {
  public:
    void Log(const Plinth::String&) override {}
};

TEST(MemoryManagerRequests, TheListOfSinksIsCategory2) {
    Plinth::LogManager manager;
    StorageRequests requests;
    manager.AddLogCallback(new IdleSink);
    EXPECT_TRUE(AllFor(2, requests.Take()));
}

TEST(MemoryManagerInstance, IsDestroyedAfterAllOthers) {
    EXPECT_EQ(&Plinth::GetMemoryManager(), &Plinth::InstanceManager<MemoryManager>::Get());
    EXPECT_EQ(Plinth::InstanceManager<MemoryManager>::Holder().Priority(), 10000);
}

// ---------------------------------------------------------------- blocks and statistics

TEST(MemoryManagerBlocks, FirstAllocationMakesADefaultBlock) {
    MemoryManager manager;
    void* const data = manager.AllocateInBlocks(100, 2, 16, 2);
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(data) % 16, 0u);
    const MemoryStatistics& statistics = manager.Statistics();
    EXPECT_EQ(statistics.numAllocations, 1u);
    EXPECT_EQ(statistics.numBlocks, 1u);
    EXPECT_EQ(statistics.blockMemory, 65536u);
    EXPECT_EQ(statistics.allocatedBytes, 100u);
    EXPECT_EQ(statistics.alignmentOverhead, 0u);
    EXPECT_EQ(statistics.blockOverhead, 65436u);
    EXPECT_EQ(statistics.managementOverhead, 48u);
    EXPECT_EQ(statistics.averageAllocSize, 100u);
    EXPECT_EQ(statistics.averageBlockSize, 65536u);
    EXPECT_EQ(statistics.averageBlockOverhead, 65436u);
    EXPECT_EQ(statistics.averageAlignmentOverhead, 0u);
    manager.FreeInBlocks(data);
}

TEST(MemoryManagerBlocks, ALargeRequestGetsItsOwnBlock) {
    MemoryManager manager;
    void* const small = manager.AllocateInBlocks(100, 2, 1, 2);
    void* const large = manager.AllocateInBlocks(100000, 2, 1, 2);
    ASSERT_NE(large, nullptr);
    std::memset(large, 1, 100000);
    EXPECT_EQ(manager.Statistics().numBlocks, 2u);
    EXPECT_EQ(manager.Statistics().blockMemory, 65536u + 100000 + 48);
    manager.FreeInBlocks(large);
    manager.FreeInBlocks(small);
}

TEST(MemoryManagerBlocks, BlocksAreAskedInOrder) {
    MemoryManager manager;
    void* const first = manager.AllocateInBlocks(60000, 2, 1, 2);
    void* const second = manager.AllocateInBlocks(60000, 2, 1, 2);
    ASSERT_EQ(manager.Statistics().numBlocks, 2u);
    char* const third = static_cast<char*>(manager.AllocateInBlocks(100, 2, 1, 2));
    EXPECT_EQ(third, static_cast<char*>(first) + 60000 + 48);
    EXPECT_EQ(manager.Statistics().numBlocks, 2u);
    for (void* data : {first, second, static_cast<void*>(third)}) {
        manager.FreeInBlocks(data);
    }
}

TEST(MemoryManagerBlocks, AnEmptiedBlockIsRemoved) {
    MemoryManager manager;
    void* const first = manager.AllocateInBlocks(60000, 2, 1, 2);
    void* const second = manager.AllocateInBlocks(60000, 2, 1, 2);
    void* const third = manager.AllocateInBlocks(100, 2, 1, 2);
    manager.FreeInBlocks(first);
    EXPECT_EQ(manager.Statistics().numBlocks, 2u);
    manager.FreeInBlocks(third);
    EXPECT_EQ(manager.Statistics().numBlocks, 1u);
    EXPECT_EQ(manager.Statistics().blockMemory, 65536u);
    manager.FreeInBlocks(second);
    const MemoryStatistics& statistics = manager.Statistics();
    EXPECT_EQ(statistics.numBlocks, 0u);
    EXPECT_EQ(statistics.blockMemory, 0u);
    EXPECT_EQ(statistics.numAllocations, 0u);
    EXPECT_EQ(statistics.allocatedBytes, 0u);
    EXPECT_EQ(statistics.blockOverhead, 0u);
    EXPECT_EQ(statistics.averageBlockSize, 0u);
    EXPECT_EQ(statistics.maxBlockMemory, 131072u);
    EXPECT_EQ(statistics.maxBlocks, 2u);
    EXPECT_EQ(statistics.maxAllocations, 3u);
    EXPECT_EQ(statistics.maxAllocatedBytes, 120100u);
}

TEST(MemoryManagerBlocks, AddedBlockCounts) {
    MemoryManager manager;
    manager.AddBlock(1000);
    EXPECT_EQ(manager.Statistics().numBlocks, 1u);
    EXPECT_EQ(manager.Statistics().blockMemory, 1000u);
    EXPECT_EQ(manager.Statistics().maxBlockMemory, 1000u);
    EXPECT_EQ(manager.Statistics().blockOverhead, 0u);
    EXPECT_EQ(manager.Statistics().averageBlockSize, 0u);
    EXPECT_EQ(manager.Statistics().maxBlocks, 0u);
    void* const data = manager.AllocateInBlocks(952, 2, 1, 2);
    EXPECT_EQ(manager.Statistics().numBlocks, 1u);
    EXPECT_EQ(manager.Statistics().blockOverhead, 48u);
    EXPECT_EQ(manager.Statistics().averageBlockSize, 1000u);
    EXPECT_EQ(manager.Statistics().maxBlocks, 1u);
    manager.FreeInBlocks(data);
    EXPECT_EQ(manager.Statistics().numBlocks, 0u);
}

TEST(MemoryManagerBlocks, StrangeAddressesAndSizes) {
    MemoryManager manager;
    int object = 0;
    manager.FreeInBlocks(nullptr);
    manager.FreeInBlocks(&object);
    char* const data = static_cast<char*>(manager.AllocateInBlocks(100, 2, 16, 2));
    manager.FreeInBlocks(data + 1);
    EXPECT_EQ(manager.Statistics().numAllocations, 1u);
    EXPECT_THROW(manager.AllocateInBlocks(0xffffffffu, 2, 16, 2), std::bad_alloc);
    EXPECT_THROW(manager.AllocateInBlocks(10, 2, 0xffffffffu, 2), std::bad_alloc);
    EXPECT_EQ(manager.Statistics().numAllocations, 1u);
    manager.FreeInBlocks(data);
    manager.FreeInBlocks(data);
    EXPECT_EQ(manager.Statistics().numAllocations, 0u);
}

TEST(MemoryManagerBlocks, PaddingIsCounted) {
    MemoryManager manager;
    void* const first = manager.AllocateInBlocks(5, 1, 16, 1);
    void* const second = manager.AllocateInBlocks(7, 1, 16, 1);
    // The second record stands at 53; behind it, the data moves from 101 to 112.
    EXPECT_EQ(static_cast<char*>(second) - static_cast<char*>(first), 64);
    EXPECT_EQ(manager.Statistics().alignmentOverhead, 11u);
    EXPECT_EQ(manager.Statistics().averageAlignmentOverhead, 5u);
    EXPECT_EQ(manager.Statistics().blockOverhead, 65536u - 11 - 12);
    manager.FreeInBlocks(second);
    EXPECT_EQ(manager.Statistics().alignmentOverhead, 0u);
    manager.FreeInBlocks(first);
}

TEST(MemoryManagerBlocks, StatisticsByCategory) {
    MemoryManager manager;
    std::vector<void*> all;
    for (unsigned size : {10, 20, 31}) {
        all.push_back(manager.AllocateInBlocks(size, 1, 16, 1));
    }
    all.push_back(manager.AllocateInBlocks(70000, 2, 16, 2));
    all.push_back(manager.AllocateInBlocks(70001, 1, 16, 1));
    const Plinth::CategoryStatistics text = manager.StatisticsOf(1);
    EXPECT_EQ(text.numAllocations, 4u);
    EXPECT_EQ(text.allocatedBytes, 70062u);
    EXPECT_EQ(text.averageAllocSize, 17515u);
    const Plinth::CategoryStatistics arrays = manager.StatisticsOf(2);
    EXPECT_EQ(arrays.numAllocations, 1u);
    EXPECT_EQ(arrays.allocatedBytes, 70000u);
    const Plinth::CategoryStatistics none = manager.StatisticsOf(3);
    EXPECT_EQ(none.numAllocations, 0u);
    EXPECT_EQ(none.allocatedBytes, 0u);
    EXPECT_EQ(none.averageAllocSize, 0u);
    for (void* data : all) {
        manager.FreeInBlocks(data);
    }
}

TEST(MemoryManagerBlocks, LooksUpTheRecordOfADataAddress) {
    MemoryManager manager;
    void* const first = manager.AllocateInBlocks(70000, 1, 16, 5);
    void* const second = manager.AllocateInBlocks(20, 2, 32, 6);
    AllocationRecord record = {};
    ASSERT_TRUE(manager.FindAllocation(second, record));
    EXPECT_EQ(record.data, second);
    EXPECT_EQ(record.size, 20u);
    EXPECT_EQ(record.category, 2u);
    EXPECT_EQ(record.alignment, 32u);
    EXPECT_EQ(record.blockId, 6u);
    ASSERT_TRUE(manager.FindAllocation(first, record));
    EXPECT_EQ(record.size, 70000u);
    EXPECT_FALSE(manager.FindAllocation(nullptr, record));
    EXPECT_FALSE(manager.FindAllocation(static_cast<char*>(second) + 1, record));
    EXPECT_FALSE(manager.FindAllocation(&manager, record));
    EXPECT_EQ(record.size, 70000u);
    manager.FreeInBlocks(first);
    manager.FreeInBlocks(second);
}

// Contents survive, alignment holds and the counters add up, whatever the order.
TEST(MemoryManagerBlocks, RandomUseKeepsEveryAllocationWhole) {
    struct Allocation {
        unsigned char* data;
        unsigned size;
        unsigned char fill;
    };
    std::mt19937 random(5);
    MemoryManager manager;
    std::vector<Allocation> live;
    for (int step = 0; step < 4000; ++step) {
        if (live.empty() || random() % 5 < 3) {
            const unsigned size = random() % 2000;
            const unsigned alignment = 1u << random() % 8;
            auto* data =
                static_cast<unsigned char*>(manager.AllocateInBlocks(size, 1, alignment, 1));
            ASSERT_NE(data, nullptr);
            ASSERT_EQ(reinterpret_cast<std::uintptr_t>(data) % alignment, 0u);
            const auto fill = static_cast<unsigned char>(random());
            std::memset(data, fill, size);
            live.push_back({data, size, fill});
        } else {
            const size_t chosen = random() % live.size();
            const Allocation allocation = live[chosen];
            for (unsigned i = 0; i < allocation.size; ++i) {
                ASSERT_EQ(allocation.data[i], allocation.fill);
            }
            manager.FreeInBlocks(allocation.data);
            live.erase(live.begin() + chosen);
        }
        unsigned bytes = 0;
        for (const Allocation& allocation : live) {
            bytes += allocation.size;
        }
        const MemoryStatistics& statistics = manager.Statistics();
        ASSERT_EQ(statistics.numAllocations, live.size());
        ASSERT_EQ(statistics.allocatedBytes, bytes);
        ASSERT_EQ(statistics.blockOverhead,
                  statistics.blockMemory - statistics.alignmentOverhead - bytes);
        ASSERT_EQ(manager.StatisticsOf(1).allocatedBytes, bytes);
    }
    for (const Allocation& allocation : live) {
        manager.FreeInBlocks(allocation.data);
    }
    EXPECT_EQ(manager.Statistics().numBlocks, 0u);
    EXPECT_EQ(manager.Statistics().alignmentOverhead, 0u);
}

// ---------------------------------------------------------------- the report

const char kDashes[] = "------------------------------------------------------------------\n";

std::string LowAddress(const void* data) {
    char text[16];
    std::snprintf(text, sizeof(text), "%x",
                  static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(data)));
    return text;
}

std::string EmptyReport() {
    return std::string("\n\n") + kDashes + "MEMORY MANAGER REPORT\n" + kDashes +
           "Num blocks............................ = 0\n"
           "Num allocations....................... = 0\n"
           "Allocated bytes....................... = 0 bytes (0 kb / 0.000 mb)\n"
           "Allocated block mem................... = 0 bytes (0 kb / 0.000 mb)\n"
           "Block overhead........................ = 0 bytes (0 kb / 0.000 mb / 0.00%)\n"
           "Alignment overhead.................... = 0 bytes (0 kb)\n"
           "Allocation management overhead........ = 0 bytes (0 kb)\n"
           "Average alloc size.................... = 0 bytes (0 kb / 0.000 mb)\n"
           "Average block size.................... = 0 bytes (0 kb / 0.000 mb)\n"
           "Average block overhead per alloc...... = 0 bytes (0 kb / 0.000 mb / 0.00%)\n"
           "Average alignment overhead per alloc.. = 0 bytes\n"
           "Maximum allocated memory.............. = 0 bytes (0 kb / 0.000 mb)\n"
           "Maximum allocated block memory........ = 0 bytes (0 kb / 0.000 mb)\n"
           "Maximum number of allocations......... = 0\n"
           "Maximum number of memory blocks....... = 0\n";
}

TEST(MemoryManagerReport, WithoutAllocations) {
    const MemoryManager manager;
    {
        const DebugOutput output;
        manager.PrintReport(true);
        EXPECT_EQ(output.Text(), EmptyReport() + "No memory leaks have been detected...\n");
        EXPECT_EQ(output.Messages().size(), 20u);
    }
    const DebugOutput output;
    manager.PrintReport(false);
    EXPECT_EQ(output.Text(), EmptyReport() + "\n\n");
}

// The report's line that begins with a label, without it.
std::string LineOf(const MemoryManager& manager, const std::string& label) {
    const DebugOutput output;
    manager.PrintReport(false);
    for (const std::string& line : output.Messages()) {
        if (line.compare(0, label.size(), label) == 0) {
            return line.substr(label.size());
        }
    }
    ADD_FAILURE() << "no line " << label;
    return std::string();
}

const char kBlockMemory[] = "Allocated block mem................... = ";
const char kBlockOverhead[] = "Block overhead........................ = ";
const char kAverageOverhead[] = "Average block overhead per alloc...... = ";

// Both percentages test the number of allocations, not the divisor, by which the last block
// overhead here would be 100.00%.
TEST(MemoryManagerReport, BlocksWithoutAllocationsHaveNoPercentage) {
    MemoryManager manager;
    manager.AddBlock(1000);
    EXPECT_EQ(LineOf(manager, kBlockMemory), "1000 bytes (0 kb / 0.001 mb)\n");
    EXPECT_EQ(LineOf(manager, kBlockOverhead), "0 bytes (0 kb / 0.000 mb / 0.00%)\n");
    manager.AddBlock(3000);
    manager.FreeInBlocks(manager.AllocateInBlocks(10, 1, 1, 1));
    EXPECT_EQ(LineOf(manager, kBlockMemory), "3000 bytes (2 kb / 0.003 mb)\n");
    EXPECT_EQ(LineOf(manager, kBlockOverhead), "3000 bytes (2 kb / 0.003 mb / 0.00%)\n");
    EXPECT_EQ(LineOf(manager, kAverageOverhead), "0 bytes (0 kb / 0.000 mb / 0.00%)\n");
    manager.FreeInBlocks(manager.AllocateInBlocks(10, 1, 1, 1));
}

// That a line begins with the text and goes on with the outcome of a division by 0, whose spelling
// is the C library's.
testing::AssertionResult DividesByZero(const std::string& line, const std::string& begin) {
    char infinity[64];
    std::snprintf(infinity, sizeof(infinity), "%.2f%%)\n", std::numeric_limits<double>::infinity());
    return line == begin + infinity ? testing::AssertionSuccess()
                                    : testing::AssertionFailure() << line;
}

TEST(MemoryManagerReport, AnAllocationOf0BytesIsDividedBy) {
    MemoryManager manager;
    manager.AddBlock(1 << 20);
    void* const data = manager.AllocateInBlocks(0, 1, 1, 1);
    const std::string begin = "1048576 bytes (1024 kb / 1.000 mb / ";
    EXPECT_EQ(LineOf(manager, kBlockOverhead), begin + "100.00%)\n");
    EXPECT_TRUE(DividesByZero(LineOf(manager, kAverageOverhead), begin));
    manager.FreeInBlocks(data);
}

// The number of allocations outlives the blocks.
TEST(MemoryManagerReport, AfterReleaseTheBlockMemoryIsDividedBy) {
    MemoryManager manager;
    {
        const DebugOutput output;
        manager.AllocateInBlocks(10, 1, 1, 1);
        manager.Release();
    }
    ASSERT_EQ(manager.Statistics().numAllocations, 1u);
    EXPECT_EQ(LineOf(manager, kBlockMemory), "0 bytes (0 kb / 0.000 mb)\n");
    EXPECT_TRUE(
        DividesByZero(LineOf(manager, kBlockOverhead), "-10 bytes (4194303 kb / 4096.000 mb / "));
    EXPECT_EQ(LineOf(manager, kAverageOverhead),
              "-10 bytes (4194303 kb / 4096.000 mb / 42949672960.00%)\n");
}

// A block of 3 MiB with 1,000,000 bytes of category 2, and 4 bytes of category 1 behind them.
class ReportWithLeaks : public testing::Test {
  protected:
    ReportWithLeaks() {
        manager.AddBlock(3 * 1024 * 1024);
        arrays = manager.AllocateInBlocks(1000000, 2, 16, 2);
        text = manager.AllocateInBlocks(4, 1, 16, 1);
        std::memset(arrays, 'z', 1000000);
        std::memcpy(text, "abc\xc8", 4);
    }

    std::string Leaks() const {
        return "\n\n*** THE FOLLOWING 2 MEMORY LEAK(S) HAVE BEEN DETECTED (totally 1000004 bytes / "
               "976 kb): ***\n[MEMLEAK #1] 1000000 bytes at memory location 0x" +
               LowAddress(arrays) + " with category 2 [data='" + std::string(127, 'z') +
               "']\n[MEMLEAK #2] 4 bytes at memory location 0x" + LowAddress(text) +
               " with category 1 [data='abc.']\n\n\n";
    }

    MemoryManager manager;
    void* arrays;
    void* text;
};

const char kReportWithLeaks[] =
    "Num blocks............................ = 1\n"
    "Num allocations....................... = 2\n"
    "Allocated bytes....................... = 1000004 bytes (976 kb / 0.954 mb)\n"
    "Allocated block mem................... = 3145728 bytes (3072 kb / 3.000 mb)\n"
    "Block overhead........................ = 2145724 bytes (2095 kb / 2.046 mb / 68.21%)\n"
    "Alignment overhead.................... = 0 bytes (0 kb)\n"
    "Allocation management overhead........ = 96 bytes (0 kb)\n"
    "Average alloc size.................... = 500002 bytes (488 kb / 0.477 mb)\n"
    "Average block size.................... = 3145728 bytes (3072 kb / 3.000 mb)\n"
    "Average block overhead per alloc...... = 1072862 bytes (1047 kb / 1.023 mb / 214.57%)\n"
    "Average alignment overhead per alloc.. = 0 bytes\n"
    "Maximum allocated memory.............. = 1000004 bytes (976 kb / 0.954 mb)\n"
    "Maximum allocated block memory........ = 3145728 bytes (3072 kb / 3.000 mb)\n"
    "Maximum number of allocations......... = 2\n"
    "Maximum number of memory blocks....... = 1\n";

std::string Head() {
    return std::string("\n\n") + kDashes + "MEMORY MANAGER REPORT\n" + kDashes;
}

TEST_F(ReportWithLeaks, ListsThem) {
    const DebugOutput output;
    manager.PrintReport(true);
    EXPECT_EQ(output.Text(), Head() + kReportWithLeaks + Leaks());
    manager.FreeInBlocks(arrays);
    manager.FreeInBlocks(text);
}

TEST_F(ReportWithLeaks, OrLeavesThemOut) {
    const DebugOutput output;
    manager.PrintReport(false);
    EXPECT_EQ(output.Text(), Head() + kReportWithLeaks + "\n\n");
    manager.FreeInBlocks(arrays);
    manager.FreeInBlocks(text);
}

TEST_F(ReportWithLeaks, ReleasePrintsThemAndFreesTheBlocks) {
    const DebugOutput output;
    manager.Release();
    EXPECT_EQ(output.Text(),
              Head() + kReportWithLeaks + Leaks() +
                  "MemoryManager: Releasing unreleased memory from detected memory leaks...\n\n");
    const MemoryStatistics& statistics = manager.Statistics();
    EXPECT_EQ(statistics.numBlocks, 0u);
    EXPECT_EQ(statistics.blockMemory, 0u);
    EXPECT_EQ(statistics.numAllocations, 2u);
    EXPECT_EQ(statistics.allocatedBytes, 1000004u);
    EXPECT_EQ(statistics.averageBlockSize, 0u);
    EXPECT_EQ(statistics.averageAllocSize, 500002u);
    EXPECT_EQ(statistics.blockOverhead, 0u - 1000004u);
    AllocationRecord record;
    EXPECT_FALSE(manager.FindAllocation(text, record));
}

TEST(MemoryManagerRelease, WithoutBlocksPrintsNothing) {
    MemoryManager manager;
    const DebugOutput output;
    manager.Release();
    EXPECT_EQ(output.Text(), "");
    const MemoryStatistics zero = {};
    EXPECT_EQ(std::memcmp(&manager.Statistics(), &zero, sizeof(zero)), 0);
}

TEST(MemoryManagerRelease, AnEmptyBlockIsEnoughForAReport) {
    MemoryManager manager;
    manager.AddBlock(100);
    const DebugOutput output;
    manager.Release();
    EXPECT_NE(output.Text().find("No memory leaks have been detected...\nMemoryManager: Releasing "
                                 "unreleased memory from detected memory leaks...\n\n"),
              std::string::npos);
}

TEST(MemoryManagerRelease, HappensOnDestruction) {
    auto manager = std::make_unique<MemoryManager>();
    manager->AllocateInBlocks(10, 1, 16, 1);
    const DebugOutput output;
    manager.reset();
    EXPECT_NE(output.Text().find("THE FOLLOWING 1 MEMORY LEAK(S)"), std::string::npos);
}

TEST(MemoryManagerRelease, LeavesAUsableManager) {
    MemoryManager manager;
    {
        const DebugOutput output;
        manager.AllocateInBlocks(10, 1, 16, 1);
        manager.Release();
    }
    void* const data = manager.AllocateInBlocks(20, 1, 16, 1);
    EXPECT_NE(data, nullptr);
    EXPECT_EQ(manager.Statistics().numBlocks, 1u);
    manager.FreeInBlocks(data);
}

// The leak listing's copy of an allocation's data.
std::string PreviewOf(const std::string& data) {
    MemoryManager manager;
    void* const memory = manager.AllocateInBlocks(data.size(), 1, 16, 1);
    std::memcpy(memory, data.data(), data.size());
    std::string text;
    {
        const DebugOutput output;
        manager.PrintReport(true);
        text = output.Text();
    }
    manager.FreeInBlocks(memory);
    const std::string marker = "[data='";
    const size_t begin = text.find(marker) + marker.size();
    return text.substr(begin, text.rfind("']") - begin);
}

TEST(MemoryManagerPreview, ControlAndHighBytesAreDots) {
    EXPECT_EQ(PreviewOf("abc\xc8"), "abc.");
    EXPECT_EQ(PreviewOf(std::string("a\0b\x0f\x10\x1f \x7f\x80\xff", 10)), "a.b.\x10\x1f \x7f..");
    EXPECT_EQ(PreviewOf(""), "");
}

TEST(MemoryManagerPreview, EndsAt127Bytes) {
    EXPECT_EQ(PreviewOf(std::string(126, 'a')), std::string(126, 'a'));
    EXPECT_EQ(PreviewOf(std::string(127, 'a')), std::string(127, 'a'));
    EXPECT_EQ(PreviewOf(std::string(128, 'a')), std::string(127, 'a'));
}

}  // namespace
