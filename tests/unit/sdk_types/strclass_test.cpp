#include <gtest/gtest.h>
#include <strclass.h>

#include <climits>
#include <cstring>
#include <string>
#include <type_traits>

namespace {

CStr Text(const char* text) {
    return CStr(text);
}

}  // namespace

TEST(CStr, IsEmptyAndNeverNullAtFirst) {
    const CStr empty;
    ASSERT_NE(empty.data(), nullptr);
    EXPECT_STREQ(empty.data(), "");
    EXPECT_EQ(empty.Length(), 0);
    EXPECT_TRUE(empty.isNull());
    EXPECT_TRUE(CStr(static_cast<const char*>(nullptr)).isNull());
}

TEST(CStr, IsTheSdksStringUnderThreeNames) {
    EXPECT_TRUE((std::is_same_v<TSTR, CStr>));
    EXPECT_TRUE((std::is_same_v<MSTR, CStr>));
}

TEST(CStr, HoldsACopy) {
    char buffer[] = "Bip01";
    const CStr name(buffer);
    buffer[0] = 'X';
    EXPECT_STREQ(name.data(), "Bip01");
    EXPECT_EQ(name.Length(), 5);
    EXPECT_EQ(name.length(), 5);
    EXPECT_FALSE(name.isNull());
    CStr copy(name);
    copy[0] = 'Z';
    EXPECT_STREQ(name.data(), "Bip01");
    EXPECT_STREQ(copy.data(), "Zip01");
}

TEST(CStr, ConvertsToBothKindsOfPointers) {
    CStr text("abc");
    char* writable = text;
    const char* readable = text;
    const CStr constant("xyz");
    const char* fixed = constant;
    EXPECT_EQ(writable, readable);
    EXPECT_STREQ(fixed, "xyz");
    EXPECT_EQ(std::strlen(text), 3u);
}

TEST(CStr, WhatIsWrittenThroughAPointerCounts) {
    CStr text("abcdef");
    text.data()[3] = 0;
    EXPECT_EQ(text.Length(), 3);
    text += "X";
    EXPECT_STREQ(text.data(), "abcX");
}

TEST(CStr, Assigns) {
    CStr text("first");
    text = "second, longer";
    EXPECT_STREQ(text.data(), "second, longer");
    text = CStr("third");
    EXPECT_STREQ(text.data(), "third");
    text = static_cast<const char*>(nullptr);
    EXPECT_STREQ(text.data(), "");
}

TEST(CStr, AssignsFromItself) {
    CStr text("abcdef");
    const CStr& same = text;
    text = same;
    EXPECT_STREQ(text.data(), "abcdef");
    text = text.data() + 2;
    EXPECT_STREQ(text.data(), "cdef");
}

TEST(CStr, Joins) {
    CStr path("C:\\plugcfg");
    const CStr file = path + "\\settings.cfg";
    EXPECT_STREQ(file.data(), "C:\\plugcfg\\settings.cfg");
    EXPECT_STREQ(path.data(), "C:\\plugcfg");
    path += CStr("\\a");
    path += "b";
    EXPECT_STREQ(path.data(), "C:\\plugcfg\\ab");
    EXPECT_EQ(&path.Append("c"), &path);
    EXPECT_STREQ(path.data(), "C:\\plugcfg\\abc");
    path += path;
    EXPECT_STREQ(path.data(), "C:\\plugcfg\\abcC:\\plugcfg\\abc");
    EXPECT_STREQ((CStr() + CStr()).data(), "");
}

TEST(CStr, ComparesBytes) {
    EXPECT_TRUE(CStr("a") == CStr("a"));
    EXPECT_FALSE(CStr("a") == CStr("A"));
    EXPECT_TRUE(CStr("a") != CStr("ab"));
    EXPECT_FALSE(CStr("ab") != CStr("ab"));
    EXPECT_TRUE(CStr("a") == "a");
    EXPECT_TRUE(CStr("a") != "b");
    EXPECT_TRUE(CStr() == static_cast<const char*>(nullptr));
    EXPECT_FALSE(CStr("a") == static_cast<const char*>(nullptr));
}

TEST(CStr, FindsCharacters) {
    const CStr path("a/b/c");
    EXPECT_EQ(path.first('/'), 1);
    EXPECT_EQ(path.last('/'), 3);
    EXPECT_EQ(path.first('a'), 0);
    EXPECT_EQ(path.last('x'), -1);
    EXPECT_EQ(path.first('x'), -1);
    EXPECT_EQ(path.first('\0'), -1);
    EXPECT_EQ(path.last('\0'), -1);
    EXPECT_EQ(CStr().first('a'), -1);
    EXPECT_EQ(CStr("\xe4x\xe4").last('\xe4'), 2);
}

TEST(CStr, RemovesTheEnd) {
    EXPECT_STREQ(Text("model.max").remove(5).data(), "model");
    EXPECT_STREQ(Text("model").remove(0).data(), "");
    EXPECT_STREQ(Text("model").remove(5).data(), "model");
    EXPECT_STREQ(Text("model").remove(99).data(), "model");
    EXPECT_STREQ(Text("model").remove(-1).data(), "");
}

TEST(CStr, RemovesAPart) {
    EXPECT_STREQ(Text("abcdef").remove(1, 3).data(), "aef");
    EXPECT_STREQ(Text("abcdef").remove(0, 1).data(), "bcdef");
    EXPECT_STREQ(Text("abcdef").remove(4, 99).data(), "abcd");
    EXPECT_STREQ(Text("abcdef").remove(2, 0).data(), "abcdef");
    EXPECT_STREQ(Text("abcdef").remove(2, -1).data(), "abcdef");
    EXPECT_STREQ(Text("abcdef").remove(-2, 3).data(), "bcdef");
    EXPECT_STREQ(Text("abcdef").remove(2, INT_MAX).data(), "ab");
    EXPECT_STREQ(Text("abcdef").remove(INT_MIN, INT_MIN).data(), "abcdef");
}

TEST(CStr, GivesAPart) {
    const CStr text("abcdef");
    EXPECT_STREQ(text.Substr(1, 3).data(), "bcd");
    EXPECT_STREQ(text.Substr(0, 6).data(), "abcdef");
    EXPECT_STREQ(text.Substr(4, 99).data(), "ef");
    EXPECT_STREQ(text.Substr(6, 1).data(), "");
    EXPECT_STREQ(text.Substr(99, 1).data(), "");
    EXPECT_STREQ(text.Substr(-1, 3).data(), "ab");
    EXPECT_STREQ(text.Substr(2, -1).data(), "");
    EXPECT_STREQ(text.Substr(1, INT_MAX).data(), "bcdef");
}

TEST(CStr, ReplacesEveryOccurrence) {
    EXPECT_STREQ(Text("a\\b\\c").Replace("\\", "/").data(), "a/b/c");
    EXPECT_STREQ(Text("a,b,").Replace(",", "; ").data(), "a; b; ");
    EXPECT_STREQ(Text("aaaa").Replace("aa", "a").data(), "aa");
    EXPECT_STREQ(Text("abc").Replace("abc", "").data(), "");
    EXPECT_STREQ(Text("abc").Replace("x", "y").data(), "abc");
    EXPECT_STREQ(Text("abc").Replace("", "y").data(), "abc");
    CStr text("a-");
    text.Replace("-", text);
    EXPECT_STREQ(text.data(), "aa-");
}

TEST(CStr, ChangesTheCaseOfPlainLetters) {
    CStr text("aZ09_\xe4\xc4");
    text.toUpper();
    EXPECT_STREQ(text.data(), "AZ09_\xe4\xc4");
    text.toLower();
    EXPECT_STREQ(text.data(), "az09_\xe4\xc4");
}

TEST(CStr, Formats) {
    CStr text("before");
    EXPECT_EQ(text.printf("Wire Color %d", 12), 13);
    EXPECT_STREQ(text.data(), "Wire Color 12");
    EXPECT_EQ(text.printf("%s: %.2f", text.data(), 1.5), 19);
    EXPECT_STREQ(text.data(), "Wire Color 12: 1.50");
    EXPECT_EQ(text.printf("%s", ""), 0);
    EXPECT_TRUE(text.isNull());
}

TEST(CStr, FormatsTextsOfAnyLength) {
    const std::string large(100000, 'x');
    CStr text;
    EXPECT_EQ(text.printf("<%s>", large.c_str()), 100002);
    EXPECT_EQ(std::string(text.data()), "<" + large + ">");
}
