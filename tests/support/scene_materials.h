// Materials of scenes.
#pragma once

#include <stdmat.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/scene/scene.h"

namespace support {

inline maxhost::scene::Material Standard(const std::string& name) {
    maxhost::scene::Material material;
    material.name = name;
    return material;
}

inline maxhost::scene::Material Multi(const std::string& name,
                                      std::vector<maxhost::scene::SubMaterial> subMaterials) {
    maxhost::scene::Material material;
    material.kind = maxhost::scene::MaterialKind::multi;
    material.name = name;
    material.subMaterials = std::move(subMaterials);
    return material;
}

// With a value of its own in every field but the name, the class and what it holds.
inline maxhost::scene::Material Colored(maxhost::scene::Material material) {
    material.ambient = {0.1f, 0.2f, 0.3f};
    material.diffuse = {0.4f, 0.5f, 0.6f};
    material.specular = {0.7f, 0.8f, 0.9f};
    material.selfIllumination = {0.15f, 0.25f, 0.35f};
    material.shininess = 0.45f;
    material.shininessStrength = 0.55f;
    material.transparency = 0.25f;
    material.twoSided = true;
    material.wire = true;
    material.transparencyType = TRANSP_ADDITIVE;
    return material;
}

inline std::shared_ptr<const maxhost::scene::Material> Shared(maxhost::scene::Material material) {
    return std::make_shared<const maxhost::scene::Material>(std::move(material));
}

}  // namespace support
