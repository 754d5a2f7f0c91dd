#include "host/scene/scramble.h"

#include <gtest/gtest.h>

#include <string>

#include "host/scene/check.h"
#include "host/scene/error.h"
#include "host/scene/reduce.h"
#include "tests/support/every_field.h"

using namespace maxhost::scene;

namespace {

Scene Scrambled(Scene scene) {
    Scramble(scene);
    return scene;
}

Scene OfMesh(const std::vector<Vec3>& vertices) {
    auto mesh = std::make_shared<Mesh>();
    mesh->vertices = vertices;
    Scene scene;
    scene.nodes.resize(1);
    scene.nodes[0].object = Object{std::nullopt, std::nullopt, std::nullopt, mesh};
    return scene;
}

}  // namespace

TEST(Scramble, LeavesASceneOfTheSameParts) {
    const Scene scene = EveryFieldScene();
    const Scene scrambled = Scrambled(scene);
    EXPECT_NO_THROW(Check(scrambled));
    EXPECT_EQ(Difference(Scrambled(scene), scrambled), "") << "the same each time";
    for (const PartKind& kind : PartKinds()) {
        if (std::string(kind.name) != "details of nodes") {  // user properties go
            EXPECT_EQ(kind.count(scrambled), kind.count(scene)) << kind.name;
        }
    }
}

TEST(Scramble, EqualNamesStayEqual) {
    Scene scene;
    scene.nodes.resize(4);
    scene.nodes[0].name = "hero";
    scene.nodes[1].name = "sword";
    scene.nodes[2].name = "hero";
    scene.nodes[0].userProperties = "owner = me";
    const Scene scrambled = Scrambled(scene);
    EXPECT_EQ(scrambled.nodes[0].name, "n1");
    EXPECT_EQ(scrambled.nodes[1].name, "n2");
    EXPECT_EQ(scrambled.nodes[2].name, "n1");
    EXPECT_EQ(scrambled.nodes[3].name, "");
    EXPECT_EQ(scrambled.nodes[0].userProperties, "");
}

TEST(Scramble, TexturesKeepTheirExtension) {
    Scene scene;
    auto map = std::make_shared<Map>();
    map->kind = BitmapMap{"C:\\project.x\\hero skin.tga"};
    auto material = std::make_shared<Material>();
    material->name = "skin";
    material->maps = {{1, true, 1, map}};
    scene.materials = {material};
    const Scene scrambled = Scrambled(scene);
    EXPECT_EQ(scrambled.materials[0]->name, "m1");
    EXPECT_EQ(std::get<BitmapMap>(scrambled.materials[0]->maps[0].map->kind).file, "t1.tga");
    EXPECT_EQ(material->name, "skin") << "the former scene's stays";
}

TEST(Scramble, PointsMoveAndEqualOnesTogether) {
    const std::vector<Vec3> points = {{1, -2, 3}, {0, 0, 0}, {1, -2, 3}, {1, -2, 4}, {3e38f, 1, 1}};
    const std::vector<Vec3> moved = Scrambled(OfMesh(points)).nodes[0].object->mesh->vertices;
    EXPECT_EQ(moved[0], moved[2]);
    EXPECT_EQ(moved[1], (Vec3{0, 0, 0}));
    EXPECT_NE(moved[0][0] / points[0][0], moved[3][0] / points[3][0]) << "each by its own number";
    for (const std::size_t i : {0, 3}) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const float factor = moved[i][axis] / points[i][axis];
            EXPECT_GE(factor, 0.5f);
            EXPECT_LE(factor, 1.5f);
            EXPECT_NE(factor, 1.0f);
        }
    }
    EXPECT_NO_THROW(Check(Scrambled(OfMesh(points)))) << "all stay finite";
}
