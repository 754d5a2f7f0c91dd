// docs/warnings.md holds the table of losses, row by row.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>
#include <string>

#include "host/scene/losses.h"
#include "tests/support/temporary_directory.h"

namespace maxhost::scene {
namespace {

std::string RowOf(const LossKind& kind) {
    return std::string("| `") + kind.code + "` | " + kind.text + " | " + kind.meaning + " | " +
           kind.remedy + " |";
}

TEST(WarningsPage, SaysWhatTheTableSays) {
    std::vector<std::string> expected, rows;
    for (const LossStage stage :
         {LossStage::import, LossStage::names, LossStage::exporting, LossStage::run}) {
        for (const LossKind& kind : LossKinds()) {
            if (kind.stage == stage) {
                expected.push_back(RowOf(kind));
            }
        }
    }
    std::istringstream page(support::ReadFile(WARNINGS_PAGE));
    for (std::string line; std::getline(page, line);) {
        if (line.starts_with("| `")) {
            rows.push_back(line);
        }
    }
    EXPECT_EQ(rows, expected);
}

TEST(LossKinds, HaveCodesOfTheirOwnInOneForm) {
    std::set<std::string> codes;
    for (const LossKind& kind : LossKinds()) {
        const std::string code = kind.code;
        EXPECT_TRUE(codes.insert(code).second) << code;
        EXPECT_EQ(code.find_first_not_of("abcdefghijklmnopqrstuvwxyz-"), std::string::npos) << code;
        EXPECT_GE(code.find('-'), 2u) << code;
        for (const char* const sentence : {kind.meaning, kind.remedy}) {
            EXPECT_TRUE(std::string(sentence).ends_with('.')) << code;
        }
        EXPECT_EQ(std::string(kind.text).find('|'), std::string::npos) << "a table's own sign";
        EXPECT_EQ(&KindOf(kind.value), &kind);
    }
}

}  // namespace
}  // namespace maxhost::scene
