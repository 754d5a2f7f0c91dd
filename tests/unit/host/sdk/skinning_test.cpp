// Skin and Physique: their interfaces, and what has to be given back.
#include <CS/phyexp.h>
#include <iskin.h>
#include <modstack.h>

#include "host/sdk/live_objects.h"
#include "tests/unit/host/sdk/support.h"

namespace scene = maxhost::scene;

class SkinningTest : public SceneTest {
  protected:
    // Opens a scene of three nodes; `modifiers` stand on the first.
    static void OpenWith(std::vector<scene::Modifier> modifiers) {
        scene::Scene scene = MakeScene({MakeNode("skinned"), MakeNode("a"), MakeNode("b")});
        scene.nodes[0].modifiers = std::move(modifiers);
        Open(std::move(scene));
    }
    static Modifier* TheModifier(int index = 0) {
        return static_cast<IDerivedObject*>(At(0)->GetObjectRef())->GetModifier(index);
    }
    static ISkin* TheSkin() { return static_cast<ISkin*>(TheModifier()->GetInterface(I_SKIN)); }
    static IPhysiqueExport* ThePhysique() {
        return static_cast<IPhysiqueExport*>(TheModifier()->GetInterface(I_PHYINTERFACE));
    }
};

TEST_F(SkinningTest, SkinGivesItsBonesBySlot) {
    OpenWith({{true, scene::Skin{{2, 0, 2}, {}, true}}});
    EXPECT_TRUE(TheModifier()->ClassID() == SKIN_CLASSID);
    ISkin* skin = TheSkin();
    ASSERT_NE(skin, nullptr);
    EXPECT_EQ(skin->GetBone(0), At(2));
    EXPECT_EQ(skin->GetBone(1), At(0));
    EXPECT_EQ(skin->GetBone(2), At(2));
    EXPECT_EQ(skin->GetBone(3), nullptr);
    EXPECT_EQ(skin->GetBone(-1), nullptr);
}

TEST_F(SkinningTest, ContextGivesWeightsAsTheyStand) {
    OpenWith({{true, scene::Skin{{1, 2}, {{{1, 0.25f}, {-3, 0.5f}}, {}, {{0, 2.0f}}}, true}}});
    ISkinContextData* context = TheSkin()->GetContextInterface(At(0));
    ASSERT_NE(context, nullptr);
    ASSERT_EQ(context->GetNumPoints(), 3);
    ASSERT_EQ(context->GetNumAssignedBones(0), 2);
    EXPECT_EQ(context->GetAssignedBone(0, 0), 1);
    EXPECT_EQ(context->GetBoneWeight(0, 0), 0.25f);
    EXPECT_EQ(context->GetAssignedBone(0, 1), -3);
    EXPECT_EQ(context->GetBoneWeight(0, 1), 0.5f);
    EXPECT_EQ(context->GetNumAssignedBones(1), 0);
    EXPECT_EQ(context->GetBoneWeight(2, 0), 2.0f);
    for (const auto& [vertex, bone] : {std::pair{0, 2}, {0, -1}, {1, 0}, {3, 0}, {-1, 0}}) {
        EXPECT_EQ(context->GetAssignedBone(vertex, bone), -1);
        EXPECT_EQ(context->GetBoneWeight(vertex, bone), 0.0f);
    }
    EXPECT_EQ(context->GetNumAssignedBones(3), 0);
    EXPECT_EQ(context->GetNumAssignedBones(-1), 0);
}

TEST_F(SkinningTest, ContextIsThatOfItsNode) {
    OpenWith({{true, scene::Skin{{1}, {{}}, true}}});
    EXPECT_NE(TheSkin()->GetContextInterface(At(0)), nullptr);
    EXPECT_EQ(TheSkin()->GetContextInterface(At(1)), nullptr);
    OpenWith({{true, scene::Skin{{1}, {{}}, false}}});
    ASSERT_NE(TheSkin(), nullptr);
    EXPECT_EQ(TheSkin()->GetContextInterface(At(0)), nullptr);
}

TEST_F(SkinningTest, ModifiersHaveTheirOwnInterfacesAlone) {
    OpenWith({{true, scene::Skin{}},
              {true, scene::Physique{}},
              {true, scene::Morpher{}},
              {true, scene::OtherModifier{{9815843, 87654}}},
              {true, scene::OtherModifier{{0x100, 0}}},
              {false, scene::Skin{}}});
    EXPECT_EQ(TheModifier(0)->GetInterface(I_PHYINTERFACE), nullptr);
    EXPECT_EQ(TheModifier(1)->GetInterface(I_SKIN), nullptr);
    for (const int other : {2, 3, 4}) {
        EXPECT_EQ(TheModifier(other)->GetInterface(I_SKIN), nullptr);
        EXPECT_EQ(TheModifier(other)->GetInterface(I_PHYINTERFACE), nullptr);
    }
    EXPECT_NE(TheModifier(5)->GetInterface(I_SKIN), nullptr);
}

// A rigid vertex, two blended ones, and none.
const scene::Modifier kPhysique = {
    true, scene::Physique{{scene::PhysiqueRigid{1},
                           scene::PhysiqueBlended{{{1, 0.25f}, {2, 0.5f}, {0, 0.5f}}},
                           scene::PhysiqueBlended{}, std::monostate{}}}};

// Asks for the interfaces of the first node's Physique and gives them back.
class PhysiqueTest : public SkinningTest {
  protected:
    PhysiqueTest() : before_(maxhost::CountLoans()) {
        OpenWith({kPhysique});
        physique = ThePhysique();
        context = physique->GetContextInterface(At(0));
    }
    ~PhysiqueTest() override {
        physique->ReleaseContextInterface(context);
        TheModifier()->ReleaseInterface(I_PHYINTERFACE, physique);
        EXPECT_EQ(Outstanding(), 0);
        EXPECT_EQ(WrongReleases(), 0);
    }

    int Outstanding() const { return maxhost::CountLoans().outstanding - before_.outstanding; }
    int WrongReleases() const {
        return maxhost::CountLoans().wrongReleases - before_.wrongReleases;
    }
    bool HasVertex(int i) {
        IPhyVertexExport* vertex = context->GetVertexInterface(i);
        if (vertex != nullptr) {
            context->ReleaseVertexInterface(vertex);
        }
        return vertex != nullptr;
    }
    // The one node of a vertex that is rigid and not blended.
    INode* RigidNode(int i) {
        IPhyVertexExport* vertex = context->GetVertexInterface(i);
        EXPECT_EQ(vertex->GetVertexType(), 1);
        INode* node = static_cast<IPhyRigidVertex*>(vertex)->GetNode();
        context->ReleaseVertexInterface(vertex);
        return node;
    }

    IPhysiqueExport* physique;
    IPhyContextExport* context;

  private:
    maxhost::LoanCounts before_;
};

TEST_F(PhysiqueTest, ConvertedVerticesAreRigidOrBlended) {
    context->ConvertToRigid(TRUE);
    context->AllowBlending(TRUE);
    EXPECT_EQ(RigidNode(0), At(1));
    IPhyVertexExport* vertex = context->GetVertexInterface(1);
    ASSERT_NE(vertex, nullptr);
    EXPECT_EQ(vertex->GetVertexType(), 5);
    auto* blended = static_cast<IPhyBlendedRigidVertex*>(vertex);
    ASSERT_EQ(blended->GetNumberNodes(), 3);
    EXPECT_EQ(blended->GetNode(0), At(1));
    EXPECT_EQ(blended->GetWeight(0), 0.25f);
    EXPECT_EQ(blended->GetNode(2), At(0));
    EXPECT_EQ(blended->GetNode(3), nullptr);
    EXPECT_EQ(blended->GetWeight(3), 0.0f);
    EXPECT_EQ(blended->GetNode(-1), nullptr);
    context->ReleaseVertexInterface(vertex);
}

TEST_F(PhysiqueTest, VerticesThatAreNotThereHaveNoInterface) {
    context->ConvertToRigid();
    EXPECT_TRUE(HasVertex(2));
    EXPECT_FALSE(HasVertex(3));
    EXPECT_FALSE(HasVertex(4));
    EXPECT_FALSE(HasVertex(-1));
}

TEST_F(PhysiqueTest, UnconvertedVerticesAreTheRigidOnesAlone) {
    EXPECT_EQ(RigidNode(0), At(1));
    EXPECT_FALSE(HasVertex(1));
    context->ConvertToRigid(TRUE);
    EXPECT_TRUE(HasVertex(1));
    context->ConvertToRigid(FALSE);
    EXPECT_FALSE(HasVertex(1));
}

TEST_F(PhysiqueTest, BlendingIsAllowedUntilItIsForbidden) {
    context->ConvertToRigid(TRUE);
    IPhyVertexExport* vertex = context->GetVertexInterface(1);
    EXPECT_TRUE(vertex->GetVertexType() & BLENDED_TYPE);
    context->ReleaseVertexInterface(vertex);
    context->AllowBlending(FALSE);
    EXPECT_EQ(RigidNode(1), At(2)) << "the first of the greatest weights";
    EXPECT_EQ(RigidNode(2), nullptr);
    EXPECT_EQ(RigidNode(0), At(1));
}

TEST_F(PhysiqueTest, ContextIsThatOfItsNode) {
    EXPECT_EQ(physique->GetContextInterface(At(1)), nullptr);
}

TEST_F(PhysiqueTest, EachContextHasItsOwnSettings) {
    context->ConvertToRigid(TRUE);
    IPhyContextExport* second = physique->GetContextInterface(At(0));
    EXPECT_EQ(second->GetVertexInterface(1), nullptr);
    physique->ReleaseContextInterface(second);
    EXPECT_TRUE(HasVertex(1));
}

TEST_F(PhysiqueTest, LoansAreCounted) {
    context->ConvertToRigid(TRUE);
    EXPECT_EQ(Outstanding(), 2);
    IPhyVertexExport* first = context->GetVertexInterface(0);
    IPhyVertexExport* again = context->GetVertexInterface(0);
    EXPECT_EQ(Outstanding(), 4);
    context->ReleaseVertexInterface(first);
    context->ReleaseVertexInterface(again);
    EXPECT_EQ(ThePhysique(), physique);
    EXPECT_EQ(Outstanding(), 3);
    TheModifier()->ReleaseInterface(I_PHYINTERFACE, physique);
    EXPECT_EQ(Outstanding(), 2);
    EXPECT_EQ(WrongReleases(), 0);
}

TEST_F(SkinningTest, WrongReleasesAreCountedAndDoNothing) {
    OpenWith({kPhysique});
    const maxhost::LoanCounts before = maxhost::CountLoans();
    IPhysiqueExport* physique = ThePhysique();
    IPhyContextExport* context = physique->GetContextInterface(At(0));
    IPhyContextExport* other = physique->GetContextInterface(At(0));
    IPhyVertexExport* vertex = context->GetVertexInterface(0);
    other->ReleaseVertexInterface(vertex);
    context->ReleaseVertexInterface(nullptr);
    TheModifier()->ReleaseInterface(I_SKIN, physique);
    EXPECT_EQ(maxhost::CountLoans().wrongReleases - before.wrongReleases, 3);
    EXPECT_EQ(maxhost::CountLoans().outstanding - before.outstanding, 4);
    context->ReleaseVertexInterface(vertex);
    context->ReleaseVertexInterface(vertex);
    physique->ReleaseContextInterface(context);
    physique->ReleaseContextInterface(other);
    TheModifier()->ReleaseInterface(I_PHYINTERFACE, physique);
    TheModifier()->ReleaseInterface(I_PHYINTERFACE, physique);
    EXPECT_EQ(maxhost::CountLoans().wrongReleases - before.wrongReleases, 5);
    EXPECT_EQ(maxhost::CountLoans().outstanding, before.outstanding);
    EXPECT_EQ(maxhost::CountLoans().lent - before.lent, 4);
}

TEST_F(SkinningTest, WhatWasNotReleasedShowsWhenTheSceneIsClosed) {
    OpenWith({kPhysique});
    const int before = maxhost::CountLoans().outstanding;
    IPhyContextExport* context = ThePhysique()->GetContextInterface(At(0));
    context->GetVertexInterface(0);
    maxhost::Host::Instance().CloseScene();
    EXPECT_EQ(maxhost::CountLoans().outstanding - before, 3);
}
