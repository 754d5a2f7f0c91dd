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
}

TEST(NotExported, TellsWhatNodesHave) {
    EXPECT_THAT(NotExportedAfter([](scene::Node& node) {
                    node.object = scene::Object{{}, {}, {}, std::make_shared<scene::Mesh>()};
                }),
                ElementsAre("meshes"));
    EXPECT_THAT(NotExportedAfter([](scene::Node& node) {
                    node.modifiers = {{true, scene::Skin{}}};
                }),
                ElementsAre("skinning"));
    EXPECT_THAT(NotExportedAfter([](scene::Node& node) {
                    node.referenceModifiers = {{true, scene::Physique{}}};
                }),
                ElementsAre("skinning"));
    EXPECT_THAT(NotExportedAfter([](scene::Node& node) {
                    node.modifiers = {{true, scene::Morpher{}}};
                }),
                ElementsAre("morph targets"));
    EXPECT_THAT(NotExportedAfter([](scene::Node& node) {
                    node.transform = scene::Transform{"", {}, scene::IkChainTransform{}};
                }),
                ElementsAre("IK chains"));
}

TEST(NotExported, TellsOfMaterials) {
    scene::Scene scene;
    scene.materials = {std::make_shared<scene::Material>()};
    EXPECT_THAT(NotExported(scene), ElementsAre("materials"));
}

TEST(NotExported, TellsMotionByItsKeys) {
    scene::PrsTransform transform;
    transform.position = WithAxis({"", {}, scene::BezierFloat{{}, 1}});
    transform.scale = scene::ThreeAxisController{"", {}, {}, scene::BezierScale{}};
    EXPECT_THAT(NotExportedWith(transform), IsEmpty());
    transform.position = WithAxis(Keyed());
    EXPECT_THAT(NotExportedWith(transform), ElementsAre("motion"));
    transform.position.reset();
    transform.scale->kind = scene::BezierScale{{scene::Key3{}}, {1, 1, 1}};
    EXPECT_THAT(NotExportedWith(transform), ElementsAre("motion"));
}

TEST(NotExported, TellsMotionBySamples) {
    for (const std::size_t samples : {1, 2}) {
        const std::vector<std::string> names = NotExportedAfter([&](scene::Node& node) {
            scene::SampledTransform sampled;
            sampled.samples.resize(samples);
            node.transform = scene::Transform{"", {}, sampled};
        });
        EXPECT_EQ(names.size(), samples - 1);
    }
}

TEST(NotExported, LooksIntoListsAndTellsLimitsAndWires) {
    scene::FloatList list;
    list.items = {{1, std::make_shared<scene::FloatController>(Keyed())},
                  {1, std::make_shared<scene::FloatController>(
                          scene::FloatController{"", {}, scene::WireFloat{}})}};
    scene::PrsTransform transform;
    transform.rotation = WithAxis({"", {}, list});
    EXPECT_THAT(NotExportedWith(transform), ElementsAre("wired parameters", "motion"));
    transform.rotation->jointParams = scene::JointParams{};
    transform.rotation->jointParams->isDefault = true;
    EXPECT_THAT(NotExportedWith(transform), ElementsAre("wired parameters", "motion"));
    transform.rotation->jointParams->isDefault = false;
    EXPECT_THAT(NotExportedWith(transform),
                ElementsAre("joint limits", "wired parameters", "motion"));
}

}  // namespace
}  // namespace maxhost::app
