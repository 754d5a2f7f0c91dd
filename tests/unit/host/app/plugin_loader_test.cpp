#include "host/app/plugin_loader.h"

#include <gtest/gtest.h>

#include "host/app/exit_status.h"
#include "tests/unit/host/app/support.h"

namespace maxhost::app {
namespace {

const std::vector<std::string> kWithConverter = {SILENT_CONVERTER_DIR};

class PlugInLoaderTest : public InDirectory {
  protected:
    static Thrown Refusal(const std::string& file = FAKE_PLUGIN,
                          const std::vector<std::string>& directories = kWithConverter) {
        return Catch([&] { LoadExporter(file, directories); });
    }
    FakePlugInBehaviour& plugIn_ = ResetFakePlugIn();
};

TEST_F(PlugInLoaderTest, MakesAndDeletesOneExporter) {
    {
        const Exporter exporter = LoadExporter(FAKE_PLUGIN, kWithConverter);
        ASSERT_TRUE(exporter);
        EXPECT_STREQ(exporter->Ext(0), "FAKE");
        EXPECT_EQ(plugIn_.exporters, 1);
    }
    EXPECT_EQ(plugIn_.exporters, 0);
}

TEST_F(PlugInLoaderTest, TakesTheFirstExporterOfTheClasses) {
    plugIn_.classes = 3;
    EXPECT_TRUE(LoadExporter(FAKE_PLUGIN, kWithConverter));
}

TEST_F(PlugInLoaderTest, OtherVersionsAreRefused) {
    plugIn_.version = 0x3A982600;
    const Thrown thrown = Refusal();
    EXPECT_EQ(thrown.status, kExitNoPlugIn);
    EXPECT_EQ(thrown.line,
              FAKE_PLUGIN ": made for version 0x3A982600 of the host, expected 0x36B02600");
    EXPECT_EQ(plugIn_.exporters, 0);
}

TEST_F(PlugInLoaderTest, PlugInWithoutExporterIsRefused) {
    plugIn_.superClass = 0xA10;
    EXPECT_EQ(Refusal().line, FAKE_PLUGIN ": offers no exporter");
    ResetFakePlugIn().classes = 0;
    EXPECT_EQ(Refusal().line, FAKE_PLUGIN ": offers no exporter");
    ResetFakePlugIn().makesExporter = false;
    EXPECT_EQ(Refusal().line, FAKE_PLUGIN ": makes no exporter");
    EXPECT_EQ(Refusal().status, kExitNoPlugIn);
}

TEST_F(PlugInLoaderTest, ModuleWithoutLibraryFunctionsIsRefused) {
    const Thrown thrown = Refusal(NO_PLUGIN);
    EXPECT_EQ(thrown.status, kExitNoPlugIn);
    EXPECT_EQ(thrown.line, NO_PLUGIN
              ": is no plug-in: does not export LibDescription, LibNumberClasses, LibClassDesc, "
              "LibVersion");
}

TEST_F(PlugInLoaderTest, FilesThatDoNotLoadAreNamed) {
    const std::string missing = Path("missing.so").string();
    const Thrown thrown = Refusal(missing);
    EXPECT_EQ(thrown.status, kExitNoPlugIn);
    EXPECT_EQ(thrown.line.find(missing + ": the plug-in did not load: "), 0u) << thrown.line;
    Write("text.so", "no module");
    EXPECT_EQ(Refusal(Path("text.so").string()).status, kExitNoPlugIn);
}

TEST_F(PlugInLoaderTest, MissingConverterIsNamedWithTheDirectoriesSearched) {
    const std::string none = directory_.string();
    const Thrown thrown = Refusal(REFUSING_PLUGIN, {none, "/nowhere"});
    EXPECT_EQ(thrown.status, kExitNoPlugIn);
    const std::string ending = "; no plug-in directory holds haldenexport: " + none + ", /nowhere";
    EXPECT_TRUE(thrown.line.ends_with(ending)) << thrown.line;
    const Thrown other = Refusal(REFUSING_PLUGIN, {none, SILENT_CONVERTER_DIR});
    EXPECT_EQ(other.status, kExitNoPlugIn);
    EXPECT_EQ(other.line.find("haldenexport"), std::string::npos) << other.line;
}

TEST_F(PlugInLoaderTest, ConverterThatCannotBeBoundIsNamed) {
    const std::string name =
        "haldenexport" + std::filesystem::path(REFUSING_PLUGIN).extension().string();
    const std::filesystem::path tooLong =
        directory_ / std::string(243 - directory_.string().size() - 1, 'd');
    std::filesystem::create_directories(tooLong);
    Write(tooLong / name, "any");
    EXPECT_TRUE(Refusal(REFUSING_PLUGIN, {tooLong.string()})
                    .line.ends_with("; " + tooLong.string() +
                                    " is too long a name, expected fewer than 260 characters with "
                                    "haldenexport.dll"));
    Write(Path(name), "no library");
    EXPECT_NE(Refusal(REFUSING_PLUGIN, {directory_.string()})
                  .line.find("; " + Path("haldenexport.dll").string() + " does not load: "),
              std::string::npos);
}

TEST(ConverterTest, MissingEntryPointsAreNamed) {
    const Thrown thrown = Catch([] {
        CheckConverter({"/nowhere", LACKING_CONVERTER_DIR, SILENT_CONVERTER_DIR});
    });
    EXPECT_EQ(thrown.status, kExitNoPlugIn);
    EXPECT_EQ(thrown.line,
              (std::filesystem::path(LACKING_CONVERTER_DIR) / "haldenexport.dll").string() +
                  ": is no converter library: does not export WriteKTMotionFile");
    EXPECT_EQ(Catch([] {
                  CheckConverter({SILENT_CONVERTER_DIR, LACKING_CONVERTER_DIR});
              }).status,
              -1)
        << "the first one counts";
    EXPECT_EQ(Catch([] { CheckConverter({"/nowhere"}); }).status, -1) << "the plug-in's matter";
}

TEST(ConverterTest, DirectoriesThatThePlugInPassesOverDoNotCount) {
    const std::string tooLong = "/" + std::string(260, 'x');
    EXPECT_EQ(Catch([&] {
                  CheckConverter({tooLong, LACKING_CONVERTER_DIR});
              }).status,
              kExitNoPlugIn);
    EXPECT_EQ(Catch([&] { CheckConverter({tooLong}); }).status, -1);
}

TEST(ConverterFaultsTest, AreTheLinesOfTheFirstConverter) {
    EXPECT_EQ(ConverterFaults({"/nowhere", COMPLAINING_CONVERTER_DIR, SILENT_CONVERTER_DIR}),
              (std::vector<std::string>{"first complaint", "second complaint"}));
    EXPECT_TRUE(ConverterFaults({SILENT_CONVERTER_DIR, COMPLAINING_CONVERTER_DIR}).empty());
    EXPECT_TRUE(ConverterFaults({"/nowhere"}).empty());
    EXPECT_TRUE(ConverterFaults({}).empty());
}

}  // namespace
}  // namespace maxhost::app
