#include "host/app/places.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "host/app/exit_status.h"
#include "tests/unit/host/app/support.h"

namespace maxhost::app {
namespace {

// ---------------------------------------------------------------- places

namespace fs = std::filesystem;

class PlacesTest : public InDirectory {
  protected:
    std::string ExportFileFor(const std::string& scene) const {
        Options options;
        options.scene = scene;
        return ExportFile(options).lexically_relative(directory_).generic_string();
    }
};

TEST_F(PlacesTest, ExportFileHasTheScenesName) {
    EXPECT_EQ(ExportFileFor("x.maxscene.json"), "x.hdo");
    EXPECT_EQ(ExportFileFor("x.fbx"), "x.hdo");
    EXPECT_EQ(ExportFileFor("sub/x.y.fbx"), "sub/x.y.hdo");
    EXPECT_EQ(ExportFileFor("x.json"), "x.hdo");
    EXPECT_EQ(ExportFileFor("x"), "x.hdo");
    EXPECT_EQ(ExportFileFor("X.MaxScene.JSON"), "X.hdo");
    EXPECT_EQ(ExportFileFor(".maxscene.json"), ".maxscene.hdo");
    EXPECT_EQ(ExportFileFor("../x.fbx"), "../x.hdo");
}

TEST_F(PlacesTest, ExportFileIsAbsolute) {
    Options options;
    options.scene = "x.fbx";
    options.output = "sub/../out.HDO";
    EXPECT_EQ(ExportFile(options), Path("out.HDO"));
}

TEST_F(PlacesTest, ExportFileIsNoDirectory) {
    fs::create_directories("d/x.hdo");
    for (const char* const output :
         {".", "..", "./", "d", "d/", "d/.", "d/x.hdo", "no/", "no/.."}) {
        Options options;
        options.scene = "x.fbx";
        options.output = output;
        const Thrown thrown = Catch([&] { ExportFile(options); });
        EXPECT_EQ(thrown.status, kExitRefused) << output;
        EXPECT_EQ(thrown.line,
                  std::string(output) + ": names a directory, expected a file to export to");
    }
    Options options;
    options.scene = "d/x.fbx";
    EXPECT_EQ(Catch([&] { ExportFile(options); }).line,
              Path("d/x.hdo").make_preferred().string() +
                  ": names a directory, expected a file to export to");
}

TEST_F(PlacesTest, DirectoriesLoseTheirLastSeparator) {
    EXPECT_EQ(Absolute("d/"), Path("d"));
    EXPECT_EQ(Absolute("."), directory_);
    EXPECT_EQ(Absolute("d/.."), directory_);
#ifndef _WIN32
    EXPECT_EQ(Absolute("/"), "/");
#endif
}

TEST_F(PlacesTest, DefaultsAreBesideTheProgram) {
    const fs::path program = ProgramDirectory();
    EXPECT_TRUE(program.is_absolute());
    const Options options;
    EXPECT_EQ(PlugInDirectories(options), std::vector<std::string>{program.string()});
    EXPECT_EQ(PlugInFile(options).parent_path(), program);
    EXPECT_EQ(PlugInFile(options).stem(), "hdoexport");
}

TEST_F(PlacesTest, GivenPlacesAreMadeAbsolute) {
    Options options;
    options.plugin = "p.so";
    options.pluginDirs = {"b", "a/"};
    options.configDir = "c";
    EXPECT_EQ(PlugInFile(options), Path("p.so"));
    EXPECT_EQ(PlugInDirectories(options),
              (std::vector<std::string>{Path("b").string(), Path("a").string()}));
    EXPECT_EQ(ConfigDirectory(options), Path("c"));
    EXPECT_EQ(SettingsFile(Path("c")), Path("c") / "KTAExp2.cfg");
}

#ifndef _WIN32

// Sets a variable of the environment for a while.
class Variable {
  public:
    Variable(const char* name, const char* value) : name_(name) {
        if (const char* const former = std::getenv(name)) {
            former_ = former;
        }
        Set(value);
    }
    ~Variable() { Set(former_ ? former_->c_str() : nullptr); }

  private:
    void Set(const char* value) { value ? setenv(name_, value, 1) : unsetenv(name_); }

    const char* name_;
    std::optional<std::string> former_;
};

TEST_F(PlacesTest, ConfigDirectoryIsTheUsers) {
    const Variable home("HOME", "/home/u");
    {
        const Variable xdg("XDG_CONFIG_HOME", "/conf");
        EXPECT_EQ(ConfigDirectory(Options()), "/conf/hdo-export");
    }
    {
        const Variable xdg("XDG_CONFIG_HOME", "relative");
        EXPECT_EQ(ConfigDirectory(Options()), "/home/u/.config/hdo-export");
    }
    const Variable xdg("XDG_CONFIG_HOME", nullptr);
    EXPECT_EQ(ConfigDirectory(Options()), "/home/u/.config/hdo-export");
}

TEST_F(PlacesTest, UserWithoutConfigDirectoryIsTold) {
    const Variable home("HOME", nullptr);
    const Variable xdg("XDG_CONFIG_HOME", nullptr);
    const Thrown thrown = Catch([] { ConfigDirectory(Options()); });
    EXPECT_EQ(thrown.status, kExitRefused);
    EXPECT_EQ(thrown.line,
              "--config-dir: not given, expected one where the user has no configuration "
              "directory");
}

#endif

// ---------------------------------------------------------------- settings

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
