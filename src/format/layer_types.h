// What a material layer does, by the map slot of a standard material that it stems from.
#ifndef FORMAT_LAYER_TYPES_H
#define FORMAT_LAYER_TYPES_H

#include "core/types.h"

struct KTALayerType {
    const char* label;
    Plinth::UInt8 type;  // as in KTAMaterialLayer
};

// By slot.
static const KTALayerType kSlotLayerTypes[] = {
    {"*MAP_AMBIENT", 0}, {"*MAP_DIFFUSE", 1},        {"*MAP_SPECULAR", 2},
    {"*MAP_SHINE", 9},   {"*MAP_SHINESTRENGTH", 10}, {"*MAP_SELFILLUM", 7},
    {"*MAP_OPACITY", 6}, {"*MAP_FILTERCOLOR", 11},   {"*MAP_BUMP", 3},
    {"*MAP_REFLECT", 4}, {"*MAP_REFRACT", 5}};

static const int kNumSlotLayerTypes =
    static_cast<int>(sizeof(kSlotLayerTypes) / sizeof(kSlotLayerTypes[0]));

// A map of the scene itself, which no material holds.
static const KTALayerType kEnvironmentLayerType = {"*SCENE_ENVMAP", 8};

// A map inside another map, or in another material's slot; its type is the previous layer's.
static const char kGenericLayerLabel[] = "*MAP_GENERIC";

enum { kBumpLayerType = 3 };

#endif
