#include "host/app/file_mark.h"

#include <gtest/gtest.h>

#include "tests/unit/host/app/support.h"

namespace maxhost::app {
namespace {

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

}  // namespace
}  // namespace maxhost::app
