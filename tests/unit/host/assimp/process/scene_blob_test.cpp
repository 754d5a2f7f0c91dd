// Imported scenes as bytes and back.
#include "host/assimp/process/scene_blob.h"

#include <gtest/gtest.h>

#include "tests/support/every_field.h"

using maxhost::import::DecodeScene;
using maxhost::import::EncodeScene;
using maxhost::import::ImportedScene;
using maxhost::import::ImportError;
using maxhost::scene::LossCode;

TEST(SceneBlob, EveryFieldComesBack) {
    ImportedScene imported;
    imported.scene = EveryFieldScene();
    imported.warnings = {"one", ""};
    imported.codes = {LossCode::keyOrder, LossCode::nameCut};
    imported.losses = {{LossCode::keyOrder, "text", "subject", 3, 4}};
    imported.animations = {{"walk", 1.25, 7}};
    imported.coloredMeshes = 5;
    imported.files = {"a.obj", "a.mtl"};
    const ImportedScene back = DecodeScene(EncodeScene(imported));
    EXPECT_EQ(Difference(imported.scene, back.scene), "");
    EXPECT_EQ(back.warnings, imported.warnings);
    EXPECT_EQ(back.codes, imported.codes);
    EXPECT_EQ(back.files, imported.files);
    ASSERT_EQ(back.losses.size(), 1u);
    EXPECT_EQ(back.losses[0].code, LossCode::keyOrder);
    EXPECT_EQ(back.losses[0].text, "text");
    EXPECT_EQ(back.losses[0].subject, "subject");
    EXPECT_EQ(back.losses[0].node, 3);
    EXPECT_EQ(back.losses[0].count, 4u);
    ASSERT_EQ(back.animations.size(), 1u);
    EXPECT_EQ(back.animations[0].name, "walk");
    EXPECT_EQ(back.animations[0].seconds, 1.25);
    EXPECT_EQ(back.animations[0].channels, 7);
    EXPECT_EQ(back.coloredMeshes, 5u);
}

TEST(SceneBlob, AnEmptySceneComesBack) {
    const ImportedScene back = DecodeScene(EncodeScene({}));
    EXPECT_EQ(Difference({}, back.scene), "");
}

TEST(SceneBlob, SharedMeshesAreSharedAgain) {
    ImportedScene imported;
    const auto mesh = std::make_shared<maxhost::scene::Mesh>();
    const auto other = std::make_shared<maxhost::scene::Mesh>();
    for (const auto& shown : {mesh, other, mesh}) {
        maxhost::scene::Node node;
        node.object = maxhost::scene::Object{{}, {}, {}, shown};
        imported.scene.nodes.push_back(node);
    }
    const auto& nodes = DecodeScene(EncodeScene(imported)).scene.nodes;
    EXPECT_EQ(nodes[0].object->mesh, nodes[2].object->mesh);
    EXPECT_NE(nodes[0].object->mesh, nodes[1].object->mesh);
}

TEST(SceneBlob, CutOffBytesAreRefused) {
    ImportedScene imported;
    imported.scene = EveryFieldScene();
    const std::string bytes = EncodeScene(imported);
    for (std::size_t length = 0; length < bytes.size(); length += 7) {
        EXPECT_THROW(DecodeScene(std::string_view(bytes).substr(0, length)), ImportError) << length;
    }
}
