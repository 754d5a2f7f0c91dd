#include "export/default_materials.h"

#include <stdmat.h>

#include "core/format.h"

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
    char name[32];
    Plinth::FormatInto(name, sizeof(name), "Wire Color %d", materials.Count() + 1);
    materials.MakeRoom();
    StdMat* material = NewDefaultStdMat();
    materials.Add(material);
    material->SetDiffuse(Color(node->GetWireColor()), 0);
    material->SetName(CStr(name));
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
