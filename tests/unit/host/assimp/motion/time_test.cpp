// Clips, frame rates and the animation range.
#include <gtest/gtest.h>

#include <limits>

#include "tests/unit/host/assimp/source_scene.h"

using maxhost::import::ImportedScene;
using maxhost::scene::Time;

namespace {

Time FbxTime(int mode, double custom = -1) {
    SourceScene source(kFbx, "RootNode");
    source.Set("FrameRate", mode);
    source.Set("CustomFrameRate", custom);
    return source.Convert().scene.time;
}

ImportedScene WithClip(const std::string& importer, double duration, double ticksPerSecond) {
    SourceScene source(importer);
    source.AddAnimation("walk", duration, ticksPerSecond, {"Root"});
    return source.Convert();
}

}  // namespace

TEST(Clips, AreListedInOrderWithTheirLengths) {
    SourceScene source("Some Importer");
    source.AddAnimation("walk", 48, 24, {"a", "b"});
    source.AddAnimation("", 10, 4, {"a"});
    source.AddAnimation("r\xfcn", 0, 24);
    const ImportedScene imported = source.Convert();
    ASSERT_EQ(imported.animations.size(), 3u);
    EXPECT_EQ(imported.animations[0].name, "walk");
    EXPECT_EQ(imported.animations[0].seconds, 2);
    EXPECT_EQ(imported.animations[0].channels, 2);
    EXPECT_EQ(imported.animations[1].name, "");
    EXPECT_EQ(imported.animations[1].seconds, 2.5);
    EXPECT_EQ(imported.animations[2].name, "r\xc3\xbcn");
    EXPECT_EQ(imported.animations[2].channels, 0);
    EXPECT_EQ(
        imported.warnings,
        (std::vector<std::string>{
            "animation 'r\xc3\xbcn': name was not UTF-8, read as Latin-1",
            "animation of nodes that are not there left out (2)",
            "animations left out beside the one imported (--animation chooses another) (2)"}));
}

TEST(Clips, FormatsThatSayNothingCountFrames) {
    EXPECT_EQ(WithClip(k3ds, 60, 0).animations[0].seconds, 2);
    EXPECT_EQ(WithClip("Some Importer", 50, 0).animations[0].seconds, 2);
}

TEST(Clips, ASenselessLengthIsNone) {
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double duration : {-5.0, infinity, std::numeric_limits<double>::quiet_NaN()}) {
        const ImportedScene imported = WithClip("Some Importer", duration, 24);
        EXPECT_EQ(imported.animations[0].seconds, 0);
        EXPECT_EQ(imported.scene.time.end, 0);
    }
    EXPECT_EQ(WithClip("Some Importer", 1e300, 24).scene.time.end, std::numeric_limits<int>::max());
}

TEST(TimeRange, AHundredFramesWithoutAClip) {
    const Time time = SourceScene("Some Importer").Convert().scene.time;
    EXPECT_EQ(time.frameRate, 30);
    EXPECT_EQ(time.ticksPerFrame, 160);
    EXPECT_EQ(time.start, 0);
    EXPECT_EQ(time.end, 16000);
}

TEST(TimeRange, TheFirstClipsLength) {
    const Time time = WithClip(kGltf, 2500, 1000).scene.time;
    EXPECT_EQ(time.frameRate, 30);
    EXPECT_EQ(time.start, 0);
    EXPECT_EQ(time.end, 12000);
}

TEST(TimeRange, FbxStatesItsFrameRate) {
    const std::pair<int, int> kModes[] = {
        {1, 120}, {2, 100}, {3, 60},  {4, 50},  {5, 48},    {6, 30},  {7, 30},  {8, 30},
        {9, 30},  {10, 25}, {11, 24}, {13, 24}, {12, 1000}, {15, 96}, {16, 72}, {17, 60}};
    for (const auto& [mode, rate] : kModes) {
        EXPECT_EQ(FbxTime(mode).frameRate, rate) << mode;
        EXPECT_EQ(FbxTime(mode).ticksPerFrame, 4800 / rate) << mode;
        EXPECT_EQ(FbxTime(mode).end, 100 * (4800 / rate)) << mode;
    }
    EXPECT_EQ(FbxTime(14, 12).frameRate, 12);
}

TEST(TimeRange, FbxWithoutAUsableFrameRateIsAt30) {
    for (const int mode : {0, -1, 18, 99}) {
        EXPECT_EQ(FbxTime(mode).frameRate, 30) << mode;
    }
    for (const double custom : {-1.0, 0.0, 1e9, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(FbxTime(14, custom).frameRate, 30) << custom;
    }
}

TEST(TimeRange, BvhStatesItsFrameTime) {
    const Time time = WithClip(kBvh, 240, 119.9904).scene.time;
    EXPECT_EQ(time.frameRate, 120);
    EXPECT_EQ(time.ticksPerFrame, 40);
    EXPECT_EQ(time.end, 9601);  // 240 / 119.9904 s
}

// Seconds in the exported files are ticks divided by frame rate times ticks per frame.
TEST(TimeRange, TheEndIsInTheTicksOfTheFrameRate) {
    SourceScene source(kFbx, "RootNode");
    source.Set("FrameRate", 12);  // 1000 frames a second, 4 ticks each
    source.AddAnimation("walk", 2000, 1000);
    EXPECT_EQ(source.Convert().scene.time.end, 8000);
}

// Where the frame rate does not divide 4800, a second has a few ticks less.
TEST(TimeRange, TheEndIsInTheTicksOfARateThatDoesNotDivide4800) {
    const Time time = WithClip(kBvh, 29, 29).scene.time;
    EXPECT_EQ(time.frameRate, 29);
    EXPECT_EQ(time.ticksPerFrame, 165);
    EXPECT_EQ(time.end, 4785);
}
