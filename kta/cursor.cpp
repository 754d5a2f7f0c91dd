#include "kta/cursor.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

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

std::span<const std::uint8_t> Cursor::Take(std::uint64_t size) {
    if (!Require(size, "field")) {
        return {};
    }
    const auto taken = bytes_.subspan(offset_, size);
    offset_ += size;
    return taken;
}

void Cursor::Skip(std::uint64_t size) {
    Take(size);
}

std::uint32_t Cursor::Number(std::uint64_t size) {
    std::uint32_t value = 0;
    int shift = 0;
    for (const std::uint8_t byte : Take(size)) {
        value |= static_cast<std::uint32_t>(byte) << shift;
        shift += 8;
    }
    return value;
}

std::uint8_t Cursor::U8() {
    return static_cast<std::uint8_t>(Number(1));
}

std::uint16_t Cursor::U16() {
    return static_cast<std::uint16_t>(Number(2));
}

std::int16_t Cursor::I16() {
    return static_cast<std::int16_t>(U16());
}

std::uint32_t Cursor::U32() {
    return Number(4);
}

std::int32_t Cursor::I32() {
    return static_cast<std::int32_t>(Number(4));
}

float Cursor::F32(std::string_view what) {
    const std::uint64_t offset = offset_;
    const auto value = std::bit_cast<float>(U32());
    if (!std::isfinite(value)) {
        Report(offset, std::string(what) + " is not a finite number");
    }
    return value;
}

bool Cursor::Flag(std::string_view what) {
    const std::uint64_t offset = offset_;
    const std::uint8_t value = U8();
    if (value > 1) {
        Report(offset,
               std::string(what) + " is " + std::to_string(int{value}) + ", expected 0 or 1");
    }
    return value != 0;
}

std::string Cursor::Text(std::size_t size, std::string_view what) {
    const std::uint64_t offset = offset_;
    const auto field = Take(size);
    const auto end = std::find(field.begin(), field.end(), std::uint8_t{0});
    if (end == field.end()) {
        Report(offset, std::string(what) + " has no NUL in its " + std::to_string(size) +
                           " bytes, expected one");
    }
    return std::string(field.begin(), end);
}

}  // namespace kta
