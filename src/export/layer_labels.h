// What a material layer does, by the map slot of a standard material that it stems from.
#ifndef EXPORT_LAYER_LABELS_H
#define EXPORT_LAYER_LABELS_H

#include "format/records.h"

struct SlotLayer {
    const char* label;
    KTALayerType type;
};

// By slot.
static const SlotLayer kSlotLayers[] = {{"*MAP_AMBIENT", kLayerAmbient},
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

static const int kNumSlotLayers = static_cast<int>(sizeof(kSlotLayers) / sizeof(kSlotLayers[0]));

static const char kEnvironmentLayerLabel[] = "*SCENE_ENVMAP";

// Of a map inside another map, or in another material's slot; its type is the previous layer's.
static const char kGenericLayerLabel[] = "*MAP_GENERIC";

#endif
