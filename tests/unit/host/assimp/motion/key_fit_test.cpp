// Curves between keys, and keys on ticks.
#include <gtest/gtest.h>

#include "host/assimp/motion/curves.h"
#include "host/assimp/motion/key_fit.h"

namespace maxhost::import {

using scene::Tangent;

namespace {

struct Placed {
    int tick;
    std::size_t key;
};

void ExpectKnots(const std::vector<double>& times, bool isStep, const std::vector<Placed>& places) {
    const std::vector<Knot> knots = KnotsOf(times, isStep);
    ASSERT_EQ(knots.size(), places.size());
    for (std::size_t i = 0; i < places.size(); ++i) {
        EXPECT_EQ(knots[i].tick, places[i].tick) << i;
        EXPECT_EQ(knots[i].key, places[i].key) << i;
    }
}

}  // namespace

TEST(Knots, AreTheNearestTicks) {
    ExpectKnots({-1.6, 0.4, 99.5, 159.9998}, false, {{-2, 0}, {0, 1}, {100, 2}, {160, 3}});
}

TEST(Knots, OfOneTickMoveApart) {
    ExpectKnots({10, 10}, false, {{9, 0}, {10, 1}});
    ExpectKnots({9.7, 10}, false, {{9, 0}, {10, 1}});
    ExpectKnots({10, 10.3}, false, {{10, 0}, {11, 1}});
    ExpectKnots({9, 9.8, 10}, false, {{9, 0}, {10, 2}});     // nowhere to go
    ExpectKnots({10, 10.3, 11}, false, {{10, 1}, {11, 2}});  // nor here
    ExpectKnots({10, 10.1, 10.2, 10.3}, false, {{10, 0}, {11, 3}});
}

// A value that holds at a tick must hold from it on: never before its time, but for noise.
TEST(Knots, OfStepsAreTheFirstTicksBehind) {
    ExpectKnots({0, 10.4, 19.999, 20.005, 30.02}, true, {{0, 0}, {11, 1}, {20, 3}, {31, 4}});
}

TEST(VectorCurves, OfEveryInterpolation) {
    Curve<Vector> curve;
    curve.keys = {{0, {0, 0, 0}, {}, {8, 0, 0}}, {2, {4, 0, 0}, {-4, 0, 0}, {}}};
    EXPECT_DOUBLE_EQ(curve.At(0.5).x, 1);
    EXPECT_DOUBLE_EQ(curve.At(-1).x, 0);
    EXPECT_DOUBLE_EQ(curve.At(3).x, 4);
    curve.interpolation = Interpolation::step;
    EXPECT_DOUBLE_EQ(curve.At(1.999).x, 0);
    EXPECT_DOUBLE_EQ(curve.At(2).x, 4);
    curve.interpolation = Interpolation::cubic;
    // Half way: the mean, and an eighth of the duration times the slopes' difference.
    EXPECT_DOUBLE_EQ(curve.At(1).x, 2 + 2.0 / 8 * (8 + 4));
    EXPECT_FALSE(curve.IsConstant(0.1));
    curve.keys[1].value = {0, 0, 0};
    EXPECT_FALSE(curve.IsConstant(0.1));  // it bulges
    curve.interpolation = Interpolation::linear;
    EXPECT_TRUE(curve.IsConstant(0.1));
}

TEST(CurveKeys, AreTheCurvesOwnWithItsSlopes) {
    Curve<Vector> curve;
    curve.interpolation = Interpolation::cubic;
    curve.keys = {{0, {0, 0, 0}, {1, 2, 3}, {4, 5, 6}}, {100, {10, 0, 0}, {7, 8, 9}, {}}};
    const std::vector<FittedKey> keys = KeysOf(curve, 1);
    ASSERT_EQ(keys.size(), 2u);
    EXPECT_EQ(keys[0].outType, Tangent::custom);
    EXPECT_EQ(keys[0].outTangent, Vector(4, 5, 6));
    EXPECT_EQ(keys[1].inType, Tangent::custom);
    EXPECT_EQ(keys[1].inTangent, Vector(-7, -8, -9));
}

// Half a tick of a fast line is more than a fine tolerance, but not more than a coarse one.
TEST(CurveKeys, HoldTheCurvesValueAtTheirTickWhereRoundingCosts) {
    Curve<Vector> curve;
    curve.keys = {{0, {0, 0, 0}, {}, {}}, {10.4, {104, 0, 0}, {}, {}}, {20, {200, 0, 0}, {}, {}}};
    EXPECT_DOUBLE_EQ(KeysOf(curve, 100)[1].value.x, 104);
    EXPECT_DOUBLE_EQ(KeysOf(curve, 1)[1].value.x, 100);
}

}  // namespace maxhost::import
