#include "host/app/faults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

namespace maxhost::app {
namespace {

using testing::ElementsAre;

std::vector<std::string> Faults(const std::string& beginning, std::size_t count) {
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < count; ++i) {
        lines.push_back(beginning + std::to_string(i));
    }
    return lines;
}

OutputFile FileWith(const char* path, std::vector<std::string> faults) {
    OutputFile file;
    file.path = path;
    file.faults = std::move(faults);
    return file;
}

TEST(FaultReport, ConverterAddsOnlyWhatTheFilesDoNotTell) {
    EXPECT_THAT(FaultReport({FileWith("a", {"a: 1", "a: 1", "a: 2"}), FileWith("b", {"b: 1"})},
                            {"b: 1", "called out of order", "a: 2"}),
                ElementsAre("a: 1", "a: 2", "b: 1", "called out of order"));
}

TEST(FaultReport, RestOfManyFaultsIsCountedFileByFile) {
    const std::vector<std::string> report = FaultReport(
        {FileWith("a", Faults("a: ", 20)), FileWith("b", Faults("b: ", 22))}, Faults("c: ", 21));
    ASSERT_EQ(report.size(), 20u + 21u + 21u);
    EXPECT_EQ(report[19], "a: 19");
    EXPECT_EQ(report[39], "b: 19");
    EXPECT_EQ(report[40], "b: and 2 more faults");
    EXPECT_EQ(report[61], "haldenexport: and 1 more fault");
}

// Comparing each line with every other would take minutes.
TEST(FaultReport, CostGrowsWithTheNumberOfLines) {
    const std::vector<std::string> lines =
        Faults("a: a line of a length as lines have it ", 200000);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(FaultReport({FileWith("a", lines)}, lines).size(), 21u);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

}  // namespace
}  // namespace maxhost::app
