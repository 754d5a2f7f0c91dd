#include "host/app/export_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "tests/support/kta_bytes.h"
#include "tests/unit/host/app/support.h"

namespace maxhost::app {
namespace {

// ---------------------------------------------------------------- whether a file was written

class FileMarkTest : public InDirectory {};

TEST_F(FileMarkTest, FileThatIsLeftAloneIsNotWritten) {
    Write("f", "earlier");
    const FileMark mark("f");
    EXPECT_TRUE(mark.IsThere());
    EXPECT_FALSE(mark.IsWritten());
}

// The clock of file systems stands still for milliseconds.
TEST_F(FileMarkTest, SameTextWrittenAtOnceIsWritten) {
    for (int i = 0; i < 5; ++i) {
        Write("f", "same");
        const FileMark mark("f");
        Write("f", "same");
        EXPECT_TRUE(mark.IsWritten());
    }
}

TEST_F(FileMarkTest, NewFileIsWritten) {
    const FileMark mark("f");
    EXPECT_FALSE(mark.IsThere());
    EXPECT_FALSE(mark.IsWritten());
    Write("f", "");
    EXPECT_TRUE(mark.IsThere());
    EXPECT_TRUE(mark.IsWritten());
}

TEST_F(FileMarkTest, FileThatIsGoneAndDirectoriesAreNotWritten) {
    Write("f", "earlier");
    const FileMark gone("f");
    std::filesystem::remove("f");
    EXPECT_FALSE(gone.IsThere());
    EXPECT_FALSE(gone.IsWritten());
    const FileMark directory("f");
    std::filesystem::create_directory("f");
    EXPECT_FALSE(directory.IsThere());
    EXPECT_FALSE(directory.IsWritten());
}

// ---------------------------------------------------------------- the two files

namespace fs = std::filesystem;

class ExportFilesTest : public InDirectory {
  protected:
    fs::path Export() const { return Path("x.hdo"); }
    std::string First() const { return Path("x.hdotemp1").string(); }
    std::string Second() const { return Path("x.hdotemp2").string(); }
};

TEST_F(ExportFilesTest, FilesAreNamedAfterTheExportFile) {
    const ExportFiles files(Export());
    ASSERT_EQ(files.Files().size(), 2u);
    EXPECT_EQ(files.Files()[0].path, First());
    EXPECT_EQ(files.Files()[1].path, Second());
}

TEST_F(ExportFilesTest, OnlyThisExportsWritingCounts) {
    Write(First(), support::FileHeader(true));
    const ExportFiles files(Export());
    EXPECT_FALSE(files.AnyWritten());
    Write(Second(), support::FileHeader(false));
    EXPECT_TRUE(files.AnyWritten());
}

TEST_F(ExportFilesTest, GoodFilesHaveNoFaults) {
    ExportFiles files(Export());
    Write(First(), support::FileHeader(true));
    Write(Second(), support::FileHeader(false));
    files.Verify();
    for (const OutputFile& file : files.Files()) {
        EXPECT_TRUE(file.reading.file);
        EXPECT_EQ(file.faults, std::vector<std::string>());
    }
}

TEST_F(ExportFilesTest, BrokenAndMissingFilesAreFaults) {
    ExportFiles files(Export());
    Write(First(), support::FileHeader(true).substr(0, 6));
    files.Verify();
    const std::string names[] = {First() + ": offset ", Second() + ": "};
    for (std::size_t i = 0; i < 2; ++i) {
        const std::vector<std::string>& faults = files.Files()[i].faults;
        ASSERT_EQ(faults.size(), 1u);
        EXPECT_EQ(faults[0].find(names[i]), 0u) << faults[0];
    }
}

TEST_F(ExportFilesTest, FilesOfTheWrongKindAreFaults) {
    ExportFiles files(Export());
    Write(First(), support::FileHeader(false));
    Write(Second(), support::FileHeader(true));
    files.Verify();
    EXPECT_EQ(files.Files()[0].faults,
              std::vector<std::string>{
                  First() + ": offset 6: header: file kind is \"motion\", expected \"actor\""});
    EXPECT_EQ(files.Files()[1].faults,
              std::vector<std::string>{
                  Second() + ": offset 6: header: file kind is \"actor\", expected \"motion\""});
}

TEST_F(ExportFilesTest, ReasonsForFilesThatWereNotMade) {
    EXPECT_EQ(ExportFiles(Path("no/x.hdo")).WhyNotMade(),
              "the directory " + Path("no").string() + " does not exist");
    Write("f", "");
    EXPECT_EQ(ExportFiles(Path("f/x.hdo")).WhyNotMade(),
              Path("f").string() + " is not a directory");
    const ExportFiles files(Export());
    EXPECT_EQ(files.WhyNotMade(), First() + " cannot be written");
    fs::create_directory(First());
    EXPECT_EQ(files.WhyNotMade(), First() + " is a directory");
}

TEST_F(ExportFilesTest, TheSecondFileIsAtFaultWhenTheFirstWasMade) {
    const ExportFiles files(Export());
    fs::create_directory(Second());
    Write(First(), "made");
    EXPECT_EQ(files.WhyNotMade(), Second() + " is a directory");
}

TEST_F(ExportFilesTest, PathsAreBoundedInBytes) {
    const std::string directory = directory_.string();
    const std::string fits(259 - directory.size() - 1 - 5, 'x');
    const ExportFiles longest(Path(fits));
    EXPECT_EQ(longest.Files()[0].path.string().size(), 259u);
    EXPECT_EQ(longest.WhyNotMade(), Path(fits + "temp1").string() + " cannot be written");
    EXPECT_EQ(
        ExportFiles(Path(fits + "x")).WhyNotMade(),
        "the path of " + Path(fits + "xtemp1").string() + " has 260 bytes, expected at most 259");
}

TEST_F(ExportFilesTest, LeftoversTellThisExportFromAnEarlierOne) {
    Write(Second(), "earlier");
    const ExportFiles files(Export());
    EXPECT_EQ(files.Leftovers({}),
              std::vector<std::string>{Second() + ": made by an earlier export, not by this one"});
    Write(First(), "now");
    Write(Second(), "written over");
    EXPECT_EQ(files.Leftovers({}),
              (std::vector<std::string>{
                  First() + ": left behind by the failed export, not a whole one",
                  Second() + ": left behind by the failed export, not a whole one"}));
}

TEST_F(ExportFilesTest, LeftoversThatTheLogSaysWereClosedAreWhole) {
    const ExportFiles files(Export());
    Write(First(), "now");
    Write("log", "Writing file header version 1.1\r\nClosing file\r\n");
    EXPECT_EQ(files.Leftovers("log"),
              std::vector<std::string>{First() + ": left behind by the failed export, but whole "
                                                 "and given to the converter"});
    Write(Second(), "begun");
    EXPECT_EQ(files.Leftovers("log").back(),
              Second() + ": left behind by the failed export, not a whole one");
}

TEST_F(ExportFilesTest, NothingLeftBehindIsNoLine) {
    fs::create_directory(First());
    EXPECT_TRUE(ExportFiles(Export()).Leftovers({}).empty());
    EXPECT_EQ(ExportFiles(Export()).EarlierFiles(), "");
}

TEST_F(ExportFilesTest, EarlierFilesAreOneLine) {
    Write(First(), "earlier");
    const std::string earlier = ": made by an earlier export, not by this one";
    EXPECT_EQ(ExportFiles(Export()).EarlierFiles(), First() + earlier);
    Write(Second(), "earlier");
    const ExportFiles files(Export());
    EXPECT_EQ(files.EarlierFiles(), First() + ", " + Second() + earlier);
    Write(First(), "now");
    EXPECT_EQ(files.EarlierFiles(), Second() + earlier);
}

// ---------------------------------------------------------------- faults

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

// ---------------------------------------------------------------- summary

using SummaryTest = InDirectory;

TEST_F(SummaryTest, CountsFilesChunksAndNodes) {
    ExportFiles files(Path("x.hdo"));
    Write("x.hdotemp1",
          support::FileHeader(true) + support::NodeChunk({}) + support::NodeChunk({}));
    Write("x.hdotemp2", support::FileHeader(false));
    files.Verify();
    const std::vector<std::string> lines = Summarize(
        files.Files(), {.nodes = {{"node", "hidden"}, {"node", nullptr}, {"node", nullptr}},
                        .log = Path("l.log")});
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[0],
              Path("x.hdotemp1").string() + ": actor file, 1295 bytes, 2 chunks (2 node)");
    EXPECT_EQ(lines[1], Path("x.hdotemp2").string() + ": motion file, 7 bytes, 0 chunks");
    EXPECT_EQ(lines[2], Path("l.log").string() + ": log");
    EXPECT_EQ(lines[3], "exported 2 of 3 nodes");
    EXPECT_EQ(lines[4], "not exported: \"node\": hidden");
}

TEST_F(SummaryTest, WarningsAreCountedAndMissingThingsLeftOut) {
    ExportFiles files(Path("x.hdo"));
    files.Verify();
    const std::vector<std::string> lines =
        Summarize(files.Files(), {.nodes = {{"a", nullptr}}, .warnings = 2});
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], "exported 0 of 1 node");
    EXPECT_EQ(lines[1], "2 warnings from reading the scene");
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
