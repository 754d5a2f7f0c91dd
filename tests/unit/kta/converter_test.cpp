#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "host/converter/haldenexport.h"
#include "tests/support/temporary_directory.h"
#include "tests/unit/kta/sample.h"

namespace {

using namespace sample;

class ConverterTest : public testing::Test {
  protected:
    void Export(const std::string& actor, const std::string& motion) {
        InitSpecialHalden("C:\\plugins", exportFile_.c_str(), true);
        WriteKTActorFile(actor.c_str());
        WriteKTMotionFile(motion.c_str());
        WriteKTMotionFile(nullptr);
        EndSpecialHalden();
    }

    const std::string actor_ = Save("actor", ActorFile({{}}));
    const std::string motion_ = Save("motion", kMotion);
    const std::string exportFile_ = ScratchPath("tree.hdo");
};

TEST_F(ConverterTest, GoodExportHasNoFaults) {
    Export(actor_, motion_);
    EXPECT_STREQ(SpecialHaldenFaults(), "");
}

TEST_F(ConverterTest, FaultsOfBothFilesAreKeptUntilTheNextExport) {
    const std::string faultyActor =
        Save("faulty_actor", ActorFile({{.isBone = 2, .hasHelperSize = 3}}));
    const std::string faultyMotion = Save("faulty_motion", "KT");
    Export(faultyActor, faultyMotion);
    EXPECT_EQ(SpecialHaldenFaults(),
              faultyActor + ": offset 643: node chunk: bone flag is 2, expected 0 or 1\n" +
                  faultyActor +
                  ": offset 644: node chunk: helper-size flag is 3, expected 0 or 1\n" +
                  faultyMotion + ": offset 0: header: cut off: 7 bytes expected, 2 are there");
    Export(actor_, motion_);
    EXPECT_STREQ(SpecialHaldenFaults(), "");
}

TEST_F(ConverterTest, ReadingThatIsLeftToTheCallerIsNotDone) {
    const std::string faulty = Save("faulty_actor", ActorFile({{.isBone = 2}}));
    SpecialHaldenLeaveReading(true);
    Export(faulty, motion_);
    EXPECT_STREQ(SpecialHaldenFaults(), "");
    WriteKTActorFile(actor_.c_str());
    EXPECT_STREQ(SpecialHaldenFaults(), "WriteKTActorFile: called out of order");
    SpecialHaldenLeaveReading(false);
    Export(faulty, motion_);
    EXPECT_STRNE(SpecialHaldenFaults(), "");
}

TEST_F(ConverterTest, FilesOfTheWrongKind) {
    Export(motion_, actor_);
    EXPECT_EQ(SpecialHaldenFaults(),
              motion_ + ": offset 6: header: file kind is \"motion\", expected \"actor\"\n" +
                  actor_ + ": offset 6: header: file kind is \"actor\", expected \"motion\"");
}

TEST_F(ConverterTest, MissingFileAndMissingName) {
    InitSpecialHalden(nullptr, nullptr, false);
    WriteKTActorFile(nullptr);
    const std::string missing = ScratchPath("missing");
    WriteKTMotionFile(missing.c_str());
    const std::string faults = SpecialHaldenFaults();
    const std::string expected =
        "WriteKTActorFile: no file name given\n" + missing + ": cannot be opened (";
    EXPECT_TRUE(faults.starts_with(expected)) << faults;
}

TEST_F(ConverterTest, CallsOutOfOrder) {
    Export(actor_, motion_);
    EndSpecialHalden();
    EXPECT_STREQ(SpecialHaldenFaults(), "EndSpecialHalden: called out of order");

    InitSpecialHalden("d", "f", true);
    WriteKTMotionFile(motion_.c_str());
    EndSpecialHalden();
    EXPECT_STREQ(SpecialHaldenFaults(),
                 "WriteKTMotionFile: called out of order\nEndSpecialHalden: called out of order");

    InitSpecialHalden("d", "f", true);
    WriteKTActorFile(actor_.c_str());
    WriteKTMotionFile(nullptr);
    WriteKTActorFile(actor_.c_str());
    EXPECT_STREQ(SpecialHaldenFaults(),
                 "WriteKTMotionFile(null): called out of order\n"
                 "WriteKTActorFile: called out of order");
}

// An export that is broken off after the actor file leaves nothing behind for the next one.
TEST_F(ConverterTest, BrokenOffExport) {
    InitSpecialHalden("d", "f", true);
    WriteKTActorFile(actor_.c_str());
    Export(actor_, motion_);
    EXPECT_STREQ(SpecialHaldenFaults(), "");
}

TEST_F(ConverterTest, APreviewStandsBesideTheExportFile) {
    const std::string preview = exportFile_ + ".glb";
    std::filesystem::remove(preview);
    Export(actor_, Save("faulty_motion", "KT"));
    EXPECT_FALSE(std::filesystem::exists(preview)) << "with a fault";
    Export(actor_, motion_);
    EXPECT_EQ(support::ReadFile(preview).substr(0, 4), "glTF");
}

// ---------------------------------------------------------------- the manifest

class ManifestTest : public ConverterTest {
  protected:
    ManifestTest() { std::filesystem::remove(exportFile_); }
    bool IsThere() const { return std::filesystem::exists(exportFile_); }
};

TEST_F(ManifestTest, TellsNamesKindsSizesAndHashes) {
    // What sha256sum says of the motion file's bytes, 4b 54 41 20 01 01 00.
    constexpr const char* kHash =
        "bde69d5013e2122aac71a000e80e537b991e5e5343aed439216fca35785e04a9";
    Export(actor_, motion_);
    EXPECT_STREQ(SpecialHaldenFaults(), "");
    const std::string text = support::ReadFile(exportFile_);
    const auto manifest = nlohmann::json::parse(text);
    EXPECT_EQ(manifest.at("haldenManifest"), 1);
    const auto& files = manifest.at("files");
    ASSERT_EQ(files.size(), 2u);
    EXPECT_EQ(files[0].at("name"), std::filesystem::path(actor_).filename().string());
    EXPECT_EQ(files[0].at("kind"), "actor");
    EXPECT_EQ(files[0].at("bytes"), std::filesystem::file_size(actor_));
    EXPECT_EQ(files[1].at("name"), std::filesystem::path(motion_).filename().string());
    EXPECT_EQ(files[1].at("kind"), "motion");
    EXPECT_EQ(files[1].at("bytes"), std::filesystem::file_size(motion_));
    EXPECT_EQ(files[1].at("sha256"), kHash);
    EXPECT_EQ(text.find(std::filesystem::path(actor_).parent_path().string()), std::string::npos)
        << "names stand without directories";
    Export(actor_, motion_);
    EXPECT_EQ(support::ReadFile(exportFile_), text);
}

TEST_F(ManifestTest, AFaultyExportLeavesNone) {
    Export(actor_, Save("faulty_motion", "KT"));
    EXPECT_FALSE(IsThere());
    InitSpecialHalden("d", exportFile_.c_str(), true);
    WriteKTActorFile(actor_.c_str());
    EXPECT_FALSE(IsThere()) << "before the end";
    EndSpecialHalden();
    EXPECT_FALSE(IsThere()) << "called out of order";
}

TEST_F(ManifestTest, WhatCannotBeWrittenIsAFault) {
    const std::string nowhere = ScratchPath("no") + "/tree.hdo";
    InitSpecialHalden("d", nowhere.c_str(), true);
    WriteKTActorFile(actor_.c_str());
    WriteKTMotionFile(motion_.c_str());
    WriteKTMotionFile(nullptr);
    EndSpecialHalden();
    EXPECT_EQ(SpecialHaldenFaults(), nowhere + ": No such file or directory");
    InitSpecialHalden("d", nullptr, true);
    WriteKTActorFile(actor_.c_str());
    WriteKTMotionFile(motion_.c_str());
    WriteKTMotionFile(nullptr);
    EndSpecialHalden();
    EXPECT_STREQ(SpecialHaldenFaults(), "InitSpecialHalden: no export file name given");
}

}  // namespace
