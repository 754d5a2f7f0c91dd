// Imported scenes as bytes and back.
#include "host/assimp/process/scene_blob.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <span>
#include <string>
#include <string_view>

#include "tests/support/every_field.h"

using maxhost::import::DecodeScene;
using maxhost::import::EncodeScene;
using maxhost::import::GetResult;
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

// Bytes that announce so many of themselves, the rest as it was.
static std::string Announcing(std::uint64_t size, std::string bytes) {
    std::memcpy(bytes.data(), &size, sizeof(size));
    return bytes;
}

static GetResult From(std::string_view& bytes) {
    return [&bytes](std::span<char> room) {
        const std::size_t count = bytes.copy(room.data(), room.size());
        bytes.remove_prefix(count);
        return count;
    };
}

static std::string Refusal(std::string_view bytes, std::uint64_t most) {
    try {
        DecodeScene(From(bytes), most);
    } catch (const ImportError& error) {
        return error.what();
    }
    return "none";
}

TEST(SceneBlob, MoreBytesThanThereMayBeAreRefusedBeforeTheyAreRead) {
    ImportedScene imported;
    imported.scene = EveryFieldScene();
    const std::string bytes = EncodeScene(imported);
    const std::uint64_t size = bytes.size() - sizeof(std::uint64_t);
    EXPECT_EQ(Refusal(bytes, size), "none");
    EXPECT_EQ(Refusal(bytes, size - 1), "the scene came through damaged: it announces " +
                                            std::to_string(size) + " bytes, expected at most " +
                                            std::to_string(size - 1));
    EXPECT_EQ(Refusal(Announcing(std::uint64_t{1} << 60, bytes), std::uint64_t{1} << 30),
              "the scene came through damaged: it announces 1152921504606846976 bytes, expected "
              "at most 1073741824");
}

// Every number in it is 2^50, and so is the length of its first list.
#if !defined(__SANITIZE_ADDRESS__)
TEST(SceneBlob, AScenePastAllMemoryIsRefused) {
    constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
    constexpr std::uint64_t kCount = std::uint64_t{1} << 50;
    std::string bytes(4096, '\0');
    for (std::size_t at = 0; at < bytes.size(); at += sizeof(kCount)) {
        std::memcpy(bytes.data() + at, &kCount, sizeof(kCount));
    }
    EXPECT_EQ(Refusal(Announcing(kMost, bytes), kMost),
              "cannot be read: not enough memory for its scene");
}
#endif

TEST(SceneBlob, CutOffBytesAreRefused) {
    ImportedScene imported;
    imported.scene = EveryFieldScene();
    const std::string bytes = EncodeScene(imported);
    for (std::size_t length = 0; length < bytes.size(); length += 7) {
        EXPECT_THROW(DecodeScene(std::string_view(bytes).substr(0, length)), ImportError) << length;
    }
}
