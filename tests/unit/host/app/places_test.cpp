#include "host/app/places.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <utility>
#include <vector>

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

TEST_F(PlacesTest, AnExportNeverReplacesItsScene) {
    Write("x.hdo", "scene");
    Write("y.hdotemp2", "scene");
    fs::create_directory("d");
    fs::create_hard_link("x.hdo", "d/same.hdo");
    const auto caught = [](const char* scene, const char* output) {
        Options options;
        options.scene = scene;
        options.output = output;
        return Catch([&] { ExportFile(options); });
    };
    for (const auto& [scene, output] : std::vector<std::pair<const char*, const char*>>{
             {"x.hdo", "x.hdo"}, {"./x.hdo", "d/same.hdo"}, {"y.hdotemp2", "y.hdo"}}) {
        const Thrown thrown = caught(scene, output);
        EXPECT_EQ(thrown.status, kExitRefused) << output;
        EXPECT_EQ(thrown.line, std::string(output) +
                                   ": the export would replace the scene itself, expected another "
                                   "file to export to");
    }
    EXPECT_EQ(caught("x.hdo", "y.hdo").line, "");
    Options options;
    options.scene = "x.hdo";
    EXPECT_EQ(Catch([&] { ExportFile(options); }).status, kExitRefused) << "by default";
    options.output = "z.hdo";
    options.saveScene = "./z.hdo";
    EXPECT_EQ(Catch([&] { ExportFile(options); }).line,
              "--save-scene: ./z.hdo is a file of the export, expected another one");
}

#ifndef _WIN32
TEST_F(PlacesTest, ADeviceIsNoExportFile) {
    Options options;
    options.scene = "x.fbx";
    options.output = "/dev/null";
    EXPECT_EQ(Catch([&] { ExportFile(options); }).line,
              "/dev/null: is not a regular file, expected a file to export to");
}
#endif

TEST_F(PlacesTest, LogIsAFileOfItsOwn) {
    Options options;
    options.scene = "x.fbx";
    options.output = "x.hdo";
    EXPECT_EQ(LogFile(options), std::nullopt);
    options.log = "sub/../l.log";
    EXPECT_EQ(LogFile(options), Path("l.log"));
    options.log = "d/";
    EXPECT_EQ(Catch([&] { LogFile(options); }).line,
              "d/: names a directory, expected a file for the log");
    for (const char* const name : {"x.hdo", "x.hdotemp1", "x.hdotemp2"}) {
        options.log = name;
        const Thrown thrown = Catch([&] { LogFile(options); });
        EXPECT_EQ(thrown.status, kExitRefused);
        EXPECT_EQ(thrown.line, "--log: " + Path(name).string() +
                                   " is a file of the export, expected another one");
    }
}

TEST_F(PlacesTest, NothingTakesThePlaceOfTheSceneOrOfAnotherFile) {
    const auto refusal = [&](auto change, auto file) {
        Options options;
        options.scene = "x.fbx";
        options.output = "x.hdo";
        change(options);
        return Catch([&] { file(options); }).line;
    };
    for (const char* const made : {"x.hdo.glb", "x.hdo.log"}) {
        EXPECT_EQ(refusal([&](Options& o) { o.scene = made; }, ExportFile),
                  "x.hdo: the export would replace the scene itself, expected another file to "
                  "export to");
        EXPECT_EQ(refusal([&](Options& o) { o.saveScene = made; }, ExportFile),
                  std::string("--save-scene: ") + made +
                      " is a file of the export, expected another one");
        EXPECT_EQ(
            refusal([&](Options& o) { o.receipt = made; }, ReceiptFile),
            "--receipt: " + Path(made).string() + " is a file of the export, expected another one");
    }
    EXPECT_EQ(
        refusal([](Options& o) { o.log = "x.hdo.glb"; }, LogFile),
        "--log: " + Path("x.hdo.glb").string() + " is a file of the export, expected another one");
    const std::string scene = Path("x.fbx").string() + " is the scene itself, expected another one";
    EXPECT_EQ(refusal([](Options& o) { o.log = "x.fbx"; }, LogFile), "--log: " + scene);
    EXPECT_EQ(refusal([](Options& o) { o.receipt = "x.fbx"; }, ReceiptFile), "--receipt: " + scene);
    EXPECT_EQ(refusal([](Options& o) { o.report = "x.fbx"; }, ReportFile), "--report: " + scene);
    EXPECT_EQ(
        refusal(
            [](Options& o) {
                o.receipt = "r";
                o.report = "r";
            },
            ReceiptFile),
        "--receipt: " + Path("r").string() + " is the file of --report, expected another one");
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

TEST_F(PlacesTest, RunsHaveNoConfigDirectoryUnlessAskedFor) {
    const Variable home("HOME", nullptr);
    EXPECT_EQ(ConfigDirectory(Options()), std::nullopt);
}

Options SavedSettings() {
    Options options;
    options.savedSettings = true;
    return options;
}

TEST_F(PlacesTest, ConfigDirectoryOfSavedSettingsIsTheUsers) {
    const Variable home("HOME", "/home/u");
    {
        const Variable xdg("XDG_CONFIG_HOME", "/conf");
        EXPECT_EQ(ConfigDirectory(SavedSettings()), "/conf/hdo-export");
    }
    {
        const Variable xdg("XDG_CONFIG_HOME", "relative");
        EXPECT_EQ(ConfigDirectory(SavedSettings()), "/home/u/.config/hdo-export");
    }
    const Variable xdg("XDG_CONFIG_HOME", nullptr);
    EXPECT_EQ(ConfigDirectory(SavedSettings()), "/home/u/.config/hdo-export");
}

TEST_F(PlacesTest, UserWithoutConfigDirectoryIsTold) {
    const Variable home("HOME", nullptr);
    const Variable xdg("XDG_CONFIG_HOME", nullptr);
    const Thrown thrown = Catch([] { ConfigDirectory(SavedSettings()); });
    EXPECT_EQ(thrown.status, kExitRefused);
    EXPECT_EQ(thrown.line,
              "--saved-settings: the user has no configuration directory, expected --config-dir in "
              "its place");
}

#endif

}  // namespace
}  // namespace maxhost::app
