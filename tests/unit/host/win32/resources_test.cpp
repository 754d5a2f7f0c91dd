#include "host/win32/resources.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "host/win32/module.h"
#include "host/win32/window.h"
#include "tests/unit/host/win32/resource_writer.h"

namespace win32 {
namespace {

using Bytes = std::span<const std::byte>;

// The texts 1 "one", 2 "zwei", and the block of 17 "seventeen".
std::vector<std::byte> Sample() {
    ResourceWriter writer;
    writer.Header(0, 0, 0);
    writer.Header(2 * 16 + 2 * 7, kStringTableType, 1)
        .CountedText(u"")
        .CountedText(u"one")
        .CountedText(u"zwei");
    for (int i = 3; i < 16; ++i) {
        writer.CountedText(u"");
    }
    writer.Align();
    // Named by text, which no number finds.
    writer.U32(3).U32(36).U16('A').U16('B').U16(0).U16('N').U16(0).U16(0);
    writer.U32(0).U16(0).U16(0).U32(0).U32(0).U32(0x00636261);
    writer.Header(2 * 2 + 2 * 9, kStringTableType, 2).CountedText(u"").CountedText(u"seventeen");
    return writer.Data();
}

TEST(Resources, FindsTextsByNumber) {
    const auto bytes = Sample();
    EXPECT_EQ(FindString(bytes, 1), "one");
    EXPECT_EQ(FindString(bytes, 2), "zwei");
    EXPECT_EQ(FindString(bytes, 17), "seventeen");
}

TEST(Resources, MissingTextsAreEmpty) {
    const auto bytes = Sample();
    EXPECT_EQ(FindString(bytes, 0), "");
    EXPECT_EQ(FindString(bytes, 3), "");
    EXPECT_EQ(FindString(bytes, 18), "") << "the block ends before";
    EXPECT_EQ(FindString(bytes, 33), "");
    EXPECT_EQ(FindString(bytes, 0x10001), "") << "numbers do not wrap";
    EXPECT_EQ(FindString({}, 1), "");
}

TEST(Resources, FindsDataByTypeAndName) {
    const auto bytes = Sample();
    const auto block = FindResource(bytes, kStringTableType, 2);
    ASSERT_TRUE(block);
    EXPECT_EQ(block->size(), 22u);
    EXPECT_FALSE(FindResource(bytes, kStringTableType, 3));
    EXPECT_FALSE(FindResource(bytes, 5, 1));
}

// Every prefix, in a block of its own so that a sanitizer sees any read past the end.
TEST(Resources, TruncatedInputIsNeverReadPastItsEnd) {
    const auto bytes = Sample();
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        const auto copy = std::make_unique<std::byte[]>(size);
        std::copy_n(bytes.begin(), size, copy.get());
        EXPECT_EQ(FindString({copy.get(), size}, 17), "") << size;
    }
    EXPECT_EQ(FindString(bytes, 17), "seventeen");
}

TEST(Resources, SizesBeyondTheEndAreRefused) {
    for (const std::uint32_t size : {0xffffffffu, 0x80000000u, 64u}) {
        const auto data =
            ResourceWriter().Header(size, kStringTableType, 1).CountedText(u"").Data();
        EXPECT_FALSE(FindResource(data, kStringTableType, 1)) << size;
        const auto header =
            ResourceWriter().U32(2).U32(size).U16(0xffff).U16(6).U16(0xffff).U16(1).Data();
        EXPECT_FALSE(FindResource(header, kStringTableType, 1)) << size;
    }
    const auto tooSmall = ResourceWriter().U32(0).U32(0).Data();
    EXPECT_FALSE(FindResource(tooSmall, 0, 0));
}

TEST(Resources, HeaderThatEndsInsideANameIsRefused) {
    const auto data = ResourceWriter().U32(0).U32(12).U16('A').U16('B').Header(0, 6, 1).Data();
    EXPECT_FALSE(FindResource(data, 6, 1));
}

TEST(Resources, TextLongerThanItsBlockIsMissing) {
    const auto data = ResourceWriter().Header(4, kStringTableType, 1).U16(9).U16('a').Data();
    EXPECT_EQ(FindString(data, 0), "");
    EXPECT_EQ(FindString(data, 1), "");
}

TEST(Resources, CompiledOnesAreReadToTheirLastByte) {
    const HMODULE module = LoadLibraryA(MODULE_DIR "/win32_test_accepting.dll");
    ASSERT_NE(module, nullptr);
    const Bytes compiled = ResourcesOf(module);
    EXPECT_GT(compiled.size(), 32u);
    EXPECT_EQ(FindString(compiled, 100), "far away");
    EXPECT_EQ(FindString(compiled.first(compiled.size() - 32 + 1), 100), "");
    EXPECT_TRUE(FreeLibrary(module));
}

// A string table whose text 0 is `text`.
std::string ThroughTheTable(std::u16string_view text) {
    const auto size = static_cast<std::uint32_t>(2 + 2 * text.size());
    return FindString(ResourceWriter().Header(size, kStringTableType, 1).CountedText(text).Data(),
                      0);
}

TEST(Texts, EveryLengthOfUtf8IsMade) {
    EXPECT_EQ(ThroughTheTable(u"a\u00e9\u20ac\U0001f600"), "a\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80");
}

TEST(Texts, LoneSurrogatesAreReplaced) {
    const char16_t high[] = {0xd83d, u'a'};
    EXPECT_EQ(ThroughTheTable({high, 2}),
              "\xef\xbf\xbd"
              "a");
    EXPECT_EQ(ThroughTheTable({high, 1}), "\xef\xbf\xbd");
    const char16_t low[] = {0xde00};
    EXPECT_EQ(ThroughTheTable({low, 1}), "\xef\xbf\xbd");
}

TEST(Texts, CopiesNeverCutACharacter) {
    const std::string text =
        "a\xe2\x82\xac"
        "b";
    const auto copied = [&](int room) {
        char buffer[8];
        const int length = CopyText(text, buffer, room);
        EXPECT_EQ(buffer[length], '\0');
        return std::string(buffer);
    };
    EXPECT_EQ(copied(6), text);
    EXPECT_EQ(copied(5), "a\xe2\x82\xac");
    EXPECT_EQ(copied(4), "a");
    EXPECT_EQ(copied(3), "a");
    EXPECT_EQ(copied(2), "a");
    EXPECT_EQ(copied(1), "");
}

constexpr std::uint32_t kSetFont = 0x40;

std::vector<std::byte> Extended() {
    ResourceWriter writer;
    writer.U16(1).U16(0xffff).U32(9).U32(8).U32(0x80000000 | kSetFont).U16(2);
    writer.Rect(-1, 2, 203, 189).U16(0).Number(7).Text(u"Titel \u00e4");
    writer.U16(8).U16(400).U16(0x0100).Text(u"MS Sans Serif");
    writer.Align().U32(0).U32(0).U32(3).Rect(7, -8, 9, 10).U32(1032);
    writer.Number(0x80).Text(u"check").U16(3).U16(0xdddd).U16(0xdd);
    writer.Align().U32(0).U32(0).U32(0x08000000).Rect(1, 2, 3, 4).U32(0xffffffff);
    writer.Text(u"CustEdit").Number(5).U16(0);
    return writer.Data();
}

std::vector<std::byte> Older() {
    ResourceWriter writer;
    writer.U32(0x80000000).U32(0).U16(2).Rect(0, 0, 40, 30).Text(u"MENU").U16(0).Text(u"Old");
    writer.Align().U32(1).U32(0).Rect(1, 2, 3, 4).U16(40000);
    writer.Text(u"Button").Text(u"a").U16(4).U16(0xdddd);
    writer.Align().U32(0).U32(0).Rect(5, 6, 7, 8).U16(2).Number(0x82).Text(u"b").U16(0);
    return writer.Data();
}

TEST(DialogTemplate, ExtendedFormIsRead) {
    const auto dialog = ReadDialogTemplate(Extended());
    ASSERT_TRUE(dialog);
    EXPECT_EQ(dialog->title, "Titel \xc3\xa4");
    EXPECT_EQ(dialog->style, 0x80000000 | kSetFont);
    EXPECT_EQ(dialog->rect.x, -1);
    EXPECT_EQ(dialog->rect.y, 2);
    EXPECT_EQ(dialog->rect.width, 203);
    EXPECT_EQ(dialog->rect.height, 189);
    EXPECT_EQ(dialog->font, "MS Sans Serif");
    EXPECT_EQ(dialog->fontSize, 8);
    ASSERT_EQ(dialog->controls.size(), 2u);
    EXPECT_EQ(dialog->controls[0].className, "Button");
    EXPECT_EQ(dialog->controls[0].id, 1032);
    EXPECT_EQ(dialog->controls[0].text, "check");
    EXPECT_EQ(dialog->controls[0].style, 3u);
    EXPECT_EQ(dialog->controls[0].rect.y, -8);
    EXPECT_EQ(dialog->controls[1].className, "CustEdit");
    EXPECT_EQ(dialog->controls[1].id, -1);
    EXPECT_EQ(dialog->controls[1].text, "");
    EXPECT_EQ(dialog->controls[1].style, 0x08000000u);
}

TEST(DialogTemplate, OlderFormIsRead) {
    const auto dialog = ReadDialogTemplate(Older());
    ASSERT_TRUE(dialog);
    EXPECT_EQ(dialog->title, "Old");
    EXPECT_EQ(dialog->fontSize, 0);
    ASSERT_EQ(dialog->controls.size(), 2u);
    EXPECT_EQ(dialog->controls[0].className, "Button");
    EXPECT_EQ(dialog->controls[0].id, 40000);
    EXPECT_EQ(dialog->controls[0].style, 1u);
    EXPECT_EQ(dialog->controls[1].className, "Static");
    EXPECT_EQ(dialog->controls[1].text, "b");
    EXPECT_EQ(dialog->controls[1].rect.height, 8);
}

// Every prefix, in a block of its own so that a sanitizer sees any read past the end.
TEST(DialogTemplate, TruncatedOnesAreRefused) {
    for (const auto& bytes : {Extended(), Older()}) {
        for (std::size_t size = 0; size < bytes.size(); ++size) {
            const auto copy = std::make_unique<std::byte[]>(size);
            std::copy_n(bytes.begin(), size, copy.get());
            EXPECT_FALSE(ReadDialogTemplate({copy.get(), size})) << size;
        }
    }
}

TEST(DialogTemplate, MoreControlsThanBytesAreRefused) {
    const auto bytes = ResourceWriter()
                           .U16(1)
                           .U16(0xffff)
                           .U32(0)
                           .U32(0)
                           .U32(0)
                           .U16(0xffff)
                           .Rect(0, 0, 1, 1)
                           .U16(0)
                           .U16(0)
                           .U16(0)
                           .Data();
    EXPECT_FALSE(ReadDialogTemplate(bytes));
}

TEST(DialogTemplate, NumbersThatStandForNoClassAreRefused) {
    for (const unsigned atom : {0x7fu, 0x86u, 0u, 0xffffu}) {
        ResourceWriter writer;
        writer.U32(0).U32(0).U16(1).Rect(0, 0, 1, 1).U16(0).U16(0).U16(0).Align();
        writer.U32(0).U32(0).Rect(0, 0, 1, 1).U16(1).Number(atom).U16(0).U16(0);
        EXPECT_FALSE(ReadDialogTemplate(writer.Data())) << atom;
    }
}

}  // namespace
}  // namespace win32
