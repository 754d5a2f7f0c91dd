#include "core/hash_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <map>
#include <random>
#include <set>
#include <unordered_map>
#include <vector>

#include "core/pointer_list.h"
#include "wrapped_calls.h"

namespace {

using Plinth::AddressKey;
using Plinth::HashOf;
using Plinth::HashTable;
using Plinth::KeyIndex;
using Plinth::PairKey;
using Numbers = std::vector<int>;

Numbers NumbersOf(const HashTable& table, std::uint32_t hash) {
    Numbers numbers;
    for (HashTable::Walk walk(table, hash); walk.Current() >= 0; walk.Advance()) {
        numbers.push_back(walk.Current());
    }
    return numbers;
}

TEST(HashTable, NumbersOfAHashInTheirOrder) {
    HashTable table;
    EXPECT_EQ(NumbersOf(table, 5), Numbers());
    // 5, 21 and 0x80000005 share a chain as long as there are few.
    for (const std::uint32_t hash : {5u, 21u, 5u, 0x80000005u, 21u, 5u, 0xffffffffu}) {
        table.Add(hash);
    }
    EXPECT_EQ(table.Count(), 7);
    EXPECT_EQ(NumbersOf(table, 5), Numbers({0, 2, 5}));
    EXPECT_EQ(NumbersOf(table, 21), Numbers({1, 4}));
    EXPECT_EQ(NumbersOf(table, 0x80000005), Numbers({3}));
    EXPECT_EQ(NumbersOf(table, 0xffffffff), Numbers({6}));
    EXPECT_EQ(NumbersOf(table, 37), Numbers());
}

TEST(HashTable, RemovedNumbersAreNotFound) {
    for (int removed = 0; removed < 3; ++removed) {
        HashTable table;
        for (int i = 0; i < 3; ++i) {
            table.Add(1);
        }
        HashTable::Walk walk(table, 1);
        for (int i = 0; i < removed; ++i) {
            walk.Advance();
        }
        table.Remove(walk);
        EXPECT_EQ(walk.Current(), removed < 2 ? removed + 1 : -1);
        Numbers left = {0, 1, 2};
        left.erase(left.begin() + removed);
        EXPECT_EQ(NumbersOf(table, 1), left);
        table.Add(1);
        left.push_back(3);
        EXPECT_EQ(NumbersOf(table, 1), left) << "goes behind the last one";
    }
}

TEST(HashTable, AgreesWithAModel) {
    std::mt19937 random(3);
    HashTable table;
    std::map<std::uint32_t, Numbers> model;
    for (int step = 0; step < 20000; ++step) {
        const std::uint32_t hash = random() % 300 * 0x01000193u;
        Numbers& numbers = model[hash];
        if (random() % 3 != 0) {
            numbers.push_back(table.Count());
            table.Add(hash);
        } else if (!numbers.empty()) {
            const std::size_t position = random() % numbers.size();
            HashTable::Walk walk(table, hash);
            for (std::size_t i = 0; i < position; ++i) {
                walk.Advance();
            }
            ASSERT_EQ(walk.Current(), numbers[position]);
            table.Remove(walk);
            numbers.erase(numbers.begin() + static_cast<std::ptrdiff_t>(position));
        }
        if (step % 500 == 0) {
            for (const auto& [known, expected] : model) {
                ASSERT_EQ(NumbersOf(table, known), expected);
            }
        }
    }
}

TEST(HashOf, TellsPairsAndTheirOrderApart) {
    const std::vector<char> bytes(64 * 64);
    std::set<std::uint32_t> hashes;
    for (int i = 0; i < 64; ++i) {
        for (int k = 0; k < 64; ++k) {
            hashes.insert(
                HashOf(AddressKey(&bytes[i * 16]), AddressKey(k == 0 ? nullptr : &bytes[k * 16])));
        }
    }
    EXPECT_GE(hashes.size(), 4090u);  // of 4096
    // The low bits choose the chain.
    std::set<std::uint32_t> lowBits;
    for (int i = 0; i < 64; ++i) {
        lowBits.insert(HashOf(AddressKey(&bytes[i * 64]), 0) & 63);
    }
    EXPECT_GE(lowBits.size(), 28u);  // 40 of 64 are likely
}

// -1 when the key has no number.
int NumberOf(const KeyIndex& index, std::uint64_t key) {
    Plinth::Int32 value = -1;
    const bool found = index.Find(key, value);
    EXPECT_EQ(found, value != -1);
    return value;
}

TEST(KeyIndex, TellsKeysApartInAll64Bits) {
    KeyIndex index;
    for (int bit = 0; bit < 64; ++bit) {
        index.Set(std::uint64_t{1} << bit, bit);
    }
    EXPECT_EQ(NumberOf(index, 0), -1);
    index.Set(0, 64);
    index.Set(~std::uint64_t{0}, 65);
    for (int bit = 0; bit < 64; ++bit) {
        EXPECT_EQ(NumberOf(index, std::uint64_t{1} << bit), bit);
    }
    EXPECT_EQ(NumberOf(index, 0), 64);
    EXPECT_EQ(NumberOf(index, ~std::uint64_t{0}), 65);
}

TEST(KeyIndex, AgreesWithAModel) {
    std::mt19937_64 random(4);
    KeyIndex index;
    std::unordered_map<std::uint64_t, int> model;
    for (int step = 0; step < 50000; ++step) {
        const std::uint64_t key = (random() % 60) << 32 | random() % 60;
        if (random() % 3 == 0) {
            index.Set(key, step);
            model[key] = step;
        }
        const auto entry = model.find(key);
        ASSERT_EQ(NumberOf(index, key), entry != model.end() ? entry->second : -1);
    }
}

TEST(PairKey, IsDifferentForDifferentPairs) {
    EXPECT_EQ(PairKey(0, 0), 0u);
    EXPECT_EQ(PairKey(1, 2), 0x100000002u);
    EXPECT_EQ(PairKey(2, 1), 0x200000001u);
    EXPECT_EQ(PairKey(-1, 0), 0xffffffff00000000u);
    EXPECT_EQ(PairKey(0, -1), 0xffffffffu);
    EXPECT_EQ(PairKey(-1, -1), 0xffffffffffffffffu);
}

// Sets and finds all pairs of numbers below these.
double SecondsOfPairs(int first, int second) {
    const auto begin = std::chrono::steady_clock::now();
    KeyIndex index;
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < first; ++i) {
            for (int k = 0; k < second; ++k) {
                if (round == 0) {
                    index.Set(PairKey(i, k), i * second + k);
                } else {
                    EXPECT_EQ(NumberOf(index, PairKey(i, k)), i * second + k);
                }
            }
        }
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

TEST(KeyIndex, PairsSpreadInGridsOfAnyShape) {
    std::vector<double> times;
    for (const int first : {1, 4, 30, 256, 1000, 16384, 65536}) {
        times.push_back(SecondsOfPairs(first, 65536 / first));
    }
    const auto [fastest, slowest] = std::minmax_element(times.begin(), times.end());
    EXPECT_LT(*slowest, 100 * *fastest + 0.1);
}

TEST(KeyIndex, SettingAgainReplaces) {
    int object = 0;
    KeyIndex index;
    index.Set(AddressKey(&object), 1);
    index.Set(AddressKey(&object), 2);
    index.Set(AddressKey(nullptr), 5);
    EXPECT_EQ(NumberOf(index, AddressKey(&object)), 2);
    EXPECT_EQ(NumberOf(index, AddressKey(nullptr)), 5);
}

TEST(KeyIndex, GrowsByDoubling) {
    KeyIndex index;
    const long before = ReallocationCount();
    for (int i = 0; i < 100000; ++i) {
        index.Set(static_cast<std::uint64_t>(i), i);
    }
    EXPECT_LT(ReallocationCount() - before, 3 * 17);
    EXPECT_EQ(NumberOf(index, 99999), 99999);
}

// Sets and finds 50000 addresses of one step.
std::chrono::duration<double> TimeOf(std::uintptr_t step) {
    const auto begin = std::chrono::steady_clock::now();
    KeyIndex index;
    for (int i = 0; i < 50000; ++i) {
        index.Set(0x10000 + i * step, i);
    }
    for (int i = 0; i < 50000; ++i) {
        const int number = NumberOf(index, 0x10000 + i * step);
        EXPECT_EQ(number, i);
    }
    return std::chrono::steady_clock::now() - begin;
}

// From bytes to pages and beyond. A hash that drops low or high bits searches through the addresses
// of some steps one by one, which takes thousands of times as long as for others.
TEST(KeyIndex, AddressesOfAnyStepSpread) {
    std::vector<double> times;
    for (std::uintptr_t step : {1, 8, 16, 48, 64, 4096, 65536, 1 << 20}) {
        times.push_back(TimeOf(step).count());
    }
    const auto [fastest, slowest] = std::minmax_element(times.begin(), times.end());
    EXPECT_LT(*slowest, 100 * *fastest + 0.1);
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
    for (const int count : {200, 10, 0, -1}) {
        list.Reserve(count);
        EXPECT_EQ(list.Find(&objects[0]), 1);
        EXPECT_EQ(list.Add(&objects[2]), 0);
    }
    EXPECT_EQ(list.Add(&objects[1]), 2);
}

}  // namespace
