#include "export/materials.h"

#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <vector>

namespace {

TEST(MaterialTable, EntriesAreKeptInOrder) {
    MaterialTable table;
    table.Add(nullptr, 0, 0, 1);
    table.Add(nullptr, 4, 2, 2);
    ASSERT_EQ(table.Count(), 2);
    EXPECT_EQ(table[0].listIndex, 0);
    EXPECT_EQ(table[0].subIndex, 0);
    EXPECT_EQ(table[0].numberLess, 0);
    EXPECT_EQ(table[0].numLayers, 0);
    EXPECT_EQ(table[1].listIndex, 4);
    EXPECT_EQ(table[1].subIndex, 2);
    EXPECT_EQ(table[1].numberLess, 1);
}

TEST(MaterialTable, LayersCountForTheLastEntry) {
    MaterialTable table;
    table.CountLayer();  // of the "Extra material", which has no entry
    table.Add(nullptr, 0, 0, 1);
    table.CountLayer();
    table.CountLayer();
    table.Add(nullptr, 1, 0, 2);
    table.CountLayer();
    EXPECT_EQ(table[0].numLayers, 2);
    EXPECT_EQ(table[1].numLayers, 1);
}

TEST(MaterialTable, EmptyOneHasNoNumbers) {
    MaterialTable table;
    EXPECT_EQ(table.NumberOf(0), 0);
    EXPECT_EQ(table.NumberOf(0, 0), 0);
}

// Walks the whole table; a sub-index of -1 matches every one.
int LastMatch(const MaterialTable& table, int listIndex, int subIndex) {
    int number = 0;
    for (int i = 0; i < table.Count(); ++i) {
        if (table[i].listIndex == listIndex && (subIndex == -1 || table[i].subIndex == subIndex)) {
            number = table[i].numberLess + 1;
        }
    }
    return number;
}

TEST(MaterialTable, LastMatchingEntryCounts) {
    std::mt19937 random(5);
    MaterialTable table;
    for (int number = 1; number <= 400; ++number) {
        table.Add(nullptr, static_cast<int>(random() % 20), static_cast<int>(random() % 10),
                  number);
    }
    for (int list = 0; list <= 20; ++list) {
        EXPECT_EQ(table.NumberOf(list), LastMatch(table, list, -1)) << list;
        for (int sub = 0; sub <= 10; ++sub) {
            EXPECT_EQ(table.NumberOf(list, sub), LastMatch(table, list, sub))
                << list << ", " << sub;
        }
    }
}

// Asks 100,000 times, in a table of `lists` materials of `subs` sub-materials.
double SecondsOfQuestions(int lists, int subs) {
    MaterialTable table;
    int number = 0;
    for (int list = 0; list < lists; ++list) {
        for (int sub = 0; sub < subs; ++sub) {
            table.Add(nullptr, list, sub, ++number);
        }
    }
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < 50000; ++i) {
        const int list = i % lists, sub = (i / 7) % subs;
        EXPECT_EQ(table.NumberOf(list), (list + 1) * subs);
        EXPECT_EQ(table.NumberOf(list, sub), list * subs + sub + 1);
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

TEST(MaterialTable, QuestionsDoNotWalkTheTable) {
    const double few = SecondsOfQuestions(10, 1);
    EXPECT_LT(SecondsOfQuestions(100000, 1), 30 * few + 0.1);
    EXPECT_LT(SecondsOfQuestions(1, 100000), 30 * few + 0.1);
    EXPECT_LT(SecondsOfQuestions(300, 300), 30 * few + 0.1);
}

}  // namespace
