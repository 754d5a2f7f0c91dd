#include "kta/gltf/materials.h"

#include <algorithm>
#include <cmath>

#include "kta/dump.h"
#include "kta/fields.h"
#include "kta/gltf/images.h"
#include "kta/text.h"

namespace kta::gltf {
namespace {

namespace fs = std::filesystem;

constexpr const char* kTextureTransform = "KHR_texture_transform";
constexpr const char* kSpecular = "KHR_materials_specular";

constexpr const char* kNoImageOfGltf = "no PNG or JPEG image, which alone glTF has";

// ---------------------------------------------------------------- colours

double Limited(double value, double least, double most) {
    return value > least ? std::min(value, most) : least;  // not a number: the least
}

// 3ds Max's colours are those of the screen (IEC 61966-2-1), glTF's those of light.
double Linear(double screen) {
    const double value = Limited(screen, 0, 1);
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

Vector3 LinearColour(const float (&colour)[3]) {
    return {Linear(colour[0]), Linear(colour[1]), Linear(colour[2])};
}

// ---------------------------------------------------------------- surfaces

// Of 3ds Max's Blinn highlight, whose exponent is 2 to the power of ten times the glossiness: as
// wide as one of that exponent is (Walter et al., Microfacet Models for Refraction, 2007), and with
// glTF's alpha, the square of its roughness.
double RoughnessOf(double shininess) {
    const double exponent = std::exp2(10 * Limited(shininess, 0, 1));
    return std::sqrt(std::sqrt(2 / (exponent + 2)));
}

const KTAMaterialLayer* LayerOf(const std::vector<const KTAMaterialLayer*>& layers, int type) {
    const auto found = std::find_if(layers.begin(), layers.end(),
                                    [type](const auto* layer) { return layer->layerType == type; });
    return found == layers.end() ? nullptr : *found;
}

// What the layer does to pairs of texture coordinates as they stand in the file (u, 1 - v): in 3ds
// Max offsets move, then tiling scales and the angle turns about the image's middle. The extension
// scales, turns and moves.
Json TransformJson(const KTAMaterialLayer& layer) {
    const double values[] = {layer.uOffset, layer.vOffset, layer.uTiling, layer.vTiling,
                             layer.rotationAngle};
    if (!std::all_of(std::begin(values), std::end(values),
                     [](double v) { return std::isfinite(v); })) {
        return {};
    }
    const auto [uOffset, vOffset, uTiling, vTiling, angle] = values;
    if (uOffset == 0 && vOffset == 0 && uTiling == 1 && vTiling == 1 && angle == 0) {
        return {};
    }
    const double u = 0.5 + uOffset;
    const double v = 0.5 - vOffset;
    const double sine = std::sin(angle);
    const double cosine = std::cos(angle);
    const float offset[] = {Stored(0.5 - uTiling * cosine * u - vTiling * sine * v),
                            Stored(0.5 + uTiling * sine * u - vTiling * cosine * v)};
    return {{"offset", offset},
            {"rotation", Stored(angle)},
            {"scale", {Stored(uTiling), Stored(vTiling)}}};
}

}  // namespace

// ---------------------------------------------------------------- materials

Materials::Materials(const File& actor, const GlbOptions& options, Document& document)
    : options_(options), document_(document) {
    for (const Chunk& chunk : actor.chunks) {
        if (const auto* record = chunk.As<KTAMaterial>()) {
            sources_.push_back({record});
        } else if (const auto* layer = chunk.As<KTAMaterialLayer>();
                   layer != nullptr && !sources_.empty()) {
            sources_.back().layers.push_back(layer);
        }
    }
}

std::size_t Materials::Get(std::int32_t number, bool hasCoordinates) {
    const bool exists = number >= 0 && static_cast<std::size_t>(number) < sources_.size();
    const bool isWhole =
        hasCoordinates || !exists || sources_[static_cast<std::size_t>(number)].layers.empty();
    const std::pair<std::int32_t, bool> key(exists ? number : -1, isWhole);
    const auto known = numbers_.find(key);
    if (known != numbers_.end()) {
        return known->second;
    }
    Json material =
        exists ? MaterialJson(sources_[static_cast<std::size_t>(number)], isWhole)
               : Json{{"name", "Default"},
                      {"pbrMetallicRoughness",
                       {{"baseColorFactor",
                         {Stored(Linear(0.75)), Stored(Linear(0.75)), Stored(Linear(0.75)), 1.0f}},
                        {"metallicFactor", 0.0f}}}};
    if (options_.withNumbers && exists) {
        material["extras"]["material"] = number;
    }
    const std::size_t added = document_.Add("materials", std::move(material));
    numbers_.emplace(key, added);
    if (!isWhole) {
        shownWithoutTextures_.insert(number);
    }
    return added;
}

Json Materials::MaterialJson(const Source& source, bool hasCoordinates) {
    const KTAMaterial& record = *source.record;
    const double opacity = Limited(record.opacity, 0, 1);
    const Vector3 diffuse = LinearColour(record.diffuse);
    Json material = {
        {"name", ToUtf8(TextOf(record.materialName))},
        {"pbrMetallicRoughness",
         {{"baseColorFactor",
           {Stored(diffuse[0]), Stored(diffuse[1]), Stored(diffuse[2]), Stored(opacity)}},
          {"metallicFactor", 0.0f},
          {"roughnessFactor", Stored(RoughnessOf(record.shininess))}}}};
    const Vector3 emissive = LinearColour(record.selfIllumination);
    if (emissive != Vector3{}) {
        material["emissiveFactor"] = JsonOf(emissive);
    }
    if (opacity < 1) {
        material["alphaMode"] = "BLEND";
    }
    if (record.twoSided != 0) {
        material["doubleSided"] = true;
    }
    material["extensions"][kSpecular] = {
        {"specularFactor", Stored(Limited(record.shininessStrength, 0, 1))},
        {"specularColorFactor", JsonOf(LinearColour(record.specular))}};
    document_.Use(kSpecular);
    if (hasCoordinates) {
        AddTextures(source, material);
    }
    return material;
}

// ---------------------------------------------------------------- textures

// A texture stands in the colour's place, as in 3ds Max, and not in its colour's light. Of several
// layers of a type the first is shown.
void Materials::AddTextures(const Source& source, Json& material) {
    const KTAMaterialLayer* const diffuse = LayerOf(source.layers, kLayerDiffuse);
    const KTAMaterialLayer* const glow = LayerOf(source.layers, kLayerSelfIllumination);
    const KTAMaterialLayer* const specular = LayerOf(source.layers, kLayerSpecular);
    const KTAMaterialLayer* const opacity = LayerOf(source.layers, kLayerOpacity);
    bool showsDiffuse = false;
    if (diffuse != nullptr) {
        if (Json texture = TextureJson(*diffuse); !texture.is_null()) {
            showsDiffuse = true;
            Json& surface = material["pbrMetallicRoughness"];
            surface["baseColorFactor"] = {1.0f, 1.0f, 1.0f, surface["baseColorFactor"][3]};
            surface["baseColorTexture"] = std::move(texture);
        }
    }
    if (glow != nullptr) {
        if (Json texture = TextureJson(*glow); !texture.is_null()) {
            material["emissiveFactor"] = {1.0f, 1.0f, 1.0f};
            material["emissiveTexture"] = std::move(texture);
        }
    }
    if (specular != nullptr) {
        if (Json texture = TextureJson(*specular); !texture.is_null()) {
            Json& extension = material["extensions"][kSpecular];
            extension["specularColorFactor"] = {1.0f, 1.0f, 1.0f};
            extension["specularColorTexture"] = std::move(texture);
        }
    }
    // Opacity that comes with the colour's own image is its alpha, which glTF has there too.
    const bool isOwnAlpha = showsDiffuse && opacity != nullptr &&
                            TextOf(opacity->textureFileName) == TextOf(diffuse->textureFileName);
    if (isOwnAlpha) {
        material["alphaMode"] = "BLEND";
    }
    CountLeftOut(source, {diffuse, glow, specular, isOwnAlpha ? opacity : nullptr});
}

void Materials::CountLeftOut(const Source& source, const std::set<const KTAMaterialLayer*>& shown) {
    for (const KTAMaterialLayer* layer : source.layers) {
        if (!shown.contains(layer)) {
            ++layersLeftOut_[layer->layerType];
        }
    }
}

Json Materials::TextureJson(const KTAMaterialLayer& layer) {
    const std::string name(TextOf(layer.textureFileName));
    if (name.empty()) {
        return {};
    }
    auto known = textures_.find(name);
    if (known == textures_.end()) {
        std::optional<std::size_t> texture;
        if (const std::optional<std::size_t> image = ImageOf(name)) {
            texture = document_.Add("textures", {{"source", *image}});
        }
        known = textures_.emplace(name, texture).first;
    }
    if (!known->second) {
        return {};
    }
    Json reference = {{"index", *known->second}};
    if (Json transform = TransformJson(layer); !transform.is_null()) {
        reference["extensions"][kTextureTransform] = std::move(transform);
        document_.Use(kTextureTransform);
    }
    return reference;
}

std::optional<std::size_t> Materials::ImageOf(const std::string& name) {
    if (!options_.findTexture) {
        if (ImageTypeByName(name).empty()) {
            texturesLeftOut_[kNoImageOfGltf].push_back(name);
            return std::nullopt;
        }
        return document_.Add("images", {{"uri", UriOf(ToUtf8(name))}});
    }
    const std::optional<fs::path> path = options_.findTexture(name);
    if (!path) {
        texturesLeftOut_["not found"].push_back(name);
        return std::nullopt;
    }
    return options_.embedTextures ? EmbeddedImage(name, *path) : ReferredImage(name, *path);
}

std::optional<std::size_t> Materials::ReferredImage(const std::string& name, const fs::path& path) {
    if (ImageTypeOf(path).empty()) {
        texturesLeftOut_[std::string(kNoImageOfGltf) + " (embedding converts)"].push_back(name);
        return std::nullopt;
    }
    return document_.Add("images", {{"uri", UriOf(path, options_.directory)}});
}

std::optional<std::size_t> Materials::EmbeddedImage(const std::string& name, const fs::path& path) {
    std::string type = ImageTypeOf(path);
    std::vector<std::uint8_t> bytes;
    if (!type.empty()) {
        bytes = BytesOf(path);
    } else if (options_.convertToPng) {
        type = kPng;
        bytes = options_.convertToPng(path);
    }
    if (bytes.empty()) {
        texturesLeftOut_["no image that can be read"].push_back(name);
        return std::nullopt;
    }
    return document_.Add("images", {{"name", ToUtf8(name)},
                                    {"mimeType", type},
                                    {"bufferView", document_.AddBufferView(bytes)}});
}

std::vector<std::string> Materials::Warnings() const {
    constexpr std::size_t kMostNames = 5;
    std::vector<std::string> lines;
    for (const auto& [why, names] : texturesLeftOut_) {
        std::vector<std::string> shown;
        for (std::size_t i = 0; i < std::min(names.size(), kMostNames); ++i) {
            shown.push_back(OneLine(ToUtf8(names[i])));
        }
        const std::size_t others = names.size() - shown.size();
        lines.push_back(Counted(names.size(), "texture") + " left out, " + why + ": " +
                        Joined(shown) +
                        (others > 0 ? " and " + std::to_string(others) + " more" : ""));
    }
    if (!shownWithoutTextures_.empty()) {
        lines.push_back(Counted(shownWithoutTextures_.size(), "material") +
                        " shown without textures where there are no texture coordinates");
    }
    std::vector<std::string> types;
    for (const auto& [type, count] : layersLeftOut_) {
        const char* const name = LayerTypeName(type);
        types.push_back(std::to_string(count) + " " + (name != nullptr ? name : "unknown"));
    }
    if (!types.empty()) {
        lines.push_back("layers left out, which glTF cannot show: " + Joined(types));
    }
    return lines;
}

}  // namespace kta::gltf
