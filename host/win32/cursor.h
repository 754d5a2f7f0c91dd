// Reading little-endian fields of compiled resources.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace win32 {

// Once a read does not fit, every later one fails too and gives 0 or nothing.
class Cursor {
  public:
    explicit Cursor(std::span<const std::byte> bytes) : bytes_(bytes) {}

    bool Ok() const { return ok_; }
    std::size_t Left() const { return bytes_.size() - position_; }

    std::uint16_t U16() {
        const std::span<const std::byte> b = Take(2);
        return ok_ ? static_cast<std::uint16_t>(At(b, 0) | At(b, 1) << 8) : std::uint16_t{0};
    }
    std::uint32_t U32() {
        const std::uint32_t low = U16();
        return low | static_cast<std::uint32_t>(U16()) << 16;
    }
    std::int16_t I16() { return static_cast<std::int16_t>(U16()); }

    std::span<const std::byte> Take(std::size_t size) {
        if (!ok_ || size > Left()) {
            ok_ = false;
            return {};
        }
        const std::span<const std::byte> taken = bytes_.subspan(position_, size);
        position_ += size;
        return taken;
    }
    // The units up to a 0, which is read too.
    std::u16string Text() {
        std::u16string text;
        for (char16_t unit = U16(); unit != 0; unit = U16()) {
            text += unit;
        }
        return text;
    }
    // The last padding of the bytes may be missing.
    void AlignTo4() { Take(std::min((4 - position_ % 4) % 4, Left())); }

  private:
    static unsigned At(std::span<const std::byte> bytes, std::size_t i) {
        return std::to_integer<unsigned>(bytes[i]);
    }

    std::span<const std::byte> bytes_;
    std::size_t position_ = 0;
    bool ok_ = true;
};

}  // namespace win32
