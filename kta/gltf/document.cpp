#include "kta/gltf/document.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <type_traits>

namespace kta::gltf {
namespace {

// The order in which a document's lists are written.
constexpr const char* kLists[] = {"scenes",   "nodes",  "meshes",     "skins",     "materials",
                                  "textures", "images", "animations", "accessors", "bufferViews"};

template <typename Component>
constexpr int ComponentType() {
    if constexpr (std::is_same_v<Component, float>) {
        return 5126;
    } else if constexpr (std::is_same_v<Component, std::uint32_t>) {
        return 5125;
    } else if constexpr (std::is_same_v<Component, std::uint16_t>) {
        return 5123;
    } else {
        static_assert(std::is_same_v<Component, std::uint8_t>);
        return 5121;
    }
}

std::size_t ComponentsOf(std::string_view form) {
    return form == "SCALAR" ? 1 : form == "MAT4" ? 16 : static_cast<std::size_t>(form[3] - '0');
}

template <typename Component>
void AddBounds(std::span<const Component> values, std::size_t components, Json& accessor) {
    std::vector<Component> least(values.begin(), values.begin() + std::ptrdiff_t(components));
    std::vector<Component> greatest = least;
    for (std::size_t i = components; i < values.size(); ++i) {
        least[i % components] = std::min(least[i % components], values[i]);
        greatest[i % components] = std::max(greatest[i % components], values[i]);
    }
    accessor["min"] = least;
    accessor["max"] = greatest;
}

constexpr std::uint64_t kMostBytes = std::numeric_limits<std::uint32_t>::max();

[[noreturn]] void RefuseLength() {
    throw std::length_error("a GLB file holds at most 4 GiB");
}

void AppendU32(std::vector<std::uint8_t>& bytes, std::uint64_t value) {
    for (int i = 0; i < 4; ++i) {
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    }
}

constexpr std::size_t kAlignment = 4;

template <typename Bytes>
void Pad(Bytes& bytes, char filler) {
    while (bytes.size() % kAlignment != 0) {
        bytes.push_back(static_cast<typename Bytes::value_type>(filler));
    }
}

}  // namespace

float Stored(double value) {
    constexpr double kMost = std::numeric_limits<float>::max();
    const double finite = std::isnan(value) ? 0 : std::clamp(value, -kMost, kMost);
    return static_cast<float>(finite) + 0.0f;  // of both zeros the positive one
}

Json JsonOf(const Vector3& v) {
    return {Stored(v[0]), Stored(v[1]), Stored(v[2])};
}

Json JsonOf(const Quaternion& q) {
    return {Stored(q[0]), Stored(q[1]), Stored(q[2]), Stored(q[3])};
}

std::array<float, 16> Exchanged(const Affine& a) {
    std::array<float, 16> matrix{};
    const Vector3* const columns[] = {&a.axes[0], &a.axes[1], &a.axes[2], &a.translation};
    for (std::size_t column = 0; column < 4; ++column) {
        const Vector3 v = Exchanged(*columns[column] * (column == 2 ? -1 : 1));
        for (std::size_t row = 0; row < 3; ++row) {
            matrix[4 * column + row] = Stored(v[row]);
        }
    }
    matrix[15] = 1;
    return matrix;
}

std::size_t Document::Add(const char* list, Json object) {
    Json& objects = lists_.try_emplace(list, Json::array()).first->second;
    objects.push_back(std::move(object));
    return objects.size() - 1;
}

std::size_t Document::Count(const char* list) const {
    const auto found = lists_.find(list);
    return found == lists_.end() ? 0 : found->second.size();
}

void Document::Use(const char* extension) {
    extensions_[extension] = true;
}

std::size_t Document::AddView(const void* bytes, std::size_t size, Usage usage) {
    if (bufferSize_ + size > kMostBytes) {
        RefuseLength();
    }
    Json view = {{"buffer", 0}, {"byteOffset", bufferSize_}, {"byteLength", size}};
    if (usage != Usage::data) {
        view["target"] = usage == Usage::vertices ? 34962 : 34963;
    }
    const auto* const first = static_cast<const std::uint8_t*>(bytes);
    std::vector<std::uint8_t>& piece = buffer_.emplace_back();
    piece.reserve(size + kAlignment - 1);
    piece.assign(first, first + size);
    Pad(piece, 0);
    bufferSize_ += piece.size();
    return Add("bufferViews", std::move(view));
}

std::size_t Document::AddBufferView(std::span<const std::uint8_t> bytes) {
    return AddView(bytes.data(), bytes.size(), Usage::data);
}

template <typename Component>
std::size_t Document::AddAccessor(std::span<const Component> values, const char* form, Usage usage,
                                  bool withBounds) {
    static_assert(std::endian::native == std::endian::little);
    const std::size_t components = ComponentsOf(form);
    Json accessor = {{"bufferView", AddView(values.data(), values.size_bytes(), usage)},
                     {"componentType", ComponentType<Component>()},
                     {"count", values.size() / components},
                     {"type", form}};
    if (withBounds) {
        AddBounds(values, components, accessor);
    }
    return Add("accessors", std::move(accessor));
}

template std::size_t Document::AddAccessor(std::span<const float>, const char*, Usage, bool);
template std::size_t Document::AddAccessor(std::span<const std::uint8_t>, const char*, Usage, bool);
template std::size_t Document::AddAccessor(std::span<const std::uint16_t>, const char*, Usage,
                                           bool);
template std::size_t Document::AddAccessor(std::span<const std::uint32_t>, const char*, Usage,
                                           bool);

void Document::Encode(Json head, const std::function<void(std::span<const std::uint8_t>)>& put) {
    for (const auto& [extension, used] : extensions_) {
        head["extensionsUsed"].push_back(extension);
    }
    for (const char* const list : kLists) {
        if (const auto found = lists_.find(list); found != lists_.end()) {
            head[list] = std::move(found->second);
        }
    }
    if (bufferSize_ > 0) {
        head["buffers"] = Json::array({{{"byteLength", bufferSize_}}});
    }
    std::string json = head.dump();
    Pad(json, ' ');
    const std::uint64_t size =
        12 + 8 + json.size() + (bufferSize_ == 0 ? 0 : 8 + std::uint64_t{bufferSize_});
    if (size > kMostBytes) {
        RefuseLength();
    }
    std::vector<std::uint8_t> start;
    AppendU32(start, 0x46546C67);  // "glTF"
    AppendU32(start, 2);
    AppendU32(start, size);
    AppendU32(start, json.size());
    AppendU32(start, 0x4E4F534A);  // "JSON"
    start.insert(start.end(), json.begin(), json.end());
    if (bufferSize_ > 0) {
        AppendU32(start, bufferSize_);
        AppendU32(start, 0x004E4942);  // "BIN"
    }
    put(start);
    for (const std::vector<std::uint8_t>& piece : buffer_) {
        put(piece);
    }
}

}  // namespace kta::gltf
