// The host's Interface: selection, progress, cancel, directories, time.
#include <maxapi.h>
#include <mesh.h>

#include <algorithm>

#include "tests/unit/host/sdk/support.h"

namespace scene = maxhost::scene;
using maxhost::Host;
using testing::ElementsAre;
using testing::StrEq;

class InterfaceTest : public SceneTest {
  protected:
    ~InterfaceTest() override {
        Host::Instance().SetProgressObserver(nullptr);
        Host::Instance().CancelAtUpdate(0);
        Host::Instance().SetPlugInDirs({});
        Host::Instance().SetDir(APP_PLUGCFG_DIR, "");
    }

    static std::vector<INode*> Selection() {
        std::vector<INode*> nodes;
        for (int i = 0; i < GetCOREInterface()->GetSelNodeCount(); ++i) {
            nodes.push_back(GetCOREInterface()->GetSelNode(i));
        }
        return nodes;
    }
};

scene::Node SelectedNode(const std::string& name) {
    scene::Node node = MakeNode(name);
    node.selected = true;
    return node;
}

TEST_F(InterfaceTest, ThereIsOne) {
    EXPECT_EQ(GetCOREInterface(), Host::Instance().GetInterface());
    EXPECT_EQ(GetCOREInterface()->GetMAXHWnd(), nullptr);
}

TEST_F(InterfaceTest, SelectionHasItsOwnOrder) {
    scene::Scene description = MakeScene({MakeNode("a"), MakeNode("b"), MakeNode("c")});
    description.selection = {2, 0};
    Open(description);
    EXPECT_THAT(Selection(), ElementsAre(At(2), At(0)));
    EXPECT_TRUE(At(0)->Selected());
    EXPECT_FALSE(At(1)->Selected());
    EXPECT_TRUE(At(2)->Selected());
    EXPECT_EQ(GetCOREInterface()->GetSelNode(2), nullptr);
    EXPECT_EQ(GetCOREInterface()->GetSelNode(-1), nullptr);
}

TEST_F(InterfaceTest, EmptySelectionStaysEmptyWhateverTheNodesSay) {
    Open(MakeScene({SelectedNode("a"), MakeNode("b"), SelectedNode("c")}));
    EXPECT_THAT(Selection(), ElementsAre());
    EXPECT_FALSE(At(0)->Selected());
}

TEST_F(InterfaceTest, SelectReplacesTheSelection) {
    Open(MakeScene({SelectedNode("a"), MakeNode("b"), MakeNode("c")}));
    Host::Instance().Select({At(2), At(1), At(2)});
    EXPECT_THAT(Selection(), ElementsAre(At(2), At(1)));
    EXPECT_FALSE(At(0)->Selected());
    EXPECT_TRUE(At(1)->Selected());
    Host::Instance().Select({});
    EXPECT_THAT(Selection(), ElementsAre());
    EXPECT_FALSE(At(1)->Selected());
}

class RecordingObserver : public maxhost::ProgressObserver {
  public:
    void OnStart(const std::string& title) override { calls.push_back("start " + title); }
    void OnUpdate(int percent) override { calls.push_back(std::to_string(percent)); }
    void OnEnd() override { calls.push_back("end"); }
    std::vector<std::string> calls;
};

class WorkObserver : public maxhost::ProgressObserver {
  public:
    void OnStart(const std::string&) override {}
    void OnUpdate(int) override {}
    void OnEnd() override {}
    void OnWork(double share) override { shares.push_back(share); }
    std::vector<double> shares;
};

// As an exporter reads a mesh.
void ReadCorners(Mesh& mesh) {
    mesh.buildNormals();
    for (int i = 0; i < mesh.getNumFaces(); ++i) {
        for (const DWORD vertex : mesh.faces[i].v) {
            mesh.getRVert(static_cast<int>(vertex));
        }
    }
}

DWORD WINAPI FailingProgressFunction(LPVOID) {
    ADD_FAILURE() << "called";
    return 0;
}

TEST_F(InterfaceTest, ReadingAMeshIsWorkOfTheStep) {
    WorkObserver observer;
    Host::Instance().SetProgressObserver(&observer);
    GetCOREInterface()->ProgressUpdate(100);
    Mesh mesh;
    mesh.setNumVerts(3);
    mesh.setNumFaces(100'000);
    for (int i = 0; i < 3; ++i) {
        mesh.verts[i] = Point3(0, 0, 0);
    }
    for (int i = 0; i < mesh.getNumFaces(); ++i) {
        mesh.faces[i].setVerts(0, 1, 2);
    }
    ReadCorners(mesh);
    ASSERT_GT(observer.shares.size(), 30u);
    EXPECT_EQ(observer.shares.front(), 0);
    EXPECT_NEAR(observer.shares[observer.shares.size() / 2], 0.5, 0.05);
    EXPECT_NEAR(observer.shares.back(), 1, 0.02);

    // Another mesh of the same step.
    ReadCorners(mesh);
    EXPECT_TRUE(std::is_sorted(observer.shares.begin(), observer.shares.end()));
    EXPECT_LE(observer.shares.back(), 1);

    GetCOREInterface()->ProgressUpdate(100);
    const std::size_t earlier = observer.shares.size();
    ReadCorners(mesh);
    ASSERT_GT(observer.shares.size(), earlier + 30);
    EXPECT_EQ(observer.shares[earlier], 0) << "of the next step";
    EXPECT_NEAR(observer.shares.back(), 1, 0.02);
}

TEST_F(InterfaceTest, ProgressIsObserved) {
    RecordingObserver observer;
    Host::Instance().SetProgressObserver(&observer);
    char title[] = "Exporting object...";
    EXPECT_TRUE(GetCOREInterface()->ProgressStart(title, TRUE, FailingProgressFunction, nullptr));
    GetCOREInterface()->ProgressUpdate(0);
    GetCOREInterface()->ProgressUpdate(100, TRUE, nullptr);
    GetCOREInterface()->ProgressEnd();
    EXPECT_TRUE(GetCOREInterface()->ProgressStart(nullptr, TRUE, FailingProgressFunction, nullptr));
    GetCOREInterface()->ProgressEnd();
    EXPECT_THAT(observer.calls,
                ElementsAre("start Exporting object...", "0", "100", "end", "start ", "end"));
    Host::Instance().SetProgressObserver(nullptr);
    EXPECT_TRUE(GetCOREInterface()->ProgressStart(title, TRUE, FailingProgressFunction, nullptr));
    GetCOREInterface()->ProgressUpdate(50);
    GetCOREInterface()->ProgressEnd();
    EXPECT_EQ(observer.calls.size(), 6u);
}

TEST_F(InterfaceTest, CancelIsPressedAtTheGivenUpdateAndStays) {
    Host::Instance().CancelAtUpdate(3);
    Interface* host = GetCOREInterface();
    host->ProgressStart(nullptr, TRUE, FailingProgressFunction, nullptr);
    EXPECT_FALSE(host->GetCancel());
    host->ProgressUpdate(1);
    host->ProgressUpdate(2);
    EXPECT_FALSE(host->GetCancel());
    host->ProgressEnd();
    // Updates count over the whole export.
    host->ProgressStart(nullptr, TRUE, FailingProgressFunction, nullptr);
    host->ProgressUpdate(1);
    EXPECT_TRUE(host->GetCancel());
    host->ProgressUpdate(2);
    host->ProgressEnd();
    EXPECT_TRUE(host->GetCancel());

    Host::Instance().CancelAtUpdate(1);
    EXPECT_FALSE(host->GetCancel());
    host->ProgressUpdate(1);
    EXPECT_TRUE(host->GetCancel());
    Host::Instance().CancelAtUpdate(0);
    for (int i = 0; i < 10; ++i) {
        host->ProgressUpdate(i);
        EXPECT_FALSE(host->GetCancel());
    }
}

TEST_F(InterfaceTest, CancelIsPressedByTheFlagAndStays) {
    volatile std::sig_atomic_t flag = 0;
    Interface* host = GetCOREInterface();
    Host::Instance().SetCancelFlag(&flag);
    EXPECT_FALSE(host->GetCancel());
    flag = 1;
    EXPECT_TRUE(host->GetCancel());
    Host::Instance().SetCancelFlag(nullptr);
    EXPECT_TRUE(host->GetCancel());
    Host::Instance().CancelAtUpdate(0);
    EXPECT_FALSE(host->GetCancel());
}

TEST_F(InterfaceTest, PlugInDirectoriesStandInOrderWithoutASeparatorAtTheEnd) {
    EXPECT_EQ(GetCOREInterface()->GetPlugInEntryCount(), 0);
    Host::Instance().SetPlugInDirs({"/plug-ins/first", "second/", "/"});
    ASSERT_EQ(GetCOREInterface()->GetPlugInEntryCount(), 3);
    EXPECT_THAT(GetCOREInterface()->GetPlugInDir(0), StrEq("/plug-ins/first"));
    EXPECT_THAT(GetCOREInterface()->GetPlugInDir(1), StrEq("second"));
    EXPECT_THAT(GetCOREInterface()->GetPlugInDir(2), StrEq(""));
    EXPECT_THAT(GetCOREInterface()->GetPlugInDir(3), StrEq(""));
    EXPECT_THAT(GetCOREInterface()->GetPlugInDir(-1), StrEq(""));
}

TEST_F(InterfaceTest, DirectoriesAreKnownByNumber) {
    EXPECT_THAT(GetCOREInterface()->GetDir(APP_PLUGCFG_DIR), StrEq(""));
    Host::Instance().SetDir(APP_PLUGCFG_DIR, "/home/artist/config/");
    EXPECT_THAT(GetCOREInterface()->GetDir(9), StrEq("/home/artist/config"));
    EXPECT_THAT(GetCOREInterface()->GetDir(8), StrEq(""));
    EXPECT_THAT(GetCOREInterface()->GetDir(-1), StrEq(""));
}

TEST_F(InterfaceTest, TimeSettingsAreTheScenes) {
    scene::Scene description;
    description.time = {25, 192, -100, 4800};
    Open(description);
    EXPECT_EQ(GetFrameRate(), 25);
    EXPECT_EQ(GetTicksPerFrame(), 192);
    EXPECT_EQ(GetCOREInterface()->GetAnimRange(), Interval(-100, 4800));
    // Both stand as given, even where they do not agree.
    description.time = {10, 7, 50, 20};
    Open(description);
    EXPECT_EQ(GetFrameRate(), 10);
    EXPECT_EQ(GetTicksPerFrame(), 7);
    EXPECT_EQ(GetCOREInterface()->GetAnimRange().Start(), 50);
    EXPECT_EQ(GetCOREInterface()->GetAnimRange().End(), 20);
    Host::Instance().CloseScene();
    EXPECT_EQ(GetFrameRate(), 30);
    EXPECT_EQ(GetTicksPerFrame(), 160);
    EXPECT_EQ(GetCOREInterface()->GetAnimRange(), Interval(0, 16000));
}
