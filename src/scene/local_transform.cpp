#include "scene/local_transform.h"

namespace {
const Class_ID kTargetClassId(0x1020, 0);
const Class_ID kFootprintClassId(0x3011, 0);
}  // namespace

bool IsGeometricNode(INode* node) {
    Object* object = node->EvalWorldState(0).obj;
    return object != NULL && object->SuperClassID() == GEOMOBJECT_CLASS_ID &&
           object->ClassID() != kTargetClassId;
}

Matrix3 WorldTransform(INode* node, TimeValue time) {
    return IsGeometricNode(node) ? node->GetObjectTM(time) : node->GetNodeTM(time);
}

Matrix3 GetLocalTransform(INode* node, TimeValue time) {
    return WorldTransform(node, time) * Inverse(node->GetParentTM(time));
}

bool IsFootprintNode(INode* node) {
    Control* transform = node->GetTMController();
    return transform != NULL && transform->ClassID() == kFootprintClassId;
}
