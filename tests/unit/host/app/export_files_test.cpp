#include "host/app/export_files.h"

#include <gtest/gtest.h>

#include "tests/support/kta_bytes.h"
#include "tests/unit/host/app/support.h"

namespace maxhost::app {
namespace {

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
    EXPECT_EQ(files.Leftovers(),
              std::vector<std::string>{Second() + ": made by an earlier export, not by this one"});
    Write(First(), "now");
    Write(Second(), "written over");
    EXPECT_EQ(files.Leftovers(),
              (std::vector<std::string>{
                  First() + ": left behind by the failed export, not a whole one",
                  Second() + ": left behind by the failed export, not a whole one"}));
}

TEST_F(ExportFilesTest, NothingLeftBehindIsNoLine) {
    fs::create_directory(First());
    EXPECT_TRUE(ExportFiles(Export()).Leftovers().empty());
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

}  // namespace
}  // namespace maxhost::app
