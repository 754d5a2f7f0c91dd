#include "kta/cursor.h"

#include <charconv>
#include <cmath>

namespace kta {

Cursor::Cursor(std::span<const std::uint8_t> bytes, std::vector<Fault>& faults)
    : bytes_(bytes), faults_(faults) {
}

Cursor Cursor::Fork(std::vector<Fault>& faults) const {
    Cursor fork(bytes_, faults);
    fork.offset_ = offset_;
    fork.where_ = where_;
    fork.stopped_ = stopped_;
    return fork;
}

void Cursor::Report(std::uint64_t offset, std::string text) {
    if (!stopped_) {
        faults_.push_back({offset, where_, std::move(text)});
    }
}

void Cursor::Stop(std::uint64_t offset, std::string text) {
    Report(offset, std::move(text));
    stopped_ = true;
}

bool Cursor::Require(std::uint64_t size, std::string_view what) {
    if (!stopped_ && size > Left()) {
        Stop(offset_, std::string(what) + (what.empty() ? "" : " ") +
                          "cut off: " + std::to_string(size) + " bytes expected, " +
                          std::to_string(Left()) + " are there");
    }
    return !stopped_;
}

void Cursor::Skip(std::uint64_t size) {
    if (Require(size, "field")) {
        offset_ += size;
    }
}

std::string Expected(const std::string& what, const std::string& value,
                     const std::string& expected) {
    return what + " is " + value + ", expected " + expected;
}

std::string Expected(const std::string& what, std::int64_t value, const std::string& expected) {
    return Expected(what, std::to_string(value), expected);
}

std::string ExpectedLetter(const std::string& what, char value, std::string_view letters) {
    std::string list(1, letters[0]);
    for (std::size_t i = 1; i < letters.size(); ++i) {
        list += (i + 1 < letters.size() ? ", " : " or ") + std::string(1, letters[i]);
    }
    const auto byte = static_cast<unsigned char>(value);
    return Expected(what, "byte " + std::to_string(int{byte}), list);
}

std::string Digits(float value) {
    std::array<char, 32> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    return {digits.data(), end};
}

void Repeated::Report(Cursor& cursor, const char* joint) const {
    if (count_ > 0) {
        const std::string others = std::to_string(count_ - 1) + " more of the " + group_;
        cursor.Report(offset_, text_ + (count_ == 1 ? "" : joint + others));
    }
}

void NotFinite::Check(std::uint64_t offset, std::span<const float> values) {
    if (!std::all_of(values.begin(), values.end(), [](float v) { return std::isfinite(v); })) {
        items_.Note(offset, [this] { return std::string(what_) + " is not a finite number"; });
    }
}

}  // namespace kta
