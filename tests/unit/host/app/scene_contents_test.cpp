#include "host/app/scene_contents.h"

#include <gtest/gtest.h>

#include "tests/unit/host/app/support.h"

namespace maxhost::app {
namespace {

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
