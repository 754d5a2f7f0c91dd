// Builds expected KTA bytes in tests, independently of the exporter's records.
#pragma once

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>

namespace support {

class Bytes {
  public:
    Bytes& U8(std::uint8_t value) {
        text_.push_back(static_cast<char>(value));
        return *this;
    }
    Bytes& U32(std::uint32_t value) {
        for (int shift = 0; shift < 32; shift += 8) {
            U8(static_cast<std::uint8_t>(value >> shift));
        }
        return *this;
    }
    Bytes& F32(std::initializer_list<float> values) {
        for (const float value : values) {
            std::uint32_t bits;
            std::memcpy(&bits, &value, sizeof(bits));
            U32(bits);
        }
        return *this;
    }
    // A NUL-terminated name in a field of `size` bytes, zero behind it.
    Bytes& Name(const std::string& name, std::size_t size = 260) {
        text_ += name;
        text_.append(size - name.size(), '\0');
        return *this;
    }
    Bytes& Text(const std::string& text) {
        text_ += text;
        return *this;
    }
    const std::string& Str() const { return text_; }

  private:
    std::string text_;
};

// The seven bytes at the beginning of a file.
inline std::string FileHeader(bool actor) {
    return Bytes().Text("KTA ").U8(1).U8(1).U8(actor ? 1 : 0).Str();
}

}  // namespace support
