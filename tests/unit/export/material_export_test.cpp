// Materials, their layers, and the material numbers of faces.
#include <gtest/gtest.h>
#include <max.h>
#include <stdmat.h>

#include <algorithm>
#include <cstdio>
#include <memory>

#include "export/materials.h"
#include "host/sdk/host.h"
#include "tests/support/chunks.h"
#include "tests/support/export_run.h"
#include "tests/support/kta_bytes.h"
#include "tests/support/open_pass.h"
#include "tests/support/scene_materials.h"
#include "tests/support/scene_parts.h"

namespace {

namespace scene = maxhost::scene;
using namespace std::string_literals;
using scene::Scene;
using support::Bytes;
using support::Colored;
using support::CountLines;
using support::Export;
using support::ExportRun;
using support::ExtraMaterial;
using support::LayerChunk;
using support::MaterialChunk;
using support::Multi;
using support::Shared;
using support::Standard;

using MapPointer = std::shared_ptr<const scene::Map>;

// Of no class that the exporter knows.
scene::Material Foreign(const std::string& name) {
    scene::Material material;
    material.kind = scene::MaterialKind::other;
    material.classId = {0x1234, 0x5678};
    material.name = name;
    return material;
}

MapPointer Bitmap(const std::string& file, std::vector<MapPointer> subMaps = {}) {
    scene::BitmapMap bitmap;
    bitmap.file = file;
    return std::make_shared<const scene::Map>(scene::Map{bitmap, std::move(subMaps)});
}

MapPointer OtherMap(scene::ClassId classId, std::vector<MapPointer> subMaps) {
    return std::make_shared<const scene::Map>(
        scene::Map{scene::OtherMap{classId}, std::move(subMaps)});
}

const scene::ClassId kMix = {0x230, 0};
const scene::ClassId kComposite = {0x280, 0};

scene::Material WithMaps(scene::Material material, std::vector<scene::MapSlot> maps) {
    material.maps = std::move(maps);
    return material;
}

scene::Node NodeWithMaterial(int material) {
    scene::Node node;
    node.name = "n";
    node.material = material;
    return node;
}

// One node for each material.
Scene SceneOf(const std::vector<scene::Material>& materials) {
    Scene result;
    for (const scene::Material& material : materials) {
        result.nodes.push_back(NodeWithMaterial(static_cast<int>(result.materials.size())));
        result.materials.push_back(Shared(material));
    }
    return result;
}

// The actor file up to its nodes.
std::string Materials(const ExportRun& run) {
    EXPECT_TRUE(run.actor);
    return run.actor ? run.actor->substr(0, support::EndOfMaterials(*run.actor)) : "";
}

// The bytes of such a file: the beginning, and these chunks.
std::string ActorOf(std::initializer_list<std::string> chunks) {
    std::string bytes = support::ActorBeginning();
    for (const std::string& chunk : chunks) {
        bytes += chunk;
    }
    return bytes;
}

// The chunk of a material with a new one's values.
std::string Plain(const std::string& name) {
    return MaterialChunk({.name = name});
}

// The lines from that of the material list to the first node's.
std::vector<std::string> MaterialLines(const ExportRun& run) {
    const auto first = std::find(run.log.begin(), run.log.end(), "Exporting material list");
    return {first, std::find(first, run.log.end(), "")};
}

using Lines = std::vector<std::string>;

// ---------------------------------------------------------------- materials

TEST(MaterialExport, SceneWithoutMaterialsHasTheExtraMaterial) {
    const ExportRun run = Export(Scene{});
    const std::string expected = Bytes()
                                     .Text("KTA ")
                                     .U8(1)
                                     .U8(1)
                                     .U8(1)
                                     .U32(6)
                                     .U32(108)
                                     .U32(2)
                                     .Name("Extra material", 40)
                                     .F32({0, 0, 0})
                                     .F32({0.75f, 0.75f, 0.75f})
                                     .F32({1, 1, 1})
                                     .F32({0, 0, 0})
                                     .F32({0})
                                     .F32({0})
                                     .F32({1})
                                     .F32({1.5f})
                                     .U8(0)
                                     .U8(0)
                                     .Text("F")
                                     .U8(0)
                                     .Str();
    EXPECT_EQ(run.actor, expected);
    EXPECT_EQ(
        Lines(run.log.begin(), run.log.begin() + 3),
        (Lines{"Writing file header version 1.1", "Exporting material list", "Closing file"}));
    EXPECT_EQ(CountLines(run, "Exporting material list"), 1) << "in the actor pass alone";
    EXPECT_EQ(run.motion, support::FileHeader(false));
}

// The chunk of a coloured material, up to its two switches.
Bytes ColoredChunk(const std::string& name) {
    return Bytes()
        .U32(6)
        .U32(108)
        .U32(2)
        .Name(name, 40)
        .F32({0.1f, 0.2f, 0.3f})
        .F32({0.4f, 0.5f, 0.6f})
        .F32({0.7f, 0.8f, 0.9f})
        .F32({0.15f, 0.25f, 0.35f})
        .F32({0.45f, 0.55f, 0.75f, 1.5f});
}

TEST(MaterialExport, StandardMaterialByteForByte) {
    const ExportRun run = Export(SceneOf({Colored(Standard("Skin"))}));
    EXPECT_EQ(Materials(run), ActorOf({ColoredChunk("Skin").U8(1).U8(1).Text("A\0"s).Str()}));
    EXPECT_EQ(MaterialLines(run),
              (Lines{"Exporting material list", "Exporting material 'Skin'..."}));
}

TEST(MaterialExport, OtherMaterialIsOneSidedAndFiltered) {
    const ExportRun run = Export(SceneOf({Colored(Foreign("Paint"))}));
    EXPECT_EQ(Materials(run), ActorOf({ColoredChunk("Paint").U8(0).U8(0).Text("F\0"s).Str()}));
    EXPECT_EQ(MaterialLines(run),
              (Lines{"Exporting material list", "Exporting material 'Paint'..."}));
}

TEST(MaterialExport, SwitchesAreWrittenEachInItsPlace) {
    scene::Material twoSided = Standard("a"), wire = Standard("b");
    twoSided.twoSided = true;
    wire.wire = true;
    EXPECT_EQ(Materials(Export(SceneOf({twoSided, wire}))),
              ActorOf({MaterialChunk({.name = "a", .twoSided = true}),
                       MaterialChunk({.name = "b", .wire = true})}));
}

TEST(MaterialExport, TransparencyTypesAreLetters) {
    const std::pair<int, char> rows[] = {{0, 'S'}, {1, 'A'}, {2, 'F'}, {3, 'U'}, {-1, 'U'}};
    std::vector<scene::Material> materials;
    std::string expected = support::ActorBeginning();
    for (const auto& [type, letter] : rows) {
        materials.push_back(Standard("m"));
        materials.back().transparencyType = type;
        expected += MaterialChunk({.name = "m", .transparencyType = letter});
    }
    EXPECT_EQ(Materials(Export(SceneOf(materials))), expected);
}

TEST(MaterialExport, NamesAreCutAt39Characters) {
    const std::string name39(39, 'x');
    const ExportRun run =
        Export(SceneOf({Standard(""), Standard(name39), Standard(name39 + "yz")}));
    EXPECT_EQ(Materials(run), ActorOf({Plain(""), Plain(name39), Plain(name39)}));
    EXPECT_EQ(MaterialLines(run), (Lines{"Exporting material list", "Exporting material ''...",
                                         "Exporting material '" + name39 + "'...",
                                         "Exporting material '" + name39 + "yz'..."}));
}

TEST(MaterialExport, MaterialsStandInOrderOfFirstAppearance) {
    Scene scene = SceneOf({Standard("first"), Standard("second"), Standard("unused")});
    scene.nodes = {NodeWithMaterial(1), NodeWithMaterial(0), NodeWithMaterial(1)};
    EXPECT_EQ(Materials(Export(scene)), ActorOf({Plain("second"), Plain("first")}));
}

TEST(MaterialExport, NodesWithoutMaterialHaveOneInTheirWireColour) {
    Scene scene = SceneOf({Standard("Own")});
    scene.nodes = {NodeWithMaterial(scene::kNone), NodeWithMaterial(0),
                   NodeWithMaterial(scene::kNone)};
    scene.nodes[2].wireColor = {255, 51, 0};
    const ExportRun run = Export(scene);
    EXPECT_EQ(Materials(run), ActorOf({support::WireColorMaterial(1), Plain("Own"),
                                       support::WireColorMaterial(2, {255, 51, 0})}));
    EXPECT_EQ(CountLines(run, "Exporting material 'Wire Color 2'..."), 1);
}

TEST(MaterialExport, MultiMaterialIsWrittenAsItsSubMaterials) {
    const ExportRun run = Export(SceneOf(
        {Multi("All", {Shared(Standard("a")), Shared(Standard("b")), Shared(Foreign("c"))})}));
    EXPECT_EQ(Materials(run), ActorOf({Plain("a"), Plain("b"), Plain("c")}));
    EXPECT_EQ(MaterialLines(run),
              (Lines{"Exporting material list", "Exporting material 'a'...",
                     "Exporting material 'b'...", "Exporting material 'c'..."}));
}

TEST(MaterialExport, StandardMaterialWithSubMaterialsStandsForThemToo) {
    scene::Material material = Standard("holder");
    material.subMaterials = {Shared(Standard("held"))};
    EXPECT_EQ(Materials(Export(SceneOf({material}))), ActorOf({Plain("held")}));
}

TEST(MaterialExport, MultiMaterialWithoutSlotsIsAMaterial) {
    EXPECT_EQ(Materials(Export(SceneOf({Multi("none", {})}))),
              ActorOf({MaterialChunk({.name = "none",
                                      .ambient = {0, 0, 0},
                                      .diffuse = {0, 0, 0},
                                      .specular = {0, 0, 0},
                                      .shininess = 0})}));
}

TEST(MaterialExport, MultiMaterialWithEmptySlotsAloneIsNotWritten) {
    EXPECT_EQ(Materials(Export(SceneOf({Multi("gaps", {std::monostate{}, std::monostate{}})}))),
              ActorOf({}));
}

TEST(MaterialExport, MultiMaterialInAnotherIsWrittenBeforeItsOwn) {
    scene::Material first = Standard("b");
    first.diffuse = {1, 0, 0};
    const auto inner = Shared(Multi("inner", {Shared(first), Shared(Standard("c"))}));
    const ExportRun run =
        Export(SceneOf({Multi("outer", {Shared(Standard("a")), inner, Shared(Standard("d"))})}));
    EXPECT_EQ(
        Materials(run),
        ActorOf({Plain("a"), MaterialChunk({.name = "inner", .diffuse = {1, 0, 0}}),
                 MaterialChunk({.name = "b", .diffuse = {1, 0, 0}}), Plain("c"), Plain("d")}));
}

TEST(MaterialExport, SharedMaterialIsWrittenWhereverItStands) {
    Scene scene = SceneOf({Standard("shared"), Multi("m", {0, std::monostate{}, 0})});
    EXPECT_EQ(Materials(Export(scene)),
              ActorOf({Plain("shared"), Plain("shared"), Plain("shared")}));
}

TEST(MaterialExport, DisguisedMaterialsAndMapsAreWhatTheyClaimToBe) {
    scene::Material disguised = Colored(Foreign("x"));
    disguised.classId = {2, 0};
    disguised.maps = {{1, true, 0.5f, OtherMap({0x240, 0}, {})}};
    EXPECT_EQ(Materials(Export(SceneOf({disguised}))),
              ActorOf({ColoredChunk("x").U8(1).U8(1).Text("A\0"s).Str(),
                       LayerChunk({.texture = "", .amount = 0.5f})}));
}

// ---------------------------------------------------------------- layers

TEST(LayerExport, LayerByteForByte) {
    scene::BitmapMap bitmap;
    bitmap.file = "wood.png";
    bitmap.uOffset = 0.125f;
    bitmap.vOffset = 0.25f;
    bitmap.uTiling = 2;
    bitmap.vTiling = 3;
    bitmap.angle = 0.5f;
    const auto map = std::make_shared<const scene::Map>(scene::Map{bitmap, {}});
    const ExportRun run =
        Export(SceneOf({Standard("a"), WithMaps(Standard("b"), {{1, true, 0.75f, map}})}));
    const std::string layer = Bytes()
                                  .U32(7)
                                  .U32(288)
                                  .U32(3)
                                  .Name("wood.png")
                                  .U8(1)
                                  .U8(0)
                                  .U8(2)
                                  .U8(0)
                                  .F32({0.75f, 0.125f, 0.25f, 2, 3, 0.5f})
                                  .Str();
    EXPECT_EQ(Materials(run), ActorOf({Plain("a"), Plain("b"), layer}));
    EXPECT_EQ(MaterialLines(run),
              (Lines{"Exporting material list", "Exporting material 'a'...",
                     "Exporting material 'b'...", "Writing material layer:",
                     "  + Texture         = wood.png", "  + Parent material = 2",
                     "  + Amount          = 0.750000", "  + Layer type      = 1"}));
}

TEST(LayerExport, MapWithoutCoordinatesHasTheUsualOnes) {
    scene::BitmapMap bitmap;
    bitmap.file = "a.png";
    bitmap.uOffset = bitmap.vOffset = bitmap.uTiling = bitmap.vTiling = bitmap.angle = 7;
    bitmap.coordinates = false;
    const auto map = std::make_shared<const scene::Map>(scene::Map{bitmap, {}});
    EXPECT_EQ(Materials(Export(SceneOf({WithMaps(Standard("m"), {{1, true, 1, map}})}))),
              ActorOf({Plain("m"),
                       LayerChunk(
                           {.texture = "a.png", .offset = {0, 0}, .tiling = {1, 1}, .angle = 0})}));
}

TEST(LayerExport, SlotsHaveTheirTypes) {
    const std::pair<const char*, int> rows[] = {
        {"*MAP_AMBIENT", 0}, {"*MAP_DIFFUSE", 1},        {"*MAP_SPECULAR", 2},
        {"*MAP_SHINE", 9},   {"*MAP_SHINESTRENGTH", 10}, {"*MAP_SELFILLUM", 7},
        {"*MAP_OPACITY", 6}, {"*MAP_FILTERCOLOR", 11},   {"*MAP_BUMP", 3},
        {"*MAP_REFLECT", 4}, {"*MAP_REFRACT", 5}};
    ASSERT_EQ(std::size(rows), static_cast<std::size_t>(kNumSlotLayers));
    EXPECT_STREQ(kGenericLayerLabel, "*MAP_GENERIC");
    std::vector<scene::MapSlot> maps;
    std::string expected = ActorOf({Plain("m")});
    Lines types;
    for (int slot = 0; slot < kNumSlotLayers; ++slot) {
        EXPECT_STREQ(kSlotLayers[slot].label, rows[slot].first);
        const std::string file = std::to_string(slot) + ".png";
        maps.insert(maps.begin(), {slot, true, 1, Bitmap(file)});  // written by slot all the same
        const auto type = static_cast<std::uint8_t>(rows[slot].second);
        expected +=
            LayerChunk({.texture = file, .type = type, .amount = slot == 8 ? 0.125f : 1.0f});
        types.push_back("  + Layer type      = " + std::to_string(type));
    }
    const ExportRun run = Export(SceneOf({WithMaps(Standard("m"), maps)}));
    EXPECT_EQ(Materials(run), expected);
    Lines logged;
    std::copy_if(run.log.begin(), run.log.end(), std::back_inserter(logged),
                 [](const std::string& line) { return line.starts_with("  + Layer type"); });
    EXPECT_EQ(logged, types);
    EXPECT_STREQ(kEnvironmentLayerLabel, "*SCENE_ENVMAP");
}

TEST(LayerExport, FurtherSlotsKeepTheTypeOfTheLayerBefore) {
    EXPECT_EQ(
        Materials(Export(SceneOf({WithMaps(Standard("m"), {{5, true, 1, Bitmap("a")},
                                                           {11, true, 1, Bitmap("b")},
                                                           {40, true, 0.5f, Bitmap("c")}})}))),
        ActorOf({Plain("m"), LayerChunk({.texture = "a", .type = 7}),
                 LayerChunk({.texture = "b", .type = 7}),
                 LayerChunk({.texture = "c", .type = 7, .amount = 0.5f})}));
}

TEST(LayerExport, TypeBeforeTheFirstTypedLayerIsZero) {
    EXPECT_EQ(Materials(Export(SceneOf({WithMaps(Standard("m"), {{11, true, 1, Bitmap("a")}})}))),
              ActorOf({Plain("m"), LayerChunk({.texture = "a", .type = 0})}));
}

TEST(LayerExport, TypeIsKeptFromOneMaterialToTheNext) {
    EXPECT_EQ(Materials(Export(SceneOf({WithMaps(Standard("a"), {{9, true, 1, Bitmap("a")}}),
                                        WithMaps(Foreign("b"), {{1, true, 1, Bitmap("b")}})}))),
              ActorOf({Plain("a"), LayerChunk({.texture = "a", .type = 4}), Plain("b"),
                       LayerChunk({.texture = "b", .type = 4, .material = 2})}));
}

TEST(LayerExport, BumpHasAnEighthOfItsAmount) {
    const ExportRun run =
        Export(SceneOf({WithMaps(Standard("m"), {{8, true, 0.3f, Bitmap("a")}})}));
    EXPECT_EQ(Materials(run),
              ActorOf({Plain("m"), LayerChunk({.texture = "a", .type = 3, .amount = 0.0375f})}));
    EXPECT_EQ(CountLines(run, "  + Amount          = 0.037500"), 1);
}

TEST(LayerExport, DisabledSlotsOfStandardMaterialsHaveNoLayer) {
    EXPECT_EQ(Materials(Export(
                  SceneOf({WithMaps(Standard("m"), {{1, false, 1, Bitmap("a", {Bitmap("b")})},
                                                    {2, true, 1, Bitmap("c")}})}))),
              ActorOf({Plain("m"), LayerChunk({.texture = "c", .type = 2})}));
}

TEST(LayerExport, SlotsOfOtherMaterialsAreAlwaysOnAndFull) {
    EXPECT_EQ(Materials(Export(SceneOf({WithMaps(
                  Foreign("m"), {{3, false, 0.25f, Bitmap("a")}, {1, true, 0.5f, Bitmap("b")}})}))),
              ActorOf({Plain("m"), LayerChunk({.texture = "b", .type = 0}),
                       LayerChunk({.texture = "a", .type = 0})}));
}

TEST(LayerExport, TextureIsTheLastComponentOfThePath) {
    const std::string long259(259, 'a'), long260 = "b" + long259, ending(255, 'c');
    const std::pair<std::string, std::string> rows[] = {
        {"C:\\maps\\wood.png", "wood.png"},
        {"maps/stone.jpg", "stone.jpg"},
        {"C:\\maps/mixed.tga", "mixed.tga"},
        {"maps/mixed\\again.tga", "again.tga"},
        {"plain.bmp", "plain.bmp"},
        {"ends/with/", ""},
        {"", ""},
        {long259, long259},
        {long260, long260.substr(1)},
        {"dir/" + long260, long260.substr(1)},
        // The 260 characters' first is cut off: what is left has no separator, or one.
        {"/" + long259, long259},
        {"x/yz\\" + ending, ending},
        {std::string(5000, 'd') + "/e.png", "e.png"}};
    std::vector<scene::Material> materials;
    std::string expected = support::ActorBeginning();
    std::uint16_t number = 0;
    for (const auto& [path, name] : rows) {
        materials.push_back(WithMaps(Standard("m"), {{1, true, 1, Bitmap(path)}}));
        expected += Plain("m") + LayerChunk({.texture = name, .material = ++number});
    }
    const ExportRun run = Export(SceneOf(materials));
    EXPECT_EQ(Materials(run), expected);
    EXPECT_EQ(CountLines(run, "  + Texture         = wood.png"), 1);
}

TEST(LayerExport, BitmapsInAMixHaveTheTypeOfItsSlot) {
    EXPECT_EQ(
        Materials(Export(SceneOf({WithMaps(
            Standard("m"), {{0, true, 1, Bitmap("a")},
                            {1, true, 0.5f, OtherMap(kMix, {Bitmap("b"), Bitmap("c")})}})}))),
        ActorOf({Plain("m"), LayerChunk({.texture = "a", .type = 0}),
                 LayerChunk({.texture = "b", .type = 1}), LayerChunk({.texture = "c", .type = 1})}))
        << "the second one's is that of the layer just before it, too";
}

TEST(LayerExport, BitmapsInOtherMapsHaveTheTypeOfTheLayerBefore) {
    EXPECT_EQ(
        Materials(Export(SceneOf({WithMaps(
            Standard("m"), {{2, true, 1, Bitmap("a")},
                            {6, true, 0.5f, OtherMap(kComposite, {nullptr, Bitmap("b")})}})}))),
        ActorOf({Plain("m"), LayerChunk({.texture = "a", .type = 2}),
                 LayerChunk({.texture = "b", .type = 2})}));
}

TEST(LayerExport, BitmapsInABitmapFollowItWithItsType) {
    EXPECT_EQ(Materials(Export(SceneOf({WithMaps(
                  Standard("m"), {{6, true, 0.5f, Bitmap("a", {Bitmap("b", {Bitmap("c")})})}})}))),
              ActorOf({Plain("m"), LayerChunk({.texture = "a", .type = 6, .amount = 0.5f}),
                       LayerChunk({.texture = "b", .type = 6}),
                       LayerChunk({.texture = "c", .type = 6})}));
}

TEST(LayerExport, NestedBumpHasAnEighth) {
    EXPECT_EQ(
        Materials(Export(SceneOf({WithMaps(
            Standard("m"), {{8, true, 0.3f, OtherMap(kMix, {Bitmap("a", {Bitmap("b")})})}})}))),
        ActorOf({Plain("m"), LayerChunk({.texture = "a", .type = 3, .amount = 0.125f}),
                 LayerChunk({.texture = "b", .type = 3, .amount = 0.125f})}));
}

TEST(LayerExport, MixBelowAnotherMapHasTheTypeOfTheTopmostSlot) {
    EXPECT_EQ(Materials(Export(SceneOf({WithMaps(
                  Standard("m"), {{4, true, 1,
                                   OtherMap(kComposite, {Bitmap("a"), OtherMap(kMix, {Bitmap("b")}),
                                                         Bitmap("c")})}})}))),
              ActorOf({Plain("m"), LayerChunk({.texture = "a", .type = 0}),
                       LayerChunk({.texture = "b", .type = 10}),
                       LayerChunk({.texture = "c", .type = 10})}));
}

TEST(LayerExport, MapWithoutBitmapsHasNoLayer) {
    EXPECT_EQ(Materials(Export(SceneOf({WithMaps(
                  Standard("m"), {{1, true, 1, OtherMap(kComposite, {OtherMap(kMix, {})})}})}))),
              ActorOf({Plain("m")}));
}

TEST(LayerExport, LayersOfAMaterialThatIsNotWrittenGoToTheOneBefore) {
    scene::Material blend = Foreign("blend");
    blend.subMaterials = {Shared(WithMaps(Standard("held"), {{1, true, 1, Bitmap("own")}}))};
    blend.maps = {{0, true, 1, Bitmap("mask")}};
    EXPECT_EQ(Materials(Export(SceneOf({blend}))),
              ActorOf({LayerChunk({.texture = "mask", .type = 0, .material = 0}), Plain("held"),
                       LayerChunk({.texture = "own"})}));
    EXPECT_EQ(Materials(Export(SceneOf({Standard("first"), blend}))),
              ActorOf({Plain("first"), LayerChunk({.texture = "mask", .type = 0}), Plain("held"),
                       LayerChunk({.texture = "own", .material = 2})}));
}

// ---------------------------------------------------------------- the pass itself

// Makes the list of the open scene's materials and writes it.
void ExportScene(ExportPass& pass) {
    int counter = 0;
    for (INode* node : maxhost::Host::Instance().Nodes()) {
        PrepareNodes(pass, node, counter);
    }
    ExportMaterialList(pass);
}

int NumberOfFace(const ExportPass& pass, int materialId, int node) {
    Face face;
    face.setMatID(static_cast<MtlID>(materialId));
    return MaterialNumbers(pass, maxhost::Host::Instance().Nodes().at(node)).Of(face);
}

// Every test opens its scene and leaves the host empty.
class OpenExport : public testing::Test {
  protected:
    ~OpenExport() override { maxhost::Host::Instance().CloseScene(); }

    static void Open(const Scene& scene) { maxhost::Host::Instance().OpenScene(scene); }
    static Mtl* MaterialOf(int node) {
        return maxhost::Host::Instance().Nodes().at(node)->GetMtl();
    }

    std::string Numbers(const ExportPass& pass, int node, std::initializer_list<int> ids) {
        std::string numbers;
        for (const int id : ids) {
            numbers += std::to_string(NumberOfFace(pass, id, node)) + " ";
        }
        return numbers;
    }
};

class LayerOfAParent : public OpenExport {
  protected:
    // Writes a layer of type 4, then the bitmap "a" as a map of that parent.
    static std::string Export(const Class_ID& parent, int slot) {
        Open(SceneOf({WithMaps(Standard("m"), {{0, true, 1, Bitmap("a")}})}));
        Texmap* const map = MaterialOf(0)->GetSubTexmap(0);
        support::OpenPass pass;
        ExportLayer(*pass, map, Class_ID(2, 0), 9, 1);
        ExportLayer(*pass, map, parent, slot, 0.5f);
        EXPECT_EQ(pass->materialTable.Count(), 0);
        const std::string bytes = pass.Written();
        EXPECT_EQ(bytes.size(), 2 * 300u);
        return bytes.substr(300);
    }
    // As the layer of a material that is not there, for want of any.
    static std::string Expected(std::uint8_t type) {
        return LayerChunk({.texture = "a", .type = type, .material = 0xffff, .amount = 0.5f});
    }
};

TEST_F(LayerOfAParent, TypeFollowsTheParentsClass) {
    EXPECT_EQ(Export(Class_ID(0, 0), 1), Expected(8)) << "the scene's environment, whatever slot";
    EXPECT_EQ(Export(Class_ID(0, 0), 20), Expected(8));
    EXPECT_EQ(Export(Class_ID(2, 0), 1), Expected(1));
    EXPECT_EQ(Export(Class_ID(2, 0), 10), Expected(5));
    EXPECT_EQ(Export(Class_ID(2, 0), 11), Expected(4));
    EXPECT_EQ(Export(Class_ID(2, 0), -1), Expected(4));
    EXPECT_EQ(Export(Class_ID(0x230, 0), 2), Expected(2));
    EXPECT_EQ(Export(Class_ID(0x230, 1), 2), Expected(4));
    EXPECT_EQ(Export(Class_ID(2, 1), 2), Expected(4));
    EXPECT_EQ(Export(Class_ID(0, 1), 2), Expected(4));
    EXPECT_EQ(Export(Class_ID(0x200, 0), 2), Expected(4));
    EXPECT_EQ(Export(Class_ID(0x240, 0), 2), Expected(4));
}

TEST_F(OpenExport, IndexOfRefractionIsOnePointFiveBeforeAndAfterAnotherMaterial) {
    Open(SceneOf({Standard("a"), Foreign("b"), Standard("c")}));
    support::OpenPass pass;
    ExportScene(*pass);
    EXPECT_EQ(pass.Written(),
              ExtraMaterial() + MaterialChunk({.name = "a", .indexOfRefraction = 1.5f}) +
                  Plain("b") + MaterialChunk({.name = "c", .indexOfRefraction = 1.5f}));
}

TEST_F(OpenExport, TableHoldsEveryMaterialAndCountsItsLayers) {
    const auto inner = Shared(Multi("inner", {Shared(Standard("c"))}));
    Open(SceneOf({WithMaps(Standard("a"), {{1, true, 1, Bitmap("1", {Bitmap("2")})},
                                           {2, false, 1, Bitmap("off")},
                                           {3, true, 1, OtherMap(kMix, {Bitmap("3")})}}),
                  Multi("m", {std::monostate{}, inner,
                              Shared(WithMaps(Standard("d"), {{1, true, 1, Bitmap("4")}}))})}));
    support::OpenPass pass;
    ExportScene(*pass);
    const MaterialTable& table = pass->materialTable;
    const struct {
        int list, sub, layers;
        const char* name;
    } rows[] = {{0, 0, 3, "a"}, {1, 1, 0, "inner"}, {1, 0, 0, "c"}, {1, 2, 1, "d"}};
    ASSERT_EQ(table.Count(), 4);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(table[i].listIndex, rows[i].list) << i;
        EXPECT_EQ(table[i].subIndex, rows[i].sub) << i;
        EXPECT_EQ(table[i].numberLess, i);
        EXPECT_EQ(table[i].numLayers, rows[i].layers) << i;
        EXPECT_STREQ(table[i].material->GetName().data(), rows[i].name);
    }
}

TEST_F(OpenExport, FacesOfAMultiMaterialHaveTheNumbersOfItsSlots) {
    Open(SceneOf(
        {Multi("m", {Shared(Standard("a")), Shared(Standard("b")), Shared(Standard("c"))})}));
    support::OpenPass pass;
    ExportScene(*pass);
    // Not wrapped: id 3 is no second 0.
    EXPECT_EQ(Numbers(*pass, 0, {0, 1, 2, 3, 5, 65535}), "1 2 3 0 0 0 ");
}

TEST_F(OpenExport, EmptySlotsHaveNoNumber) {
    Open(SceneOf({Standard("before"),
                  Multi("m", {std::monostate{}, Shared(Standard("b")), std::monostate{},
                              Shared(Standard("d"))}),
                  Standard("after"), Multi("gaps", {std::monostate{}})}));
    support::OpenPass pass;
    ExportScene(*pass);
    EXPECT_EQ(Numbers(*pass, 1, {0, 1, 2, 3, 4}), "0 2 0 3 0 ");
    // The material id does not count where there are no sub-materials.
    EXPECT_EQ(Numbers(*pass, 0, {0, 1, 7}), "1 1 1 ");
    EXPECT_EQ(Numbers(*pass, 2, {0, 9}), "4 4 ");
    EXPECT_EQ(Numbers(*pass, 3, {0, 1}), "0 0 ");
}

TEST_F(OpenExport, LastOneOfTheSameSlotNumberCounts) {
    const auto inner = Shared(Multi("inner", {Shared(Standard("b")), Shared(Standard("c"))}));
    Open(SceneOf({Multi("outer", {Shared(Standard("a")), inner, Shared(Standard("d"))})}));
    support::OpenPass pass;
    ExportScene(*pass);
    // a, inner, b, c, d are 1 to 5; b stands in slot 0 after a, c in slot 1 after inner.
    EXPECT_EQ(Numbers(*pass, 0, {0, 1, 2, 3}), "3 4 5 0 ");
}

TEST_F(OpenExport, NodesWithoutMaterialHaveTheNumberOfTheirSubstitute) {
    Scene scene = SceneOf({Standard("own")});
    scene.nodes = {NodeWithMaterial(scene::kNone), NodeWithMaterial(0),
                   NodeWithMaterial(scene::kNone)};
    Open(scene);
    support::OpenPass pass;
    ExportScene(*pass);
    EXPECT_EQ(Numbers(*pass, 0, {0, 3}), "1 1 ");
    EXPECT_EQ(Numbers(*pass, 1, {0, 3}), "2 2 ");
    EXPECT_EQ(Numbers(*pass, 2, {0, 3}), "3 3 ");
}

TEST_F(OpenExport, WhatIsNotListedHasNumberZero) {
    Scene scene = SceneOf({Standard("known"), Standard("unknown"), Multi("m", {0})});
    scene.nodes.push_back(NodeWithMaterial(scene::kNone));
    Open(scene);
    support::OpenPass pass;
    pass->sceneMaterials.Add(MaterialOf(0));
    ExportMaterialList(*pass);
    EXPECT_EQ(Numbers(*pass, 0, {0}), "1 ");
    EXPECT_EQ(Numbers(*pass, 1, {0}), "0 ");
    EXPECT_EQ(Numbers(*pass, 2, {0}), "0 ");
    EXPECT_EQ(Numbers(*pass, 3, {0}), "0 ") << "without material or substitute";
}

TEST_F(OpenExport, MaterialNumberIsNeverNegative) {
    Open(SceneOf({Standard("a")}));
    support::OpenPass pass;
    pass->sceneMaterials.Add(MaterialOf(0));
    // Without the "Extra material", it is the file's first one.
    ExportMaterial(*pass, MaterialOf(0), 0, -1);
    EXPECT_EQ(pass->materialTable[0].numberLess, -1);
    EXPECT_EQ(Numbers(*pass, 0, {0}), "0 ");
}

TEST_F(OpenExport, ANodeThatIsPreparedTwiceHasItsSecondDefaultMaterial) {
    // A and C are selected and B between them is not, so that C is prepared below A and by itself.
    Scene scene;
    for (const char* const name : {"A", "B", "C", "D"}) {
        scene.nodes.push_back(support::MakeNode(name));
    }
    scene.nodes[1].parent = 0;
    scene.nodes[2].parent = 1;
    scene.selection = {0, 2, 3};
    maxhost::scene::Mesh mesh;
    mesh.vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    mesh.faces = {{{0, 1, 2}}};
    scene.nodes[2].object.emplace().mesh = std::make_shared<const scene::Mesh>(mesh);
    support::ExportChoices choices;
    choices.selectedOnly = true;
    const ExportRun run = Export(scene, choices);
    std::vector<std::string> names;
    std::vector<std::uint8_t> numbers;
    for (const support::Chunk& chunk : support::Chunks(run.actor.value())) {
        if (chunk.id == 6) {
            names.push_back(chunk.body.c_str());
        } else if (chunk.id == 3) {
            numbers.push_back(static_cast<std::uint8_t>(chunk.body.at(28)));
        }
    }
    EXPECT_EQ(names, (Lines{"Extra material", "Wire Color 1", "Wire Color 2", "Wire Color 3",
                            "Wire Color 4", "Wire Color 4"}));
    EXPECT_EQ(numbers, (std::vector<std::uint8_t>{4}));
}

TEST_F(OpenExport, ALayerLogsItsMaterialsNumberInFull) {
    Open(SceneOf({WithMaps(Standard("m"), {{0, true, 1, Bitmap("a")}})}));
    for (const int number : {32767, 32768, 65537}) {
        const support::LoggedLines log;
        support::OpenPass pass;
        pass->numMaterials = number + 1;
        ExportLayer(*pass, MaterialOf(0)->GetSubTexmap(0), Class_ID(2, 0), 0, 1);
        EXPECT_EQ(pass.Written(),
                  LayerChunk(
                      {.texture = "a", .type = 0, .material = static_cast<std::uint16_t>(number)}));
        ASSERT_GE(log.Lines().size(), 3u);
        EXPECT_EQ(log.Lines()[2], "  + Parent material = " + std::to_string(number));
    }
}

TEST_F(OpenExport, EveryPassNumbersAnew) {
    Open(SceneOf({Standard("a"), WithMaps(Standard("b"), {{1, true, 1, Bitmap("b")}})}));
    support::OpenPass pass;
    ExportScene(*pass);
    const std::string once = pass.Written();
    pass.Reset();
    EXPECT_EQ(pass->materialTable.Count(), 0);
    EXPECT_EQ(Numbers(*pass, 1, {0}), "0 ");
    ExportScene(*pass);
    EXPECT_EQ(pass.Written(), once);
    EXPECT_EQ(Numbers(*pass, 1, {0}), "2 ");
}

// ---------------------------------------------------------------- cost

// A material that counts what it is asked.
class CountingMaterial : public Mtl {
  public:
    explicit CountingMaterial(int& questions) : questions_(questions) { SetName(CStr("counting")); }
    ~CountingMaterial() override = default;

    void Update(TimeValue t, Interval&) override {
        EXPECT_EQ(t, 0);
        ++updates_;
    }
    Class_ID ClassID() override { return Ask(Class_ID(7, 7)); }
    Color GetAmbient(int mtlNum, BOOL backFace) override { return Value(mtlNum, backFace, 0.25f); }
    Color GetDiffuse(int mtlNum, BOOL backFace) override { return Value(mtlNum, backFace, 0.5f); }
    Color GetSpecular(int mtlNum, BOOL backFace) override { return Value(mtlNum, backFace, 1); }
    Color GetSelfIllumColor(int mtlNum, BOOL backFace) override {
        return Value(mtlNum, backFace, 0.125f);
    }
    float GetShininess(int mtlNum, BOOL backFace) override { return Value(mtlNum, backFace, 2).r; }
    float GetShinStr(int mtlNum, BOOL backFace) override { return Value(mtlNum, backFace, 3).r; }
    float GetXParency(int mtlNum, BOOL backFace) override { return Value(mtlNum, backFace, 4).r; }
    int NumSubMtls() override { return Ask(0); }
    int NumSubTexmaps() override { return Ask(0); }

    int Updates() const { return updates_; }

  private:
    template <class T>
    T Ask(T answer) {
        ++questions_;
        return answer;
    }
    Color Value(int mtlNum, BOOL backFace, float value) {
        EXPECT_EQ(updates_, 1) << "values hold after an update";
        EXPECT_EQ(mtlNum, 0);
        EXPECT_FALSE(backFace);
        return Ask(Color(value, value, value));
    }

    int& questions_;
    int updates_ = 0;
};

// How many questions an export of so many materials asks.
int QuestionsOf(int count) {
    int questions = 0;
    std::vector<std::unique_ptr<CountingMaterial>> materials;
    support::OpenPass pass;
    for (int i = 0; i < count; ++i) {
        materials.push_back(std::make_unique<CountingMaterial>(questions));
        pass->sceneMaterials.Add(materials.back().get());
    }
    ExportMaterialList(*pass);
    for (const auto& material : materials) {
        EXPECT_EQ(material->Updates(), 1);
    }
    EXPECT_EQ(pass->materialTable.Count(), count);
    EXPECT_EQ(pass.Written().size(), 120u * (1 + count));
    return questions;
}

TEST(MaterialCost, QuestionsGrowWithTheMaterials) {
    const int ofOne = QuestionsOf(1);
    EXPECT_GE(ofOne, 9);
    EXPECT_LE(ofOne, 16);
    EXPECT_EQ(QuestionsOf(10000), 10000 * ofOne);
}

TEST(MaterialCost, OtherMaterialsSayWhatTheyReport) {
    int questions = 0;
    CountingMaterial material(questions);
    support::OpenPass pass;
    ExportMaterial(*pass, &material, 0, -1);
    EXPECT_EQ(pass.Written(), MaterialChunk({.name = "counting",
                                             .ambient = {0.25f, 0.25f, 0.25f},
                                             .diffuse = {0.5f, 0.5f, 0.5f},
                                             .specular = {1, 1, 1},
                                             .selfIllumination = {0.125f, 0.125f, 0.125f},
                                             .shininess = 2,
                                             .shininessStrength = 3,
                                             .opacity = -3}));
}

TEST(MaterialCost, ManyMaterialsExport) {
    std::vector<scene::Material> materials;
    std::string expected = support::ActorBeginning();
    for (int i = 0; i < 2000; ++i) {
        const std::string name = "m" + std::to_string(i);
        materials.push_back(WithMaps(Standard(name), {{1, true, 1, Bitmap("a.png")}}));
        expected += Plain(name);
        expected += LayerChunk({.texture = "a.png", .material = static_cast<std::uint16_t>(i + 1)});
    }
    EXPECT_EQ(Materials(Export(SceneOf(materials))), expected);
}

}  // namespace
