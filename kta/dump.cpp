#include "kta/dump.h"

#include <algorithm>
#include <iomanip>
#include <utility>

#include "kta/fields.h"
#include "kta/items.h"
#include "kta/text.h"

namespace kta {
namespace {

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

void WriteVertexLine(const Mesh& mesh, const SubMesh& subMesh, const Vertex& vertex,
                     std::uint64_t offset, std::ostream& out) {
    std::string value = std::to_string(vertex.originalVertex) + " " +
                        Value(vertex.position).dump() + " " + Value(vertex.normal).dump();
    for (const Json& pair : TextureCoordinatesOf(mesh, subMesh, vertex)) {
        value += " " + pair.dump();
    }
    WriteFieldLine(offset, "vertex", value, out);
}

// Vertices and faces take a line each. A vertex: its original, position, normal and texture
// coordinates.
void WriteSubMeshLines(const Mesh& mesh, const SubMesh& subMesh, std::ostream& out) {
    std::uint64_t offset = subMesh.offset;
    WriteFieldLine(offset, "materialNumber", std::to_string(subMesh.material), out);
    WriteFieldLine(offset + 4, "indexCount", std::to_string(subMesh.faces.size() * 3), out);
    WriteFieldLine(offset + 8, "vertexCount", std::to_string(subMesh.vertices.size()), out);
    offset += subMesh.material < kLongMaterial ? kSubMeshSize : kSubMeshSize + 4;
    for (const Vertex& vertex : subMesh.vertices) {
        WriteVertexLine(mesh, subMesh, vertex, offset, out);
        offset += kVertexSize + static_cast<std::uint64_t>(mesh.pairsPerVertex) * kPairSize;
    }
    for (const auto& face : subMesh.faces) {
        WriteFieldLine(offset, "face", Value(face).dump(), out);
        offset += kFaceSize;
    }
}

// The values of an item's members one behind the other, those of a list of lists each by itself.
std::string ItemText(const Json& item) {
    std::string text;
    const auto add = [&](const Json& value) { text += (text.empty() ? "" : " ") + value.dump(); };
    for (const Json& value : item) {
        if (value.is_array() && (value.empty() || value.front().is_array())) {
            std::for_each(value.begin(), value.end(), add);
        } else {
            add(value);
        }
    }
    return text;
}

void WriteChunkLines(const Chunk& chunk, std::ostream& out) {
    for (const Field& field : Fields(chunk)) {
        WriteField(field, out);
    }
    if (const auto* mesh = std::get_if<Mesh>(&chunk.body)) {
        for (const SubMesh& subMesh : mesh->subMeshes) {
            WriteSubMeshLines(*mesh, subMesh, out);
        }
    } else if (const ItemList* list = ItemListOf(chunk)) {
        VisitItems(chunk, [&](std::uint64_t offset, const Json& item) {
            WriteFieldLine(offset, list->item, ItemText(item), out);
        });
    }
}

// ---------------------------------------------------------------- JSON

std::string ChunkHead(const Chunk& chunk) {
    Json json = {{"id", static_cast<unsigned>(chunk.type->id)},
                 {"name", chunk.type->name},
                 {"offset", chunk.offset},
                 {"size", chunk.size},
                 {"version", chunk.version}};
    for (Field& field : Fields(chunk)) {
        json[field.name] = std::move(field.value);
    }
    return json.dump();
}

Json FaultJson(const Fault& fault) {
    return {{"offset", fault.offset}, {"where", fault.where}, {"text", fault.text}};
}

// `write` is called with each element, which begins a line: a large file is never held as JSON as a
// whole.
template <typename Elements, typename Write>
void WriteList(const Elements& elements, std::ostream& out, Write write) {
    const char* separator = "\n";
    out << '[';
    for (const auto& element : elements) {
        out << separator;
        write(element);
        separator = ",\n";
    }
    out << (elements.empty() ? "]" : "\n]");
}

void WriteSubMesh(const Mesh& mesh, const SubMesh& subMesh, std::ostream& out) {
    out << R"({"materialNumber":)" << subMesh.material << R"(,"indexCount":)"
        << subMesh.faces.size() * 3 << R"(,"vertexCount":)" << subMesh.vertices.size()
        << ",\n\"vertices\":";
    WriteList(subMesh.vertices, out, [&](const Vertex& vertex) {
        const Json row = {{"originalVertex", vertex.originalVertex},
                          {"position", Value(vertex.position)},
                          {"normal", Value(vertex.normal)},
                          {"textureCoordinates", TextureCoordinatesOf(mesh, subMesh, vertex)}};
        out << row.dump();
    });
    out << ",\n\"faces\":";
    WriteList(subMesh.faces, out, [&](const auto& face) { out << Value(face).dump(); });
    out << '}';
}

void WriteItems(const Chunk& chunk, std::ostream& out) {
    const char* separator = "[\n";
    const char* end = "[]";
    VisitItems(chunk, [&](std::uint64_t, const Json& item) {
        out << separator << item.dump();
        separator = ",\n";
        end = "\n]";
    });
    out << end;
}

void WriteChunk(const Chunk& chunk, std::ostream& out) {
    std::string head = ChunkHead(chunk);
    const Mesh* mesh = std::get_if<Mesh>(&chunk.body);
    const ItemList* list = ItemListOf(chunk);
    if (mesh == nullptr && list == nullptr) {
        out << head;
        return;
    }
    head.pop_back();  // the brace, so that the object goes on
    out << head << ",\n\"" << (mesh != nullptr ? "subMeshes" : list->name) << "\":";
    if (mesh != nullptr) {
        WriteList(mesh->subMeshes, out,
                  [&](const SubMesh& subMesh) { WriteSubMesh(*mesh, subMesh, out); });
    } else {
        WriteItems(chunk, out);
    }
    out << '}';
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
        WriteChunkLines(chunk, out);
    }
}

void DumpJson(const std::string& path, const File& file, const std::vector<Fault>& faults,
              std::ostream& out) {
    out << "{\"file\":" << Json(ToUtf8(path)).dump() << ",\n\"kind\":\"" << KindName(file.kind)
        << "\",\n\"version\":" << Json(file.version).dump() << ",\n\"chunks\":";
    WriteList(file.chunks, out, [&](const Chunk& chunk) { WriteChunk(chunk, out); });
    if (!faults.empty()) {
        out << ",\n\"faults\":";
        WriteList(faults, out, [&](const Fault& fault) { out << FaultJson(fault).dump(); });
    }
    out << "}\n";
}

}  // namespace kta
