#include "kta/dump.h"

#include <cmath>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <utility>

#include "kta/text.h"

namespace kta {
namespace {

using Json = nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool,
                                  std::int64_t, std::uint64_t, float>;

struct Field {
    const char* name;
    std::uint64_t offset;
    Json value;
};

// ---------------------------------------------------------------- values

Json Value(float value) {
    if (std::isnan(value)) {
        return "nan";
    }
    if (std::isinf(value)) {
        return value < 0 ? "-inf" : "inf";
    }
    return value;
}

Json Value(const std::string& text) {
    return ToUtf8(text);
}

Json Value(bool value) {
    return value;
}

template <typename Element, std::size_t kCount>
Json Value(const std::array<Element, kCount>& values) {
    Json list = Json::array();
    for (const Element& value : values) {
        list.push_back(Value(value));
    }
    return list;
}

std::vector<Field> Fields(const Node& node, std::uint64_t body) {
    return {{"nodeName", body, Value(node.nodeName)},
            {"parentName", body + 260, Value(node.parentName)},
            {"translation", body + 520, Value(node.translation)},
            {"rotation", body + 532, Value(node.rotation)},
            {"scale", body + 548, Value(node.scale)},
            {"inverseWorldMatrix", body + 560, Value(node.inverseWorldMatrix)},
            {"isBone", body + 624, Value(node.isBone)},
            {"hasHelperSize", body + 625, Value(node.hasHelperSize)},
            {"helperSize", body + 628, Value(node.helperSize)}};
}

std::vector<Field> Fields(const Chunk& chunk) {
    const std::uint64_t body = chunk.offset + kChunkHeaderSize;
    return std::visit([body](const auto& content) { return Fields(content, body); }, chunk.body);
}

// ---------------------------------------------------------------- text

void WriteFieldLine(std::uint64_t offset, std::string_view name, const std::string& value,
                    std::ostream& out) {
    constexpr int kOffsetWidth = 12;
    constexpr int kNameWidth = 20;
    out << std::setw(kOffsetWidth) << std::right << offset << "  " << std::setw(kNameWidth)
        << std::left << name << value << '\n';
}

// A matrix takes a line for each row, with the row's own offset.
void WriteField(const Field& field, std::ostream& out) {
    if (!field.value.is_array() || !field.value.front().is_array()) {
        WriteFieldLine(field.offset, field.name, field.value.dump(), out);
        return;
    }
    std::uint64_t offset = field.offset;
    std::string_view name = field.name;
    for (const Json& row : field.value) {
        WriteFieldLine(offset, name, row.dump(), out);
        offset += row.size() * sizeof(float);
        name = "";
    }
}

// ---------------------------------------------------------------- JSON

Json ChunkJson(const Chunk& chunk) {
    Json json = {{"id", static_cast<unsigned>(chunk.type->id)},
                 {"name", chunk.type->name},
                 {"offset", chunk.offset},
                 {"size", chunk.size},
                 {"version", chunk.version}};
    for (Field& field : Fields(chunk)) {
        json[field.name] = std::move(field.value);
    }
    return json;
}

Json FaultJson(const Fault& fault) {
    return {{"offset", fault.offset}, {"where", fault.where}, {"text", fault.text}};
}

// The elements one a line, so that a large file is never held as JSON as a whole.
template <typename Element>
void WriteList(const std::vector<Element>& elements, Json (*toJson)(const Element&),
               std::ostream& out) {
    const char* separator = "\n";
    out << '[';
    for (const Element& element : elements) {
        out << separator << toJson(element).dump();
        separator = ",\n";
    }
    out << (elements.empty() ? "]" : "\n]");
}

// ---------------------------------------------------------------- UTF-8

struct LeadByte {
    unsigned char mask;
    unsigned char bits;
    std::size_t length;
    char32_t least;  // smaller code points have a shorter form
};

constexpr LeadByte kLeadBytes[] = {
    {0x80, 0x00, 1, 0}, {0xe0, 0xc0, 2, 0x80}, {0xf0, 0xe0, 3, 0x800}, {0xf8, 0xf0, 4, 0x10000}};

// The length of the code point that the text begins with; 0 when that is not valid UTF-8.
std::size_t CodePointLength(std::string_view text) {
    const auto first = static_cast<unsigned char>(text[0]);
    for (const LeadByte& lead : kLeadBytes) {
        if ((first & lead.mask) != lead.bits || text.size() < lead.length) {
            continue;
        }
        char32_t point = first & static_cast<unsigned char>(~lead.mask);
        for (std::size_t i = 1; i < lead.length; ++i) {
            const auto next = static_cast<unsigned char>(text[i]);
            if ((next & 0xc0) != 0x80) {
                return 0;
            }
            point = point << 6 | (next & 0x3f);
        }
        const bool surrogate = point >= 0xd800 && point <= 0xdfff;
        return point < lead.least || point > 0x10ffff || surrogate ? 0 : lead.length;
    }
    return 0;
}

}  // namespace

std::string ToUtf8(std::string_view text) {
    std::string utf8;
    while (!text.empty()) {
        const std::size_t length = CodePointLength(text);
        if (length != 0) {
            utf8 += text.substr(0, length);
        } else {
            const auto byte = static_cast<unsigned char>(text[0]);
            utf8 += static_cast<char>(0xc0 | byte >> 6);
            utf8 += static_cast<char>(0x80 | (byte & 0x3f));
        }
        text.remove_prefix(length != 0 ? length : 1);
    }
    return utf8;
}

void DumpText(const std::string& path, const File& file, std::ostream& out) {
    out << OneLine(ToUtf8(path)) << ": " << KindName(file.kind) << " file, " << file.size
        << " bytes\n";
    out << "\noffset 0: header\n";
    WriteFieldLine(0, "magic", "\"KTA \"", out);
    WriteFieldLine(4, "version", Json(file.version).dump(), out);
    WriteFieldLine(6, "kind", KindName(file.kind), out);
    for (const Chunk& chunk : file.chunks) {
        out << "\noffset " << chunk.offset << ": " << chunk.type->name << " chunk, id "
            << chunk.type->id << ", size " << chunk.size << ", version " << chunk.version << '\n';
        for (const Field& field : Fields(chunk)) {
            WriteField(field, out);
        }
    }
}

void DumpJson(const std::string& path, const File& file, const std::vector<Fault>& faults,
              std::ostream& out) {
    out << "{\"file\":" << Json(ToUtf8(path)).dump() << ",\n\"kind\":\"" << KindName(file.kind)
        << "\",\n\"version\":" << Json(file.version).dump() << ",\n\"chunks\":";
    WriteList(file.chunks, ChunkJson, out);
    if (!faults.empty()) {
        out << ",\n\"faults\":";
        WriteList(faults, FaultJson, out);
    }
    out << "}\n";
}

}  // namespace kta
