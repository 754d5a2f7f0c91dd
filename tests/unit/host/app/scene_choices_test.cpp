#include "host/app/scene_choices.h"

#include <gtest/gtest.h>

#include "host/app/exit_status.h"
#include "host/assimp/import.h"
#include "tests/unit/host/app/support.h"

namespace maxhost::app {
namespace {

LoadedScene Sample() {
    LoadedScene loaded;
    loaded.scene.nodes = {NamedNode("a"), NamedNode("b"), NamedNode("a", 1), NamedNode("c")};
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
    options.start = -320;
    options.end = 4800;
    ApplyChoices(options, loaded);
    EXPECT_EQ(loaded.scene.time.start, -320);
    EXPECT_EQ(loaded.scene.time.end, 4800);
}

TEST(ApplyChoices, RangeThatEndsBeforeItStartsIsRefused) {
    LoadedScene loaded = Sample();
    Options options;
    options.start = 16001;
    const Thrown start = Catch([&] { ApplyChoices(options, loaded); });
    EXPECT_EQ(start.status, kExitRefused);
    EXPECT_EQ(start.line,
              "--start: the range would be 16001 to 16000, expected one that does not end before "
              "it starts");
    LoadedScene again = Sample();
    options.start.reset();
    options.end = -1;
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

}  // namespace
}  // namespace maxhost::app
