#include "host/app/scene_loader.h"

#include <gtest/gtest.h>

#include "host/app/exit_status.h"
#include "tests/unit/host/app/support.h"

#ifndef _WIN32
#include <sys/stat.h>
#endif

namespace maxhost::app {
namespace {

class SceneLoaderTest : public InDirectory {};

TEST_F(SceneLoaderTest, DescriptionsAreKnownByNameOrContent) {
    EXPECT_TRUE(IsSceneDescription("a.maxscene.json"));
    EXPECT_TRUE(IsSceneDescription("A.MaxScene.JSON"));
    EXPECT_FALSE(IsSceneDescription("a.json")) << "does not exist";
    Write("a.json", " \r\n{ \"nodes\": [], \"maxscene\": 1}");
    EXPECT_TRUE(IsSceneDescription("a.json"));
    Write("bom.json", "\xef\xbb\xbf {\"maxscene\": 1, \"nodes\": [{\"name\": \"n\"}]}");
    EXPECT_TRUE(IsSceneDescription("bom.json"));
    EXPECT_EQ(LoadScene("bom.json").scene.nodes.size(), 1u);
    Write("half.json", "\xef\xbb {\"maxscene\": 1}");
    EXPECT_FALSE(IsSceneDescription("half.json"));
    Write("a.gltf", "{\"extras\": {\"maxscene\": 1}}");
    EXPECT_FALSE(IsSceneDescription("a.gltf"));
    Write("b.json", "{\"asset\": {}}");
    EXPECT_FALSE(IsSceneDescription("b.json"));
    Write("c.json", "\"maxscene\"");
    EXPECT_FALSE(IsSceneDescription("c.json"));
    Write("d.json", "");
    EXPECT_FALSE(IsSceneDescription("d.json"));
}

TEST_F(SceneLoaderTest, DescriptionIsLoaded) {
    Write("a.maxscene.json", R"({"maxscene": 1, "nodes": [{"name": "n"}]})");
    const LoadedScene loaded = LoadScene("a.maxscene.json");
    ASSERT_EQ(loaded.scene.nodes.size(), 1u);
    EXPECT_EQ(loaded.scene.nodes[0].name, "n");
    EXPECT_TRUE(loaded.warnings.empty());
    EXPECT_TRUE(loaded.animations.empty());
}

TEST_F(SceneLoaderTest, FilesThatCannotBeReadAreNamed) {
    const Thrown missing = Catch([] { LoadScene("a.fbx"); });
    EXPECT_EQ(missing.status, kExitRefused);
    EXPECT_EQ(missing.line, "a.fbx: does not exist, expected a scene file");
    std::filesystem::create_directory("d.maxscene.json");
    EXPECT_EQ(Catch([] { LoadScene("d.maxscene.json"); }).line,
              "d.maxscene.json: is a directory, expected a scene file");
}

#ifndef _WIN32
TEST_F(SceneLoaderTest, WhatIsNoRegularFileIsNotOpened) {
    ASSERT_EQ(mkfifo("fifo.maxscene.json", 0600), 0);
    for (const char* const path : {"fifo.maxscene.json", "/dev/zero"}) {
        const Thrown thrown = Catch([&] { LoadScene(path); });
        EXPECT_EQ(thrown.status, kExitRefused);
        EXPECT_EQ(thrown.line,
                  std::string(path) + ": is not a regular file, expected a scene file");
    }
}
#endif

TEST_F(SceneLoaderTest, FaultsOfADescriptionTellThePlace) {
    Write("a.maxscene.json", R"({"maxscene": 1, "nodes": [{"name": "n", "parent": 7}]})");
    const Thrown thrown = Catch([] { LoadScene("a.maxscene.json"); });
    EXPECT_EQ(thrown.status, kExitRefused);
    EXPECT_EQ(thrown.line.find("a.maxscene.json: /nodes/0/parent: 7, expected "), 0u)
        << thrown.line;
}

TEST_F(SceneLoaderTest, ModelsThatCannotBeReadAreNamed) {
    Write("a.fbx", "not a model");
    const Thrown thrown = Catch([] { LoadScene("a.fbx"); });
    EXPECT_EQ(thrown.status, kExitRefused);
    EXPECT_EQ(thrown.line.find("a.fbx: "), 0u) << thrown.line;
}

}  // namespace
}  // namespace maxhost::app
