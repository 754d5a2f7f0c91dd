#include <bitarray.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <vector>

namespace {

BitArray Bits(int size, std::initializer_list<int> set) {
    BitArray bits(size);
    for (const int i : set)
        bits.Set(i);
    return bits;
}

std::vector<int> SetOf(const BitArray& bits) {
    std::vector<int> set;
    for (int i = 0; i < bits.GetSize(); ++i) {
        if (bits[i])
            set.push_back(i);
    }
    return set;
}

using Set = std::vector<int>;

}  // namespace

TEST(BitArray, StartsEmpty) {
    EXPECT_EQ(BitArray().GetSize(), 0);
    EXPECT_EQ(BitArray().NumberSet(), 0);
    const BitArray bits(70);
    EXPECT_EQ(bits.GetSize(), 70);
    EXPECT_EQ(bits.NumberSet(), 0);
    EXPECT_EQ(BitArray(-1).GetSize(), 0);
}

TEST(BitArray, SetsAndClears) {
    BitArray bits(70);
    bits.Set(0);
    bits.Set(31);
    bits.Set(32, 5);
    bits.Set(69);
    EXPECT_EQ(SetOf(bits), (Set{0, 31, 32, 69}));
    EXPECT_EQ(bits[31], 1);
    EXPECT_EQ(bits.NumberSet(), 4);
    bits.Clear(31);
    bits.Set(32, 0);
    EXPECT_EQ(SetOf(bits), (Set{0, 69}));
}

TEST(BitArray, SetsAndClearsAll) {
    for (const int size : {0, 1, 31, 32, 33, 64, 70}) {
        BitArray bits(size);
        bits.SetAll();
        EXPECT_EQ(bits.NumberSet(), size);
        bits.ClearAll();
        EXPECT_EQ(bits.NumberSet(), 0);
    }
}

TEST(BitArray, PassesOverWhatLiesOutside) {
    BitArray bits(33);
    bits.Set(33);
    bits.Set(-1);
    bits.Set(1000000, 1);
    EXPECT_EQ(bits.NumberSet(), 0);
    bits.SetAll();
    bits.Clear(33);
    bits.Clear(-1);
    EXPECT_EQ(bits.NumberSet(), 33);
    EXPECT_EQ(bits[33], 0);
    EXPECT_EQ(bits[-1], 0);
}

TEST(BitArray, ChangesItsSize) {
    BitArray bits = Bits(70, {3, 40, 69});
    bits.SetSize(50, 1);
    EXPECT_EQ(SetOf(bits), (Set{3, 40}));
    bits.SetSize(100, 1);
    EXPECT_EQ(SetOf(bits), (Set{3, 40}));
    EXPECT_EQ(bits.GetSize(), 100);
    bits.SetSize(100);
    EXPECT_EQ(bits.NumberSet(), 0);
    bits.SetSize(0);
    EXPECT_EQ(bits.GetSize(), 0);
    bits.SetSize(-5, 1);
    EXPECT_EQ(bits.GetSize(), 0);
}

TEST(BitArray, CombinesBitByBit) {
    const BitArray a = Bits(40, {1, 2, 39});
    const BitArray b = Bits(40, {2, 3, 39});
    EXPECT_EQ(SetOf(a & b), (Set{2, 39}));
    EXPECT_EQ(SetOf(a | b), (Set{1, 2, 3, 39}));
    EXPECT_EQ(SetOf(a ^ b), (Set{1, 3}));
    EXPECT_EQ(SetOf(~Bits(5, {1, 3})), (Set{0, 2, 4}));
    EXPECT_EQ((~a).NumberSet(), 37);
    BitArray c = a;
    c &= b;
    c |= Bits(40, {7});
    c ^= Bits(40, {39});
    EXPECT_EQ(SetOf(c), (Set{2, 7}));
}

TEST(BitArray, CombinesDifferentSizesInTheSizeOfTheLeftOne) {
    const BitArray small = Bits(34, {1, 33});
    const BitArray large = Bits(100, {1, 34, 99});
    EXPECT_EQ(SetOf(small | large), (Set{1, 33}));
    EXPECT_EQ((small | large).NumberSet(), 2);
    EXPECT_EQ((small ^ large).NumberSet(), 1);
    EXPECT_EQ(SetOf(large & small), (Set{1}));
    EXPECT_EQ(SetOf(large | small), (Set{1, 33, 34, 99}));
    EXPECT_EQ((large ^ small).GetSize(), 100);
}

TEST(BitArray, Compares) {
    EXPECT_TRUE(Bits(40, {1}) == Bits(40, {1}));
    EXPECT_TRUE(Bits(40, {1}) != Bits(40, {2}));
    EXPECT_TRUE(Bits(40, {1}) != Bits(41, {1}));
    EXPECT_TRUE(BitArray() == BitArray(0));
}

TEST(BitArray, Copies) {
    BitArray bits = Bits(40, {1, 35});
    BitArray copy(bits);
    copy.Set(2);
    EXPECT_EQ(SetOf(bits), (Set{1, 35}));
    copy = bits;
    const BitArray& same = copy;
    copy = same;
    EXPECT_EQ(SetOf(copy), (Set{1, 35}));
    copy = BitArray();
    EXPECT_EQ(copy.GetSize(), 0);
}
