// Transforms of nodes: composition, order, inheritance, object offset, validity.
#include "tests/unit/host/sdk/support.h"

namespace scene = maxhost::scene;
using scene::Matrix;
using scene::Tangent;

using TransformsTest = SceneTest;

scene::Node Moved(const std::string& name, int parent, scene::Transform transform) {
    scene::Node node = MakeNode(name, parent);
    node.transform = std::move(transform);
    return node;
}

// From 0 at time 0 straight to `end` at time 100.
scene::FloatController Ramp(float end) {
    scene::Key first, last;
    first.inType = first.outType = last.inType = last.outType = Tangent::linear;
    last.time = 100;
    last.value = end;
    return Keyed({first, last});
}

Matrix Translation(float x, float y, float z) {
    Matrix matrix = scene::kIdentity;
    matrix[3] = {x, y, z};
    return matrix;
}

TEST_F(TransformsTest, TranslationIsRowThree) {
    INode* node = OpenNode(Moved("n", scene::kNone, Prs(Axes(1, 2, 3))));
    EXPECT_TRUE(MatrixNear(node->GetNodeTM(0), Translation(1, 2, 3)));
}

TEST_F(TransformsTest, RotationsFollowTheRightHandRule) {
    INode* node = OpenNode(Moved("n", scene::kNone, Prs({}, Axes(0, 0, kQuarterTurn))));
    EXPECT_TRUE(MatrixNear(node->GetNodeTM(0), {{{0, 1, 0}, {-1, 0, 0}, {0, 0, 1}, {0, 0, 0}}}));
    node = OpenNode(Moved("n", scene::kNone, Prs({}, Axes(kQuarterTurn, 0, 0))));
    EXPECT_TRUE(MatrixNear(node->GetNodeTM(0), {{{1, 0, 0}, {0, 0, 1}, {0, -1, 0}, {0, 0, 0}}}));
    node = OpenNode(Moved("n", scene::kNone, Prs({}, Axes(0, kQuarterTurn, 0))));
    EXPECT_TRUE(MatrixNear(node->GetNodeTM(0), {{{0, 0, -1}, {0, 1, 0}, {1, 0, 0}, {0, 0, 0}}}));
}

TEST_F(TransformsTest, EulerAnglesTurnAboutXThenYThenZ) {
    INode* node = OpenNode(Moved("n", scene::kNone, Prs({}, Axes(kQuarterTurn, 0, kQuarterTurn))));
    EXPECT_TRUE(MatrixNear(node->GetNodeTM(0), {{{0, 1, 0}, {0, 0, 1}, {1, 0, 0}, {0, 0, 0}}}));

    const Point3 angles(0.3f, -1.1f, 2.5f);
    node = OpenNode(Moved("n", scene::kNone, Prs({}, Axes(angles.x, angles.y, angles.z))));
    const Matrix3 product =
        RotateXMatrix(angles.x) * RotateYMatrix(angles.y) * RotateZMatrix(angles.z);
    EXPECT_TRUE(IsNear(node->GetNodeTM(0), product));
}

TEST_F(TransformsTest, LocalMatrixIsScaleThenRotationThenTranslation) {
    INode* node = OpenNode(
        Moved("n", scene::kNone, Prs(Axes(10, 20, 30), Axes(0, 0, kQuarterTurn), Axes(2, 3, 4))));
    EXPECT_TRUE(MatrixNear(node->GetNodeTM(0), {{{0, 2, 0}, {-3, 0, 0}, {0, 0, 4}, {10, 20, 30}}}));
}

TEST_F(TransformsTest, NodeTransformIsLocalTimesParent) {
    Open(MakeScene({Moved("child", 1, Prs(Axes(1, 0, 0))),
                    Moved("parent", scene::kNone, Prs(Axes(5, 0, 0), Axes(0, 0, kQuarterTurn)))}));
    EXPECT_THAT(At(0)->GetNodeTM(0).GetTrans(), PointNear(5.0f, 1.0f, 0.0f));
    EXPECT_TRUE(IsTruly(At(0)->GetParentTM(0), At(1)->GetNodeTM(0)));
    EXPECT_TRUE(MatrixNear(At(1)->GetParentTM(0), scene::kIdentity));
}

TEST_F(TransformsTest, AbsentAxesAreZeroAndOneForScale) {
    INode* node = OpenNode(
        Moved("n", scene::kNone,
              Prs(Axes({}, Constant(2), {}), Axes({}, {}, {}), Axes({}, Constant(3), {}))));
    EXPECT_TRUE(MatrixNear(node->GetNodeTM(0), {{{1, 0, 0}, {0, 3, 0}, {0, 0, 1}, {0, 2, 0}}}));
}

TEST_F(TransformsTest, NoTransformControllerStandsAtItsParent) {
    scene::Node child = MakeNode("child", 1);
    child.transform.reset();
    Open(MakeScene({child, Moved("parent", scene::kNone, Prs(Axes(1, 2, 3)))}));
    EXPECT_EQ(At(0)->GetTMController(), nullptr);
    EXPECT_TRUE(MatrixNear(At(0)->GetNodeTM(0), Translation(1, 2, 3)));
}

TEST_F(TransformsTest, ConstantMatricesStandAsTheyAre) {
    const Matrix matrix = {{{1, 2, 3}, {4, 5, 6}, {7, 8, 10}, {11, 12, 13}}};
    for (const auto& kind :
         {decltype(scene::Transform::kind)(scene::MatrixTransform{matrix}),
          decltype(scene::Transform::kind)(scene::FootprintTransform{matrix}),
          decltype(scene::Transform::kind)(scene::IkChainTransform{0, scene::kNone, matrix})}) {
        scene::Transform transform;
        transform.kind = kind;
        INode* node = OpenNode(Moved("n", scene::kNone, transform));
        EXPECT_TRUE(MatrixNear(node->GetNodeTM(12345), matrix));
    }
}

TEST_F(TransformsTest, SamplesAreInterpolatedAndHeldOutside) {
    Matrix second = Translation(10, 20, 30);
    second[0] = {3, 0, 4};
    scene::Transform transform;
    transform.kind = scene::SampledTransform{{{0, scene::kIdentity}, {100, second}}};
    INode* node = OpenNode(Moved("n", scene::kNone, transform));
    EXPECT_TRUE(MatrixNear(node->GetNodeTM(-1), scene::kIdentity));
    EXPECT_TRUE(MatrixNear(node->GetNodeTM(0), scene::kIdentity));
    Matrix between = Translation(2.5f, 5, 7.5f);
    between[0] = {1.5f, 0, 1};
    EXPECT_TRUE(MatrixNear(node->GetNodeTM(25), between));
    EXPECT_TRUE(MatrixNear(node->GetNodeTM(100), second));
    EXPECT_TRUE(MatrixNear(node->GetNodeTM(5000), second));
}

TEST_F(TransformsTest, OneSampleHoldsForAllTime) {
    scene::Transform transform;
    transform.kind = scene::SampledTransform{{{50, Translation(1, 2, 3)}}};
    INode* node = OpenNode(Moved("n", scene::kNone, transform));
    for (int time : {0, 50, 100}) {
        Interval valid = FOREVER;
        EXPECT_TRUE(MatrixNear(node->GetNodeTM(time, &valid), Translation(1, 2, 3)));
        EXPECT_EQ(valid, FOREVER);
    }
}

TEST_F(TransformsTest, OtherControllersGiveTheirConstants) {
    scene::ThreeAxisController position, rotation, scaling;
    position.kind = scene::OtherThree{{1, 2, 3, 0}};
    rotation.kind = scene::OtherThree{{0, 0, 0.70710678f, 0.70710678f}};
    scaling.kind = scene::OtherThree{{2, 3, 4, 0}};
    INode* node = OpenNode(Moved("n", scene::kNone, Prs(position, rotation, scaling)));
    EXPECT_TRUE(MatrixNear(node->GetNodeTM(0), {{{0, 2, 0}, {-3, 0, 0}, {0, 0, 4}, {1, 2, 3}}}));
}

TEST_F(TransformsTest, QuaternionsFollowTheRightHandRuleAboutEveryAxis) {
    const float h = 0.70710678f;
    scene::ThreeAxisController rotation;
    rotation.kind = scene::OtherThree{{h, 0, 0, h}};
    INode* node = OpenNode(Moved("n", scene::kNone, Prs({}, rotation)));
    EXPECT_TRUE(MatrixNear(node->GetNodeTM(0), {{{1, 0, 0}, {0, 0, 1}, {0, -1, 0}, {0, 0, 0}}}));
    rotation.kind = scene::OtherThree{{0, h, 0, h}};
    node = OpenNode(Moved("n", scene::kNone, Prs({}, rotation)));
    EXPECT_TRUE(MatrixNear(node->GetNodeTM(0), {{{0, 0, -1}, {0, 1, 0}, {1, 0, 0}, {0, 0, 0}}}));
    // A third of a turn about (1, 1, 1) carries x to y, y to z, z to x.
    rotation.kind = scene::OtherThree{{0.5f, 0.5f, 0.5f, 0.5f}};
    node = OpenNode(Moved("n", scene::kNone, Prs({}, rotation)));
    EXPECT_TRUE(MatrixNear(node->GetNodeTM(0), {{{0, 1, 0}, {0, 0, 1}, {1, 0, 0}, {0, 0, 0}}}));
}

TEST_F(TransformsTest, BezierScaleIsEvaluatedByComponent) {
    scene::Key3 first, last;
    first.value = {1, 1, 1};
    last.time = 100;
    last.value = {2, 3, 4};
    first.outType = last.inType = Tangent::linear;
    scene::ThreeAxisController scaling;
    scaling.kind = scene::BezierScale{{first, last}, {9, 9, 9}};
    INode* node = OpenNode(Moved("n", scene::kNone, Prs({}, {}, scaling)));
    EXPECT_TRUE(MatrixNear(node->GetNodeTM(50), {{{1.5f, 0, 0}, {0, 2, 0}, {0, 0, 2.5f}, {}}}));
    scaling.kind = scene::BezierScale{{}, {9, 8, 7}};
    node = OpenNode(Moved("n", scene::kNone, Prs({}, {}, scaling)));
    EXPECT_TRUE(MatrixNear(node->GetNodeTM(50), {{{9, 0, 0}, {0, 8, 0}, {0, 0, 7}, {}}}));
}

TEST_F(TransformsTest, ObjectTransformPutsTheOffsetFirst) {
    scene::Node description =
        Moved("n", scene::kNone, Prs(Axes(10, 0, 0), Axes(kQuarterTurn, 0, 0)));
    description.objectOffset = Translation(0, 0, 1);
    INode* node = OpenNode(description);
    EXPECT_THAT(node->GetObjectTM(0).GetTrans(), PointNear(10.0f, -1.0f, 0.0f));
    EXPECT_THAT(node->GetNodeTM(0).GetTrans(), PointNear(10.0f, 0.0f, 0.0f));
}

TEST_F(TransformsTest, ObjectOffsetIsNotInherited) {
    scene::Node parent = MakeNode("parent");
    parent.objectOffset = Translation(0, 0, 1);
    Open(MakeScene({parent, MakeNode("child", 0)}));
    EXPECT_TRUE(MatrixNear(At(1)->GetObjectTM(0), scene::kIdentity));
}

TEST_F(TransformsTest, ValidityIsIntersectedOverControllersAndParents) {
    scene::Key first, last;
    first.outType = Tangent::step;
    last.time = 100;
    Open(MakeScene({Moved("parent", scene::kNone, Prs(Axes(Keyed({first, last}), {}, {}))),
                    Moved("child", 0, Prs(Axes(1, 2, 3))),
                    Moved("moving", 0, Prs(Axes(Ramp(1), {}, {})))}));
    Interval valid = FOREVER;
    At(1)->GetNodeTM(50, &valid);
    EXPECT_EQ(valid, Interval(0, 99));
    valid = Interval(60, 200);
    At(1)->GetNodeTM(70, &valid);
    EXPECT_EQ(valid, Interval(60, 99));
    valid = FOREVER;
    At(1)->GetObjectTM(100, &valid);
    EXPECT_EQ(valid, Interval(100, TIME_PosInfinity));
    valid = FOREVER;
    At(2)->GetNodeTM(50, &valid);
    EXPECT_EQ(valid, Interval(50, 50));
}

TEST_F(TransformsTest, TimesMayBeAskedInAnyOrder) {
    Open(MakeScene({Moved("parent", scene::kNone, Prs(Axes(Ramp(10), {}, {}))),
                    Moved("child", 0, Prs(Axes({}, Ramp(100), {})))}));
    for (int time : {30, 70, 30, 0, 100, 70, 30, -10, 200}) {
        const float part = static_cast<float>(std::min(std::max(time, 0), 100)) / 100;
        EXPECT_THAT(At(1)->GetNodeTM(time).GetTrans(), PointNear(10 * part, 100 * part, 0.0f));
        EXPECT_THAT(At(0)->GetNodeTM(time).GetTrans(), PointNear(10 * part, 0.0f, 0.0f));
    }
}

TEST_F(TransformsTest, AChainIsRoundedOnce) {
    // 0.1 is no float; a thousand steps rounded one by one would miss 100 by more than a float.
    std::vector<scene::Node> nodes;
    for (int i = 0; i < 1000; ++i) {
        nodes.push_back(Moved("n", i - 1, Prs(Axes(0.1f, 0, 0))));
    }
    Open(MakeScene(std::move(nodes)));
    EXPECT_EQ(At(999)->GetNodeTM(0).GetTrans().x, static_cast<float>(1000.0 * 0.1f));
}
