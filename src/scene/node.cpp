#include "scene/node.h"

#include <triobj.h>

namespace {

const Class_ID kTargetClassId(0x1020, 0);
const Class_ID kFootprintClassId(0x3011, 0);

}  // namespace

INode* NodeWalk::Next() {
    if (top != NULL) {
        INode* first = top;
        top = NULL;
        return Enter(first);
    }
    while (levels.Count() > 0) {
        Level& level = levels[levels.Count() - 1];
        if (level.nextChild < level.node->NumberOfChildren()) {
            return Enter(level.node->GetChildNode(level.nextChild++));
        }
        levels.Remove(levels.Count() - 1);
    }
    return NULL;
}

INode* NodeWalk::Enter(INode* node) {
    const Level level = {node, 0};
    levels.AddAmortized(level);
    return node;
}

bool IsGeometricNode(INode* node) {
    Object* object = node->EvalWorldState(0).obj;
    return object != NULL && object->SuperClassID() == GEOMOBJECT_CLASS_ID &&
           object->ClassID() != kTargetClassId;
}

Matrix3 NodePlace::World(TimeValue time) const {
    return isGeometric ? node->GetObjectTM(time) : node->GetNodeTM(time);
}

Matrix3 NodePlace::ToLocal(const Matrix3& world, TimeValue time) const {
    return world * Inverse(node->GetParentTM(time));
}

bool IsFootprintNode(INode* node) {
    Control* transform = node->GetTMController();
    return transform != NULL && transform->ClassID() == kFootprintClassId;
}

const Class_ID kMorpherModifierClassId(0x17bb6854, 0xa5cba2a3);
const Class_ID kPhysiqueModifierClassId(0x100, 0);
const Class_ID kSkinModifierClassId(9815843, 87654);

ModifierLookup FindModifier(INode* node, const Class_ID& classId) {
    ModifierLookup result = {NULL, false};
    Object* object = node->GetObjectRef();
    while (object != NULL && object->SuperClassID() == GEN_DERIVOB_CLASS_ID) {
        IDerivedObject* derived = static_cast<IDerivedObject*>(object);
        for (int i = 0; i < derived->NumModifiers(); ++i) {
            Modifier* modifier = derived->GetModifier(i);
            if (modifier->TestAFlag(A_MOD_DISABLED)) {
                continue;
            }
            if (modifier->ClassID() == classId) {
                result.modifier = modifier;
                return result;
            }
            result.otherAbove = true;
        }
        object = derived->GetObjRef();
    }
    result.otherAbove = false;
    return result;
}

TriangleMesh::TriangleMesh(INode* node) : converted(NULL), isNew(false) {
    Object* const object = node->EvalWorldState(0).obj;
    const Class_ID type(TRIOBJ_CLASS_ID, 0);
    if (object != NULL && object->CanConvertToType(type)) {
        Object* const mesh = object->ConvertToType(0, type);
        converted = static_cast<TriObject*>(mesh);
        isNew = mesh != object;
    }
}

TriangleMesh::~TriangleMesh() {
    if (converted != NULL && isNew) {
        converted->DeleteMe();
    }
}

Mesh* TriangleMesh::Get() const {
    return converted != NULL ? &converted->GetMesh() : NULL;
}
