// One export, from the user's command to the result.
#include <new>

#include <max.h>
#include <maxapi.h>

#include "core/array.h"
#include "core/hash_table.h"
#include "core/log.h"
#include "core/string.h"
#include "export/export_pass.h"
#include "plugin/converter.h"
#include "plugin/kta_exp.h"
#include "plugin/module.h"
#include "resources/resource.h"
#include "scene/node.h"

namespace {

enum PassKind { kActorPass, kMotionPass };

DWORD WINAPI ProgressCallback(LPVOID) {
    return 0;
}

// 3ds Max's progress bar, shown while it lives.
class ProgressBar {
  public:
    explicit ProgressBar(Interface* shownBy) : ip(shownBy) {
        ip->ProgressStart(GetString(IDS_PROGRESS), TRUE, ProgressCallback, NULL);
    }
    // May run while another exception is on its way.
    ~ProgressBar() {
        try {
            ip->ProgressEnd();
        } catch (...) {
            // The bar stays; the export goes on.
        }
    }

  private:
    ProgressBar(const ProgressBar&);
    ProgressBar& operator=(const ProgressBar&);

    Interface* ip;
};

// Adds to `tops` the node that is reached from a selected one by climbing while the parent is
// selected. Nodes on the way are remembered in `known` with the position of what was found, so that
// a long selected chain is climbed once.
void AddTopmostSelected(INode* node, NodeList& tops, Plinth::KeyIndex& known) {
    Plinth::Array<INode*> climbed;
    Plinth::Int32 position = -1;
    for (;;) {
        if (known.Find(Plinth::AddressKey(node), position)) {
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
        known.Set(Plinth::AddressKey(climbed[i]), position);
    }
}

void GatherRoots(Interface* ip, bool selectedOnly, NodeList& roots) {
    if (!selectedOnly) {
        INode* sceneRoot = ip->GetRootNode();
        roots.Reserve(sceneRoot->NumberOfChildren());
        for (int i = 0; i < sceneRoot->NumberOfChildren(); ++i) {
            roots.Add(sceneRoot->GetChildNode(i));
        }
        return;
    }
    roots.Reserve(ip->GetSelNodeCount());
    Plinth::KeyIndex known;
    for (int i = 0; i < ip->GetSelNodeCount(); ++i) {
        AddTopmostSelected(ip->GetSelNode(i), roots, known);
    }
}

// False when the node or one below it has an enabled modifier of another class above its Skin
// modifier.
bool CheckSkinModifierOrder(INode* node) {
    NodeWalk walk(node);
    for (INode* next = walk.Next(); next != NULL; next = walk.Next()) {
        const ModifierLookup skin = FindModifier(next, kSkinModifierClassId);
        if (skin.modifier != NULL && skin.otherAbove) {
            return false;
        }
    }
    return true;
}

bool CheckSkinModifierOrder(const NodeList& roots) {
    for (Plinth::Int32 i = 0; i < roots.Count(); ++i) {
        if (!CheckSkinModifierOrder(roots[i])) {
            return false;
        }
    }
    return true;
}

// Writes one of the two files and hands it to the converter, with a new pass that ends with the
// file; false when it cannot be created.
bool RunWritingPass(PassKind kind, const char* name, const NodeList& roots, Interface* ip,
                    const ExportOptions& options) {
    ExportPassHolder pass;
    ResetExportState(pass, ip, options);
    g_motionPass = kind == kMotionPass ? 1 : 0;
    char path[MAX_PATH];
    if (!JoinPath(path, name, g_motionPass ? "temp2" : "temp1") || !pass->writer.Open(path)) {
        return false;
    }
    {
        const ProgressBar bar(ip);
        ExportRoots(*pass.Get(), roots);
    }

    Plinth::Log("Closing file");
    pass.Reset(NULL);
    if (g_motionPass) {
        g_converter.writeKTMotionFile(path);
    } else {
        g_converter.writeKTActorFile(path);
    }
    return true;
}

// Ends the log of an export that an exception ended, so that the next export begins it anew.
void EndLog(const Plinth::String& lastLine) {
    try {
        Plinth::GetLogManager().LogMessage(lastLine);
        Plinth::GetLogManager().ClearLogCallbacks();
    } catch (...) {
        // There is no log then.
    }
}

}  // namespace

int KTAExp::DoExport(const MCHAR* name, ExpInterface*, Interface* i, BOOL, DWORD options) {
    ip = i;
    try {
        return RunExport(name, options == SCENE_EXPORT_SELECTED);
    } catch (const std::bad_alloc&) {
        EndLog(outOfMemoryLine);
    } catch (...) {
        const Plinth::String line("*** Unexpected exception: the export is given up ***");
        EndLog(line.Data() != NULL ? line : outOfMemoryLine);
    }
    return IMPEXP_FAIL;
}

int KTAExp::RunExport(const char* name, bool selectedOnly) {
    Plinth::GetLogManager().AddLogFileCallback("KTAExporter.log");

    NodeList roots;
    GatherRoots(ip, selectedOnly, roots);
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
    if (!RunWritingPass(kActorPass, name, roots, ip, exportOptions) ||
        !RunWritingPass(kMotionPass, name, roots, ip, exportOptions)) {
        return IMPEXP_FAIL;
    }
    g_converter.writeKTMotionFile(NULL);
    g_converter.endSpecialHalden();

    Plinth::GetLogManager().ClearLogCallbacks();
    return IMPEXP_SUCCESS;
}
