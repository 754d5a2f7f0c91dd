#include "host/app/console.h"

#include <gtest/gtest.h>

#include <sstream>

namespace maxhost::app {
namespace {

class ConsoleTest : public testing::Test {
  protected:
    std::ostringstream out_, error_;
    Console console_{out_, error_};
};

TEST_F(ConsoleTest, MessagesHaveOneForm) {
    console_.Report("scene.fbx", "what is wrong");
    EXPECT_EQ(error_.str(), "hdo-export: scene.fbx: what is wrong\n");
    EXPECT_EQ(out_.str(), "");
}

TEST_F(ConsoleTest, MessagesAreOneLineWhateverTheTexts) {
    console_.Report("sce\nne", "what\r\nis\n\nwrong\n");
    EXPECT_EQ(error_.str(), "hdo-export: sce ne: what is wrong\n");
}

TEST_F(ConsoleTest, WarningsSayThatTheyAre) {
    console_.Warn("scene.fbx", "2 lines dropped");
    EXPECT_EQ(error_.str(), "hdo-export: scene.fbx: warning: 2 lines dropped\n");
}

TEST_F(ConsoleTest, ResultsGoToStandardOutput) {
    console_.Print("a\tb");
    EXPECT_EQ(out_.str(), "a\tb\n");
    EXPECT_EQ(error_.str(), "");
}

TEST_F(ConsoleTest, TheBarMakesWayForMessages) {
    console_.ShowBar("#####");
    console_.ShowBar("##");
    console_.Report("a", "b");
    EXPECT_EQ(error_.str(), "\r#####\r##   \r  \rhdo-export: a: b\n");
}

TEST_F(ConsoleTest, HidingNoBarWritesNothing) {
    console_.HideBar();
    console_.Print("line");
    EXPECT_EQ(error_.str(), "");
}

TEST_F(ConsoleTest, FlushTellsOfALostResult) {
    EXPECT_TRUE(console_.Flush());
    out_.setstate(std::ios::badbit);
    EXPECT_FALSE(console_.Flush());
}

TEST(ConsoleEnd, ClearsTheBar) {
    std::ostringstream out, error;
    { Console(out, error).ShowBar("###"); }
    EXPECT_EQ(error.str(), "\r###\r   \r");
}

}  // namespace
}  // namespace maxhost::app
