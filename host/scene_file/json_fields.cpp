#include "host/scene_file/json_fields.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "host/scene/error.h"

namespace maxhost::import {
namespace {

constexpr std::size_t kMostFields = 24;  // of any object of the form
constexpr std::int64_t kLargestWord = std::numeric_limits<std::uint32_t>::max();

std::string PointerTo(JsonValue object, std::string_view name) {
    std::string pointer = object.Pointer();
    AppendStep(pointer, name);
    return pointer;
}

}  // namespace

bool ReadBoolean(JsonValue value) {
    if (value.Kind() != JsonKind::boolean) {
        value.Refuse("true or false");
    }
    return value.Boolean();
}

float ReadReal(JsonValue value) {
    if (value.Kind() != JsonKind::real && value.Kind() != JsonKind::integer) {
        value.Refuse("a number");
    }
    return value.Real();
}

std::string ReadText(JsonValue value) {
    if (value.Kind() != JsonKind::text) {
        value.Refuse("a text");
    }
    return std::string(value.Text());
}

std::int64_t ReadWhole(JsonValue value, std::int64_t least, std::int64_t most) {
    const bool isWhole = value.Kind() == JsonKind::integer;
    if (!isWhole || value.Integer() < least || value.Integer() > most) {
        value.Refuse("a whole number from " + std::to_string(least) + " to " +
                     std::to_string(most));
    }
    return value.Integer();
}

std::uint32_t ReadWord(JsonValue value) {
    if (value.Kind() == JsonKind::text) {
        const std::string_view text = value.Text();
        const std::string_view digits = text.substr(std::min<std::size_t>(2, text.size()));
        std::uint32_t word = 0;
        const auto [end, fault] =
            std::from_chars(digits.data(), digits.data() + digits.size(), word, 16);
        const bool isAll = fault == std::errc() && end == digits.data() + digits.size();
        if (isAll && text.starts_with("0x") && digits.size() <= 8) {
            return word;
        }
    } else if (value.Kind() == JsonKind::integer && value.Integer() >= 0 &&
               value.Integer() <= kLargestWord) {
        return static_cast<std::uint32_t>(value.Integer());
    }
    value.Refuse("a whole number from 0 to 4294967295 or the same as \"0x...\"");
}

void ExpectList(JsonValue value, std::size_t size, std::string_view expected) {
    if (value.Kind() != JsonKind::list || value.Size() != size) {
        value.Refuse(expected);
    }
}

std::optional<std::uint32_t> ReadPositionName(std::string_view name) {
    std::uint32_t position = 0;
    const auto [end, fault] = std::from_chars(name.data(), name.data() + name.size(), position);
    const bool isAll = fault == std::errc() && end == name.data() + name.size();
    const bool hasLeadingZero = name.size() > 1 && name[0] == '0';
    return isAll && !hasLeadingZero ? std::optional(position) : std::nullopt;
}

std::string ListNames(const std::vector<std::string_view>& names) {
    std::vector<std::string_view> shown = names;
    std::erase(shown, std::string_view());
    std::string list;
    for (std::size_t i = 0; i < shown.size(); ++i) {
        const bool isLast = i + 1 == shown.size();
        list += i == 0 ? "" : isLast ? " or " : ", ";
        list += Shown(shown[i]);
    }
    return list;
}

Fields::Fields(JsonValue object, std::string_view expected) : object_(object) {
    if (object.Kind() != JsonKind::object) {
        object.Refuse(expected);
    }
}

std::optional<JsonValue> Fields::Look(std::string_view name) const {
    for (JsonValue::Iterator i = object_.begin(); i != object_.end(); ++i) {
        const bool isIt = (*i).Text() == name;
        ++i;
        if (isIt) {
            return *i;
        }
    }
    return std::nullopt;
}

std::optional<JsonValue> Fields::FindOrNull(std::string_view name) {
    if (known_.empty()) {
        known_.reserve(kMostFields);
    }
    known_.push_back(name);
    return Look(name);
}

std::optional<JsonValue> Fields::Find(std::string_view name) {
    const std::optional<JsonValue> value = FindOrNull(name);
    return value && value->Kind() != JsonKind::null ? value : std::nullopt;
}

std::optional<JsonValue> Fields::Require(std::string_view name, std::string (*what)()) {
    const std::optional<JsonValue> value = Find(name);
    if (!value && !missing_) {
        missing_ = Missing{name, what};
    }
    return value;
}

bool Fields::Has(std::string_view name) const {
    const std::optional<JsonValue> value = Look(name);
    return value && value->Kind() != JsonKind::null;
}

std::size_t Fields::Class(std::initializer_list<std::string_view> names) {
    const std::optional<JsonValue> value = Find("class");
    if (!value) {
        RefuseMissing("class", ListNames(names));
    }
    const bool isText = value->Kind() == JsonKind::text && !value->Text().empty();
    const auto name = std::find(names.begin(), names.end(), isText ? value->Text() : "");
    if (!isText || name == names.end()) {
        value->Refuse(ListNames(names));
    }
    return name - names.begin();
}

void Fields::Close() const {
    for (JsonValue::Iterator i = object_.begin(); i != object_.end(); ++i) {
        const std::string_view name = (*i).Text();
        if (std::find(known_.begin(), known_.end(), name) == known_.end()) {
            throw SceneError(PointerTo(object_, name), "an unknown field", ListNames(known_));
        }
        ++i;
    }
    if (missing_) {
        RefuseMissing(missing_->name, missing_->what());
    }
}

void Fields::RefuseMissing(std::string_view name, std::string_view expected) const {
    const std::optional<JsonValue> value = Look(name);
    throw SceneError(PointerTo(object_, name), value ? "null" : "nothing", expected);
}

}  // namespace maxhost::import
