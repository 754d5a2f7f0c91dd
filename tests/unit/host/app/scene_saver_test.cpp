#include "host/app/scene_saver.h"

#include <gtest/gtest.h>

#include <limits>
#include <thread>

#include "host/app/exit_status.h"
#include "host/app/scene_loader.h"
#include "tests/unit/host/app/support.h"

#ifndef _WIN32
#include <sys/resource.h>

#include <csignal>
#endif

namespace maxhost::app {
namespace {

class SceneSaverTest : public InDirectory {
  protected:
    static scene::Scene Sample() {
        scene::Scene scene;
        scene.nodes = {NamedNode("saved")};
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

TEST_F(SceneSaverTest, FilesBesideItStay) {
    Write("s.json.partial", "the user's");
    SaveScene(Sample(), "s.json");
    EXPECT_EQ(Names(), (std::vector<std::string>{"s.json", "s.json.partial"}));
    EXPECT_EQ(Read("s.json.partial"), "the user's");
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
              "no/s.json: the scene cannot be saved: no file can be made there (" +
                  std::make_error_code(std::errc::no_such_file_or_directory).message() + ")");
    std::filesystem::create_directory("d");
    EXPECT_EQ(Catch([] { SaveScene(Sample(), "d"); }).line,
              "d: is not a regular file, expected a file to write to");
    EXPECT_EQ(Names(), std::vector<std::string>{"d"});
}

#ifndef _WIN32
TEST_F(SceneSaverTest, SavesSideBySideAreEachWhole) {
    std::vector<std::thread> savers;
    for (int i = 0; i < 4; ++i) {
        savers.emplace_back([i] {
            scene::Scene scene;
            scene.nodes.assign(static_cast<std::size_t>(1 + 50 * i), NamedNode("n"));
            for (int k = 0; k < 20; ++k) {
                SaveScene(scene, "s" + std::to_string(i % 2) + ".json");
            }
        });
    }
    for (std::thread& saver : savers) {
        saver.join();
    }
    EXPECT_EQ(LoadScene("s0.json").scene.nodes.size() % 100, 1u);
    EXPECT_EQ(LoadScene("s1.json").scene.nodes.size() % 100, 51u);
    EXPECT_EQ(Names(), (std::vector<std::string>{"s0.json", "s1.json"}));
}

TEST_F(SceneSaverTest, SymbolicLinksStay) {
    Write("target.json", "former");
    std::filesystem::create_symlink("target.json", "link.json");
    SaveScene(Sample(), "link.json");
    EXPECT_TRUE(std::filesystem::is_symlink("link.json"));
    EXPECT_EQ(LoadScene("target.json").scene.nodes.size(), 1u);
}

TEST_F(SceneSaverTest, FullDiskIsNoticed) {
    Write("s.json", "former");
    rlimit former{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &former), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit tight = {10, former.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &tight), 0);
    const Thrown thrown = Catch([] { SaveScene(Sample(), "s.json"); });
    setrlimit(RLIMIT_FSIZE, &former);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(thrown.line, "s.json: the scene cannot be saved: writing failed");
    EXPECT_EQ(Names(), std::vector<std::string>{"s.json"});
    EXPECT_EQ(Read("s.json"), "former");
}
#endif

}  // namespace
}  // namespace maxhost::app
