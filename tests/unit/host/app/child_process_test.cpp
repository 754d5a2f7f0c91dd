#include "host/app/child_process.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <system_error>
#include <thread>

#include "host/app/exit_status.h"
#include "tests/unit/host/app/support.h"

namespace maxhost::app {
namespace {

using How = ProcessEnd::How;
using std::chrono::steady_clock;

// Scenes' exports by the program itself; one of the node "hang-me" does not end.
class ChildProcessTest : public ProgramTest {
  protected:
    void SetUp() override {
        ProgramTest::SetUp();
        Write("hangs.maxscene.json", R"({"maxscene": 1, "nodes": [{"name": "hang-me"}]})");
    }
    std::vector<std::string> Hanging(const std::string& output) const {
        return {HDO_EXPORT,
                "-q",
                "--progress",
                "never",
                "--plugin-dir",
                HANGING_DIR,
                "-o",
                Path(output).string(),
                Path("hangs.maxscene.json").string()};
    }
    ProcessEnd Run(const std::vector<std::string>& command, const ProcessLimits& limits = {},
                   const std::atomic<bool>* stop = nullptr) const {
        return RunProcess(command, Path("out"), Path("error"), limits, stop);
    }
};

TEST_F(ChildProcessTest, TellsTheExitStatusAndKeepsWhatWasSaid) {
    const ProcessEnd good = Run({HDO_EXPORT, "--version"});
    EXPECT_EQ(good.how, How::exited);
    EXPECT_EQ(good.number, kExitDone);
    EXPECT_THAT(Lines(Read("out")), testing::ElementsAre("hdo-export " HDO_VERSION));
    const ProcessEnd bad = Run({HDO_EXPORT, "a name with \"quotes\" and \\"});
    EXPECT_EQ(bad.how, How::exited);
    EXPECT_EQ(bad.number, kExitRefused);
    EXPECT_THAT(Read("error"), testing::HasSubstr("a name with \"quotes\" and \\"));
}

TEST_F(ChildProcessTest, InputIsEmpty) {
    const ProcessEnd end = Run({HDO_EXPORT, "--list", "-"});
    EXPECT_EQ(end.how, How::exited);
    EXPECT_EQ(end.number, kExitRefused);
}

TEST_F(ChildProcessTest, ProgramThatIsNotThereThrows) {
    EXPECT_THROW(Run({Path("none").string()}), std::system_error);
}

TEST_F(ChildProcessTest, EndsWhatPassesALimit) {
    const ProcessEnd late = Run(Hanging("a.hdo"), {.seconds = 0.3});
    EXPECT_EQ(late.how, How::ranOutOfTime);
    EXPECT_GT(late.memory, 100'000u);
    EXPECT_EQ(Run(Hanging("a.hdo"), {.seconds = 60, .memory = 4096}).how, How::ranOutOfMemory);
}

TEST_F(ChildProcessTest, RunsSideBySideUntilStopped) {
    std::atomic<bool> stop = false;
    const auto run = [&](const std::string& name) {
        return std::async(std::launch::async, [this, name, &stop] {
            return RunProcess(Hanging(name + ".hdo"), Path(name + ".out"), Path(name + ".error"),
                              {.seconds = 60}, &stop);
        });
    };
    const auto start = steady_clock::now();
    std::future<ProcessEnd> one = run("one"), two = run("two");
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    stop = true;
    EXPECT_EQ(one.get().how, How::stopped);
    EXPECT_EQ(two.get().how, How::stopped);
    EXPECT_LT(steady_clock::now() - start, std::chrono::seconds(30));
}

}  // namespace
}  // namespace maxhost::app
