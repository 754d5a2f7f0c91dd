#include "host/app/export_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#ifndef _WIN32
#include <sys/resource.h>

#include <csignal>
#endif

#include "tests/support/kta_bytes.h"
#include "tests/unit/host/app/support.h"

namespace maxhost::app {
namespace {

// ---------------------------------------------------------------- the export's files

namespace fs = std::filesystem;
using testing::ElementsAre;

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
    EXPECT_EQ(files.Log(), Path("x.hdo.log"));
}

TEST_F(ExportFilesTest, WhatIsMadeComesToItsPlaceTogether) {
    Write(First(), "earlier");
    Write("other", "the user's");
    {
        ExportFiles files(Export());
        files.Prepare();
        EXPECT_FALSE(files.AnyWritten());
        const std::string made = files.PrivateName();
        EXPECT_EQ(fs::path(made).filename(), "x.hdo");
        Write(made + "temp1", "actor");
        EXPECT_TRUE(files.AnyWritten());
        Write(made + "temp2", "motion");
        Write(made, "of the converter");
        Write(files.WorkingDirectory() / "KTAExporter.log", "log");
        EXPECT_TRUE(files.HasLog());
        EXPECT_EQ(Read(First()), "earlier");
        files.PutInPlace();
        EXPECT_TRUE(files.IsInPlace());
    }
    EXPECT_THAT(Names(), ElementsAre("other", "x.hdo", "x.hdo.log", "x.hdotemp1", "x.hdotemp2"));
    EXPECT_EQ(Read(First()), "actor");
    EXPECT_EQ(Read(Second()), "motion");
    EXPECT_EQ(Read(Export()), "of the converter");
    EXPECT_EQ(Read("x.hdo.log"), "log");
    EXPECT_EQ(Read("other"), "the user's");
}

TEST_F(ExportFilesTest, WhatCannotComeToItsPlaceLeavesAllFormerFiles) {
    Write(First(), "earlier");
    {
        ExportFiles files(Export());
        files.Prepare();
        const std::string made = files.PrivateName();
        for (const char* const suffix : {"", "temp1", "temp2"}) {
            Write(made + suffix, "now");
        }
        // The export file's own name comes last.
        fs::create_directories(Export() / "not empty");
        EXPECT_THROW(files.PutInPlace(), fs::filesystem_error);
        EXPECT_FALSE(files.IsInPlace());
    }
    EXPECT_THAT(Names(), ElementsAre("x.hdo", "x.hdotemp1"));
    EXPECT_EQ(Read(First()), "earlier");
}

// As a batch makes them: both were looked at before either came to its place.
class TwoExports : public ExportFilesTest {
  protected:
    void SetUp() override {
        for (ExportFiles* const files : {&first_, &second_}) {
            files->AddTextures(TextureFiles({{"t.png", files == &first_ ? "red" : other_}},
                                            directory_, ReplacesFiles::no));
            EXPECT_EQ(files->TextureObstacle({}), "");
            files->Prepare();
            Write(files->PrivateName() + "temp1", "actor");
        }
        first_.PutInPlace();
    }

    std::string other_ = "red";
    ExportFiles first_{Path("a.hdo")};
    ExportFiles second_{Path("b.hdo")};
};

TEST_F(TwoExports, HaveOneTextureOfOneContent) {
    second_.PutInPlace();
    EXPECT_EQ(Read("t.png"), "red");
    EXPECT_EQ(Read("a.hdotemp1"), "actor");
    EXPECT_EQ(Read("b.hdotemp1"), "actor");
}

class TwoOtherExports : public TwoExports {
  protected:
    TwoOtherExports() { other_ = "blu"; }
};

TEST_F(TwoOtherExports, DoNotReplaceEachOthersTexture) {
    try {
        second_.PutInPlace();
        ADD_FAILURE();
    } catch (const fs::filesystem_error& error) {
        EXPECT_EQ(error.path1(), Path("t.png"));
        EXPECT_EQ(error.code(), std::errc::file_exists);
    }
    EXPECT_FALSE(second_.IsInPlace());
    EXPECT_EQ(Read("t.png"), "red");
    EXPECT_FALSE(fs::exists("b.hdotemp1"));
    EXPECT_EQ(second_.TextureObstacle({}),
              Path("t.png").string() +
                  ": stands there with another content, expected room for a texture of the scene "
                  "(--textures DIR puts them into DIR and replaces files there)");
}

TEST_F(ExportFilesTest, TexturesDoNotTakeThePlaceOfALinkThatLeadsNowhere) {
    std::error_code error;
    fs::create_symlink("gone.png", "t.png", error);
    if (error) {
        GTEST_SKIP() << "no symbolic links: " << error.message();
    }
    for (const ReplacesFiles replaces : {ReplacesFiles::no, ReplacesFiles::yes}) {
        const TextureFiles textures({{"t.png", "red"}}, directory_, replaces);
        EXPECT_EQ(textures.Obstacle({}).find(Path("t.png").string() + ": is no regular file"), 0u);
    }
}

TEST_F(ExportFilesTest, WhatIsNotPutInPlaceIsGone) {
    {
        ExportFiles files(Export());
        files.Prepare();
        Write(files.PrivateName() + "temp1", "now");
    }
    EXPECT_TRUE(Names().empty());
}

TEST_F(ExportFilesTest, LogStandsWhereItIsToStand) {
    ExportFiles files(Export(), Path("l.log"));
    EXPECT_EQ(files.Log(), Path("l.log"));
    files.Prepare();
    Write(files.WorkingDirectory() / "KTAExporter.log", "log");
    files.WriteLog();
    EXPECT_EQ(Read("l.log"), "log");
    files.PutInPlace();
    EXPECT_FALSE(fs::exists("x.hdo.log"));
}

TEST_F(ExportFilesTest, LogWithoutItsDirectoryIsAnError) {
    ExportFiles files(Export(), Path("no/l.log"));
    files.Prepare();
    EXPECT_NO_THROW(files.WriteLog()) << "there is no log yet";
    Write(files.WorkingDirectory() / "KTAExporter.log", "log");
    try {
        files.WriteLog();
        ADD_FAILURE();
    } catch (const fs::filesystem_error& error) {
        EXPECT_EQ(error.path1(), Path("no/l.log"));
        EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
    }
}

TEST_F(ExportFilesTest, ConverterSpeaksOfTheUsersFile) {
    ExportFiles files(Export());
    files.Prepare();
    const std::string made = files.PrivateName();
    EXPECT_EQ(files.InUsersWords(made + "temp1: bad, as is " + made + "temp2"),
              First() + ": bad, as is " + Second());
    EXPECT_EQ(files.InUsersWords("called out of order"), "called out of order");
}

TEST_F(ExportFilesTest, GoodFilesHaveNoFaults) {
    ExportFiles files(Export());
    files.Prepare();
    Write(files.Files()[0].made, support::FileHeader(true));
    Write(files.Files()[1].made, support::FileHeader(false));
    files.Verify();
    for (const OutputFile& file : files.Files()) {
        EXPECT_TRUE(file.reading.file);
        EXPECT_EQ(file.faults, std::vector<std::string>());
    }
}

TEST_F(ExportFilesTest, AFileThatWasReadAheadCountsWhereItIsTheSame) {
    ExportFiles files(Export());
    files.Prepare();
    Write(files.Files()[0].made, support::FileHeader(true));
    files.ReadAhead();
    Write(files.Files()[1].made, support::FileHeader(false));
    files.Verify();
    EXPECT_TRUE(files.Files()[0].reading.file);
    EXPECT_EQ(files.Files()[0].faults, std::vector<std::string>());
}

TEST_F(ExportFilesTest, AFileThatChangesAfterItWasReadAheadIsReadAgain) {
    ExportFiles files(Export());
    files.Prepare();
    Write(files.Files()[0].made, support::FileHeader(true));
    files.ReadAhead();
    Write(files.Files()[0].made, support::FileHeader(true).substr(0, 6));
    Write(files.Files()[1].made, support::FileHeader(false));
    files.Verify();
    EXPECT_FALSE(files.Files()[0].reading.file);
    ASSERT_EQ(files.Files()[0].faults.size(), 1u);
    EXPECT_EQ(files.Files()[0].faults[0].find(First() + ": offset "), 0u);
}

TEST_F(ExportFilesTest, BrokenAndMissingFilesAreFaults) {
    ExportFiles files(Export());
    files.Prepare();
    Write(files.Files()[0].made, support::FileHeader(true).substr(0, 6));
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
    files.Prepare();
    Write(files.Files()[0].made, support::FileHeader(false));
    Write(files.Files()[1].made, support::FileHeader(true));
    files.Verify();
    EXPECT_EQ(files.Files()[0].faults,
              std::vector<std::string>{
                  First() + ": offset 6: header: file kind is \"motion\", expected \"actor\""});
    EXPECT_EQ(files.Files()[1].faults,
              std::vector<std::string>{
                  Second() + ": offset 6: header: file kind is \"actor\", expected \"motion\""});
}

TEST_F(ExportFilesTest, ObstaclesAreTold) {
    EXPECT_EQ(ExportFiles(Path("no/x.hdo")).Obstacle(),
              "the directory " + Path("no").string() + " does not exist");
    Write("f", "");
    EXPECT_EQ(ExportFiles(Path("f/x.hdo")).Obstacle(), Path("f").string() + " is not a directory");
    const ExportFiles files(Export());
    EXPECT_EQ(files.Obstacle(), "");
    Write(First(), "earlier");
    EXPECT_EQ(files.Obstacle(), "");
    fs::create_directory(Second());
    EXPECT_EQ(files.Obstacle(), Second() + " is a directory");
}

TEST_F(ExportFilesTest, PathsAreBoundedInBytes) {
    const std::string directory = directory_.string();
    const std::string fits(259 - directory.size() - 1 - 5, 'x');
    ExportFiles longest(Path(fits));
    EXPECT_EQ(longest.Files()[0].path.string().size(), 259u);
    EXPECT_EQ(longest.Obstacle(), "");
    EXPECT_EQ(
        ExportFiles(Path(fits + "x")).Obstacle(),
        "the path of " + Path(fits + "xtemp1").string() + " has 260 bytes, expected at most 259");
#ifndef _WIN32
    // The private path does not fit, so that the exporter is given one that begins where it works.
    longest.Prepare();
    EXPECT_EQ(longest.PrivateName(), "o/" + fits);
    EXPECT_EQ(longest.WorkingDirectory() / longest.PrivateName() += "temp1",
              longest.Files()[0].made);
    EXPECT_EQ(longest.InUsersWords("o/" + fits + "temp1: bad"), Path(fits + "temp1: bad").string());
#endif
}

TEST_F(ExportFilesTest, PartsThatTheLogSaysWereClosedAreWhole) {
    ExportFiles files(Export());
    files.Prepare();
    EXPECT_TRUE(files.Parts().empty());
    EXPECT_EQ(files.FirstMissing().path, First());
    Write(files.Files()[0].made, "now");
    EXPECT_EQ(files.FirstMissing().path, Second());
    EXPECT_THAT(files.Parts(),
                ElementsAre(First() + ": left behind by the failed export, not a whole one"));
    Write(files.WorkingDirectory() / "KTAExporter.log",
          "Writing file header version 1.1\r\nClosing file\r\n");
    Write(files.Files()[1].made, "begun");
    EXPECT_THAT(files.Parts(),
                ElementsAre(First() + ": left behind by the failed export, but whole "
                                      "and given to the converter",
                            Second() + ": left behind by the failed export, not a "
                                       "whole one"));
}

TEST_F(ExportFilesTest, EarlierFilesAreOneLine) {
    EXPECT_EQ(ExportFiles(Export()).EarlierFiles(), "");
    Write(First(), "earlier");
    const std::string earlier = ": made by an earlier export, not by this one";
    EXPECT_EQ(ExportFiles(Export()).EarlierFiles(), First() + earlier);
    Write(Second(), "earlier");
    ExportFiles files(Export());
    EXPECT_EQ(files.EarlierFiles(), First() + ", " + Second() + earlier);
    files.Prepare();
    files.PutInPlace();
    EXPECT_EQ(files.EarlierFiles(), "");
}

#ifndef _WIN32
TEST_F(ExportFilesTest, WritingThatFailsIsToldByItsReason) {
    ExportFiles files(Export());
    files.Prepare();
    Write(files.Files()[0].made, std::string(5000, 'a'));
    Write(files.Files()[1].made, std::string(10, 'm'));
    EXPECT_TRUE(files.WriteErrors().empty());
    EXPECT_EQ(fs::file_size(files.Files()[0].made), 5000u) << "left as it was";
    rlimit former{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &former), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit tight = {5000, former.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &tight), 0);
    const std::vector<std::string> errors = files.WriteErrors();
    setrlimit(RLIMIT_FSIZE, &former);
    std::signal(SIGXFSZ, handler);
    EXPECT_THAT(errors, ElementsAre(First() + ": File too large"));
    EXPECT_EQ(fs::file_size(files.Files()[0].made), 5000u);
    EXPECT_EQ(fs::file_size(files.Files()[1].made), 10u);
}
#endif

}  // namespace
}  // namespace maxhost::app
