// A position in a KTA file's bytes from which little-endian fields are read one after the other.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kta {

// One thing wrong with a file.
struct Fault {
    std::uint64_t offset = 0;  // of the field or item, from the start of the file
    std::string where;         // "header", "chunk header", or the kind of chunk ("node chunk")
    std::string text;          // what stands there and what was expected
};

// Reads never leave the bytes given. The first read that lacks bytes, and Stop(), end the reading
// for good: from then on every read gives zero or an empty text and reports nothing more. Faults
// go to the vector given, which the caller owns, as it does the bytes.
class Cursor {
  public:
    Cursor(std::span<const std::uint8_t> bytes, std::vector<Fault>& faults);

    std::uint64_t Offset() const { return offset_; }
    std::uint64_t Left() const { return bytes_.size() - offset_; }
    bool Stopped() const { return stopped_; }

    // A cursor at the same position and place that reports to `faults`.
    Cursor Fork(std::vector<Fault>& faults) const;

    // What faults reported from here on name as their place.
    void SetWhere(std::string_view where) { where_ = where; }

    // Reports a fault after which the rest can still be read.
    void Report(std::uint64_t offset, std::string text);
    // Reports a fault that ends the reading.
    void Stop(std::uint64_t offset, std::string text);
    // Whether `size` more bytes are there; stops when not. `what` names the part of the place that
    // they make up, empty for the whole of it.
    bool Require(std::uint64_t size, std::string_view what = {});

    void Skip(std::uint64_t size);
    std::uint8_t U8();
    std::uint16_t U16();
    std::int16_t I16();
    std::uint32_t U32();
    std::int32_t I32();
    // A number that is not finite is reported.
    float F32(std::string_view what);
    // A byte that is 0 or 1; any other is reported and counts as true.
    bool Flag(std::string_view what);
    // The text of a NUL-terminated field of `size` bytes. A missing NUL is reported, and the text
    // is then the whole field.
    std::string Text(std::size_t size, std::string_view what);

    template <std::size_t kCount>
    std::array<float, kCount> Floats(std::string_view what) {
        std::array<float, kCount> values{};
        for (float& value : values) {
            value = F32(what);
        }
        return values;
    }

  private:
    std::span<const std::uint8_t> Take(std::uint64_t size);
    std::uint32_t Number(std::uint64_t size);

    std::span<const std::uint8_t> bytes_;
    std::uint64_t offset_ = 0;
    std::vector<Fault>& faults_;
    std::string where_;
    bool stopped_ = false;
};

}  // namespace kta
