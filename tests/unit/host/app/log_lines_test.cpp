#include "host/app/log_lines.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/unit/host/app/support.h"

namespace maxhost::app {
namespace {

TEST(LogLines, TellTheNodeAndTheStage) {
    EXPECT_EQ(ReadLogLine("- Exporting node 'It's'").node, "It's");
    EXPECT_STREQ(ReadLogLine("- Exporting node 'a'").stage, "nodes");
    EXPECT_STREQ(ReadLogLine("- Exporting motionpart 'a'").stage, "motion");
    EXPECT_EQ(ReadLogLine("Bones influencing node 'b':").node, "b");
    EXPECT_EQ(ReadLogLine("Bones influencing node 'b':").stage, nullptr);
    EXPECT_EQ(ReadLogLine("Closing file").node, "");
    EXPECT_FALSE(ReadLogLine("  + Parent = 'a'").node);
    EXPECT_FALSE(ReadLogLine("  + Parent = 'a'").isWarning);
    EXPECT_TRUE(ReadLogLine("WARNING: The mesh is too large and is left out").isWarning);
}

using WarningsInTest = InDirectory;

TEST_F(WarningsInTest, OfOneKindAreOneForANode) {
    Write("l",
          "- Exporting node 'a'\nWARNING: Vertex 3 has 300 weights\n"
          "WARNING: Vertex 14 has 256 weights\n- Exporting node 'b'\n"
          "WARNING: Vertex 1 has 257 weights\nClosing file\nWARNING: other\n");
    const std::vector<ExporterWarning> warnings = WarningsIn(Path("l"));
    ASSERT_EQ(warnings.size(), 3u);
    EXPECT_EQ(warnings[0].node, "a");
    EXPECT_EQ(warnings[0].text, "WARNING: Vertex # has # weights");
    EXPECT_EQ(warnings[0].count, 2u);
    EXPECT_EQ(warnings[1].node, "b");
    EXPECT_EQ(warnings[1].count, 1u);
    EXPECT_EQ(warnings[2].node, "");
}

TEST(StageTimes, SumUpByStageAndNode) {
    StageTimes times;
    for (const char* const line :
         {"Writing file header version 1.1", "Exporting material list", "- Exporting node 'a'",
          "  + Parent = ''", "- Exporting node 'b'", "- Exporting node 'a'", "Closing file"}) {
        times.OnText(line);
    }
    times.Stop();
    std::vector<std::string> stages, nodes;
    for (const SpentTime& time : times.Stages()) {
        stages.push_back(time.name);
    }
    EXPECT_TRUE(std::ranges::is_sorted(times.Stages(), std::greater(), &SpentTime::seconds));
    for (const SpentTime& time : times.Nodes()) {
        nodes.push_back(time.name);
    }
    std::sort(stages.begin(), stages.end());
    std::sort(nodes.begin(), nodes.end());
    EXPECT_EQ(stages, (std::vector<std::string>{"beginning", "converter", "materials", "nodes"}));
    EXPECT_EQ(nodes, (std::vector<std::string>{"a", "b"}));
}

}  // namespace
}  // namespace maxhost::app
