#include "host/app/private_directory.h"

#include <gtest/gtest.h>

#include "tests/unit/host/app/support.h"

namespace maxhost::app {
namespace {

namespace fs = std::filesystem;

class PrivateDirectoryTest : public InDirectory {};

TEST_F(PrivateDirectoryTest, GoesWithAllItHolds) {
    {
        const PrivateDirectory room(directory_);
        EXPECT_TRUE(fs::is_directory(room.Path()));
        EXPECT_EQ(room.Path().parent_path(), directory_);
        Write(room.Path() / "f", "text");
    }
    EXPECT_TRUE(Names().empty());
}

TEST_F(PrivateDirectoryTest, EachHasItsOwn) {
    const PrivateDirectory first(directory_), second(directory_);
    EXPECT_NE(first.Path(), second.Path());
    EXPECT_EQ(Names().size(), 2u);
}

TEST_F(PrivateDirectoryTest, NeedsItsParent) {
    EXPECT_THROW(PrivateDirectory(Path("no")), fs::filesystem_error);
    Write("f", "");
    EXPECT_THROW(PrivateDirectory(Path("f")), fs::filesystem_error);
}

}  // namespace
}  // namespace maxhost::app
