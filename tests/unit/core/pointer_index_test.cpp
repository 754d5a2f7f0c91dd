#include "core/pointer_index.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <random>
#include <unordered_map>
#include <vector>

#include "core/pointer_list.h"
#include "wrapped_calls.h"

namespace {

using Plinth::PointerIndex;

// -1 when the address has no number.
int NumberOf(const PointerIndex& index, const void* address) {
    Plinth::Int32 value = -1;
    const bool found = index.Find(address, value);
    EXPECT_EQ(found, value != -1);
    return value;
}

TEST(PointerIndex, FindsWhatWasSet) {
    int objects[3] = {};
    PointerIndex index;
    EXPECT_EQ(NumberOf(index, &objects[0]), -1);
    index.Set(&objects[0], 7);
    index.Set(&objects[1], 0);
    EXPECT_EQ(NumberOf(index, &objects[0]), 7);
    EXPECT_EQ(NumberOf(index, &objects[1]), 0);
    EXPECT_EQ(NumberOf(index, &objects[2]), -1);
    EXPECT_EQ(index.Count(), 2);
}

TEST(PointerIndex, SettingAgainReplaces) {
    int object = 0;
    PointerIndex index;
    index.Set(&object, 1);
    index.Set(&object, 2);
    EXPECT_EQ(NumberOf(index, &object), 2);
    EXPECT_EQ(index.Count(), 1);
}

TEST(PointerIndex, NullIsAnAddressLikeAnyOther) {
    PointerIndex index;
    EXPECT_EQ(NumberOf(index, nullptr), -1);
    index.Set(nullptr, 5);
    EXPECT_EQ(NumberOf(index, nullptr), 5);
}

TEST(PointerIndex, ClearForgetsAll) {
    int object = 0;
    PointerIndex index;
    index.Set(&object, 1);
    index.Clear();
    EXPECT_EQ(NumberOf(index, &object), -1);
    EXPECT_EQ(index.Count(), 0);
    index.Clear();
    index.Set(&object, 3);
    EXPECT_EQ(NumberOf(index, &object), 3);
}

TEST(PointerIndex, ReservedRoomNeedsNoMore) {
    std::vector<int> objects(1000);
    PointerIndex index;
    index.Reserve(1000);
    index.Reserve(10);
    index.Reserve(0);
    index.Reserve(-1);
    const long before = ReallocationCount();
    for (int i = 0; i < 1000; ++i) {
        index.Set(&objects[i], i);
    }
    EXPECT_EQ(ReallocationCount(), before);
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(NumberOf(index, &objects[i]), i);
    }
}

TEST(PointerIndex, GrowsByDoubling) {
    std::vector<int> objects(100000);
    PointerIndex index;
    const long before = ReallocationCount();
    for (int i = 0; i < 100000; ++i) {
        index.Set(&objects[i], i);
    }
    // 16 to 262144 slots.
    EXPECT_EQ(ReallocationCount() - before, 15);
}

// Sets and finds 50000 addresses of one step.
std::chrono::duration<double> TimeOf(std::uintptr_t step) {
    const auto begin = std::chrono::steady_clock::now();
    PointerIndex index;
    for (int i = 0; i < 50000; ++i) {
        index.Set(reinterpret_cast<const void*>(0x10000 + i * step), i);
    }
    for (int i = 0; i < 50000; ++i) {
        const int number = NumberOf(index, reinterpret_cast<const void*>(0x10000 + i * step));
        EXPECT_EQ(number, i);
    }
    return std::chrono::steady_clock::now() - begin;
}

// From bytes to pages and beyond. A hash that drops low or high bits searches through the addresses
// of some steps one by one, which takes thousands of times as long as for others.
TEST(PointerIndex, AddressesOfAnyStepSpread) {
    std::vector<double> times;
    for (std::uintptr_t step : {1, 8, 16, 48, 64, 4096, 65536, 1 << 20}) {
        times.push_back(TimeOf(step).count());
    }
    const auto [fastest, slowest] = std::minmax_element(times.begin(), times.end());
    EXPECT_LT(*slowest, 100 * *fastest + 0.1);
}

TEST(PointerIndex, AgreesWithAModel) {
    std::mt19937 random(4);
    PointerIndex index;
    std::unordered_map<const void*, int> model;
    for (int step = 0; step < 50000; ++step) {
        const auto* address =
            reinterpret_cast<const void*>(static_cast<std::uintptr_t>(random() % 4000) * 16);
        if (random() % 3 == 0) {
            index.Set(address, step);
            model[address] = step;
        }
        const auto entry = model.find(address);
        ASSERT_EQ(NumberOf(index, address), entry != model.end() ? entry->second : -1);
        ASSERT_EQ(index.Count(), static_cast<int>(model.size()));
    }
}

TEST(PointerList, PositionsInOrderOfAdding) {
    int objects[3] = {};
    Plinth::PointerList<int> list;
    EXPECT_EQ(list.Find(&objects[0]), -1);
    EXPECT_EQ(list.Add(&objects[2]), 0);
    EXPECT_EQ(list.Add(&objects[0]), 1);
    EXPECT_EQ(list.Add(&objects[2]), 0);
    EXPECT_EQ(list.Count(), 2);
    EXPECT_EQ(list[0], &objects[2]);
    EXPECT_EQ(list[1], &objects[0]);
    EXPECT_EQ(list.Find(&objects[0]), 1);
    EXPECT_EQ(list.Find(&objects[1]), -1);
    list.Clear();
    EXPECT_EQ(list.Count(), 0);
    EXPECT_EQ(list.Find(&objects[0]), -1);
    list.Reserve(10);
    EXPECT_EQ(list.Add(&objects[0]), 0);
}

}  // namespace
