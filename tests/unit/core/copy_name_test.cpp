#include "core/copy_name.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

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
