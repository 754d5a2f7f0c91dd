// Scenes without some of their parts are scenes.
#include "host/scene/reduce.h"

#include <gtest/gtest.h>

#include <string>

#include "host/scene/check.h"
#include "host/scene/error.h"
#include "tests/support/every_field.h"

using namespace maxhost::scene;

namespace {

const PartKind& KindNamed(const std::string& name) {
    for (const PartKind& kind : PartKinds()) {
        if (name == kind.name) {
            return kind;
        }
    }
    throw std::runtime_error("no kind of parts is called " + name);
}

Scene Without(const char* kind, const Scene& scene, const std::vector<std::size_t>& parts) {
    std::vector<bool> gone(KindNamed(kind).count(scene));
    for (const std::size_t part : parts) {
        gone.at(part) = true;
    }
    return KindNamed(kind).without(scene, gone);
}

std::string FaultOf(const Scene& scene) {
    try {
        Check(scene);
        return "";
    } catch (const SceneError& error) {
        return error.what();
    }
}

Node Named(const char* name, int parent = kNone) {
    Node node;
    node.name = name;
    node.parent = parent;
    return node;
}

// root > arm > hand, and a skin over all three.
Scene Skinned() {
    Scene scene;
    scene.nodes = {Named("root"), Named("arm", 0), Named("hand", 1), Named("skin")};
    Skin skin;
    skin.bones = {2, 0, 1};
    skin.weights = {{{0, 0.5f}, {1, 0.25f}, {2, 0.25f}}, {{-1, 1}}, {{2, 1}}};
    Physique physique;
    physique.vertices = {std::monostate(), PhysiqueRigid{1}, PhysiqueRigid{2},
                         PhysiqueBlended{{{1, 0.5f}, {2, 0.5f}}}};
    scene.nodes[3].modifiers = {{true, skin}, {true, physique}};
    scene.selection = {3, 1, 2};
    return scene;
}

}  // namespace

TEST(Reduce, WithNothingGoneASceneStaysAsItIs) {
    for (const PartKind& kind : PartKinds()) {
        const Scene scene = EveryFieldScene();
        const std::size_t count = kind.count(scene);
        EXPECT_EQ(Difference(kind.without(scene, std::vector<bool>(count)), scene), "")
            << kind.name;
    }
}

TEST(Reduce, EveryPartCanGoAloneAndLeavesAScene) {
    const Scene scene = EveryFieldScene();
    for (const PartKind& kind : PartKinds()) {
        const std::size_t count = kind.count(scene);
        if (std::string(kind.name) != "vertices without faces") {
            EXPECT_GT(count, 0u) << kind.name;
        }
        for (std::size_t part = 0; part < count; ++part) {
            SCOPED_TRACE(std::string(kind.name) + " " + std::to_string(part));
            std::vector<bool> gone(count);
            gone[part] = true;
            const Scene smaller = kind.without(scene, gone);
            EXPECT_LT(kind.count(smaller), count);
            const std::string fault = FaultOf(smaller);
            // A sampled transform has one sample at least.
            EXPECT_TRUE(fault.empty() || fault.find("samples") != std::string::npos) << fault;
        }
    }
}

TEST(Reduce, ASubtreeGoesWithAllThatRefersToIt) {
    const Scene smaller = Without("nodes with all below them", Skinned(), {1});
    ASSERT_EQ(smaller.nodes.size(), 2u);
    EXPECT_EQ(smaller.nodes[0].name, "root");
    EXPECT_EQ(smaller.nodes[1].name, "skin");
    EXPECT_EQ(smaller.selection, std::vector<int>{1});
    const Skin& skin = std::get<Skin>(smaller.nodes[1].modifiers[0].kind);
    EXPECT_EQ(skin.bones, std::vector<int>{0});
    ASSERT_EQ(skin.weights.size(), 3u);
    ASSERT_EQ(skin.weights[0].size(), 1u);
    EXPECT_EQ(skin.weights[0][0].slot, 0);
    EXPECT_EQ(skin.weights[0][0].weight, 0.25f);
    EXPECT_EQ(skin.weights[1][0].slot, -1);
    EXPECT_TRUE(skin.weights[2].empty());
    const Physique& physique = std::get<Physique>(smaller.nodes[1].modifiers[1].kind);
    EXPECT_TRUE(std::holds_alternative<std::monostate>(physique.vertices[1]));
    EXPECT_TRUE(std::get<PhysiqueBlended>(physique.vertices[3]).nodes.empty());
    EXPECT_EQ(FaultOf(smaller), "");
}

TEST(Reduce, ANodeAloneHandsItsChildrenUp) {
    const Scene smaller = Without("nodes", Skinned(), {0, 1});
    ASSERT_EQ(smaller.nodes.size(), 2u);
    EXPECT_EQ(smaller.nodes[0].name, "hand");
    EXPECT_EQ(smaller.nodes[0].parent, kNone);
    EXPECT_EQ(smaller.selection, (std::vector<int>{1, 0}));
    const Scene one = Without("nodes", Skinned(), {1});
    EXPECT_EQ(one.nodes[1].name, "hand");
    EXPECT_EQ(one.nodes[1].parent, 0);
}

TEST(Reduce, FacesGoInAllChannelsAndVerticesWithThem) {
    Scene scene;
    scene.nodes = {Named("mesh")};
    auto mesh = std::make_shared<Mesh>();
    mesh->vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {5, 5, 5}};
    mesh->faces = {{{0, 1, 2}, 0, 0}, {{1, 2, 3}, 0, 1}};
    mesh->channels[1] = {{{0, 0}, {1, 0}, {0, 1}}, {{0, 1, 2}, {2, 1, 0}}};
    mesh->normals[3] = {0, 0, 1};
    scene.nodes[0].object = Object{std::nullopt, std::nullopt, std::nullopt, mesh};
    scene.nodes[0].modifiers = {
        {true, Morpher{{{"m", {{1, 1, 1}, {2, 2, 2}, {3, 3, 3}, {4, 4, 4}}}}}}};
    scene = Without("faces", scene, {0});
    scene = Without("vertices without faces", scene, {0});
    const Mesh& left = *scene.nodes[0].object->mesh;
    EXPECT_EQ(left.vertices, (std::vector<Vec3>{{1, 0, 0}, {0, 1, 0}, {5, 5, 5}}));
    ASSERT_EQ(left.faces.size(), 1u);
    EXPECT_EQ(left.faces[0].v, (std::array<std::uint32_t, 3>{0, 1, 2}));
    EXPECT_EQ(left.faces[0].material, 1);
    EXPECT_EQ(left.channels.at(1).faces[0], (std::array<std::uint32_t, 3>{2, 1, 0}));
    EXPECT_EQ(left.normals.at(2), (Vec3{0, 0, 1}));
    EXPECT_EQ(std::get<Morpher>(scene.nodes[0].modifiers[0].kind).channels[0].points,
              (std::vector<Vec3>{{2, 2, 2}, {3, 3, 3}, {4, 4, 4}}));
    EXPECT_EQ(FaultOf(scene), "");
}

TEST(Reduce, ChainsOfAnyDepthAreShortened) {
    Scene scene;
    constexpr int kDepth = 10'000;
    for (int i = 0; i < kDepth; ++i) {
        scene.nodes.push_back(Named("n", i - 1));
    }
    std::vector<bool> gone(kDepth, true);
    gone[kDepth - 1] = false;
    const Scene leaf = KindNamed("nodes").without(scene, gone);
    ASSERT_EQ(leaf.nodes.size(), 1u);
    EXPECT_EQ(leaf.nodes[0].parent, kNone);
    gone.assign(kDepth, false);
    gone[1] = true;
    EXPECT_EQ(KindNamed("nodes with all below them").without(scene, gone).nodes.size(), 1u);
}

TEST(Reduce, WhatPeopleCountIsCounted) {
    const SceneSize size = SizeOf(Skinned());
    EXPECT_EQ(size.nodes, 4u);
    EXPECT_EQ(size.modifiers, 2u);
    EXPECT_EQ(size.materials, 0u);
    EXPECT_EQ(size.faces, 0u);
}
