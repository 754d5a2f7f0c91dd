#include "kta/read_checks.h"

#include <charconv>

namespace kta {

std::string Expected(const std::string& what, const std::string& value,
                     const std::string& expected) {
    return what + " is " + value + ", expected " + expected;
}

std::string Expected(const std::string& what, std::int64_t value, const std::string& expected) {
    return Expected(what, std::to_string(value), expected);
}

std::string Digits(float value) {
    std::array<char, 32> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    return {digits.data(), end};
}

std::int32_t ReadAtLeast(Cursor& cursor, const char* what, std::int32_t least) {
    const std::uint64_t offset = cursor.Offset();
    const std::int32_t value = cursor.I32();
    if (value < least) {
        cursor.Stop(offset, Expected(what, value, std::to_string(least) + " or more"));
    }
    return value;
}

std::uint8_t ReadU8Of(Cursor& cursor, const char* what, std::uint8_t expected) {
    const std::uint64_t offset = cursor.Offset();
    const std::uint8_t value = cursor.U8();
    if (value != expected) {
        cursor.Report(offset, Expected(what, value, std::to_string(int{expected})));
    }
    return value;
}

std::int32_t ReadI32Of(Cursor& cursor, const char* what, std::int32_t expected) {
    const std::uint64_t offset = cursor.Offset();
    const std::int32_t value = cursor.I32();
    if (value != expected) {
        cursor.Report(offset, Expected(what, value, std::to_string(expected)));
    }
    return value;
}

float ReadF32Of(Cursor& cursor, const char* what, float expected) {
    const std::uint64_t offset = cursor.Offset();
    const auto value = std::bit_cast<float>(cursor.U32());
    if (!(value == expected)) {
        cursor.Report(offset, Expected(what, Digits(value), Digits(expected)));
    }
    return value;
}

void Repeated::Report(Cursor& cursor, const char* joint) const {
    if (count_ > 0) {
        const std::string others = std::to_string(count_ - 1) + " more of the " + group_;
        cursor.Report(offset_, text_ + (count_ == 1 ? "" : joint + others));
    }
}

}  // namespace kta
