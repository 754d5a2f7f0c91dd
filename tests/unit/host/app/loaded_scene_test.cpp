#include "host/app/loaded_scene.h"

#include <gtest/gtest.h>

#include <limits>
#include <thread>

#include "host/app/exit_status.h"
#include "host/assimp/import.h"
#include "tests/support/scene_parts.h"
#include "tests/unit/host/app/support.h"

#ifndef _WIN32
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#endif

namespace maxhost::app {
namespace {

// ---------------------------------------------------------------- loading

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

// ---------------------------------------------------------------- changes

LoadedScene Sample() {
    LoadedScene loaded;
    loaded.scene.nodes = {support::MakeNode("a"), support::MakeNode("b"), support::MakeNode("a", 1),
                          support::MakeNode("c")};
    loaded.scene.nodes[3].selected = true;
    loaded.scene.selection = {3};
    loaded.animations = {{"walk", 1}, {"5", 2}};
    return loaded;
}

TEST(ApplyChoices, WithoutChoicesNothingChanges) {
    LoadedScene loaded = Sample();
    ApplyChoices(Options(), loaded);
    EXPECT_EQ(loaded.scene.selection, std::vector<int>{3});
    EXPECT_EQ(loaded.scene.time.frameRate, 30);
    EXPECT_EQ(loaded.scene.time.ticksPerFrame, 160);
    EXPECT_EQ(loaded.scene.time.end, 16000);
}

TEST(ApplyChoices, SelectReplacesTheSelectionInOrder) {
    LoadedScene loaded = Sample();
    Options options;
    options.select = {"b", "a", "b"};
    ApplyChoices(options, loaded);
    EXPECT_EQ(loaded.scene.selection, (std::vector<int>{1, 0, 2}));
    EXPECT_TRUE(loaded.scene.nodes[0].selected);
    EXPECT_TRUE(loaded.scene.nodes[1].selected);
    EXPECT_TRUE(loaded.scene.nodes[2].selected);
    EXPECT_FALSE(loaded.scene.nodes[3].selected);
}

TEST(ApplyChoices, SelectOfNoNodeIsRefused) {
    LoadedScene loaded = Sample();
    Options options;
    options.select = {"a", "A"};
    const Thrown thrown = Catch([&] { ApplyChoices(options, loaded); });
    EXPECT_EQ(thrown.status, kExitRefused);
    EXPECT_EQ(thrown.line, "--select: \"A\", expected a node's name (--list shows them)");
}

TEST(ApplyChoices, FrameRateSetsTicksPerFrame) {
    const std::pair<int, int> rates[] = {{30, 160}, {25, 192}, {1, 4800}, {4800, 1}, {7, 685}};
    for (const auto& [rate, ticks] : rates) {
        LoadedScene loaded = Sample();
        Options options;
        options.frameRate = rate;
        ApplyChoices(options, loaded);
        EXPECT_EQ(loaded.scene.time.frameRate, rate);
        EXPECT_EQ(loaded.scene.time.ticksPerFrame, ticks);
    }
}

TEST(ApplyChoices, RangeIsInTicks) {
    LoadedScene loaded = Sample();
    Options options;
    options.start = Moment{-320};
    options.end = Moment{4800};
    ApplyChoices(options, loaded);
    EXPECT_EQ(loaded.scene.time.start, -320);
    EXPECT_EQ(loaded.scene.time.end, 4800);
}

TEST(ApplyChoices, RangeThatEndsBeforeItStartsIsRefused) {
    LoadedScene loaded = Sample();
    Options options;
    options.start = Moment{16001};
    const Thrown start = Catch([&] { ApplyChoices(options, loaded); });
    EXPECT_EQ(start.status, kExitRefused);
    EXPECT_EQ(start.line,
              "--start: the range would be 16001 to 16000, expected one that does not end before "
              "it starts");
    LoadedScene again = Sample();
    options.start.reset();
    options.end = Moment{-1};
    EXPECT_EQ(Catch([&] { ApplyChoices(options, again); }).line,
              "--end: the range would be 0 to -1, expected one that does not end before it starts");
}

TEST(ApplyChoices, ScaleMultipliesLengths) {
    LoadedScene loaded = Sample();
    scene::Matrix matrix = scene::kIdentity;
    matrix[3] = {1, 2, 3};
    loaded.scene.nodes[0].transform = scene::Transform{"", {}, scene::MatrixTransform{matrix}};
    Options options;
    options.scale = 2;
    ApplyChoices(options, loaded);
    const auto& scaled =
        std::get<scene::MatrixTransform>(loaded.scene.nodes[0].transform->kind).matrix;
    EXPECT_EQ(scaled[3], (scene::Vec3{2, 4, 6}));
    EXPECT_EQ(scaled[0], (scene::Vec3{1, 0, 0}));
}

TEST(ApplyChoices, ScaleBeyondF32IsRefused) {
    LoadedScene loaded = Sample();
    scene::Matrix matrix = scene::kIdentity;
    matrix[3] = {1e30f, 0, 0};
    loaded.scene.nodes[0].transform = scene::Transform{"", {}, scene::MatrixTransform{matrix}};
    Options options;
    options.scale = 1e30f;
    const Thrown thrown = Catch([&] { ApplyChoices(options, loaded); });
    EXPECT_EQ(thrown.status, kExitRefused);
    EXPECT_EQ(thrown.line.find("--scale: in the scaled scene, /nodes/0/"), 0u) << thrown.line;
}

TEST(ApplyChoices, AnimationIsFoundByNameOrNumber) {
    for (const char* const name : {"walk", "5", "0", "1"}) {
        LoadedScene loaded = Sample();
        Options options;
        options.animation = name;
        EXPECT_EQ(Catch([&] { ApplyChoices(options, loaded); }).status, -1) << name;
    }
}

TEST(FindAnimation, NamesCountBeforeNumbers) {
    const std::vector<std::string> names = {"walk", "0", "walk", "2"};
    EXPECT_EQ(import::FindAnimation("walk", names), 0u);
    EXPECT_EQ(import::FindAnimation("0", names), 1u);
    EXPECT_EQ(import::FindAnimation("1", names), 1u);
    EXPECT_EQ(import::FindAnimation("2", names), 3u);
    for (const char* const none : {"4", "-1", "1 ", "", "Walk", "99999999999999999999"}) {
        EXPECT_EQ(import::FindAnimation(none, names), std::nullopt) << none;
    }
}

TEST(ApplyChoices, UnknownAnimationIsRefused) {
    LoadedScene loaded = Sample();
    Options options;
    options.animation = "2";
    const Thrown thrown = Catch([&] { ApplyChoices(options, loaded); });
    EXPECT_EQ(thrown.status, kExitRefused);
    EXPECT_EQ(thrown.line,
              "--animation: \"2\", expected a name or number of the scene's 2 animations: 0 "
              "\"walk\", 1 \"5\"");
    loaded.animations.clear();
    EXPECT_EQ(Catch([&] { ApplyChoices(options, loaded); }).line,
              "--animation: \"2\", expected none, the scene has no animations to choose from");
}

TEST(ApplyChoices, OfManyAnimationsTheFirstTwentyAreNamed) {
    LoadedScene loaded = Sample();
    loaded.animations.assign(21, {"n", 1});
    Options options;
    options.animation = "21";
    const std::string line = Catch([&] { ApplyChoices(options, loaded); }).line;
    EXPECT_TRUE(line.ends_with(", 19 \"n\", ... (--list shows all)")) << line;
}

// ---------------------------------------------------------------- saving

class SceneSaverTest : public InDirectory {
  protected:
    static scene::Scene Sample() {
        scene::Scene scene;
        scene.nodes = {support::MakeNode("saved")};
        return scene;
    }
};

TEST_F(SceneSaverTest, SavedSceneLoadsAgain) {
    SaveScene(Sample(), "s.maxscene.json");
    EXPECT_EQ(LoadScene("s.maxscene.json").scene.nodes.at(0).name, "saved");
    EXPECT_EQ(Names(), std::vector<std::string>{"s.maxscene.json"});
}

TEST_F(SceneSaverTest, FormerFileIsReplaced) {
    Write("s.json", std::string(100000, 'x'));
    SaveScene(Sample(), "s.json");
    EXPECT_EQ(LoadScene("s.json").scene.nodes.at(0).name, "saved");
}

TEST_F(SceneSaverTest, FormerFileStaysWhenTheSceneCannotBeWritten) {
    Write("s.json", "former");
    scene::Scene broken = Sample();
    broken.nodes[0].objectOffset[0][0] = std::numeric_limits<float>::infinity();
    const Thrown thrown = Catch([&] { SaveScene(broken, "s.json"); });
    EXPECT_EQ(thrown.status, kExitRefused);
    EXPECT_EQ(thrown.line.find("s.json: the scene cannot be saved: /nodes/0/"), 0u) << thrown.line;
    EXPECT_EQ(Read("s.json"), "former");
    EXPECT_EQ(Names(), std::vector<std::string>{"s.json"});
}

TEST_F(SceneSaverTest, PlacesThatCannotBeWrittenAreNamed) {
    EXPECT_EQ(Catch([] { SaveScene(Sample(), "no/s.json"); }).line,
              "no/s.json: the scene cannot be saved: " +
                  std::make_error_code(std::errc::no_such_file_or_directory).message());
    std::filesystem::create_directory("d");
    EXPECT_EQ(Catch([] { SaveScene(Sample(), "d"); }).line,
              "d: the scene cannot be saved: " +
                  std::make_error_code(std::errc::is_a_directory).message());
    EXPECT_EQ(Names(), std::vector<std::string>{"d"});
}

#ifndef _WIN32
TEST_F(SceneSaverTest, LackOfRoomIsNoticed) {
    Write("s.json", "former");
    rlimit former{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &former), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit tight = {10, former.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &tight), 0);
    const Thrown thrown = Catch([] { SaveScene(Sample(), "s.json"); });
    setrlimit(RLIMIT_FSIZE, &former);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(thrown.line, "s.json: the scene cannot be saved: " +
                               std::make_error_code(std::errc::file_too_large).message());
    EXPECT_EQ(Names(), std::vector<std::string>{"s.json"});
    EXPECT_EQ(Read("s.json"), "former");
}
#endif

}  // namespace
}  // namespace maxhost::app
