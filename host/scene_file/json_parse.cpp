// How a text becomes a tree. One packaged parser is fast, another one tells well what is wrong: the
// first reads, and a text in which anything at all is amiss is read again by the second.
#include <rapidjson/reader.h>
#include <utf8.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "host/scene/error.h"
#include "host/scene_file/json_in.h"

namespace maxhost::scene_file {

// Puts values into a tree in the order of the text. Throws SceneError for what is JSON and yet
// refused.
class TreeBuilder {
  public:
    explicit TreeBuilder(JsonTree& tree) : tree_(tree) {}

    void Add(JsonKind kind, std::uint32_t payload = 0, std::uint32_t size = 0) {
        tree_.entries_.emplace_back(kind, size, payload);
    }
    void AddReal(float value) { Add(JsonKind::real, std::bit_cast<std::uint32_t>(value)); }
    void AddInteger(bool hasMinus, std::uint64_t digits);
    void AddText(const std::string& text);
    // The same for a text that has been put into Texts() with a NUL character behind it.
    void AddTextAt(std::size_t at);
    void Open(JsonKind kind);
    // So many elements of the list opened last are there already; Close() is told of the others.
    void CountAhead(std::size_t count);
    void Close();                  // the list or object opened last
    void Close(std::size_t size);  // the same, of so many elements or members

    std::string& Texts() { return tree_.texts_; }
    std::string PointerToLast() const { return tree_.PointerTo(tree_.entries_.size() - 1); }

  private:
    void RefuseTwins(std::size_t object);

    JsonTree& tree_;
    std::vector<std::size_t> open_;
    std::vector<std::pair<std::string_view, std::size_t>> names_;  // of one object, to and fro
};

void TreeBuilder::AddInteger(bool hasMinus, std::uint64_t digits) {
    if (digits <= std::numeric_limits<std::uint32_t>::max()) {
        Add(JsonKind::integer, static_cast<std::uint32_t>(digits), hasMinus ? 1 : 0);
        return;
    }
    Add(JsonKind::integer, static_cast<std::uint32_t>(tree_.longer_.size()), JsonEntry::kMany);
    tree_.longer_.push_back(static_cast<std::int64_t>(hasMinus ? 0 - digits : digits));
}

void TreeBuilder::AddText(const std::string& text) {
    const std::size_t at = Texts().size();
    Texts().append(text.c_str(), text.size() + 1);
    AddTextAt(at);
}

void TreeBuilder::AddTextAt(std::size_t at) {
    const std::size_t size = Texts().size() - 1 - at;
    Add(JsonKind::text, static_cast<std::uint32_t>(at),
        static_cast<std::uint32_t>(std::min<std::size_t>(size, JsonEntry::kMany)));
    if (Texts().find('\0', at) != at + size) {
        throw scene::SceneError(PointerToLast(), "text with a NUL character", "text without");
    }
}

void TreeBuilder::Open(JsonKind kind) {
    Add(kind, JsonTree::kOpen);
    open_.push_back(tree_.entries_.size() - 1);
    if (open_.size() > JsonTree::kMaxNesting) {
        const std::string most = std::to_string(JsonTree::kMaxNesting);
        throw scene::SceneError(PointerToLast(),
                                "lists and objects nested more than " + most + " levels deep",
                                "at most " + most + " levels");
    }
}

void TreeBuilder::CountAhead(std::size_t count) {
    JsonEntry& entry = tree_.entries_[open_.back()];
    entry = {entry.Kind(),
             static_cast<std::uint32_t>(std::min<std::size_t>(count, JsonEntry::kMany)),
             JsonTree::kOpen};
}

void TreeBuilder::Close() {
    std::size_t parts = 0;
    for (std::size_t at = open_.back() + 1; at != tree_.entries_.size(); at = tree_.End(at)) {
        ++parts;
    }
    const bool isObject = tree_.entries_[open_.back()].Kind() == JsonKind::object;
    Close(isObject ? parts / 2 : parts);
}

void TreeBuilder::Close(std::size_t size) {
    const std::size_t closed = open_.back();
    open_.pop_back();
    JsonEntry& entry = tree_.entries_[closed];
    size += entry.Size();
    entry = {entry.Kind(),
             static_cast<std::uint32_t>(std::min<std::size_t>(size, JsonEntry::kMany)),
             static_cast<std::uint32_t>(tree_.entries_.size() - closed)};
    if (entry.Kind() == JsonKind::object && size > 1) {
        RefuseTwins(closed);
    }
}

void TreeBuilder::RefuseTwins(std::size_t object) {
    names_.clear();
    const std::size_t end = tree_.End(object);
    for (std::size_t at = object + 1; at != end; at = tree_.End(at + 1)) {
        names_.emplace_back(tree_.At(at).Text(), at + 1);
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

namespace {

// Positions and sizes in the tree are never more than the bytes of the text.
constexpr std::size_t kLongestText = std::numeric_limits<std::uint32_t>::max();

// ---------------------------------------------------------------- the fast parser

// The text as the fast parser takes it. "In situ" it would put the characters of strings over the
// text; here they go to the tree. The function names are the parser's.
class Source {
  public:
    using Ch = char;

    Source(std::string_view text, std::string& strings)
        : begin_(text.data()), at_(begin_), end_(begin_ + text.size()), strings_(strings) {}

    char Peek() const { return at_ != end_ ? *at_ : '\0'; }
    char Take() { return *at_++; }
    std::size_t Tell() const { return static_cast<std::size_t>(at_ - begin_); }

    char* PutBegin() {
        stringAt_ = strings_.size();
        return nullptr;
    }
    void Put(char c) { strings_.push_back(c); }
    std::size_t PutEnd(char*) { return strings_.size() - stringAt_; }
    void Flush() {}

    // For what reads ahead of the parser.
    const char* At() const { return at_; }
    const char* End() const { return end_; }
    void SkipTo(const char* at) { at_ = at; }

    std::size_t StringAt() const { return stringAt_; }  // the last one's place in `strings`
    std::string_view Last(std::size_t size) const { return {at_ - size, size}; }

  private:
    const char* begin_;
    const char* at_;
    const char* end_;
    std::string& strings_;
    std::size_t stringAt_ = 0;
};

// Rounded once; nothing where it is not finite or cannot be told.
std::optional<float> RealOf(std::string_view token) {
    const char* const end = token.data() + token.size();
    float real = 0;
    if (std::from_chars(token.data(), end, real).ec == std::errc()) {
        return real;
    }
    double tiny = 0;
    const bool isKnown = std::from_chars(token.data(), end, tiny).ec == std::errc();
    if (isKnown && std::abs(tiny) < 1) {
        return static_cast<float>(std::copysign(0.0, tiny));
    }
    return std::nullopt;
}

const char* BehindSpace(const char* at, const char* end) {
    while (at != end && (*at == ' ' || *at == '\n' || *at == '\r' || *at == '\t')) {
        ++at;
    }
    return at;
}

const char* BehindDigits(const char* at, const char* end) {
    while (at != end && *at >= '0' && *at <= '9') {
        ++at;
    }
    return at;
}

// A number as JSON has them, where one stands.
struct NumberToken {
    const char* begin = nullptr;
    const char* end = nullptr;
    std::uint64_t digits = 0;  // of a whole number
    bool hasMinus = false;
    bool isNumber = false;
    bool isWhole = false;
};

NumberToken NumberAt(const char* begin, const char* end) {
    NumberToken token{.begin = begin, .hasMinus = begin != end && *begin == '-'};
    const char* const first = begin + (token.hasMinus ? 1 : 0);
    const char* at = first;
    for (; at != end && *at >= '0' && *at <= '9'; ++at) {
        token.digits = 10 * token.digits + static_cast<std::uint64_t>(*at - '0');
    }
    token.isNumber = at != first && (*first != '0' || at == first + 1);
    token.isWhole = true;
    const auto takeDigits = [&](const char* from) {
        at = BehindDigits(from, end);
        token.isNumber = token.isNumber && at != from;
        token.isWhole = false;
    };
    if (at != end && *at == '.') {
        takeDigits(at + 1);
    }
    if (at != end && (*at == 'e' || *at == 'E')) {
        const bool isSigned = at + 1 != end && (at[1] == '+' || at[1] == '-');
        takeDigits(at + (isSigned ? 2 : 1));
    }
    token.end = at;
    return token;
}

// False for what is no number, and for one that takes a closer look.
bool AddNumber(const NumberToken& token, TreeBuilder& builder) {
    constexpr std::ptrdiff_t kMostDigits = 18;  // with a sign, too
    if (!token.isNumber) {
        return false;
    }
    if (token.isWhole) {
        if (token.end - token.begin > kMostDigits) {
            return false;
        }
        builder.AddInteger(token.hasMinus, token.digits);
        return true;
    }
    float real = 0;
    if (std::from_chars(token.begin, token.end, real).ec != std::errc()) {
        return false;
    }
    builder.AddReal(real);
    return true;
}

// The fast parser's events put into the tree; false means that something is amiss.
class FastHandler {
  public:
    FastHandler(TreeBuilder& builder, Source& source, std::size_t textSize,
                const std::function<void(double)>& report)
        : builder_(builder), source_(source), textSize_(textSize), report_(report) {}

    bool Null() { return Add(JsonKind::null, 0); }
    bool Bool(bool value) { return Add(JsonKind::boolean, value ? 1 : 0); }
    bool RawNumber(const char*, std::size_t size, bool);
    bool String(const char*, std::size_t, bool);
    bool Key(const char*, std::size_t, bool) { return String(nullptr, 0, false); }
    bool StartObject() { return Open(JsonKind::object); }
    bool StartArray() {
        Open(JsonKind::list);
        TakeNumbers();
        return true;
    }
    bool EndObject(std::size_t size) { return Close(size); }
    bool EndArray(std::size_t size) { return Close(size); }

    // Not called: numbers come as they are written. The parser's own would be rounded twice, and an
    // exponent of ten digits could lead it out of its table.
    bool Int(int) { return false; }
    bool Uint(unsigned) { return false; }
    bool Int64(std::int64_t) { return false; }
    bool Uint64(std::uint64_t) { return false; }
    bool Double(double) { return false; }

  private:
    bool Add(JsonKind kind, std::uint32_t payload) {
        builder_.Add(kind, payload);
        return true;
    }
    bool Open(JsonKind kind) {
        builder_.Open(kind);
        return true;
    }
    bool Close(std::size_t size);
    void TakeNumbers();

    TreeBuilder& builder_;
    Source& source_;
    std::size_t textSize_;
    const std::function<void(double)>& report_;
    std::size_t reported_ = 0;
};

// Reads numbers at the beginning of a list in the parser's place, which calculates each before it
// hands over the text. It goes on where a value, or the list's end, may stand; a number before
// anything that is amiss is left to it.
void FastHandler::TakeNumbers() {
    const char* const end = source_.End();
    std::size_t count = 0;
    for (bool isLast = false; !isLast; ++count) {
        const NumberToken number = NumberAt(BehindSpace(source_.At(), end), end);
        const char* next = BehindSpace(number.end, end);
        isLast = next != end && *next == ']';
        if (!isLast) {
            const bool hasComma = next != end && *next == ',';
            next = hasComma ? BehindSpace(next + 1, end) : end;
        }
        const bool endsBadly = next == end || (!isLast && *next == ']');
        if (endsBadly || !AddNumber(number, builder_)) {
            break;
        }
        source_.SkipTo(next);
    }
    if (count > 0) {
        builder_.CountAhead(count);
    }
}

bool FastHandler::RawNumber(const char*, std::size_t size, bool) {
    const std::string_view token = source_.Last(size);
    const bool hasMinus = token[0] == '-';
    const char* const end = token.data() + token.size();
    std::uint64_t digits = 0;
    const auto [last, fault] = std::from_chars(token.data() + (hasMinus ? 1 : 0), end, digits);
    constexpr std::uint64_t kLargest = std::numeric_limits<std::int64_t>::max();
    if (last == end && fault == std::errc() && digits <= kLargest + (hasMinus ? 1 : 0)) {
        builder_.AddInteger(hasMinus, digits);
        return true;
    }
    const std::optional<float> real = RealOf(token);
    if (real) {
        builder_.AddReal(*real);
    }
    return real.has_value();
}

bool FastHandler::String(const char*, std::size_t, bool) {
    const std::string& strings = builder_.Texts();
    const auto begin = strings.begin() + static_cast<std::ptrdiff_t>(source_.StringAt());
    builder_.AddTextAt(source_.StringAt());
    const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    const auto special = std::find_if_not(begin, strings.end(), isAscii);
    return special == strings.end() || utf8::is_valid(special, strings.end());
}

bool FastHandler::Close(std::size_t size) {
    builder_.Close(size);
    constexpr std::size_t kStep = 1 << 16;
    const std::size_t read = source_.Tell();
    if (read >= reported_ + kStep) {
        reported_ = read;
        report_(static_cast<double>(read) / static_cast<double>(textSize_));
    }
    return true;
}

// Whether all is well; what is in the tree otherwise is of no use.
bool ParseFast(std::string_view text, JsonTree& tree, const std::function<void(double)>& report) {
    constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";
    if (text.starts_with(kByteOrderMark)) {
        text.remove_prefix(kByteOrderMark.size());
    }
    TreeBuilder builder(tree);
    Source source(text, builder.Texts());
    FastHandler handler(builder, source, text.size(), report);
    constexpr unsigned kFlags = rapidjson::kParseInsituFlag | rapidjson::kParseNumbersAsStringsFlag;
    try {
        return !rapidjson::Reader().Parse<kFlags>(source, handler).IsError();
    } catch (const scene::SceneError&) {
        return false;
    }
}

// ---------------------------------------------------------------- the parser that explains

// Its reals are f32, so that the text's digits are rounded once.
using Json = nlohmann::basic_json<std::map, std::vector, std::string, bool, std::int64_t,
                                  std::uint64_t, float>;

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

// The events of the parser that explains put into the tree; the function names are the parser's.
class ExplainingHandler {
  public:
    ExplainingHandler(JsonTree& tree, std::string_view text) : builder_(tree), text_(text) {}

    bool null() { return Add(JsonKind::null, 0); }
    bool boolean(bool value) { return Add(JsonKind::boolean, value ? 1 : 0); }
    bool number_float(float value, const std::string&) {
        builder_.AddReal(value);
        return true;
    }
    bool number_unsigned(std::uint64_t value);
    bool number_integer(std::int64_t value);
    bool string(const std::string& value) {
        builder_.AddText(value);
        return true;
    }
    bool binary(const Json::binary_t&) { return false; }  // JSON text has none
    bool start_object(std::size_t) { return Open(JsonKind::object); }
    bool key(const std::string& name) { return string(name); }
    bool end_object() { return Close(); }
    bool start_array(std::size_t) { return Open(JsonKind::list); }
    bool end_array() { return Close(); }
    bool parse_error(std::size_t position, const std::string& token, const Json::exception& fault);

  private:
    bool Add(JsonKind kind, std::uint32_t payload) {
        builder_.Add(kind, payload);
        return true;
    }
    bool Open(JsonKind kind) {
        builder_.Open(kind);
        return true;
    }
    bool Close() {
        builder_.Close();
        return true;
    }

    TreeBuilder builder_;
    std::string_view text_;
};

bool ExplainingHandler::number_unsigned(std::uint64_t value) {
    if (value > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
        builder_.AddReal(static_cast<float>(value));
    } else {
        builder_.AddInteger(false, value);
    }
    return true;
}

// Numbers with a minus sign alone come here, -0 among them.
bool ExplainingHandler::number_integer(std::int64_t value) {
    builder_.AddInteger(true, 0 - static_cast<std::uint64_t>(value));
    return true;
}

bool ExplainingHandler::parse_error(std::size_t position, const std::string& token,
                                    const Json::exception& fault) {
    constexpr int kNumberOverflow = 406;
    if (fault.id == kNumberOverflow) {
        builder_.AddReal(0);
        throw scene::SceneError(builder_.PointerToLast(),
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

}  // namespace

JsonTree::JsonTree(std::string_view text, const std::function<void(double)>& report) {
    if (text.size() > kLongestText) {
        throw scene::SceneError("", std::to_string(text.size()) + " bytes", "less than 4 GiB");
    }
    // The parsers would take a NUL byte for the end of the text.
    const std::size_t nul = text.find('\0');
    if (nul != std::string_view::npos) {
        RefuseText(text, nul, "a NUL byte, expected JSON text");
    }
    // Few texts have less than this to a value; those pay by moving what they have.
    constexpr std::size_t kBytesToAValue = 4;
    entries_.reserve(text.size() / kBytesToAValue);
    if (!ParseFast(text, *this, report)) {
        entries_.clear();
        texts_.clear();
        longer_.clear();
        ExplainingHandler handler(*this, text);
        Json::sax_parse(text.begin(), text.end(), &handler);
    }
    report(1);
}

}  // namespace maxhost::scene_file
