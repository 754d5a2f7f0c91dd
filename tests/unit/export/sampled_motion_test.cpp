// Sampled tracks: a node's local transform on a grid of frames, to the byte.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <maxapi.h>

#include <climits>

#include "host/sdk/calls.h"
#include "tests/support/array_storage.h"
#include "tests/support/chunks.h"
#include "tests/unit/export/motion_file.h"

namespace {

namespace scene = maxhost::scene;
using support::Axes;
using support::Bytes;
using support::Constant;
using support::EvenTime;
using support::MakeNode;
using support::MotionPart;
using support::NodeScene;
using support::OpenPass;
using support::Prs;
using support::Ramp;
using support::SampledHead;
using support::Write;
using support::WriteMotion;
using support::Written;
using testing::ElementsAre;

// Moves along x by 1 a tick, long before tick 0 as well.
scene::Transform LongRunner() {
    return Prs(Axes(Ramp(-100000, -100000, 100000, 100000), Constant(0), Constant(0)));
}

std::string VectorKey(float time, const std::array<float, 3>& value) {
    return Bytes().F32({time}).F32(value).Str();
}

std::string RotationKey(float time, const std::array<float, 4>& q) {
    return Bytes().F32({time, q[0], q[1], q[2], q[3]}).Str();
}

// A track of the scene's first node, written by itself.
Written Track(const scene::Scene& scene, char letter, int sampleRate = 1) {
    return Write(scene, sampleRate, [&](OpenPass& pass, const auto& nodes) {
        WriteSampledTrack(*pass, nodes[0], letter);
    });
}

TEST(SampledMotion, GridTimesAndTheEnd) {
    // 1000 ticks a second, 40 a frame.
    const Written written = WriteMotion(NodeScene(LongRunner(), {25, 40, 0, 100}), 1);
    EXPECT_EQ(written.bytes, MotionPart("Mover") + SampledHead(72, 4, 'P') +
                                 VectorKey(0, {0, 0, 0}) + VectorKey(0.04f, {40, 0, 0}) +
                                 VectorKey(0.08f, {80, 0, 0}) + VectorKey(0.1f, {100, 0, 0}));
    EXPECT_THAT(written.log,
                ElementsAre("- Exporting motionpart 'Mover'",
                            "  + Animation detected, now exporting samples...", "    + NrKeys = 4",
                            "    + Type   = P", "    + Size   = 72 bytes"));
    const Written rotation = Track(NodeScene(LongRunner(), {25, 40, 0, 100}), 'R');
    EXPECT_EQ(rotation.bytes.substr(0, 20), SampledHead(88, 4, 'R'));
    EXPECT_EQ(rotation.bytes.size(), 12 + 88u);
    EXPECT_THAT(rotation.log,
                ElementsAre("    + NrKeys = 4", "    + Type   = R", "    + Size   = 88 bytes"));
}

TEST(SampledMotion, AnEndOnTheGridIsWrittenTwice) {
    EXPECT_EQ(WriteMotion(NodeScene(LongRunner(), {25, 40, 0, 80}), 1).bytes,
              MotionPart("Mover") + SampledHead(72, 4, 'P') + VectorKey(0, {0, 0, 0}) +
                  VectorKey(0.04f, {40, 0, 0}) + VectorKey(0.08f, {80, 0, 0}) +
                  VectorKey(0.08f, {80, 0, 0}));
}

TEST(SampledMotion, ARangeThatEndsBeforeItStartsIsOneKeyAtItsEnd) {
    const scene::Scene backwards = NodeScene(LongRunner(), {25, 40, 100, 60});
    const Written written = Track(backwards, 'P');
    EXPECT_EQ(written.bytes, SampledHead(24, 1, 'P') + VectorKey(0.06f, {60, 0, 0}));
    EXPECT_THAT(written.log,
                ElementsAre("    + NrKeys = 1", "    + Type   = P", "    + Size   = 24 bytes"));
    // Nothing is animated there, however far back the end lies.
    EXPECT_EQ(WriteMotion(backwards, 1).bytes, "");
    for (const int start : {61, 99, 101, 1000, INT_MAX}) {
        EXPECT_EQ(Track(NodeScene(LongRunner(), {25, 40, start, 60}), 'P').bytes,
                  SampledHead(24, 1, 'P') + VectorKey(0.06f, {60, 0, 0}))
            << start;
    }
}

TEST(SampledMotion, ARangeOfOneTickIsThatTickTwice) {
    const scene::Scene still = NodeScene(LongRunner(), {25, 40, 30, 30});
    EXPECT_EQ(Track(still, 'P').bytes, SampledHead(40, 2, 'P') + VectorKey(0.03f, {30, 0, 0}) +
                                           VectorKey(0.03f, {30, 0, 0}));
    EXPECT_EQ(WriteMotion(still, 1).bytes, "");
    const scene::Scene first = NodeScene(LongRunner(), EvenTime(0, 0));
    EXPECT_EQ(Track(first, 'P', 0).bytes,
              SampledHead(40, 2, 'P') + VectorKey(0, {0, 0, 0}) + VectorKey(0, {0, 0, 0}))
        << "at tick 0 with a step of one tick";
}

TEST(SampledMotion, StepIsSoManyFrames) {
    EXPECT_EQ(Track(NodeScene(LongRunner(), {25, 40, -40, 240}), 'P', 3).bytes,
              SampledHead(72, 4, 'P') + VectorKey(-0.04f, {-40, 0, 0}) +
                  VectorKey(0.08f, {80, 0, 0}) + VectorKey(0.2f, {200, 0, 0}) +
                  VectorKey(0.24f, {240, 0, 0}));
}

TEST(SampledMotion, AStepBelowOneTickCountsAsOneTick) {
    const scene::Scene scene = NodeScene(LongRunner(), EvenTime(0, 2));
    for (const int rate : {0, -1, INT_MIN}) {
        EXPECT_EQ(Track(scene, 'P', rate).bytes, SampledHead(72, 4, 'P') + VectorKey(0, {0, 0, 0}) +
                                                     VectorKey(0.0009765625f, {1, 0, 0}) +
                                                     VectorKey(0.001953125f, {2, 0, 0}) +
                                                     VectorKey(0.001953125f, {2, 0, 0}))
            << rate;
    }
}

TEST(SampledMotion, StepsAndTimesAtTheEndsOfTheIntegers) {
    const float last = 2147483647.0f / 1024;
    // One step from the start is behind the last tick of all.
    EXPECT_EQ(Track(NodeScene(LongRunner(), EvenTime(INT_MAX - 40, INT_MAX)), 'P').bytes,
              SampledHead(56, 3, 'P') + VectorKey(last, {100000, 0, 0}) +
                  VectorKey(last, {100000, 0, 0}) + VectorKey(last, {100000, 0, 0}));
    EXPECT_EQ(Track(NodeScene(LongRunner(), EvenTime(INT_MIN, INT_MAX)), 'P', INT_MAX).bytes,
              SampledHead(40, 2, 'P') + VectorKey(-2097152, {-100000, 0, 0}) +
                  VectorKey(last, {100000, 0, 0}));
    // 2^31 - 1 ticks a frame: -2^31, -1, 2^31 - 2, and the end.
    EXPECT_EQ(Track(NodeScene(LongRunner(), {1, INT_MAX, INT_MIN, INT_MAX}), 'P').bytes,
              SampledHead(72, 4, 'P') + VectorKey(-1, {-100000, 0, 0}) +
                  VectorKey(-1 / 2147483648.0f, {-1, 0, 0}) + VectorKey(1, {100000, 0, 0}) +
                  VectorKey(1, {100000, 0, 0}));
}

TEST(SampledMotion, TimesAreTicksByFrameRateAndTicksPerFrame) {
    struct Case {
        int frameRate, ticksPerFrame;
        float frame, end;  // seconds of one frame and of tick 1000
    };
    const Case cases[] = {
        {24, 200, 0.0416666667f, 0.208333333f}, {25, 192, 0.04f, 0.208333333f},
        {30, 160, 0.0333333333f, 0.208333333f}, {60, 80, 0.0166666667f, 0.208333333f},
        {29, 165, 0.0344827586f, 0.208986416f}, {7, 13, 0.142857143f, 10.98901099f}};
    for (const Case& c : cases) {
        const std::string bytes =
            Track(NodeScene(LongRunner(), {c.frameRate, c.ticksPerFrame, 0, 1000}), 'P').bytes;
        const float frameX = static_cast<float>(c.ticksPerFrame);
        EXPECT_EQ(bytes.substr(20, 32),
                  VectorKey(0, {0, 0, 0}) + VectorKey(c.frame, {frameX, 0, 0}));
        EXPECT_EQ(bytes.substr(bytes.size() - 16), VectorKey(c.end, {1000, 0, 0})) << c.frameRate;
        EXPECT_EQ(bytes.size(), 20 + 16u * (1000 / c.ticksPerFrame + 2));
    }
}

// All three: a move by (1, 2, 3), a quarter turn about z, factors 2, 3 and 4.
scene::Transform MovesTurnsAndGrows() {
    scene::Transform transform;
    transform.kind = scene::SampledTransform{
        {{0, scene::kIdentity}, {32, {{{0, 2, 0}, {-3, 0, 0}, {0, 0, 4}, {1, 2, 3}}}}}};
    return transform;
}

TEST(SampledMotion, VectorsAndRotationsAreInTheFilesAxes) {
    const Written written = WriteMotion(NodeScene(MovesTurnsAndGrows(), EvenTime(0, 32)), 1);
    const float frame = 0.03125f;
    // The matrix is scale, then rotation; factors along the axes before the turn. By the left-hand
    // rule the turn about z is negative; z is the file's second axis.
    const std::string expected = MotionPart("Mover") + SampledHead(56, 3, 'P') +
                                 VectorKey(0, {0, 0, 0}) + VectorKey(frame, {1, 3, 2}) +
                                 VectorKey(frame, {1, 3, 2}) + SampledHead(68, 3, 'R') +
                                 RotationKey(0, {0, 0, 0, 1});
    ASSERT_EQ(written.bytes.substr(0, expected.size()), expected);
    ASSERT_EQ(written.bytes.size(), expected.size() + 40 + 20 + 48);
    const std::string rotation = written.bytes.substr(expected.size(), 20);
    EXPECT_EQ(written.bytes.substr(expected.size() + 20, 20), rotation) << "the end, again";
    std::array<float, 5> turned;
    std::memcpy(turned.data(), rotation.data(), 20);
    EXPECT_EQ(turned[0], frame);
    EXPECT_THAT(turned, ElementsAre(frame, 0, testing::FloatNear(-support::kHalfRoot, 1e-6f), 0,
                                    testing::FloatNear(support::kHalfRoot, 1e-6f)));
    const std::string scale = written.bytes.substr(expected.size() + 40);
    EXPECT_EQ(scale, SampledHead(56, 3, 'S') + VectorKey(0, {1, 1, 1}) +
                         VectorKey(frame, {2, 4, 3}) + VectorKey(frame, {2, 4, 3}));
    EXPECT_THAT(written.log,
                ElementsAre("- Exporting motionpart 'Mover'",
                            "  + Animation detected, now exporting samples...", "    + NrKeys = 3",
                            "    + Type   = P", "    + Size   = 56 bytes", "    + NrKeys = 3",
                            "    + Type   = R", "    + Size   = 68 bytes", "    + NrKeys = 3",
                            "    + Type   = S", "    + Size   = 56 bytes"));
}

TEST(SampledMotion, AnyOtherLetterIsAHeadAlone) {
    const Written written = Track(NodeScene(LongRunner(), {25, 40, 0, 100}), 'r');
    EXPECT_EQ(written.bytes, SampledHead(8, 4, 'r'));
    EXPECT_THAT(written.log,
                ElementsAre("    + NrKeys = 4", "    + Type   = r", "    + Size   = 8 bytes"));
}

TEST(SampledMotion, TransformsAreRelativeToTheParentAtEachTime) {
    scene::Scene scene = NodeScene(LongRunner(), EvenTime(0, 32));
    scene.nodes.push_back(MakeNode("Rider", 0));
    scene.nodes[1].transform = Prs(Axes(Constant(5), Ramp(0, 0, 32, 64), Constant(0)));
    scene.nodes.push_back(MakeNode("Passenger", 0));
    scene.nodes[2].transform = Prs(Axes(7, 0, 0));
    const std::string bytes = WriteMotion(scene, 1).bytes;
    const std::size_t one = 312 + 20 + 48;
    EXPECT_EQ(bytes.size(), 2 * one) << "the passenger does not move";
    EXPECT_EQ(bytes.substr(one), MotionPart("Rider", {.translation = {5, 0, 0}}) +
                                     SampledHead(56, 3, 'P') + VectorKey(0, {5, 0, 0}) +
                                     VectorKey(0.03125f, {5, 0, 64}) +
                                     VectorKey(0.03125f, {5, 0, 64}));
}

TEST(SampledMotion, GeometricNodesTakeTheObjectOffsetAlong) {
    scene::Mesh mesh;
    mesh.vertices = {{0, 0, 0}};
    scene::Scene scene = NodeScene(LongRunner(), EvenTime(0, 32));
    scene.nodes[0].objectOffset[3] = {0, 0, 10};
    scene.nodes[0].object.emplace();
    scene.nodes[0].object->mesh = std::make_shared<const scene::Mesh>(mesh);
    EXPECT_EQ(WriteMotion(scene, 1).bytes, MotionPart("Mover", {.translation = {0, 10, 0}}) +
                                               SampledHead(56, 3, 'P') + VectorKey(0, {0, 10, 0}) +
                                               VectorKey(0.03125f, {32, 10, 0}) +
                                               VectorKey(0.03125f, {32, 10, 0}));
}

TEST(SampledMotion, PoseIsThatOfTickZeroWhereverTheRangeStarts) {
    EXPECT_EQ(
        WriteMotion(
            NodeScene(Prs(Axes(Ramp(0, 3, 64, 67), Constant(1), Constant(2))), EvenTime(32, 64)), 1)
            .bytes,
        MotionPart("Mover", {.translation = {3, 2, 1}}) + SampledHead(56, 3, 'P') +
            VectorKey(0.03125f, {35, 2, 1}) + VectorKey(0.0625f, {67, 2, 1}) +
            VectorKey(0.0625f, {67, 2, 1}));
}

TEST(SampledMotion, SamplesAreGivenBackAfterEachNode) {
    scene::Scene scene = NodeScene(LongRunner(), {25, 40, 0, 40000});
    for (int i = 1; i < 8; ++i) {
        scene.nodes.push_back(scene.nodes[0]);
    }
    std::vector<std::size_t> peaks;
    Write(scene, 1, [&](OpenPass& pass, const auto& nodes) {
        for (const std::size_t count : {1, 8}) {
            const ArrayStorage storage;
            for (std::size_t i = 0; i < count; ++i) {
                ExportMotionPart(*pass, nodes[i]);
            }
            peaks.push_back(storage.Peak());
        }
    });
    EXPECT_GE(peaks[0], 1001 * 40u);
    EXPECT_EQ(peaks[1], peaks[0]);
}

// Of four nodes that were announced, with five keys each.
TEST(SampledMotion, BlocksOfNodesHoldWhatMayBeKept) {
    maxhost::Host& host = maxhost::Host::Instance();
    scene::Scene scene = NodeScene(LongRunner());
    for (int i = 1; i < 4; ++i) {
        scene.nodes.push_back(scene.nodes[0]);
        scene.nodes.back().objectOffset[3] = {0, 0, static_cast<float>(i)};
        scene.nodes.back().parent = i - 1;
    }
    host.OpenScene(std::move(scene));
    struct Case {
        int most;
        std::uint64_t calls;  // two an evaluated sample
    };
    // All four; two and two; one by one; one by one, with the fifth sample of each evaluated twice.
    for (const Case& c : {Case{20, 40}, Case{10, 40}, Case{9, 40}, Case{4, 48}}) {
        const maxhost::CallCounts before = maxhost::CountedCalls();
        TransformSamples samples(nullptr, c.most);
        for (INode* node : host.Nodes()) {
            samples.Announce(node);
        }
        for (INode* node : host.Nodes()) {
            samples.Choose(node, Interval(0, 35), 10);
            for (int round = 0; round < 2; ++round) {
                for (int i = 0; i < 5; ++i) {
                    const float expected = i < 4 ? 10.0f * static_cast<float>(i) : 35;
                    EXPECT_EQ(samples.KeySample(i).translation.x, expected) << c.most << ", " << i;
                }
            }
            samples.Release();
        }
        EXPECT_EQ(maxhost::CallsSince(before).nodeTransforms, c.calls) << c.most;
    }
    host.CloseScene();
}

TEST(SampledMotion, ACancelEndsABlockAndWhatIsAskedForIsEvaluatedAllTheSame) {
    maxhost::Host& host = maxhost::Host::Instance();
    scene::Scene scene = NodeScene(LongRunner());
    scene.nodes.push_back(scene.nodes[0]);
    host.OpenScene(std::move(scene));
    host.CancelAtUpdate(1);
    host.GetInterface()->ProgressUpdate(0);
    const maxhost::CallCounts before = maxhost::CountedCalls();
    TransformSamples samples(host.GetInterface());
    samples.Announce(host.Nodes()[0]);
    samples.Announce(host.Nodes()[1]);
    samples.Choose(host.Nodes()[0], Interval(0, 1000), 10);
    EXPECT_EQ(maxhost::CallsSince(before).nodeTransforms, 2u * 2) << "the first time of both";
    EXPECT_EQ(samples.KeySample(7).translation.x, 70);
    host.CancelAtUpdate(0);
    host.CloseScene();
}

TEST(SampledMotion, NoMoreSamplesAreKeptThanAreAllowed) {
    maxhost::Host& host = maxhost::Host::Instance();
    host.OpenScene(NodeScene(LongRunner()));
    const ArrayStorage storage;
    TransformSamples samples(nullptr, 3);
    samples.Choose(host.Nodes()[0], Interval(0, 100), 10);
    EXPECT_EQ(samples.KeyCount(), 12);
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 12; ++i) {
            const float expected = i < 11 ? 10.0f * static_cast<float>(i) : 100;
            EXPECT_EQ(samples.KeySample(i).translation.x, expected) << i;
        }
    }
    EXPECT_EQ(storage.Peak(), 3 * sizeof(TransformSample) + sizeof(NodePlace));
    host.CloseScene();
}

// ---------------------------------------------------------------- what is taken for animation

struct Detected {
    bool position, rotation, scale;
    bool operator==(const Detected&) const = default;
};

Detected Detect(const scene::Scene& scene) {
    Detected result{};
    Write(scene, 1, [&](OpenPass& pass, const auto& nodes) {
        const bool any =
            DetectAnimation(*pass, nodes[0], result.position, result.rotation, result.scale);
        EXPECT_EQ(any, result.position || result.rotation || result.scale);
    });
    return result;
}

// Of a node with these local matrices at ticks 0, 32, 64, ...
Detected Detect(const std::vector<scene::Matrix>& matrices) {
    scene::SampledTransform samples;
    for (std::size_t i = 0; i < matrices.size(); ++i) {
        samples.samples.push_back({static_cast<int>(32 * i), matrices[i]});
    }
    scene::Transform transform;
    transform.kind = samples;
    return Detect(NodeScene(transform, EvenTime(0, samples.samples.back().time)));
}

constexpr Detected kNothingMoves = {false, false, false};

TEST(SampledDetection, EachComponentOfTheTranslationBy1e5) {
    for (int axis = 0; axis < 3; ++axis) {
        for (const float sign : {1.0f, -1.0f}) {
            scene::Matrix moved = scene::kIdentity;
            moved[3][axis] = sign * 0.99e-5f;
            EXPECT_EQ(Detect({scene::kIdentity, moved}), kNothingMoves);
            moved[3][axis] = sign * 1.01e-5f;
            EXPECT_EQ(Detect({scene::kIdentity, moved}), (Detected{true, false, false}));
        }
    }
}

TEST(SampledDetection, EachFactorOfTheScaleBy1e5) {
    for (int axis = 0; axis < 3; ++axis) {
        for (const float sign : {1.0f, -1.0f}) {
            scene::Matrix grown = scene::kIdentity;
            grown[axis][axis] = 1 + sign * 0.9e-5f;
            EXPECT_EQ(Detect({scene::kIdentity, grown}), kNothingMoves);
            grown[axis][axis] = 1 + sign * 1.1e-5f;
            EXPECT_EQ(Detect({scene::kIdentity, grown}), (Detected{false, false, true}));
        }
    }
}

scene::Matrix TurnAboutZ(double angle) {
    const float c = static_cast<float>(std::cos(angle)), s = static_cast<float>(std::sin(angle));
    return {{{c, s, 0}, {-s, c, 0}, {0, 0, 1}, {0, 0, 0}}};
}

TEST(SampledDetection, AngleOfTheRotationBy1e5) {
    EXPECT_EQ(Detect({TurnAboutZ(1), TurnAboutZ(1 + 0.9e-5)}), kNothingMoves);
    EXPECT_EQ(Detect({TurnAboutZ(1), TurnAboutZ(1 + 1.1e-5)}), (Detected{false, true, false}));
    EXPECT_EQ(Detect({TurnAboutZ(1), TurnAboutZ(1 - 1.1e-5)}), (Detected{false, true, false}));
}

TEST(SampledDetection, AxisOfTheRotationBy1e5) {
    // Half a turn about an axis in the xz plane, tilted: the angle stays.
    const auto halfTurn = [](double tilt) {
        const double x = std::sin(tilt), z = std::cos(tilt);
        const auto f = [](double v) { return static_cast<float>(v); };
        return scene::Matrix{{{f(2 * x * x - 1), 0, f(2 * x * z)},
                              {0, -1, 0},
                              {f(2 * x * z), 0, f(2 * z * z - 1)},
                              {0, 0, 0}}};
    };
    EXPECT_EQ(Detect({halfTurn(0.5), halfTurn(0.5 + 0.8e-5)}), kNothingMoves);
    EXPECT_EQ(Detect({halfTurn(0.5), halfTurn(0.5 + 2.5e-5)}), (Detected{false, true, false}));
}

TEST(SampledDetection, TheFirstSampleIsTheReference) {
    scene::Matrix little = scene::kIdentity, more = scene::kIdentity;
    little[3][0] = 0.7e-5f;
    more[3][0] = 1.4e-5f;
    EXPECT_EQ(Detect({scene::kIdentity, little}), kNothingMoves);
    EXPECT_EQ(Detect({little, more}), kNothingMoves);
    EXPECT_EQ(Detect({scene::kIdentity, little, more}), (Detected{true, false, false}));
}

TEST(SampledDetection, OneSampleIsEnoughAndWhatIsFoundStays) {
    scene::Matrix moved = scene::kIdentity, grown = scene::kIdentity;
    moved[3][1] = 1;
    grown[2][2] = 3;
    const std::vector<scene::Matrix> there = {scene::kIdentity, moved, TurnAboutZ(1),
                                              scene::kIdentity, scene::kIdentity};
    EXPECT_EQ(Detect(there), (Detected{true, true, false}));
    EXPECT_EQ(Detect({scene::kIdentity, grown, moved}), (Detected{true, false, true}));
    EXPECT_EQ(Detect({grown, TurnAboutZ(1), moved}), (Detected{true, true, true}));
}

TEST(SampledDetection, LooksAtGridTimesAlone) {
    // Moves between two grid times, and between the last one and the end.
    const auto hop = Prs(Axes(support::Keyed({}), Constant(0), Constant(0)));
    scene::Transform between;
    scene::Matrix moved = scene::kIdentity;
    moved[3][0] = 1;
    between.kind = scene::SampledTransform{{{0, scene::kIdentity},
                                            {16, moved},
                                            {32, scene::kIdentity},
                                            {33, scene::kIdentity},
                                            {40, moved}}};
    EXPECT_EQ(Detect(NodeScene(between, EvenTime(0, 40))), kNothingMoves);
    EXPECT_EQ(WriteMotion(NodeScene(between, EvenTime(0, 40)), 1).bytes, "");
    EXPECT_EQ(Detect(NodeScene(between, EvenTime(0, 64))), (Detected{true, false, false}));
    EXPECT_EQ(Detect(NodeScene(hop, EvenTime(0, 64))), kNothingMoves);
}

TEST(SampledDetection, ANodeWithoutControllerStandsStill) {
    scene::Scene scene = NodeScene(LongRunner(), EvenTime(0, 64));
    scene.nodes.push_back(MakeNode("Still", 0));
    scene.nodes[1].transform.reset();
    const Written written = Write(
        scene, 1, [](OpenPass& pass, const auto& nodes) { ExportMotionPart(*pass, nodes[1]); });
    EXPECT_EQ(written.bytes, "");
    EXPECT_THAT(written.log, ElementsAre("- Exporting motionpart 'Still'"));
}

// A scale is that of the stretch alone; what mirrors has no place in the file.
TEST(SampledMotion, MirroringShowsInNoScale) {
    scene::SampledTransform samples;
    samples.samples.resize(2);
    samples.samples[1].time = 1024;
    for (int i = 0; i < 2; ++i) {
        const float size = static_cast<float>(i + 1);
        samples.samples[i].matrix = {scene::Vec3{-size, 0, 0}, scene::Vec3{0, 2 * size, 0},
                                     scene::Vec3{0, 0, 3 * size}, scene::Vec3{}};
    }
    const scene::Scene scene = NodeScene({"", {}, samples}, EvenTime(0, 1024));
    const std::string bytes = WriteMotion(scene, 1).bytes;
    EXPECT_NEAR(support::F32At(bytes, 12 + 288), 1, 1e-6);
    EXPECT_NEAR(support::F32At(bytes, 12 + 292), 3, 1e-6);
    EXPECT_NEAR(support::F32At(bytes, 12 + 296), 2, 1e-6);
    EXPECT_EQ(bytes[12 + 300 + 12 + 5], 'S') << "nothing else moves";
    EXPECT_NEAR(support::F32At(bytes, bytes.size() - 12), 2, 1e-6);
    EXPECT_NEAR(support::F32At(bytes, bytes.size() - 8), 6, 1e-6);
    EXPECT_NEAR(support::F32At(bytes, bytes.size() - 4), 4, 1e-6);
}

}  // namespace
