// An exporter and its descriptor as a plug-in writes them, in the plug-in's dialect, and a walk
// over the open scene with the SDK's headers alone.
#include <max.h>
#include <modstack.h>
#include <plugin.h>
#include <stdmat.h>

#include "cxx03_use.h"

namespace {

class SampleExport : public SceneExport {
  public:
    virtual int ExtCount() { return 1; }
    virtual const MCHAR* Ext(int) { return _M("TST"); }
    virtual const MCHAR* LongDesc() { return _M("long"); }
    virtual const MCHAR* ShortDesc() { return _M("short"); }
    virtual const MCHAR* AuthorName() { return _M("author"); }
    virtual const MCHAR* CopyrightMessage() { return _M("copyright"); }
    virtual const MCHAR* OtherMessage1() { return _M(""); }
    virtual const MCHAR* OtherMessage2() { return _M(""); }
    virtual unsigned int Version() { return 301; }
    virtual void ShowAbout(HWND) {}
    virtual int DoExport(const MCHAR*, ExpInterface*, Interface* i, BOOL, DWORD options);
};

// Nodes of the scene, or of the selection.
int SampleExport::DoExport(const MCHAR*, ExpInterface*, Interface* i, BOOL, DWORD options) {
    if (options & SCENE_EXPORT_SELECTED) {
        return i->GetSelNodeCount();
    }
    return CountNodes(i->GetRootNode()) - 1;
}

class SampleClassDesc : public ClassDesc {
  public:
    virtual int IsPublic() { return 1; }
    virtual void* Create(BOOL) { return new SampleExport; }
    virtual const MCHAR* ClassName() { return _M("Sample"); }
    virtual SClass_ID SuperClassID() { return SCENE_EXPORT_CLASS_ID; }
    virtual Class_ID ClassID() { return Class_ID(0x35728F0C, 0x4E26450A); }
    virtual const MCHAR* Category() { return _M(""); }
};

}  // namespace

ClassDesc* SampleDescriptor() {
    static SampleClassDesc descriptor;
    return &descriptor;
}

int CountNodes(INode* top) {
    int count = 1;
    for (int i = 0; i < top->NumberOfChildren(); ++i) {
        count += CountNodes(top->GetChildNode(i));
    }
    return count;
}

float FirstParameter(INode* node) {
    Object* object = node->GetObjectRef();
    while (object->SuperClassID() == GEN_DERIVOB_CLASS_ID) {
        object = static_cast<IDerivedObject*>(object)->GetObjRef();
    }
    IParamBlock2* block = static_cast<Animatable*>(object)->GetParamBlock(0);
    float value = 0.0f;
    Interval valid = FOREVER;
    return block != NULL && block->GetValue(0, 0, value, valid) ? value : -1.0f;
}

DWORD RoundTripWireColor(INode* node) {
    StdMat* material = NewDefaultStdMat();
    material->SetDiffuse(Color(node->GetWireColor()), 0);
    const DWORD color = material->GetDiffuse(0).toRGB();
    material->DeleteMe();
    return color;
}
