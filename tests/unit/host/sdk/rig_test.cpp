// The parts of rigs: list and wire controllers, joint parameters, IK chains, Morphers.
#include <MorpherApi.h>
#include <iiksys.h>
#include <interpik.h>
#include <iparamwire.h>
#include <istdplug.h>
#include <modstack.h>

#include "tests/unit/host/sdk/support.h"

namespace scene = maxhost::scene;
using testing::StrEq;

scene::FloatListItem Item(float weight, scene::FloatController controller) {
    return {weight, std::make_shared<const scene::FloatController>(std::move(controller))};
}

class RigTest : public SceneTest {
  protected:
    // A scene whose node 0 has these axes of its position.
    static void OpenAxes(std::optional<scene::FloatController> x,
                         std::optional<scene::FloatController> y = {},
                         std::optional<scene::FloatController> z = {}) {
        scene::Node node = MakeNode("n");
        node.transform = Prs(Axes(std::move(x), std::move(y), std::move(z)));
        node.transform->id = "transform";
        std::get<scene::PrsTransform>(node.transform->kind).position->id = "position";
        OpenNode(std::move(node));
    }
    static Control* Position() { return At(0)->GetTMController()->GetPositionController(); }
};

// ---------------------------------------------------------------- lists

TEST_F(RigTest, ListHandsOutItsEntriesAndWeights) {
    OpenAxes(FloatOf(
        scene::FloatList{{Item(0.25f, Constant(8)), Item(2, FloatOf(scene::WireFloat{}, "w"))}}));
    IListControl* list = GetIListControlInterface(Position()->GetXController());
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(static_cast<Control*>(list), Position()->GetXController());
    ASSERT_EQ(list->GetListCount(), 2);
    EXPECT_EQ(list->GetSubCtrl(0)->ClassID(), Class_ID(0x2007, 0));
    EXPECT_EQ(list->GetSubCtrl(1)->ClassID(), Class_ID(0x498702e7, 0x71f11549));
    EXPECT_EQ(list->GetSubCtrlWeight(0, 0), 0.25f);
    EXPECT_EQ(list->GetSubCtrlWeight(1, 1000), 2);
    for (const int none : {-1, 2}) {
        EXPECT_EQ(list->GetSubCtrl(none), nullptr);
        EXPECT_EQ(list->GetSubCtrlWeight(none, 0), 0);
    }
    float value = 0;
    Interval valid = FOREVER;
    list->GetValue(0, &value, valid);
    EXPECT_EQ(value, 2);
}

TEST_F(RigTest, OnlyListsAndWiresAreListsAndWires) {
    OpenAxes(Constant(1), FloatOf(scene::FloatList{}), FloatOf(scene::WireFloat{}));
    EXPECT_EQ(LIST_CONTROLLER_INTERFACE, Interface_ID(0x444e7687, 0x722e6e36));
    EXPECT_EQ(WIRE_CONTROLLER_INTERFACE, Interface_ID(0x25ce0f5c, 0x6c303d2f));
    Control* const x = Position()->GetXController();
    Control* const list = Position()->GetYController();
    Control* const wire = Position()->GetZController();
    EXPECT_EQ(GetIListControlInterface(x), nullptr);
    EXPECT_EQ(GetWireControlInterface(x), nullptr);
    EXPECT_EQ(GetIListControlInterface(wire), nullptr);
    EXPECT_EQ(GetWireControlInterface(list), nullptr);
    EXPECT_EQ(GetWireControlInterface(Position()), nullptr);
    EXPECT_NE(GetIListControlInterface(list), nullptr);
    EXPECT_NE(GetWireControlInterface(wire), nullptr);
    EXPECT_EQ(GetKeyControlInterface(list), nullptr);
    EXPECT_EQ(GetKeyControlInterface(wire), nullptr);
    EXPECT_NE(GetKeyControlInterface(x), nullptr);
}

// ---------------------------------------------------------------- wires

TEST_F(RigTest, WireHandsOutWhatTheSceneSays) {
    const scene::WireFloat wire{
        true,
        false,
        true,
        {{"position", 2, "driver", "one"}, {"transform", 7, "", ""}, {"", 0, "self", "three"}},
        5};
    OpenAxes(FloatOf(wire, "self"), FloatOf(scene::BezierFloat{}, "driver"));
    Control* const control = Position()->GetXController();
    IBaseWireControl* interface = GetWireControlInterface(control);
    ASSERT_NE(interface, nullptr);
    EXPECT_EQ(static_cast<Control*>(interface), control);
    EXPECT_TRUE(interface->is_master());
    EXPECT_FALSE(interface->is_slave());
    EXPECT_TRUE(interface->is_two_way());
    ASSERT_EQ(interface->get_num_wires(), 3);
    EXPECT_EQ(interface->get_wire_parent(0), Position());
    EXPECT_EQ(interface->get_wire_parent(1), At(0)->GetTMController());
    EXPECT_EQ(interface->get_wire_parent(2), nullptr);
    EXPECT_EQ(interface->get_wire_subnum(0), 2);
    EXPECT_EQ(interface->get_wire_subnum(1), 7);
    EXPECT_EQ(interface->get_co_controller(0), Position()->GetYController());
    EXPECT_EQ(interface->get_co_controller(1), nullptr);
    EXPECT_EQ(interface->get_co_controller(2), control);
    EXPECT_THAT(interface->get_expr_text(0), StrEq("one"));
    EXPECT_THAT(interface->get_expr_text(1), StrEq(""));
    for (const int none : {-1, 3}) {
        EXPECT_EQ(interface->get_wire_parent(none), nullptr);
        EXPECT_EQ(interface->get_wire_subnum(none), 0);
        EXPECT_EQ(interface->get_co_controller(none), nullptr);
        EXPECT_EQ(interface->get_expr_text(none), nullptr);
    }
    float value = 0;
    Interval valid = FOREVER;
    control->GetValue(0, &value, valid);
    EXPECT_EQ(value, 5);
}

TEST_F(RigTest, WiresReachAllThatHasAnId) {
    // Into a list, into a rotation and to a later node; and to nothing where no such id is.
    scene::WireFloat wire;
    wire.wires = {{"rotation", 0, "listed", ""}, {"later", 0, "unknown", ""}};
    scene::Node first = MakeNode("first"), second = MakeNode("second");
    scene::ThreeAxisController rotation =
        Axes(FloatOf(scene::FloatList{{Item(1, FloatOf(scene::BezierFloat{}, "listed"))}}), {}, {});
    rotation.id = "rotation";
    first.transform = Prs(Axes(FloatOf(wire), {}, {}), rotation);
    second.transform.emplace().id = "later";
    Open(MakeScene({first, second}));
    IBaseWireControl* interface = GetWireControlInterface(Position()->GetXController());
    Control* const turning = At(0)->GetTMController()->GetRotationController();
    EXPECT_EQ(interface->get_wire_parent(0), turning);
    EXPECT_EQ(interface->get_co_controller(0),
              GetIListControlInterface(turning->GetXController())->GetSubCtrl(0));
    EXPECT_EQ(interface->get_wire_parent(1), At(1)->GetTMController());
    EXPECT_EQ(interface->get_co_controller(1), nullptr);
}

// ---------------------------------------------------------------- joint parameters

TEST_F(RigTest, JointParameters) {
    EXPECT_EQ(PROPID_JOINTPARAMS, 0x10001);
    scene::JointParams params;
    params.flags = 0x80000012;
    params.dofs = 4;
    params.min = {-1, -2, -3, -4};
    params.max = {1, 2, 3, 4};
    scene::ThreeAxisController position = Axes(0, 0, 0), rotation = Axes(0, 0, 0);
    position.jointParams = params;
    rotation.jointParams.emplace().isDefault = true;
    scene::Node node = MakeNode("n");
    node.transform = Prs(position, rotation, Axes(1, 1, 1));
    Control* const transform = OpenNode(node)->GetTMController();

    EXPECT_EQ(PROPID_JOINTPARAMS, 0x10001);
    auto* limits = static_cast<JointParams*>(
        transform->GetPositionController()->GetProperty(PROPID_JOINTPARAMS));
    ASSERT_NE(limits, nullptr);
    EXPECT_FALSE(limits->IsDefault());
    EXPECT_EQ(limits->flags, 0x80000012u);
    ASSERT_EQ(limits->dofs, 4);
    EXPECT_THAT(std::vector(limits->min, limits->min + 4), testing::ElementsAre(-1, -2, -3, -4));
    EXPECT_THAT(std::vector(limits->max, limits->max + 4), testing::ElementsAre(1, 2, 3, 4));

    limits = static_cast<JointParams*>(
        transform->GetRotationController()->GetProperty(PROPID_JOINTPARAMS));
    ASSERT_NE(limits, nullptr);
    EXPECT_TRUE(limits->IsDefault());
    EXPECT_EQ(limits->dofs, 3);
    EXPECT_EQ(transform->GetScaleController()->GetProperty(PROPID_JOINTPARAMS), nullptr);
    EXPECT_EQ(transform->GetPositionController()->GetProperty(PROPID_USER), nullptr);
    EXPECT_EQ(transform->GetProperty(PROPID_JOINTPARAMS), nullptr);
}

TEST_F(RigTest, JointFlags) {
    EXPECT_EQ(static_cast<DWORD>(JNT_POS), 0x80000000u);
    EXPECT_EQ(JNT_ROT, 0x40000000);
    EXPECT_EQ(JNT_XACTIVE | JNT_YACTIVE | JNT_ZACTIVE, 7);
    EXPECT_EQ(JNT_XLIMITED, 8);
    EXPECT_EQ(JNT_YLIMITED, 16);
    EXPECT_EQ(JNT_ZLIMITED, 32);
}

// ---------------------------------------------------------------- IK chains

TEST_F(RigTest, ChainsKnowTheirJoints) {
    scene::Node goal = MakeNode("goal"), loose = MakeNode("loose");
    goal.transform.emplace().kind = scene::IkChainTransform{2, 0, scene::kIdentity};
    loose.transform.emplace().kind =
        scene::IkChainTransform{scene::kNone, scene::kNone, scene::kIdentity};
    Open(MakeScene({goal, loose, MakeNode("thigh")}));
    auto* chain =
        static_cast<IIKChainControl*>(At(0)->GetTMController()->GetInterface(I_IKCHAINCONTROL));
    ASSERT_NE(chain, nullptr);
    EXPECT_EQ(chain->StartJoint(), At(2));
    EXPECT_EQ(chain->EndJoint(), At(0));
    chain = static_cast<IIKChainControl*>(At(1)->GetTMController()->GetInterface(I_IKCHAINCONTROL));
    ASSERT_NE(chain, nullptr);
    EXPECT_EQ(chain->StartJoint(), nullptr);
    EXPECT_EQ(chain->EndJoint(), nullptr);
    EXPECT_EQ(At(0)->GetTMController()->GetInterface(I_KEYCONTROL), nullptr);
    EXPECT_EQ(At(2)->GetTMController()->GetInterface(I_IKCHAINCONTROL), nullptr);
}

// ---------------------------------------------------------------- Morphers

TEST_F(RigTest, MorpherChannels) {
    EXPECT_EQ(MR3_CLASS_ID, Class_ID(0x17bb6854, 0xa5cba2a3));
    scene::Node node = MakeNode("n");
    node.modifiers = {{true, scene::Morpher{{{"smile", {{1, 2, 3}, {4, 5, 6}}}, {"empty", {}}}}},
                      {true, scene::OtherModifier{{0x17bb6854, 0xa5cba2a3}}}};
    auto* stack = static_cast<IDerivedObject*>(OpenNode(node)->GetObjectRef());
    EXPECT_EQ(stack->GetModifier(0)->ClassID(), MR3_CLASS_ID);
    const MaxMorphModifier morpher(stack->GetModifier(0));
    EXPECT_TRUE(morpher.IsValid());
    ASSERT_EQ(morpher.NumMorphChannels(), 2);
    const MaxMorphChannel smile = morpher.GetMorphChannel(0);
    EXPECT_THAT(smile.GetName(), StrEq("smile"));
    ASSERT_EQ(smile.NumMorphPoints(), 2);
    EXPECT_EQ(smile.GetMorphPoint(1), Point3(4, 5, 6));
    EXPECT_EQ(smile.GetMorphPoint(2), Point3(0, 0, 0));
    EXPECT_EQ(smile.GetMorphPoint(-1), Point3(0, 0, 0));
    EXPECT_THAT(morpher.GetMorphChannel(1).GetName(), StrEq("empty"));
    EXPECT_EQ(morpher.GetMorphChannel(1).NumMorphPoints(), 0);
    for (const int none : {-1, 2}) {
        EXPECT_EQ(morpher.GetMorphChannel(none).GetName(), nullptr);
        EXPECT_EQ(morpher.GetMorphChannel(none).NumMorphPoints(), 0);
    }
    for (Modifier* other : {stack->GetModifier(1), static_cast<Modifier*>(nullptr)}) {
        EXPECT_FALSE(MaxMorphModifier(other).IsValid());
        EXPECT_EQ(MaxMorphModifier(other).NumMorphChannels(), 0);
        EXPECT_EQ(MaxMorphModifier(other).GetMorphChannel(0).NumMorphPoints(), 0);
    }
}
