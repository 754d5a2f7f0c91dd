#include "core/format.h"

#include <gtest/gtest.h>

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

}  // namespace
