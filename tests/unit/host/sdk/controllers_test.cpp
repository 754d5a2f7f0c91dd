// Controllers as an exporter sees them: classes, sub-controllers, keys, values.
#include <istdplug.h>
#include <plugapi.h>

#include "tests/unit/host/sdk/support.h"

namespace scene = maxhost::scene;
using scene::Tangent;

class ControllersTest : public SceneTest {
  protected:
    static Control* OpenTransform(scene::Transform transform) {
        scene::Node node = MakeNode("n");
        node.transform = std::move(transform);
        return OpenNode(node)->GetTMController();
    }
    static Control* OpenPosition(scene::ThreeAxisController position) {
        return OpenTransform(Prs(std::move(position)))->GetPositionController();
    }
    static Control* OpenRotation(scene::ThreeAxisController rotation) {
        return OpenTransform(Prs({}, std::move(rotation)))->GetRotationController();
    }
    static Control* OpenScale(scene::ThreeAxisController scaling) {
        return OpenTransform(Prs({}, {}, std::move(scaling)))->GetScaleController();
    }
    // As the X axis of a position.
    static Control* OpenFloat(scene::FloatController controller) {
        return OpenPosition(Axes(std::move(controller), {}, {}))->GetXController();
    }

    static float FloatAt(Control* control, int time) {
        float value = -1;
        Interval valid = FOREVER;
        control->GetValue(time, &value, valid);
        return value;
    }
};

template <class Kind>
scene::Transform TransformOf(Kind kind) {
    scene::Transform transform;
    transform.kind = std::move(kind);
    return transform;
}

void ExpectClass(Control* control, SClass_ID super, Class_ID id) {
    ASSERT_NE(control, nullptr);
    EXPECT_EQ(control->SuperClassID(), super);
    EXPECT_EQ(control->ClassID().PartA(), id.PartA());
    EXPECT_EQ(control->ClassID().PartB(), id.PartB());
}

TEST_F(ControllersTest, TransformClasses) {
    ExpectClass(OpenTransform({}), 0x9008, Class_ID(0x2005, 0));
    ExpectClass(OpenTransform(TransformOf(scene::MatrixTransform{})), 0x9008, Class_ID(0x2005, 0));
    ExpectClass(OpenTransform(TransformOf(scene::SampledTransform{{{0, scene::kIdentity}}})),
                0x9008, Class_ID(0x9154, 0));
    ExpectClass(OpenTransform(TransformOf(scene::FootprintTransform{})), 0x9008,
                Class_ID(0x3011, 0));
    ExpectClass(OpenTransform(TransformOf(scene::IkChainTransform{})), 0x9008,
                Class_ID(0x78724378, 0x8a4fd9));
    scene::Transform other = TransformOf(scene::FootprintTransform{});
    other.classId = {0x9156, 7};
    ExpectClass(OpenTransform(other), 0x9008, Class_ID(0x9156, 7));
}

TEST_F(ControllersTest, OnlyPositionRotationScaleHasSubControllers) {
    Control* prs = OpenTransform(Prs(Axes(0, 0, 0), {}, Axes(1, 1, 1)));
    EXPECT_NE(prs->GetPositionController(), nullptr);
    EXPECT_EQ(prs->GetRotationController(), nullptr);
    EXPECT_NE(prs->GetScaleController(), nullptr);
    EXPECT_EQ(prs->GetXController(), nullptr);
    for (const scene::Transform& transform :
         {scene::Transform{}, TransformOf(scene::MatrixTransform{}),
          TransformOf(scene::SampledTransform{{{0, scene::kIdentity}}})}) {
        Control* control = OpenTransform(transform);
        EXPECT_EQ(control->GetPositionController(), nullptr);
        EXPECT_EQ(control->GetRotationController(), nullptr);
        EXPECT_EQ(control->GetScaleController(), nullptr);
    }
}

TEST_F(ControllersTest, ThreeAxisClasses) {
    ExpectClass(OpenPosition(Axes(0, 0, 0)), 0x900B, Class_ID(0x118f7e02, 0xffee238a));
    ExpectClass(OpenRotation(Axes(0, 0, 0)), 0x900C, Class_ID(0x2012, 0));
    ExpectClass(OpenScale(Axes(1, 1, 1)), 0x900D, Class_ID(0x118f7c01, 0xfeee238b));
    scene::ThreeAxisController controller;
    controller.kind = scene::BezierScale{};
    ExpectClass(OpenScale(controller), 0x900D, Class_ID(0x2010, 0));
    controller.kind = scene::OtherThree{{0, 0, 0, 1}};
    controller.classId = {0x442312, 0};
    ExpectClass(OpenPosition(controller), 0x900B, Class_ID(0x442312, 0));
    ExpectClass(OpenRotation(controller), 0x900C, Class_ID(0x442312, 0));
    ExpectClass(OpenScale(controller), 0x900D, Class_ID(0x442312, 0));
    scene::ThreeAxisController replaced = Axes(0, 0, 0);
    replaced.classId = {1, 2};
    ExpectClass(OpenPosition(replaced), 0x900B, Class_ID(1, 2));
}

TEST_F(ControllersTest, FloatClasses) {
    ExpectClass(OpenFloat(Constant(1)), 0x9003, Class_ID(0x2007, 0));
    ExpectClass(OpenFloat(FloatOf(scene::FloatList{})), 0x9003, Class_ID(0x4b4b1000, 0));
    ExpectClass(OpenFloat(FloatOf(scene::WireFloat{})), 0x9003, Class_ID(0x498702e7, 0x71f11549));
    scene::FloatController other = FloatOf(scene::OtherFloat{3});
    other.classId = {0x442311, 0};
    ExpectClass(OpenFloat(other), 0x9003, Class_ID(0x442311, 0));
    scene::FloatController replaced = Constant(1);
    replaced.classId = {5, 6};
    ExpectClass(OpenFloat(replaced), 0x9003, Class_ID(5, 6));
}

TEST_F(ControllersTest, AbsentAxesHaveNoController) {
    Control* position = OpenPosition(Axes({}, Constant(2), {}));
    EXPECT_EQ(position->GetXController(), nullptr);
    EXPECT_EQ(FloatAt(position->GetYController(), 0), 2);
    EXPECT_EQ(position->GetZController(), nullptr);
    scene::ThreeAxisController controller;
    controller.kind = scene::BezierScale{};
    EXPECT_EQ(OpenScale(controller)->GetXController(), nullptr);
}

TEST_F(ControllersTest, KeysAreHandedOutAsStored) {
    scene::Key first, second;
    first.time = -160;
    first.value = 1.5f;
    first.inType = Tangent::step;
    first.outType = Tangent::custom;
    first.inTangent = -0.25f;
    first.outTangent = 0.5f;
    first.inLength = -1;
    first.outLength = 7;
    second.time = 320;
    second.inType = Tangent::flat;
    second.outType = Tangent::linear;
    IKeyControl* keys = GetKeyControlInterface(OpenFloat(Keyed({first, second})));
    ASSERT_NE(keys, nullptr);
    ASSERT_EQ(keys->GetNumKeys(), 2);
    IBezFloatKey key;
    keys->GetKey(0, &key);
    EXPECT_EQ(key.time, -160);
    EXPECT_EQ(key.val, 1.5f);
    EXPECT_EQ(GetInTanType(key.flags), DWORD{BEZKEY_STEP});
    EXPECT_EQ(GetOutTanType(key.flags), DWORD{BEZKEY_USER});
    EXPECT_EQ(key.intan, -0.25f);
    EXPECT_EQ(key.outtan, 0.5f);
    EXPECT_EQ(key.inLength, -1);
    EXPECT_EQ(key.outLength, 7);
    keys->GetKey(1, &key);
    EXPECT_EQ(key.time, 320);
    EXPECT_EQ(GetInTanType(key.flags), DWORD{BEZKEY_FLAT});
    EXPECT_EQ(GetOutTanType(key.flags), DWORD{BEZKEY_LINEAR});
    EXPECT_EQ(key.inLength, 0.333333f);
}

TEST_F(ControllersTest, TangentTypesStandInTheFlagsBits) {
    scene::Key description;
    for (int type = 0; type < BEZKEY_NUMTYPES; ++type) {
        description.inType = static_cast<Tangent>(type);
        description.outType = static_cast<Tangent>(BEZKEY_NUMTYPES - 1 - type);
        IBezFloatKey key;
        Control* control = OpenFloat(Keyed({description}));
        GetKeyControlInterface(control)->GetKey(0, &key);
        EXPECT_EQ(key.flags, DWORD(type << 7 | (6 - type) << 10));
    }
}

TEST_F(ControllersTest, KeyOutsideLeavesTheCallersAlone) {
    IKeyControl* keys = GetKeyControlInterface(OpenFloat(Constant(4)));
    ASSERT_NE(keys, nullptr);
    EXPECT_EQ(keys->GetNumKeys(), 0);
    IBezFloatKey key;
    key.time = 42;
    keys->GetKey(0, &key);
    keys->GetKey(-1, &key);
    EXPECT_EQ(key.time, 42);
}

TEST_F(ControllersTest, ScaleKeysAreTriples) {
    scene::Key3 description;
    description.time = 10;
    description.value = {1, 2, 3};
    description.inType = Tangent::slow;
    description.outType = Tangent::fast;
    description.inTangent = {4, 5, 6};
    description.outTangent = {7, 8, 9};
    description.inLength = {0.1f, 0.2f, 0.3f};
    description.outLength = {0.4f, 0.5f, 0.6f};
    scene::ThreeAxisController controller;
    controller.kind = scene::BezierScale{{description}, {1, 1, 1}};
    IKeyControl* keys = GetKeyControlInterface(OpenScale(controller));
    ASSERT_NE(keys, nullptr);
    ASSERT_EQ(keys->GetNumKeys(), 1);
    IBezScaleKey key;
    keys->GetKey(0, &key);
    EXPECT_EQ(key.time, 10);
    EXPECT_EQ(key.flags, DWORD{BEZKEY_SLOW << 7 | BEZKEY_FAST << 10});
    EXPECT_EQ(key.val.s, Point3(1, 2, 3));
    ExpectNear(key.val.q, Quat(0.0f, 0.0f, 0.0f, 1.0f), 0);
    EXPECT_EQ(key.intan, Point3(4, 5, 6));
    EXPECT_EQ(key.outtan, Point3(7, 8, 9));
    EXPECT_EQ(key.inLength, Point3(0.1f, 0.2f, 0.3f));
    EXPECT_EQ(key.outLength, Point3(0.4f, 0.5f, 0.6f));
}

TEST_F(ControllersTest, OnlyBezierControllersExposeKeys) {
    EXPECT_EQ(GetKeyControlInterface(OpenPosition(Axes(0, 0, 0))), nullptr);
    EXPECT_EQ(GetKeyControlInterface(OpenTransform({})), nullptr);
    EXPECT_EQ(GetKeyControlInterface(OpenFloat(FloatOf(scene::FloatList{}))), nullptr);
    EXPECT_EQ(GetKeyControlInterface(OpenFloat(FloatOf(scene::WireFloat{}))), nullptr);
    EXPECT_EQ(GetKeyControlInterface(OpenFloat(FloatOf(scene::OtherFloat{}))), nullptr);
    EXPECT_EQ(OpenFloat(Constant(1))->GetInterface(I_KEYCONTROL + 1), nullptr);
}

TEST_F(ControllersTest, FloatValues) {
    EXPECT_EQ(FloatAt(OpenFloat(Constant(2.5f)), 99), 2.5f);
    scene::WireFloat wire;
    wire.value = 7;
    EXPECT_EQ(FloatAt(OpenFloat(FloatOf(wire)), 99), 7);
    EXPECT_EQ(FloatAt(OpenFloat(FloatOf(scene::OtherFloat{8})), 99), 8);
}

TEST_F(ControllersTest, ValueOfAKeyedControllerComesFromItsKeys) {
    scene::Key key;
    key.value = 3;
    scene::FloatController controller = Keyed({key});
    std::get<scene::BezierFloat>(controller.kind).value = 100;
    EXPECT_EQ(FloatAt(OpenFloat(controller), 99), 3);
}

TEST_F(ControllersTest, AListIsTheWeightedSum) {
    const auto shared = [](scene::FloatController controller) {
        return std::make_shared<const scene::FloatController>(std::move(controller));
    };
    scene::Key first, last;
    first.outType = last.inType = Tangent::linear;
    last.time = 100;
    last.value = 10;
    const scene::FloatList inner = {{{2, shared(Constant(1))}, {-1, shared(Constant(0.5f))}}};
    const scene::FloatList outer = {{{0.5f, shared(Keyed({first, last}))},
                                     {1, shared(FloatOf(inner))},
                                     {0, shared(Constant(1000))}}};
    Control* control = OpenFloat(FloatOf(outer));
    EXPECT_FLOAT_EQ(FloatAt(control, 0), 1.5f);
    EXPECT_FLOAT_EQ(FloatAt(control, 50), 4);
    EXPECT_FLOAT_EQ(FloatAt(control, 100), 6.5f);
    EXPECT_EQ(FloatAt(OpenFloat(FloatOf(scene::FloatList{})), 0), 0);
}

TEST_F(ControllersTest, RelativeFloatsAreAdded) {
    Control* control = OpenFloat(Constant(2.5f));
    float value = 10;
    Interval valid = Interval(5, 8);
    control->GetValue(6, &value, valid, CTRL_RELATIVE);
    EXPECT_EQ(value, 12.5f);
    EXPECT_EQ(valid, Interval(5, 8));
}

TEST_F(ControllersTest, AbsoluteValuesOfThePartsOfATransform) {
    Interval valid = FOREVER;
    Point3 position;
    OpenPosition(Axes(1, 2, 3))->GetValue(0, &position, valid);
    EXPECT_EQ(position, Point3(1, 2, 3));

    ScaleValue scaling;
    OpenScale(Axes(Constant(2), {}, Constant(4)))->GetValue(0, &scaling, valid);
    EXPECT_EQ(scaling.s, Point3(2, 1, 4));
    ExpectNear(scaling.q, Quat(0.0f, 0.0f, 0.0f, 1.0f), 0);

    // The SDK's quaternions turn by the left-hand rule.
    Quat rotation;
    OpenRotation(Axes(0, 0, kQuarterTurn))->GetValue(0, &rotation, valid);
    ExpectNear(rotation, Quat(0.0f, 0.0f, -0.70710678f, 0.70710678f));
    scene::ThreeAxisController other;
    other.kind = scene::OtherThree{{0.6f, 0, 0, 0.8f}};
    OpenRotation(other)->GetValue(0, &rotation, valid);
    ExpectNear(rotation, Quat(-0.6f, 0.0f, 0.0f, 0.8f));
    EXPECT_EQ(valid, FOREVER);
}

TEST_F(ControllersTest, RelativeValuesAreAppliedBeforeTheMatrix) {
    const Matrix3 before(Point3(0, 1, 0), Point3(-1, 0, 0), Point3(0, 0, 1), Point3(5, 6, 7));
    Interval valid = FOREVER;
    Matrix3 matrix = before;
    OpenPosition(Axes(1, 2, 3))->GetValue(0, &matrix, valid, CTRL_RELATIVE);
    EXPECT_TRUE(MatrixNear(matrix, {{{0, 1, 0}, {-1, 0, 0}, {0, 0, 1}, {3, 7, 10}}}));
    matrix = before;
    OpenScale(Axes(2, 3, 4))->GetValue(0, &matrix, valid, CTRL_RELATIVE);
    EXPECT_TRUE(MatrixNear(matrix, {{{0, 2, 0}, {-3, 0, 0}, {0, 0, 4}, {5, 6, 7}}}));
    matrix = before;
    OpenRotation(Axes(kQuarterTurn, 0, 0))->GetValue(0, &matrix, valid, CTRL_RELATIVE);
    EXPECT_TRUE(MatrixNear(matrix, {{{0, 1, 0}, {0, 0, 1}, {1, 0, 0}, {5, 6, 7}}}));
    matrix = before;
    OpenTransform(Prs(Axes(1, 2, 3)))->GetValue(0, &matrix, valid, CTRL_RELATIVE);
    EXPECT_TRUE(MatrixNear(matrix, {{{0, 1, 0}, {-1, 0, 0}, {0, 0, 1}, {3, 7, 10}}}));
}

TEST_F(ControllersTest, TransformsGiveNoAbsoluteValue) {
    Interval valid = FOREVER;
    Matrix3 matrix(TRUE);
    OpenTransform(Prs(Axes(1, 2, 3)))->GetValue(0, &matrix, valid, CTRL_ABSOLUTE);
    EXPECT_TRUE(MatrixNear(matrix, scene::kIdentity));
}
