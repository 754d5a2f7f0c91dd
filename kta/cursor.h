// A position in a KTA file's bytes from which values are read as they lie in memory, and where
// faults are reported. For the reader's own sources.
#pragma once

#include <bit>
#include <cmath>
#include <cstring>
#include <type_traits>
#include <utility>

#include "kta/reader.h"

namespace kta {

static_assert(std::endian::native == std::endian::little, "KTA files are little-endian");

// What stands in a file and what was expected there, for the message of the code.
struct Finding {
    IssueCode code;
    std::string what;
    std::string found;
    std::string expected;
};

// Reads never leave the bytes given. The first read that lacks bytes, and Stop(), end the reading
// for good: from then on every read gives zeros and reports nothing more. Faults go to the vector
// given, which the caller owns, as it does the bytes.
class Cursor {
  public:
    Cursor(std::span<const std::uint8_t> bytes, std::vector<Fault>& faults);

    std::uint64_t Offset() const { return offset_; }
    std::uint64_t Left() const { return bytes_.size() - offset_; }
    bool Stopped() const { return stopped_; }

    // A cursor at the same position and place that reports to `faults`.
    Cursor Fork(std::vector<Fault>& faults) const;

    // The place of the faults that are reported from here on.
    void SetPlace(Place place) { place_ = std::move(place); }

    // Reports a fault after which the rest can still be read. Where it tells of several items
    // alike, `suffix` says so, behind the message.
    void Report(std::uint64_t offset, Finding finding, std::uint64_t count = 1,
                const std::string& suffix = {});
    // Reports a fault that ends the reading.
    void Stop(std::uint64_t offset, Finding finding);
    // The same for one that a fork has reported, with more text behind it.
    void Stop(Fault fault, const std::string& suffix);
    // Whether `size` more bytes are there; stops when not. `what` names the part of the place that
    // they make up, empty for the whole of it.
    bool Require(std::uint64_t size, std::string_view what = {}) {
        return (!stopped_ && size <= Left()) || StopShort(size, what);
    }

    void Skip(std::uint64_t size) {
        if (Require(size, "field")) {
            offset_ += size;
        }
    }

    template <typename Value>
    Value Read() {
        const Value value = Peek<Value>();
        Skip(sizeof(Value));
        return value;
    }
    // The value that stands here, without going on; zeros where it is cut off.
    template <typename Value>
    Value Peek() const {
        static_assert(std::is_trivially_copyable_v<Value>);
        Value value{};
        if (!stopped_ && sizeof(Value) <= Left()) {
            std::memcpy(&value, bytes_.data() + offset_, sizeof(Value));
        }
        return value;
    }
    // `count` values, which the caller knows to be there.
    template <typename Value>
    std::vector<Value> ReadAll(std::size_t count) {
        static_assert(std::is_trivially_copyable_v<Value>);
        std::vector<Value> values;
        const std::uint64_t at = offset_;
        Skip(std::uint64_t{count} * sizeof(Value));
        if (!stopped_ && count > 0) {
            values.resize(count);
            std::memcpy(values.data(), bytes_.data() + at, count * sizeof(Value));
        }
        return values;
    }

  private:
    // Reports that bytes are cut off unless the cursor is stopped already; false.
    bool StopShort(std::uint64_t size, std::string_view what);

    std::span<const std::uint8_t> bytes_;
    std::uint64_t offset_ = 0;
    std::vector<Fault>& faults_;
    Place place_;
    bool stopped_ = false;
};

// ---------------------------------------------------------------- findings

Finding Found(IssueCode code, std::string what, std::int64_t value, std::string expected);
// A byte that is none of the letters: "byte 66", expected "P, R or S".
Finding FoundLetter(std::string what, char value, std::string_view letters);
// Numbers of which one at least is not finite.
Finding FoundNotFinite(std::string what, std::span<const float> values);

// The shortest digits that read back to the same number.
std::string Digits(float value);

// The first of many alike that are wrong in the same way, and how many there are. One fault tells
// of them all: a damaged file may have millions. `group` is what they are in ("sub-mesh").
class Repeated {
  public:
    explicit Repeated(const char* group) : group_(group) {}

    // `find` is called for the first one's finding only.
    template <typename Find>
    void Note(std::uint64_t offset, Find find) {
        if (count_++ == 0) {
            offset_ = offset;
            first_ = find();
        }
    }

    // As one fault, when there are any; `joint` stands before the number of the others.
    void Report(Cursor& cursor, const char* joint = ", and so for ") const;

  private:
    const char* group_;
    Finding first_{};
    std::uint64_t offset_ = 0;
    std::uint64_t count_ = 0;
};

// Items of which those that are not finite are told of in one fault.
class NotFinite {
  public:
    NotFinite(const char* what, const char* group) : what_(what), items_(group) {}

    // An item that stands at the offset.
    void Check(std::uint64_t offset, std::span<const float> values) {
        for (const float value : values) {
            if (!std::isfinite(value)) {
                items_.Note(offset, [&] { return FoundNotFinite(what_, values); });
                return;
            }
        }
    }
    void Report(Cursor& cursor) const { items_.Report(cursor, ", nor are "); }

  private:
    const char* what_;
    Repeated items_;
};

}  // namespace kta
