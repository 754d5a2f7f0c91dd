// Materials: the material chunks with their layers, and the numbers that meshes have for them.
#include <string.h>

#include <max.h>
#include <stdmat.h>

#include "core/copy_name.h"
#include "export/layer_labels.h"
#include "format/records.h"
#include "plugin/kta_exp.h"

namespace {

const Class_ID kNoClassId(0, 0);
const Class_ID kStandardClassId(DMTL_CLASS_ID, 0);
const Class_ID kBitmapClassId(BMTEX_CLASS_ID, 0);
const Class_ID kMixClassId(MIX_CLASS_ID, 0);
const float kBumpScale = 0.125f;

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

// What follows the last separator of the path, or of its last 259 characters.
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

void LogLayer(const KTAMaterialLayer& record) {
    Plinth::Log("Writing material layer:");
    Plinth::Log("  + Texture         = %s", record.textureFileName);
    Plinth::Log("  + Parent material = %d", record.parentMaterial);
    Plinth::Log("  + Amount          = %f", record.amount);
    Plinth::Log("  + Layer type      = %d", record.layerType);
}

}  // namespace

void KTAExp::ExportMaterialList() {
    KTAMaterial extra;
    memset(&extra, 0, sizeof(extra));
    Plinth::CopyName(extra.materialName, sizeof(extra.materialName), "Extra material");
    StoreColor(extra.diffuse, Color(0.75f, 0.75f, 0.75f));
    StoreColor(extra.specular, Color(1.0f, 1.0f, 1.0f));
    extra.opacity = 1.0f;
    extra.indexOfRefraction = kUsualIndexOfRefraction;
    extra.transparencyType = 'F';
    WriteMaterial(extra);

    Plinth::Log("Exporting material list");
    for (Plinth::Int32 i = 0; i < sceneMaterials.Count(); ++i) {
        ExportMaterial(sceneMaterials[i], i, -1);
    }
}

void KTAExp::ExportMaterial(Mtl* material, Plinth::Int32 listIndex, Plinth::Int32 subIndex) {
    // A material at the top level that has others stands for these alone.
    if (subIndex != -1 || material->NumSubMtls() == 0) {
        KTAMaterial record;
        FillMaterial(record, material);
        Plinth::Log("Exporting material '%s'...", TextOrEmpty(material->GetName().data()));
        materialTable.Add(material, listIndex, subIndex == -1 ? 0 : subIndex, numMaterials);
        WriteMaterial(record);
    }
    ExportLayers(material);
    for (int i = 0; i < material->NumSubMtls(); ++i) {
        Mtl* subMaterial = material->GetSubMtl(i);
        if (subMaterial != NULL) {
            ExportMaterial(subMaterial, listIndex, i);
        }
    }
}

void KTAExp::FillMaterial(KTAMaterial& record, Mtl* material) {
    memset(&record, 0, sizeof(record));
    Plinth::CopyName(record.materialName, sizeof(record.materialName), material->GetName().data());
    // Once for each material that is written: a parent's update need not reach it.
    Interval valid = FOREVER;
    material->Update(0, valid);
    if (material->ClassID() == kStandardClassId) {
        StoreStandard(record, static_cast<StdMat*>(material));
    } else {
        StoreOther(record, material);
        indexOfRefraction = kUsualIndexOfRefraction;
    }
    StoreColor(record.selfIllumination, material->GetSelfIllumColor());
    record.opacity = 1.0f - material->GetXParency();
    record.indexOfRefraction = indexOfRefraction;
}

void KTAExp::WriteMaterial(const KTAMaterial& record) {
    WriteChunk(kChunkMaterial, sizeof(record), &record, FindChunkType(kChunkMaterial)->version);
    ++numMaterials;
}

void KTAExp::ExportLayers(Mtl* material) {
    const Class_ID classId = material->ClassID();
    StdMat* standard =
        classId == kStandardClassId ? static_cast<StdMat*>(material) : static_cast<StdMat*>(NULL);
    for (int i = 0; i < material->NumSubTexmaps(); ++i) {
        Texmap* map = material->GetSubTexmap(i);
        if (map == NULL || (standard != NULL && !standard->MapEnabled(i))) {
            continue;
        }
        ExportLayer(map, classId, i, standard != NULL ? standard->GetTexmapAmt(i, 0) : 1.0f);
    }
}

void KTAExp::ExportLayer(Texmap* map, const Class_ID& parent, int slot, float amount) {
    const Class_ID classId = map->ClassID();
    if (classId == kBitmapClassId) {
        ChooseLayerType(parent, slot);
        WriteLayer(static_cast<BitmapTex*>(map), amount);
    }
    for (int i = 0; i < map->NumSubTexmaps(); ++i) {
        Texmap* subMap = map->GetSubTexmap(i);
        if (subMap != NULL) {
            ExportLayer(subMap, classId, slot, 1.0f);
        }
    }
}

// What is not covered here keeps the type of the layer before.
void KTAExp::ChooseLayerType(const Class_ID& parent, int slot) {
    if (parent == kNoClassId) {
        layerType = kLayerEnvironment;
    } else if ((parent == kStandardClassId || parent == kMixClassId) && slot >= 0 &&
               slot < kNumSlotLayers) {
        layerType = kSlotLayers[slot].type;
    }
}

void KTAExp::WriteLayer(BitmapTex* bitmap, float amount) {
    KTAMaterialLayer record;
    memset(&record, 0, sizeof(record));
    Plinth::CopyName(record.textureFileName, sizeof(record.textureFileName),
                     TextureName(TextOrEmpty(bitmap->GetMapName())));
    record.layerType = layerType;
    record.parentMaterial = static_cast<Plinth::Int16>(numMaterials - 1);
    record.amount = layerType == kLayerBump ? amount * kBumpScale : amount;
    StoreCoordinates(record, bitmap->GetUVGen());
    LogLayer(record);
    WriteChunk(kChunkMaterialLayer, sizeof(record), &record,
               FindChunkType(kChunkMaterialLayer)->version);
    materialTable.CountLayer();
}

Plinth::Int32 KTAExp::MaterialNumber(Face* face, INode* node) {
    Mtl* material = node->GetMtl();
    if (material == NULL) {
        material = defaultMaterials.Find(node);
    }
    const Plinth::Int32 listIndex = material != NULL ? sceneMaterials.Find(material) : -1;
    if (listIndex < 0) {
        return 0;
    }
    return material->NumSubMtls() == 0 ? materialTable.NumberOf(listIndex)
                                       : materialTable.NumberOf(listIndex, face->getMatID());
}
