#include "core/key_index.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <random>
#include <unordered_map>
#include <vector>

namespace {

using Plinth::KeyIndex;
using Plinth::PairKey;

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
    EXPECT_EQ(index.Count(), 66);
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
        ASSERT_EQ(index.Count(), static_cast<int>(model.size()));
    }
    index.Clear();
    EXPECT_EQ(index.Count(), 0);
    EXPECT_EQ(NumberOf(index, 0), -1);
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

}  // namespace
