// What a plug-in derives from, and a plug-in at work on a scene.
#include <plugin.h>

#include "cxx03_use.h"
#include "host/sdk/live_objects.h"
#include "support.h"

namespace scene = maxhost::scene;
using testing::StrEq;

using PluginClassesTest = SceneTest;

TEST_F(PluginClassesTest, VersionIsThatOfTheRelease) {
    EXPECT_EQ(VERSION_3DSMAX, 0x36B02600);
    EXPECT_EQ(MAX_RELEASE, 14000);
    EXPECT_EQ(MAX_API_NUM, 38);
}

TEST_F(PluginClassesTest, SuperClassAndClassIds) {
    EXPECT_EQ(SCENE_EXPORT_CLASS_ID, 0xA20);
    EXPECT_EQ(SHAPE_CLASS_ID, 0x40);
    EXPECT_EQ(PARAMETER_BLOCK2_CLASS_ID, 0x82);
    EXPECT_TRUE(BONE_OBJ_CLASSID == Class_ID(0x28bf6e8d, 0x2ecca840));
    EXPECT_EQ(TARGET_CLASS_ID, 0x1020);
}

TEST_F(PluginClassesTest, DescriptorsHaveTheirDefaults) {
    ClassDesc* descriptor = SampleDescriptor();
    EXPECT_EQ(descriptor->BeginCreate(nullptr), 0);
    EXPECT_EQ(descriptor->EndCreate(nullptr), 0);
    EXPECT_TRUE(descriptor->OkToCreate(nullptr));
    EXPECT_FALSE(descriptor->HasClassParams());
    EXPECT_EQ(descriptor->NumActionTables(), 0);
    EXPECT_FALSE(descriptor->NeedsToSave());
    EXPECT_EQ(descriptor->Save(nullptr), IO_OK);
    EXPECT_EQ(descriptor->Load(nullptr), IO_OK);
    EXPECT_EQ(descriptor->InitialRollupPageState(), DWORD{0x7fffffff});
    EXPECT_EQ(descriptor->InternalName(), nullptr);
    EXPECT_EQ(descriptor->HInstance(), nullptr);
    EXPECT_TRUE(descriptor->SubClassID() == Class_ID());
    EXPECT_EQ(descriptor->Execute(1), 0);
}

TEST_F(PluginClassesTest, ExporterIsMadeUsedAndDeleted) {
    scene::Scene description =
        MakeScene({MakeNode("a"), MakeNode("b", 0), MakeNode("c", 1), MakeNode("d")});
    description.selection = {3, 1};
    Open(description);
    auto* exporter = static_cast<SceneExport*>(SampleDescriptor()->Create());
    EXPECT_THAT(exporter->Ext(0), StrEq("TST"));
    EXPECT_EQ(exporter->Version(), 301u);
    EXPECT_FALSE(exporter->SupportsOptions(0, SCENE_EXPORT_SELECTED));
    ExpInterface scene;
    EXPECT_EQ(exporter->DoExport("/tmp/x.tst", &scene, GetCOREInterface()), 4);
    EXPECT_EQ(
        exporter->DoExport("/tmp/x.tst", &scene, GetCOREInterface(), TRUE, SCENE_EXPORT_SELECTED),
        2);
    delete exporter;
}

TEST_F(PluginClassesTest, PlugInReadsANode) {
    scene::Node description = MakeNode("n");
    description.wireColor = {1, 127, 254};
    description.object.emplace();
    description.object->superClassId = 0x50;
    description.object->classId = {0x2013, 0};
    description.object->parameter0 = 4.5f;
    description.modifiers = {{true, scene::OtherModifier{{1, 2}}}};
    description.referenceModifiers = {{true, scene::OtherModifier{{3, 4}}}};
    INode* node = OpenNode(description);
    EXPECT_EQ(FirstParameter(node), 4.5f);
    const int before = maxhost::LiveObjectCount();
    EXPECT_EQ(RoundTripWireColor(node), RGB(1, 127, 254));
    EXPECT_EQ(maxhost::LiveObjectCount(), before);
    EXPECT_EQ(FirstParameter(OpenNode(MakeNode("dummy"))), -1);
}
