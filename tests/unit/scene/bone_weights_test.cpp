#include "scene/weights.h"

#include <gtest/gtest.h>

#include <ctime>
#include <limits>
#include <vector>

namespace {

constexpr int kAny = std::numeric_limits<int>::max();

// A weight and the position that it had before.
struct Left {
    int position;
    float weight;
    bool operator==(const Left&) const = default;
};

void PrintTo(const Left& left, std::ostream* stream) {
    *stream << left.position << ": " << left.weight;
}

std::vector<Left> Optimized(const std::vector<float>& values, float threshold, int most) {
    BoneWeights weights;
    weights.Reserve(static_cast<int>(values.size()));
    for (std::size_t i = 0; i < values.size(); ++i) {
        weights.Add({static_cast<int>(i), values[i], 0});
    }
    OptimizeBoneWeights(weights, threshold, most);
    std::vector<Left> left;
    for (int i = 0; i < weights.Count(); ++i) {
        left.push_back({weights[i].bone, weights[i].weight});
    }
    return left;
}

using List = std::vector<Left>;

TEST(BoneWeights, NoneStayNone) {
    EXPECT_EQ(Optimized({}, 0.5f, 4), List{});
}

TEST(BoneWeights, ThoseBelowTheThresholdGoAndTheRestIsScaled) {
    // 0.5 + 0.3 + 0.15 = 0.95; 0.5 / 0.95 and so on.
    EXPECT_EQ(Optimized({0.5f, 0.3f, 0.15f, 0.05f}, 0.075f, 4),
              (List{{0, 0.526315808f}, {1, 0.31578949f}, {2, 0.157894745f}}));
}

TEST(BoneWeights, AWeightAtTheThresholdStays) {
    EXPECT_EQ(Optimized({0.25f, 0.75f}, 0.25f, 4), (List{{0, 0.25f}, {1, 0.75f}}));
    EXPECT_EQ(Optimized({0.25f, 0.75f}, 0.3f, 4), (List{{1, 1.0f}}));
}

TEST(BoneWeights, TheLastOneLeftStaysHoweverSmall) {
    EXPECT_EQ(Optimized({0.01f}, 0.075f, 4), (List{{0, 1.0f}}));
    // Of three that are all too small it is the last; of two, the larger one may be met first.
    EXPECT_EQ(Optimized({0.05f, 0.02f, 0.01f}, 0.075f, 4), (List{{2, 1.0f}}));
    EXPECT_EQ(Optimized({0.5f, 0.01f}, 0.075f, 4), (List{{0, 1.0f}}));
}

TEST(BoneWeights, OfTooManyTheSmallestGo) {
    EXPECT_EQ(Optimized({0.125f, 0.5f, 0.25f, 0.125f}, 0, 3),
              (List{{1, 0.571428597f}, {2, 0.285714298f}, {3, 0.142857149f}}));
    EXPECT_EQ(Optimized({0.125f, 0.5f, 0.25f, 0.125f}, 0, 1), (List{{1, 1.0f}}));
    EXPECT_EQ(Optimized({0.1f, 0.3f, 0.2f, 0.4f}, 0, 4).size(), 4u);
}

TEST(BoneWeights, OfEqualOnesTheFirstGoesFirst) {
    EXPECT_EQ(Optimized({0.2f, 0.2f, 0.2f, 0.2f, 0.2f}, 0.075f, 4),
              (List{{1, 0.25f}, {2, 0.25f}, {3, 0.25f}, {4, 0.25f}}));
    EXPECT_EQ(Optimized({0.25f, 0.5f, 0.25f, 0.25f}, 0, 2),
              (List{{1, 0.666666687f}, {3, 0.333333343f}}));
}

TEST(BoneWeights, TheThresholdComesBeforeTheCount) {
    // Were the count first, 0.1 and 0.2 would go and all others stay.
    EXPECT_EQ(Optimized({0.1f, 0.2f, 0.5f, 0.5f}, 0.3f, 3), (List{{2, 0.5f}, {3, 0.5f}}));
}

TEST(BoneWeights, SumsOfOneAndMoreStay) {
    EXPECT_EQ(Optimized({0.75f, 0.5f}, 0.075f, 4), (List{{0, 0.75f}, {1, 0.5f}}));
    EXPECT_EQ(Optimized({0.75f, 0.25f}, 0.075f, 4), (List{{0, 0.75f}, {1, 0.25f}}));
    EXPECT_EQ(Optimized({0.75f, 0.5f, 0.05f}, 0.075f, 4), (List{{0, 0.75f}, {1, 0.5f}}));
}

TEST(BoneWeights, SumsOfZeroStay) {
    EXPECT_EQ(Optimized({0, 0}, 0, 4), (List{{0, 0.0f}, {1, 0.0f}}));
    EXPECT_EQ(Optimized({0, 0}, 0.075f, 4), (List{{1, 0.0f}}));
    EXPECT_EQ(Optimized({0.5f, -0.5f}, -1, 4), (List{{0, 0.5f}, {1, -0.5f}}));
}

TEST(BoneWeights, SumsBelowZeroAreScaledAsTheOthers) {
    EXPECT_EQ(Optimized({-0.5f}, 0.075f, 4), (List{{0, 1.0f}}));
}

TEST(BoneWeights, NoneAreLeftWhereNoneAreAllowed) {
    EXPECT_EQ(Optimized({0.5f, 0.5f}, 0, 0), List{});
    EXPECT_EQ(Optimized({0.5f, 0.5f}, 0, -3), List{});
}

TEST(BoneWeights, WhatIsNotANumberGoesFirst) {
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(Optimized({0.5f, kNan, 0.5f, kNan}, 0.075f, 2), (List{{0, 0.5f}, {2, 0.5f}}));
}

// By removing one after another, a hundred thousand would take ten thousand million steps.
TEST(BoneWeights, ManyAtOneVertexTakeTheirTimeOnly) {
    std::vector<float> many;
    for (int i = 0; i < 100000; ++i) {
        many.push_back(static_cast<float>(i * 7919 % 100003) / 100003);
    }
    const std::clock_t begin = std::clock();
    EXPECT_EQ(Optimized(many, 0.5f, 4).size(), 4u);
    EXPECT_EQ(Optimized(many, 0, 4).size(), 4u);
    EXPECT_EQ(Optimized(many, 0, kAny).size(), 100000u);
    EXPECT_LT(static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC, 5.0);
}

}  // namespace
