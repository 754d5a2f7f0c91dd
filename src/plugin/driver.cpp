// One export, from the user's command to the result.
#include <max.h>
#include <maxapi.h>
#include <string.h>

#include <new>

#include "core/holder.h"
#include "plugin/converter.h"
#include "plugin/kta_exp.h"
#include "plugin/module.h"
#include "plugin/motion_pass.h"
#include "plugin/options_dialog.h"
#include "resources/resource.h"
#include "scene/modifier_stack.h"
#include "scene/node_walk.h"

Plinth::UInt8 g_motionPass = 0;

namespace {

enum { kActorPass = 0, kMotionPass = 1 };

DWORD WINAPI ProgressCallback(LPVOID) {
    return 0;
}

// 3ds Max's progress bar, shown while it lives.
class ProgressBar {
  public:
    explicit ProgressBar(Interface* shownBy) : ip(shownBy) {
        ip->ProgressStart(GetString(IDS_PROGRESS), TRUE, ProgressCallback, NULL);
    }
    ~ProgressBar() { ip->ProgressEnd(); }

  private:
    ProgressBar(const ProgressBar&);
    ProgressBar& operator=(const ProgressBar&);

    Interface* ip;
};

// Adds to `tops` the node that is reached from a selected one by climbing while the parent is
// selected. Nodes on the way are remembered in `known` with the position of what was found, so that
// a long selected chain is climbed once.
void AddTopmostSelected(INode* node, Plinth::PointerList<INode>& tops,
                        Plinth::PointerIndex& known) {
    Plinth::Array<INode*> climbed;
    Plinth::Int32 position = -1;
    for (;;) {
        if (known.Find(node, position)) {
            break;
        }
        climbed.AddAmortized(node);
        INode* parent = node->GetParentNode();
        if (parent == NULL || !parent->Selected()) {
            position = tops.Add(node);
            break;
        }
        node = parent;
    }
    for (Plinth::Int32 i = 0; i < climbed.Count(); ++i) {
        known.Set(climbed[i], position);
    }
}

}  // namespace

int KTAExp::DoExport(const MCHAR* name, ExpInterface*, Interface* i, BOOL, DWORD options) {
    ip = i;
    try {
        return RunExport(name, options == SCENE_EXPORT_SELECTED);
    } catch (const std::bad_alloc&) {
        GiveUp(outOfMemoryLine);
    } catch (...) {
        GiveUp("*** Unexpected exception: the export is given up ***");
    }
    return IMPEXP_FAIL;
}

void KTAExp::GiveUp(const Plinth::String& line) {
    file = NULL;
    ResetExportState();
    pendingWires.Clear();
    try {
        Plinth::GetLogManager().LogMessage(line);
    } catch (...) {
        // There is no log then.
    }
}

int KTAExp::RunExport(const char* name, bool selectedOnly) {
    logCallback = Plinth::GetLogManager().AddLogFileCallback("KTAExporter.log");

    NodeList roots;
    GatherRoots(selectedOnly, roots);
    if (!CheckSkinModifierOrder(roots)) {
        MessageBoxA(ip->GetMAXHWnd(),
                    "Your object contains meshes that combine skin modifiers with other "
                    "modifiers.\nPlease make sure that the skin modifiers are at the end of the "
                    "stack.",
                    "Modifier Order Issue", MB_OK | MB_ICONEXCLAMATION);
        return IMPEXP_FAIL;
    }

    LoadSettings();
    if (!RunOptionsDialog()) {
        // Cancelling counts as success, so that 3ds Max shows no failure message.
        return IMPEXP_SUCCESS;
    }
    SaveSettings();

    g_converter.initSpecialHalden(g_converter.directory, name, true);
    if (!RunWritingPass(kActorPass, name, roots) || !RunWritingPass(kMotionPass, name, roots)) {
        return IMPEXP_FAIL;
    }
    ResetExportState();
    g_converter.writeKTMotionFile(NULL);
    g_converter.endSpecialHalden();

    Plinth::GetLogManager().ClearLogCallbacks();
    return IMPEXP_SUCCESS;
}

void KTAExp::GatherRoots(bool selectedOnly, NodeList& roots) {
    if (!selectedOnly) {
        INode* sceneRoot = ip->GetRootNode();
        roots.Reserve(sceneRoot->NumberOfChildren());
        for (int i = 0; i < sceneRoot->NumberOfChildren(); ++i) {
            roots.Add(sceneRoot->GetChildNode(i));
        }
        return;
    }
    roots.Reserve(ip->GetSelNodeCount());
    Plinth::PointerIndex known;
    for (int i = 0; i < ip->GetSelNodeCount(); ++i) {
        AddTopmostSelected(ip->GetSelNode(i), roots, known);
    }
}

bool KTAExp::CheckSkinModifierOrder(const NodeList& roots) {
    for (Plinth::Int32 i = 0; i < roots.Count(); ++i) {
        if (!CheckSkinModifierOrder(roots[i])) {
            return false;
        }
    }
    return true;
}

bool KTAExp::CheckSkinModifierOrder(INode* node) {
    NodeWalk walk(node);
    for (INode* next = walk.Next(); next != NULL; next = walk.Next()) {
        const ModifierLookup skin = FindModifier(next, kSkinModifierClassId);
        if (skin.modifier != NULL && skin.otherAbove) {
            return false;
        }
    }
    return true;
}

bool KTAExp::RunOptionsDialog() {
    const INT_PTR result =
        DialogBoxParamA(g_moduleInstance, MAKEINTRESOURCEA(IDD_OPTIONS), ip->GetMAXHWnd(),
                        OptionsDialogProcedure, reinterpret_cast<LPARAM>(this));
    if (result == kOptionsDialogOutOfMemory) {
        throw std::bad_alloc();
    }
    return result != 0;
}

bool KTAExp::RunWritingPass(int pass, const char* name, const NodeList& roots) {
    ResetExportState();
    g_motionPass = pass == kMotionPass ? 1 : 0;
    char path[MAX_PATH];
    if (!JoinPath(path, name, g_motionPass ? "temp2" : "temp1")) {
        return false;
    }
    Plinth::FileHolder stream(fopen(path, "wb"));
    file = stream.Get();
    if (file == NULL) {
        return false;
    }

    WriteParts(roots);

    Plinth::Log("Closing file");
    file = NULL;
    stream.Reset(NULL);
    pendingWires.Clear();
    if (g_motionPass) {
        g_converter.writeKTMotionFile(path);
    } else {
        g_converter.writeKTActorFile(path);
    }
    return true;
}

void KTAExp::WriteParts(const NodeList& roots) {
    const ProgressBar bar(ip);
    nodeTotal = 0;
    nodeDone = 0;
    if (!g_motionPass) {
        ReserveLists(roots);
    }
    for (Plinth::Int32 i = 0; i < roots.Count(); ++i) {
        PrepareNodes(roots[i], nodeTotal);
    }
    WriteFileHeader();
    if (!g_motionPass) {
        ExportMaterialList();
    }
    WriteNodes(roots);
}

void KTAExp::ReserveLists(const NodeList& roots) {
    Plinth::Int32 count = 0;
    for (Plinth::Int32 i = 0; i < roots.Count(); ++i) {
        NodeWalk walk(roots[i]);
        while (walk.Next() != NULL) {
            ++count;
        }
    }
    exportedNodes.Reserve(count);
    sceneMaterials.Reserve(count);
    defaultMaterials.Reserve(count);
}

void KTAExp::WriteNodes(const NodeList& roots) {
    for (Plinth::Int32 i = 0; i < roots.Count() && !ip->GetCancel(); ++i) {
        INode* root = roots[i];
        ++nodeDone;
        UpdateProgress();
        if (ip->GetCancel()) {
            continue;
        }
        WriteVisibleNode(root);
        for (int child = 0; child < root->NumberOfChildren(); ++child) {
            if (!ExportNodeTree(root->GetChildNode(child), true)) {
                break;
            }
        }
    }
}

bool KTAExp::ExportNodeTree(INode* node, bool withProgress) {
    NodeWalk walk(node);
    for (INode* next = walk.Next(); next != NULL; next = walk.Next()) {
        ++nodeDone;
        if (withProgress) {
            UpdateProgress();
            if (ip->GetCancel()) {
                return false;
            }
        }
        WriteVisibleNode(next);
    }
    return true;
}

void KTAExp::WriteVisibleNode(INode* node) {
    const bool visible = !node->IsHidden(0, FALSE);
    if (g_motionPass) {
        if (visible || exportOptions.motionsForHidden) {
            ExportMotionPart(node);
        }
    } else if (visible || exportOptions.exportHidden) {
        ExportNode(node);
    }
}

void KTAExp::UpdateProgress() {
    const float share = static_cast<float>(nodeDone) / static_cast<float>(nodeTotal);
    ip->ProgressUpdate(static_cast<int>(share * 100.0f), TRUE, NULL);
}

void KTAExp::PrepareNodes(INode* node, int& counter) {
    NodeWalk walk(node);
    for (INode* next = walk.Next(); next != NULL; next = walk.Next()) {
        ++counter;
        const ObjectState state = next->EvalWorldState(0, TRUE);
        static_cast<void>(state);
        if (!g_motionPass) {
            Mtl* material = next->GetMtl();
            if (material == NULL) {
                material = defaultMaterials.Get(next);
            }
            if (material != NULL) {
                sceneMaterials.Add(material);
            }
        }
    }
}

void KTAExp::ResetExportState() {
    nodeTotal = 0;
    nodeDone = 0;
    exportedNodes.Clear();
    openSkins.Clear();
    sceneMaterials.Clear();
    defaultMaterials.Clear();
    materialTable.Clear();
    numMaterials = 0;
    transformSamples.Clear();
}
