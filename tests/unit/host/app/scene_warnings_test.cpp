#include "host/app/scene_warnings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/unit/host/app/support.h"

namespace maxhost::app {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

scene::Scene SceneOf(const std::vector<std::string>& names) {
    scene::Scene scene;
    for (const std::string& name : names) {
        scene.nodes.push_back(NamedNode(name));
    }
    return scene;
}

TEST(NameWarnings, DistinctNamesThatFitAreNoCause) {
    EXPECT_THAT(NameWarnings(SceneOf({})), IsEmpty());
    EXPECT_THAT(NameWarnings(SceneOf({"a", "A", "", std::string(259, 'x')})), IsEmpty());
}

TEST(NameWarnings, SharedNamesAreOneLine) {
    EXPECT_THAT(NameWarnings(SceneOf({"b", "a", "", "a", "b", "b", "c", ""})),
                ElementsAre("several nodes of one name, and the files tell parents by name: "
                            "\"b\" (3 nodes), \"a\" (2 nodes), \"\" (2 nodes)"));
}

TEST(NameWarnings, OnlyTheFirstNamesAreShown) {
    std::vector<std::string> names;
    for (int i = 0; i < 2 * 1000; ++i) {
        names.push_back(std::to_string(i % 1000));
    }
    EXPECT_THAT(NameWarnings(SceneOf(names)),
                ElementsAre("several nodes of one name, and the files tell parents by name: "
                            "\"0\" (2 nodes), \"1\" (2 nodes), \"2\" (2 nodes), \"3\" (2 nodes), "
                            "\"4\" (2 nodes) and 995 more"));
}

TEST(NameWarnings, LongNamesAreShownShort) {
    EXPECT_THAT(NameWarnings(SceneOf({"a", std::string(260, '\n')})),
                ElementsAre("node names of more than 259 bytes, which the files cut: \"" + [] {
                    std::string shown;
                    for (int i = 0; i < 40; ++i) {
                        shown += "\\x0a";
                    }
                    return shown;
                }() + "...\" (260 bytes)"));
}

TEST(NameWarnings, NamesThatDifferBehindTheCutAreShared) {
    const std::string same(259, 'x');
    const std::vector<std::string> warnings = NameWarnings(SceneOf({same + "1", same + "2"}));
    ASSERT_EQ(warnings.size(), 2u);
    EXPECT_THAT(warnings[1], testing::HasSubstr(std::string(40, 'x') + "...\" (2 nodes)"));
}

}  // namespace
}  // namespace maxhost::app
