#include "host/app/listing.h"

#include <gtest/gtest.h>

#include "tests/unit/host/app/support.h"

namespace maxhost::app {
namespace {

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
    loaded.scene.nodes = {NamedNode("late child", 3), NamedNode("second root"),
                          NamedNode("grandchild", 4), NamedNode("third root"),
                          NamedNode("child", 1),      NamedNode("other child", 1)};
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
        loaded.scene.nodes.push_back(NamedNode("n", i - 1));
    }
    const std::vector<std::string> lines = ListScene(loaded);
    ASSERT_EQ(lines.size(), std::size_t{kDepth});
    EXPECT_EQ(lines.back(), "node\t199999\t199999\thelper\tn");
}

TEST(ListScene, MaterialsAndAnimationsFollow) {
    LoadedScene loaded;
    loaded.scene.nodes = {NamedNode("tab\there\\")};
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

}  // namespace
}  // namespace maxhost::app
