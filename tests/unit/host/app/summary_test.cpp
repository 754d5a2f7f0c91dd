#include "host/app/summary.h"

#include <gtest/gtest.h>

#include "tests/support/kta_bytes.h"
#include "tests/unit/host/app/support.h"

namespace maxhost::app {
namespace {

using SummaryTest = InDirectory;

TEST_F(SummaryTest, CountsFilesChunksAndNodes) {
    ExportFiles files(Path("x.hdo"));
    Write("x.hdotemp1",
          support::FileHeader(true) + support::NodeChunk({}) + support::NodeChunk({}));
    Write("x.hdotemp2", support::FileHeader(false));
    files.Verify();
    const std::vector<std::string> lines = Summarize(files.Files(), {3, 0, Path("l.log")});
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0],
              Path("x.hdotemp1").string() + ": actor file, 1295 bytes, 2 chunks (2 node)");
    EXPECT_EQ(lines[1], Path("x.hdotemp2").string() + ": motion file, 7 bytes, 0 chunks");
    EXPECT_EQ(lines[2], Path("l.log").string() + ": log");
    EXPECT_EQ(lines[3], "exported 2 of 3 nodes");
}

TEST_F(SummaryTest, WarningsAreCountedAndMissingThingsLeftOut) {
    ExportFiles files(Path("x.hdo"));
    files.Verify();
    const std::vector<std::string> lines = Summarize(files.Files(), {1, 2, {}});
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], "exported 0 of 1 node");
    EXPECT_EQ(lines[1], "2 warnings from reading the scene");
}

TEST_F(SummaryTest, LostVertexColoursAreSaid) {
    ExportFiles files(Path("x.hdo"));
    files.Verify();
    EXPECT_EQ(Summarize(files.Files(), {1, 0, {}, 1}).back(),
              "not exported: vertex colours of 1 mesh");
    EXPECT_EQ(Summarize(files.Files(), {1, 0, {}, 3}).back(),
              "not exported: vertex colours of 3 meshes");
}

}  // namespace
}  // namespace maxhost::app
