#include "host/win32/resources.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <memory>
#include <string>
#include <vector>

#include "host/win32/module.h"

namespace win32 {
namespace {

using Bytes = std::span<const std::byte>;

// Writes compiled resources as the form describes them.
class Writer {
  public:
    Writer& U16(unsigned value) {
        bytes_.push_back(static_cast<std::byte>(value & 0xff));
        bytes_.push_back(static_cast<std::byte>(value >> 8 & 0xff));
        return *this;
    }
    Writer& U32(std::uint32_t value) { return U16(value & 0xffff).U16(value >> 16); }
    Writer& Text(std::u16string_view text) {
        U16(static_cast<unsigned>(text.size()));
        for (const char16_t unit : text) {
            U16(unit);
        }
        return *this;
    }
    // A header of numeric type and name.
    Writer& Header(std::uint32_t dataSize, unsigned type, unsigned name) {
        U32(dataSize).U32(32).U16(0xffff).U16(type).U16(0xffff).U16(name);
        return U32(0).U16(0x1030).U16(0x409).U32(0).U32(0);
    }
    Writer& Align() {
        while (bytes_.size() % 4 != 0) {
            bytes_.push_back(std::byte{0});
        }
        return *this;
    }
    const std::vector<std::byte>& Data() const { return bytes_; }

  private:
    std::vector<std::byte> bytes_;
};

// The texts 1 "one", 2 "zwei", and the block of 17 "seventeen".
std::vector<std::byte> Sample() {
    Writer writer;
    writer.Header(0, 0, 0);
    writer.Header(2 * 16 + 2 * 7, kStringTableType, 1).Text(u"").Text(u"one").Text(u"zwei");
    for (int i = 3; i < 16; ++i) {
        writer.Text(u"");
    }
    writer.Align();
    // Named by text, which no number finds.
    writer.U32(3).U32(36).U16('A').U16('B').U16(0).U16('N').U16(0).U16(0);
    writer.U32(0).U16(0).U16(0).U32(0).U32(0).U32(0x00636261);
    writer.Header(2 * 2 + 2 * 9, kStringTableType, 2).Text(u"").Text(u"seventeen");
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
        const auto data = Writer().Header(size, kStringTableType, 1).Text(u"").Data();
        EXPECT_FALSE(FindResource(data, kStringTableType, 1)) << size;
        const auto header = Writer().U32(2).U32(size).U16(0xffff).U16(6).U16(0xffff).U16(1).Data();
        EXPECT_FALSE(FindResource(header, kStringTableType, 1)) << size;
    }
    const auto tooSmall = Writer().U32(0).U32(0).Data();
    EXPECT_FALSE(FindResource(tooSmall, 0, 0));
}

TEST(Resources, HeaderThatEndsInsideANameIsRefused) {
    const auto data = Writer().U32(0).U32(12).U16('A').U16('B').Header(0, 6, 1).Data();
    EXPECT_FALSE(FindResource(data, 6, 1));
}

TEST(Resources, TextLongerThanItsBlockIsMissing) {
    const auto data = Writer().Header(4, kStringTableType, 1).U16(9).U16('a').Data();
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
