// Microsoft's additions to the C library, declared by these headers on Windows.
#include <gtest/gtest.h>
#include <stdio.h>
#include <string.h>
#include <windows.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/temporary_directory.h"

namespace {

TEST(StrcpyS, CopiesWhatFits) {
    char text[6] = "zzzzz";
    EXPECT_EQ(strcpy_s(text, sizeof(text), "abcde"), 0);
    EXPECT_STREQ(text, "abcde");
    EXPECT_EQ(strcpy_s(text, sizeof(text), ""), 0);
    EXPECT_STREQ(text, "");
}

TEST(FopenS, OpensOrGivesTheReason) {
    const support::TemporaryDirectory directory;
    const std::string name = directory.PathOf("fopen_s_test");
    FILE* file = nullptr;
    ASSERT_EQ(fopen_s(&file, name.c_str(), "wb"), 0);
    ASSERT_NE(file, nullptr);
    fclose(file);
    std::filesystem::remove(name);
    EXPECT_EQ(fopen_s(&file, name.c_str(), "rb"), ENOENT);
    EXPECT_EQ(file, nullptr);
}

TEST(Stricmp, IgnoresCaseOfAsciiLetters) {
    EXPECT_EQ(_stricmp("", ""), 0);
    EXPECT_EQ(_stricmp("HDO", "hdo"), 0);
    EXPECT_LT(_stricmp("a", "B"), 0);
    EXPECT_GT(_stricmp("b", "A"), 0);
    EXPECT_LT(_stricmp("ab", "ABC"), 0);
    EXPECT_GT(_stricmp("abc", "AB"), 0);
    EXPECT_LT(_stricmp("_", "a"), 0) << "compared as lower case";
    EXPECT_NE(_stricmp("@", "`"), 0) << "letters only";
}

TEST(Strupr, ChangesAsciiLettersInPlace) {
    char text[] = "aZ9_\xc3\xa4[`{";
    EXPECT_EQ(_strupr(text), text);
    EXPECT_STREQ(text, "AZ9_\xc3\xa4[`{");
}

TEST(Strlwr, ChangesAsciiLettersInPlace) {
    char text[] = "aZ9_\xc3\x84@[`";
    EXPECT_EQ(_strlwr(text), text);
    EXPECT_STREQ(text, "az9_\xc3\x84@[`");
}

// Wine differs in what follows, or ends the process.
#ifndef _WIN32

TEST(Stricmp, BytesCountAsUnsigned) {
    EXPECT_LT(_stricmp("z", "\xe4"), 0);
}

TEST(FopenS, SharesAFileForWritingWithNobody) {
    const support::TemporaryDirectory directory;
    const std::string name = directory.PathOf("fopen_s_writing");
    FILE* writer = nullptr;
    FILE* other = nullptr;
    ASSERT_EQ(fopen_s(&writer, name.c_str(), "wt"), 0);
    std::fputs("kept", writer);
    std::fflush(writer);
    EXPECT_EQ(fopen_s(&other, name.c_str(), "wt"), EACCES);
    EXPECT_EQ(fopen_s(&other, name.c_str(), "rb"), EACCES);
    EXPECT_EQ(other, nullptr);
    EXPECT_EQ(std::filesystem::file_size(name), 4u);
    std::fclose(writer);
    std::filesystem::remove(name);
}

TEST(FopenS, SharesAFileForReadingWithReaders) {
    const support::TemporaryDirectory directory;
    const std::string name = directory.PathOf("fopen_s_reading");
    std::ofstream(name) << "kept";
    FILE* reader = nullptr;
    FILE* other = nullptr;
    ASSERT_EQ(fopen_s(&reader, name.c_str(), "rb"), 0);
    ASSERT_EQ(fopen_s(&other, name.c_str(), "rb"), 0);
    std::fclose(other);
    EXPECT_EQ(fopen_s(&other, name.c_str(), "r+b"), EACCES);
    EXPECT_EQ(fopen_s(&other, name.c_str(), "wb"), EACCES);
    EXPECT_EQ(std::filesystem::file_size(name), 4u);
    std::fclose(reader);
    std::filesystem::remove(name);
}

TEST(StrcpyS, FailsWithAnEmptyText) {
    char text[6] = "zzzzz";
    EXPECT_EQ(strcpy_s(text, sizeof(text), "abcdef"), ERANGE);
    EXPECT_STREQ(text, "");
    text[0] = 'z';
    EXPECT_EQ(strcpy_s(text, sizeof(text), nullptr), EINVAL);
    EXPECT_STREQ(text, "");
    text[0] = 'z';
    EXPECT_EQ(strcpy_s(text, 0, "a"), EINVAL);
    EXPECT_EQ(text[0], 'z') << "size 0 leaves nothing to write to";
    EXPECT_EQ(strcpy_s(nullptr, 6, "a"), EINVAL);
}

TEST(FopenS, RefusesNullArguments) {
    FILE* file = reinterpret_cast<FILE*>(&file);
    EXPECT_EQ(fopen_s(nullptr, "x", "rb"), EINVAL);
    EXPECT_EQ(fopen_s(&file, nullptr, "rb"), EINVAL);
    EXPECT_EQ(file, nullptr);
    EXPECT_EQ(fopen_s(&file, "x", nullptr), EINVAL);
}

#endif

}  // namespace
