// Key curves: every tangent type, handles and their limits, what holds where.
#include <cmath>
#include <limits>

#include "host/sdk/scene/key_curve.h"
#include "tests/unit/host/sdk/support.h"

namespace scene = maxhost::scene;
using scene::Key;
using scene::Tangent;

constexpr float kThird = 1.0f / 3.0f;

// A key with its two sides alike in type, length 1/3 and no slope.
Key FlatKey(int time, float value, Tangent type) {
    Key key;
    key.time = time;
    key.value = value;
    key.inType = key.outType = type;
    key.inLength = key.outLength = kThird;
    return key;
}

float ValueAt(const std::vector<Key>& keys, int time) {
    Interval valid = FOREVER;
    return static_cast<float>(maxhost::EvaluateKeys(keys, time, valid));
}

Interval ValidAt(const std::vector<Key>& keys, int time) {
    Interval valid = FOREVER;
    maxhost::EvaluateKeys(keys, time, valid);
    return valid;
}

// Two keys, 0 at time 0 and 10 at `duration`.
std::vector<Key> Rise(int duration, Tangent out, Tangent in) {
    return {FlatKey(0, 0, out), FlatKey(duration, 10, in)};
}

TEST(KeyCurve, OneKeyHoldsForAllTime) {
    const std::vector<Key> keys = {FlatKey(50, 7, Tangent::smooth)};
    for (int time : {TIME_NegInfinity, 0, 50, 51, TIME_PosInfinity}) {
        EXPECT_EQ(ValueAt(keys, time), 7);
    }
    EXPECT_EQ(ValidAt(keys, 0), FOREVER);
}

TEST(KeyCurve, FirstAndLastKeyHoldOutside) {
    const auto keys = Rise(100, Tangent::linear, Tangent::linear);
    EXPECT_EQ(ValueAt(keys, -1), 0);
    EXPECT_EQ(ValueAt(keys, TIME_NegInfinity), 0);
    EXPECT_EQ(ValueAt(keys, 0), 0);
    EXPECT_EQ(ValueAt(keys, 100), 10);
    EXPECT_EQ(ValueAt(keys, 101), 10);
    EXPECT_EQ(ValueAt(keys, TIME_PosInfinity), 10);
}

TEST(KeyCurve, LinearOnBothSidesIsTheStraightLine) {
    auto keys = Rise(100, Tangent::linear, Tangent::linear);
    // The tangents stored for a linear side do not count.
    keys[0].outTangent = 3;
    keys[0].outLength = 0.9f;
    keys[1].inTangent = -3;
    keys[1].inLength = 0.1f;
    EXPECT_FLOAT_EQ(ValueAt(keys, 25), 2.5f);
    EXPECT_FLOAT_EQ(ValueAt(keys, 50), 5);
    EXPECT_FLOAT_EQ(ValueAt(keys, 99), 9.9f);
}

TEST(KeyCurve, StepOnEitherSideHolds) {
    for (const auto& [out, in] :
         {std::pair(Tangent::step, Tangent::linear), std::pair(Tangent::linear, Tangent::step),
          std::pair(Tangent::step, Tangent::step), std::pair(Tangent::custom, Tangent::step)}) {
        const auto keys = Rise(100, out, in);
        EXPECT_EQ(ValueAt(keys, 1), 0);
        EXPECT_EQ(ValueAt(keys, 99), 0);
        EXPECT_EQ(ValueAt(keys, 100), 10);
    }
}

TEST(KeyCurve, StepConcernsItsOwnSideAlone) {
    Key middle = FlatKey(100, 10, Tangent::linear);
    middle.inType = Tangent::step;
    const std::vector<Key> keys = {FlatKey(0, 0, Tangent::linear), middle,
                                   FlatKey(200, 20, Tangent::linear)};
    EXPECT_EQ(ValueAt(keys, 50), 0);
    EXPECT_FLOAT_EQ(ValueAt(keys, 150), 15);
}

TEST(KeyCurve, EveryOtherTypeTakesWhatIsStored) {
    for (Tangent type :
         {Tangent::smooth, Tangent::fast, Tangent::slow, Tangent::custom, Tangent::flat}) {
        auto keys = Rise(100, type, type);
        // Without slopes: 10 (3 s^2 - 2 s^3).
        EXPECT_NEAR(ValueAt(keys, 25), 1.5625f, 1e-6f);
        EXPECT_NEAR(ValueAt(keys, 50), 5, 1e-6f);
        // Start slope 0.2 a tick, end slope 0.05 a tick; the in-tangent points back.
        keys[0].outTangent = 0.2f;
        keys[1].inTangent = -0.05f;
        EXPECT_NEAR(ValueAt(keys, 50), 5 + 0.125 * 20 - 0.125 * 5, 1e-5f);
    }
}

TEST(KeyCurve, OneLinearSideTakesTheLinesSlope) {
    auto keys = Rise(100, Tangent::linear, Tangent::custom);
    keys[0].outTangent = 99;
    keys[0].outLength = 0.9f;
    EXPECT_NEAR(ValueAt(keys, 50), 5 + 0.125 * 10, 1e-5f);

    keys = Rise(100, Tangent::custom, Tangent::linear);
    keys[1].inTangent = 99;
    keys[1].inLength = 0.9f;
    EXPECT_NEAR(ValueAt(keys, 50), 5 - 0.125 * 10, 1e-5f);
}

TEST(KeyCurve, HandleLengthsPlaceTheControlPoints) {
    // At u = 1/2: time 3/8 * 0.5 + 3/8 * 0.75 + 1/8 = 0.59375 of the way;
    // value 3/8 * 1.6 + 3/8 * 11.6 + 10/8 = 6.2.
    auto keys = Rise(3200, Tangent::custom, Tangent::custom);
    keys[0].outLength = 0.5f;
    keys[0].outTangent = 0.001f;
    keys[1].inLength = 0.25f;
    keys[1].inTangent = 0.002f;
    EXPECT_NEAR(ValueAt(keys, 1900), 6.2f, 1e-5f);
}

TEST(KeyCurve, LengthAboveOneCountsAsOne) {
    // At u = 1/4 with both lengths 1: time 0.4375 of the way; the out-handle's end is 16 high.
    for (float length : {1.0f, 1.5f, 100.0f}) {
        auto keys = Rise(1600, Tangent::custom, Tangent::custom);
        keys[0].outLength = length;
        keys[0].outTangent = 0.01f;
        keys[1].inLength = length;
        EXPECT_NEAR(ValueAt(keys, 700), 0.421875 * 16 + 0.15625 * 10, 1e-5f) << length;
    }
}

TEST(KeyCurve, LengthOfZeroOrLessCountsAsAThird) {
    for (float length : {0.0f, -0.0f, -1.0f, -1e30f}) {
        auto keys = Rise(100, Tangent::custom, Tangent::custom);
        keys[0].outLength = length;
        keys[0].outTangent = 0.2f;
        keys[1].inLength = length;
        keys[1].inTangent = -0.05f;
        EXPECT_NEAR(ValueAt(keys, 50), 5 + 0.125 * 20 - 0.125 * 5, 1e-5f) << length;
    }
}

TEST(KeyCurve, SegmentsAreIndependent) {
    std::vector<Key> keys;
    for (int i = 0; i < 100; ++i) {
        keys.push_back(FlatKey(i * 10, static_cast<float>(i * i), Tangent::linear));
    }
    for (int i = 0; i < 99; ++i) {
        EXPECT_FLOAT_EQ(ValueAt(keys, i * 10), static_cast<float>(i * i));
        EXPECT_FLOAT_EQ(ValueAt(keys, i * 10 + 5), static_cast<float>(i * i + (2 * i + 1) * 0.5));
    }
}

TEST(KeyCurve, KeysMayStandAsFarApartAsTimesGo) {
    std::vector<Key> keys = {FlatKey(std::numeric_limits<int>::min(), 0, Tangent::linear),
                             FlatKey(std::numeric_limits<int>::max(), 1, Tangent::linear)};
    EXPECT_FLOAT_EQ(ValueAt(keys, 0), 0.5f);
    keys[0].outType = keys[1].inType = Tangent::custom;
    EXPECT_NEAR(ValueAt(keys, 0), 0.5f, 1e-6f);
}

// The curve point at parameter u, to hold evaluation at its time against.
struct CurvePoint {
    double time, value;
};

CurvePoint PointAt(const std::vector<Key>& keys, double u) {
    const Key &a = keys[0], &b = keys[1];
    const double duration = b.time - a.time, v = 1 - u;
    const double outTime = a.outLength * duration, inTime = b.inLength * duration;
    const double weights[4] = {v * v * v, 3 * v * v * u, 3 * v * u * u, u * u * u};
    const double times[4] = {0, outTime, duration - inTime, duration};
    const double values[4] = {a.value, a.value + a.outTangent * outTime,
                              b.value + b.inTangent * inTime, b.value};
    CurvePoint point = {};
    for (int i = 0; i < 4; ++i) {
        point.time += weights[i] * times[i];
        point.value += weights[i] * values[i];
    }
    return point;
}

TEST(KeyCurve, FollowsTheCurveForAllHandleLengths) {
    const int duration = 1 << 30;
    for (int out = 1; out <= 10; ++out) {
        for (int in = 1; in <= 10; ++in) {
            auto keys = Rise(duration, Tangent::custom, Tangent::custom);
            keys[0].outLength = static_cast<float>(out) / 10;
            keys[0].outTangent = 40.0f / duration;
            keys[1].inLength = static_cast<float>(in) / 10;
            keys[1].inTangent = 20.0f / duration;
            for (int i = 1; i < 32; ++i) {
                const CurvePoint point = PointAt(keys, i / 32.0);
                const int time = static_cast<int>(std::lround(point.time));
                // A tick is 1e-9 of the way; only a vertical tangent makes it felt.
                const double tolerance = out == 10 && in == 10 && i == 16 ? 0.05 : 1e-4;
                EXPECT_NEAR(ValueAt(keys, time), point.value, tolerance)
                    << out << " " << in << " " << i;
            }
        }
    }
}

TEST(KeyCurve, ValidityIsWhatIsKnownToHold) {
    Key stepped = FlatKey(100, 10, Tangent::linear);
    stepped.outType = Tangent::step;
    const std::vector<Key> keys = {FlatKey(0, 0, Tangent::linear), stepped,
                                   FlatKey(200, 20, Tangent::linear)};
    EXPECT_EQ(ValidAt(keys, -5), Interval(TIME_NegInfinity, 0));
    EXPECT_EQ(ValidAt(keys, 50), Interval(50, 50));
    EXPECT_EQ(ValidAt(keys, 100), Interval(100, 199));
    EXPECT_EQ(ValidAt(keys, 150), Interval(100, 199));
    EXPECT_EQ(ValidAt(keys, 200), Interval(200, TIME_PosInfinity));

    Interval valid(120, 130);
    maxhost::EvaluateKeys(keys, 125, valid);
    EXPECT_EQ(valid, Interval(120, 130));
}

TEST(KeyCurve, TriplesAreThreeCurves) {
    scene::Key3 a, b;
    a.time = 0;
    a.value = {0, 0, 5};
    a.outType = Tangent::custom;
    a.outTangent = {0, 0.2f, 0};
    a.outLength = {kThird, kThird, kThird};
    b.time = 100;
    b.value = {10, 10, 5};
    b.inType = Tangent::custom;
    b.inLength = {kThird, 0, 2};
    Interval valid = FOREVER;
    const auto middle = maxhost::EvaluateKeys({a, b}, 50, valid);
    EXPECT_EQ(valid, Interval(50, 50));
    EXPECT_NEAR(middle[0], 5, 1e-5);
    EXPECT_NEAR(middle[1], 5 + 0.125 * 20, 1e-5);
    EXPECT_NEAR(middle[2], 5, 1e-5);
    a.outType = Tangent::step;
    const auto held = maxhost::EvaluateKeys({a, b}, 99, valid);
    EXPECT_EQ(held, (maxhost::Double3{0, 0, 5}));
}
