#include "export/export_pass.h"

#include "scene/node.h"

Plinth::UInt8 g_motionPass = 0;

ExportPass::ExportPass(Interface* maxInterface, const ExportOptions& exportOptions)
    : ip(maxInterface),
      options(exportOptions),
      nodeTotal(0),
      nodeDone(0),
      numMaterials(0),
      layerType(kLayerAmbient) {
}

void ResetExportState(ExportPassHolder& pass, Interface* ip, const ExportOptions& options) {
    pass.Reset(NULL);
    pass.Reset(new ExportPass(ip, options));
}

namespace {

// The lists would grow by a few entries at a time.
void ReserveLists(ExportPass& pass, const NodeList& roots) {
    Plinth::Int32 count = 0;
    for (Plinth::Int32 i = 0; i < roots.Count(); ++i) {
        NodeWalk walk(roots[i]);
        while (walk.Next() != NULL) {
            ++count;
        }
    }
    pass.exportedNodes.Reserve(count);
    pass.sceneMaterials.Reserve(count);
    pass.defaultMaterials.Reserve(count);
}

void UpdateProgress(ExportPass& pass) {
    const float share = static_cast<float>(pass.nodeDone) / static_cast<float>(pass.nodeTotal);
    pass.ip->ProgressUpdate(static_cast<int>(share * 100.0f), TRUE, NULL);
}

void WriteVisibleNode(ExportPass& pass, INode* node) {
    const bool visible = !node->IsHidden(0, FALSE);
    if (g_motionPass) {
        if (visible || pass.options.motionsForHidden) {
            ExportMotionPart(pass, node);
        }
    } else if (visible || pass.options.exportHidden) {
        ExportNode(pass, node);
    }
}

}  // namespace

void ExportRoots(ExportPass& pass, const NodeList& roots) {
    if (!g_motionPass) {
        ReserveLists(pass, roots);
    }
    for (Plinth::Int32 i = 0; i < roots.Count(); ++i) {
        PrepareNodes(pass, roots[i], pass.nodeTotal);
    }
    pass.writer.WriteFileHeader(g_motionPass ? kFileKindMotion : kFileKindActor);
    if (!g_motionPass) {
        ExportMaterialList(pass);
    }
    for (Plinth::Int32 i = 0; i < roots.Count() && !pass.ip->GetCancel(); ++i) {
        INode* const root = roots[i];
        ++pass.nodeDone;
        UpdateProgress(pass);
        if (pass.ip->GetCancel()) {
            continue;
        }
        WriteVisibleNode(pass, root);
        for (int child = 0; child < root->NumberOfChildren(); ++child) {
            if (!ExportNodeTree(pass, root->GetChildNode(child), true)) {
                break;
            }
        }
    }
}

void PrepareNodes(ExportPass& pass, INode* node, int& counter) {
    NodeWalk walk(node);
    for (INode* next = walk.Next(); next != NULL; next = walk.Next()) {
        ++counter;
        const ObjectState state = next->EvalWorldState(0, TRUE);
        static_cast<void>(state);
        if (!g_motionPass) {
            Mtl* const material = next->GetMtl();
            pass.sceneMaterials.Add(material != NULL ? material : pass.defaultMaterials.Make(next));
        }
    }
}

bool ExportNodeTree(ExportPass& pass, INode* node, bool withProgress) {
    NodeWalk walk(node);
    for (INode* next = walk.Next(); next != NULL; next = walk.Next()) {
        ++pass.nodeDone;
        if (withProgress) {
            UpdateProgress(pass);
            if (pass.ip->GetCancel()) {
                return false;
            }
        }
        WriteVisibleNode(pass, next);
    }
    return true;
}
