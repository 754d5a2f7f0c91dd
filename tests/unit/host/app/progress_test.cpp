#include "host/app/progress.h"

#include <gtest/gtest.h>

#include <sstream>

namespace maxhost::app {
namespace {

class ProgressTest : public testing::Test {
  protected:
    // What was written since the last call.
    std::string Written() {
        const std::string text = error_.str();
        error_.str("");
        return text;
    }

    std::ostringstream out_, error_;
    Console console_{out_, error_};
    ProgressBar bar_{console_};
};

TEST_F(ProgressTest, ShowsTitleAndShare) {
    bar_.OnStart("Exporting object...");
    EXPECT_EQ(Written(), "\r[..............................]   0% Exporting object...");
    bar_.OnUpdate(50);
    EXPECT_EQ(Written(), "\r[###############...............]  50% Exporting object...");
    bar_.OnUpdate(100);
    EXPECT_EQ(Written(), "\r[##############################] 100% Exporting object...");
    bar_.OnEnd();
    EXPECT_EQ(Written(), "\r" + std::string(57, ' ') + "\r");
}

TEST_F(ProgressTest, RedrawsOnlyWhatChanges) {
    bar_.OnStart("");
    bar_.OnUpdate(7);
    Written();
    bar_.OnUpdate(7);
    EXPECT_EQ(Written(), "");
    bar_.OnUpdate(8);
    EXPECT_NE(Written(), "");
}

TEST_F(ProgressTest, StandsNumbersOutOfRangeAndLongTitles) {
    bar_.OnStart(std::string(1000, 'x') + "\n");
    EXPECT_LE(Written().size(), 80u);
    bar_.OnUpdate(-5);
    EXPECT_EQ(Written(), "") << "still 0";
    bar_.OnUpdate(2000000000);
    EXPECT_NE(Written().find("] 100%"), std::string::npos);
}

}  // namespace
}  // namespace maxhost::app
