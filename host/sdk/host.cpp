#include "host/sdk/host.h"

#include <maxapi.h>

#include <map>

#include "host/sdk/scene/mesh_reading.h"
#include "host/sdk/scene/scene_graph.h"

namespace maxhost {
namespace {

int frameRate = 30;
int ticksPerFrame = 160;

// The plug-in puts its own separator behind a directory.
std::string WithoutSeparators(std::string dir) {
#ifdef _WIN32
    const char* separators = "/\\";
#else
    const char* separators = "/";
#endif
    dir.erase(dir.find_last_not_of(separators) + 1);
    return dir;
}

}  // namespace

// The host's state, which is what plug-ins see of the host.
class Host::Implementation final : public ::Interface {
  public:
    Implementation() { Open(scene::Scene{}); }

    void Open(scene::Scene description) {
        graph_ = std::make_unique<SceneGraph>(std::move(description));
        if (keepsOneTransform) {
            graph_->KeepOneTransformANode();
        }
        const scene::Time& time = graph_->Description().time;
        // Both as described: they may disagree.
        frameRate = time.frameRate;
        ticksPerFrame = time.ticksPerFrame;
    }

    SceneGraph& Graph() { return *graph_; }

    void CancelAtUpdate(int n) {
        updatesUntilCancel_ = n;
        cancelled_ = FALSE;
    }

    int GetSelNodeCount() override { return static_cast<int>(graph_->Selection().size()); }
    INode* GetSelNode(int i) override {
        return i >= 0 && i < GetSelNodeCount() ? graph_->Selection()[i] : nullptr;
    }
    INode* GetRootNode() override { return graph_->Root(); }
    HWND GetMAXHWnd() override { return nullptr; }

    BOOL ProgressStart(MCHAR* title, BOOL, LPTHREAD_START_ROUTINE, LPVOID) override {
        meshReading.Restart();
        if (observer != nullptr) {
            observer->OnStart(title != nullptr ? title : "");
        }
        return TRUE;
    }
    void ProgressUpdate(int pct, BOOL, MCHAR*) override {
        if (updatesUntilCancel_ > 0 && --updatesUntilCancel_ == 0) {
            cancelled_ = TRUE;
        }
        meshReading.Restart();
        if (observer != nullptr) {
            observer->OnUpdate(pct);
        }
    }
    void ProgressEnd() override {
        if (observer != nullptr) {
            observer->OnEnd();
        }
    }
    BOOL GetCancel() override {
        if (cancelFlag != nullptr && *cancelFlag != 0) {
            cancelled_ = TRUE;
        }
        return cancelled_;
    }

    Interval GetAnimRange() override {
        const scene::Time& time = graph_->Description().time;
        return Interval(time.start, time.end);
    }

    const MCHAR* GetDir(int which) override {
        const auto found = dirs.find(which);
        return found == dirs.end() ? "" : found->second.c_str();
    }
    int GetPlugInEntryCount() override { return static_cast<int>(plugInDirs.size()); }
    const MCHAR* GetPlugInDir(int i) override {
        return i >= 0 && i < GetPlugInEntryCount() ? plugInDirs[i].c_str() : "";
    }

    bool keepsOneTransform = false;
    ProgressObserver* observer = nullptr;
    const volatile std::sig_atomic_t* cancelFlag = nullptr;
    std::map<int, std::string> dirs;
    std::vector<std::string> plugInDirs;

  private:
    std::unique_ptr<SceneGraph> graph_;  // never null
    int updatesUntilCancel_ = 0;
    BOOL cancelled_ = FALSE;
};

Host& Host::Instance() {
    static Host host;
    return host;
}

Host::Host() : implementation_(std::make_unique<Implementation>()) {
}

Host::~Host() = default;

::Interface* Host::GetInterface() {
    return implementation_.get();
}

void Host::OpenScene(scene::Scene description) {
    implementation_->Open(std::move(description));
}

void Host::CloseScene() {
    implementation_->Open(scene::Scene{});
}

const scene::Scene& Host::Description() const {
    return implementation_->Graph().Description();
}

const std::vector<INode*>& Host::Nodes() const {
    return implementation_->Graph().Nodes();
}

void Host::Select(const std::vector<INode*>& nodes) {
    implementation_->Graph().Select(nodes);
}

void Host::ReleaseMeshes() {
    implementation_->Graph().ReleaseMeshes();
}

void Host::KeepOneTransformANode(bool keepOne) {
    implementation_->keepsOneTransform = keepOne;
}

void Host::SetPlugInDirs(std::vector<std::string> dirs) {
    for (std::string& dir : dirs) {
        dir = WithoutSeparators(std::move(dir));
    }
    implementation_->plugInDirs = std::move(dirs);
}

void Host::SetDir(int which, std::string dir) {
    implementation_->dirs[which] = WithoutSeparators(std::move(dir));
}

void Host::SetProgressObserver(ProgressObserver* observer) {
    implementation_->observer = observer;
    meshReading.Observe(observer);
}

void Host::CancelAtUpdate(int n) {
    implementation_->CancelAtUpdate(n);
}

void Host::SetCancelFlag(const volatile std::sig_atomic_t* flag) {
    implementation_->cancelFlag = flag;
}

}  // namespace maxhost

Interface* GetCOREInterface() {
    return maxhost::Host::Instance().GetInterface();
}

int GetFrameRate() {
    return maxhost::frameRate;
}

int GetTicksPerFrame() {
    return maxhost::ticksPerFrame;
}
