#include "core/array.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <vector>

namespace {

using Plinth::Array;

template <class T>
std::vector<T> Elements(const Array<T>& array) {
    return std::vector<T>(array.Data(), array.Data() + array.Count());
}

TEST(Array, StartsWithoutStorage) {
    const Array<int> array;
    EXPECT_EQ(array.Count(), 0);
    EXPECT_EQ(array.Capacity(), 0);
    EXPECT_EQ(array.Data(), nullptr);
}

TEST(Array, AddingToAFullArraySetsCapacityToTheNewCountPlusOne) {
    Array<int> array;
    const std::vector<int> expected = {2, 2, 4, 4, 6, 6, 8};
    for (int i = 0; i < 7; ++i) {
        array.Add(10 * i);
        EXPECT_EQ(array.Count(), i + 1);
        EXPECT_EQ(array.Capacity(), expected[i]);
    }
    EXPECT_EQ(Elements(array), (std::vector<int>{0, 10, 20, 30, 40, 50, 60}));
}

TEST(Array, AmortizedAddingDoublesAFullArray) {
    Array<int> array;
    int moves = 0;
    for (int i = 0; i < 100000; ++i) {
        const int capacity = array.Capacity();
        array.AddAmortized(i);
        moves += array.Capacity() != capacity;
    }
    EXPECT_EQ(array.Count(), 100000);
    EXPECT_EQ(array[99999], 99999);
    EXPECT_LT(moves, 20);
    Array<int> itself;
    for (int i = 0; i < 40; ++i) {
        itself.AddAmortized(itself.Count() > 0 ? itself[0] : 5);
    }
    EXPECT_EQ(Elements(itself), std::vector<int>(40, 5));
}

TEST(Array, AddsAnElementOfItself) {
    Array<long> array;
    array.Reserve(1);
    array.Add(7);
    for (int i = 0; i < 50; ++i) {
        array.Add(array[0]);
    }
    EXPECT_EQ(Elements(array), std::vector<long>(51, 7));
}

TEST(Array, ResizeGrowsToOneMoreThanAsked) {
    Array<int> array;
    array.Resize(5);
    EXPECT_EQ(array.Count(), 5);
    EXPECT_EQ(array.Capacity(), 6);
    EXPECT_EQ(Elements(array), std::vector<int>(5, 0));
    array[4] = 9;
    array.Resize(6);
    EXPECT_EQ(array.Capacity(), 6);
    array.Resize(7);
    EXPECT_EQ(array.Capacity(), 8);
    EXPECT_EQ(Elements(array), (std::vector<int>{0, 0, 0, 0, 9, 0, 0}));
    array.Resize(2);
    EXPECT_EQ(array.Count(), 2);
    EXPECT_EQ(array.Capacity(), 8);
    array.Resize(-1);
    EXPECT_EQ(array.Count(), 2);
}

TEST(Array, ResizeZeroesElementsThatComeBack) {
    Array<int> array;
    array.Resize(3);
    array[2] = 5;
    array.Resize(1);
    array.Resize(3);
    EXPECT_EQ(array[2], 0);
}

TEST(Array, ReserveSetsExactly) {
    Array<int> array;
    array.Reserve(10);
    EXPECT_EQ(array.Capacity(), 10);
    EXPECT_EQ(array.Count(), 0);
    array.Add(1);
    array.Add(2);
    array.Reserve(5);
    EXPECT_EQ(array.Capacity(), 5);
    array.Reserve(2);
    EXPECT_EQ(array.Capacity(), 2);
    array.Reserve(1);
    array.Reserve(-4);
    EXPECT_EQ(array.Capacity(), 2);
    EXPECT_EQ(Elements(array), (std::vector<int>{1, 2}));
    array.Remove(0);
    array.Remove(0);
    array.Reserve(0);
    EXPECT_EQ(array.Capacity(), 0);
    EXPECT_EQ(array.Data(), nullptr);
}

TEST(Array, ReservedRoomIsUsedWithoutGrowing) {
    Array<int> array;
    array.Reserve(100);
    const int* const storage = array.Data();
    for (int i = 0; i < 100; ++i) {
        array.Add(i);
    }
    EXPECT_EQ(array.Capacity(), 100);
    EXPECT_EQ(array.Data(), storage);
}

TEST(Array, RemoveClosesTheGap) {
    Array<int> array;
    for (int i = 0; i < 5; ++i) {
        array.Add(i);
    }
    array.Remove(1);
    EXPECT_EQ(Elements(array), (std::vector<int>{0, 2, 3, 4}));
    array.Remove(3);
    EXPECT_EQ(Elements(array), (std::vector<int>{0, 2, 3}));
    array.Remove(0);
    EXPECT_EQ(Elements(array), (std::vector<int>{2, 3}));
    EXPECT_EQ(array.Capacity(), 6);
}

TEST(Array, ClearFreesTheStorage) {
    Array<int> array;
    array.Add(1);
    array.Clear();
    EXPECT_EQ(array.Count(), 0);
    EXPECT_EQ(array.Capacity(), 0);
    EXPECT_EQ(array.Data(), nullptr);
    array.Clear();
    array.Add(2);
    EXPECT_EQ(array[0], 2);
}

struct Large {
    char bytes[1 << 20];
};

TEST(Array, SizesThatCannotBeAreRefused) {
    Array<int> numbers;
    EXPECT_THROW(numbers.Resize(INT_MAX), std::bad_alloc);
    EXPECT_EQ(numbers.Count(), 0);
    Array<char> bytes;
    EXPECT_THROW(bytes.Resize(INT_MAX), std::bad_alloc);
    EXPECT_EQ(bytes.Capacity(), 0);
}

TEST(Array, LargeElements) {
    Array<Large> array;
    array.Resize(3);
    array[2].bytes[0] = 'x';
    array.Remove(0);
    EXPECT_EQ(array[1].bytes[0], 'x');
}

TEST(Array, AgreesWithAModel) {
    std::mt19937 random(3);
    Array<unsigned> array;
    std::vector<unsigned> model;
    for (int step = 0; step < 20000; ++step) {
        const unsigned value = random();
        switch (random() % 8) {
            case 0:
                if (!model.empty()) {
                    array.Remove(value % model.size());
                    model.erase(model.begin() + value % model.size());
                }
                break;
            case 1:
                array.Resize(value % 50);
                model.resize(value % 50);
                break;
            case 2:
                array.Reserve(value % 80);
                break;
            default:
                array.Add(value);
                model.push_back(value);
                break;
        }
        ASSERT_EQ(Elements(array), model);
        ASSERT_LE(array.Count(), array.Capacity());
    }
}

}  // namespace
