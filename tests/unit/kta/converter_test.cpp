#include <gtest/gtest.h>

#include <string>

#include "host/converter/haldenexport.h"
#include "tests/unit/kta/sample.h"

namespace {

using namespace sample;

class ConverterTest : public testing::Test {
  protected:
    void Export(const std::string& actor, const std::string& motion) {
        InitSpecialHalden("C:\\plugins", "C:\\scenes\\tree.hdo", true);
        WriteKTActorFile(actor.c_str());
        WriteKTMotionFile(motion.c_str());
        WriteKTMotionFile(nullptr);
        EndSpecialHalden();
    }

    const std::string actor_ = Save("actor", ActorFile({{}}));
    const std::string motion_ = Save("motion", kMotion);
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

}  // namespace
