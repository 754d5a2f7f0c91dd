#include "kta/texture_files.h"

#include <gtest/gtest.h>

#include "tests/support/temporary_directory.h"

namespace {

namespace fs = std::filesystem;

class TextureFinderTest : public testing::Test {
  protected:
    fs::path Make(const std::string& name) {
        const fs::path path = fs::path(directory_.Path()) / name;
        fs::create_directories(path.parent_path());
        support::WriteFile(path.string(), "x");
        return path;
    }

    fs::path In(const std::string& name) const { return fs::path(directory_.Path()) / name; }

    support::TemporaryDirectory directory_;
};

TEST_F(TextureFinderTest, LooksByTheBaseName) {
    const fs::path brick = Make("actor/brick.png");
    kta::TextureFinder finder(In("actor"), {});
    for (const char* const name :
         {"brick.png", "C:\\maps\\brick.png", "/maps/brick.png", "maps\\../brick.png"}) {
        EXPECT_EQ(finder.Find(name), brick) << name;
    }
    for (const char* const name : {"", ".", "..", "maps/", "brick", "brick.png/", "other.png"}) {
        EXPECT_EQ(finder.Find(name), std::nullopt) << name;
    }
}

TEST_F(TextureFinderTest, BesideTheActorFileBeforeOtherFolders) {
    const fs::path beside = Make("actor/both.png");
    Make("first/both.png");
    const fs::path first = Make("first/one.png");
    Make("second/one.png");
    const fs::path second = Make("second/two.png");
    kta::TextureFinder finder(In("actor"), {In("first"), In("second")});
    EXPECT_EQ(finder.Find("both.png"), beside);
    EXPECT_EQ(finder.Find("one.png"), first);
    EXPECT_EQ(finder.Find("two.png"), second);
    EXPECT_EQ(kta::TextureFinder(std::nullopt, {}).Find("both.png"), std::nullopt);
}

// Subfolders count in the folders that were named, and beside the actor file they do not.
TEST_F(TextureFinderTest, Subfolders) {
    Make("actor/maps/inner.png");
    Make("named/b/c/deep.png");
    const fs::path shallow = Make("named/z/deep.png");
    Make("named/z/y.png");
    const fs::path first = Make("named/a/y.png");
    kta::TextureFinder finder(In("actor"), {In("named")});
    EXPECT_EQ(finder.Find("inner.png"), std::nullopt);
    EXPECT_EQ(finder.Find("deep.png"), shallow);
    EXPECT_EQ(finder.Find("y.png"), first);
}

TEST_F(TextureFinderTest, CapitalLettersMatterOnlyWhereBothAre) {
    const fs::path small = Make("actor/brick.png");
    const fs::path large = Make("actor/Wood.TGA");
    kta::TextureFinder finder(In("actor"), {});
    EXPECT_EQ(finder.Find("BRICK.PNG"), small);
    EXPECT_EQ(finder.Find("wood.tga"), large);
    Make("named/deep/Stone.png");
    const fs::path same = Make("named/deep/stone.png");
    EXPECT_EQ(kta::TextureFinder(std::nullopt, {In("named")}).Find("stone.png"), same);
}

TEST_F(TextureFinderTest, FoldersAreNoTextures) {
    Make("actor/brick.png/inside.txt");
    kta::TextureFinder finder(In("actor"), {In("missing")});
    EXPECT_EQ(finder.Find("brick.png"), std::nullopt);
}

TEST_F(TextureFinderTest, TellsWhereItLooks) {
    EXPECT_EQ(kta::TextureFinder(fs::path("a"), {"b", "c/d"}).WhereItLooks(), "in a, b, c/d");
    EXPECT_EQ(kta::TextureFinder(fs::path(), {}).WhereItLooks(), "in .");
    EXPECT_EQ(kta::TextureFinder(std::nullopt, {}).WhereItLooks(), "no folder");
}

}  // namespace
