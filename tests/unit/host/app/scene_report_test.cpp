#include "host/app/scene_report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/scene_parts.h"
#include "tests/unit/host/app/support.h"

namespace maxhost::app {
namespace {

// ---------------------------------------------------------------- the table of --list

scene::Node ObjectNode(std::optional<std::uint32_t> superClass,
                       std::optional<scene::ClassId> classId) {
    scene::Node node;
    node.object = scene::Object();
    node.object->superClassId = superClass;
    node.object->classId = classId;
    return node;
}

TEST(KindOf, FollowsTheClassIds) {
    EXPECT_STREQ(KindOf(scene::Node()), "helper");
    scene::Node mesh = ObjectNode({}, {});
    mesh.object->mesh = std::make_shared<scene::Mesh>();
    EXPECT_STREQ(KindOf(mesh), "geometry");
    EXPECT_STREQ(KindOf(ObjectNode(0x10, scene::ClassId{0x10, 0})), "geometry");
    EXPECT_STREQ(KindOf(ObjectNode(0x20, scene::ClassId{0x1001, 0})), "camera");
    EXPECT_STREQ(KindOf(ObjectNode(0x30, scene::ClassId{0x1011, 0})), "light");
    EXPECT_STREQ(KindOf(ObjectNode(0x40, scene::ClassId{0xa, 0})), "shape");
    EXPECT_STREQ(KindOf(ObjectNode(0x50, scene::ClassId{0x2011, 0})), "helper");
    EXPECT_STREQ(KindOf(ObjectNode(0x60, scene::ClassId{1, 2})), "other");
    EXPECT_STREQ(KindOf(ObjectNode(0x10, scene::ClassId{0x28bf6e8d, 0x2ecca840})), "bone");
    EXPECT_STREQ(KindOf(ObjectNode(0x50, scene::ClassId{0x8a63c0, 0})), "bone");
}

TEST(ListScene, NodesAreDepthFirstInChildOrder) {
    LoadedScene loaded;
    loaded.scene.nodes = {support::MakeNode("late child", 3), support::MakeNode("second root"),
                          support::MakeNode("grandchild", 4), support::MakeNode("third root"),
                          support::MakeNode("child", 1),      support::MakeNode("other child", 1)};
    EXPECT_EQ(ListScene(loaded), (std::vector<std::string>{
                                     "node\t1\t0\thelper\tsecond root",
                                     "node\t4\t1\thelper\tchild",
                                     "node\t2\t2\thelper\tgrandchild",
                                     "node\t5\t1\thelper\tother child",
                                     "node\t3\t0\thelper\tthird root",
                                     "node\t0\t1\thelper\tlate child",
                                 }));
}

TEST(ListScene, DeepHierarchiesAreListed) {
    constexpr int kDepth = 200000;
    LoadedScene loaded;
    for (int i = 0; i < kDepth; ++i) {
        loaded.scene.nodes.push_back(support::MakeNode("n", i - 1));
    }
    const std::vector<std::string> lines = ListScene(loaded);
    ASSERT_EQ(lines.size(), std::size_t{kDepth});
    EXPECT_EQ(lines.back(), "node\t199999\t199999\thelper\tn");
}

TEST(ListScene, MaterialsAndAnimationsFollow) {
    LoadedScene loaded;
    loaded.scene.nodes = {support::MakeNode("tab\there\\")};
    scene::Material multi;
    multi.kind = scene::MaterialKind::multi;
    multi.name = "two";
    scene::Material other;
    other.kind = scene::MaterialKind::other;
    loaded.scene.materials = {std::make_shared<scene::Material>(),
                              std::make_shared<scene::Material>(multi),
                              std::make_shared<scene::Material>(other)};
    loaded.animations = {{"walk", 1.25}, {"run\n", 100.0 / 3}};
    EXPECT_EQ(ListScene(loaded), (std::vector<std::string>{
                                     "node\t0\t0\thelper\ttab\\x09here\\\\",
                                     "material\t0\tstandard\t",
                                     "material\t1\tmulti\ttwo",
                                     "material\t2\tother\t",
                                     "animation\t0\t1.25\twalk",
                                     "animation\t1\t33.3333\trun\\x0a",
                                 }));
}

TEST(ListScene, EmptySceneHasNoLines) {
    EXPECT_TRUE(ListScene(LoadedScene()).empty());
}

// ---------------------------------------------------------------- names

using testing::ElementsAre;
using testing::IsEmpty;

scene::Scene SceneOf(const std::vector<std::string>& names) {
    scene::Scene scene;
    for (const std::string& name : names) {
        scene.nodes.push_back(support::MakeNode(name));
    }
    return scene;
}

std::vector<std::string> TextsOf(const std::vector<Warning>& warnings) {
    std::vector<std::string> texts;
    for (const Warning& warning : warnings) {
        texts.push_back(warning.text);
    }
    return texts;
}

TEST(NameWarnings, HaveTheirCodes) {
    const std::string same(259, 'x');
    const std::vector<Warning> warnings = NameWarnings(SceneOf({same + "1", same + "2"}));
    ASSERT_EQ(warnings.size(), 2u);
    EXPECT_EQ(warnings[0].code, scene::LossCode::nameCut);
    EXPECT_EQ(warnings[1].code, scene::LossCode::nameShared);
}

TEST(NameWarnings, DistinctNamesThatFitAreNoCause) {
    EXPECT_THAT(NameWarnings(SceneOf({})), IsEmpty());
    EXPECT_THAT(NameWarnings(SceneOf({"a", "A", "", std::string(259, 'x')})), IsEmpty());
}

TEST(NameWarnings, SharedNamesAreOneLine) {
    EXPECT_THAT(TextsOf(NameWarnings(SceneOf({"b", "a", "", "a", "b", "b", "c", ""}))),
                ElementsAre("several nodes of one name, and the files tell parents by name: "
                            "\"b\" (3 nodes), \"a\" (2 nodes), \"\" (2 nodes)"));
}

TEST(NameWarnings, OnlyTheFirstNamesAreShown) {
    std::vector<std::string> names;
    for (int i = 0; i < 2 * 1000; ++i) {
        names.push_back(std::to_string(i % 1000));
    }
    EXPECT_THAT(TextsOf(NameWarnings(SceneOf(names))),
                ElementsAre("several nodes of one name, and the files tell parents by name: "
                            "\"0\" (2 nodes), \"1\" (2 nodes), \"2\" (2 nodes), \"3\" (2 nodes), "
                            "\"4\" (2 nodes) and 995 more"));
}

TEST(NameWarnings, LongNamesAreShownShort) {
    EXPECT_THAT(TextsOf(NameWarnings(SceneOf({"a", std::string(260, '\n')}))),
                ElementsAre("node names of more than 259 bytes, which the files cut: \"" + [] {
                    std::string shown;
                    for (int i = 0; i < 40; ++i) {
                        shown += "\\x0a";
                    }
                    return shown;
                }() + "...\" (260 bytes)"));
}

TEST(NameWarnings, NamesThatDifferBehindTheCutAreShared) {
    const std::string same(259, 'x');
    const std::vector<std::string> warnings =
        TextsOf(NameWarnings(SceneOf({same + "1", same + "2"})));
    ASSERT_EQ(warnings.size(), 2u);
    EXPECT_THAT(warnings[1], testing::HasSubstr(std::string(40, 'x') + "...\" (2 nodes)"));
}

// ---------------------------------------------------------------- materials

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
    scene.nodes = {support::MakeNode("a"), support::MakeNode("b"), support::MakeNode("c"),
                   support::MakeNode("d")};
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
    scene.nodes = {support::MakeNode("a")};
    scene.nodes[0].material = 0;
    EXPECT_EQ(CountMaterials(scene), kMostMaterials + 1);
    scene.nodes[0].material = 64 - 19;
    EXPECT_EQ(CountMaterials(scene), (1u << 19) - 1);
}

}  // namespace
}  // namespace maxhost::app
