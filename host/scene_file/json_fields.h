// The fields of one JSON object, asked for by name; and numbers and texts of a given range.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/scene_file/json_tree.h"

namespace maxhost::import {

// Each throws SceneError for a value of another kind or out of the range.
bool ReadBoolean(JsonValue value);
float ReadReal(JsonValue value);
std::string ReadText(JsonValue value);
std::int64_t ReadWhole(JsonValue value, std::int64_t least, std::int64_t most);
std::uint32_t ReadWord(JsonValue value);  // a number or "0x..."
void ExpectList(JsonValue value, std::size_t size, std::string_view expected);

// A position that stands as a field's name, as in {"5": ...}: decimal digits without leading zeros.
std::optional<std::uint32_t> ReadPositionName(std::string_view name);

// Names in a message: "a", "b" or "c"; empty ones are left out.
std::string ListNames(const std::vector<std::string_view>& names);

class Fields {
  public:
    // Refuses what is not an object; `expected` names the thing, as in "a node".
    Fields(JsonValue object, std::string_view expected);

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
    std::size_t Class(std::initializer_list<std::string_view> names);

    // To be called when all fields have been asked for: refuses the first unknown field, else the
    // first required one that is missing.
    void Close() const;

    // Throws the SceneError for a field that is absent or null.
    [[noreturn]] void RefuseMissing(std::string_view name, std::string_view expected) const;

  private:
    std::optional<JsonValue> Look(std::string_view name) const;

    struct Missing {
        std::string_view name;
        std::string (*what)();
    };

    JsonValue object_;
    std::vector<std::string_view> known_;
    std::optional<Missing> missing_;
};

}  // namespace maxhost::import
