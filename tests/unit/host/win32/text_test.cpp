#include "host/win32/text.h"

#include <gtest/gtest.h>

namespace win32 {
namespace {

TEST(EqualIgnoringCase, ComparesAsciiLettersOnly) {
    EXPECT_TRUE(EqualIgnoringCase(".DLL", ".dll"));
    EXPECT_FALSE(EqualIgnoringCase(".dll", ".dl"));
    EXPECT_FALSE(EqualIgnoringCase("@", "`"));
}

TEST(Utf8FromUtf16, EncodesEveryLength) {
    EXPECT_EQ(Utf8FromUtf16(u"a\u00e9\u20ac\U0001f600"), "a\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80");
}

TEST(Utf8FromUtf16, ReplacesLoneSurrogates) {
    const char16_t high[] = {0xd83d, u'a'};
    EXPECT_EQ(Utf8FromUtf16({high, 2}),
              "\xef\xbf\xbd"
              "a");
    EXPECT_EQ(Utf8FromUtf16({high, 1}), "\xef\xbf\xbd");
    const char16_t low[] = {0xde00};
    EXPECT_EQ(Utf8FromUtf16({low, 1}), "\xef\xbf\xbd");
}

TEST(CutUtf8, NeverCutsACharacter) {
    const std::string text =
        "a\xe2\x82\xac"
        "b";
    EXPECT_EQ(CutUtf8(text, 5), text);
    EXPECT_EQ(CutUtf8(text, 4), "a\xe2\x82\xac");
    EXPECT_EQ(CutUtf8(text, 3), "a");
    EXPECT_EQ(CutUtf8(text, 2), "a");
    EXPECT_EQ(CutUtf8(text, 1), "a");
    EXPECT_EQ(CutUtf8(text, 0), "");
}

}  // namespace
}  // namespace win32
