#include "scene/triangle_mesh.h"

#include <triobj.h>

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
