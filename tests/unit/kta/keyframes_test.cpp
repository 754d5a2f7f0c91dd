#include "kta/gltf/keyframes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

#include "kta/gltf/document.h"

namespace {

using kta::Curve;
using kta::CurveKey;
using kta::Quaternion;
using kta::Track;
using kta::Vector3;
using kta::operator-;
using kta::gltf::Interpolation;
using kta::gltf::Keyframes;

constexpr Vector3 kNoFactors = {1, 1, 1};

// ---------------------------------------------------------------- what a viewer does

// The values at a time by the words of glTF 2.0; rotations in four components.
std::vector<double> ValuesShown(const Keyframes& keyframes, std::size_t components,
                                double seconds) {
    const bool isCubic = keyframes.interpolation == Interpolation::cubic;
    const auto at = [&](std::size_t key, std::size_t part, std::size_t i) {
        return double{keyframes.values.at((isCubic ? 3 * key + part : key) * components + i)};
    };
    const auto& times = keyframes.times;
    std::size_t next = 0;
    while (next < times.size() && times[next] <= seconds) {
        ++next;
    }
    const std::size_t from = next == 0 ? 0 : next - 1;
    const bool isBetween = next > 0 && next < times.size();
    const double span = isBetween ? double{times[next]} - times[from] : 1;
    const double t = isBetween ? (seconds - times[from]) / span : 0;
    std::vector<double> values;
    for (std::size_t i = 0; i < components; ++i) {
        const double a = at(from, 1, i);
        const double b = isBetween ? at(next, 1, i) : a;
        if (keyframes.interpolation == Interpolation::step || !isBetween) {
            values.push_back(a);
        } else if (isCubic) {
            values.push_back((2 * t * t * t - 3 * t * t + 1) * a +
                             span * (t * t * t - 2 * t * t + t) * at(from, 2, i) +
                             (3 * t * t - 2 * t * t * t) * b +
                             span * (t * t * t - t * t) * at(next, 0, i));
        } else {
            values.push_back(a + (b - a) * t);
        }
    }
    if (components == 4 && isBetween && keyframes.interpolation == Interpolation::linear) {
        const Quaternion a = {at(from, 1, 0), at(from, 1, 1), at(from, 1, 2), at(from, 1, 3)};
        const Quaternion b = {at(next, 1, 0), at(next, 1, 1), at(next, 1, 2), at(next, 1, 3)};
        const Quaternion q = kta::Slerp(a, b, t);
        values.assign(q.begin(), q.end());
    }
    return values;
}

double DegreesOff(const Quaternion& a, const std::vector<double>& b) {
    double dot = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        dot += a[i] * b[i];
    }
    return 2 * std::acos(std::min(1.0, std::abs(dot))) * 180 / std::numbers::pi;
}

// ---------------------------------------------------------------- tracks

CurveKey KeyOf(double time, double value, KTATangentCode in = kTangentLinear,
               KTATangentCode out = kTangentLinear, KTATangent inHandle = {1, 0},
               KTATangent outHandle = {1, 0}) {
    return {time, value, in, out, inHandle, outHandle};
}

Track CurvesOf(Curve x, Curve y = {KeyOf(0, 0)}, Curve z = {KeyOf(0, 0)}) {
    Track track;
    track.curves = {std::move(x), std::move(y), std::move(z)};
    return track;
}

Curve RandomCurve(std::mt19937& random, double range) {
    const auto share = [&random] { return double(random() >> 8) / (1 << 24); };
    const KTATangentCode codes[] = {kTangentLinear, kTangentStep, kTangentBezier, kTangentBezier};
    Curve curve;
    double time = share();
    for (int i = 0; i < 6; ++i, time += 0.05 + share()) {
        const auto handle = [&] {
            return KTATangent{static_cast<float>(0.01 + 2.9 * share()),
                              static_cast<float>(range * 4 * (share() - 0.5))};
        };
        curve.push_back(KeyOf(static_cast<float>(time), range * share(), codes[random() % 4],
                              codes[random() % 4], handle(), handle()));
    }
    return curve;
}

Keyframes Positions(const Track& track, double start = 0) {
    return kta::gltf::VectorKeyframes(track, {}, kNoFactors, start);
}

// ---------------------------------------------------------------- kinds

TEST(KeyframesTest, SamplesStayWithoutTheTimeThatStandsTwice) {
    Track track;
    track.vectorSamples = {{0, {1, 2, 3}}, {0.5, {4, 5, 6}}, {0.5, {4, 5, 6}}};
    const Keyframes keyframes = kta::gltf::VectorKeyframes(track, {}, {1, 1, -1}, 0);
    EXPECT_EQ(keyframes.interpolation, Interpolation::linear);
    EXPECT_EQ(keyframes.times, (std::vector<float>{0, 0.5f}));
    EXPECT_EQ(keyframes.values, (std::vector<float>{1, 2, -3, 4, 5, -6}));
}

TEST(KeyframesTest, StraightWaysStay) {
    const Keyframes keyframes = Positions(CurvesOf({KeyOf(0, 0), KeyOf(2, 10), KeyOf(3, 0)}));
    EXPECT_EQ(keyframes.interpolation, Interpolation::linear);
    EXPECT_EQ(keyframes.times, (std::vector<float>{0, 2, 3}));
    EXPECT_EQ(keyframes.values, (std::vector<float>{0, 0, 0, 10, 0, 0, 0, 0, 0}));
}

TEST(KeyframesTest, StepsAloneStayEvenOfRotations) {
    const Track track = CurvesOf({KeyOf(0, 0, kTangentStep, kTangentStep), KeyOf(2, 90)});
    EXPECT_EQ(Positions(track).interpolation, Interpolation::step);
    EXPECT_EQ(Positions(track).times, (std::vector<float>{0, 2}));
    const Keyframes turns = kta::gltf::RotationKeyframes(track, 0);
    EXPECT_EQ(turns.interpolation, Interpolation::step);
    // 90 degrees about the scene's x axis, which is glTF's.
    const float half = std::sqrt(0.5f);
    ASSERT_EQ(turns.values.size(), 8u);
    EXPECT_NEAR(turns.values[4], half, 1e-6);
    EXPECT_NEAR(turns.values[7], half, 1e-6);
}

// Handles of a third of the way: the curve is the cubic that glTF has, tangents and all.
TEST(KeyframesTest, EvenHandlesAreCubicSplines) {
    const Track track = CurvesOf({KeyOf(1, 5, kTangentLinear, kTangentBezier, {}, {1, 7}),
                                  KeyOf(3, 9, kTangentBezier, kTangentLinear, {1, -2}, {})});
    const Keyframes keyframes = Positions(track);
    EXPECT_EQ(keyframes.interpolation, Interpolation::cubic);
    EXPECT_EQ(keyframes.times, (std::vector<float>{0, 1, 3}));  // the other axes' key is at 0
    const std::vector<float> tangentsOut(keyframes.values.begin() + 15,
                                         keyframes.values.begin() + 18);
    EXPECT_EQ(tangentsOut, (std::vector<float>{7, 0, 0}));
    EXPECT_EQ(keyframes.values[18], -2);
    for (double t = 0; t <= 3.5; t += 0.05) {
        EXPECT_NEAR(ValuesShown(keyframes, 3, t)[0], kta::VectorAt(track, t, {})[0], 1e-5) << t;
    }
}

// The key of one axis parts the cubic of another in two that go on as one.
TEST(KeyframesTest, CubicsArePartedAtTheKeysOfOtherAxes) {
    const Track track = CurvesOf({KeyOf(0, 0, kTangentLinear, kTangentBezier, {}, {1, 30}),
                                  KeyOf(4, 10, kTangentBezier, kTangentLinear, {1, -20}, {})},
                                 {KeyOf(0, 0), KeyOf(1, 3), KeyOf(2.5, -1)});
    const Keyframes keyframes = Positions(track);
    EXPECT_EQ(keyframes.interpolation, Interpolation::cubic);
    EXPECT_EQ(keyframes.times, (std::vector<float>{0, 1, 2.5, 4}));
    for (double t = 0; t <= 4; t += 0.05) {
        const Vector3 expected = kta::VectorAt(track, t, {});
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_NEAR(ValuesShown(keyframes, 3, t)[i], expected[i], 1e-4) << t;
        }
    }
}

// A step of one axis while another moves: two keys a moment apart.
TEST(KeyframesTest, StepBesideMotion) {
    const Track track =
        CurvesOf({KeyOf(0, 0, kTangentStep, kTangentStep), KeyOf(1, 8), KeyOf(2, 8)},
                 {KeyOf(0, 0), KeyOf(2, 2)});
    const Keyframes keyframes = Positions(track);
    EXPECT_EQ(keyframes.interpolation, Interpolation::linear);
    ASSERT_EQ(keyframes.times.size(), 4u);
    EXPECT_EQ(keyframes.times[1], std::nextafter(1.0f, 0.0f));
    EXPECT_EQ(keyframes.times[2], 1);
    EXPECT_EQ(ValuesShown(keyframes, 3, 0.999)[0], 0);
    EXPECT_EQ(ValuesShown(keyframes, 3, 1)[0], 8);
    EXPECT_NEAR(ValuesShown(keyframes, 3, 0.5)[2], 0.5,
                1e-6);  // the scene's y is the third in the file
}

TEST(KeyframesTest, TimesFromTheStart) {
    const Keyframes keyframes = Positions(CurvesOf({KeyOf(-1, 0), KeyOf(1, 1)}), -1);
    EXPECT_EQ(keyframes.times, (std::vector<float>{0, 1, 2}));  // the other axes' key is at 0
    EXPECT_EQ(ValuesShown(keyframes, 3, 1)[0], 0.5);
}

TEST(KeyframesTest, NoKeys) {
    EXPECT_TRUE(Positions(Track()).times.empty());
    EXPECT_TRUE(kta::gltf::RotationKeyframes(Track(), 0).times.empty());
}

// ---------------------------------------------------------------- sampling

TEST(KeyframesTest, CurvesOfAllKindsAreNear) {
    std::mt19937 random(7);
    for (int round = 0; round < 25; ++round) {
        const Track track =
            CurvesOf(RandomCurve(random, 20), RandomCurve(random, 5), RandomCurve(random, 1));
        const Keyframes keyframes = Positions(track);
        EXPECT_FALSE(keyframes.isCut);
        for (double t = 0; t < 7; t += 0.0137) {
            const Vector3 expected = kta::VectorAt(track, t, {});
            const std::vector<double> shown = ValuesShown(keyframes, 3, t);
            const double off = kta::Length(Vector3{shown[0], shown[1], shown[2]} - expected);
            ASSERT_LE(off, 0.001 * 20) << "round " << round << " at " << t;
        }
    }
}

TEST(KeyframesTest, RotationsOfAllKindsAreNear) {
    std::mt19937 random(11);
    for (int round = 0; round < 25; ++round) {
        const Track track =
            CurvesOf(RandomCurve(random, 300), RandomCurve(random, 80), RandomCurve(random, 20));
        const Keyframes keyframes = kta::gltf::RotationKeyframes(track, 0);
        EXPECT_FALSE(keyframes.isCut);
        for (double t = 0; t < 7; t += 0.0137) {
            const Quaternion expected =
                kta::gltf::Exchanged(kta::RotationAt(track, t, {0, 0, 0, 1}));
            ASSERT_LE(DegreesOff(expected, ValuesShown(keyframes, 4, t)), 0.1)
                << "round " << round << " at " << t;
        }
    }
}

// Ten full turns between two keys: whoever looks at the keys alone sees none.
TEST(KeyframesTest, FullTurns) {
    const Track track = CurvesOf({KeyOf(0, 0), KeyOf(1, 3600)});
    const Keyframes keyframes = kta::gltf::RotationKeyframes(track, 0);
    for (double t = 0; t <= 1; t += 0.01) {
        const Quaternion expected = kta::gltf::Exchanged(kta::RotationAt(track, t, {0, 0, 0, 1}));
        EXPECT_LE(DegreesOff(expected, ValuesShown(keyframes, 4, t)), 0.1) << t;
    }
}

// However much a file asks for, a track has its limit.
TEST(KeyframesTest, KeysAreLimited) {
    const Keyframes keyframes = kta::gltf::RotationKeyframes(
        CurvesOf({KeyOf(0, 0), KeyOf(1, 1e8)}, {KeyOf(0, 0), KeyOf(1, 1e8)},
                 {KeyOf(0, 0), KeyOf(1, 3e8)}),
        0);
    EXPECT_TRUE(keyframes.isCut);
    EXPECT_LE(keyframes.times.size(),
              kta::gltf::kMostKeysMore + 2 * kta::gltf::kMostKeysPerKey + 4);
}

}  // namespace
