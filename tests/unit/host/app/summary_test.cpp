#include "host/app/summary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "tests/support/kta_bytes.h"
#include "tests/unit/host/app/support.h"

namespace maxhost::app {
namespace {

using testing::ElementsAre;

// ---------------------------------------------------------------- faults

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

// ---------------------------------------------------------------- summary

using SummaryTest = InDirectory;

TEST_F(SummaryTest, CountsFilesChunksAndNodes) {
    ExportFiles files(Path("x.hdo"));
    files.Prepare();
    Write(files.Files()[0].made,
          support::FileHeader(true) + support::NodeChunk({}) + support::NodeChunk({}));
    Write(files.Files()[1].made, support::FileHeader(false));
    files.Verify();
    const std::vector<std::string> lines =
        Summarize(files.Files(), {.nodes = {{"node", &scene::KindOf(scene::LossCode::nodeHidden)},
                                            {"node", nullptr},
                                            {"node", nullptr}},
                                  .log = Path("l.log"),
                                  .options = "--morphers"});
    ASSERT_EQ(lines.size(), 6u);
    EXPECT_EQ(lines[0],
              Path("x.hdotemp1").string() + ": actor file, 1295 bytes, 2 chunks (2 node)");
    EXPECT_EQ(lines[1], Path("x.hdotemp2").string() + ": motion file, 7 bytes, 0 chunks");
    EXPECT_EQ(lines[2], Path("l.log").string() + ": log");
    EXPECT_EQ(lines[3], "options: --morphers");
    EXPECT_EQ(lines[4], "exported 2 of 3 nodes");
    EXPECT_EQ(lines[5], "not exported: \"node\": hidden");
}

TEST_F(SummaryTest, WarningsAreCountedAndMissingThingsLeftOut) {
    ExportFiles files(Path("x.hdo"));
    files.Verify();
    const std::vector<std::string> lines =
        Summarize(files.Files(), {.nodes = {{"a", nullptr}}, .warnings = 2});
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[1], "exported 0 of 1 node");
    EXPECT_EQ(lines[2], "2 warnings from reading the scene");
}

TEST_F(SummaryTest, LostVertexColoursAreSaid) {
    ExportFiles files(Path("x.hdo"));
    files.Verify();
    EXPECT_EQ(Summarize(files.Files(), {.nodes = {{"a", nullptr}}, .coloredMeshes = 1}).back(),
              "not exported: vertex colours of 1 mesh");
    EXPECT_EQ(Summarize(files.Files(), {.nodes = {{"a", nullptr}}, .coloredMeshes = 3}).back(),
              "not exported: vertex colours of 3 meshes");
}

}  // namespace
}  // namespace maxhost::app
