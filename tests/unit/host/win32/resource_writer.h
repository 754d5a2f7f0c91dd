// Writes compiled resources as their forms describe them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace win32 {

class ResourceWriter {
  public:
    ResourceWriter& U16(unsigned value) {
        bytes_.push_back(static_cast<std::byte>(value & 0xff));
        bytes_.push_back(static_cast<std::byte>(value >> 8 & 0xff));
        return *this;
    }
    ResourceWriter& U32(std::uint32_t value) { return U16(value & 0xffff).U16(value >> 16); }
    ResourceWriter& Rect(int x, int y, int width, int height) {
        return U16(static_cast<unsigned>(x)).U16(static_cast<unsigned>(y)).U16(width).U16(height);
    }
    ResourceWriter& Units(std::u16string_view text) {
        for (const char16_t unit : text) {
            U16(unit);
        }
        return *this;
    }
    // Ends with NUL.
    ResourceWriter& Text(std::u16string_view text) { return Units(text).U16(0); }
    // Starts with its length, as those of a string table.
    ResourceWriter& CountedText(std::u16string_view text) {
        return U16(static_cast<unsigned>(text.size())).Units(text);
    }
    // In place of a text.
    ResourceWriter& Number(unsigned number) { return U16(0xffff).U16(number); }
    // A header of numeric type and name.
    ResourceWriter& Header(std::uint32_t dataSize, unsigned type, unsigned name) {
        U32(dataSize).U32(32).Number(type).Number(name);
        return U32(0).U16(0x1030).U16(0x409).U32(0).U32(0);
    }
    ResourceWriter& Align() {
        while (bytes_.size() % 4 != 0) {
            bytes_.push_back(std::byte{0});
        }
        return *this;
    }
    const std::vector<std::byte>& Data() const { return bytes_; }

  private:
    std::vector<std::byte> bytes_;
};

}  // namespace win32
