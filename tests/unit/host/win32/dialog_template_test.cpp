#include "host/win32/dialog_template.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "tests/unit/host/win32/resource_writer.h"

namespace win32 {
namespace {

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
