#include "host/scene_file/json_in.h"

#include <utf8.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <functional>
#include <iterator>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>
#include <utility>

#include "host/scene/error.h"

namespace maxhost::scene_file {
namespace {

// Its reals are f32, so that the text's digits are rounded once.
using Json = nlohmann::basic_json<std::map, std::vector, std::string, bool, std::int64_t,
                                  std::uint64_t, float>;

// Positions and sizes in the tree are never more than the bytes of the text.
constexpr std::size_t kLongestText = std::numeric_limits<std::uint32_t>::max();

constexpr std::uint32_t kMinus = 1;  // the size of an integer: it is -0

constexpr std::uint64_t kOpen = 0;  // the end of a list or object that is still being read

[[noreturn]] void RefuseText(std::string_view text, std::size_t at, const std::string& what) {
    const std::string_view before = text.substr(0, at);
    const std::size_t line = 1 + std::count(before.begin(), before.end(), '\n');
    const std::size_t lineStart = before.rfind('\n') + 1;  // npos + 1 is 0
    throw scene::SceneError("line " + std::to_string(line) + ", column " +
                            std::to_string(at - lineStart + 1) + ": " + what);
}

// The parser's own message without its preamble, and with what stands at the place instead of all
// that the parser has read.
std::string ParserMessage(std::string message, const std::string& token, std::string_view rest) {
    const std::size_t detail = message.find(" - ");
    if (detail != std::string::npos) {
        message.erase(0, detail + 3);
    }
    const std::string lastRead = "; last read: '" + token + "'";
    const std::size_t at = message.find(lastRead);
    if (at != std::string::npos) {
        message.replace(at, lastRead.size(),
                        " at " + scene::Shown(rest.substr(0, rest.find('\n'))));
    }
    return message;
}

// A place in the text that says from time to time how far it is.
class WatchedPlace {
  public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    WatchedPlace(std::string_view text, const std::function<void(double)>& report)
        : text_(text), report_(&report), at_(text.data()) {
        Watch();
    }
    static WatchedPlace EndOf(std::string_view text, const std::function<void(double)>& report) {
        WatchedPlace end(text, report);
        end.at_ = text.data() + text.size();
        return end;
    }

    reference operator*() const { return *at_; }
    WatchedPlace& operator++() {
        if (++at_ == next_) {
            (*report_)(static_cast<double>(at_ - text_.data()) / static_cast<double>(text_.size()));
            Watch();
        }
        return *this;
    }
    bool operator==(const WatchedPlace& other) const { return at_ == other.at_; }

  private:
    void Watch() {
        constexpr std::ptrdiff_t kStep = 1 << 16;
        const char* const end = text_.data() + text_.size();
        next_ = end - at_ > kStep ? at_ + kStep : end;
    }

    std::string_view text_;
    const std::function<void(double)>* report_;
    const char* at_;
    const char* next_ = nullptr;
};

}  // namespace

// The parser's events put into the tree; the function names are the parser's.
class TreeBuilder {
  public:
    TreeBuilder(JsonTree& tree, std::string_view text) : tree_(tree), text_(text) {}

    bool null() { return Add(JsonKind::null, 0); }
    bool boolean(bool value) { return Add(JsonKind::boolean, value ? 1 : 0); }
    bool number_float(float value, const std::string&) { return AddReal(value); }
    bool number_unsigned(std::uint64_t value) {
        if (value > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
            return AddReal(static_cast<float>(value));
        }
        return Add(JsonKind::integer, value);
    }
    bool number_integer(std::int64_t value) {
        if (value == 0) {
            return Add(JsonKind::integer, 0, kMinus);  // numbers with a minus sign alone come here
        }
        return Add(JsonKind::integer, static_cast<std::uint64_t>(value));
    }
    bool string(const std::string& value) {
        Count();
        return AddText(value);
    }
    bool binary(const Json::binary_t&) { return false; }  // JSON text has none

    bool start_object(std::size_t) { return Open(JsonKind::object); }
    bool key(const std::string& name) {
        ++tree_.entries_[open_.back()].size;
        isValueOfName_ = true;
        return AddText(name);
    }
    bool end_object() {
        Close();
        RefuseTwins(closed_);
        return true;
    }
    bool start_array(std::size_t) { return Open(JsonKind::list); }
    bool end_array() { return Close(); }

    bool parse_error(std::size_t position, const std::string& token, const Json::exception& fault);

  private:
    void Count();
    bool Add(JsonKind kind, std::uint64_t payload, std::uint32_t size = 0);
    bool AddReal(float value) { return Add(JsonKind::real, std::bit_cast<std::uint32_t>(value)); }
    bool AddText(const std::string& text);
    bool Open(JsonKind kind);
    bool Close();
    void RefuseTwins(std::size_t object);

    JsonTree& tree_;
    std::string_view text_;
    std::vector<std::size_t> open_;
    std::size_t closed_ = 0;
    bool isValueOfName_ = false;
    std::vector<std::pair<std::string_view, std::size_t>> names_;  // of one object, to and fro
};

// Elements count when they come; members counted when their name came.
void TreeBuilder::Count() {
    if (!open_.empty() && !isValueOfName_) {
        ++tree_.entries_[open_.back()].size;
    }
    isValueOfName_ = false;
}

bool TreeBuilder::Add(JsonKind kind, std::uint64_t payload, std::uint32_t size) {
    Count();
    tree_.entries_.push_back({kind, size, payload});
    return true;
}

bool TreeBuilder::AddText(const std::string& text) {
    tree_.entries_.push_back(
        {JsonKind::text, static_cast<std::uint32_t>(text.size()), tree_.texts_.size()});
    tree_.texts_ += text;
    if (text.find('\0') != std::string::npos) {
        throw scene::SceneError(tree_.PointerTo(tree_.entries_.size() - 1),
                                "text with a NUL character", "text without");
    }
    return true;
}

bool TreeBuilder::Open(JsonKind kind) {
    Add(kind, kOpen);
    open_.push_back(tree_.entries_.size() - 1);
    if (open_.size() > JsonTree::kMaxNesting) {
        const std::string most = std::to_string(JsonTree::kMaxNesting);
        throw scene::SceneError(tree_.PointerTo(open_.back()),
                                "lists and objects nested more than " + most + " levels deep",
                                "at most " + most + " levels");
    }
    return true;
}

bool TreeBuilder::Close() {
    closed_ = open_.back();
    open_.pop_back();
    tree_.entries_[closed_].payload = tree_.entries_.size();
    return true;
}

void TreeBuilder::RefuseTwins(std::size_t object) {
    names_.clear();
    const std::size_t end = tree_.End(object);
    for (std::size_t at = object + 1; at != end; at = tree_.End(at + 1)) {
        names_.emplace_back(JsonValue(tree_, at).Text(), at + 1);
    }
    std::sort(names_.begin(), names_.end());
    std::size_t firstTwin = end;
    for (std::size_t i = 1; i < names_.size(); ++i) {
        if (names_[i].first == names_[i - 1].first) {
            firstTwin = std::min(firstTwin, names_[i].second);
        }
    }
    if (firstTwin != end) {
        throw scene::SceneError(tree_.PointerTo(firstTwin), "a field given twice", "it once");
    }
}

bool TreeBuilder::parse_error(std::size_t position, const std::string& token,
                              const Json::exception& fault) {
    constexpr int kNumberOverflow = 406;
    if (fault.id == kNumberOverflow) {
        Add(JsonKind::real, 0);
        throw scene::SceneError(tree_.PointerTo(tree_.entries_.size() - 1),
                                token.size() > 40 ? token.substr(0, 40) + "..." : token,
                                "a number that is finite as f32");
    }
    // `position` counts the bytes read, the one that does not fit included. The byte that does not
    // fit an ill-formed character stands behind its beginning.
    std::size_t at = std::min(position == 0 ? 0 : position - 1, text_.size());
    const auto* const illFormed = utf8::find_invalid(text_.begin(), text_.end());
    at = std::min(at, static_cast<std::size_t>(illFormed - text_.begin()));
    RefuseText(text_, at, ParserMessage(fault.what(), token, text_.substr(at)));
}

JsonTree::JsonTree(std::string_view text, const std::function<void(double)>& report) {
    if (text.size() > kLongestText) {
        throw scene::SceneError("", std::to_string(text.size()) + " bytes", "less than 4 GiB");
    }
    // The parser would take a NUL byte for the end of the text.
    const std::size_t nul = text.find('\0');
    if (nul != std::string_view::npos) {
        RefuseText(text, nul, "a NUL byte, expected JSON text");
    }
    TreeBuilder builder(*this, text);
    Json::sax_parse(WatchedPlace(text, report), WatchedPlace::EndOf(text, report), &builder);
}

// Where the value that follows the one at `at` begins.
std::size_t JsonTree::End(std::size_t at) const {
    const Entry& entry = entries_[at];
    const bool isLeaf = entry.kind != JsonKind::list && entry.kind != JsonKind::object;
    if (isLeaf) {
        return at + 1;
    }
    return entry.payload == kOpen ? entries_.size() : entry.payload;
}

// Goes down from the root, so that nobody has to carry pointers about while all is well.
std::string JsonTree::PointerTo(std::size_t target) const {
    std::string pointer;
    std::size_t at = 0;
    while (at != target) {
        const bool isObject = entries_[at].kind == JsonKind::object;
        const std::size_t end = End(at);
        std::size_t index = 0;
        std::size_t child = at + 1;
        std::string_view name;
        for (; child < end; child = End(child), ++index) {
            if (isObject) {
                name = JsonValue(*this, child).Text();
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

JsonKind JsonValue::Kind() const {
    return tree_->entries_[at_].kind;
}

bool JsonValue::Boolean() const {
    return tree_->entries_[at_].payload != 0;
}

std::int64_t JsonValue::Integer() const {
    return static_cast<std::int64_t>(tree_->entries_[at_].payload);
}

float JsonValue::Real() const {
    if (Kind() == JsonKind::integer) {
        return Size() == kMinus ? -0.0f : static_cast<float>(Integer());
    }
    return std::bit_cast<float>(static_cast<std::uint32_t>(tree_->entries_[at_].payload));
}

std::string_view JsonValue::Text() const {
    const JsonTree::Entry& entry = tree_->entries_[at_];
    return std::string_view(tree_->texts_).substr(entry.payload, entry.size);
}

std::size_t JsonValue::Size() const {
    return tree_->entries_[at_].size;
}

JsonValue::Iterator& JsonValue::Iterator::operator++() {
    at_ = tree_->End(at_);
    return *this;
}

JsonValue::Iterator JsonValue::begin() const {
    return {*tree_, at_ + 1};
}

JsonValue::Iterator JsonValue::end() const {
    return {*tree_, tree_->End(at_)};
}

std::string JsonValue::Pointer() const {
    return tree_->PointerTo(at_);
}

std::string JsonValue::Describe() const {
    switch (Kind()) {
        case JsonKind::null:
            return "null";
        case JsonKind::boolean:
            return Boolean() ? "true" : "false";
        case JsonKind::integer:
            return (Size() == kMinus ? "-" : "") + std::to_string(Integer());
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

JsonObject::JsonObject(JsonValue object, std::string_view expected) : object_(object) {
    if (object.Kind() != JsonKind::object) {
        object.Refuse(expected);
    }
}

std::optional<JsonValue> JsonObject::Look(std::string_view name) const {
    for (JsonValue::Iterator i = object_.begin(); i != object_.end(); ++i) {
        const bool isIt = (*i).Text() == name;
        ++i;
        if (isIt) {
            return *i;
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
    JsonValue::Iterator i = object_.begin();
    while (i != object_.end()) {
        const std::string_view name = (*i).Text();
        if (std::find(known_.begin(), known_.end(), name) == known_.end()) {
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

void JsonObject::RefuseMissing(std::string_view name, std::string_view expected) const {
    const std::optional<JsonValue> value = Look(name);
    throw scene::SceneError(PointerTo(object_, name), value ? "null" : "nothing", expected);
}

}  // namespace maxhost::scene_file
