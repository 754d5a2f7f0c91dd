#include <gtest/gtest.h>
#include <max.h>

#include "tests/support/kta_bytes.h"
#include "tests/unit/export/rig_scene.h"

namespace {

namespace scene = maxhost::scene;
using scene::Node;
using support::Bytes;
using support::Export;
using support::MakeNode;
using support::SceneOf;

constexpr std::uint32_t kIKChainChunk = 15;

Node Goal(int startJoint, int endJoint) {
    Node node = MakeNode("Goal");
    node.transform.emplace().kind = scene::IkChainTransform{startJoint, endJoint, scene::kIdentity};
    return node;
}

std::vector<support::Chunk> ChainsOf(std::vector<Node> nodes) {
    return support::ChunksOf(Export(SceneOf(std::move(nodes))).actor.value(), kIKChainChunk);
}

std::string Body(const std::string& start, const std::string& end) {
    return Bytes().Name("Goal").Name(start).Name(end).Text(std::string(1064 - 780, '\0')).Str();
}

TEST(IKChain, NamesAndZeros) {
    const std::vector<support::Chunk> chains =
        ChainsOf({MakeNode("Thigh"), Goal(0, 2), MakeNode("Foot", 0)});
    ASSERT_EQ(chains.size(), 1u);
    EXPECT_EQ(chains[0].size, 1064u);
    EXPECT_EQ(chains[0].version, 1u);
    EXPECT_EQ(chains[0].body, Body("Thigh", "Foot"));
}

TEST(IKChain, AMissingJointHasAnEmptyName) {
    EXPECT_EQ(ChainsOf({MakeNode("Thigh"), Goal(0, scene::kNone)}).at(0).body, Body("Thigh", ""));
    EXPECT_EQ(ChainsOf({MakeNode("Foot"), Goal(scene::kNone, 0)}).at(0).body, Body("", "Foot"));
    EXPECT_EQ(ChainsOf({Goal(scene::kNone, scene::kNone)}).at(0).body, Body("", ""));
}

TEST(IKChain, LongNamesAreCutToTheirFields) {
    EXPECT_EQ(ChainsOf({MakeNode(std::string(300, 'j')), Goal(0, 0)}).at(0).body,
              Body(std::string(259, 'j'), std::string(259, 'j')));
}

// A transform with controllers of its own under the chain's class id.
TEST(IKChain, StandsBetweenJointLimitsAndWires) {
    Node goal = support::XNode("Goal", support::Follow("d", "e"));
    goal.transform->classId = {0x78724378, 0x8a4fd9};
    scene::JointParams limits;
    limits.flags = 0x80000009;
    std::get<scene::PrsTransform>(goal.transform->kind).position->jointParams = limits;
    goal.modifiers = {{true, scene::Morpher{{{"m", {{1, 2, 3}}}}}}};
    EXPECT_EQ(support::ChunkIds(Export(SceneOf({support::XNode("D", support::Named("d")), goal}))),
              (std::vector<std::uint32_t>{0, 0, 8, 15, 14, 10}));
}

TEST(IKChain, OnlyTheChainsClassIsOne) {
    Node other = Goal(0, 0), lookalike = MakeNode("Goal"), none = MakeNode("none");
    other.transform->classId = {0x78724378, 0};
    none.transform.reset();
    EXPECT_TRUE(ChainsOf({other, none, MakeNode("plain")}).empty());
    lookalike.transform.emplace().kind = scene::MatrixTransform{};
    lookalike.transform->classId = {0x78724378, 0x8a4fd9};
    EXPECT_EQ(ChainsOf({lookalike}).at(0).body, Body("", "")) << "without the chain's interface";
}

TEST(IKChain, StandsBehindItsNode) {
    const support::ExportRun run = Export(SceneOf({MakeNode("a"), Goal(0, 0), MakeNode("b")}));
    EXPECT_EQ(support::ChunkIds(run), (std::vector<std::uint32_t>{0, 0, 15, 0}));
}

}  // namespace
