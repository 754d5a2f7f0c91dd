#include "host/scene_file/json_in.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "host/scene/error.h"

namespace maxhost::scene_file {

// Where the value that follows the one at `at` begins.
std::size_t JsonTree::End(std::size_t at) const {
    const JsonEntry& entry = entries_[at];
    const bool isLeaf = entry.Kind() != JsonKind::list && entry.Kind() != JsonKind::object;
    if (isLeaf) {
        return at + 1;
    }
    return entry.payload == kOpen ? entries_.size() : at + entry.payload;
}

// Goes down from the root, so that nobody has to carry pointers about while all is well.
std::string JsonTree::PointerTo(std::size_t target) const {
    std::string pointer;
    std::size_t at = 0;
    while (at != target) {
        const bool isObject = entries_[at].Kind() == JsonKind::object;
        const std::size_t end = End(at);
        std::size_t index = 0;
        std::size_t child = at + 1;
        std::string_view name;
        for (; child < end; child = End(child), ++index) {
            if (isObject) {
                name = At(child).Text();
                if (child == target) {
                    break;  // the name itself stands for its value
                }
                ++child;
            }
            if (target < End(child)) {
                break;
            }
        }
        isObject ? scene::AppendStep(pointer, name) : scene::AppendStep(pointer, index);
        at = child;
    }
    return pointer;
}

std::size_t JsonValue::Count() const {
    std::size_t count = 0;
    for (Iterator i = begin(); i != end(); ++i) {
        ++count;
    }
    return Kind() == JsonKind::object ? count / 2 : count;
}

std::string JsonValue::Pointer() const {
    return tree_->PointerTo(static_cast<std::size_t>(entry_ - tree_->entries_.data()));
}

std::string JsonValue::Describe() const {
    switch (Kind()) {
        case JsonKind::null:
            return "null";
        case JsonKind::boolean:
            return Boolean() ? "true" : "false";
        case JsonKind::integer:
            return (std::signbit(Real()) && Integer() == 0 ? "-" : "") + std::to_string(Integer());
        case JsonKind::real: {
            // The text has a point or an exponent, and is not to be read as a whole number.
            const std::string shown = scene::Shown(Real());
            const bool looksWhole = shown.find_first_not_of("-0123456789") == std::string::npos;
            return shown + (looksWhole ? ".0" : "");
        }
        case JsonKind::text:
            return scene::Shown(Text());
        case JsonKind::list:
            return Size() == 0 ? "an empty list" : "a list of " + std::to_string(Size());
        case JsonKind::object:
            return Size() == 0 ? "an empty object" : "an object";
    }
    return {};
}

void JsonValue::Refuse(std::string_view expected) const {
    throw scene::SceneError(Pointer(), Describe(), expected);
}

namespace {

constexpr std::size_t kMostFields = 24;  // of any object of the form
constexpr std::int64_t kLargestWord = std::numeric_limits<std::uint32_t>::max();

std::string PointerTo(JsonValue object, std::string_view name) {
    std::string pointer = object.Pointer();
    scene::AppendStep(pointer, name);
    return pointer;
}

}  // namespace

bool ReadBoolean(JsonValue value) {
    if (value.Kind() != JsonKind::boolean) {
        value.Refuse("true or false");
    }
    return value.Boolean();
}

std::string ReadText(JsonValue value) {
    if (value.Kind() != JsonKind::text) {
        value.Refuse("a text");
    }
    return std::string(value.Text());
}

void RefuseNotWhole(JsonValue value, std::int64_t least, std::int64_t most) {
    value.Refuse("a whole number from " + std::to_string(least) + " to " + std::to_string(most));
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

std::optional<std::uint32_t> ReadPositionName(std::string_view name) {
    std::uint32_t position = 0;
    const auto [end, fault] = std::from_chars(name.data(), name.data() + name.size(), position);
    const bool isAll = fault == std::errc() && end == name.data() + name.size();
    const bool hasLeadingZero = name.size() > 1 && name[0] == '0';
    return isAll && !hasLeadingZero ? std::optional(position) : std::nullopt;
}

std::string ListNames(std::span<const std::string_view> names) {
    std::vector<std::string_view> shown(names.begin(), names.end());
    std::erase(shown, std::string_view());
    std::string list;
    for (std::size_t i = 0; i < shown.size(); ++i) {
        const bool isLast = i + 1 == shown.size();
        list += i == 0 ? "" : isLast ? " or " : ", ";
        list += scene::Shown(shown[i]);
    }
    return list;
}

JsonObject::JsonObject(JsonValue object, std::string_view expected)
    : object_(object), next_(object.begin()) {
    if (object.Kind() != JsonKind::object) {
        object.Refuse(expected);
    }
}

std::optional<JsonValue> JsonObject::Look(std::string_view name) const {
    JsonValue::Iterator i = next_;
    for (std::size_t count = object_.Size(); count > 0; --count) {
        if (i == object_.end()) {
            i = object_.begin();
        }
        const bool isIt = (*i).Text() == name;
        ++i;
        const JsonValue value = *i;
        ++i;
        if (isIt) {
            next_ = i;
            return value;
        }
    }
    return std::nullopt;
}

std::optional<JsonValue> JsonObject::FindOrNull(std::string_view name) {
    if (known_.empty()) {
        known_.reserve(kMostFields);
    }
    known_.push_back(name);
    return Look(name);
}

std::optional<JsonValue> JsonObject::Find(std::string_view name) {
    const std::optional<JsonValue> value = FindOrNull(name);
    return value && value->Kind() != JsonKind::null ? value : std::nullopt;
}

std::optional<JsonValue> JsonObject::Require(std::string_view name, std::string (*what)()) {
    const std::optional<JsonValue> value = Find(name);
    if (!value && !missing_) {
        missing_ = Missing{name, what};
    }
    return value;
}

bool JsonObject::Has(std::string_view name) const {
    const std::optional<JsonValue> value = Look(name);
    return value && value->Kind() != JsonKind::null;
}

std::size_t JsonObject::Class(std::span<const std::string_view> names) {
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

void JsonObject::Close() const {
    std::size_t near = 0;
    JsonValue::Iterator i = object_.begin();
    while (i != object_.end()) {
        const std::string_view name = (*i).Text();
        if (!IsKnown(name, near)) {
            throw scene::SceneError(PointerTo(object_, name), "an unknown field",
                                    ListNames(known_));
        }
        ++i;
        ++i;  // past the name's value
    }
    if (missing_) {
        RefuseMissing(missing_->name, missing_->what());
    }
}

// Looks from `near` on, and leaves there where it was found.
bool JsonObject::IsKnown(std::string_view name, std::size_t& near) const {
    for (std::size_t i = 0; i < known_.size(); ++i, ++near) {
        near = near < known_.size() ? near : 0;
        if (known_[near] == name) {
            return true;
        }
    }
    return false;
}

void JsonObject::RefuseMissing(std::string_view name, std::string_view expected) const {
    const std::optional<JsonValue> value = Look(name);
    throw scene::SceneError(PointerTo(object_, name), value ? "null" : "nothing", expected);
}

}  // namespace maxhost::scene_file
