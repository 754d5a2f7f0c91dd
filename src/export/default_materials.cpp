#include "export/default_materials.h"

#include <stdmat.h>

#include "core/string.h"

DefaultMaterials::DefaultMaterials() {
}

DefaultMaterials::~DefaultMaterials() {
    Clear();
}

Mtl* DefaultMaterials::Get(INode* node) {
    Mtl* known = Find(node);
    if (known != NULL) {
        return known;
    }
    StdMat* material = NewDefaultStdMat();
    material->SetDiffuse(Color(node->GetWireColor()), 0);
    Plinth::String name;
    name.Format("Wire Color %d", materials.Count() + 1);
    material->SetName(CStr(name.Data()));
    materials.Add(material);
    nodes.Add(node);
    return material;
}

Mtl* DefaultMaterials::Find(INode* node) const {
    const Plinth::Int32 position = nodes.Find(node);
    return position < 0 ? NULL : materials[position];
}

void DefaultMaterials::Reserve(Plinth::Int32 count) {
    nodes.Reserve(count);
    materials.Reserve(count);
}

void DefaultMaterials::Clear() {
    for (Plinth::Int32 i = 0; i < materials.Count(); ++i) {
        materials[i]->DeleteMe();
    }
    materials.Clear();
    nodes.Clear();
}
