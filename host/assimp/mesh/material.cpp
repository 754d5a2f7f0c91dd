#include "host/assimp/mesh/material.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <utility>

#include "host/assimp/maths.h"
#include "host/assimp/text.h"

namespace maxhost::import {
namespace {

// The keys come in Assimp's AI_MATKEY_ macros as key, semantic and index.
class Properties {
  public:
    explicit Properties(const aiMaterial& material) : material_(material) {}

    // The first `count` numbers of the property; none where there are fewer. A number that is not
    // finite as f32 counts as 0 (and in NotFinite).
    template <std::size_t count>
    std::optional<std::array<float, count>> Numbers(const char* key, unsigned semantic,
                                                    unsigned index) {
        const aiMaterialProperty* const property = Find(key, semantic, index);
        std::array<float, count> numbers{};
        for (std::size_t i = 0; i < count; ++i) {
            const std::optional<double> number = NumberAt(property, i);
            if (!number) {
                return std::nullopt;
            }
            numbers[i] = FiniteFloat(*number, notFinite_);
        }
        return numbers;
    }

    std::optional<float> Number(const char* key, unsigned semantic, unsigned index) {
        const auto one = Numbers<1>(key, semantic, index);
        return one ? std::optional((*one)[0]) : std::nullopt;
    }

    bool Flag(const char* key, unsigned semantic, unsigned index) const {
        const aiMaterialProperty* const property = Find(key, semantic, index);
        return property && property->mData &&
               std::any_of(property->mData, property->mData + property->mDataLength,
                           [](char c) { return c != 0; });
    }

    std::optional<aiString> String(const char* key, unsigned semantic, unsigned index) const {
        aiString text;
        return material_.Get(key, semantic, index, text) == AI_SUCCESS ? std::optional(text)
                                                                       : std::nullopt;
    }

    unsigned TextureCount(aiTextureType type) const { return material_.GetTextureCount(type); }
    std::size_t NotFinite() const { return notFinite_; }

  private:
    const aiMaterialProperty* Find(const char* key, unsigned semantic, unsigned index) const {
        for (unsigned i = 0; i < material_.mNumProperties; ++i) {
            const aiMaterialProperty* const property = material_.mProperties[i];
            if (property && property->mSemantic == semantic && property->mIndex == index &&
                std::strcmp(property->mKey.C_Str(), key) == 0) {
                return property;
            }
        }
        return nullptr;
    }

    template <typename Number>
    static std::optional<double> ElementAt(const aiMaterialProperty& property, std::size_t i) {
        Number number;
        if ((i + 1) * sizeof number > property.mDataLength) {
            return std::nullopt;
        }
        std::memcpy(&number, property.mData + i * sizeof number, sizeof number);
        return static_cast<double>(number);
    }

    static std::optional<double> NumberAt(const aiMaterialProperty* property, std::size_t i) {
        if (!property || !property->mData) {
            return std::nullopt;
        }
        switch (property->mType) {
            case aiPTI_Float:
                return ElementAt<float>(*property, i);
            case aiPTI_Double:
                return ElementAt<double>(*property, i);
            case aiPTI_Integer:
                return ElementAt<std::int32_t>(*property, i);
            default:
                return std::nullopt;
        }
    }

    const aiMaterial& material_;
    std::size_t notFinite_ = 0;
};

// The slots of the standard material, and the texture kinds that may fill each, best first. Not the
// one for displacement, 11: the exporter's files have no type for it.
struct SlotSources {
    int slot;
    std::array<aiTextureType, 3> types;
};
constexpr SlotSources kSlots[] = {
    {0, {aiTextureType_AMBIENT}},
    {1, {aiTextureType_DIFFUSE, aiTextureType_BASE_COLOR}},
    {2, {aiTextureType_SPECULAR}},
    {3, {aiTextureType_SHININESS, aiTextureType_DIFFUSE_ROUGHNESS}},
    {5, {aiTextureType_EMISSIVE, aiTextureType_EMISSION_COLOR}},
    {6, {aiTextureType_OPACITY}},
    {8, {aiTextureType_HEIGHT, aiTextureType_NORMALS, aiTextureType_NORMAL_CAMERA}},
    {9, {aiTextureType_REFLECTION}},
};

// How glossy (0 to 1) a Phong exponent is. 3ds Max takes 2 to the power of ten times the
// glossiness for the exponent. In place of an exponent, Assimp gives for 3ds Max's own older
// formats the glossiness 15-fold (ASE) or in per cent (3DS).
float Glossiness(float exponent, SourceFormat format) {
    const double glossiness = format == SourceFormat::ase       ? exponent / 15.0
                              : format == SourceFormat::threeDs ? exponent / 100.0
                                                                : std::log2(exponent) / 10.0;
    return exponent > 0 ? static_cast<float>(std::clamp(glossiness, 0.0, 1.0)) : 0.0f;
}

class MaterialReader {
  public:
    MaterialReader(const aiMaterial& material, SourceFormat format,
                   const EmbeddedTextures& textures, TextureSearch& search)
        : properties_(material), format_(format), textures_(textures), search_(search) {}

    scene::Material Read(ImportWarnings& warnings) {
        scene::Material made;
        bool isNameRecoded = false;
        if (const auto name = properties_.String(AI_MATKEY_NAME)) {
            made.name = TextOf(*name, &isNameRecoded);
        }
        ReadColours(made);
        ReadShine(made);
        made.transparency = 1 - properties_.Number(AI_MATKEY_OPACITY).value_or(1);
        made.twoSided = properties_.Flag(AI_MATKEY_TWOSIDED);
        made.wire = properties_.Flag(AI_MATKEY_ENABLE_WIREFRAME);
        ReadMaps(made);
        warnings.AddOf(LossCode::nameRecoded, "material", Quoted(made.name), isNameRecoded ? 1 : 0);
        warnings.AddOf(LossCode::texturePathRecoded, "material", Quoted(made.name), recodedPaths_);
        const std::string subject = "material " + Quoted(made.name);
        warnings.Add(LossCode::numberNotFinite, subject, properties_.NotFinite());
        warnings.Add(LossCode::textureWithoutSlot, subject, TexturesIn() - used_);
        warnings.Add(LossCode::textureNormalAsBump, subject, normals_);
        warnings.Add(LossCode::textureRoughnessAsGlossiness, subject, roughnesses_);
        warnings.Add(LossCode::textureEmbedded, subject, embedded_);
        warnings.Add(LossCode::textureCoordinateSet, subject, otherSets_);
        return made;
    }

  private:
    void ReadColours(scene::Material& made) {
        made.ambient = properties_.Numbers<3>(AI_MATKEY_COLOR_AMBIENT).value_or(made.ambient);
        made.diffuse =
            properties_.Numbers<3>(AI_MATKEY_COLOR_DIFFUSE)
                .value_or(properties_.Numbers<3>(AI_MATKEY_BASE_COLOR).value_or(made.diffuse));
        made.specular = properties_.Numbers<3>(AI_MATKEY_COLOR_SPECULAR).value_or(made.specular);
        made.selfIllumination =
            properties_.Numbers<3>(AI_MATKEY_COLOR_EMISSIVE).value_or(made.selfIllumination);
    }

    // A format without a strength of its own says it all with the specular colour.
    void ReadShine(scene::Material& made) {
        if (const auto exponent = properties_.Number(AI_MATKEY_SHININESS)) {
            made.shininess = Glossiness(*exponent, format_);
        } else if (const auto roughness = properties_.Number(AI_MATKEY_ROUGHNESS_FACTOR)) {
            // The exponent that readers of glTF take for it.
            const float smoothness = 1 - std::clamp(*roughness, 0.0f, 1.0f);
            made.shininess = Glossiness(1000 * smoothness * smoothness, SourceFormat::gltf);
        }
        const bool hasStrength = format_ == SourceFormat::ase || format_ == SourceFormat::threeDs;
        const bool isShiny = !hasStrength && properties_.Numbers<3>(AI_MATKEY_COLOR_SPECULAR) &&
                             made.specular != scene::Vec3{0, 0, 0};
        made.shininessStrength =
            properties_.Number(AI_MATKEY_SHININESS_STRENGTH).value_or(isShiny ? 1.0f : 0.0f);
    }

    void ReadMaps(scene::Material& made) {
        for (const SlotSources& sources : kSlots) {
            for (const aiTextureType type : sources.types) {
                const auto file = type != aiTextureType_NONE
                                      ? properties_.String(AI_MATKEY_TEXTURE(type, 0))
                                      : std::nullopt;
                if (file) {
                    made.maps.push_back(MapOf(sources.slot, type, *file));
                    break;
                }
            }
        }
    }

    scene::MapSlot MapOf(int slot, aiTextureType type, const aiString& file) {
        scene::BitmapMap bitmap;
        bitmap.file = FileOf(file);
        // Offset u, v; tiling u, v; angle.
        if (const auto uv = properties_.Numbers<5>(AI_MATKEY_UVTRANSFORM(type, 0))) {
            bitmap.uOffset = (*uv)[0];
            bitmap.vOffset = (*uv)[1];
            bitmap.uTiling = (*uv)[2];
            bitmap.vTiling = (*uv)[3];
            bitmap.angle = (*uv)[4];
        }
        scene::MapSlot made;
        made.slot = slot;
        made.amount = properties_.Number(AI_MATKEY_TEXBLEND(type, 0)).value_or(1);
        otherSets_ += properties_.Number(AI_MATKEY_UVWSRC(type, 0)).value_or(0) != 0 ? 1 : 0;
        made.map = std::make_shared<scene::Map>(scene::Map{bitmap, {}});
        ++used_;
        normals_ += type == aiTextureType_NORMALS || type == aiTextureType_NORMAL_CAMERA ? 1 : 0;
        roughnesses_ += type == aiTextureType_DIFFUSE_ROUGHNESS ? 1 : 0;
        return made;
    }

    std::string FileOf(const aiString& file) {
        const aiTexture* const embedded = textures_.Find(file);
        const bool hasOwnName = embedded && embedded->mFilename.length > 0;
        bool isRecoded = false;
        std::string path = TextOf(hasOwnName ? embedded->mFilename : file, &isRecoded);
        recodedPaths_ += isRecoded ? 1 : 0;
        const std::string* const name = embedded ? textures_.NameOf(*embedded) : nullptr;
        embedded_ += embedded && !name ? 1 : 0;
        return name ? *name : embedded ? path : search_.NameOf(path);
    }

    std::size_t TexturesIn() const {
        std::size_t count = 0;
        for (int type = aiTextureType_DIFFUSE; type <= AI_TEXTURE_TYPE_MAX; ++type) {
            count += properties_.TextureCount(static_cast<aiTextureType>(type));
        }
        // glTF's base colour comes twice, and its roughness and metalness once more together.
        const bool isTwice = AreOne(aiTextureType_DIFFUSE, aiTextureType_BASE_COLOR);
        const bool isThrice = format_ == SourceFormat::gltf &&
                              AreOne(aiTextureType_UNKNOWN, aiTextureType_DIFFUSE_ROUGHNESS);
        return count - (isTwice ? 1 : 0) - (isThrice ? 1 : 0);
    }

    bool AreOne(aiTextureType type, aiTextureType other) const {
        const auto file = properties_.String(AI_MATKEY_TEXTURE(type, 0));
        return file && file == properties_.String(AI_MATKEY_TEXTURE(other, 0));
    }

    Properties properties_;
    const SourceFormat format_;
    const EmbeddedTextures& textures_;
    TextureSearch& search_;
    std::size_t used_ = 0;
    std::size_t normals_ = 0;
    std::size_t roughnesses_ = 0;
    std::size_t embedded_ = 0;
    std::size_t recodedPaths_ = 0;
    std::size_t otherSets_ = 0;
};

}  // namespace

int MaterialFactory::For(const std::vector<unsigned>& materials, const std::string& name) {
    if (materials.empty()) {
        return scene::kNone;
    }
    if (const auto found = made_.find(materials); found != made_.end()) {
        return found->second;
    }
    if (materials.size() == 1) {
        return made_[materials] = Standard(materials[0]);
    }
    scene::Material multi;
    multi.kind = scene::MaterialKind::multi;
    multi.name = name;
    for (const unsigned index : materials) {
        const int position = For({index}, name);
        if (position == scene::kNone) {
            multi.subMaterials.emplace_back();
        } else {
            multi.subMaterials.emplace_back(position);
        }
    }
    scene_.materials.push_back(std::make_shared<scene::Material>(std::move(multi)));
    return made_[materials] = static_cast<int>(scene_.materials.size()) - 1;
}

void MaterialFactory::WarnOfUnused() {
    for (unsigned i = 0; i < source_.mNumMaterials; ++i) {
        if (source_.mMaterials[i] && !used_.contains(i)) {
            aiString name;
            const bool hasName = source_.mMaterials[i]->Get(AI_MATKEY_NAME, name) == AI_SUCCESS;
            // Importers add materials of their own for faces that have none.
            const bool isTheFiles = hasName && std::strcmp(name.C_Str(), AI_DEFAULT_MATERIAL_NAME);
            warnings_.AddOf(LossCode::materialUnused, "material", Quoted(TextOf(name)),
                            isTheFiles ? 1 : 0);
        }
    }
}

void MaterialFactory::WarnOfMissingTextures() {
    for (const TextureFile& texture : search_.Files()) {
        if (texture.file.empty()) {
            warnings_.AddOf({LossCode::textureNotFound, "not found " + search_.Places()}, "texture",
                            Quoted(texture.name));
        }
    }
}

int MaterialFactory::Standard(unsigned index) {
    if (index >= source_.mNumMaterials || !source_.mMaterials[index]) {
        return scene::kNone;
    }
    used_.insert(index);
    scene_.materials.push_back(std::make_shared<scene::Material>(
        MaterialReader(*source_.mMaterials[index], format_, textures_, search_).Read(warnings_)));
    return static_cast<int>(scene_.materials.size()) - 1;
}

}  // namespace maxhost::import
