// Objects, their stacks, and who owns what.
#include <dummy.h>
#include <iparamb2.h>
#include <modstack.h>
#include <triobj.h>

#include "host/sdk/live_objects.h"
#include "tests/unit/host/sdk/support.h"

namespace scene = maxhost::scene;

class ObjectsTest : public SceneTest {
  protected:
    static INode* OpenObject(std::optional<scene::Object> object,
                             std::vector<scene::Modifier> modifiers = {},
                             std::vector<scene::Modifier> referenceModifiers = {}) {
        scene::Node node = MakeNode("n");
        node.object = std::move(object);
        node.modifiers = std::move(modifiers);
        node.referenceModifiers = std::move(referenceModifiers);
        return OpenNode(node);
    }
};

scene::Object Helper(std::uint32_t superClassId, scene::ClassId classId) {
    scene::Object object;
    object.superClassId = superClassId;
    object.classId = classId;
    return object;
}

scene::Object Triangle() {
    scene::Mesh mesh;
    mesh.vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1, 5}};
    mesh.faces = {{{0, 1, 2}, 0x80000001, 65535}, {{2, 1, 0}, 0, 3}};
    scene::Object object;
    object.mesh = std::make_shared<const scene::Mesh>(std::move(mesh));
    return object;
}

scene::Modifier OtherModifier(std::uint32_t id, bool enabled = true) {
    return {enabled, scene::OtherModifier{{id, 1}}};
}

void ExpectClass(Animatable* object, SClass_ID super, Class_ID id) {
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(object->SuperClassID(), super);
    EXPECT_EQ(object->ClassID().PartA(), id.PartA());
    EXPECT_EQ(object->ClassID().PartB(), id.PartB());
}

// An exporter's way to the first parameter block.
IParamBlock2* FirstBlock(Object* object) {
    return static_cast<Animatable*>(object)->GetParamBlock(0);
}

void ExpectTriangle(Mesh& mesh) {
    ASSERT_EQ(mesh.getNumVerts(), 3);
    EXPECT_EQ(mesh.verts[2], Point3(0, 1, 5));
    ASSERT_EQ(mesh.getNumFaces(), 2);
    EXPECT_EQ(mesh.faces[0].getVert(1), DWORD{1});
    EXPECT_EQ(mesh.faces[0].getSmGroup(), DWORD{0x80000001});
    EXPECT_EQ(mesh.faces[0].getMatID(), 65535);
    EXPECT_EQ(mesh.faces[1].getVert(0), DWORD{2});
    EXPECT_EQ(mesh.faces[1].getSmGroup(), DWORD{0});
    EXPECT_EQ(mesh.faces[1].getMatID(), 3);
}

TEST_F(ObjectsTest, NoObjectIsADummyHelper) {
    INode* node = OpenObject({});
    ExpectClass(node->GetObjectRef(), HELPER_CLASS_ID, Class_ID(0x876234, 0));
    EXPECT_TRUE(node->GetObjectRef()->ClassID() == dummyClassID);
    EXPECT_EQ(FirstBlock(node->GetObjectRef()), nullptr);
    EXPECT_EQ(node->EvalWorldState(0).obj, node->GetObjectRef());
}

TEST_F(ObjectsTest, IdsAreAsDescribed) {
    INode* node = OpenObject(Helper(0x40, {0x1c706482, 0x3e82994}));
    ExpectClass(node->GetObjectRef(), SHAPE_CLASS_ID, Class_ID(0x1c706482, 0x3e82994));
    EXPECT_EQ(node->GetObjectRef()->CanConvertToType(triObjectClassID), 0);
    EXPECT_EQ(node->GetObjectRef()->ConvertToType(0, triObjectClassID), nullptr);
    EXPECT_EQ(node->GetObjectRef()->NumPoints(), 0);
}

TEST_F(ObjectsTest, ParameterZeroStandsInTheFirstBlock) {
    scene::Object object = Helper(0x50, {0x2013, 0});
    object.parameter0 = 12.5f;
    Object* helper = OpenObject(object)->GetObjectRef();
    IParamBlock2* block = FirstBlock(helper);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(static_cast<Animatable*>(helper)->GetParamBlock(1), nullptr);
    float value = -1;
    Interval valid(3, 4);
    EXPECT_TRUE(block->GetValue(0, 0, value, valid));
    EXPECT_EQ(value, 12.5f);
    EXPECT_EQ(valid, Interval(3, 4));
    EXPECT_FALSE(block->GetValue(1, 0, value, valid));
    EXPECT_EQ(value, 12.5f);
    EXPECT_EQ(helper->GetParamBlock(), nullptr);
}

TEST_F(ObjectsTest, MeshIsATriObjectThatConvertsToItself) {
    INode* node = OpenObject(Triangle());
    Object* object = node->EvalWorldState(0).obj;
    ExpectClass(object, GEOMOBJECT_CLASS_ID, Class_ID(9, 0));
    EXPECT_TRUE(object->CanConvertToType(triObjectClassID));
    Object* converted = object->ConvertToType(0, triObjectClassID);
    EXPECT_EQ(converted, object);
    ExpectTriangle(static_cast<TriObject*>(converted)->GetMesh());
    EXPECT_EQ(object->NumPoints(), 3);
    EXPECT_EQ(object->ConvertToType(0, Class_ID(1, 2)), nullptr);
}

TEST_F(ObjectsTest, MeshOfAnotherClassConvertsToANewObject) {
    scene::Object description = Triangle();
    description.classId = {0x1bf8338d, 0x192f6098};
    description.superClassId = 0x830;
    description.parameter0 = 2;
    Object* object = OpenObject(description)->EvalWorldState(0).obj;
    ExpectClass(object, 0x830, Class_ID(0x1bf8338d, 0x192f6098));
    EXPECT_NE(FirstBlock(object), nullptr);
    EXPECT_EQ(object->NumPoints(), 3);
    EXPECT_EQ(object->ConvertToType(0, Class_ID(1, 2)), nullptr);

    const int before = maxhost::LiveObjectCount();
    ASSERT_TRUE(object->CanConvertToType(triObjectClassID));
    auto* converted = static_cast<TriObject*>(object->ConvertToType(0, triObjectClassID));
    ASSERT_NE(converted, nullptr);
    EXPECT_NE(static_cast<Object*>(converted), object);
    EXPECT_EQ(maxhost::LiveObjectCount(), before + 1);
    ExpectClass(converted, GEOMOBJECT_CLASS_ID, triObjectClassID);
    ExpectTriangle(converted->GetMesh());
    EXPECT_EQ(converted->NumPoints(), 3);
    converted->DeleteMe();
    EXPECT_EQ(maxhost::LiveObjectCount(), before);
}

TEST_F(ObjectsTest, EmptyMeshHasNoArrays) {
    scene::Object description;
    description.mesh = std::make_shared<const scene::Mesh>();
    Object* object = OpenObject(description)->GetObjectRef();
    Mesh& mesh = static_cast<TriObject*>(object)->mesh;
    EXPECT_EQ(mesh.getNumVerts(), 0);
    EXPECT_EQ(mesh.verts, nullptr);
    EXPECT_EQ(mesh.getNumFaces(), 0);
    EXPECT_EQ(mesh.faces, nullptr);
}

TEST_F(ObjectsTest, ObjectsOfTheSceneStayWhenDeleted) {
    INode* node = OpenObject(Triangle());
    Object* object = node->GetObjectRef();
    object->DeleteMe();
    node->DeleteMe();
    EXPECT_EQ(object->NumPoints(), 3);
    EXPECT_EQ(node->GetObjectRef(), object);
}

TEST_F(ObjectsTest, ReleasedMeshesAreEmptyAndTheDescriptionKeepsItsOwn) {
    scene::Object description = Triangle();
    scene::Mesh mesh = *description.mesh;
    mesh.channels[2] = {{{0, 0}}, {{0, 0, 0}, {0, 0, 0}}};
    description.mesh = std::make_shared<const scene::Mesh>(mesh);
    Object* object = OpenObject(description)->GetObjectRef();
    Mesh& opened = static_cast<TriObject*>(object)->mesh;
    opened.buildNormals();
    maxhost::Host::Instance().ReleaseMeshes();
    EXPECT_EQ(opened.getNumVerts(), 0);
    EXPECT_EQ(opened.getNumFaces(), 0);
    EXPECT_FALSE(opened.mapSupport(2));
    const scene::Scene& kept = maxhost::Host::Instance().Description();
    EXPECT_EQ(kept.nodes.back().object->mesh->vertices.size(), 3u);
}

TEST(MeshTest, CountsMayChange) {
    Mesh mesh;
    EXPECT_TRUE(mesh.setNumVerts(2));
    mesh.verts[0] = Point3(1, 2, 3);
    mesh.verts[1] = Point3(4, 5, 6);
    EXPECT_TRUE(mesh.setNumVerts(3, TRUE));
    EXPECT_EQ(mesh.verts[1], Point3(4, 5, 6));
    EXPECT_TRUE(mesh.setNumVerts(1, TRUE));
    EXPECT_EQ(mesh.getNumVerts(), 1);
    EXPECT_EQ(mesh.verts[0], Point3(1, 2, 3));
    EXPECT_FALSE(mesh.setNumVerts(-1));
    EXPECT_EQ(mesh.getNumVerts(), 1);
    EXPECT_TRUE(mesh.setNumFaces(1));
    EXPECT_EQ(mesh.faces[0].getSmGroup(), DWORD{0});
    mesh.faces[0].flags = 7;
    mesh.faces[0].setMatID(0xffff);
    EXPECT_EQ(mesh.faces[0].flags, DWORD{0xffff0007});
    EXPECT_TRUE(mesh.setNumFaces(0));
    EXPECT_EQ(mesh.faces, nullptr);
}

TEST_F(ObjectsTest, ModifiersMakeADerivedObject) {
    INode* node = OpenObject(Triangle(), {OtherModifier(10), OtherModifier(11, false)});
    Object* head = node->GetObjectRef();
    ExpectClass(head, GEN_DERIVOB_CLASS_ID, Class_ID(3, 0));
    EXPECT_TRUE(head->ClassID() == derivObjClassID);
    EXPECT_EQ(FirstBlock(head), nullptr);
    auto* derived = static_cast<IDerivedObject*>(head);
    ASSERT_EQ(derived->NumModifiers(), 2);
    ExpectClass(derived->GetModifier(0), OSM_CLASS_ID, Class_ID(10, 1));
    ExpectClass(derived->GetModifier(1), OSM_CLASS_ID, Class_ID(11, 1));
    EXPECT_EQ(derived->GetModifier(2), nullptr);
    EXPECT_EQ(derived->GetModifier(-1), nullptr);

    EXPECT_FALSE(derived->GetModifier(0)->TestAFlag(A_MOD_DISABLED));
    EXPECT_TRUE(derived->GetModifier(1)->TestAFlag(A_MOD_DISABLED));
    EXPECT_TRUE(derived->GetModifier(1)->TestAFlag(0x20));

    Object* base = derived->GetObjRef();
    ExpectClass(base, GEOMOBJECT_CLASS_ID, Class_ID(9, 0));
    EXPECT_EQ(node->EvalWorldState(0).obj, base);
}

TEST_F(ObjectsTest, ReferenceModifiersStandAboveTheModifiers) {
    INode* node =
        OpenObject(Triangle(), {OtherModifier(10)}, {OtherModifier(20), OtherModifier(21)});
    auto* upper = static_cast<IDerivedObject*>(node->GetObjectRef());
    ASSERT_EQ(upper->SuperClassID(), SClass_ID{GEN_DERIVOB_CLASS_ID});
    ASSERT_EQ(upper->NumModifiers(), 2);
    EXPECT_EQ(upper->GetModifier(0)->ClassID().PartA(), 20u);
    EXPECT_EQ(upper->GetModifier(1)->ClassID().PartA(), 21u);
    auto* lower = static_cast<IDerivedObject*>(upper->GetObjRef());
    ASSERT_EQ(lower->SuperClassID(), SClass_ID{GEN_DERIVOB_CLASS_ID});
    ASSERT_EQ(lower->NumModifiers(), 1);
    EXPECT_EQ(lower->GetModifier(0)->ClassID().PartA(), 10u);
    EXPECT_EQ(lower->GetObjRef(), node->EvalWorldState(0).obj);
}

TEST_F(ObjectsTest, ReferenceModifiersAloneMakeOneDerivedObject) {
    INode* node = OpenObject({}, {}, {OtherModifier(20)});
    auto* derived = static_cast<IDerivedObject*>(node->GetObjectRef());
    ASSERT_EQ(derived->SuperClassID(), SClass_ID{GEN_DERIVOB_CLASS_ID});
    EXPECT_EQ(derived->GetObjRef()->SuperClassID(), SClass_ID{HELPER_CLASS_ID});
}

TEST_F(ObjectsTest, ModifierClasses) {
    INode* node = OpenObject(
        Triangle(), {{true, scene::Skin{}}, {true, scene::Physique{}}, {true, scene::Morpher{}}});
    auto* derived = static_cast<IDerivedObject*>(node->GetObjectRef());
    ExpectClass(derived->GetModifier(0), 0x810, Class_ID(9815843, 87654));
    ExpectClass(derived->GetModifier(1), 0x810, Class_ID(0x100, 0));
    ExpectClass(derived->GetModifier(2), 0x810, Class_ID(0x17bb6854, 0xa5cba2a3));
}
