#include "host/app/scene_contents.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/unit/app/support.h"

namespace maxhost::app {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// A scene whose second node is as `change` makes it.
template <class Change>
std::vector<std::string> NotExportedAfter(Change change) {
    scene::Scene scene;
    scene.nodes = {NamedNode("a"), NamedNode("b", 0)};
    change(scene.nodes[1]);
    return NotExported(scene);
}

std::vector<std::string> NotExportedWith(const scene::PrsTransform& transform) {
    return NotExportedAfter([&](scene::Node& node) {
        node.transform = scene::Transform{"", {}, transform};
    });
}

scene::ThreeAxisController WithAxis(scene::FloatController axis) {
    scene::ThreeAxes axes;
    axes.axes[2] = std::move(axis);
    return {"", {}, {}, axes};
}

scene::FloatController Keyed() {
    return {"", {}, scene::BezierFloat{{scene::Key{}}, 0}};
}

TEST(NotExported, OfNodesAloneIsNothing) {
    EXPECT_THAT(NotExported({}), IsEmpty());
    EXPECT_THAT(NotExportedAfter([](scene::Node&) {}), IsEmpty());
    EXPECT_THAT(NotExportedAfter([](scene::Node& node) { node.transform.reset(); }), IsEmpty());
    EXPECT_THAT(NotExportedAfter([](scene::Node& node) {
                    node.object = scene::Object{0x40, scene::ClassId{1, 2}, 1.0f, nullptr};
                    node.modifiers = {{true, scene::OtherModifier{}}};
                }),
                IsEmpty());
    EXPECT_THAT(NotExportedAfter([](scene::Node& node) {
                    node.object = scene::Object{{}, {}, {}, std::make_shared<scene::Mesh>()};
                    node.modifiers = {{true, scene::Skin{}}};
                    node.referenceModifiers = {{true, scene::Physique{}}};
                }),
                IsEmpty());
}

TEST(NotExported, TellsWhatNodesHave) {
    EXPECT_THAT(NotExportedAfter([](scene::Node& node) {
                    node.modifiers = {{true, scene::Morpher{}}};
                }),
                ElementsAre("morph targets"));
    EXPECT_THAT(NotExportedAfter([](scene::Node& node) {
                    node.transform = scene::Transform{"", {}, scene::IkChainTransform{}};
                }),
                ElementsAre("IK chains"));
}

TEST(NotExported, MotionIsExported) {
    scene::PrsTransform transform;
    transform.position = WithAxis(Keyed());
    transform.scale =
        scene::ThreeAxisController{"", {}, {}, scene::BezierScale{{scene::Key3{}}, {1, 1, 1}}};
    EXPECT_THAT(NotExportedWith(transform), IsEmpty());
    EXPECT_THAT(NotExportedAfter([](scene::Node& node) {
                    node.transform = scene::Transform{
                        "", {}, scene::SampledTransform{{{0, scene::kIdentity}, {1, {}}}}};
                }),
                IsEmpty());
}

TEST(NotExported, LooksIntoListsAndTellsLimitsAndWires) {
    scene::FloatList list;
    list.items = {{1, std::make_shared<scene::FloatController>(Keyed())},
                  {1, std::make_shared<scene::FloatController>(
                          scene::FloatController{"", {}, scene::WireFloat{}})}};
    scene::PrsTransform transform;
    transform.rotation = WithAxis({"", {}, list});
    EXPECT_THAT(NotExportedWith(transform), ElementsAre("wired parameters"));
    transform.rotation->jointParams = scene::JointParams{};
    transform.rotation->jointParams->isDefault = true;
    EXPECT_THAT(NotExportedWith(transform), ElementsAre("wired parameters"));
    transform.rotation->jointParams->isDefault = false;
    EXPECT_THAT(NotExportedWith(transform), ElementsAre("joint limits", "wired parameters"));
}

// Each material but the last holds the next one twice.
scene::Scene DoublingMaterials(int count) {
    scene::Scene scene;
    for (int i = 1; i <= count; ++i) {
        auto material = std::make_shared<scene::Material>();
        if (i < count) {
            material->kind = scene::MaterialKind::multi;
            material->subMaterials = {i, i};
        }
        scene.materials.push_back(std::move(material));
    }
    return scene;
}

TEST(CountMaterials, CountsEachWhereverItIsReferredTo) {
    scene::Scene scene = DoublingMaterials(5);
    EXPECT_EQ(CountMaterials(scene), 0u) << "no node has any";
    scene.nodes = {NamedNode("a"), NamedNode("b"), NamedNode("c"), NamedNode("d")};
    scene.nodes[1].material = 0;
    scene.nodes[2].material = 0;
    EXPECT_EQ(CountMaterials(scene), 31u) << "once for both nodes";
    scene.nodes[3].material = 4;
    EXPECT_EQ(CountMaterials(scene), 32u);

    scene::Material nested;
    nested.kind = scene::MaterialKind::multi;
    nested.subMaterials = {std::monostate(), std::make_shared<const scene::Material>(), 3};
    scene.materials[4] = std::make_shared<scene::Material>(nested);
    scene.materials[3] = std::make_shared<scene::Material>();
    EXPECT_EQ(CountMaterials(scene), 15u + 3u);
}

TEST(CountMaterials, StopsAtTheLimit) {
    scene::Scene scene = DoublingMaterials(64);
    scene.nodes = {NamedNode("a")};
    scene.nodes[0].material = 0;
    EXPECT_EQ(CountMaterials(scene), kMostMaterials + 1);
    scene.nodes[0].material = 64 - 19;
    EXPECT_EQ(CountMaterials(scene), (1u << 19) - 1);
}

}  // namespace
}  // namespace maxhost::app
