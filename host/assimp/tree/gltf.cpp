#include "host/assimp/tree/gltf.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <string_view>
#include <system_error>
#include <unordered_set>
#include <utility>

#include "kta/whole_file.h"

namespace maxhost::import {
namespace {

using nlohmann::json;

// ---------------------------------------------------------------- the container

std::uint32_t LittleEndian32(std::string_view bytes) {
    std::uint32_t value = 0;
    for (int i = 3; i >= 0; --i) {
        value = value << 8 | static_cast<unsigned char>(bytes[static_cast<std::size_t>(i)]);
    }
    return value;
}

// Up to `size` bytes of the file from `offset` on: fewer where it ends before.
std::string ReadPart(const std::filesystem::path& path, std::uint64_t offset, std::uint64_t size) {
    std::error_code error;
    const std::uintmax_t end = std::filesystem::file_size(path, error);
    if (error || offset >= end) {
        return {};
    }
    std::string bytes(std::min<std::uint64_t>(size, end - offset), '\0');
    std::ifstream stream(path, std::ios::binary);
    stream.seekg(static_cast<std::streamoff>(offset));
    stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(std::max<std::streamsize>(stream.gcount(), 0)));
    return bytes;
}

std::string ReadBytes(const std::filesystem::path& path) {
    return kta::ReadWholeFile(path).value_or("");
}

// The JSON text of a file. A binary one holds it behind its header: magic, version and length, then
// in version 2 the first chunk's length and type, in version 1 the text's length and format.
constexpr std::size_t kHeaderSize = 20;

std::string ReadText(const std::filesystem::path& path) {
    const std::string header = ReadPart(path, 0, kHeaderSize);
    if (!header.starts_with("glTF")) {
        return ReadBytes(path);
    }
    return header.size() < kHeaderSize
               ? std::string()
               : ReadPart(path, kHeaderSize, LittleEndian32(std::string_view(header).substr(12)));
}

// What stands behind the text of a binary file in version 2: a second chunk.
std::string ReadBinary(const std::filesystem::path& path) {
    constexpr std::size_t kChunkHeaderSize = 8;
    const std::string header = ReadPart(path, 0, kHeaderSize);
    if (!header.starts_with("glTF") || header.size() < kHeaderSize) {
        return {};
    }
    const std::uint64_t chunk =
        kHeaderSize + std::uint64_t{LittleEndian32(std::string_view(header).substr(12))};
    const std::string chunkHeader = ReadPart(path, chunk, kChunkHeaderSize);
    return chunkHeader.size() == kChunkHeaderSize &&
                   std::string_view(chunkHeader).substr(4) == std::string_view("BIN\0", 4)
               ? ReadPart(path, chunk + kChunkHeaderSize, LittleEndian32(chunkHeader))
               : std::string();
}

// ---------------------------------------------------------------- buffers

// None for what is not base64 throughout.
std::optional<std::string> FromBase64(std::string_view text) {
    constexpr std::string_view kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    std::uint32_t bits = 0;
    int count = 0;
    while (text.ends_with('=')) {
        text.remove_suffix(1);
    }
    for (const char c : text) {
        const std::size_t digit = kDigits.find(c);
        if (digit == std::string_view::npos) {
            return std::nullopt;
        }
        bits = bits << 6 | static_cast<std::uint32_t>(digit);
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes += static_cast<char>(bits >> count & 0xff);
        }
    }
    return bytes;
}

// ---------------------------------------------------------------- members

// A whole number of at least 0 that no sum of a few overflows; `absent` where there is none, none
// for anything else.
std::optional<std::size_t> Size(const json& object, const char* name,
                                std::optional<std::size_t> absent = std::nullopt) {
    constexpr std::uint64_t kGreatest = std::uint64_t{1} << 40;
    const json* const member = Member(object, name);
    if (!member) {
        return absent;
    }
    const bool isSize = member->is_number_unsigned() && member->get<std::uint64_t>() <= kGreatest;
    return isSize ? std::optional(member->get<std::size_t>()) : std::nullopt;
}

enum ComponentType : std::size_t {
    kByte = 5120,
    kUnsignedByte = 5121,
    kShort = 5122,
    kUnsignedShort = 5123,
    kUnsignedInt = 5125,
    kFloat = 5126
};

std::size_t SizeOf(std::size_t type) {
    switch (type) {
        case kByte:
        case kUnsignedByte:
            return 1;
        case kShort:
        case kUnsignedShort:
            return 2;
        case kUnsignedInt:
        case kFloat:
            return 4;
        default:
            return 0;
    }
}

// A little-endian number of the type; an integer as the fraction that it stands for where
// `isNormalized`.
double NumberAt(const char* bytes, std::size_t type, bool isNormalized) {
    std::uint32_t bits = 0;
    for (std::size_t i = SizeOf(type); i > 0; --i) {
        bits = bits << 8 | static_cast<unsigned char>(bytes[i - 1]);
    }
    const auto fraction = [isNormalized](double number, double greatest) {
        return isNormalized ? std::max(number / greatest, -1.0) : number;
    };
    switch (type) {
        case kByte:
            return fraction(static_cast<std::int8_t>(bits), 127);
        case kUnsignedByte:
            return fraction(bits, 255);
        case kShort:
            return fraction(static_cast<std::int16_t>(bits), 32767);
        case kUnsignedShort:
            return fraction(bits, 65535);
        case kUnsignedInt:
            return bits;
        default: {
            float number = 0;
            std::memcpy(&number, &bits, sizeof number);
            return number;
        }
    }
}

std::size_t ComponentsOf(const json& accessor) {
    constexpr std::pair<std::string_view, std::size_t> kTypes[] = {
        {"SCALAR", 1}, {"VEC2", 2}, {"VEC3", 3}, {"VEC4", 4}};
    const json* const type = Member(accessor, "type");
    if (type && type->is_string()) {
        for (const auto& [name, components] : kTypes) {
            if (type->get_ref<const std::string&>() == name) {
                return components;
            }
        }
    }
    return 0;
}

bool IsNormalized(const json& accessor) {
    const json* const normalized = Member(accessor, "normalized");
    return normalized && normalized->is_boolean() && normalized->get<bool>();
}

}  // namespace

const json* ItemAt(const json& list, const json& reference) {
    if (list.is_array() && reference.is_number_unsigned()) {
        const std::size_t index = reference.get<std::size_t>();
        return index < list.size() ? &list[index] : nullptr;
    }
    if (list.is_object() && reference.is_string()) {
        const auto found = list.find(reference.get_ref<const std::string&>());
        return found != list.end() ? &*found : nullptr;
    }
    return nullptr;
}

const json* Member(const json& object, const char* name) {
    if (!object.is_object()) {
        return nullptr;
    }
    const auto found = object.find(name);
    return found != object.end() ? &*found : nullptr;
}

// ---------------------------------------------------------------- the file

// Where the elements of an accessor stand; their bytes are there.
struct GltfFile::Range {
    const char* first = nullptr;
    std::size_t stride = 0;
};

std::optional<GltfFile> GltfFile::Read(const std::string& path) {
    GltfFile file;
    file.document_ = json::parse(ReadText(path), nullptr, false);
    if (!file.document_.is_object()) {
        return std::nullopt;
    }
    file.path_ = path;
    return file;
}

const json* GltfFile::ShownScene() const {
    const json* const scenes = Member(document_, "scenes");
    const json* const shown = Member(document_, "scene");
    if (!scenes || scenes->empty()) {
        return nullptr;
    }
    if (scenes->is_array()) {
        return ItemAt(*scenes, shown && shown->is_number_unsigned() ? *shown : json(0u));
    }
    return shown && shown->is_string() ? ItemAt(*scenes, *shown)
           : scenes->is_object()       ? &*scenes->begin()
                                       : nullptr;
}

std::string GltfFile::ReadBuffer(const json& buffer) const {
    constexpr std::string_view kBase64 = ";base64,";
    const json* const uri = Member(buffer, "uri");
    if (!uri) {
        return ReadBinary(path_);
    }
    if (!uri->is_string()) {
        return {};
    }
    const std::string& text = uri->get_ref<const std::string&>();
    if (text.starts_with("data:")) {
        const std::size_t mark = text.find(kBase64);
        return mark == std::string::npos
                   ? std::string()
                   : FromBase64(std::string_view(text).substr(mark + kBase64.size())).value_or("");
    }
    // As Assimp takes it, which decodes no percent signs.
    const std::filesystem::path path = path_.parent_path() / text;
    std::error_code error;
    return std::filesystem::is_regular_file(path, error) ? ReadBytes(path) : std::string();
}

const std::string* GltfFile::Buffer(std::size_t index) {
    const json* const buffers = Member(document_, "buffers");
    const json* const buffer = buffers ? ItemAt(*buffers, json(index)) : nullptr;
    if (!buffer) {
        return nullptr;
    }
    const auto [found, isNew] = buffers_.try_emplace(index);
    if (isNew) {
        found->second = ReadBuffer(*buffer);
    }
    return &found->second;
}

// `holder` names a buffer view and may have an offset into it. The elements of an accessor may
// stand apart, those of a sparse one's indices and values do not.
std::optional<GltfFile::Range> GltfFile::RangeOf(const json& holder, std::size_t elementSize,
                                                 std::size_t count, bool isStrided) {
    const json* const views = Member(document_, "bufferViews");
    const json* const number = Member(holder, "bufferView");
    const json* const view = views && number ? ItemAt(*views, *number) : nullptr;
    if (!view || !view->is_object()) {
        return std::nullopt;
    }
    const auto offset = Size(holder, "byteOffset", 0);
    const auto buffer = Size(*view, "buffer");
    const auto start = Size(*view, "byteOffset", 0);
    const auto length = Size(*view, "byteLength");
    const auto stride = isStrided ? Size(*view, "byteStride", elementSize) : elementSize;
    const std::string* const bytes = buffer ? Buffer(*buffer) : nullptr;
    if (!offset || !start || !length || !stride || !bytes || *start + *length > bytes->size() ||
        *stride < elementSize || *offset > *length || elementSize > *length - *offset ||
        count == 0 || count - 1 > (*length - *offset - elementSize) / *stride) {
        return std::nullopt;
    }
    return Range{bytes->data() + *start + *offset, *stride};
}

bool GltfFile::ApplySparse(const json& accessor, std::size_t components,
                           std::vector<double>& numbers) {
    const json* const sparse = Member(accessor, "sparse");
    if (!sparse) {
        return true;
    }
    const json* const indices = Member(*sparse, "indices");
    const json* const values = Member(*sparse, "values");
    const auto count = Size(*sparse, "count");
    const auto type = Size(accessor, "componentType");
    if (!indices || !values || !count || !type) {
        return false;
    }
    const std::size_t indexType = Size(*indices, "componentType", 0).value_or(0);
    if (SizeOf(indexType) == 0 || indexType == kFloat) {
        return false;
    }
    const std::size_t size = SizeOf(*type);
    const auto places = RangeOf(*indices, SizeOf(indexType), *count, false);
    const auto items = RangeOf(*values, size * components, *count, false);
    if (!places || !items) {
        return false;
    }
    for (std::size_t i = 0; i < *count; ++i) {
        const double place = NumberAt(places->first + i * places->stride, indexType, false);
        if (!(place >= 0 && place < static_cast<double>(numbers.size() / components))) {
            return false;
        }
        for (std::size_t k = 0; k < components; ++k) {
            numbers[static_cast<std::size_t>(place) * components + k] = NumberAt(
                items->first + i * items->stride + k * size, *type, IsNormalized(accessor));
        }
    }
    return true;
}

std::optional<std::vector<double>> GltfFile::Numbers(const json& index, std::size_t components) {
    // An accessor without a view holds zeros, as many as it says.
    constexpr std::size_t kMostZeros = 1 << 20;
    const json* const accessors = Member(document_, "accessors");
    const json* const accessor = accessors ? ItemAt(*accessors, index) : nullptr;
    if (!accessor || ComponentsOf(*accessor) != components) {
        return std::nullopt;
    }
    const auto type = Size(*accessor, "componentType");
    const auto count = Size(*accessor, "count");
    const std::size_t size = type ? SizeOf(*type) : 0;
    if (size == 0 || !count) {
        return std::nullopt;
    }
    std::vector<double> numbers;
    if (Member(*accessor, "bufferView")) {
        const auto range = RangeOf(*accessor, size * components, *count, true);
        for (std::size_t i = 0; range && i < *count * components; ++i) {
            numbers.push_back(
                NumberAt(range->first + i / components * range->stride + i % components * size,
                         *type, IsNormalized(*accessor)));
        }
    } else if (*count <= kMostZeros) {
        numbers.resize(*count * components);
    }
    const bool isGood = !numbers.empty() && ApplySparse(*accessor, components, numbers);
    return isGood ? std::optional(std::move(numbers)) : std::nullopt;
}

// ---------------------------------------------------------------- nodes

namespace {

std::size_t CountNodesBelow(const json& nodes, const json& roots) {
    std::unordered_set<const json*> known;
    std::vector<const json*> lists{&roots};
    while (!lists.empty()) {
        const json& list = *lists.back();
        lists.pop_back();
        if (!list.is_array()) {
            continue;
        }
        for (const json& reference : list) {
            const json* const node = ItemAt(nodes, reference);
            if (node && known.insert(node).second && node->is_object()) {
                const auto children = node->find("children");
                if (children != node->end()) {
                    lists.push_back(&*children);
                }
            }
        }
    }
    return known.size();
}

}  // namespace

std::optional<GltfSceneFacts> ReadGltfSceneFacts(const std::string& path) {
    const auto file = GltfFile::Read(path);
    if (!file) {
        return std::nullopt;
    }
    const json* const shown = file->ShownScene();
    if (!shown || !shown->is_object()) {
        return std::nullopt;
    }
    GltfSceneFacts facts;
    const json none = json::array();
    const auto found = shown->find("nodes");
    const json& roots = found != shown->end() && found->is_array() ? *found : none;
    facts.roots = roots.size();
    const json* const nodes = Member(file->Document(), "nodes");
    if (nodes && nodes->is_structured()) {
        facts.nodesOutside = nodes->size() - CountNodesBelow(*nodes, roots);
    }
    return facts;
}

std::map<std::size_t, const aiNode*> MatchGltfNodes(const GltfFile& file, const aiScene& scene) {
    const json none = json::array();
    const auto listOf = [&none](const json* holder, const char* name) {
        const json* const list = holder ? Member(*holder, name) : nullptr;
        return list && list->is_array() ? list : &none;
    };
    const json* const nodes = Member(file.Document(), "nodes");
    const json* const roots = listOf(file.ShownScene(), "nodes");
    std::map<std::size_t, const aiNode*> matches;
    std::vector<std::pair<const json*, const aiNode*>> waiting;  // a node's number, and the node
    const auto match = [&waiting](const json& numbers, const aiNode& parent) {
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            waiting.emplace_back(&numbers[i], parent.mChildren[i]);
        }
    };
    if (!nodes || !scene.mRootNode) {
        return {};
    }
    if (roots->size() == 1) {
        waiting.emplace_back(&roots->front(), scene.mRootNode);
    } else if (roots->size() == scene.mRootNode->mNumChildren) {
        match(*roots, *scene.mRootNode);
    }
    while (!waiting.empty()) {
        const auto [number, imported] = waiting.back();
        waiting.pop_back();
        const json* const node = ItemAt(*nodes, *number);
        const json* const children = listOf(node, "children");
        if (!node || !imported || children->size() != imported->mNumChildren) {
            return {};
        }
        matches.emplace(number->get<std::size_t>(), imported);
        match(*children, *imported);
    }
    return matches;
}

}  // namespace maxhost::import
