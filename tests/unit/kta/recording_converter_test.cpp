#include "tests/support/recording_converter.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/unit/kta/scratch.h"

namespace {

TEST(RecordingConverterTest, WritesDownEveryCall) {
    ResetRecordedCalls();
    EXPECT_STREQ(RecordedCalls(), "");
    const std::string actor = sample::Save("recorded", std::string(639, '\0'));
    const std::string missing = sample::ScratchPath("missing");
    InitSpecialHalden("C:\\dir", "a.hdo", true);
    WriteKTActorFile(actor.c_str());
    WriteKTMotionFile(missing.c_str());
    WriteKTMotionFile(nullptr);
    EndSpecialHalden();
    EXPECT_EQ(RecordedCalls(),
              "InitSpecialHalden(\"C:\\dir\", \"a.hdo\", true)\n"
              "WriteKTActorFile(\"" +
                  actor +
                  "\") 639 bytes\n"
                  "WriteKTMotionFile(\"" +
                  missing +
                  "\") no file\n"
                  "WriteKTMotionFile(null)\n"
                  "EndSpecialHalden()");
}

TEST(RecordingConverterTest, SizeIsTheOneAtTheTimeOfTheCall) {
    ResetRecordedCalls();
    const std::string path = sample::Save("growing", std::string(7, '\0'));
    WriteKTMotionFile(path.c_str());
    sample::Save("growing", std::string(9, '\0'));
    WriteKTMotionFile(path.c_str());
    EXPECT_EQ(RecordedCalls(), "WriteKTMotionFile(\"" + path + "\") 7 bytes\n" +
                                   "WriteKTMotionFile(\"" + path + "\") 9 bytes");
}

TEST(RecordingConverterTest, NullTextsAndReset) {
    ResetRecordedCalls();
    InitSpecialHalden(nullptr, nullptr, false);
    WriteKTActorFile(nullptr);
    EXPECT_STREQ(RecordedCalls(), "InitSpecialHalden(null, null, false)\nWriteKTActorFile(null)");
    ResetRecordedCalls();
    EXPECT_STREQ(RecordedCalls(), "");
}

}  // namespace
