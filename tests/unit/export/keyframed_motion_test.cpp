// Keyframed tracks: the Bezier keys of a node's controllers, to the byte.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>

#include "tests/unit/export/motion_file.h"

namespace {

namespace scene = maxhost::scene;
using scene::Key;
using scene::Key3;
using scene::Tangent;
using support::Axes;
using support::Constant;
using support::ExpectedTangent;
using support::Keyed;
using support::KeyframedHead;
using support::KeyRecord;
using support::MotionPart;
using support::NodeScene;
using support::OpenPass;
using support::Prs;
using support::WriteMotion;
using support::Written;
using testing::ElementsAre;

constexpr float kMost = 2.99999f;
constexpr float kLeast = 1e-5f;
constexpr float kDegrees = 57.29578f;

Key LinearKey(int time, float value) {
    Key key;
    key.time = time;
    key.value = value;
    key.inType = key.outType = Tangent::linear;
    return key;
}

scene::FloatController LinearKeys(const std::vector<std::pair<int, float>>& keys) {
    std::vector<Key> result;
    for (const auto& [time, value] : keys) {
        result.push_back(LinearKey(time, value));
    }
    return Keyed(result);
}

// The bytes behind the motion part of a scene of one node.
std::string Tracks(const scene::Transform& transform) {
    const std::string bytes = WriteMotion(NodeScene(transform), 0).bytes;
    EXPECT_GE(bytes.size(), 312u) << "no motion part";
    return bytes.size() < 312 ? "" : bytes.substr(312);
}

// The track of a position whose x axis has this one key; the other axes have linear ones.
std::string TrackOfKey(const Key& key) {
    return Tracks(
        Prs(Axes(Keyed({key}), LinearKeys({{key.time, 0.0f}}), LinearKeys({{key.time, 0.0f}}))));
}

TEST(KeyframedMotion, APartWithItsThreeTracksByteForByte) {
    scene::ThreeAxisController scaling;
    Key3 key3;
    key3.time = 512;
    key3.value = {2, 3, 4};
    key3.inType = Tangent::step;
    key3.outType = Tangent::linear;
    scaling.kind = scene::BezierScale{{key3}, {1, 1, 1}};
    const auto position = Axes(LinearKeys({{0, 1}, {1024, 5}}), LinearKeys({{0, 2}, {1024, 6}}),
                               LinearKeys({{0, 3}, {1024, 7}}));
    // Half a turn about x, in an axis order that shows.
    const auto rotation =
        Axes(LinearKeys({{0, 0}}), LinearKeys({{0, 0.5f}}), LinearKeys({{256, 0}}));

    // Keys keep x, y, z; the part's pose holds x, z, y.
    const std::string positionTrack = KeyframedHead(2, 'P') +
                                      KeyRecord(0, {1, 2, 3}, 7, {3, 3, 3, 3, 3, 3}) +
                                      KeyRecord(1, {5, 6, 7}, 7, {3, 3, 3, 3, 3, 3});
    const std::string rotationTrack =
        KeyframedHead(1, 'r') + KeyRecord(0, {0, 0.5f * kDegrees, 0}, 7, {3, 3, 1, 3, 3, 1});
    const std::string scaleTrack =
        KeyframedHead(1, 'S') + KeyRecord(0.5f, {2, 3, 4}, 7, {4, 4, 4, 3, 3, 3});

    const Written all = WriteMotion(NodeScene(Prs(position, rotation, scaling)), 0);
    EXPECT_EQ(all.bytes.substr(312), positionTrack + rotationTrack + scaleTrack);
    EXPECT_THAT(all.log,
                ElementsAre("- Exporting motionpart 'Mover'", "  + Exporting animation keyframes"));
    const Written one = WriteMotion(NodeScene(Prs(position)), 0);
    EXPECT_EQ(one.bytes, MotionPart("Mover", {.translation = {1, 3, 2}}) + positionTrack);
    EXPECT_EQ(Tracks(Prs({}, rotation)), rotationTrack);
    EXPECT_EQ(Tracks(Prs({}, {}, scaling)), scaleTrack);
}

TEST(KeyframedMotion, FirstRecordTakesTheFirstKeyOfEveryAxis) {
    // X at 0 and 10, Y at 5, Z nowhere: two records, and Y's key has none of its own.
    const std::string tracks =
        Tracks(Prs(Axes(LinearKeys({{0, 1}, {10, 2}}), LinearKeys({{5, 3}}), Constant(4))));
    EXPECT_EQ(tracks, KeyframedHead(2, 'P') + KeyRecord(0, {1, 3, 0}, 7, {3, 1, 1, 3, 1, 1}) +
                          KeyRecord(0.009765625f, {2, 0, 0}, 1, {3, 1, 1, 3, 1, 1}));
}

TEST(KeyframedMotion, KeysOfOneTimeShareARecord) {
    const std::string tracks = Tracks(Prs(Axes(LinearKeys({{0, 1}, {512, 2}, {1024, 3}}),
                                               LinearKeys({{0, 4}, {1024, 5}, {2048, 6}}),
                                               LinearKeys({{0, 7}, {512, 8}, {2048, 9}}))));
    EXPECT_EQ(tracks, KeyframedHead(4, 'P') + KeyRecord(0, {1, 4, 7}, 7, {3, 3, 3, 3, 3, 3}) +
                          KeyRecord(0.5f, {2, 0, 8}, 5, {3, 1, 3, 3, 1, 3}) +
                          KeyRecord(1, {3, 5, 0}, 3, {3, 3, 1, 3, 3, 1}) +
                          KeyRecord(2, {0, 6, 9}, 6, {1, 3, 3, 1, 3, 3}));
}

TEST(KeyframedMotion, SizeIsThatOfTheHeadHoweverManyKeys) {
    const std::string tracks = Tracks(
        Prs(Axes(LinearKeys({{0, 1}, {1, 1}, {2, 1}, {3, 1}, {4, 1}}), Constant(0), Constant(0))));
    EXPECT_EQ(tracks.substr(0, 20), KeyframedHead(5, 'P'));
    EXPECT_EQ(tracks.size(), 20 + 5 * 26u);
}

TEST(KeyframedMotion, TangentTypesHaveTheirCodes) {
    const std::pair<Tangent, std::uint8_t> types[] = {
        {Tangent::smooth, 5}, {Tangent::linear, 3}, {Tangent::step, 4}, {Tangent::fast, 5},
        {Tangent::slow, 5},   {Tangent::custom, 5}, {Tangent::flat, 5}};
    for (const auto& [in, inCode] : types) {
        for (const auto& [out, outCode] : types) {
            Key key = LinearKey(1024, 8);
            key.inType = in;
            key.outType = out;
            key.inTangent = -0.5f;
            key.outTangent = 0.25f;
            key.inLength = 0.25f;
            key.outLength = 0.5f;
            std::vector<ExpectedTangent> tangents;
            if (inCode == 5) {
                tangents.push_back({0.25f * kMost, 1024 * 0.5f * 0.25f * kMost});
            }
            if (outCode == 5) {
                tangents.push_back({0.5f * kMost, 1024 * 0.25f * 0.5f * kMost});
            }
            EXPECT_EQ(TrackOfKey(key),
                      KeyframedHead(1, 'P') +
                          KeyRecord(1, {8, 0, 0}, 7, {inCode, 3, 3, outCode, 3, 3}, tangents))
                << static_cast<int>(in) << " " << static_cast<int>(out);
        }
    }
}

TEST(KeyframedMotion, TangentsStandInTheOrderOfTheCodes) {
    std::vector<scene::FloatController> axes;
    for (int i = 1; i <= 3; ++i) {
        Key key;
        key.inTangent = static_cast<float>(-i);
        key.outTangent = static_cast<float>(i * 10);
        key.inLength = 0.25f;
        key.outLength = 0.5f;
        axes.push_back(Keyed({key}));
    }
    const float in = 0.25f * kMost, out = 0.5f * kMost;
    EXPECT_EQ(Tracks(Prs(Axes(axes[0], axes[1], axes[2]))),
              KeyframedHead(1, 'P') + KeyRecord(0, {0, 0, 0}, 7, {5, 5, 5, 5, 5, 5},
                                                {{in, 1024 * in},
                                                 {in, 2 * 1024 * in},
                                                 {in, 3 * 1024 * in},
                                                 {out, 10 * 1024 * out},
                                                 {out, 20 * 1024 * out},
                                                 {out, 30 * 1024 * out}}));
}

TEST(KeyframedMotion, InTangentsPointBackSoTheirSlopeIsNegated) {
    // A rising line: in-tangent -2 and out-tangent 2 a tick; both slopes rise.
    Key key;
    key.inTangent = -2;
    key.outTangent = 2;
    key.inLength = key.outLength = 1;
    EXPECT_EQ(TrackOfKey(key),
              KeyframedHead(1, 'P') + KeyRecord(0, {0, 0, 0}, 7, {5, 3, 3, 5, 3, 3},
                                                {{kMost, 2048 * kMost}, {kMost, 2048 * kMost}}));
}

TEST(KeyframedMotion, RotationIsInDegrees) {
    Key key;
    key.value = 2;
    key.outTangent = 0.125f;
    key.inTangent = 0.5f;
    key.inLength = 0.5f;
    key.outLength = 0.25f;
    // The slopes are too; products with powers of two are exact.
    const float inLength = 0.5f * kMost, outLength = 0.25f * kMost;
    EXPECT_EQ(Tracks(Prs({}, Axes(Constant(1), Constant(1), Keyed({key})))),
              KeyframedHead(1, 'r') + KeyRecord(0, {0, 0, 114.59156f}, 7, {1, 1, 5, 1, 1, 5},
                                                {{inLength, -512 * kDegrees * inLength},
                                                 {outLength, 128 * kDegrees * outLength}}));
}

TEST(KeyframedMotion, LengthsAreCutAndSlopesAreNot) {
    struct Case {
        float length, written, forSlope;
    };
    // 1e-5 is met from below and from above; a length of -1 marks a first or last key.
    const Case cases[] = {{1, kMost, kMost},
                          {1.5f, kMost, 1.5f * kMost},
                          {64, kMost, 64 * kMost},
                          {3e-6f, kLeast, 3e-6f * kMost},
                          {4e-6f, 4e-6f * kMost, 4e-6f * kMost},
                          {-1, kLeast, -kMost}};
    for (const Case& c : cases) {
        Key key;
        key.inTangent = -0.5f;
        key.outTangent = 0.25f;
        key.inLength = key.outLength = c.length;
        EXPECT_EQ(TrackOfKey(key),
                  KeyframedHead(1, 'P') +
                      KeyRecord(0, {0, 0, 0}, 7, {5, 3, 3, 5, 3, 3},
                                {{c.written, 512 * c.forSlope}, {c.written, 256 * c.forSlope}}))
            << c.length;
    }
}

TEST(KeyframedMotion, LengthOfZeroRepeatsTheLastTangentOfTheTrack) {
    Key first, second;
    first.inTangent = first.outTangent = 9;
    first.inLength = first.outLength = 0;
    second.time = 1024;
    second.inTangent = -1;
    second.inLength = 2;
    second.outTangent = 9;
    second.outLength = 0;
    Key later = second;
    later.time = 2048;
    later.inLength = 0;
    // Nothing is there to repeat at first, in each of the tracks. What is repeated is what was
    // written, slope included.
    const ExpectedTangent none = {kLeast, 0}, cut = {kMost, 1024 * 2 * kMost};
    const auto axes = Axes(Keyed({first, second, later}), Constant(0), Constant(0));
    const auto expected = [&](char letter, float scale) {
        const ExpectedTangent repeated = {cut.length, cut.slope * scale};
        return KeyframedHead(3, letter) +
               KeyRecord(0, {0, 0, 0}, 7, {5, 1, 1, 5, 1, 1}, {none, none}) +
               KeyRecord(1, {0, 0, 0}, 1, {5, 1, 1, 5, 1, 1}, {repeated, repeated}) +
               KeyRecord(2, {0, 0, 0}, 1, {5, 1, 1, 5, 1, 1}, {repeated, repeated});
    };
    EXPECT_EQ(Tracks(Prs(axes, axes)), expected('P', 1) + expected('r', kDegrees));
}

TEST(KeyframedMotion, ScaleKeysHaveAllAxesAndOneTypeASide) {
    Key3 key;
    key.time = 1024;
    key.value = {1, 2, 3};
    key.inType = Tangent::custom;
    key.outType = Tangent::smooth;
    key.inTangent = {-1, -2, 4};
    key.outTangent = {8, 16, 32};
    key.inLength = {0.25f, 0.5f, 1};
    key.outLength = {0, 2, 1e-7f};
    Key3 step;
    step.time = 2048;
    step.value = {4, 5, 6};
    step.inType = Tangent::linear;
    step.outType = Tangent::step;
    scene::ThreeAxisController scaling;
    scaling.kind = scene::BezierScale{{key, step}, {1, 1, 1}};
    EXPECT_EQ(Tracks(Prs({}, {}, scaling)), KeyframedHead(2, 'S') +
                                                KeyRecord(1, {1, 2, 3}, 7, {5, 5, 5, 5, 5, 5},
                                                          {{0.25f * kMost, 1024 * 0.25f * kMost},
                                                           {0.5f * kMost, 2048 * 0.5f * kMost},
                                                           {kMost, -4096 * kMost},
                                                           {kMost, -4096 * kMost},
                                                           {kMost, 16384 * 2 * kMost},
                                                           {kLeast, 32768 * (1e-7f * kMost)}}) +
                                                KeyRecord(2, {4, 5, 6}, 7, {3, 3, 3, 4, 4, 4}));
}

TEST(KeyframedMotion, TimesAreTicksByFrameRateAndTicksPerFrame) {
    struct Case {
        int frameRate, ticksPerFrame;
        float seconds;  // of tick 1000
    };
    const Case cases[] = {{24, 200, 0.208333333f},
                          {25, 192, 0.208333333f},
                          {30, 160, 0.208333333f},
                          {60, 80, 0.208333333f},
                          {29, 165, 0.208986416f},
                          {7, 13, 10.98901099f},
                          {1, 1, 1000},
                          {4800, 1, 0.208333333f}};
    for (const Case& c : cases) {
        Key key;
        key.time = 1000;
        key.outTangent = 0.5f;
        key.outLength = 0.25f;
        key.inType = Tangent::linear;
        const auto scene = NodeScene(Prs(Axes(Keyed({key}), Constant(0), Constant(0))),
                                     {c.frameRate, c.ticksPerFrame, 0, 100});
        const float ticksPerSecond = static_cast<float>(c.frameRate * c.ticksPerFrame);
        EXPECT_EQ(WriteMotion(scene, 0).bytes.substr(312),
                  KeyframedHead(1, 'P') +
                      KeyRecord(c.seconds, {0, 0, 0}, 7, {3, 1, 1, 5, 1, 1},
                                {{0.25f * kMost, ticksPerSecond * 0.5f * (0.25f * kMost)}}))
            << c.frameRate << " " << c.ticksPerFrame;
    }
}

TEST(KeyframedMotion, NegativeTimesAndThoseAtTheEndsOfTime) {
    // A key at the last tick of all is not taken for the end of its axis.
    const std::string tracks = Tracks(
        Prs(Axes(LinearKeys({{-1024, 1}, {INT_MAX, 2}}), LinearKeys({{INT_MIN, 3}}), Constant(0))));
    EXPECT_EQ(tracks, KeyframedHead(2, 'P') +
                          KeyRecord(-2097152, {1, 3, 0}, 7, {1, 3, 1, 1, 3, 1}) +
                          KeyRecord(2097152, {2, 0, 0}, 1, {3, 1, 1, 3, 1, 1}));
    EXPECT_EQ(Tracks(Prs(Axes(LinearKeys({{INT_MAX, 2}}), Constant(0), Constant(0)))),
              KeyframedHead(1, 'P') + KeyRecord(2097152, {2, 0, 0}, 7, {3, 1, 1, 3, 1, 1}));
}

// ---------------------------------------------------------------- what has no keyframed track

scene::FloatController OtherClass() {
    scene::FloatController controller = LinearKeys({{0, 1}, {512, 2}});
    controller.classId = {0x2001, 0};
    return controller;
}

TEST(KeyframedMotion, AnAxisOfAnotherClassLeavesTheTrackOut) {
    const auto keyed = LinearKeys({{0, 0}, {512, 2}});
    scene::FloatController list, wire;
    list.kind = scene::FloatList{{{1, std::make_shared<const scene::FloatController>(keyed)}}};
    wire.kind = scene::WireFloat{};
    scene::FloatController pretender = list;  // of the right class, but without keys
    pretender.classId = {0x2007, 0};
    const std::optional<scene::FloatController> others[] = {OtherClass(), list, wire, pretender,
                                                            std::nullopt};
    for (const auto& other : others) {
        for (int place = 0; place < 3; ++place) {
            std::array<std::optional<scene::FloatController>, 3> axes = {keyed, keyed, keyed};
            axes[place] = other;
            const auto uneven = Axes(axes[0], axes[1], axes[2]);
            EXPECT_EQ(WriteMotion(NodeScene(Prs(uneven, uneven)), 0).bytes, "");
            // The other one does not suffer.
            const std::string tracks = Tracks(Prs(uneven, Axes(keyed, keyed, keyed)));
            EXPECT_EQ(tracks.substr(0, 20), KeyframedHead(2, 'r'));
            EXPECT_EQ(tracks.size(), 20 + 2 * 26u);
        }
    }
}

TEST(KeyframedMotion, TrackOfAnotherClassWritesNothingWhenAskedForByItself) {
    scene::ThreeAxisController scaling;
    scaling.kind = scene::BezierScale{{Key3{}}, {1, 1, 1}};
    scaling.classId = {0x2004, 0};
    const auto uneven = Axes(OtherClass(), Constant(0), Constant(0));
    std::vector<std::optional<scene::Transform>> transforms = {Prs(uneven, uneven, scaling),
                                                               Prs({}), std::nullopt};
    for (const auto& transform : transforms) {
        scene::Scene scene = NodeScene({});
        scene.nodes[0].transform = transform;
        const Written written = support::Write(scene, 0, [](OpenPass& pass, const auto& nodes) {
            WriteKeyframedTrack(*pass, nodes[0], 'P');
            WriteKeyframedTrack(*pass, nodes[0], 'r');
            WriteKeyframedScaleTrack(*pass, nodes[0]);
        });
        EXPECT_EQ(written.bytes, "");
        EXPECT_THAT(written.log, ElementsAre());
    }
}

TEST(KeyframedMotion, OnlyKeysAnimate) {
    // Constants, a sampled and a constant transform, scales of other classes, no controller at all.
    scene::Transform sampled, matrix;
    scene::Matrix moved = scene::kIdentity;
    moved[3] = {9, 9, 9};
    sampled.kind = scene::SampledTransform{{{0, scene::kIdentity}, {1024, moved}}};
    matrix.kind = scene::MatrixTransform{moved};
    scene::ThreeAxisController empty, other;
    empty.kind = scene::BezierScale{};
    other.kind = scene::BezierScale{{Key3{}}, {1, 1, 1}};
    other.classId = {0x2004, 0};
    const auto keyed = LinearKeys({{0, 1}, {512, 2}});
    const std::optional<scene::Transform> transforms[] = {Prs(Axes(1, 2, 3), Axes(1, 2, 3), empty),
                                                          Prs({}, {}, other),
                                                          Prs({}, {}, Axes(keyed, keyed, keyed)),
                                                          sampled,
                                                          matrix,
                                                          std::nullopt};
    for (const auto& transform : transforms) {
        scene::Scene scene = NodeScene({});
        scene.nodes[0].transform = transform;
        const Written written = WriteMotion(scene, 0);
        EXPECT_EQ(written.bytes, "");
        EXPECT_THAT(written.log, ElementsAre("- Exporting motionpart 'Mover'"));
    }
}

TEST(KeyframedMotion, OneKeyOnOneAxisAnimates) {
    for (int axis = 0; axis < 3; ++axis) {
        std::array<scene::FloatController, 3> axes = {Constant(0), Constant(0), Constant(0)};
        axes[axis] = LinearKeys({{0, 4}});
        const auto one = Axes(axes[0], axes[1], axes[2]);
        for (const bool isRotation : {false, true}) {
            bool position, rotation, scale, any;
            support::Write(NodeScene(isRotation ? Prs({}, one) : Prs(one)), 0,
                           [&](OpenPass& pass, const auto& nodes) {
                               any = DetectAnimation(*pass, nodes[0], position, rotation, scale);
                           });
            EXPECT_TRUE(any);
            EXPECT_EQ(position, !isRotation);
            EXPECT_EQ(rotation, isRotation);
            EXPECT_FALSE(scale);
        }
    }
}

}  // namespace
