// Compares parts of scenes field by field: floats by their bits, shared data by what it holds.
#pragma once

#include <bit>
#include <cstdint>
#include <map>
#include <string>
#include <variant>

#include "host/scene/fields.h"

namespace maxhost::scene {

// Where `a` and `b` differ first, as in ".nodes[3].transform.kind.position"; "." for values without
// parts; empty when they do not differ.
template <class T>
std::string Difference(const T& a, const T& b);

// How a difference within a part continues the path to the part.
inline std::string Below(const std::string& difference) {
    return difference == "." ? "" : difference;
}

template <class List>
std::string DifferenceOfLists(const List& a, const List& b) {
    if (a.size() != b.size()) {
        return ".size";
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        const std::string within = Difference(a[i], b[i]);
        if (!within.empty()) {
            return "[" + std::to_string(i) + "]" + Below(within);
        }
    }
    return "";
}

template <class Number, class T>
std::string DifferenceOfMaps(const std::map<Number, T>& a, const std::map<Number, T>& b) {
    if (a.size() != b.size()) {
        return ".size";
    }
    for (const auto& [number, element] : a) {
        const auto found = b.find(number);
        if (found == b.end() || !Difference(element, found->second).empty()) {
            return "[" + std::to_string(number) + "]";
        }
    }
    return "";
}

template <class T>
std::string DifferenceOfFields(const T& a, const T& b) {
    std::string first;
    ForEachField<T>([&](const auto& field) {
        if (!first.empty()) {
            return;
        }
        const std::string within = Difference(field.Of(a), field.Of(b));
        if (!within.empty()) {
            first = "." + std::string(field.name) + Below(within);
        }
    });
    return first;
}

template <class... Kinds>
std::string DifferenceOfKinds(const std::variant<Kinds...>& a, const std::variant<Kinds...>& b) {
    if (a.index() != b.index()) {
        return ".index";
    }
    return std::visit(
        [&b](const auto& kind) {
            return Difference(kind, std::get<std::remove_cvref_t<decltype(kind)>>(b));
        },
        a);
}

template <class T>
std::string Difference(const T& a, const T& b) {
    if constexpr (std::is_same_v<T, float>) {
        return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b) ? "" : ".";
    } else if constexpr (Structure<T>) {
        return DifferenceOfFields(a, b);
    } else if constexpr (requires { a.valueless_by_exception(); }) {
        return DifferenceOfKinds(a, b);
    } else if constexpr (requires { typename T::mapped_type; }) {
        return DifferenceOfMaps(a, b);
    } else if constexpr (requires { *a; }) {
        return a && b ? Difference(*a, *b) : !a == !b ? "" : ".presence";
    } else if constexpr (requires { a.size(); } && !std::is_same_v<T, std::string>) {
        return DifferenceOfLists(a, b);
    } else {
        return a == b ? "" : ".";
    }
}

}  // namespace maxhost::scene
