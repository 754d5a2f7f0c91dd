// Scenes of great depth or width: neither the stack nor the square of the size is used up.
#include <ctime>

#include "tests/unit/host/sdk/support.h"

namespace scene = maxhost::scene;

// A square of the node counts below would take hours; what the tests do takes seconds.
class DeepSceneTest : public SceneTest {
  protected:
    ~DeepSceneTest() override {
        maxhost::Host::Instance().CloseScene();
        EXPECT_LT(static_cast<double>(std::clock() - start_) / CLOCKS_PER_SEC, 60);
    }

  private:
    std::clock_t start_ = std::clock();
};

// From 0 at time 0 straight to 1 at time 1000.
scene::FloatController UnitRamp() {
    scene::Key first, last;
    first.outType = last.inType = scene::Tangent::linear;
    last.time = 1000;
    last.value = 1;
    return Keyed({first, last});
}

scene::Scene Chain(int count, const scene::FloatController& x) {
    scene::Scene description;
    description.nodes.reserve(count);
    for (int i = 0; i < count; ++i) {
        description.nodes.push_back(MakeNode("n", i - 1));
        description.nodes.back().transform = Prs(Axes(x, {}, {}));
    }
    return description;
}

constexpr int kDepth = 100000;

TEST_F(DeepSceneTest, StaticChain) {
    Open(Chain(kDepth, Constant(1)));
    EXPECT_EQ(At(kDepth - 1)->GetNodeTM(0).GetTrans().x, kDepth);
    for (int i = 0; i < kDepth; ++i) {
        for (int time : {0, 100, 0, 300}) {
            ASSERT_EQ(At(i)->GetNodeTM(time).GetTrans().x, static_cast<float>(i + 1));
            ASSERT_EQ(At(i)->GetParentTM(time).GetTrans().x, static_cast<float>(i));
        }
    }
}

TEST_F(DeepSceneTest, ParentsBehindTheirChildren) {
    scene::Scene description = Chain(kDepth, Constant(1));
    for (int i = 0; i < kDepth; ++i) {
        description.nodes[i].parent = i == kDepth - 1 ? scene::kNone : i + 1;
    }
    Open(std::move(description));
    EXPECT_EQ(At(0)->GetNodeTM(0).GetTrans().x, kDepth);
}

TEST_F(DeepSceneTest, AnimatedChainAskedTimeByTime) {
    Open(Chain(kDepth, UnitRamp()));
    for (int time : {500, 1000, 0}) {
        for (int i = kDepth - 1; i >= 0; i -= 1000) {
            ASSERT_NEAR(At(i)->GetNodeTM(time).GetTrans().x, (i + 1) * (time / 1000.0), 0.01);
        }
    }
}

// As an exporter samples: each node at all times, with its parent. More transforms than are
// remembered at once.
TEST_F(DeepSceneTest, AnimatedChainAskedNodeByNode) {
    const int depth = 20000;
    Open(Chain(depth, UnitRamp()));
    for (int i = 0; i < depth; ++i) {
        for (int time = 100; time <= 900; time += 40) {
            const double part = time / 1000.0;
            ASSERT_NEAR(At(i)->GetNodeTM(time).GetTrans().x, (i + 1) * part, 0.01);
            ASSERT_NEAR(At(i)->GetParentTM(time).GetTrans().x, i * part, 0.01);
        }
    }
}

TEST_F(DeepSceneTest, WideAnimatedScene) {
    const int parents = 2000;
    scene::Scene description;
    for (int i = 0; i < parents; ++i) {
        for (int parent : {scene::kNone, 2 * i}) {
            description.nodes.push_back(MakeNode("n", parent));
            description.nodes.back().transform = Prs(Axes(UnitRamp(), {}, {}));
        }
    }
    Open(std::move(description));
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < parents; ++i) {
            for (int time = 5; time < 1000; time += 5) {
                ASSERT_NEAR(At(2 * i + 1)->GetNodeTM(time).GetTrans().x, time / 500.0, 1e-5);
            }
        }
    }
}
