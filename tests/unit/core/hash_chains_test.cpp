#include "core/hash_chains.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>
#include <vector>

namespace {

using Plinth::HashChains;
using Plinth::HashOfPair;
using Numbers = std::vector<int>;

Numbers NumbersOf(HashChains& chains, std::uint32_t hash) {
    Numbers numbers;
    for (HashChains::Walk walk(chains, hash); walk.Current() >= 0; walk.Advance()) {
        numbers.push_back(walk.Current());
    }
    return numbers;
}

TEST(HashChains, NumbersOfAHashInTheirOrder) {
    HashChains chains;
    EXPECT_EQ(NumbersOf(chains, 5), Numbers());
    // 5, 21 and 0x80000005 share a chain as long as there are few.
    for (const std::uint32_t hash : {5u, 21u, 5u, 0x80000005u, 21u, 5u, 0xffffffffu}) {
        chains.Add(hash);
    }
    EXPECT_EQ(chains.Count(), 7);
    EXPECT_EQ(NumbersOf(chains, 5), Numbers({0, 2, 5}));
    EXPECT_EQ(NumbersOf(chains, 21), Numbers({1, 4}));
    EXPECT_EQ(NumbersOf(chains, 0x80000005), Numbers({3}));
    EXPECT_EQ(NumbersOf(chains, 0xffffffff), Numbers({6}));
    EXPECT_EQ(NumbersOf(chains, 37), Numbers());
    chains.Clear();
    EXPECT_EQ(chains.Count(), 0);
    EXPECT_EQ(NumbersOf(chains, 5), Numbers());
}

TEST(HashChains, RemovedNumbersAreNotFound) {
    for (int removed = 0; removed < 3; ++removed) {
        HashChains chains;
        for (int i = 0; i < 3; ++i) {
            chains.Add(1);
        }
        HashChains::Walk walk(chains, 1);
        for (int i = 0; i < removed; ++i) {
            walk.Advance();
        }
        walk.Remove();
        EXPECT_EQ(walk.Current(), removed < 2 ? removed + 1 : -1);
        Numbers left = {0, 1, 2};
        left.erase(left.begin() + removed);
        EXPECT_EQ(NumbersOf(chains, 1), left);
        chains.Add(1);
        left.push_back(3);
        EXPECT_EQ(NumbersOf(chains, 1), left) << "goes behind the last one";
    }
}

TEST(HashChains, AgreesWithAModel) {
    std::mt19937 random(3);
    HashChains chains;
    std::map<std::uint32_t, Numbers> model;
    for (int step = 0; step < 20000; ++step) {
        const std::uint32_t hash = random() % 300 * 0x01000193u;
        Numbers& numbers = model[hash];
        if (random() % 3 != 0) {
            numbers.push_back(chains.Count());
            chains.Add(hash);
        } else if (!numbers.empty()) {
            const std::size_t position = random() % numbers.size();
            HashChains::Walk walk(chains, hash);
            for (std::size_t i = 0; i < position; ++i) {
                walk.Advance();
            }
            ASSERT_EQ(walk.Current(), numbers[position]);
            walk.Remove();
            numbers.erase(numbers.begin() + static_cast<std::ptrdiff_t>(position));
        }
        if (step % 500 == 0) {
            for (const auto& [known, expected] : model) {
                ASSERT_EQ(NumbersOf(chains, known), expected);
            }
        }
    }
}

TEST(HashOfPair, TellsPairsAndTheirOrderApart) {
    const std::vector<char> bytes(64 * 64);
    std::set<std::uint32_t> hashes;
    for (int i = 0; i < 64; ++i) {
        for (int k = 0; k < 64; ++k) {
            hashes.insert(HashOfPair(&bytes[i * 16], k == 0 ? nullptr : &bytes[k * 16]));
        }
    }
    EXPECT_GE(hashes.size(), 4090u);  // of 4096
    // The low bits choose the chain.
    std::set<std::uint32_t> chains;
    for (int i = 0; i < 64; ++i) {
        chains.insert(HashOfPair(&bytes[i * 64], nullptr) & 63);
    }
    EXPECT_GE(chains.size(), 28u);  // 40 of 64 are likely
}

}  // namespace
