// How single values of the plain-data scene stand in JSON, in both directions. Private to the scene
// description's reader and writer.
//
// A codec has Read(JsonValue, T&), which throws SceneError, Write(JsonOut&, const T&), What() and
// Many(), what messages call one such value and several of them, and kIsBlock: whether it begins a
// line where it is a field. Codec<T> is that of a type with one form. A structure's form is stated
// once, by a function Describe(io, value) that hands each field to a FieldReader or a FieldWriter.
#pragma once

#include <array>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "host/scene/scene.h"
#include "host/scene_file/json_fields.h"
#include "host/scene_file/json_out.h"

namespace maxhost::import {

template <class T>
struct Codec;

// T or const T: Describe functions take a value to fill or a value to write.
template <class T, class U>
concept Is = std::same_as<std::remove_const_t<T>, U>;

// Bits count, so that -0 is not taken for 0.
template <class T>
bool IsSame(const T& a, const T& b) {
    return a == b;
}
inline bool IsSame(float a, float b) {
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}
inline bool IsSame(const scene::Time& a, const scene::Time& b) {
    return a.frameRate == b.frameRate && a.ticksPerFrame == b.ticksPerFrame && a.start == b.start &&
           a.end == b.end;
}
template <class T, std::size_t kSize>
bool IsSame(const std::array<T, kSize>& a, const std::array<T, kSize>& b) {
    for (std::size_t i = 0; i < kSize; ++i) {
        if (!IsSame(a[i], b[i])) {
            return false;
        }
    }
    return true;
}

// ---------------------------------------------------------------- fields

class FieldReader {
  public:
    static constexpr bool kReads = true;

    explicit FieldReader(Fields& fields) : fields_(fields) {}

    template <class T, class C = Codec<T>>
    void Required(std::string_view name, T& value, C codec = {}) {
        if (const std::optional<JsonValue> found = fields_.Require(name, &C::What)) {
            codec.Read(*found, value);
        }
    }
    template <class T, class C = Codec<T>>
    void Required(std::string_view name, std::optional<T>& value, C codec = {}) {
        Required(name, value.emplace(), codec);
    }
    // The default is what `value` already holds.
    template <class T, class C = Codec<T>>
    void Field(std::string_view name, T& value, const T&, C codec = {}) {
        if (const std::optional<JsonValue> found = fields_.Find(name)) {
            codec.Read(*found, value);
        }
    }
    template <class T, class C = Codec<T>>
    void Optional(std::string_view name, std::optional<T>& value, C codec = {}) {
        if (const std::optional<JsonValue> found = fields_.Find(name)) {
            codec.Read(*found, value.emplace());
        }
    }
    template <class Container, class C = Codec<Container>>
    void List(std::string_view name, Container& value, C codec = {}) {
        Field(name, value, value, codec);
    }
    // The field "class", a position in `names`; see Fields::Class().
    void Class(std::size_t& kind, std::initializer_list<std::string_view> names) {
        kind = fields_.Class(names);
    }

    Fields& Source() { return fields_; }

  private:
    Fields& fields_;
};

// Leaves out fields that hold their default, empty lists and what is absent.
class FieldWriter {
  public:
    static constexpr bool kReads = false;

    explicit FieldWriter(JsonOut& out) : out_(out) {}

    template <class T, class C = Codec<T>>
    void Required(std::string_view name, const T& value, C codec = {}) {
        if (C::kIsBlock) {
            out_.StartLine();
        }
        out_.Name(name);
        codec.Write(out_, value);
    }
    template <class T, class C = Codec<T>>
    void Required(std::string_view name, const std::optional<T>& value, C codec = {}) {
        Required(name, value.value(), codec);
    }
    template <class T, class C = Codec<T>>
    void Field(std::string_view name, const T& value, const T& standard, C codec = {}) {
        if (!IsSame(value, standard)) {
            Required(name, value, codec);
        }
    }
    template <class T, class C = Codec<T>>
    void Optional(std::string_view name, const std::optional<T>& value, C codec = {}) {
        if (value) {
            Required(name, *value, codec);
        }
    }
    template <class Container, class C = Codec<Container>>
    void List(std::string_view name, const Container& value, C codec = {}) {
        if (!value.empty()) {
            Required(name, value, codec);
        }
    }
    void Class(std::size_t kind, std::initializer_list<std::string_view> names) {
        out_.Name("class");
        out_.Text(names.begin()[kind]);
    }

    JsonOut& Target() { return out_; }

  private:
    JsonOut& out_;
};

// ---------------------------------------------------------------- single values

struct Inline {
    static constexpr bool kIsBlock = false;
};

struct Block {
    static constexpr bool kIsBlock = true;
};

// What a structure is called in messages; see the specialisations beside the Describe functions.
template <class T>
constexpr std::string_view kNameOf = "an object";

template <class T>
constexpr bool kIsBlockOf = false;

// A structure with a Describe function.
template <class T>
struct Codec {
    static constexpr bool kIsBlock = kIsBlockOf<T>;
    static std::string What() { return std::string(kNameOf<T>); }
    static void Read(JsonValue value, T& result) {
        Fields fields(value, kNameOf<T>);
        FieldReader io(fields);
        Describe(io, result);
        fields.Close();
    }
    static void Write(JsonOut& out, const T& value) {
        out.BeginObject();
        FieldWriter io(out);
        Describe(io, value);
        out.EndObject();
    }
};

template <>
struct Codec<bool> : Inline {
    static std::string What() { return "true or false"; }
    static void Read(JsonValue value, bool& result) { result = ReadBoolean(value); }
    static void Write(JsonOut& out, bool value) { out.Boolean(value); }
};

template <>
struct Codec<float> : Inline {
    static std::string What() { return "a number"; }
    static std::string Many() { return "numbers"; }
    static void Read(JsonValue value, float& result) { result = ReadReal(value); }
    static void Write(JsonOut& out, float value) { out.Real(value); }
};

template <>
struct Codec<std::string> : Inline {
    static std::string What() { return "a text"; }
    static void Read(JsonValue value, std::string& result) { result = ReadText(value); }
    static void Write(JsonOut& out, const std::string& value) { out.Text(value); }
};

template <class T>
requires std::is_integral_v<T>
struct Codec<T> : Inline {
    static std::string What() { return "a whole number"; }
    static std::string Many() { return "whole numbers"; }
    static void Read(JsonValue value, T& result) {
        result = static_cast<T>(
            ReadWhole(value, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
    }
    static void Write(JsonOut& out, T value) { out.Whole(value); }
};

// A position in nodes, materials or bones. In a field kNone stands for null.
struct Position : Inline {
    static std::string What() { return "a position"; }
    static void Read(JsonValue value, int& result) {
        result = static_cast<int>(ReadWhole(value, 0, std::numeric_limits<int>::max()));
    }
    static void Write(JsonOut& out, int value) { out.Whole(value); }
};

// An id: a class id's half, a super class id, flags.
struct Word : Inline {
    static std::string What() { return "a whole number or \"0x...\""; }
    static std::string Many() { return "whole numbers or \"0x...\""; }
    static void Read(JsonValue value, std::uint32_t& result) { result = ReadWord(value); }
    static void Write(JsonOut& out, std::uint32_t value) { out.Word(value); }
};

// The name of a controller, where the empty text would be no name.
struct Id : Inline {
    static std::string What() { return "a text that is not empty"; }
    static void Read(JsonValue value, std::string& result) {
        result = ReadText(value);
        if (result.empty()) {
            value.Refuse(What());
        }
    }
    static void Write(JsonOut& out, const std::string& value) { out.Text(value); }
};

// ---------------------------------------------------------------- lists

// A list of `kSize` values that stand in a row of memory.
template <class T, std::size_t kSize, class C = Codec<T>>
struct Row : Inline {
    static std::string What() { return "a list of " + std::to_string(kSize) + " " + C::Many(); }
    static std::string Many() { return "lists of " + std::to_string(kSize) + " " + C::Many(); }
    static void ReadTo(JsonValue value, T* result) {
        if (value.Kind() != JsonKind::list || value.Size() != kSize) {
            value.Refuse(What());
        }
        for (const JsonValue part : value) {
            C::Read(part, *result++);
        }
    }
    static void WriteFrom(JsonOut& out, const T* values, std::size_t count = kSize) {
        out.BeginList();
        for (std::size_t i = 0; i < count; ++i) {
            out.Part();
            C::Write(out, values[i]);
        }
        out.EndList();
    }
};

template <class T, std::size_t kSize>
struct Codec<std::array<T, kSize>> : Row<T, kSize> {
    static void Read(JsonValue value, std::array<T, kSize>& result) {
        Codec::ReadTo(value, result.data());
    }
    static void Write(JsonOut& out, const std::array<T, kSize>& value) {
        Codec::WriteFrom(out, value.data());
    }
};

template <>
struct Codec<scene::ClassId> : Row<std::uint32_t, 2, Word> {
    static void Read(JsonValue value, scene::ClassId& result) { ReadTo(value, result.data()); }
    static void Write(JsonOut& out, const scene::ClassId& value) { WriteFrom(out, value.data()); }
};

// Whether such an element of a list begins a line.
template <class T>
constexpr bool kHasOwnLine = false;

template <class T, class C = Codec<T>>
struct ListOf : Block {
    static std::string What() { return "a list"; }
    static void Read(JsonValue value, std::vector<T>& result) {
        if (value.Kind() != JsonKind::list) {
            value.Refuse(What());
        }
        result.clear();
        // Numbers are what there are millions of. A large element takes far more memory than its
        // text, which may yet be refused.
        constexpr std::size_t kSmall = 64;
        if (sizeof(T) <= kSmall) {
            result.reserve(value.Size());
        }
        for (const JsonValue element : value) {
            C::Read(element, result.emplace_back());
        }
    }
    static void Write(JsonOut& out, const std::vector<T>& value) {
        out.BeginList();
        for (const T& element : value) {
            if (kHasOwnLine<T>) {
                out.StartLine();
            }
            out.Item();
            C::Write(out, element);
        }
        if (kHasOwnLine<T>) {
            out.StartLine();
        }
        out.EndList();
    }
};

template <class T>
struct Codec<std::vector<T>> : ListOf<T> {};

template <class T>
struct Codec<std::shared_ptr<const T>> : Codec<T> {
    static void Read(JsonValue value, std::shared_ptr<const T>& result) {
        const auto made = std::make_shared<T>();
        Codec<T>::Read(value, *made);
        result = made;
    }
    static void Write(JsonOut& out, const std::shared_ptr<const T>& value) {
        Codec<T>::Write(out, *value);
    }
};

// A pointer that null stands for when it points nowhere.
template <class T>
struct NullOr : Inline {
    static void Read(JsonValue value, std::shared_ptr<const T>& result) {
        if (value.Kind() != JsonKind::null) {
            Codec<std::shared_ptr<const T>>::Read(value, result);
        }
    }
    static void Write(JsonOut& out, const std::shared_ptr<const T>& value) {
        value ? Codec<T>::Write(out, *value) : out.Null();
    }
};

// An integer and a float: [slot, weight], [node, weight].
template <class First>
void ReadPair(JsonValue value, int& first, float& second, std::string_view expected) {
    if (value.Kind() != JsonKind::list || value.Size() != 2) {
        value.Refuse(expected);
    }
    JsonValue::Iterator part = value.begin();
    First::Read(*part, first);
    ++part;
    Codec<float>::Read(*part, second);
}

template <class First>
void WritePair(JsonOut& out, int first, float second) {
    out.BeginList();
    out.Part();
    First::Write(out, first);
    out.Part();
    out.Real(second);
    out.EndList();
}

template <class Variant, std::size_t... kIndices>
void EmplaceAlternative(Variant& variant, std::size_t index, std::index_sequence<kIndices...>) {
    ((index == kIndices ? static_cast<void>(variant.template emplace<kIndices>()) : void()), ...);
}

// The field "class" of a structure that a variant makes one of several.
template <class Io, class Variant>
void DescribeClass(Io& io, Variant& kind, std::initializer_list<std::string_view> names) {
    std::size_t index = kind.index();
    io.Class(index, names);
    if constexpr (Io::kReads) {
        EmplaceAlternative(kind, index, std::make_index_sequence<std::variant_size_v<Variant>>());
    }
}

}  // namespace maxhost::import
