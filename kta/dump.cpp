#include "kta/dump.h"

#include <utf8.h>

#include <cmath>
#include <functional>
#include <iomanip>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>

#include "kta/fields.h"
#include "kta/text.h"

namespace kta {
namespace {

using Json = nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool,
                                  std::int64_t, std::uint64_t, float>;

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

template <std::size_t kCount>
Json Value(const std::array<float, kCount>& values) {
    Json list = Json::array();
    for (const float value : values) {
        list.push_back(Value(value));
    }
    return list;
}

Json ElementOf(const Field& field, const void* record, std::size_t element) {
    switch (field.type) {
        case FieldType::text:
            return ToUtf8(TextAt(field, record));
        case FieldType::character:
            return ToUtf8(std::string(1, static_cast<char>(IntegerAt(field, record, element))));
        case FieldType::f32:
            return Value(RealAt(field, record, element));
        default:
            break;
    }
    const std::int64_t value = IntegerAt(field, record, element);
    return field.rule == FieldRule::flag ? Json(value != 0) : Json(value);
}

// Arrays are lists, matrices lists of their rows.
Json ValueOf(const Field& field, const void* record) {
    if (field.count == 1) {
        return ElementOf(field, record, 0);
    }
    Json list = Json::array();
    for (std::size_t i = 0; i < field.count; ++i) {
        if (field.columns != 0 && i % field.columns == 0) {
            list.push_back(Json::array());
        }
        (field.columns != 0 ? list.back() : list).push_back(ElementOf(field, record, i));
    }
    return list;
}

// The record's fields as members of an object.
template <typename Record>
Json ObjectOf(const Record& record) {
    Json object = Json::object();
    for (const Field& field : FieldsOf<Record>()) {
        object[field.name] = ValueOf(field, &record);
    }
    return object;
}

// ---------------------------------------------------------------- lists of chunks

// Called with each item's offset from the start of the file and its value, in file order.
using Visit = std::function<void(std::uint64_t offset, const Json& item)>;

Json ItemOf(const KeyframedKey& key) {
    Json item = ObjectOf(key.head);
    item["tangentCodes"] = key.tangentCodes;
    Json& records = item["tangentRecords"] = Json::array();
    for (std::size_t i = 0; i < key.tangentRecords.size(); ++i) {
        if (key.tangentCodes[i] == kTangentBezier) {
            const KTATangent& tangent = key.tangentRecords[i];
            records.push_back(Value(std::array<float, 2>{tangent.length, tangent.slope}));
        }
    }
    return item;
}

template <typename Record>
void VisitRecords(const std::vector<Record>& records, std::uint64_t offset, const Visit& visit) {
    for (const Record& record : records) {
        visit(offset, ObjectOf(record));
        offset += sizeof(Record);
    }
}

void VisitKeys(const KeyTrack& track, std::uint64_t offset, const Visit& visit) {
    VisitRecords(track.vectorSamples, offset, visit);
    VisitRecords(track.rotationSamples, offset, visit);
    for (const KeyframedKey& key : track.keyframedKeys) {
        const Json item = ItemOf(key);
        visit(offset, item);
        offset += sizeof(KTAKeyHead) + key.tangentCodes.size() +
                  item.at("tangentRecords").size() * sizeof(KTATangent);
    }
}

void VisitWeights(const Weights& weights, std::uint64_t offset, const Visit& visit) {
    auto weight = weights.weights.begin();
    for (const std::uint8_t count : weights.weightCounts) {
        Json pairs = Json::array();
        for (std::uint8_t i = 0; i < count; ++i, ++weight) {
            pairs.push_back(Json::array({weight->bone, Value(weight->weight)}));
        }
        visit(offset, {{"weightCount", count}, {"weights", std::move(pairs)}});
        offset += sizeof(count) + count * sizeof(KTAWeight);
    }
}

void VisitPoints(const Morph& morph, std::uint64_t offset, const Visit& visit) {
    for (std::size_t i = 0; i < morph.points.size(); ++i) {
        Json item = {{"pointNumber", morph.pointNumbers[i]}};
        item.update(ObjectOf(morph.points[i]));
        item["position"] = Value(MorphPosition(morph, i));
        visit(offset, item);
        offset += sizeof(KTAMorphPoint);
    }
}

// The list that stands behind the records of some chunks.
struct ItemList {
    const char* name = nullptr;  // of the list; null for a chunk without one
    const char* item = nullptr;  // of one of its items
    std::function<void(const Visit& visit)> visitAll;
};

ItemList ItemsOf(const Chunk& chunk) {
    const std::uint64_t body = chunk.offset + sizeof(KTAChunkHeader);
    if (const auto* track = chunk.As<KeyTrack>()) {
        return {"keys", "key",
                [=](const Visit& visit) { VisitKeys(*track, body + sizeof(KTAKeyTrack), visit); }};
    }
    if (const auto* weights = chunk.As<Weights>()) {
        return {"vertices", "vertex", [=](const Visit& visit) {
                    VisitWeights(*weights, body + sizeof(KTAWeights), visit);
                }};
    }
    if (const auto* morph = chunk.As<Morph>()) {
        return {"points", "point", [=](const Visit& visit) {
                    VisitPoints(*morph, body + sizeof(KTAMorphChannel) + sizeof(KTAMorphPoints),
                                visit);
                }};
    }
    return {};
}

// A vertex of a sub-mesh with its pairs of texture coordinates.
Json VertexOf(const Mesh& mesh, const SubMesh& subMesh, std::size_t vertex) {
    const auto count = static_cast<std::size_t>(mesh.pairsPerVertex);
    Json item = ObjectOf(subMesh.vertices[vertex]);
    Json& pairs = item["textureCoordinates"] = Json::array();
    for (std::size_t i = vertex * count; i < (vertex + 1) * count; ++i) {
        pairs.push_back(Value(subMesh.textureCoordinates[i]));
    }
    return item;
}

// ---------------------------------------------------------------- text

// Where fields are written, each in a line.
struct FieldLines {
    std::ostream& out;
    bool withOffsets;
};

void WriteFieldLine(std::uint64_t offset, std::string_view name, const std::string& value,
                    const FieldLines& lines) {
    constexpr int kOffsetWidth = 12;
    constexpr int kNameWidth = 20;
    if (lines.withOffsets) {
        lines.out << std::setw(kOffsetWidth) << std::right << offset;
    }
    lines.out << "  " << std::setw(kNameWidth) << std::left << name << value << '\n';
}

// A matrix takes a line for each row, with the row's own offset.
void WriteField(const Field& field, const void* record, std::uint64_t offset,
                const FieldLines& out) {
    const Json value = ValueOf(field, record);
    if (field.columns == 0) {
        WriteFieldLine(offset, field.name, value.dump(), out);
        return;
    }
    std::string_view name = field.name;
    for (const Json& row : value) {
        WriteFieldLine(offset, name, row.dump(), out);
        offset += field.columns * field.size;
        name = "";
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

// Vertices and faces take a line each.
void WriteSubMeshLines(const Mesh& mesh, const SubMesh& subMesh, const FieldLines& out) {
    std::uint64_t offset = subMesh.offset;
    WriteFieldLine(offset, "materialNumber", std::to_string(subMesh.materialNumber), out);
    WriteFieldLine(offset + offsetof(KTASubMesh, indexCount), "indexCount",
                   std::to_string(subMesh.faces.size() * 3), out);
    WriteFieldLine(offset + offsetof(KTASubMesh, vertexCount), "vertexCount",
                   std::to_string(subMesh.vertices.size()), out);
    offset += sizeof(KTASubMesh) +
              (subMesh.materialNumber < kFirstFullMaterialNumber ? 0 : sizeof(Plinth::Int32));
    for (std::size_t i = 0; i < subMesh.vertices.size(); ++i) {
        WriteFieldLine(offset, "vertex", ItemText(VertexOf(mesh, subMesh, i)), out);
        offset += sizeof(KTAVertex) +
                  static_cast<std::size_t>(mesh.pairsPerVertex) * sizeof(TextureCoordinates);
    }
    for (const auto& face : subMesh.faces) {
        WriteFieldLine(offset, "face", Json(face).dump(), out);
        offset += sizeof(face);
    }
}

void WriteChunkLines(const Chunk& chunk, bool withArrays, const FieldLines& out) {
    for (const auto& [fields, record, offset] : RecordsOf(chunk)) {
        for (const Field& field : fields) {
            WriteField(field, record, offset + field.offset, out);
        }
    }
    if (!withArrays) {
        return;
    }
    if (const auto* mesh = chunk.As<Mesh>()) {
        for (const SubMesh& subMesh : mesh->subMeshes) {
            WriteSubMeshLines(*mesh, subMesh, out);
        }
    } else if (const ItemList list = ItemsOf(chunk); list.name != nullptr) {
        list.visitAll([&](std::uint64_t offset, const Json& item) {
            WriteFieldLine(offset, list.item, ItemText(item), out);
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
    for (const auto& [fields, record, offset] : RecordsOf(chunk)) {
        for (const Field& field : fields) {
            json[field.name] = ValueOf(field, record);
        }
    }
    return json.dump();
}

std::vector<const Chunk*> Selected(const File& file, const DumpSelection& selection) {
    std::vector<const Chunk*> chunks;
    for (const Chunk& chunk : file.chunks) {
        if (selection.chunks.empty() || std::find(selection.chunks.begin(), selection.chunks.end(),
                                                  chunk.type->name) != selection.chunks.end()) {
            chunks.push_back(&chunk);
        }
    }
    return chunks;
}

Json FaultJson(const Fault& fault) {
    return {{"offset", fault.offset},       {"where", fault.where},
            {"text", fault.text},           {"code", TypeOf(fault.code).name},
            {"found", ToUtf8(fault.found)}, {"expected", ToUtf8(fault.expected)}};
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
    out << R"({"materialNumber":)" << subMesh.materialNumber << R"(,"indexCount":)"
        << subMesh.faces.size() * 3 << R"(,"vertexCount":)" << subMesh.vertices.size()
        << ",\n\"vertices\":";
    WriteList(subMesh.vertices, out, [&](const KTAVertex& vertex) {
        const auto position = static_cast<std::size_t>(&vertex - subMesh.vertices.data());
        out << VertexOf(mesh, subMesh, position).dump();
    });
    out << ",\n\"faces\":";
    WriteList(subMesh.faces, out, [&](const auto& face) { out << Json(face).dump(); });
    out << '}';
}

void WriteItems(const ItemList& list, std::ostream& out) {
    const char* separator = "[\n";
    const char* end = "[]";
    list.visitAll([&](std::uint64_t, const Json& item) {
        out << separator << item.dump();
        separator = ",\n";
        end = "\n]";
    });
    out << end;
}

void WriteChunk(const Chunk& chunk, bool withArrays, std::ostream& out) {
    std::string head = ChunkHead(chunk);
    const Mesh* mesh = chunk.As<Mesh>();
    const ItemList list = ItemsOf(chunk);
    if (!withArrays || (mesh == nullptr && list.name == nullptr)) {
        out << head;
        return;
    }
    head.pop_back();  // the brace, so that the object goes on
    out << head << ",\n\"" << (mesh != nullptr ? "subMeshes" : list.name) << "\":";
    if (mesh != nullptr) {
        WriteList(mesh->subMeshes, out,
                  [&](const SubMesh& subMesh) { WriteSubMesh(*mesh, subMesh, out); });
    } else {
        WriteItems(list, out);
    }
    out << '}';
}

}  // namespace

std::string ToUtf8(std::string_view text) {
    std::string result;
    for (;;) {
        const std::size_t valid =
            static_cast<std::size_t>(utf8::find_invalid(text.begin(), text.end()) - text.begin());
        result += text.substr(0, valid);
        if (valid == text.size()) {
            return result;
        }
        utf8::append(static_cast<unsigned char>(text[valid]), std::back_inserter(result));
        text.remove_prefix(valid + 1);
    }
}

std::string NumberText(float value) {
    return Value(value).dump();
}

std::string ValueText(const Field& field, const void* record) {
    return ValueOf(field, record).dump();
}

std::string QuotedText(std::string_view text) {
    return Json(ToUtf8(text)).dump();
}

void DumpText(const std::string& path, const File& file, std::ostream& out,
              const DumpSelection& selection) {
    const FieldLines lines{out, selection.withOffsets};
    const auto writeHeading = [&](std::uint64_t offset) -> std::ostream& {
        out << '\n';
        return selection.withOffsets ? out << "offset " << offset << ": " : out;
    };
    if (selection.withOffsets) {
        out << OneLine(ToUtf8(path)) << ": " << KindName(file.kind) << " file, " << file.size
            << " bytes\n";
    }
    writeHeading(0) << "header\n";
    WriteFieldLine(0, "magic", "\"KTA \"", lines);
    WriteFieldLine(offsetof(KTAFileHeader, majorVersion), "version", Json(file.version).dump(),
                   lines);
    WriteFieldLine(offsetof(KTAFileHeader, kind), "kind", KindName(file.kind), lines);
    for (const Chunk* chunk : Selected(file, selection)) {
        writeHeading(chunk->offset)
            << chunk->type->name << " chunk, id " << chunk->type->id << ", size " << chunk->size
            << ", version " << chunk->version << '\n';
        WriteChunkLines(*chunk, selection.withArrays, lines);
    }
}

std::string FaultMembers(const Reading& reading) {
    std::ostringstream out;
    if (!reading.inputError.empty()) {
        out << ",\n\"error\":" << Json(ToUtf8(reading.inputError)).dump();
    }
    if (!reading.faults.empty()) {
        out << ",\n\"faults\":";
        WriteList(reading.faults, out, [&](const Fault& fault) { out << FaultJson(fault).dump(); });
    }
    return out.str();
}

void DumpJson(const std::string& path, const Reading& reading, std::ostream& out,
              const DumpSelection& selection) {
    out << "{\"file\":" << Json(ToUtf8(path)).dump();
    if (reading.file) {
        out << ",\n\"kind\":\"" << KindName(reading.file->kind)
            << "\",\n\"version\":" << Json(reading.file->version).dump() << ",\n\"chunks\":";
        WriteList(Selected(*reading.file, selection), out,
                  [&](const Chunk* chunk) { WriteChunk(*chunk, selection.withArrays, out); });
    }
    out << FaultMembers(reading) << "}\n";
}

}  // namespace kta
