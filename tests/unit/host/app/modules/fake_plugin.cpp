// A plug-in whose exporter does what a test says.
#include "tests/unit/host/app/modules/fake_plugin.h"

#include <fstream>

#ifdef _WIN32
#define TEST_EXPORT extern "C" __declspec(dllexport)
#else
#define TEST_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace {

FakePlugInBehaviour behaviour;

class FakeExporter : public SceneExport {
  public:
    FakeExporter() { ++behaviour.exporters; }
    ~FakeExporter() override { --behaviour.exporters; }
    int ExtCount() override { return 1; }
    const MCHAR* Ext(int) override { return "FAKE"; }
    const MCHAR* LongDesc() override { return ""; }
    const MCHAR* ShortDesc() override { return ""; }
    const MCHAR* AuthorName() override { return ""; }
    const MCHAR* CopyrightMessage() override { return ""; }
    const MCHAR* OtherMessage1() override { return ""; }
    const MCHAR* OtherMessage2() override { return ""; }
    unsigned int Version() override { return 100; }
    void ShowAbout(HWND) override {}
    int DoExport(const MCHAR* name, ExpInterface*, Interface*, BOOL, DWORD options) override {
        if (behaviour.writesLog) {
            std::ofstream("KTAExporter.log") << "log\n";
        }
        return behaviour.doExport ? behaviour.doExport(name, options) : IMPEXP_SUCCESS;
    }
    BOOL SupportsOptions(int, DWORD options) override {
        return behaviour.supportsSelection && options == SCENE_EXPORT_SELECTED;
    }
};

class FakeClassDesc : public ClassDesc {
  public:
    explicit FakeClassDesc(bool isExporter) : isExporter_(isExporter) {}
    int IsPublic() override { return 1; }
    void* Create(BOOL) override { return behaviour.makesExporter ? new FakeExporter : nullptr; }
    const MCHAR* ClassName() override { return ""; }
    SClass_ID SuperClassID() override {
        return isExporter_ ? behaviour.superClass : SClass_ID(HELPER_CLASS_ID);
    }
    Class_ID ClassID() override { return Class_ID(1, 2); }
    const MCHAR* Category() override { return ""; }

  private:
    bool isExporter_;
};

}  // namespace

BOOL WINAPI DllMain(HINSTANCE instance, DWORD, LPVOID) {
    behaviour.instance = instance;
    return TRUE;
}

TEST_EXPORT FakePlugInBehaviour* FakePlugIn() {
    return &behaviour;
}

TEST_EXPORT const MCHAR* LibDescription() {
    return "fake";
}
TEST_EXPORT int LibNumberClasses() {
    return behaviour.classes;
}
TEST_EXPORT ClassDesc* LibClassDesc(int i) {
    static FakeClassDesc helper(false);
    static FakeClassDesc exporter(true);
    return i == behaviour.classes - 1 ? &exporter : &helper;
}
TEST_EXPORT ULONG LibVersion() {
    return behaviour.version;
}
