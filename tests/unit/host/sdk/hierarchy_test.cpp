// Nodes: hierarchy, names, and what a node says of itself.
#include <maxapi.h>

#include "tests/unit/host/sdk/support.h"

namespace scene = maxhost::scene;
using testing::StrEq;

using HierarchyTest = SceneTest;

INode* Root() {
    return maxhost::Host::Instance().GetInterface()->GetRootNode();
}

TEST_F(HierarchyTest, EmptySceneHasARootWithoutChildren) {
    Open({});
    EXPECT_THAT(Root()->GetName(), StrEq("Scene Root"));
    EXPECT_EQ(Root()->NumberOfChildren(), 0);
    EXPECT_EQ(Root()->GetChildNode(0), nullptr);
    EXPECT_EQ(Root()->GetParentNode(), nullptr);
    EXPECT_EQ(Root()->EvalWorldState(0).obj, nullptr);
    EXPECT_EQ(Root()->GetObjectRef(), nullptr);
    EXPECT_EQ(Root()->GetTMController(), nullptr);
    EXPECT_EQ(Root()->GetMtl(), nullptr);
    EXPECT_FALSE(Root()->Selected());
    EXPECT_FALSE(Root()->IsHidden());
    EXPECT_TRUE(MatrixNear(Root()->GetNodeTM(77), scene::kIdentity));
    EXPECT_TRUE(MatrixNear(Root()->GetObjectTM(77), scene::kIdentity));
    EXPECT_TRUE(MatrixNear(Root()->GetParentTM(77), scene::kIdentity));
    CStr properties("left over");
    Root()->GetUserPropBuffer(properties);
    EXPECT_THAT(properties.data(), StrEq(""));
}

TEST_F(HierarchyTest, ChildrenStandInNodeOrder) {
    // The parent of the first node stands behind it.
    Open(MakeScene({MakeNode("a", 2), MakeNode("b"), MakeNode("c"), MakeNode("d", 2)}));
    ASSERT_EQ(Root()->NumberOfChildren(), 2);
    EXPECT_EQ(Root()->GetChildNode(0), At(1));
    EXPECT_EQ(Root()->GetChildNode(1), At(2));
    ASSERT_EQ(At(2)->NumberOfChildren(), 2);
    EXPECT_EQ(At(2)->GetChildNode(0), At(0));
    EXPECT_EQ(At(2)->GetChildNode(1), At(3));
    EXPECT_EQ(At(2)->GetChildNode(2), nullptr);
    EXPECT_EQ(At(2)->GetChildNode(-1), nullptr);
    EXPECT_EQ(At(1)->NumberOfChildren(), 0);
}

TEST_F(HierarchyTest, ParentOfATopLevelNodeIsTheRoot) {
    Open(MakeScene({MakeNode("top"), MakeNode("below", 0)}));
    EXPECT_EQ(At(0)->GetParentNode(), Root());
    EXPECT_EQ(At(1)->GetParentNode(), At(0));
}

TEST_F(HierarchyTest, NamesAreKeptByteForByte) {
    Open(MakeScene({MakeNode(""), MakeNode("scene root"), MakeNode("B\xc3\xa4r \xff\n")}));
    EXPECT_THAT(At(0)->GetName(), StrEq(""));
    EXPECT_THAT(At(1)->GetName(), StrEq("scene root"));
    EXPECT_THAT(At(2)->GetName(), StrEq("B\xc3\xa4r \xff\n"));
}

TEST_F(HierarchyTest, PropertiesHaveTheirDefaults) {
    INode* node = OpenNode(MakeNode("n"));
    EXPECT_EQ(node->SuperClassID(), SClass_ID{BASENODE_CLASS_ID});
    EXPECT_FALSE(node->IsHidden());
    EXPECT_FALSE(node->Selected());
    EXPECT_TRUE(node->Renderable());
    EXPECT_EQ(node->GetWireColor(), RGB(128, 128, 128));
    EXPECT_EQ(node->GetMtl(), nullptr);
    CStr properties("left over");
    node->GetUserPropBuffer(properties);
    EXPECT_THAT(properties.data(), StrEq(""));
    EXPECT_TRUE(MatrixNear(node->GetNodeTM(0), scene::kIdentity));
}

TEST_F(HierarchyTest, PropertiesAreAsDescribed) {
    scene::Node description = MakeNode("n");
    description.hidden = true;
    description.renderable = false;
    description.wireColor = {0x12, 0x34, 0xff};
    description.userProperties = "CollisionMesh = 1\r\nother = 2";
    INode* node = OpenNode(description);
    EXPECT_TRUE(node->IsHidden());
    EXPECT_TRUE(node->IsHidden(0, TRUE));
    EXPECT_FALSE(node->Renderable());
    EXPECT_EQ(node->GetWireColor(), DWORD{0xff3412});
    CStr properties;
    node->GetUserPropBuffer(properties);
    EXPECT_THAT(properties.data(), StrEq("CollisionMesh = 1\r\nother = 2"));
}

TEST_F(HierarchyTest, OpeningAnotherSceneReplacesTheNodes) {
    Open(MakeScene({MakeNode("a"), MakeNode("b", 0)}));
    Open(MakeScene({MakeNode("c")}));
    ASSERT_EQ(maxhost::Host::Instance().Nodes().size(), 1u);
    ASSERT_EQ(Root()->NumberOfChildren(), 1);
    EXPECT_THAT(Root()->GetChildNode(0)->GetName(), StrEq("c"));
    maxhost::Host::Instance().CloseScene();
    EXPECT_TRUE(maxhost::Host::Instance().Nodes().empty());
    EXPECT_EQ(Root()->NumberOfChildren(), 0);
}
