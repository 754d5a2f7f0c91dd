#include "kta/text.h"

#include <gtest/gtest.h>

#include <vector>

namespace kta {
namespace {

TEST(Escaped, WritesControlCharactersAndBackslashes) {
    EXPECT_EQ(Escaped("Plain name 1"), "Plain name 1");
    EXPECT_EQ(Escaped("a\tb\nc\r"), "a\\x09b\\x0ac\\x0d");
    EXPECT_EQ(Escaped("\x7f\\"), "\\x7f\\\\");
    EXPECT_EQ(Escaped(std::string("\0", 1)), "\\x00");
    EXPECT_EQ(Escaped("\xc3\xa4"), "\xc3\xa4") << "other bytes stay";
}

TEST(OneLine, MakesOneBlankOfEveryRunOfControlCharacters) {
    EXPECT_EQ(OneLine("a b"), "a b");
    EXPECT_EQ(OneLine("a\r\nb\n"), "a b");
    EXPECT_EQ(OneLine("\na"), "a");
    EXPECT_EQ(OneLine("a. \nb"), "a. b");
    EXPECT_EQ(OneLine("\n"), "");
    EXPECT_EQ(OneLine("\x1b[31mred"), "[31mred");
}

TEST(Counted, AddsThePlural) {
    EXPECT_EQ(Counted(0, "node"), "0 nodes");
    EXPECT_EQ(Counted(1, "node"), "1 node");
    EXPECT_EQ(Counted(2, "node"), "2 nodes");
    EXPECT_EQ(Counted(1, "mesh"), "1 mesh");
    EXPECT_EQ(Counted(2, "mesh"), "2 meshes");
}

TEST(EndsWithIgnoringCase, ComparesTheLastLetters) {
    EXPECT_TRUE(EndsWithIgnoringCase("a.GlTf", ".gltf"));
    EXPECT_TRUE(EndsWithIgnoringCase(".gltf", ".gltf"));
    EXPECT_TRUE(EndsWithIgnoringCase("a", ""));
    EXPECT_FALSE(EndsWithIgnoringCase("gltf", ".gltf"));
    EXPECT_FALSE(EndsWithIgnoringCase("a.gltf ", ".gltf"));
    EXPECT_FALSE(EndsWithIgnoringCase("a.glt\x26", ".gltf"));
}

TEST(FirstFaults, CountsWhatItLeavesOut) {
    std::vector<std::string> lines;
    EXPECT_EQ(FirstFaults(lines, "f"), lines);
    for (std::size_t i = 0; i < kMostFaultLines; ++i) {
        lines.push_back(std::to_string(i));
    }
    EXPECT_EQ(FirstFaults(lines, "f"), lines);
    std::vector<std::string> shown = lines;
    shown.push_back("f: and 1 more fault");
    lines.push_back("20");
    EXPECT_EQ(FirstFaults(lines, "f"), shown);
    lines.push_back("21");
    shown.back() = "f: and 2 more faults";
    EXPECT_EQ(FirstFaults(lines, "f"), shown);
}

TEST(NearestWord, IsAThirdOfTheLettersAwayAtMost) {
    const std::vector<std::string> words = {"sample-rate", "scale", "select", "up"};
    EXPECT_EQ(NearestWord("sampel-rate", words), "sample-rate");  // two letters swapped: one away
    EXPECT_EQ(NearestWord("saple-rte", words), "sample-rate");
    EXPECT_EQ(NearestWord("scal", words), "scale");
    EXPECT_EQ(NearestWord("u", words), "up");
    EXPECT_EQ(NearestWord("pu", words), "up");
    EXPECT_EQ(NearestWord("selects", words), "select");
    EXPECT_EQ(NearestWord("rotate", words), "");
    EXPECT_EQ(NearestWord("", words), "");
    EXPECT_EQ(NearestWord(std::string(65, 'u'), words), "");
    EXPECT_EQ(NearestWord("scale", {}), "");
    EXPECT_EQ(NearestWord("b", {"a", "c"}), "a");  // the first of several
}

TEST(Joined, PutsCommasBetween) {
    EXPECT_EQ(Joined(std::vector<std::string>{}), "");
    EXPECT_EQ(Joined(std::vector<std::string>{"a"}), "a");
    EXPECT_EQ(Joined(std::vector<std::string>{"a", "b"}), "a, b");
}

}  // namespace
}  // namespace kta
