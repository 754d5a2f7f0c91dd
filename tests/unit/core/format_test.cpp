#include "core/format.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

int Measure(const char* format, ...) PLINTH_PRINTF(1, 2);

int Measure(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int length = Plinth::MeasureFormat(format, arguments);
    va_end(arguments);
    return length;
}

TEST(FormatInto, StoresTheTextAndItsNul) {
    char buffer[16] = "###############";
    EXPECT_EQ(Plinth::FormatInto(buffer, sizeof(buffer), "%d %s", 42, "ab"), 5);
    EXPECT_STREQ(buffer, "42 ab");
    EXPECT_EQ(buffer[6], '#');
}

TEST(FormatInto, CutsAtSizeLessOne) {
    for (int size = 1; size <= 8; ++size) {
        char buffer[9] = "########";
        const std::string expected = std::string("abcdefg").substr(0, size - 1);
        EXPECT_EQ(Plinth::FormatInto(buffer, size, "%s", "abcdefg"),
                  static_cast<int>(expected.size()));
        EXPECT_EQ(std::string(buffer), expected);
        EXPECT_EQ(std::string(buffer + size), std::string(8 - size, '#')) << size;
    }
}

TEST(FormatInto, NothingIntoNothing) {
    char buffer[2] = "#";
    EXPECT_EQ(Plinth::FormatInto(buffer, 0, "%s", "abc"), 0);
    EXPECT_EQ(Plinth::FormatInto(buffer, -1, "%s", "abc"), 0);
    EXPECT_EQ(Plinth::FormatInto(nullptr, 10, "%s", "abc"), 0);
    EXPECT_STREQ(buffer, "#");
}

TEST(MeasureFormat, LengthWithoutTheNul) {
    EXPECT_EQ(Measure("%s", ""), 0);
    EXPECT_EQ(Measure("%d-%s", -12, "abc"), 7);
    EXPECT_EQ(Measure("%5000d", 1), 5000);
}

#ifndef _WIN32
TEST(FormatInto, WhatCannotBeFormattedIsEmpty) {
    char buffer[16] = "###############";
    EXPECT_EQ(Plinth::FormatInto(buffer, sizeof(buffer), "ab%ls", L"\u0416"), 0);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(Measure("ab%ls", L"\u0416"), 0);
}
#endif

// Logs agree to the character on every system.
TEST(FormatInto, RealsAsTheLogsPrintThem) {
    char buffer[64];
    Plinth::FormatInto(buffer, sizeof(buffer), "%f %.1f%% %.3f", -0.70710678, 300.0, 0.0625);
    EXPECT_STREQ(buffer, "-0.707107 300.0% 0.062");
    Plinth::FormatInto(buffer, sizeof(buffer), "%f %e", 1e20, 12345.678);
    EXPECT_STREQ(buffer, "100000000000000000000.000000 1.234568e+04");
}

// ---------------------------------------------------------------- names in fields

std::string Field(int size, const char* text) {
    std::string field(size + 1, '#');
    Plinth::CopyName(field.data(), size, text);
    EXPECT_EQ(field.back(), '#');
    field.pop_back();
    return field;
}

TEST(CopyName, ZeroesTheRestOfTheField) {
    EXPECT_EQ(Field(8, "abc"), std::string("abc\0\0\0\0\0", 8));
    EXPECT_EQ(Field(8, ""), std::string(8, '\0'));
    EXPECT_EQ(Field(8, nullptr), std::string(8, '\0'));
}

TEST(CopyName, CutsAtTheLastByteLessOne) {
    EXPECT_EQ(Field(4, "abc"), std::string("abc\0", 4));
    EXPECT_EQ(Field(4, "abcd"), std::string("abc\0", 4));
    EXPECT_EQ(Field(1, "abcd"), std::string("\0", 1));
    const std::string longName(300, 'n');
    EXPECT_EQ(Field(260, longName.c_str()), std::string(259, 'n') + '\0');
    EXPECT_EQ(Field(40, longName.c_str()), std::string(39, 'n') + '\0');
}

TEST(CopyName, NoFieldIsNoWrite) {
    char field[2] = "#";
    Plinth::CopyName(field, 0, "abc");
    Plinth::CopyName(field, -5, "abc");
    Plinth::CopyName(nullptr, 0, "abc");
    EXPECT_STREQ(field, "#");
}

TEST(CopyName, FromInsideTheField) {
    char field[8] = "abcdef";
    Plinth::CopyName(field, sizeof(field), field + 2);
    EXPECT_EQ(std::memcmp(field, "cdef\0\0\0\0", 8), 0);
}

// Reads no byte behind the field's share of a text that has no NUL.
TEST(CopyName, ReadsNoFurtherThanTheFieldHolds) {
    const char text[3] = {'a', 'b', 'c'};
    EXPECT_EQ(Field(4, std::string(text, 3).c_str()), std::string("abc\0", 4));
    char field[3];
    Plinth::CopyName(field, 3, text);
    EXPECT_EQ(std::memcmp(field, "ab\0", 3), 0);
}

}  // namespace
