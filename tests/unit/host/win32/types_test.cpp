// Widths and macros that Windows fixes and an LP64 system would have otherwise.
#include <commctrl.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <type_traits>

namespace {

static_assert(sizeof(DWORD) == 4 && std::is_unsigned_v<DWORD>);
static_assert(sizeof(ULONG) == 4 && std::is_unsigned_v<ULONG>);
static_assert(sizeof(LONG) == 4 && std::is_signed_v<LONG>);
static_assert(sizeof(WORD) == 2 && std::is_unsigned_v<WORD>);
static_assert(std::is_same_v<BOOL, int>);
static_assert(std::is_same_v<TCHAR, char>);
static_assert(sizeof(LONG_PTR) == sizeof(void*) && std::is_signed_v<LONG_PTR>);
static_assert(sizeof(UINT_PTR) == sizeof(void*) && std::is_unsigned_v<UINT_PTR>);
static_assert(sizeof(LPARAM) == sizeof(void*) && std::is_signed_v<LPARAM>);
static_assert(sizeof(WPARAM) == sizeof(void*) && std::is_unsigned_v<WPARAM>);

TEST(Macros, ColoursAreBlueGreenRed) {
    const COLORREF color = RGB(0x11, 0x22, 0xf3);
    EXPECT_EQ(color, 0x00f32211u);
    EXPECT_EQ(GetRValue(color), 0x11);
    EXPECT_EQ(GetGValue(color), 0x22);
    EXPECT_EQ(GetBValue(color), 0xf3);
}

TEST(Macros, WordsOfAMessageParameter) {
    const WPARAM parameter = 0xdeadbeef12345678ul;
    EXPECT_EQ(LOWORD(parameter), 0x5678);
    EXPECT_EQ(HIWORD(parameter), 0x1234);
    EXPECT_EQ(MAKELONG(0x5678, 0x1234), 0x12345678);
}

TEST(Macros, MessageBoxOfTheExporter) {
    EXPECT_EQ(MB_OK | MB_ICONEXCLAMATION, 0x30);
}

}  // namespace
