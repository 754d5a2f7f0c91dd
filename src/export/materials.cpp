// Materials: the material chunks with their layers, and the numbers that meshes have for them.
#include <string.h>

#include <max.h>
#include <stdmat.h>

#include "core/format.h"
#include "core/log.h"

#include "export/export_pass.h"

const SlotLayer kSlotLayers[kNumSlotLayers] = {{"*MAP_AMBIENT", kLayerAmbient},
                                               {"*MAP_DIFFUSE", kLayerDiffuse},
                                               {"*MAP_SPECULAR", kLayerSpecular},
                                               {"*MAP_SHINE", kLayerShininess},
                                               {"*MAP_SHINESTRENGTH", kLayerShininessStrength},
                                               {"*MAP_SELFILLUM", kLayerSelfIllumination},
                                               {"*MAP_OPACITY", kLayerOpacity},
                                               {"*MAP_FILTERCOLOR", kLayerFilterColor},
                                               {"*MAP_BUMP", kLayerBump},
                                               {"*MAP_REFLECT", kLayerReflection},
                                               {"*MAP_REFRACT", kLayerRefraction}};
const char kEnvironmentLayerLabel[] = "*SCENE_ENVMAP";
const char kGenericLayerLabel[] = "*MAP_GENERIC";

DefaultMaterials::~DefaultMaterials() {
    for (Plinth::Int32 i = 0; i < materials.Count(); ++i) {
        materials[i]->DeleteMe();
    }
}

Mtl* DefaultMaterials::Make(INode* node) {
    char name[32];
    Plinth::FormatInto(name, sizeof(name), "Wire Color %d", nodes.Count() + 1);
    materials.MakeRoom();
    StdMat* const material = NewDefaultStdMat();
    materials.Add(material);
    material->SetDiffuse(Color(node->GetWireColor()), 0);
    material->SetName(CStr(name));
    const Plinth::Int32 position = nodes.Add(node);
    if (position == materialOfNode.Count()) {
        materialOfNode.AddAmortized(material);
    } else {
        materialOfNode[position] = material;
    }
    return material;
}

Mtl* DefaultMaterials::Find(INode* node) const {
    const Plinth::Int32 position = nodes.Find(node);
    return position < 0 ? NULL : materialOfNode[position];
}

void DefaultMaterials::Reserve(Plinth::Int32 count) {
    materials.Reserve(count);
    nodes.Reserve(count);
    materialOfNode.Reserve(count);
}

void MaterialTable::Add(Mtl* material, Plinth::Int32 listIndex, Plinth::Int32 subIndex,
                        Plinth::Int32 number) {
    const MaterialTableEntry entry = {listIndex, subIndex, number - 1, 0, material};
    entries.AddAmortized(entry);
    lastOfList.Set(Plinth::PairKey(listIndex, 0), number);
    lastOfPair.Set(Plinth::PairKey(listIndex, subIndex), number);
}

void MaterialTable::CountLayer() {
    if (entries.Count() > 0) {
        ++entries[entries.Count() - 1].numLayers;
    }
}

Plinth::Int32 MaterialTable::NumberOf(Plinth::Int32 listIndex) const {
    Plinth::Int32 number = 0;
    lastOfList.Find(Plinth::PairKey(listIndex, 0), number);
    return number;
}

Plinth::Int32 MaterialTable::NumberOf(Plinth::Int32 listIndex, Plinth::Int32 subIndex) const {
    Plinth::Int32 number = 0;
    lastOfPair.Find(Plinth::PairKey(listIndex, subIndex), number);
    return number;
}

namespace {

const Class_ID kNoClassId(0, 0);
const Class_ID kStandardClassId(DMTL_CLASS_ID, 0);
const Class_ID kBitmapClassId(BMTEX_CLASS_ID, 0);
const Class_ID kMixClassId(MIX_CLASS_ID, 0);
const float kBumpScale = 0.125f;
// Of every material: none has one of its own.
const float kIndexOfRefraction = 1.5f;

const char* TextOrEmpty(const char* text) {
    return text != NULL ? text : "";
}

void StoreColor(Plinth::Float32 field[3], const Color& color) {
    field[0] = color.r;
    field[1] = color.g;
    field[2] = color.b;
}

char TransparencyLetter(int type) {
    switch (type) {
        case TRANSP_SUBTRACTIVE:
            return 'S';
        case TRANSP_ADDITIVE:
            return 'A';
        case TRANSP_FILTER:
            return 'F';
    }
    return 'U';
}

// The argument of these getters is a time.
void StoreStandard(KTAMaterial& record, StdMat* material) {
    StoreColor(record.ambient, material->GetAmbient(0));
    StoreColor(record.diffuse, material->GetDiffuse(0));
    StoreColor(record.specular, material->GetSpecular(0));
    record.shininess = material->GetShininess(0);
    record.shininessStrength = material->GetShinStr(0);
    record.twoSided = material->GetTwoSided() ? 1 : 0;
    record.wire = material->GetWire() ? 1 : 0;
    record.transparencyType = TransparencyLetter(material->GetTransparencyType());
}

// Without arguments, these getters mean sub-material 0 and the front.
void StoreOther(KTAMaterial& record, Mtl* material) {
    StoreColor(record.ambient, material->GetAmbient());
    StoreColor(record.diffuse, material->GetDiffuse());
    StoreColor(record.specular, material->GetSpecular());
    record.shininess = material->GetShininess();
    record.shininessStrength = material->GetShinStr();
    record.transparencyType = 'F';
}

// The part behind the last separator of the path, or of the path's last 259 characters.
const char* TextureName(const char* path) {
    const size_t length = strlen(path);
    if (length >= kNameSize) {
        path += length - (kNameSize - 1);
    }
    const char* name = path;
    for (; *path != '\0'; ++path) {
        if (*path == '/' || *path == '\\') {
            name = path + 1;
        }
    }
    return name;
}

void StoreCoordinates(KTAMaterialLayer& record, StdUVGen* generator) {
    record.uTiling = 1.0f;
    record.vTiling = 1.0f;
    if (generator != NULL) {
        record.uOffset = generator->GetUOffs(0);
        record.vOffset = generator->GetVOffs(0);
        record.uTiling = generator->GetUScl(0);
        record.vTiling = generator->GetVScl(0);
        record.rotationAngle = generator->GetWAng(0);
    }
}

// The number of the layer's material need not fit into the record.
void LogLayer(const KTAMaterialLayer& record, Plinth::Int32 parentMaterial) {
    Plinth::Log("Writing material layer:");
    Plinth::Log("  + Texture         = %s", record.textureFileName);
    Plinth::Log("  + Parent material = %d", parentMaterial);
    Plinth::Log("  + Amount          = %f", record.amount);
    Plinth::Log("  + Layer type      = %d", record.layerType);
}

KTAMaterial DescribeMaterial(Mtl* material) {
    KTAMaterial record = ZeroedRecord<KTAMaterial>();
    Plinth::CopyName(record.materialName, sizeof(record.materialName), material->GetName().data());
    // Once for each material that is written: a parent's update need not reach it.
    Interval valid = FOREVER;
    material->Update(0, valid);
    if (material->ClassID() == kStandardClassId) {
        StoreStandard(record, static_cast<StdMat*>(material));
    } else {
        StoreOther(record, material);
    }
    StoreColor(record.selfIllumination, material->GetSelfIllumColor());
    record.opacity = 1.0f - material->GetXParency();
    record.indexOfRefraction = kIndexOfRefraction;
    return record;
}

void WriteMaterial(ExportPass& pass, const KTAMaterial& record) {
    pass.writer.WriteChunk(record);
    ++pass.numMaterials;
}

// A map in any other place keeps the type of the layer before.
void ChooseLayerType(ExportPass& pass, const Class_ID& parent, int slot) {
    if (parent == kNoClassId) {
        pass.layerType = kLayerEnvironment;
    } else if ((parent == kStandardClassId || parent == kMixClassId) && slot >= 0 &&
               slot < kNumSlotLayers) {
        pass.layerType = kSlotLayers[slot].type;
    }
}

void WriteLayer(ExportPass& pass, BitmapTex* bitmap, float amount) {
    KTAMaterialLayer record = ZeroedRecord<KTAMaterialLayer>();
    Plinth::CopyName(record.textureFileName, sizeof(record.textureFileName),
                     TextureName(TextOrEmpty(bitmap->GetMapName())));
    record.layerType = pass.layerType;
    record.parentMaterial = static_cast<Plinth::Int16>(pass.numMaterials - 1);
    record.amount = pass.layerType == kLayerBump ? amount * kBumpScale : amount;
    StoreCoordinates(record, bitmap->GetUVGen());
    LogLayer(record, pass.numMaterials - 1);
    pass.writer.WriteChunk(record);
    pass.materialTable.CountLayer();
}

void ExportLayers(ExportPass& pass, Mtl* material) {
    const Class_ID classId = material->ClassID();
    StdMat* standard =
        classId == kStandardClassId ? static_cast<StdMat*>(material) : static_cast<StdMat*>(NULL);
    for (int i = 0; i < material->NumSubTexmaps(); ++i) {
        Texmap* map = material->GetSubTexmap(i);
        if (map == NULL || (standard != NULL && !standard->MapEnabled(i))) {
            continue;
        }
        ExportLayer(pass, map, classId, i, standard != NULL ? standard->GetTexmapAmt(i, 0) : 1.0f);
    }
}

}  // namespace

void ExportMaterialList(ExportPass& pass) {
    KTAMaterial extra = ZeroedRecord<KTAMaterial>();
    Plinth::CopyName(extra.materialName, sizeof(extra.materialName), "Extra material");
    StoreColor(extra.diffuse, Color(0.75f, 0.75f, 0.75f));
    StoreColor(extra.specular, Color(1.0f, 1.0f, 1.0f));
    extra.opacity = 1.0f;
    extra.indexOfRefraction = kIndexOfRefraction;
    extra.transparencyType = 'F';
    WriteMaterial(pass, extra);

    Plinth::Log("Exporting material list");
    for (Plinth::Int32 i = 0; i < pass.sceneMaterials.Count(); ++i) {
        ExportMaterial(pass, pass.sceneMaterials[i], i, -1);
    }
}

void ExportMaterial(ExportPass& pass, Mtl* material, Plinth::Int32 listIndex,
                    Plinth::Int32 subIndex) {
    // A material at the top level that has others stands for these alone.
    if (subIndex != -1 || material->NumSubMtls() == 0) {
        const KTAMaterial record = DescribeMaterial(material);
        Plinth::Log("Exporting material '%s'...", TextOrEmpty(material->GetName().data()));
        pass.materialTable.Add(material, listIndex, subIndex == -1 ? 0 : subIndex,
                               pass.numMaterials);
        WriteMaterial(pass, record);
    }
    ExportLayers(pass, material);
    for (int i = 0; i < material->NumSubMtls(); ++i) {
        Mtl* subMaterial = material->GetSubMtl(i);
        if (subMaterial != NULL) {
            ExportMaterial(pass, subMaterial, listIndex, i);
        }
    }
}

void ExportLayer(ExportPass& pass, Texmap* map, const Class_ID& parent, int slot, float amount) {
    const Class_ID classId = map->ClassID();
    if (classId == kBitmapClassId) {
        ChooseLayerType(pass, parent, slot);
        WriteLayer(pass, static_cast<BitmapTex*>(map), amount);
    }
    for (int i = 0; i < map->NumSubTexmaps(); ++i) {
        Texmap* subMap = map->GetSubTexmap(i);
        if (subMap != NULL) {
            ExportLayer(pass, subMap, classId, slot, 1.0f);
        }
    }
}

MaterialNumbers::MaterialNumbers(const ExportPass& pass, INode* node)
    : table(pass.materialTable), listIndex(-1), hasSubMaterials(false), number(0) {
    Mtl* material = node->GetMtl();
    if (material == NULL) {
        material = pass.defaultMaterials.Find(node);
    }
    if (material == NULL) {
        return;
    }
    listIndex = pass.sceneMaterials.Find(material);
    hasSubMaterials = listIndex >= 0 && material->NumSubMtls() != 0;
    if (listIndex >= 0 && !hasSubMaterials) {
        number = table.NumberOf(listIndex);
    }
}
