// Nodes: which of them are exported and in what order, the node chunk, and what hangs from a node.
#include <math.h>
#include <string.h>

#include <new>

#include <max.h>

#include <iparamb2.h>
#include <quat.h>

#include "core/format.h"
#include "core/log.h"
#include "core/string.h"
#include "export/export_pass.h"
#include "scene/decompose.h"
#include "scene/node.h"

namespace {

const Class_ID kBoneObjectClassId(0x28bf6e8d, 0x2ecca840);
const Class_ID kSizedHelperClassId(0x1c706482, 0x3e82994);
const char kSceneRootName[] = "Scene Root";

float RowLength(const Point3& row) {
    const double x = row.x, y = row.y, z = row.z;
    return static_cast<float>(sqrt(x * x + y * y + z * z));
}

// The plain sign of the rows' triple product, also where rounding alone decides it.
bool IsMirroring(const Matrix3& matrix) {
    const Point3 row0 = matrix.GetRow(0), row1 = matrix.GetRow(1), row2 = matrix.GetRow(2);
    const double a[3] = {row0.x, row0.y, row0.z};
    const double b[3] = {row1.x, row1.y, row1.z};
    const double c[3] = {row2.x, row2.y, row2.z};
    return a[0] * (b[1] * c[2] - b[2] * c[1]) + a[1] * (b[2] * c[0] - b[0] * c[2]) +
               a[2] * (b[0] * c[1] - b[1] * c[0]) <
           0.0;
}

// The lengths of the rows, all negative for a mirroring matrix.
Point3 RowScale(const Matrix3& matrix) {
    const float sign = IsMirroring(matrix) ? -1.0f : 1.0f;
    return Point3(sign * RowLength(matrix.GetRow(0)), sign * RowLength(matrix.GetRow(1)),
                  sign * RowLength(matrix.GetRow(2)));
}

void StoreNames(KTANode& record, INode* node) {
    Plinth::CopyName(record.nodeName, sizeof(record.nodeName), node->GetName());
    INode* parent = node->GetParentNode();
    if (parent != NULL && strcmp(parent->GetName(), kSceneRootName) != 0) {
        Plinth::CopyName(record.parentName, sizeof(record.parentName), parent->GetName());
    }
}

void LogTransformation(const KTANode& record, const char* name, const AffineParts& parts) {
    Plinth::Log("Node '%s' transformation:", name);
    const Plinth::Float32* t = record.translation;
    Plinth::Log("+ Translation = %f, %f, %f", t[0], t[1], t[2]);
    const Plinth::Float32* r = record.rotation;
    Plinth::Log("+ Rotation    = %f, %f, %f, %f", r[0], r[1], r[2], r[3]);
    Plinth::Log("+ Scale Rot   = %f, %f, %f, %f", parts.u.x, parts.u.z, parts.u.y, parts.u.w);
    const Plinth::Float32* s = record.scale;
    Plinth::Log("+ Scale       = %f, %f, %f", s[0], s[1], s[2]);
    Plinth::Log("+ Determinant = %f", parts.f);
    // Fixed at 0.000000 whatever the parity, which the determinant above tells.
    Plinth::Log("+ Parity      = %f", 0.0);
    float angle;
    Point3 axis;
    AngAxisFromQ(parts.u, &angle, axis);
    Plinth::Log("Scale Axis  = %f, %f, %f", axis.x, axis.z, axis.y);
    Plinth::Log("Scale Angle = %f", angle);
}

// Rows and columns in the file's axis order. The fourth column is 0 in all rows, the last one
// included: readers of the format expect it so.
void StoreInverseWorld(KTANode& record, const Matrix3& world) {
    static const int kRows[4] = {0, 2, 1, 3};
    const Matrix3 inverse = Inverse(world);
    for (int i = 0; i < 4; ++i) {
        StoreVector(record.inverseWorldMatrix[i], inverse.GetRow(kRows[i]));
        record.inverseWorldMatrix[i][3] = 0.0f;
    }
}

bool HasHelperSize(Object* object) {
    const Class_ID id = object->ClassID();
    const bool sizedHelper = id.PartB() == 0 && (id.PartA() == 0x2010 || id.PartA() == 0x2011 ||
                                                 id.PartA() == 0x2013 || id.PartA() == 0x2014);
    const SClass_ID super = object->SuperClassID();
    return sizedHelper || id == kSizedHelperClassId || super == SHAPE_CLASS_ID ||
           super == GEN_DERIVOB_CLASS_ID;
}

// Parameter 0 of the object's first parameter block; 0 without one.
float HelperSize(Object* object) {
    // BaseObject hides the overload that takes an index.
    IParamBlock2* block = static_cast<Animatable*>(object)->GetParamBlock(0);
    float size = 0.0f;
    Interval valid = FOREVER;
    if (block == NULL || !block->GetValue(0, 0, size, valid)) {
        return 0.0f;
    }
    return size;
}

void Classify(KTANode& record, INode* node) {
    Object* object = node->GetObjectRef();
    if (object == NULL) {
        return;
    }
    if (HasHelperSize(object)) {
        record.hasHelperSize = 1;
        record.helperSize = HelperSize(object);
    } else if (object->SuperClassID() == HELPER_CLASS_ID ||
               object->ClassID() == kBoneObjectClassId) {
        record.isBone = 1;
    }
}

bool IsTaggedCollisionMesh(INode* node) {
    CStr properties;
    node->GetUserPropBuffer(properties);
    const Plinth::String lowered = Plinth::String(properties.data()).Lowered();
    if (lowered.Data() == NULL && properties.data() != NULL) {
        throw std::bad_alloc();
    }
    return lowered.Find("collisionmesh") >= 0;
}

void ExportMeshOfNode(ExportPass& pass, INode* node) {
    if (IsTaggedCollisionMesh(node)) {
        if (pass.options.collisionMeshes) {
            Plinth::Log("  + Exporting collision mesh...");
            ExportMesh(pass, node, true);
        }
        return;
    }
    if (pass.options.meshes && (node->Renderable() || pass.options.nonRenderable)) {
        Plinth::Log("  + Exporting mesh...");
        ExportMesh(pass, node, false);
    }
}

}  // namespace

void ExportNode(ExportPass& pass, INode* node) {
    BeginNode(pass, node);
    ExportOpenSkins(pass);
}

void BeginNode(ExportPass& pass, INode* node) {
    if (pass.exportedNodes.Find(node) >= 0) {
        return;
    }
    Plinth::Log("\n");
    Plinth::Log("- Exporting node '%s'", node->GetName());
    if (IsFootprintNode(node)) {
        Plinth::Log("  + Skipped, because it's a biped footprint");
        return;
    }

    KTANode record = ZeroedRecord<KTANode>();
    StoreNames(record, node);
    Plinth::Log("  + Parent = '%s'", record.parentName);

    const NodePlace place(node);
    const Matrix3 world = place.World(0);
    const Matrix3 local = place.ToLocal(world, 0);
    AffineParts parts;
    DecomposeTransform(local, parts);
    StoreVector(record.translation, parts.t);
    StoreQuaternion(record.rotation, parts.q);
    StoreVector(record.scale, RowScale(local));
    LogTransformation(record, node->GetName(), parts);
    StoreInverseWorld(record, world);
    Classify(record, node);

    pass.writer.WriteChunk(record);
    pass.exportedNodes.Add(node);
    const Plinth::Int32 skins = pass.openSkins.Count();
    if (place.IsGeometric()) {
        ExportMeshOfNode(pass, node);
    }
    if (pass.openSkins.Count() == skins) {
        FinishNode(pass, node);
    }
}

void FinishNode(ExportPass& pass, INode* node) {
    ExportJointLimits(pass, node);
    ExportIKChain(pass, node);
    ExportWires(pass, node);
    if (pass.options.morphers) {
        ExportMorphTargets(pass, node);
    }
}

// ---------------------------------------------------------------- the pass over the nodes

Plinth::UInt8 g_motionPass = 0;

ExportPass::ExportPass(Interface* maxInterface, const ExportOptions& exportOptions)
    : ip(maxInterface),
      options(exportOptions),
      nodeTotal(0),
      nodeDone(0),
      numMaterials(0),
      layerType(kLayerAmbient),
      transformSamples(maxInterface) {
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

bool IsWritten(const ExportPass& pass, INode* node) {
    return !node->IsHidden(0, FALSE) ||
           (g_motionPass ? pass.options.motionsForHidden : pass.options.exportHidden);
}

void WriteVisibleNode(ExportPass& pass, INode* node) {
    if (IsWritten(pass, node)) {
        g_motionPass ? ExportMotionPart(pass, node) : ExportNode(pass, node);
    }
}

// Announces the nodes whose motion will be sampled, in the order in which they are written.
void AnnounceSamples(ExportPass& pass, const NodeList& roots) {
    for (Plinth::Int32 i = 0; i < roots.Count(); ++i) {
        NodeWalk walk(roots[i]);
        for (INode* next = walk.Next(); next != NULL; next = walk.Next()) {
            if (IsWritten(pass, next) && !IsFootprintNode(next)) {
                pass.transformSamples.Announce(next);
            }
        }
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
    } else if (pass.options.sampleAnimation) {
        AnnounceSamples(pass, roots);
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
