// Materials of the scene, and those that an exporter makes.
#include <stdmat.h>

#include "host/sdk/live_objects.h"
#include "tests/support/scene_materials.h"
#include "tests/unit/host/sdk/support.h"

namespace scene = maxhost::scene;
using support::Colored;
using support::Multi;
using support::Shared;
using support::Standard;
using testing::StrEq;

class MaterialsTest : public SceneTest {
  protected:
    // A scene with these materials and one node for each of them.
    static void OpenMaterials(const std::vector<scene::Material>& materials) {
        scene::Scene description;
        for (const scene::Material& material : materials) {
            scene::Node node = MakeNode("n");
            node.material = static_cast<int>(description.materials.size());
            description.materials.push_back(Shared(material));
            description.nodes.push_back(node);
        }
        Open(std::move(description));
    }
};

bool operator==(const Color& a, const Color& b) {
    return a.r == b.r && a.g == b.g && a.b == b.b;
}

void ExpectColored(Mtl* material) {
    ASSERT_NE(material, nullptr);
    Interval valid = FOREVER;
    material->Update(0, valid);
    EXPECT_EQ(valid, FOREVER);
    EXPECT_EQ(material->GetAmbient(), Color(0.1f, 0.2f, 0.3f));
    EXPECT_EQ(material->GetDiffuse(), Color(0.4f, 0.5f, 0.6f));
    EXPECT_EQ(material->GetSpecular(), Color(0.7f, 0.8f, 0.9f));
    EXPECT_EQ(material->GetSelfIllumColor(), Color(0.15f, 0.25f, 0.35f));
    EXPECT_EQ(material->GetShininess(), 0.45f);
    EXPECT_EQ(material->GetShinStr(), 0.55f);
    EXPECT_EQ(material->GetXParency(), 0.25f);
}

TEST_F(MaterialsTest, NodesShareAMaterialByPosition) {
    scene::Scene description;
    description.materials = {Shared(Standard("a")), Shared(Standard("b"))};
    for (int material : {1, scene::kNone, 1, 0}) {
        scene::Node node = MakeNode("n");
        node.material = material;
        description.nodes.push_back(node);
    }
    Open(std::move(description));
    EXPECT_THAT(At(0)->GetMtl()->GetName().data(), StrEq("b"));
    EXPECT_EQ(At(1)->GetMtl(), nullptr);
    EXPECT_EQ(At(2)->GetMtl(), At(0)->GetMtl());
    EXPECT_THAT(At(3)->GetMtl()->GetName().data(), StrEq("a"));
}

TEST_F(MaterialsTest, OneDescriptionAtTwoPositionsIsTwoMaterials) {
    const auto shared = Shared(Standard("twice"));
    scene::Scene description;
    description.materials = {shared, shared};
    for (int material : {0, 1}) {
        scene::Node node = MakeNode("n");
        node.material = material;
        description.nodes.push_back(node);
    }
    Open(std::move(description));
    EXPECT_NE(At(0)->GetMtl(), At(1)->GetMtl());
}

TEST_F(MaterialsTest, StandardMaterial) {
    OpenMaterials({Colored(Standard("skin"))});
    Mtl* material = At(0)->GetMtl();
    EXPECT_EQ(material->SuperClassID(), SClass_ID{0xC00});
    EXPECT_TRUE(material->ClassID() == Class_ID(2, 0));
    EXPECT_EQ(material->NumSubMtls(), 0);
    EXPECT_EQ(material->GetSubMtl(0), nullptr);
    ExpectColored(material);
    auto* standard = static_cast<StdMat*>(material);
    EXPECT_EQ(standard->GetAmbient(0), Color(0.1f, 0.2f, 0.3f));
    EXPECT_EQ(standard->GetDiffuse(0), Color(0.4f, 0.5f, 0.6f));
    EXPECT_EQ(standard->GetSpecular(0), Color(0.7f, 0.8f, 0.9f));
    EXPECT_EQ(standard->GetShininess(0), 0.45f);
    EXPECT_EQ(standard->GetShinStr(0), 0.55f);
    EXPECT_TRUE(standard->GetTwoSided());
    EXPECT_TRUE(standard->GetWire());
    EXPECT_EQ(standard->GetTransparencyType(), TRANSP_ADDITIVE);
}

TEST_F(MaterialsTest, OtherMaterialHasColoursAndSubMaterials) {
    scene::Material description = Colored(Standard("blend"));
    description.kind = scene::MaterialKind::other;
    description.classId = {0x250, 0};
    description.subMaterials = {Shared(Standard("inner")), std::monostate{}};
    OpenMaterials({description});
    Mtl* material = At(0)->GetMtl();
    EXPECT_TRUE(material->ClassID() == Class_ID(0x250, 0));
    ExpectColored(material);
    ASSERT_EQ(material->NumSubMtls(), 2);
    EXPECT_THAT(material->GetSubMtl(0)->GetName().data(), StrEq("inner"));
    EXPECT_EQ(material->GetSubMtl(1), nullptr);
}

TEST_F(MaterialsTest, MultiMaterialNamesMaterialsOfTheListOrOwnsThem) {
    OpenMaterials({Multi("m", {2, std::monostate{}, Shared(Standard("own")), 1}), Standard("first"),
                   Standard("second")});
    Mtl* multi = At(0)->GetMtl();
    EXPECT_TRUE(multi->ClassID() == Class_ID(0x200, 0));
    EXPECT_THAT(multi->GetName().data(), StrEq("m"));
    ASSERT_EQ(multi->NumSubMtls(), 4);
    EXPECT_EQ(multi->GetSubMtl(0), At(2)->GetMtl());
    EXPECT_EQ(multi->GetSubMtl(1), nullptr);
    EXPECT_THAT(multi->GetSubMtl(2)->GetName().data(), StrEq("own"));
    EXPECT_EQ(multi->GetSubMtl(3), At(1)->GetMtl());
    EXPECT_EQ(multi->GetSubMtl(4), nullptr);
    EXPECT_EQ(multi->GetSubMtl(-1), nullptr);
}

TEST_F(MaterialsTest, MultiMaterialReportsItsFirstSubMaterial) {
    const auto inner = Shared(Multi("inner", {Shared(Colored(Standard("colored")))}));
    OpenMaterials({Multi("outer", {inner, Shared(Standard("ignored"))})});
    ExpectColored(At(0)->GetMtl());
}

TEST_F(MaterialsTest, MultiMaterialWithoutFirstSubMaterialReportsZeros) {
    OpenMaterials({Multi("empty", {}), Multi("gap", {std::monostate{}, Shared(Standard("b"))})});
    for (int i : {0, 1}) {
        Mtl* material = At(i)->GetMtl();
        const Color black(0.0f, 0.0f, 0.0f);
        EXPECT_EQ(material->GetAmbient(), black);
        EXPECT_EQ(material->GetDiffuse(), black);
        EXPECT_EQ(material->GetSpecular(), black);
        EXPECT_EQ(material->GetSelfIllumColor(), black);
        EXPECT_EQ(material->GetShininess(), 0);
        EXPECT_EQ(material->GetShinStr(), 0);
        EXPECT_EQ(material->GetXParency(), 0);
    }
}

std::shared_ptr<const scene::Map> BitmapOf(scene::BitmapMap bitmap) {
    return std::make_shared<const scene::Map>(scene::Map{std::move(bitmap), {}});
}

std::shared_ptr<const scene::Map> OtherOf(scene::ClassId classId,
                                          std::vector<std::shared_ptr<const scene::Map>> subMaps) {
    return std::make_shared<const scene::Map>(
        scene::Map{scene::OtherMap{classId}, std::move(subMaps)});
}

TEST_F(MaterialsTest, StandardMaterialHasTwelveSlotsAtLeast) {
    scene::Material description = Standard("mapped");
    description.maps = {{1, true, 0.25f, BitmapOf({.file = "a.png"})},
                        {8, false, 0.5f, BitmapOf({.file = "b.png"})}};
    OpenMaterials({Standard("bare"), description});
    EXPECT_EQ(At(0)->GetMtl()->NumSubTexmaps(), NTEXMAPS);
    EXPECT_EQ(NTEXMAPS, 12);
    auto* material = static_cast<StdMat*>(At(1)->GetMtl());
    ASSERT_EQ(material->NumSubTexmaps(), 12);
    for (int slot = -1; slot <= 12; ++slot) {
        EXPECT_EQ(material->GetSubTexmap(slot) != nullptr, slot == 1 || slot == 8) << slot;
        EXPECT_EQ(material->MapEnabled(slot), slot == 1) << slot;
        EXPECT_EQ(material->GetTexmapAmt(slot, 0), slot == 1   ? 0.25f
                                                   : slot == 8 ? 0.5f
                                                               : 1.0f)
            << slot;
    }
    EXPECT_THAT(static_cast<BitmapTex*>(material->GetSubTexmap(8))->GetMapName(), StrEq("b.png"));
}

TEST_F(MaterialsTest, HigherSlotsAreReached) {
    scene::Material description = Standard("mapped");
    description.maps = {{40, true, 1, BitmapOf({.file = "a.png"})}};
    OpenMaterials({description});
    auto* material = static_cast<StdMat*>(At(0)->GetMtl());
    EXPECT_EQ(material->NumSubTexmaps(), 41);
    EXPECT_EQ(material->GetSubTexmap(39), nullptr);
    EXPECT_NE(material->GetSubTexmap(40), nullptr);
    EXPECT_TRUE(material->MapEnabled(40));
}

TEST_F(MaterialsTest, OtherMaterialsHaveMapsBySlot) {
    scene::Material description = Standard("other");
    description.kind = scene::MaterialKind::other;
    description.classId = {0x260, 0};
    OpenMaterials({description,
                   [&] {
                       scene::Material mapped = description;
                       mapped.maps = {{2, true, 1, BitmapOf({.file = "a.png"})}};
                       return mapped;
                   }(),
                   Multi("multi", {})});
    EXPECT_EQ(At(0)->GetMtl()->NumSubTexmaps(), 0);
    ASSERT_EQ(At(1)->GetMtl()->NumSubTexmaps(), 3);
    EXPECT_EQ(At(1)->GetMtl()->GetSubTexmap(0), nullptr);
    EXPECT_NE(At(1)->GetMtl()->GetSubTexmap(2), nullptr);
    EXPECT_EQ(At(2)->GetMtl()->NumSubTexmaps(), 0);
}

TEST_F(MaterialsTest, BitmapHasAFileAndCoordinates) {
    scene::Material description = Standard("mapped");
    description.maps = {{0, true, 1,
                         BitmapOf({.file = "maps/a.png",
                                   .uOffset = 0.1f,
                                   .vOffset = 0.2f,
                                   .uTiling = 3,
                                   .vTiling = 4,
                                   .angle = 0.5f})},
                        {1, true, 1, BitmapOf({.file = "b.png", .coordinates = false})}};
    OpenMaterials({description});
    Texmap* map = At(0)->GetMtl()->GetSubTexmap(0);
    ASSERT_NE(map, nullptr);
    EXPECT_EQ(map->SuperClassID(), SClass_ID{0xC10});
    EXPECT_TRUE(map->ClassID() == Class_ID(0x240, 0));
    EXPECT_EQ(map->NumSubTexmaps(), 0);
    Interval valid = FOREVER;
    map->Update(0, valid);
    EXPECT_EQ(valid, FOREVER);
    auto* bitmap = static_cast<BitmapTex*>(map);
    EXPECT_THAT(bitmap->GetMapName(), StrEq("maps/a.png"));
    StdUVGen* coordinates = bitmap->GetUVGen();
    ASSERT_NE(coordinates, nullptr);
    EXPECT_EQ(coordinates->GetUOffs(0), 0.1f);
    EXPECT_EQ(coordinates->GetVOffs(0), 0.2f);
    EXPECT_EQ(coordinates->GetUScl(0), 3);
    EXPECT_EQ(coordinates->GetVScl(0), 4);
    EXPECT_EQ(coordinates->GetWAng(0), 0.5f);
    EXPECT_EQ(static_cast<BitmapTex*>(At(0)->GetMtl()->GetSubTexmap(1))->GetUVGen(), nullptr);
}

TEST_F(MaterialsTest, MapsHoldMaps) {
    scene::Material description = Standard("mapped");
    scene::Map bitmap{scene::BitmapMap{.file = "outer"}, {BitmapOf({.file = "inner"})}};
    description.maps = {{0, true, 1,
                         OtherOf({0x230, 0}, {nullptr, std::make_shared<const scene::Map>(bitmap),
                                              OtherOf({5, 6}, {})})}};
    OpenMaterials({description});
    Texmap* mix = At(0)->GetMtl()->GetSubTexmap(0);
    ASSERT_NE(mix, nullptr);
    EXPECT_TRUE(mix->ClassID() == Class_ID(0x230, 0));
    ASSERT_EQ(mix->NumSubTexmaps(), 3);
    EXPECT_EQ(mix->GetSubTexmap(-1), nullptr);
    EXPECT_EQ(mix->GetSubTexmap(0), nullptr);
    EXPECT_EQ(mix->GetSubTexmap(3), nullptr);
    EXPECT_TRUE(mix->GetSubTexmap(2)->ClassID() == Class_ID(5, 6));
    Texmap* outer = mix->GetSubTexmap(1);
    EXPECT_THAT(static_cast<BitmapTex*>(outer)->GetMapName(), StrEq("outer"));
    ASSERT_EQ(outer->NumSubTexmaps(), 1);
    EXPECT_THAT(static_cast<BitmapTex*>(outer->GetSubTexmap(0))->GetMapName(), StrEq("inner"));
}

TEST_F(MaterialsTest, ClassIdsDecideWhatAMaterialOrMapIs) {
    scene::Material description = Colored(Standard("claims"));
    description.kind = scene::MaterialKind::other;
    description.classId = {2, 0};
    description.maps = {{0, true, 1, OtherOf({0x240, 0}, {OtherOf({1, 1}, {})})}};
    OpenMaterials({description});
    auto* material = dynamic_cast<StdMat*>(At(0)->GetMtl());
    ASSERT_NE(material, nullptr);
    EXPECT_EQ(material->GetDiffuse(0), Color(0.4f, 0.5f, 0.6f));
    auto* bitmap = dynamic_cast<BitmapTex*>(material->GetSubTexmap(0));
    ASSERT_NE(bitmap, nullptr);
    EXPECT_THAT(bitmap->GetMapName(), StrEq(""));
    EXPECT_EQ(bitmap->GetUVGen(), nullptr);
    EXPECT_EQ(bitmap->NumSubTexmaps(), 1);
}

TEST_F(MaterialsTest, NamesMayBeChanged) {
    OpenMaterials({Standard("before")});
    At(0)->GetMtl()->SetName(CStr("after"));
    EXPECT_THAT(At(0)->GetMtl()->GetName().data(), StrEq("after"));
}

TEST_F(MaterialsTest, DefaultMaterialBelongsToItsMaker) {
    const int before = maxhost::LiveObjectCount();
    StdMat* material = NewDefaultStdMat();
    ASSERT_NE(material, nullptr);
    EXPECT_EQ(maxhost::LiveObjectCount(), before + 1);
    EXPECT_TRUE(material->ClassID() == Class_ID(2, 0));
    EXPECT_THAT(material->GetName().data(), StrEq(""));
    const Color grey(0.588f, 0.588f, 0.588f);
    EXPECT_EQ(material->GetAmbient(0), grey);
    EXPECT_EQ(material->GetDiffuse(0), grey);
    EXPECT_EQ(material->GetSpecular(0), Color(0.9f, 0.9f, 0.9f));
    EXPECT_EQ(material->GetShininess(0), 0.1f);
    EXPECT_EQ(material->GetShinStr(0), 0);
    EXPECT_EQ(material->GetTransparencyType(), TRANSP_FILTER);
    EXPECT_EQ(material->NumSubTexmaps(), NTEXMAPS);
    EXPECT_EQ(material->GetSubTexmap(1), nullptr);

    material->SetDiffuse(Color(DWORD{RGB(255, 0, 51)}), 0);
    EXPECT_EQ(material->GetDiffuse(0), Color(1.0f, 0.0f, 0.2f));
    EXPECT_EQ(static_cast<Mtl*>(material)->GetDiffuse(), Color(1.0f, 0.0f, 0.2f));
    EXPECT_EQ(material->GetAmbient(0), grey);
    material->SetName(CStr("Wire Color 1"));
    EXPECT_THAT(material->GetName().data(), StrEq("Wire Color 1"));
    material->DeleteMe();
    EXPECT_EQ(maxhost::LiveObjectCount(), before);
}

TEST_F(MaterialsTest, MaterialsOfTheSceneStayWhenDeleted) {
    const int before = maxhost::LiveObjectCount();
    OpenMaterials({Standard("kept")});
    At(0)->GetMtl()->DeleteMe();
    EXPECT_THAT(At(0)->GetMtl()->GetName().data(), StrEq("kept"));
    EXPECT_EQ(maxhost::LiveObjectCount(), before);
}
