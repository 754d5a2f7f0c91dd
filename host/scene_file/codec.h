// How single values and lists of the plain-data scene stand in JSON, in both directions. Private to
// the scene description's reader and writer.
//
// A codec has Read(JsonValue, T&), which throws SceneError, Write(JsonOut&, const T&), What() and
// Many(), what messages call one such value and several of them, and kIsBlock: whether it begins a
// line where it is a field.
#pragma once

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/scene/error.h"
#include "host/scene/fields.h"
#include "host/scene_file/json_in.h"
#include "host/scene_file/json_out.h"

namespace maxhost::scene_file {

using scene::Meaning;

template <class T, Meaning kMeaning = Meaning::plain>
struct Codec;

struct Inline {
    static constexpr bool kIsBlock = false;
};

struct Block {
    static constexpr bool kIsBlock = true;
};

// Whether an element of a list begins a line.
template <class T>
constexpr bool kHasOwnLine = false;

// ---------------------------------------------------------------- single values

template <Meaning kMeaning>
struct Codec<bool, kMeaning> : Inline {
    static std::string What() { return "true or false"; }
    static void Read(JsonValue value, bool& result) { result = ReadBoolean(value); }
    static void Write(JsonOut& out, bool value) { out.Boolean(value); }
};

template <Meaning kMeaning>
struct Codec<float, kMeaning> : Inline {
    static std::string What() { return "a number"; }
    static std::string Many() { return "numbers"; }
    static void Read(JsonValue value, float& result) { result = ReadReal(value); }
    static void Write(JsonOut& out, float value) { out.Real(value); }
};

template <Meaning kMeaning>
struct Codec<std::string, kMeaning> : Inline {
    static std::string What() { return "a text"; }
    static void Read(JsonValue value, std::string& result) { result = ReadText(value); }
    static void Write(JsonOut& out, const std::string& value) { out.Text(value); }
};

// The name of a controller, where the empty text would be no name.
template <Meaning kMeaning>
requires(kMeaning == Meaning::name || kMeaning == Meaning::controllerName ||
         kMeaning == Meaning::floatName) struct Codec<std::string, kMeaning> : Inline {
    static std::string What() { return "a text that is not empty"; }
    static void Read(JsonValue value, std::string& result) {
        result = ReadText(value);
        if (result.empty()) {
            value.Refuse(What());
        }
    }
    static void Write(JsonOut& out, const std::string& value) { out.Text(value); }
};

template <std::integral T, Meaning kMeaning>
struct Codec<T, kMeaning> : Inline {
    static std::string What() { return "a whole number"; }
    static std::string Many() { return "whole numbers"; }
    static void Read(JsonValue value, T& result) {
        result = static_cast<T>(
            ReadWhole(value, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
    }
    static void Write(JsonOut& out, T value) { out.Whole(value); }
};

// A position in a list. In a field kNone stands for null.
template <Meaning kMeaning>
requires(kMeaning == Meaning::node || kMeaning == Meaning::nodeOrNone ||
         kMeaning == Meaning::material ||
         kMeaning == Meaning::materialOrNone) struct Codec<int, kMeaning> : Inline {
    static std::string What() { return "a position"; }
    static void Read(JsonValue value, int& result) {
        result = static_cast<int>(ReadWhole(value, 0, std::numeric_limits<int>::max()));
    }
    static void Write(JsonOut& out, int value) { out.Whole(value); }
};

template <>
struct Codec<std::uint32_t, Meaning::word> : Inline {
    static std::string What() { return "a whole number or \"0x...\""; }
    static std::string Many() { return "whole numbers or \"0x...\""; }
    static void Read(JsonValue value, std::uint32_t& result) { result = ReadWord(value); }
    static void Write(JsonOut& out, std::uint32_t value) { out.Word(value); }
};

constexpr std::array<std::string_view, 7> kTangentNames = {"smooth", "linear", "step", "fast",
                                                           "slow",   "custom", "flat"};

template <>
struct Codec<scene::Tangent> : Inline {
    static std::string What() { return ListNames(kTangentNames); }
    static void Read(JsonValue value, scene::Tangent& result) {
        const auto name = value.Kind() == JsonKind::text
                              ? std::find(kTangentNames.begin(), kTangentNames.end(), value.Text())
                              : kTangentNames.end();
        if (name == kTangentNames.end()) {
            value.Refuse(What());
        }
        result = static_cast<scene::Tangent>(name - kTangentNames.begin());
    }
    static void Write(JsonOut& out, scene::Tangent value) {
        out.Text(kTangentNames[static_cast<std::size_t>(value)]);
    }
};

// ---------------------------------------------------------------- lists

// A list of `kSize` values that stand in a row of memory.
template <class T, std::size_t kSize, Meaning kMeaning = Meaning::plain>
struct Row : Inline {
    using Part = Codec<T, kMeaning>;
    static std::string What() { return "a list of " + std::to_string(kSize) + " " + Part::Many(); }
    static std::string Many() { return "lists of " + std::to_string(kSize) + " " + Part::Many(); }
    static void ReadTo(JsonValue value, T* result) {
        if (!IsListOf(value, kSize)) {
            value.Refuse(What());
        }
        for (const JsonValue part : value) {
            Part::Read(part, *result++);
        }
    }
    static void WriteFrom(JsonOut& out, const T* values, std::size_t count = kSize) {
        out.BeginList();
        for (std::size_t i = 0; i < count; ++i) {
            out.Part();
            Part::Write(out, values[i]);
        }
        out.EndList();
    }
    template <class Array>
    static void Read(JsonValue value, Array& result) {
        ReadTo(value, result.data());
    }
    template <class Array>
    static void Write(JsonOut& out, const Array& value) {
        WriteFrom(out, value.data());
    }
};

template <class T, std::size_t kSize, Meaning kMeaning>
struct Codec<std::array<T, kSize>, kMeaning> : Row<T, kSize> {};

template <Meaning kMeaning>
struct Codec<scene::ClassId, kMeaning> : Row<std::uint32_t, 2, Meaning::word> {};

template <class T, Meaning kMeaning>
struct Codec<std::vector<T>, kMeaning> : Block {
    static std::string What() { return "a list"; }
    static void Read(JsonValue value, std::vector<T>& result) {
        if (value.Kind() != JsonKind::list) {
            value.Refuse(What());
        }
        result.clear();
        // A large element takes far more memory than its text, which may yet be refused.
        constexpr std::size_t kMostForAValue = 64;
        if (value.Size() * sizeof(T) <= value.Values() * kMostForAValue) {
            result.reserve(value.Size());
        }
        for (const JsonValue element : value) {
            Codec<T, kMeaning>::Read(element, result.emplace_back());
        }
    }
    static void Write(JsonOut& out, const std::vector<T>& value) {
        out.BeginList();
        for (const T& element : value) {
            if (kHasOwnLine<T>) {
                out.StartLine();
            }
            out.Item();
            Codec<T, kMeaning>::Write(out, element);
        }
        if (kHasOwnLine<T>) {
            out.StartLine();
        }
        out.EndList();
    }
};

// An object whose field names are numbers.
template <class Number, class T, Meaning kMeaning>
struct Codec<std::map<Number, T>, kMeaning> : Block {
    static std::string What() { return "an object with numbers as names"; }
    static void Read(JsonValue value, std::map<Number, T>& result) {
        if (value.Kind() != JsonKind::object) {
            value.Refuse(What());
        }
        for (JsonValue::Iterator i = value.begin(); i != value.end(); ++i) {
            const std::string_view name = (*i).Text();
            ++i;
            const std::optional<std::uint32_t> number = ReadPositionName(name);
            if (!number || !std::in_range<Number>(*number)) {
                throw scene::SceneError((*i).Pointer(), "the name " + scene::Shown(name),
                                        "a number as name");
            }
            if ((*i).Kind() != JsonKind::null) {
                Codec<T, kMeaning>::Read(*i, result[static_cast<Number>(*number)]);
            }
        }
    }
    static void Write(JsonOut& out, const std::map<Number, T>& value) {
        out.BeginObject();
        for (const auto& [number, element] : value) {
            if (kHasOwnLine<T>) {
                out.StartLine();
            }
            out.Name(std::to_string(number));
            Codec<T, kMeaning>::Write(out, element);
        }
        out.EndObject();
    }
};

// ---------------------------------------------------------------- pointers

template <class T, Meaning kMeaning>
struct Codec<std::shared_ptr<const T>, kMeaning> : Codec<T> {
    static void Read(JsonValue value, std::shared_ptr<const T>& result) {
        const auto made = std::make_shared<T>();
        Codec<T>::Read(value, *made);
        result = made;
    }
    static void Write(JsonOut& out, const std::shared_ptr<const T>& value) {
        Codec<T>::Write(out, *value);
    }
};

template <class T>
struct Codec<std::shared_ptr<const T>, Meaning::pointerOrNull> : Inline {
    static void Read(JsonValue value, std::shared_ptr<const T>& result) {
        if (value.Kind() != JsonKind::null) {
            Codec<std::shared_ptr<const T>>::Read(value, result);
        }
    }
    static void Write(JsonOut& out, const std::shared_ptr<const T>& value) {
        value ? Codec<T>::Write(out, *value) : out.Null();
    }
};

}  // namespace maxhost::scene_file
