#include "host/win32/resources.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <memory>
#include <string>
#include <vector>

#include "host/win32/module.h"
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

}  // namespace
}  // namespace win32
