#include "core/memory_block.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

using Plinth::AllocationRecord;
using Plinth::LoadAllocationRecord;
using Plinth::MemoryBlock;

constexpr int kRecord = 48;

// Places without alignment, and gives the record's distance from the block's start; -1: refused.
std::ptrdiff_t PlaceAt(MemoryBlock& block, unsigned size) {
    const char* const record = block.Place(size, 1, 1, 1);
    return record != nullptr ? record - block.Start() : -1;
}

void RemoveAt(MemoryBlock& block, std::ptrdiff_t offset) {
    block.Remove(const_cast<char*>(block.Start()) + offset);
}

std::vector<std::ptrdiff_t> RecordOffsets(const MemoryBlock& block) {
    std::vector<std::ptrdiff_t> offsets;
    const char* previous = nullptr;
    for (const char* address = block.First(); address != nullptr;) {
        const AllocationRecord record = LoadAllocationRecord(address);
        EXPECT_EQ(record.previous, previous);
        offsets.push_back(address - block.Start());
        previous = address;
        address = record.next;
    }
    return offsets;
}

using Offsets = std::vector<std::ptrdiff_t>;

TEST(MemoryBlock, FirstRequestOf100BytesStandsBehindItsRecord) {
    MemoryBlock block(65536);
    ASSERT_EQ(reinterpret_cast<std::uintptr_t>(block.Start()) % 16, 0u);
    char* const address = block.Place(100, 2, 16, 7);
    ASSERT_EQ(address, block.Start());
    EXPECT_EQ(block.First(), address);
    const AllocationRecord record = LoadAllocationRecord(address);
    EXPECT_EQ(record.data, block.Start() + 48);
    EXPECT_EQ(Plinth::AlignmentPadding(address), 0u);
    EXPECT_EQ(record.size, 100u);
    EXPECT_EQ(record.category, 2u);
    EXPECT_EQ(record.alignment, 16u);
    EXPECT_EQ(record.blockId, 7u);
    EXPECT_EQ(record.previous, nullptr);
    EXPECT_EQ(record.next, nullptr);
}

TEST(MemoryBlock, DataIsRoundedUpToItsAlignment) {
    MemoryBlock block(4096);
    block.Place(5, 1, 16, 1);
    char* const address = block.Place(10, 1, 64, 1);
    EXPECT_EQ(address, block.Start() + kRecord + 5);
    const AllocationRecord record = LoadAllocationRecord(address);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(record.data) % 64, 0u);
    EXPECT_GE(record.data - address, kRecord);
    EXPECT_LT(record.data - address, kRecord + 64);
    EXPECT_EQ(Plinth::AlignmentPadding(address), record.data - address - kRecord);
}

TEST(MemoryBlock, AnyAlignmentCounts) {
    MemoryBlock block(4096);
    EXPECT_NE(block.Place(5, 1, 0, 1), nullptr);
    char* const address = block.Place(5, 1, 10, 1);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(LoadAllocationRecord(address).data) % 10, 0u);
}

TEST(MemoryBlock, AnEmptyBlockHoldsExactlyItsSize) {
    MemoryBlock block(kRecord + 100);
    EXPECT_EQ(PlaceAt(block, 101), -1);
    EXPECT_EQ(PlaceAt(block, 100), 0);
    EXPECT_EQ(PlaceAt(block, 0), -1);
}

TEST(MemoryBlock, ABlockSmallerThanARecordHoldsNothing) {
    MemoryBlock block(kRecord - 1);
    EXPECT_EQ(PlaceAt(block, 0), -1);
    MemoryBlock none(0);
    EXPECT_EQ(PlaceAt(none, 0), -1);
}

TEST(MemoryBlock, RequestsFollowEachOther) {
    MemoryBlock block(1000);
    EXPECT_EQ(PlaceAt(block, 10), 0);
    EXPECT_EQ(PlaceAt(block, 20), 58);
    EXPECT_EQ(PlaceAt(block, 30), 126);
    EXPECT_EQ(RecordOffsets(block), (Offsets{0, 58, 126}));
}

// Two gaps: the first, of 73 bytes, needs 15 bytes of padding and then fits exactly; the second, of
// 63, needs none and is smaller.
TEST(MemoryBlock, AnExactFitEndsTheSearch) {
    MemoryBlock block(1000);
    for (unsigned size : {1, 25, 6, 15, 1}) {
        PlaceAt(block, size);
    }
    ASSERT_EQ(RecordOffsets(block), (Offsets{0, 49, 122, 176, 239}));
    RemoveAt(block, 49);
    RemoveAt(block, 176);
    EXPECT_EQ(block.Place(9, 1, 16, 1), block.Start() + 176);
    RemoveAt(block, 176);
    EXPECT_EQ(block.Place(10, 1, 16, 1), block.Start() + 49);
}

// Five neighbours of data sizes 100, 80, 100, 60, 100: records at 0, 148, 276, 424, 532; 680 used.
class Gaps : public testing::Test {
  protected:
    Gaps() : block(900) {
        for (unsigned size : {100, 80, 100, 60, 100}) {
            PlaceAt(block, size);
        }
        EXPECT_EQ(RecordOffsets(block), (Offsets{0, 148, 276, 424, 532}));
    }

    MemoryBlock block;
};

TEST_F(Gaps, TheSmallestSufficientGapWins) {
    RemoveAt(block, 148);  // a gap of 128
    RemoveAt(block, 424);  // a gap of 108
    EXPECT_EQ(PlaceAt(block, 50), 424);
    EXPECT_EQ(RecordOffsets(block), (Offsets{0, 276, 424, 532}));
    EXPECT_EQ(PlaceAt(block, 61), 148);
    EXPECT_EQ(RecordOffsets(block), (Offsets{0, 148, 276, 424, 532}));
}

TEST_F(Gaps, TheGapInFrontOfTheFirstRecordCounts) {
    RemoveAt(block, 0);  // a gap of 148
    EXPECT_EQ(block.First(), block.Start() + 148);
    EXPECT_EQ(PlaceAt(block, 90), 0);
    EXPECT_EQ(RecordOffsets(block), (Offsets{0, 148, 276, 424, 532}));
}

TEST_F(Gaps, TheGapBehindTheLastRecordCounts) {
    EXPECT_EQ(PlaceAt(block, 172), 680);  // fills the block
    EXPECT_EQ(PlaceAt(block, 0), -1);
    RemoveAt(block, 532);
    EXPECT_EQ(PlaceAt(block, 100), 532);
}

TEST_F(Gaps, TheFirstOfEqualGapsWins) {
    RemoveAt(block, 276);
    RemoveAt(block, 0);
    EXPECT_EQ(PlaceAt(block, 40), 0);
    EXPECT_EQ(PlaceAt(block, 40), 276);
}

TEST_F(Gaps, AnExactFitIsTaken) {
    RemoveAt(block, 424);
    EXPECT_EQ(PlaceAt(block, 60), 424);
    EXPECT_EQ(RecordOffsets(block), (Offsets{0, 148, 276, 424, 532}));
}

TEST_F(Gaps, AGapThatHoldsTheDataButNotTheRecordIsPassedOver) {
    RemoveAt(block, 424);  // a gap of 108
    EXPECT_EQ(PlaceAt(block, 61), 680);
    EXPECT_EQ(PlaceAt(block, 108), -1);
}

// The gap of 108 bytes at 424 would have its data at 472, and the one of 220 at 680 at 728: both
// are 8 bytes short of a multiple of 16, as the block itself starts at one.
TEST_F(Gaps, AlignmentPaddingMustFit) {
    ASSERT_EQ(reinterpret_cast<std::uintptr_t>(block.Start()) % 16, 0u);
    RemoveAt(block, 424);
    EXPECT_EQ(block.Place(165, 1, 16, 1), nullptr);
    EXPECT_EQ(block.Place(53, 1, 16, 1), block.Start() + 680);
    RemoveAt(block, 680);
    char* const record = block.Place(52, 1, 16, 1);
    ASSERT_EQ(record, block.Start() + 424);
    EXPECT_EQ(Plinth::AlignmentPadding(record), 8u);
    EXPECT_EQ(block.Place(164, 1, 16, 1), block.Start() + 680);
}

TEST_F(Gaps, NeighboursOfARemovedRecordAreLinked) {
    RemoveAt(block, 276);
    EXPECT_EQ(RecordOffsets(block), (Offsets{0, 148, 424, 532}));
    RemoveAt(block, 532);
    RemoveAt(block, 0);
    EXPECT_EQ(RecordOffsets(block), (Offsets{148, 424}));
    RemoveAt(block, 148);
    RemoveAt(block, 424);
    EXPECT_EQ(block.First(), nullptr);
    EXPECT_EQ(PlaceAt(block, 900 - kRecord), 0);
}

TEST_F(Gaps, FindsARecordByItsDataAddress) {
    EXPECT_EQ(block.Find(block.Start() + 148 + kRecord), block.Start() + 148);
    EXPECT_EQ(block.Find(block.Start() + 148), nullptr);
    EXPECT_EQ(block.Find(nullptr), nullptr);
}

TEST(MemoryBlock, ContainsItsRangeAndTheAddressBehindIt) {
    const MemoryBlock block(100);
    EXPECT_TRUE(block.Contains(block.Start()));
    EXPECT_TRUE(block.Contains(block.Start() + 99));
    EXPECT_TRUE(block.Contains(block.Start() + 100));
    EXPECT_FALSE(block.Contains(
        reinterpret_cast<const char*>(reinterpret_cast<std::uintptr_t>(block.Start()) + 101)));
    EXPECT_FALSE(block.Contains(
        reinterpret_cast<const char*>(reinterpret_cast<std::uintptr_t>(block.Start()) - 1)));
}

}  // namespace
