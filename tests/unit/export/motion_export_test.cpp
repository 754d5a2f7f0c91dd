// The motion pass: which nodes have motion parts, and what an export of them costs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "tests/support/chunks.h"
#include "tests/support/export_run.h"
#include "tests/unit/export/motion_file.h"

namespace {

namespace scene = maxhost::scene;
using support::Axes;
using support::Constant;
using support::EvenTime;
using support::Export;
using support::ExportChoices;
using support::ExportRun;
using support::FileHeader;
using support::MakeNode;
using support::MotionPart;
using support::NodeScene;
using support::OpenPass;
using support::Prs;
using support::Ramp;
using support::Write;
using support::WriteMotion;
using support::Written;
using testing::ElementsAre;

// Moves along x by 1 a tick, from 0 at tick 0.
scene::Transform Runner() {
    return Prs(Axes(Ramp(0, 0, 100000, 100000), Constant(0), Constant(0)));
}

// The settings file of these choices, otherwise the defaults.
std::string MotionSettings(bool exportHidden, bool motionsForHidden, bool sampled = false) {
    return support::Bytes()
        .U8(0)
        .U8(exportHidden)
        .U32(0x01010001)
        .U16(0)
        .F32({0.075f})
        .U32(4)
        .U8(motionsForHidden)
        .U8(sampled)
        .U16(0)
        .U32(1)
        .Str();
}

// The names in the motion parts of a file whose tracks are the keyframed ones of Runner.
std::vector<std::string> MovingNames(const std::string& motion) {
    constexpr std::size_t kTrack = 20 + 2 * 26;
    std::vector<std::string> names;
    for (std::size_t at = 7; at < motion.size(); at += 312 + kTrack) {
        EXPECT_EQ(support::U32At(motion, at), 1u);
        EXPECT_EQ(support::U32At(motion, at + 312), 2u);
        names.push_back(motion.c_str() + at + 12);
    }
    EXPECT_EQ(motion.size(), 7 + names.size() * (312 + kTrack));
    return names;
}

TEST(MotionExport, FileOfASceneThatStandsStillIsItsHeader) {
    for (const bool sampled : {false, true}) {
        scene::Scene scene = NodeScene(Prs(Axes(1, 2, 3)));
        scene.nodes.push_back(MakeNode("Still", 0));
        ExportChoices choices;
        choices.settings = MotionSettings(false, false, sampled);
        const ExportRun run = Export(scene, choices);
        EXPECT_EQ(run.motion, FileHeader(false));
        EXPECT_EQ(run.actor->substr(0, 7), FileHeader(true));
    }
}

TEST(MotionExport, WholeFile) {
    scene::Scene scene = NodeScene(Runner());
    scene.nodes.push_back(MakeNode("Still", 0));
    const std::string keys = support::KeyRecord(0, {0, 0, 0}, 7, {3, 1, 1, 3, 1, 1}) +
                             support::KeyRecord(97.65625f, {100000, 0, 0}, 1, {3, 1, 1, 3, 1, 1});
    const ExportRun run = Export(scene);
    EXPECT_EQ(run.motion,
              FileHeader(false) + MotionPart("Mover") + support::KeyframedHead(2, 'P') + keys);
    const std::vector<std::string> motionLog(run.log.end() - 5, run.log.end());
    EXPECT_THAT(motionLog,
                ElementsAre("Writing file header version 1.1", "- Exporting motionpart 'Mover'",
                            "  + Exporting animation keyframes", "- Exporting motionpart 'Still'",
                            "Closing file"));
}

TEST(MotionExport, SamplesByTheOptions) {
    scene::Scene scene = NodeScene(Runner(), EvenTime(0, 64));
    ExportChoices choices;
    choices.settings = MotionSettings(false, false, true);
    EXPECT_EQ(Export(scene, choices).motion->substr(7), WriteMotion(scene, 1).bytes);
    choices.settings->at(20) = 2;
    EXPECT_EQ(Export(scene, choices).motion->substr(7), WriteMotion(scene, 2).bytes);
    EXPECT_NE(WriteMotion(scene, 2).bytes, WriteMotion(scene, 1).bytes);
}

TEST(MotionExport, ChildrenFollowTheirParentsInOrder) {
    scene::Scene scene = NodeScene(Runner());
    for (const auto& [name, parent] :
         {std::pair("B", scene::kNone), {"A1", 0}, {"A2", 0}, {"A1a", 2}}) {
        scene.nodes.push_back(MakeNode(name, parent));
        scene.nodes.back().transform = Runner();
    }
    EXPECT_THAT(MovingNames(*Export(scene).motion), ElementsAre("Mover", "A1", "A1a", "A2", "B"));
}

TEST(MotionExport, HiddenNodesByTheirOwnOption) {
    scene::Scene scene = NodeScene(Runner());
    scene.nodes[0].hidden = true;
    scene.nodes.push_back(MakeNode("Child", 0));
    scene.nodes.push_back(MakeNode("Deep", 1));
    scene.nodes.push_back(MakeNode("Deeper", 2));
    for (scene::Node& node : scene.nodes) {
        node.transform = Runner();
    }
    scene.nodes[2].hidden = true;
    for (const bool exportHidden : {false, true}) {
        ExportChoices choices;
        choices.settings = MotionSettings(exportHidden, false);
        EXPECT_THAT(MovingNames(*Export(scene, choices).motion), ElementsAre("Child", "Deeper"));
        choices.settings = MotionSettings(exportHidden, true);
        const ExportRun run = Export(scene, choices);
        EXPECT_THAT(MovingNames(*run.motion), ElementsAre("Mover", "Child", "Deep", "Deeper"));
        EXPECT_EQ(support::CountLines(run, "- Exporting node 'Deep'"), exportHidden ? 1 : 0);
    }
}

TEST(MotionExport, FootprintsHaveNoMotion) {
    scene::Transform footprint = Runner();
    footprint.classId = {0x3011, 0};
    for (const int sampleRate : {0, 1}) {
        const Written written = WriteMotion(NodeScene(footprint), sampleRate);
        EXPECT_EQ(written.bytes, "");
        EXPECT_THAT(written.log, ElementsAre("  + Skipped node, because it's a biped footprint"));
    }
    // A node below a footprint has a motion part.
    scene::Scene scene = NodeScene(footprint);
    scene.nodes.push_back(MakeNode("Child", 0));
    scene.nodes[1].transform = Runner();
    EXPECT_THAT(MovingNames(*Export(scene).motion), ElementsAre("Child"));
    // The second word of the class counts too.
    footprint.classId = {0x3011, 1};
    EXPECT_EQ(WriteMotion(NodeScene(footprint), 0).bytes.substr(0, 312), MotionPart("Mover"));
}

TEST(MotionExport, PoseIsTurnedAndScaledInTheFilesAxes) {
    scene::ThreeAxisController scaling;
    scene::Key3 key;
    key.value = {2, 4, 8};
    scaling.kind = scene::BezierScale{{key}, {1, 1, 1}};
    // A quarter turn about z whose sine and cosine are what f32 holds of them.
    scene::Scene scene = NodeScene(Prs(Axes(1, 2, 3), Axes(0, 0, 1.57079633f), scaling));
    const std::string part = WriteMotion(scene, 0).bytes.substr(12, 300);
    const auto floats = [&](std::size_t offset, std::size_t count) {
        std::vector<float> values;
        for (std::size_t i = 0; i < count; ++i) {
            values.push_back(support::F32At(part, offset + 4 * i));
        }
        return values;
    };
    EXPECT_THAT(floats(260, 3), ElementsAre(1, 3, 2));
    const auto close = [](float value) { return testing::FloatNear(value, 1e-6f); };
    EXPECT_THAT(floats(272, 4),
                ElementsAre(close(0), close(-0.70710678f), close(0), close(0.70710678f)));
    EXPECT_THAT(floats(288, 3), ElementsAre(close(2), close(8), close(4)));
}

TEST(MotionExport, LongNamesAreCutAndShortOnesZeroFilled) {
    scene::Scene scene = NodeScene(Runner());
    scene.nodes[0].name = std::string(300, 'n');
    EXPECT_EQ(WriteMotion(scene, 0).bytes.substr(0, 312), MotionPart(std::string(259, 'n')));
}

TEST(MotionExport, WithoutFlagsANodeIsNotAnimated) {
    for (const int sampleRate : {0, 1}) {
        const Written written =
            Write(NodeScene(Runner()), sampleRate, [](OpenPass& pass, const auto& nodes) {
                ExportAnimation(*pass, nodes[0], false, false, false);
            });
        EXPECT_EQ(written.bytes, "");
        EXPECT_THAT(written.log, ElementsAre("  + Node 'Mover' is not animated..."));
    }
}

TEST(MotionExport, FlagsChooseTheTracks) {
    const auto moving = Axes(Ramp(0, 0, 512, 1), Constant(0), Constant(0));
    scene::ThreeAxisController scaling;
    scaling.kind = scene::BezierScale{{scene::Key3{}}, {1, 1, 1}};
    const scene::Scene scene = NodeScene(Prs(moving, moving, scaling), EvenTime(0, 0));
    const auto letters = [&](int sampleRate, bool position, bool rotation, bool scale) {
        const Written written = Write(scene, sampleRate, [&](OpenPass& pass, const auto& nodes) {
            ExportAnimation(*pass, nodes[0], position, rotation, scale);
        });
        std::string found;
        for (std::size_t at = written.bytes.find('L'); at != std::string::npos;
             at = written.bytes.find('L', at + 1)) {
            found += written.bytes[at + 1];
        }
        return found;
    };
    EXPECT_EQ(letters(1, true, true, true), "PRS");
    EXPECT_EQ(letters(0, true, true, true), "PrS");
    EXPECT_EQ(letters(1, false, true, false), "R");
    EXPECT_EQ(letters(0, false, true, false), "r");
    EXPECT_EQ(letters(1, true, false, true), "PS");
    EXPECT_EQ(letters(0, true, false, true), "PS");
}

TEST(MotionExport, WithoutAStreamNothingIsWritten) {
    maxhost::Host::Instance().OpenScene(NodeScene(Runner()));
    for (const bool sampled : {false, true}) {
        const support::LoggedLines log;
        ExportOptions options = DefaultExportOptions();
        options.sampleAnimation = sampled;
        ExportPass pass(maxhost::Host::Instance().GetInterface(), options);
        ExportMotionPart(pass, maxhost::Host::Instance().Nodes()[0]);
        EXPECT_EQ(log.Lines().at(0), "- Exporting motionpart 'Mover'");
    }
    maxhost::Host::Instance().CloseScene();
}

// ---------------------------------------------------------------- cost

// Counts by time how often its node is asked where it stands.
class CountingNode : public INode {
  public:
    explicit CountingNode(INode* node) : node_(node) {}

    const std::map<TimeValue, int>& Transforms() const { return transforms_; }
    const std::map<TimeValue, int>& ParentTransforms() const { return parentTransforms_; }

    MCHAR* GetName() override { return node_->GetName(); }
    INode* GetParentNode() override { return node_->GetParentNode(); }
    int NumberOfChildren() override { return node_->NumberOfChildren(); }
    INode* GetChildNode(int i) override { return node_->GetChildNode(i); }
    int Selected() override { return node_->Selected(); }
    int Renderable() override { return node_->Renderable(); }
    int IsHidden(DWORD flags, BOOL forRenderer) override {
        return node_->IsHidden(flags, forRenderer);
    }
    DWORD GetWireColor() override { return node_->GetWireColor(); }
    Mtl* GetMtl() override { return node_->GetMtl(); }
    void GetUserPropBuffer(MSTR& buffer) override { node_->GetUserPropBuffer(buffer); }
    Matrix3 GetNodeTM(TimeValue t, Interval* valid) override {
        ++transforms_[t];
        return node_->GetNodeTM(t, valid);
    }
    Matrix3 GetObjectTM(TimeValue t, Interval* valid) override {
        ++transforms_[t];
        return node_->GetObjectTM(t, valid);
    }
    Matrix3 GetParentTM(TimeValue t) override {
        ++parentTransforms_[t];
        return node_->GetParentTM(t);
    }
    Control* GetTMController() override { return node_->GetTMController(); }
    Object* GetObjectRef() override { return node_->GetObjectRef(); }
    const ObjectState& EvalWorldState(TimeValue t, BOOL evalHidden) override {
        return node_->EvalWorldState(t, evalHidden);
    }

  private:
    INode* node_;
    std::map<TimeValue, int> transforms_, parentTransforms_;
};

// Exports the motion of the scene's first node.
CountingNode CountEvaluations(const scene::Scene& scene, int sampleRate, std::size_t expectedSize) {
    std::optional<CountingNode> counting;
    const Written written = Write(scene, sampleRate, [&](OpenPass& pass, const auto& nodes) {
        counting.emplace(nodes[0]);
        ExportMotionPart(*pass, &*counting);
    });
    EXPECT_EQ(written.bytes.size(), expectedSize);
    return *counting;
}

// Animated in all three.
scene::Transform Dancer() {
    const auto turn = Axes(Ramp(0, 0, 100000, 100), Constant(0), Constant(0));
    const auto growth = Axes(Ramp(0, 1, 100000, 1000), Constant(1), Constant(1));
    return Prs(turn, turn, growth);
}

constexpr std::size_t TracksSize(std::size_t keys) {
    return 312 + 3 * 20 + keys * (16 + 20 + 16);
}

TEST(MotionCost, EachGridTimeIsEvaluatedOnceForAllTracks) {
    // The pose at tick 0, the grid, and the end, which is not on it.
    const CountingNode counted =
        CountEvaluations(NodeScene(Dancer(), EvenTime(32, 100)), 1, TracksSize(4));
    const std::map<TimeValue, int> once = {{0, 1}, {32, 1}, {64, 1}, {96, 1}, {100, 1}};
    EXPECT_EQ(counted.Transforms(), once);
    EXPECT_EQ(counted.ParentTransforms(), once);
}

TEST(MotionCost, AnEndOnTheGridIsNotEvaluatedAgain) {
    const CountingNode counted =
        CountEvaluations(NodeScene(Dancer(), EvenTime(32, 96)), 1, TracksSize(4));
    const std::map<TimeValue, int> once = {{0, 1}, {32, 1}, {64, 1}, {96, 1}};
    EXPECT_EQ(counted.Transforms(), once);
    EXPECT_EQ(counted.ParentTransforms(), once);
}

TEST(MotionCost, ANodeThatStandsStillIsLookedAtOnceATime) {
    const CountingNode counted =
        CountEvaluations(NodeScene(Prs(Axes(1, 2, 3)), EvenTime(32, 100)), 1, 0);
    const std::map<TimeValue, int> once = {{0, 1}, {32, 1}, {64, 1}, {96, 1}, {100, 1}};
    EXPECT_EQ(counted.Transforms(), once);
}

TEST(MotionCost, SamplesAreNotKeptFromOneExportToTheNext) {
    Write(NodeScene(Dancer(), EvenTime(32, 96)), 1, [](OpenPass& pass, const auto& nodes) {
        CountingNode whole(nodes[0]), tracks(nodes[0]);
        for (int i = 1; i <= 2; ++i) {
            ExportMotionPart(*pass, &whole);
            EXPECT_EQ(whole.Transforms().at(64), i);
        }
        for (int i = 1; i <= 2; ++i) {
            WriteSampledTrack(*pass, &tracks, 'P');
            WriteSampledTrack(*pass, &tracks, 'S');
            EXPECT_EQ(tracks.Transforms().at(64), i);
            pass.Reset();
        }
    });
}

TEST(MotionCost, KeyframesNeedThePoseAlone) {
    const auto keyed = Axes(Ramp(0, 0, 100000, 1), Constant(0), Constant(0));
    const CountingNode counted =
        CountEvaluations(NodeScene(Prs(keyed, keyed)), 0, 312 + 2 * (20 + 2 * 26 + 2 * 0));
    EXPECT_EQ(counted.Transforms(), (std::map<TimeValue, int>{{0, 1}}));
}

TEST(MotionCost, OneEvaluationANodeAndGridTime) {
    constexpr int kCrowdNodes = 200, kFrames = 300;
    // A tree: every node moves below one that does.
    scene::Scene scene;
    scene.time = EvenTime(32, 32 * kFrames);
    for (int i = 0; i < kCrowdNodes; ++i) {
        scene.nodes.push_back(MakeNode("n" + std::to_string(i), i == 0 ? -1 : (i - 1) / 2));
        scene.nodes.back().transform = Dancer();
    }
    Write(scene, 1, [&](OpenPass& pass, const auto& nodes) {
        for (INode* node : nodes) {
            CountingNode counting(node);
            ExportMotionPart(*pass, &counting);
            int evaluations = 0;
            for (const auto& [time, count] : counting.Transforms()) {
                evaluations += count;
            }
            ASSERT_EQ(evaluations, kFrames + 1) << "the pose and each grid time";
        }
        EXPECT_EQ(pass.Size(), static_cast<long>(kCrowdNodes * TracksSize(kFrames + 1)));
    });
}

}  // namespace
