// Reads JSON text for callers that must name the place of every fault.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace maxhost::scene_file {

enum class JsonKind : std::uint8_t { null, boolean, integer, real, text, list, object };

class JsonTree;

// A value as the tree holds it. A list or an object stands before what it holds.
struct JsonEntry {
    static constexpr std::uint32_t kMany = (1u << 29) - 1;

    // No bit-fields, which compilers fill in one by one, a byte at a time.
    JsonEntry(JsonKind kind, std::uint32_t size, std::uint32_t payloadOfKind)
        : payload(payloadOfKind), head_(size << 3 | static_cast<std::uint32_t>(kind)) {}

    JsonKind Kind() const { return static_cast<JsonKind>(head_ & 7); }

    // Of a text in bytes, of a list or object in elements or members; kMany: counted when asked
    // for. Of an integer: whether it has a minus sign, or kMany for one that does not fit
    // `payload`.
    std::uint32_t Size() const { return head_ >> 3; }

    // Of a number: an f32's bits, an integer's digits, the place among those that do not fit; of a
    // text: its place; of a list or object: how many entries it takes with all that it holds.
    std::uint32_t payload;

  private:
    std::uint32_t head_;
};

// A value in a tree; valid as long as the tree. The accessors named after a kind are for values of
// that kind alone.
class JsonValue {
  public:
    JsonValue(const JsonTree& tree, const JsonEntry* entry) : tree_(&tree), entry_(entry) {}

    JsonKind Kind() const { return entry_->Kind(); }
    bool Boolean() const { return entry_->payload != 0; }
    std::int64_t Integer() const;  // 0 for -0
    float Real() const;            // of an integer too
    std::string_view Text() const;

    std::size_t Size() const;  // elements of a list, members of an object

    // A pass over a list's elements, or over an object's names and values in turn.
    class Iterator {
      public:
        Iterator(const JsonTree& tree, const JsonEntry* entry) : tree_(&tree), entry_(entry) {}
        JsonValue operator*() const { return {*tree_, entry_}; }
        Iterator& operator++();
        bool operator==(const Iterator& other) const { return entry_ == other.entry_; }

      private:
        const JsonTree* tree_;
        const JsonEntry* entry_;
    };
    Iterator begin() const { return {*tree_, entry_ + 1}; }
    Iterator end() const { return {*tree_, entry_ + entry_->payload}; }

    // How many values a list or an object holds on all levels, itself and names included.
    std::size_t Values() const { return entry_->payload; }

    std::string Pointer() const;   // the JSON pointer; empty for the root
    std::string Describe() const;  // in a few words: 7, "text", a list of 3, ...

    // Throws the SceneError for this place.
    [[noreturn]] void Refuse(std::string_view expected) const;

  private:
    friend class JsonTree;

    std::size_t Count() const;

    const JsonTree* tree_;
    const JsonEntry* entry_;
};

// A JSON text as a tree that remembers what a DOM of maps forgets: fields in their order, fields
// given twice, and the place of every value. One flat array holds all values in the order of the
// text, so that a mesh of a million faces costs 8 bytes a number.
class JsonTree {
  public:
    // Throws SceneError: for text that is not JSON (UTF-8, nothing before or after the value), for
    // a number that is not finite as f32, a text with a NUL character, a field given twice, and
    // nesting of more than kMaxNesting levels. Integers beyond 64 bits are kept as reals.
    // `report` is told how much of the text is read, 0 to 1.
    explicit JsonTree(
        std::string_view text, const std::function<void(double share)>& report = [](double) {});

    JsonTree(const JsonTree&) = delete;
    JsonTree& operator=(const JsonTree&) = delete;

    JsonValue Root() const { return At(0); }

    // More than any scene within the limits of the form needs; it bounds the readers' recursion.
    static constexpr std::size_t kMaxNesting = 320;

  private:
    friend class JsonValue;
    friend class TreeBuilder;

    JsonValue At(std::size_t at) const { return {*this, entries_.data() + at}; }
    std::size_t End(std::size_t at) const;
    std::string PointerTo(std::size_t target) const;

    // What an entry says of a list or object that is still being read.
    static constexpr std::uint32_t kOpen = 0;

    std::vector<JsonEntry> entries_;
    std::string texts_;                 // each with a NUL character behind it
    std::vector<std::int64_t> longer_;  // integers of more than 32 bits
};

inline std::int64_t JsonValue::Integer() const {
    if (entry_->Size() == JsonEntry::kMany) {
        return tree_->longer_[entry_->payload];
    }
    const std::int64_t digits = entry_->payload;
    return entry_->Size() != 0 ? -digits : digits;
}

inline float JsonValue::Real() const {
    if (Kind() == JsonKind::real) {
        return std::bit_cast<float>(entry_->payload);
    }
    const bool isMinusZero = entry_->Size() == 1 && entry_->payload == 0;
    return isMinusZero ? -0.0f : static_cast<float>(Integer());
}

inline std::string_view JsonValue::Text() const {
    const char* const text = tree_->texts_.data() + entry_->payload;
    return entry_->Size() != JsonEntry::kMany ? std::string_view(text, entry_->Size()) : text;
}

inline std::size_t JsonValue::Size() const {
    return entry_->Size() != JsonEntry::kMany ? entry_->Size() : Count();
}

inline JsonValue::Iterator& JsonValue::Iterator::operator++() {
    const bool holdsMore = entry_->Kind() == JsonKind::list || entry_->Kind() == JsonKind::object;
    entry_ += holdsMore ? entry_->payload : 1;
    return *this;
}

inline bool IsListOf(JsonValue value, std::size_t size) {
    return value.Kind() == JsonKind::list && value.Size() == size;
}

[[noreturn]] void RefuseNotWhole(JsonValue value, std::int64_t least, std::int64_t most);

// Each throws SceneError for a value of another kind or out of the range.
bool ReadBoolean(JsonValue value);
std::string ReadText(JsonValue value);
std::uint32_t ReadWord(JsonValue value);  // a number or "0x..."

inline float ReadReal(JsonValue value) {
    if (value.Kind() != JsonKind::real && value.Kind() != JsonKind::integer) {
        value.Refuse("a number");
    }
    return value.Real();
}

inline std::int64_t ReadWhole(JsonValue value, std::int64_t least, std::int64_t most) {
    const bool isWhole = value.Kind() == JsonKind::integer;
    if (!isWhole || value.Integer() < least || value.Integer() > most) {
        RefuseNotWhole(value, least, most);
    }
    return value.Integer();
}

// A position that stands as a field's name, as in {"5": ...}: decimal digits without leading zeros.
std::optional<std::uint32_t> ReadPositionName(std::string_view name);

// Names in a message: "a", "b" or "c"; empty ones are left out.
std::string ListNames(std::span<const std::string_view> names);

// The fields of one object, asked for by name.
class JsonObject {
  public:
    // Refuses what is not an object; `expected` names the thing, as in "a node".
    JsonObject(JsonValue object, std::string_view expected);

    // The value, or nothing where the field is absent or null.
    std::optional<JsonValue> Find(std::string_view name);
    // The same, but Close() will refuse the object where there is nothing; `what` gives the words
    // for what was expected.
    std::optional<JsonValue> Require(std::string_view name, std::string (*what)());
    // The value as it stands, null included.
    std::optional<JsonValue> FindOrNull(std::string_view name);
    // Whether the field is there and not null; does not make the name a known one.
    bool Has(std::string_view name) const;

    // The position in `names` of what the field "class" says; an empty name stands for a class that
    // cannot be written. Refuses any other text, and an object without the field.
    std::size_t Class(std::span<const std::string_view> names);

    // To be called when all fields have been asked for: refuses the first unknown field, else the
    // first required one that is missing.
    void Close() const;

    // Throws the SceneError for a field that is absent or null.
    [[noreturn]] void RefuseMissing(std::string_view name, std::string_view expected) const;

  private:
    std::optional<JsonValue> Look(std::string_view name) const;
    bool IsKnown(std::string_view name, std::size_t& near) const;

    struct Missing {
        std::string_view name;
        std::string (*what)();
    };

    JsonValue object_;
    mutable JsonValue::Iterator next_;  // fields are mostly asked for in their order
    std::vector<std::string_view> known_;
    std::optional<Missing> missing_;
};

}  // namespace maxhost::scene_file
