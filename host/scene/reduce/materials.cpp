#include "host/scene/reduce/kinds.h"

#include <memory>
#include <utility>
#include <variant>

namespace maxhost::scene {

void CutMaterialUses(Scene& scene, Keeper& keep) {
    for (Node& node : scene.nodes) {
        if (node.material != kNone && !keep()) {
            node.material = kNone;
        }
    }
}

namespace {

bool RenumberSubMaterials(Material& material, const Places& places) {
    bool isChanged = false;
    for (SubMaterial& part : material.subMaterials) {
        if (int* const position = std::get_if<int>(&part)) {
            const int place = PlaceOf(places, *position);
            isChanged = isChanged || place != *position;
            if (place == kNone) {
                part = std::monostate();
            } else {
                *position = place;
            }
        } else if (auto* const own = std::get_if<std::shared_ptr<const Material>>(&part)) {
            isChanged |= EditShared(
                *own, [&](Material& inner) { return RenumberSubMaterials(inner, places); });
        }
    }
    return isChanged;
}

}  // namespace

void CutMaterials(Scene& scene, Keeper& keep) {
    Places places;
    int count = 0;
    std::vector<std::shared_ptr<const Material>> materials;
    for (const auto& material : scene.materials) {
        const bool stays = keep();
        places.push_back(stays ? count++ : kNone);
        if (stays) {
            materials.push_back(material);
        }
    }
    scene.materials = std::move(materials);
    for (auto& material : scene.materials) {
        EditShared(material, [&](Material& own) { return RenumberSubMaterials(own, places); });
    }
    for (Node& node : scene.nodes) {
        node.material = PlaceOf(places, node.material);
    }
}

namespace {

bool CutMaterialParts(Material& material, Keeper& keep) {
    const std::size_t maps = material.maps.size();
    Filter(material.maps, keep);
    bool isChanged = material.maps.size() != maps;
    for (SubMaterial& part : material.subMaterials) {
        if (!std::holds_alternative<std::monostate>(part) && !keep()) {
            part = std::monostate();
            isChanged = true;
        } else if (auto* const own = std::get_if<std::shared_ptr<const Material>>(&part)) {
            isChanged |=
                EditShared(*own, [&](Material& inner) { return CutMaterialParts(inner, keep); });
        }
    }
    return isChanged;
}

}  // namespace

void CutMaterialParts(Scene& scene, Keeper& keep) {
    for (auto& material : scene.materials) {
        EditShared(material, [&](Material& own) { return CutMaterialParts(own, keep); });
    }
}

}  // namespace maxhost::scene
