#include "kta/pose.h"

#include <cmath>

#include "kta/deform.h"
#include "tests/unit/kta/sample.h"

namespace {

using namespace sample;
using kta::Affine;
using kta::kNoNode;
using kta::NodeTree;
using kta::Vector3;

// Both files stay with their tree.
class PosedActor {
  public:
    explicit PosedActor(const std::string& actor, const std::string& motion = "")
        : actor_(kta::Read(Span(actor))),
          motion_(kta::Read(Span(motion.empty() ? kMotion : motion))),
          tree_(actor_.file.value(), &motion_.file.value()) {
        EXPECT_TRUE(actor_.Good() && motion_.Good());
    }

    const NodeTree& Tree() const { return tree_; }
    const kta::File& Actor() const { return *actor_.file; }

  private:
    static std::span<const std::uint8_t> Span(const std::string& bytes) {
        return {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()};
    }

    kta::Reading actor_, motion_;
    NodeTree tree_;
};

void ExpectNear(const Vector3& found, const Vector3& expected, double tolerance = 1e-5) {
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(found[i], expected[i], tolerance) << "component " << i;
    }
}

void ExpectSame(const Affine& found, const Affine& expected) {
    for (const Vector3& p : {Vector3{}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}) {
        ExpectNear(found.Position(p), expected.Position(p));
    }
}

// Of one node "Box", which stands where the part says.
PosedActor Moving(const std::string& tracks, const Pose& pose = {}) {
    return PosedActor(ActorFile({RootAt("Box", pose.translation)}), MotionOf("Box", pose, tracks));
}

Vector3 PlaceAt(const PosedActor& actor, double seconds, std::size_t node = 0,
                const Vector3& point = {}) {
    return actor.Tree().Worlds(seconds).at(node).Position(point);
}

// ---------------------------------------------------------------- bind pose

// The inverse of the world transform, row by row, the translation in row 3.
TEST(PoseTest, WorldIsInverseOfStoredMatrix) {
    NodeFields node;
    node.translation = {10, 20, 30};
    node.rotation = {0, -kRootOfHalf, 0, kRootOfHalf};
    node.scale = {2, 2, 2};
    // Turned by the quarter that takes x to y in 3ds Max, so the first axis to the third.
    node.matrix = {0, 0, -0.5f, 0, 0, 0.5f, 0, 0, 0.5f, 0, 0, 0, -15, -10, 5, 0};
    const PosedActor actor(ActorFile({node}));
    const Affine& world = actor.Tree().BindWorld(0);
    ExpectNear(world.Position({}), {10, 20, 30});
    ExpectNear(world.Direction({1, 0, 0}), {0, 0, 2});
    ExpectNear(world.Direction({0, 1, 0}), {0, 2, 0});
    ExpectNear(world.Direction({0, 0, 1}), {-2, 0, 0});
    ExpectSame(
        kta::Transform{{10, 20, 30}, {0, -kRootOfHalf, 0, kRootOfHalf}, {2, 2, 2}}.ToAffine(),
        world);
    ExpectSame(actor.Tree().Worlds(1).at(0), world);
    ExpectSame(actor.Tree().FromBindWorld(0) * world, Affine());
}

TEST(PoseTest, ParentsByNameWhereverTheyStand) {
    const PosedActor actor(ActorFile(
        {NodeAt("Hand", "Arm", {1, 0, 0}, {3, 0, 0}), NodeAt("Arm", "Body", {2, 0, 0}, {2, 0, 0}),
         NodeAt("Body", "", {}, {}), NodeAt("Tool", "Nobody", {}, {})}));
    const NodeTree& tree = actor.Tree();
    EXPECT_EQ(tree.Parent(0), 1u);
    EXPECT_EQ(tree.Parent(1), 2u);
    EXPECT_EQ(tree.Parent(2), kNoNode);
    EXPECT_EQ(tree.Parent(3), kNoNode);
    EXPECT_EQ(tree.ParentsFirst(), (std::vector<std::size_t>{2, 1, 0, 3}));
    ExpectNear(tree.BindLocal(0).Position({}), {1, 0, 0});
}

TEST(PoseTest, CircleIsCut) {
    const PosedActor actor(ActorFile({NodeAt("A", "B", {}, {1, 0, 0}), NodeAt("B", "C", {}, {}),
                                      NodeAt("C", "A", {}, {}), NodeAt("D", "D", {}, {})}));
    EXPECT_EQ(actor.Tree().Parent(0), 1u);
    EXPECT_EQ(actor.Tree().Parent(1), 2u);
    EXPECT_EQ(actor.Tree().Parent(2), kNoNode);
    EXPECT_EQ(actor.Tree().Parent(3), kNoNode);
    ExpectNear(actor.Tree().BindWorld(0).Position({}), {1, 0, 0});
}

// Two rigs of the same names: a node belongs to the parent upon which it stands where it does.
TEST(PoseTest, ParentOfSeveralOfOneName) {
    const PosedActor actor(
        ActorFile({RootAt("Bip", {}), NodeAt("Hand", "Bip", {1, 0, 0}, {1, 0, 0}),
                   RootAt("Bip", {0, 0, 50}), NodeAt("Hand", "Bip", {1, 0, 0}, {1, 0, 50}),
                   NodeAt("Foot", "Bip", {1, 0, 0}, {7, 7, 7})}));
    EXPECT_EQ(actor.Tree().Parent(1), 0u);
    EXPECT_EQ(actor.Tree().Parent(3), 2u);
    EXPECT_EQ(actor.Tree().Parent(4), 0u);  // neither fits, so the first
}

// A node without extent has no inverse, and stands where its local transform says; so do those
// below it.
TEST(PoseTest, NodeWithoutExtent) {
    NodeFields flat = NodeAt("Flat", "", {4, 0, 0}, {});
    flat.scale = {0, 1, 1};
    const PosedActor actor(ActorFile({flat, NodeAt("Below", "Flat", {9, 2, 0}, {})}));
    ExpectNear(actor.Tree().BindWorld(0).Position({}), {4, 0, 0});
    ExpectNear(actor.Tree().BindWorld(1).Position({}), {4, 2, 0});
}

// ---------------------------------------------------------------- sampled tracks

TEST(PoseTest, SampledPositionIsStraightBetweenSamples) {
    const PosedActor actor = Moving(
        SampledTrack('P', {{1, {0, 0, 0}}, {2, {10, 20, 30}}, {3, {0, 0, 0}}, {3, {0, 0, 0}}}));
    ExpectNear(PlaceAt(actor, 0), {0, 0, 0});
    ExpectNear(PlaceAt(actor, 1.25), {2.5, 5, 7.5});
    ExpectNear(PlaceAt(actor, 2), {10, 20, 30});
    ExpectNear(PlaceAt(actor, 99), {0, 0, 0});
    EXPECT_EQ(actor.Tree().FirstTime(), 1);
    EXPECT_EQ(actor.Tree().LastTime(), 3);
}

// From no turn to a quarter turn, x to y in 3ds Max: half of it in between, by the shorter way even
// where the second quaternion has the other sign.
TEST(PoseTest, SampledRotationTurnsEvenly) {
    for (const float sign : {1.0f, -1.0f}) {
        const PosedActor actor = Moving(SampledTrack(
            'R', {{0, {0, 0, 0, 1}}, {1, {0, -kRootOfHalf * sign, 0, kRootOfHalf * sign}}}));
        ExpectNear(PlaceAt(actor, 1, 0, {1, 0, 0}), {0, 0, 1});
        ExpectNear(PlaceAt(actor, 0.5, 0, {1, 0, 0}), {kRootOfHalf, 0, kRootOfHalf});
    }
}

TEST(PoseTest, SampledScaleIsAlongTheFilesAxes) {
    const PosedActor actor =
        Moving(SampledTrack('S', {{0, {1, 1, 1}}, {1, {2, 3, 4}}}), {.translation = {0, 0, 0}});
    ExpectNear(PlaceAt(actor, 1, 0, {1, 1, 1}), {2, 3, 4});
}

// The part's pose stands in for tracks that there are not.
TEST(PoseTest, TracksOfAPosedNode) {
    NodeFields node = RootAt("Box", {5, 6, 7});
    const PosedActor actor(ActorFile({node}),
                           MotionOf("Box", {.translation = {5, 6, 7}},
                                    SampledTrack('S', {{0, {1, 1, 1}}, {1, {2, 2, 2}}})));
    ExpectNear(PlaceAt(actor, 1, 0, {1, 0, 0}), {7, 6, 7});
}

// ---------------------------------------------------------------- keyframed tracks

// Values are 3ds Max's x, y, z.
TEST(PoseTest, KeyframedPositionIsExchanged) {
    const PosedActor actor =
        Moving(KeyframedTrack('P', {KeyRecord(0, {0, 0, 0}), KeyRecord(2, {1, 2, 3})}));
    ExpectNear(PlaceAt(actor, 2), {1, 3, 2});
    ExpectNear(PlaceAt(actor, 1), {0.5, 1.5, 1});
    ExpectNear(PlaceAt(actor, -1), {0, 0, 0});
    ExpectNear(PlaceAt(actor, 3), {1, 3, 2});
}

TEST(PoseTest, KeyframedScaleIsExchanged) {
    const PosedActor actor =
        Moving(KeyframedTrack('S', {KeyRecord(0, {1, 1, 1}), KeyRecord(1, {2, 3, 4})}));
    ExpectNear(PlaceAt(actor, 1, 0, {1, 1, 1}), {2, 4, 3});
}

// Degrees, right-handed about 3ds Max's x axis, then its y axis, then its z axis.
TEST(PoseTest, KeyframedRotation) {
    const auto turned = [](const std::array<float, 3>& degrees, const Vector3& maxPoint) {
        const PosedActor actor =
            Moving(KeyframedTrack('r', {KeyRecord(0, {0, 0, 0}), KeyRecord(1, degrees)}));
        const Vector3 p = PlaceAt(actor, 1, 0, {maxPoint[0], maxPoint[2], maxPoint[1]});
        return Vector3{p[0], p[2], p[1]};
    };
    ExpectNear(turned({90, 0, 0}, {0, 1, 0}), {0, 0, 1});
    ExpectNear(turned({0, 90, 0}, {0, 0, 1}), {1, 0, 0});
    ExpectNear(turned({0, 0, 90}, {1, 0, 0}), {0, 1, 0});
    ExpectNear(turned({90, 0, 90}, {0, 0, 1}), {1, 0, 0});
    ExpectNear(turned({90, 90, 0}, {0, 1, 0}), {1, 0, 0});
    ExpectNear(turned({720, 0, 180}, {1, 0, 0}), {-1, 0, 0});
}

// Of keys whose first is at 0 and has the value `first`.
double CurveValue(const std::string& firstKey, const std::string& secondKey, double seconds,
                  float first = 0) {
    return PlaceAt(
        Moving(KeyframedTrack('P', {firstKey, secondKey}), {.translation = {first, 0, 0}}),
        seconds)[0];
}

TEST(PoseTest, StepHoldsItsValue) {
    const std::string out = KeyRecord(0, {1, 0, 0}, 7, {3, 3, 3, 4, 3, 3});
    const std::string linear = KeyRecord(2, {5, 0, 0});
    EXPECT_DOUBLE_EQ(CurveValue(out, linear, 1.999, 1), 1);
    EXPECT_DOUBLE_EQ(CurveValue(out, linear, 2, 1), 5);
    const std::string in = KeyRecord(2, {5, 0, 0}, 7, {4, 3, 3, 3, 3, 3});
    EXPECT_DOUBLE_EQ(CurveValue(KeyRecord(0, {1, 0, 0}), in, 1.999, 1), 1);
}

// Control points of the value: 0, 0 + 3 * 2 / 3, 4 - 0, 4; halfway their weights are 1, 3, 3, 1 of
// 8.
TEST(PoseTest, HandlesOfAThird) {
    const std::string from = KeyRecord(0, {0, 0, 0}, 7, {3, 3, 3, 5, 3, 3}, {{1, 3}});
    const std::string to = KeyRecord(2, {4, 0, 0}, 7, {5, 3, 3, 3, 3, 3}, {{1, 0}});
    EXPECT_NEAR(CurveValue(from, to, 1), (3 * 2 + 3 * 4 + 4) / 8.0, 1e-6);
    // One side straight: its control point is a third of the way off.
    EXPECT_NEAR(CurveValue(from, KeyRecord(2, {4, 0, 0}), 1), (3 * 2 + 3 * (4 - 4 / 3.0) + 4) / 8,
                1e-6);
}

// Handles of length 1.5 reach half of the way: at u = 1/4 the time is 3 u (1 - u) / 2 + u^3 =
// 0.296875, and with level handles the value is 3 u^2 (1 - u) + u^3 = 0.15625.
TEST(PoseTest, LongHandlesBendTime) {
    const std::string from = KeyRecord(0, {0, 0, 0}, 7, {3, 3, 3, 5, 3, 3}, {{1.5f, 0}});
    const std::string to = KeyRecord(1, {1, 0, 0}, 7, {5, 3, 3, 3, 3, 3}, {{1.5f, 0}});
    EXPECT_NEAR(CurveValue(from, to, 0.296875), 0.15625, 1e-6);
    EXPECT_NEAR(CurveValue(from, to, 0.5), 0.5, 1e-6);
}

// Each axis has its own keys: x at 0 and 4, y (whose first key stands in the first record) at 2.
TEST(PoseTest, AxesHaveTheirOwnKeys) {
    const PosedActor actor =
        Moving(KeyframedTrack('P', {KeyRecord(0, {0, 1, 0}, 7, {3, 1, 1, 3, 1, 1}),
                                    KeyRecord(2, {0, 9, 0}, 2, {1, 3, 1, 1, 3, 1}),
                                    KeyRecord(4, {8, 0, 0}, 1, {3, 1, 1, 3, 1, 1})}),
               {.translation = {0, 0, 1}});
    ExpectNear(PlaceAt(actor, 1), {2, 0, 5});
    ExpectNear(PlaceAt(actor, 3), {6, 0, 9});
}

// ---------------------------------------------------------------- what tracks leave out

// A mirrored node: the record's scales are negated, the part's are not.
TEST(PoseTest, MirroredNodeStaysMirrored) {
    NodeFields node = RootAt("Box", {});
    node.scale = {-1, -1, -1};
    node.matrix[0] = node.matrix[5] = node.matrix[10] = -1;
    const PosedActor actor(
        ActorFile({node}),
        MotionOf("Box", {}, SampledTrack('P', {{0, {0, 0, 0}}, {1, {5, 0, 0}}})));
    ExpectNear(PlaceAt(actor, 0, 0, {1, 2, 3}), {-1, -2, -3});
    ExpectNear(PlaceAt(actor, 1, 0, {1, 2, 3}), {4, -2, -3});
}

// The keys are those of a node whose object stands 2 to the side of it, and which turns.
TEST(PoseTest, ObjectOffsetOfAKeyframedNode) {
    const PosedActor actor(
        ActorFile({RootAt("Box", {12, 0, 0})}),
        MotionOf("Box", {.translation = {12, 0, 0}},
                 KeyframedTrack('P', {KeyRecord(0, {10, 0, 0}), KeyRecord(1, {10, 0, 0})}) +
                     KeyframedTrack('r', {KeyRecord(0, {0, 0, 0}), KeyRecord(1, {0, 0, 90})})));
    ExpectNear(PlaceAt(actor, 0), {12, 0, 0});
    ExpectNear(PlaceAt(actor, 1), {10, 0, 2});
}

// The parent's object stands 3 above the node that the child hangs from, so that the child's local
// transform is not one to the parent's matrix.
TEST(PoseTest, ObjectOffsetOfAParent) {
    const std::string motion = support::MotionPart("Parent", {.translation = {0, 3, 0}}) +
                               SampledTrack('P', {{0, {0, 3, 0}}, {1, {0, 13, 0}}}) +
                               support::MotionPart("Child", {.translation = {1, 0, 0}}) +
                               SampledTrack('P', {{0, {1, 0, 0}}, {1, {2, 0, 0}}});
    const PosedActor actor(
        ActorFile({RootAt("Parent", {0, 3, 0}), NodeAt("Child", "Parent", {1, 0, 0}, {1, 0, 0})}),
        kMotion + motion);
    ExpectNear(PlaceAt(actor, 0, 1), {1, 0, 0});
    ExpectNear(PlaceAt(actor, 1, 1), {2, 10, 0});
}

// A parent that was not exported stands still where it was.
TEST(PoseTest, ParentThatWasNotExported) {
    const PosedActor actor(ActorFile({NodeAt("Child", "Elsewhere", {1, 0, 0}, {101, 0, 0})}),
                           MotionOf("Child", {.translation = {1, 0, 0}},
                                    SampledTrack('P', {{0, {1, 0, 0}}, {1, {2, 0, 0}}})));
    ExpectNear(PlaceAt(actor, 0), {101, 0, 0});
    ExpectNear(PlaceAt(actor, 1), {102, 0, 0});
}

// ---------------------------------------------------------------- motion parts

TEST(PoseTest, PartsOfOneNameGoByTheirPose) {
    const std::string motion = support::MotionPart("Box", {.translation = {9, 0, 0}}) +
                               SampledTrack('P', {{0, {9, 0, 0}}, {1, {90, 0, 0}}}) +
                               support::MotionPart("Ghost");
    const PosedActor actor(ActorFile({RootAt("Box", {1, 0, 0}), RootAt("Box", {9, 0, 0})}),
                           kMotion + motion);
    EXPECT_EQ(actor.Tree().MotionOf(0), nullptr);
    ASSERT_NE(actor.Tree().MotionOf(1), nullptr);
    ExpectNear(PlaceAt(actor, 1, 1), {90, 0, 0});
    EXPECT_EQ(actor.Tree().StrayParts(), (std::vector<std::string>{"Ghost"}));
}

// ---------------------------------------------------------------- skins and morphs

MeshFields FlatTriangleOf(std::uint32_t node) {
    MeshFields mesh;
    mesh.node = node;
    mesh.originalVertexCount = 3;
    mesh.subMeshes = {
        {0,
         {{0, {0, 0, 0}, {0, 1, 0}}, {1, {1, 0, 0}, {0, 1, 0}}, {2, {0, 0, 1}, {0, 1, 0}}},
         {{0, 1, 2}}}};
    return mesh;
}

// Weights need not sum to 1; a bone without number and weights of 0 move nothing.
TEST(PoseTest, SharesOfBones) {
    const PosedActor actor(
        ActorFile({RootAt("Mesh", {}), RootAt("A", {}), RootAt("B", {4, 0, 0})}) +
            MeshChunk(FlatTriangleOf(0)) +
            WeightsChunk(0, {{{1, 0.25f}, {2, 0.5f}, {1, 0.25f}, {-1, 9}}, {{2, 3}}, {{1, 0}}}),
        MotionOf("B", {.translation = {4, 0, 0}},
                 SampledTrack('P', {{0, {4, 0, 0}}, {1, {4, 8, 0}}})));
    const std::vector<kta::ActorMesh> meshes = kta::MeshesOf(actor.Actor());
    ASSERT_EQ(meshes.size(), 1u);
    const kta::Skin skin(actor.Tree(), meshes[0]);
    ASSERT_EQ(skin.Of(0).size(), 2u);
    EXPECT_EQ(skin.Of(0)[0].share, 0.5);
    EXPECT_EQ(skin.Of(0)[1].share, 0.5);
    ASSERT_EQ(skin.Of(1).size(), 1u);
    EXPECT_EQ(skin.Of(1)[0].node, 2u);
    EXPECT_EQ(skin.Of(1)[0].share, 1);
    EXPECT_EQ(skin.Of(2)[0].node, 0u);  // no bone: it goes with the mesh's node
    const std::vector<Affine> ways = kta::WaysFromBind(actor.Tree(), 1);
    ExpectNear(kta::SkinnedPosition(skin.Of(0), ways, {0, 0, 0}), {0, 4, 0});
    ExpectNear(kta::SkinnedPosition(skin.Of(1), ways, {1, 0, 0}), {1, 8, 0});
    ExpectNear(kta::SkinnedPosition(skin.Of(2), ways, {0, 0, 1}), {0, 0, 1});
}

// Packed 0 is the minimum over 100; of a range of 65535 a step is 1, so 0.01 of the scene.
TEST(PoseTest, MorphedPositions) {
    MorphFields morph;
    morph.node = "Mesh";
    morph.minimum = 0;
    morph.maximum = 65535;
    morph.packed = {{0, 200, 0}, {101, 0, 0}, {0, 0, 600}};
    const PosedActor actor(ActorFile({RootAt("Mesh", {50, 0, 0}), RootAt("Bone", {})}) +
                           MeshChunk(FlatTriangleOf(0)) + MorphChunk(morph));
    const std::vector<kta::ActorMesh> meshes = kta::MeshesOf(actor.Actor());
    ASSERT_EQ(meshes.at(0).morphs.size(), 1u);
    const std::vector<kta::MorphTarget> targets = {{actor.Tree(), meshes[0], *meshes[0].morphs[0]}};
    const std::vector<KTAVertex>& vertices = meshes[0].mesh->subMeshes[0].vertices;
    ExpectNear(targets[0].Displacement(vertices[0]), {0, 2, 0});
    ExpectNear(targets[0].Displacement(vertices[1]), {0, 0, 0});  // 0.01: no more than rounding
    const std::vector<double> half = {0.5};
    ExpectNear(kta::MorphedPosition(targets, half, vertices[2]), {0, 0, 3.5});
}

// Points stand in the node's space, vertices of a skinned mesh in the world.
TEST(PoseTest, MorphOfASkinnedMesh) {
    MorphFields morph;
    morph.node = "Mesh";
    morph.maximum = 65535;
    morph.packed = {{0, 0, 0}, {100, 500, 0}, {0, 0, 100}};
    const PosedActor actor(ActorFile({RootAt("Mesh", {0, -2, 0}), RootAt("Bone", {})}) +
                           MeshChunk(FlatTriangleOf(0)) +
                           WeightsChunk(0, {{{1, 1}}, {{1, 1}}, {{1, 1}}}) + MorphChunk(morph));
    const std::vector<kta::ActorMesh> meshes = kta::MeshesOf(actor.Actor());
    const kta::MorphTarget target(actor.Tree(), meshes.at(0), *meshes[0].morphs.at(0));
    ExpectNear(target.Displacement(meshes[0].mesh->subMeshes[0].vertices[1]), {0, 3, 0});
}

}  // namespace
