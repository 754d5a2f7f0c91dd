// What the readers of bodies check alike.
#pragma once

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <string>

#include "kta/cursor.h"

namespace kta {

std::string Expected(const std::string& what, const std::string& value,
                     const std::string& expected);
std::string Expected(const std::string& what, std::int64_t value, const std::string& expected);

// The shortest digits that read back to the same number.
std::string Digits(float value);

// A smaller number stops the cursor.
std::int32_t ReadAtLeast(Cursor& cursor, const char* what, std::int32_t least);

// Fields that always have one value; another is reported.
std::uint8_t ReadU8Of(Cursor& cursor, const char* what, std::uint8_t expected);
std::int32_t ReadI32Of(Cursor& cursor, const char* what, std::int32_t expected);
float ReadF32Of(Cursor& cursor, const char* what, float expected);

// The first of many alike that are wrong in the same way, and how many there are. One fault tells
// of them all: a damaged file may have millions. `group` is what they are in ("sub-mesh").
class Repeated {
  public:
    explicit Repeated(const char* group) : group_(group) {}

    // `text` is called for the first one's text only.
    template <typename Text>
    void Note(std::uint64_t offset, Text text) {
        if (count_++ == 0) {
            offset_ = offset;
            text_ = text();
        }
    }

    // As one fault, when there are any; `joint` stands before the number of the others.
    void Report(Cursor& cursor, const char* joint = ", and so for ") const;

  private:
    const char* group_;
    std::string text_;
    std::uint64_t offset_ = 0;
    std::uint64_t count_ = 0;
};

// Reads items of which those that are not finite are told of in one fault.
class NotFinite {
  public:
    NotFinite(const char* what, const char* group) : what_(what), items_(group) {}

    template <std::size_t kCount>
    std::array<float, kCount> Read(Cursor& cursor) {
        const std::uint64_t offset = cursor.Offset();
        std::array<float, kCount> values{};
        bool finite = true;
        for (float& value : values) {
            value = std::bit_cast<float>(cursor.U32());
            finite = finite && std::isfinite(value);
        }
        if (!finite) {
            items_.Note(offset, [this] { return std::string(what_) + " is not a finite number"; });
        }
        return values;
    }

    void Report(Cursor& cursor) const { items_.Report(cursor, ", nor are "); }

  private:
    const char* what_;
    Repeated items_;
};

}  // namespace kta
