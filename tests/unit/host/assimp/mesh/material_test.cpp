// Standard and multi/sub-object materials.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/unit/host/assimp/source_scene.h"

using maxhost::import::ImportedScene;
using maxhost::scene::BitmapMap;
using maxhost::scene::kNone;
using maxhost::scene::MapSlot;
using maxhost::scene::Material;
using maxhost::scene::MaterialKind;
using maxhost::scene::Vec3;

namespace {

// One node with one triangle of material 0, and that material.
class OneMaterial {
  public:
    explicit OneMaterial(const std::string& importer = "Some Importer") : source_(importer) {
        SourceScene::Show(source_.Root(), {source_.AddTriangle("m")});
        material_ = &source_.AddMaterial("steel");
    }
    aiMaterial* operator->() { return material_; }
    SourceScene& Source() { return source_; }

    void AddTexture(aiTextureType type, const std::string& file, unsigned index = 0) {
        const aiString name(file);
        material_->AddProperty(&name, AI_MATKEY_TEXTURE(type, index));
    }

    // Valid until the next call.
    const Material& Convert() {
        imported_ = source_.Convert();
        return *imported_.scene.materials.at(0);
    }
    // But for those of textures that are not there: no test here has files.
    std::vector<std::string> Warnings() const {
        std::vector<std::string> warnings = imported_.warnings;
        std::erase_if(warnings, [](const std::string& line) {
            return line.find("not found beside the model") != std::string::npos;
        });
        return warnings;
    }

  private:
    SourceScene source_;
    aiMaterial* material_;
    ImportedScene imported_;
};

void SetNumber(OneMaterial& material, float number, const char* key, unsigned type,
               unsigned index) {
    material->AddProperty(&number, 1, key, type, index);
}

const BitmapMap& Bitmap(const MapSlot& slot) {
    return std::get<BitmapMap>(slot.map->kind);
}

float ShininessOf(const std::string& importer, float exponent) {
    OneMaterial material(importer);
    SetNumber(material, exponent, AI_MATKEY_SHININESS);
    return material.Convert().shininess;
}

}  // namespace

TEST(Materials, NameAndColours) {
    OneMaterial material;
    const aiColor3D ambient(0.1f, 0.2f, 0.3f), diffuse(0.4f, 0.5f, 0.6f);
    const aiColor4D specular(0.7f, 0.8f, 0.9f, 1), emissive(0.25f, 0.5f, 0.75f, 1);
    material->AddProperty(&ambient, 1, AI_MATKEY_COLOR_AMBIENT);
    material->AddProperty(&diffuse, 1, AI_MATKEY_COLOR_DIFFUSE);
    material->AddProperty(&specular, 1, AI_MATKEY_COLOR_SPECULAR);
    material->AddProperty(&emissive, 1, AI_MATKEY_COLOR_EMISSIVE);
    const Material& made = material.Convert();
    EXPECT_EQ(made.kind, MaterialKind::standard);
    EXPECT_EQ(made.name, "steel");
    EXPECT_EQ(made.ambient, (Vec3{0.1f, 0.2f, 0.3f}));
    EXPECT_EQ(made.diffuse, (Vec3{0.4f, 0.5f, 0.6f}));
    EXPECT_EQ(made.specular, (Vec3{0.7f, 0.8f, 0.9f}));
    EXPECT_EQ(made.selfIllumination, (Vec3{0.25f, 0.5f, 0.75f}));
    EXPECT_TRUE(material.Warnings().empty());
}

TEST(Materials, WhatTheSourceDoesNotSayStaysAtTheDefaults) {
    OneMaterial material;
    const Material& made = material.Convert();
    const Material defaults;
    EXPECT_EQ(made.ambient, defaults.ambient);
    EXPECT_EQ(made.diffuse, defaults.diffuse);
    EXPECT_EQ(made.specular, defaults.specular);
    EXPECT_EQ(made.shininess, defaults.shininess);
    EXPECT_EQ(made.shininessStrength, 0);
    EXPECT_EQ(made.transparency, 0);
    EXPECT_FALSE(made.twoSided);
    EXPECT_FALSE(made.wire);
    EXPECT_EQ(made.transparencyType, 2);
    EXPECT_TRUE(made.maps.empty());
}

TEST(Materials, BaseColourStandsInForDiffuse) {
    OneMaterial material;
    const aiColor4D base(0.1f, 0.2f, 0.3f, 1);
    material->AddProperty(&base, 1, AI_MATKEY_BASE_COLOR);
    EXPECT_EQ(material.Convert().diffuse, (Vec3{0.1f, 0.2f, 0.3f}));
}

TEST(Materials, OpacityWireAndTwoSides) {
    OneMaterial material;
    SetNumber(material, 0.75f, AI_MATKEY_OPACITY);
    const int yes = 1;
    material->AddProperty(&yes, 1, AI_MATKEY_ENABLE_WIREFRAME);
    const bool one = true;  // glTF's importer stores a single byte
    material->AddProperty(&one, 1, AI_MATKEY_TWOSIDED);
    const Material& made = material.Convert();
    EXPECT_EQ(made.transparency, 0.25f);
    EXPECT_TRUE(made.wire);
    EXPECT_TRUE(made.twoSided);
}

TEST(Materials, GlossinessFromThePhongExponent) {
    EXPECT_FLOAT_EQ(ShininessOf(kFbx, 2), 0.1f);  // 3ds Max's default glossiness of 10
    EXPECT_FLOAT_EQ(ShininessOf(kFbx, 32), 0.5f);
    EXPECT_FLOAT_EQ(ShininessOf(kFbx, 1024), 1);
    EXPECT_FLOAT_EQ(ShininessOf(kFbx, 1e9f), 1);
    EXPECT_FLOAT_EQ(ShininessOf(kFbx, 0), 0);
    EXPECT_FLOAT_EQ(ShininessOf(kFbx, -3), 0);
    EXPECT_FLOAT_EQ(ShininessOf(kAse, 1.5f), 0.1f);
    EXPECT_FLOAT_EQ(ShininessOf(k3ds, 50), 0.5f);
}

TEST(Materials, StrengthOfTheHighlight) {
    OneMaterial said;
    SetNumber(said, 0.4f, AI_MATKEY_SHININESS_STRENGTH);
    EXPECT_EQ(said.Convert().shininessStrength, 0.4f);

    const aiColor3D grey(0.5f, 0.5f, 0.5f), black(0, 0, 0);
    OneMaterial byColour;
    byColour->AddProperty(&grey, 1, AI_MATKEY_COLOR_SPECULAR);
    EXPECT_EQ(byColour.Convert().shininessStrength, 1);

    OneMaterial dull;
    dull->AddProperty(&black, 1, AI_MATKEY_COLOR_SPECULAR);
    EXPECT_EQ(dull.Convert().shininessStrength, 0);

    OneMaterial ase(kAse);  // leaves a strength of 0 out
    ase->AddProperty(&grey, 1, AI_MATKEY_COLOR_SPECULAR);
    EXPECT_EQ(ase.Convert().shininessStrength, 0);
}

TEST(Materials, NumbersThatAreNotFiniteBecomeZero) {
    OneMaterial material;
    const aiColor3D diffuse(std::numeric_limits<float>::quiet_NaN(), 0.5f,
                            std::numeric_limits<float>::infinity());
    material->AddProperty(&diffuse, 1, AI_MATKEY_COLOR_DIFFUSE);
    EXPECT_EQ(material.Convert().diffuse, (Vec3{0, 0.5f, 0}));
    EXPECT_EQ(material.Warnings(),
              std::vector<std::string>{
                  "material 'steel': numbers that are not finite replaced by 0 (2)"});
}

TEST(Materials, TooShortPropertiesAreNotRead) {
    OneMaterial material;
    const float two[] = {1, 1};
    material->AddProperty(two, 2, AI_MATKEY_COLOR_DIFFUSE);
    EXPECT_EQ(material.Convert().diffuse, Material().diffuse);
}

TEST(Materials, TexturesFillTheirSlots) {
    const std::pair<aiTextureType, int> kSlots[] = {
        {aiTextureType_AMBIENT, 0},    {aiTextureType_DIFFUSE, 1},
        {aiTextureType_BASE_COLOR, 1}, {aiTextureType_SPECULAR, 2},
        {aiTextureType_SHININESS, 3},  {aiTextureType_EMISSIVE, 5},
        {aiTextureType_OPACITY, 6},    {aiTextureType_HEIGHT, 8},
        {aiTextureType_NORMALS, 8},    {aiTextureType_NORMAL_CAMERA, 8},
        {aiTextureType_REFLECTION, 9}, {aiTextureType_EMISSION_COLOR, 5},
    };
    for (const auto& [type, slot] : kSlots) {
        OneMaterial material;
        material.AddTexture(type, "maps\\wood.png");
        const Material& made = material.Convert();
        ASSERT_EQ(made.maps.size(), 1u) << type;
        EXPECT_EQ(made.maps[0].slot, slot);
        EXPECT_TRUE(made.maps[0].enabled);
        EXPECT_EQ(made.maps[0].amount, 1);
        EXPECT_EQ(Bitmap(made.maps[0]).file, "maps\\wood.png");
        EXPECT_TRUE(Bitmap(made.maps[0]).coordinates);
    }
}

TEST(Materials, ATexturesCoordinatesAndAmount) {
    OneMaterial material;
    material.AddTexture(aiTextureType_DIFFUSE, "wood.png");
    aiUVTransform uv;
    uv.mTranslation = {0.1f, 0.9f};
    uv.mScaling = {1, 2};
    uv.mRotation = -1.25f;
    material->AddProperty(&uv, 1, AI_MATKEY_UVTRANSFORM(aiTextureType_DIFFUSE, 0));
    SetNumber(material, 0.3f, AI_MATKEY_TEXBLEND(aiTextureType_DIFFUSE, 0));
    const Material& made = material.Convert();
    EXPECT_EQ(made.maps[0].amount, 0.3f);
    const BitmapMap& bitmap = Bitmap(made.maps[0]);
    EXPECT_EQ(bitmap.uOffset, 0.1f);
    EXPECT_EQ(bitmap.vOffset, 0.9f);
    EXPECT_EQ(bitmap.uTiling, 1);
    EXPECT_EQ(bitmap.vTiling, 2);
    EXPECT_EQ(bitmap.angle, -1.25f);
}

TEST(Materials, TexturesThatFindNoSlotAreCounted) {
    OneMaterial material;
    material.AddTexture(aiTextureType_DIFFUSE, "a.png");
    material.AddTexture(aiTextureType_DIFFUSE, "b.png", 1);
    material.AddTexture(aiTextureType_METALNESS, "c.png");
    EXPECT_EQ(material.Convert().maps.size(), 1u);
    EXPECT_EQ(material.Warnings(),
              std::vector<std::string>{"material 'steel': textures without a map slot left out "
                                       "(2)"});
}

// The files' layers have no type for it.
TEST(Materials, DisplacementIsLeftOut) {
    OneMaterial material;
    material.AddTexture(aiTextureType_DISPLACEMENT, "height.png");
    EXPECT_TRUE(material.Convert().maps.empty());
    EXPECT_EQ(material.Warnings(),
              std::vector<std::string>{"material 'steel': textures without a map slot left out"});
}

TEST(Materials, RoughnessOcclusionAndMetalnessOfGltf) {
    OneMaterial material(kGltf);
    material.AddTexture(aiTextureType_NORMALS, "n.png");
    material.AddTexture(aiTextureType_LIGHTMAP, "o.png");
    // As the importer gives the one texture of both.
    for (const aiTextureType type :
         {aiTextureType_METALNESS, aiTextureType_DIFFUSE_ROUGHNESS, aiTextureType_UNKNOWN}) {
        material.AddTexture(type, "r.png");
    }
    const Material& made = material.Convert();
    ASSERT_EQ(made.maps.size(), 2u);
    EXPECT_EQ(made.maps[0].slot, 3);
    EXPECT_EQ(Bitmap(made.maps[0]).file, "r.png");
    EXPECT_EQ(made.maps[1].slot, 8);
    EXPECT_EQ(material.Warnings(),
              (std::vector<std::string>{
                  "material 'steel': textures without a map slot left out (2)",
                  "material 'steel': normal maps put into the bump slot",
                  "material 'steel': roughness maps put into the glossiness slot"}));
}

// Shadows and light that are baked into a texture say nothing of the ambient colour.
TEST(Materials, OcclusionAndLightmapsHaveNoSlot) {
    for (const char* const format : {kGltf, kFbx}) {
        for (const aiTextureType type : {aiTextureType_AMBIENT_OCCLUSION, aiTextureType_LIGHTMAP}) {
            OneMaterial material(format);
            material.AddTexture(type, "l.png");
            EXPECT_TRUE(material.Convert().maps.empty());
            EXPECT_EQ(
                material.Warnings(),
                std::vector<std::string>{"material 'steel': textures without a map slot left out"});
        }
    }
}

// 2 to the power of ten times the glossiness is the exponent, 1000 (1 - roughness)^2.
TEST(Materials, GlossinessFromRoughnessWhereThereIsNoExponent) {
    OneMaterial material(kFbx);
    SetNumber(material, 0.5f, AI_MATKEY_ROUGHNESS_FACTOR);
    EXPECT_NEAR(material.Convert().shininess, 0.7966f, 1e-4);
    SetNumber(material, 2, AI_MATKEY_SHININESS);
    EXPECT_FLOAT_EQ(material.Convert().shininess, 0.1f);
}

TEST(Materials, TexturesOnAnotherSetOfCoordinatesAreCounted) {
    OneMaterial material;
    const auto add = [&](aiTextureType type, int set) {
        material.AddTexture(type, "a.png");
        material->AddProperty(&set, 1, AI_MATKEY_UVWSRC(type, 0));
    };
    add(aiTextureType_DIFFUSE, 0);
    material.Convert();
    EXPECT_TRUE(material.Warnings().empty());
    add(aiTextureType_SPECULAR, 1);
    add(aiTextureType_OPACITY, 2);
    EXPECT_EQ(material.Convert().maps.size(), 3u);
    EXPECT_EQ(material.Warnings(),
              std::vector<std::string>{"material 'steel': texture coordinate sets of textures left "
                                       "out, the first stands for them (2)"});
}

TEST(Materials, ABaseColourThatComesTwiceIsNotCountedAsLeftOut) {
    OneMaterial material(kGltf);
    material.AddTexture(aiTextureType_DIFFUSE, "a.png");
    material.AddTexture(aiTextureType_BASE_COLOR, "a.png");
    material.Convert();
    EXPECT_TRUE(material.Warnings().empty());
}

TEST(Materials, TexturesInTheFileItself) {
    OneMaterial material;
    material.AddTexture(aiTextureType_DIFFUSE, "*0");
    material.AddTexture(aiTextureType_OPACITY, "*1");
    aiScene& scene = material.Source().Scene();
    scene.mNumTextures = 2;
    scene.mTextures = new aiTexture* [2] { new aiTexture, new aiTexture };
    scene.mTextures[0]->mFilename = "wood.png";
    const Material& made = material.Convert();
    ASSERT_EQ(made.maps.size(), 2u);
    EXPECT_EQ(Bitmap(made.maps[0]).file, "wood.png");
    EXPECT_EQ(Bitmap(made.maps[1]).file, "*1");
    EXPECT_EQ(material.Warnings(),
              std::vector<std::string>{
                  "material 'steel': textures that stand in the file itself not taken out (2)"});
}

TEST(Materials, OnlyWhatNodesUseIsMadeInOrderOfUse) {
    SourceScene source("Some Importer");
    source.AddMaterial("unused");
    source.AddMaterial("second");
    source.AddMaterial("first");
    SourceScene::Show(source.AddNode(source.Root(), "a"), {source.AddTriangle("m", 2)});
    SourceScene::Show(source.AddNode(source.Root(), "b"), {source.AddTriangle("n", 1)});
    SourceScene::Show(source.AddNode(source.Root(), "c"), {source.AddTriangle("o", 2)});
    const ImportedScene imported = source.Convert();
    ASSERT_EQ(imported.scene.materials.size(), 2u);
    EXPECT_EQ(imported.scene.materials[0]->name, "first");
    EXPECT_EQ(imported.scene.materials[1]->name, "second");
    EXPECT_EQ(imported.scene.nodes[0].material, kNone);
    EXPECT_EQ(imported.scene.nodes[1].material, 0);
    EXPECT_EQ(imported.scene.nodes[2].material, 1);
    EXPECT_EQ(imported.scene.nodes[3].material, 0);
}

TEST(Materials, SeveralPiecesMakeAMultiMaterial) {
    SourceScene source("Some Importer");
    source.AddMaterial("red");
    source.AddMaterial("green");
    const unsigned red = source.AddTriangle("r", 0);
    const unsigned green = source.AddTriangle("g", 1);
    SourceScene::Show(source.AddNode(source.Root(), "a"), {green, red, green});
    SourceScene::Show(source.AddNode(source.Root(), "b"), {green, red});
    SourceScene::Show(source.AddNode(source.Root(), "c"), {red, red});
    const ImportedScene imported = source.Convert();
    const auto& materials = imported.scene.materials;
    const auto& nodes = imported.scene.nodes;
    const Material& multi = *materials.at(static_cast<std::size_t>(nodes[1].material));
    EXPECT_EQ(multi.kind, MaterialKind::multi);
    ASSERT_EQ(multi.subMaterials.size(), 2u);
    const auto sub = [&](std::size_t i) {
        return materials.at(static_cast<std::size_t>(std::get<int>(multi.subMaterials[i])))->name;
    };
    EXPECT_EQ(sub(0), "green");
    EXPECT_EQ(sub(1), "red");
    EXPECT_EQ(nodes[2].material, nodes[1].material);
    EXPECT_EQ(materials.at(static_cast<std::size_t>(nodes[3].material))->name, "red");
    EXPECT_EQ(materials.size(), 3u);
}

TEST(Materials, APositionOutOfRangeIsNoMaterial) {
    SourceScene source("Some Importer");
    source.AddMaterial("red");
    const unsigned lost = source.AddTriangle("a", 99);
    SourceScene::Show(source.AddNode(source.Root(), "a"), {lost});
    SourceScene::Show(source.AddNode(source.Root(), "b"), {lost, source.AddTriangle("b", 0)});
    const ImportedScene imported = source.Convert();
    EXPECT_EQ(imported.scene.nodes[1].material, kNone);
    const auto& multi =
        *imported.scene.materials.at(static_cast<std::size_t>(imported.scene.nodes[2].material));
    EXPECT_TRUE(std::holds_alternative<std::monostate>(multi.subMaterials.at(0)));
}
