#include "host/app/settings.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/unit/host/app/support.h"

namespace maxhost::app {
namespace {

namespace fs = std::filesystem;

class SettingsTest : public InDirectory {};

TEST_F(SettingsTest, FormerSettingsStayWhenNoneWereSaved) {
    Write("k.cfg", "former");
    {
        const DefaultSettings defaults(Path("k.cfg"));
        EXPECT_TRUE(fs::is_directory(defaults.Directory()));
        EXPECT_TRUE(fs::is_empty(defaults.Directory()));
        EXPECT_EQ(Read("k.cfg"), "former");
    }
    EXPECT_EQ(Read("k.cfg"), "former");
    EXPECT_EQ(Names(), std::vector<std::string>{"k.cfg"});
}

TEST_F(SettingsTest, SavedSettingsReplaceTheFormer) {
    Write("k.cfg", "former");
    {
        const DefaultSettings defaults(Path("k.cfg"));
        Write(defaults.Directory() / "k.cfg", "new");
        EXPECT_EQ(Read("k.cfg"), "former");
    }
    EXPECT_EQ(Read("k.cfg"), "new");
    EXPECT_EQ(Names(), std::vector<std::string>{"k.cfg"});
}

TEST_F(SettingsTest, NoSettingsStayNone) {
    { const DefaultSettings defaults(Path("k.cfg")); }
    EXPECT_TRUE(Names().empty());
}

TEST_F(SettingsTest, RunsSideBySideAreNotInEachOthersWay) {
    Write("k.cfg", "former");
    Write("k.cfg.former", "the user's");
    {
        const DefaultSettings first(Path("k.cfg"));
        Write(first.Directory() / "k.cfg", "first");
        {
            const DefaultSettings second(Path("k.cfg"));
            EXPECT_TRUE(fs::is_empty(second.Directory()));
            Write(second.Directory() / "k.cfg", "second");
        }
        EXPECT_EQ(Read("k.cfg"), "second");
    }
    EXPECT_EQ(Read("k.cfg"), "first");
    EXPECT_EQ(Names(), (std::vector<std::string>{"k.cfg", "k.cfg.former"}));
    EXPECT_EQ(Read("k.cfg.former"), "the user's");
}

TEST_F(SettingsTest, WithoutAPlaceForThemSettingsAreDropped) {
    Write("cfg", "not a directory");
    fs::path used;
    {
        const DefaultSettings defaults(Path("cfg") / "k.cfg");
        used = defaults.Directory();
        Write(used / "k.cfg", "new");
    }
    EXPECT_FALSE(fs::exists(used));
    EXPECT_EQ(Names(), std::vector<std::string>{"cfg"});
    EXPECT_EQ(Read("cfg"), "not a directory");
}

#ifndef _WIN32
TEST_F(SettingsTest, SymbolicLinksStay) {
    Write("target.cfg", "former");
    fs::create_symlink("target.cfg", "k.cfg");
    {
        const DefaultSettings defaults(Path("k.cfg"));
        Write(defaults.Directory() / "k.cfg", "new");
    }
    EXPECT_TRUE(fs::is_symlink("k.cfg"));
    EXPECT_EQ(Read("target.cfg"), "new");
}
#endif

}  // namespace
}  // namespace maxhost::app
