#include <nlohmann/json.hpp>

#include "kta/cursor.h"
#include "kta/diff/diff.h"
#include "kta/dump.h"
#include "kta/text.h"

namespace kta {
namespace {

using Json = nlohmann::ordered_json;

// ---------------------------------------------------------------- text

// The first value by itself, the others behind their labels.
std::string LabelsText(const std::vector<Label>& labels) {
    std::string text;
    for (const auto& [label, value] : labels) {
        text += text.empty() ? value : std::string(", ") + label + " " + value;
    }
    return text;
}

// All behind their labels.
std::string PlaceText(const std::vector<Label>& place) {
    std::string text;
    for (const auto& [label, value] : place) {
        text += (text.empty() ? "" : ", ") + std::string(label) + " " + value;
    }
    return text;
}

// Of lists of lists, such as matrices, the rows that are not the same, each behind its number.
std::string RowsText(const Json& a, const Json& b) {
    std::string text;
    for (std::size_t row = 0; row < a.size(); ++row) {
        if (a[row] != b[row]) {
            text += (text.empty() ? "[" : ", [") + std::to_string(row) + "] " + a[row].dump() +
                    " -> " + b[row].dump();
        }
    }
    return text;
}

std::string ValuesText(const FieldChange& change) {
    std::string text = change.a + " -> " + change.b;
    if (change.a.starts_with("[[")) {
        text = RowsText(Json::parse(change.a), Json::parse(change.b));
    }
    if (change.deviation) {
        text += ", by " + Digits(static_cast<float>(*change.deviation));
    }
    if (change.degrees) {
        text += ", turned by " + Digits(static_cast<float>(*change.degrees)) + " degrees";
    }
    return text;
}

std::string FieldText(const FieldChange& change) {
    const std::string field = change.field + (change.field.empty() ? "" : " of ");
    if (change.change == Change::moved) {
        return field + Counted(change.count, change.item) + " in another order";
    }
    if (change.change != Change::changed) {
        return Counted(change.count, change.item) + " " + ChangeName(change.change);
    }
    if (change.item.empty()) {
        return change.field + ": " + ValuesText(change);
    }
    return field + std::to_string(change.count) + " of " + Counted(change.compared, change.item) +
           (change.deviation ? ", most at " : ", first at ") + PlaceText(change.place) + ": " +
           ValuesText(change);
}

std::string FieldLine(const FieldChange& change) {
    if (change.item == "sub-mesh") {
        return change.change == Change::moved
                   ? "sub-meshes in another order"
                   : "sub-mesh " + change.subMesh + " " + ChangeName(change.change);
    }
    return (change.subMesh.empty() ? "" : "sub-mesh " + change.subMesh + ": ") + FieldText(change);
}

// Numbers of chunks that are not 0, as in "1 added, 2 changed, 7 equal".
template <class Counts>
std::string CountsText(const Counts& counts, std::size_t equal) {
    std::vector<std::string> texts;
    const auto add = [&](std::size_t count, const char* what) {
        if (count > 0) {
            texts.push_back(std::to_string(count) + " " + what);
        }
    };
    add(counts.Count(Change::added), "added");
    add(counts.Count(Change::removed), "removed");
    add(counts.Count(Change::changed), "changed");
    add(counts.Count(Change::moved), "with another order of items");
    add(equal, "equal");
    return Joined(texts);
}

// Lines of which the first so many are written.
class Lines {
  public:
    Lines(std::size_t most, std::ostream& out) : most_(most), out_(out) {}

    void Write(const std::string& line) {
        if (++count_ <= most_ || most_ == 0) {
            out_ << line << '\n';
        }
    }
    void End() {
        if (most_ != 0 && count_ > most_) {
            out_ << "  and " << Counted(count_ - most_, "more line") << '\n';
        }
    }

  private:
    std::size_t most_;
    std::ostream& out_;
    std::size_t count_ = 0;
};

void WriteChunk(const ChunkChange& chunk, Lines& lines) {
    constexpr char kMarks[] = {'+', '-', '~', '~'};
    std::string line = {' ', ' ', kMarks[static_cast<int>(chunk.change)], ' '};
    line += LabelsText(chunk.identity);
    if (chunk.ordinal > 1) {
        line += " (" + std::to_string(chunk.ordinal) + ")";
    }
    lines.Write(line);
    for (const FieldChange& field : chunk.fields) {
        lines.Write("      " + FieldLine(field));
    }
}

void WriteKind(const KindDiff& kind, std::size_t mostLines, std::ostream& out) {
    out << kind.type->name << ": " << CountsText(kind, kind.equal) << '\n';
    Lines lines(mostLines, out);
    for (const ChunkChange& chunk : kind.changes) {
        WriteChunk(chunk, lines);
    }
    lines.End();
    if (!kind.moved.empty()) {
        out << "  order differs, first at " << LabelsText(kind.moved) << '\n';
    }
}

std::string Verdict(const Diff& diff, const DiffReport& report) {
    if (diff.Different(report.order)) {
        return std::string("different: ") + CountsText(diff, diff.Equal());
    }
    return std::string(diff.Moved() ? "equal but for the order: " : "equal: ") +
           Counted(diff.Equal() + diff.Count(Change::moved), "chunk");
}

// ---------------------------------------------------------------- JSON

void AddLabels(const std::vector<Label>& labels, Json& object) {
    for (const auto& [label, value] : labels) {
        object[label] = Json::parse(value);
    }
}

Json FieldJson(const FieldChange& change) {
    Json object = {{"change", ChangeName(change.change)}};
    if (!change.subMesh.empty()) {
        object["subMesh"] = Json::parse(change.subMesh);
    }
    if (!change.field.empty()) {
        object["field"] = change.field;
    }
    if (!change.item.empty()) {
        object["item"] = change.item;
        object["count"] = change.count;
        object["compared"] = change.compared;
    }
    if (!change.place.empty()) {
        AddLabels(change.place, object["at"] = Json::object());
    }
    if (!change.a.empty()) {
        object["a"] = Json::parse(change.a);
        object["b"] = Json::parse(change.b);
    }
    if (change.deviation) {
        object["deviation"] = Json::parse(NumberText(static_cast<float>(*change.deviation)));
    }
    if (change.degrees) {
        object["degrees"] = Json::parse(NumberText(static_cast<float>(*change.degrees)));
    }
    return object;
}

Json PlaceJson(const std::optional<ChunkPlace>& place) {
    if (!place) {
        return {};
    }
    Json object = {{"offset", place->offset}};
    if (place->node >= 0) {
        object["node"] = place->node;
    }
    if (place->material >= 0) {
        object["material"] = place->material;
    }
    return object;
}

Json ChunkJson(const KindDiff& kind, const ChunkChange& chunk) {
    Json object = {{"kind", kind.type->name}, {"change", ChangeName(chunk.change)}};
    AddLabels(chunk.identity, object);
    object["ordinal"] = chunk.ordinal;
    object["inA"] = PlaceJson(chunk.inA);
    object["inB"] = PlaceJson(chunk.inB);
    if (!chunk.fields.empty()) {
        for (const FieldChange& field : chunk.fields) {
            object["fields"].push_back(FieldJson(field));
        }
    }
    return object;
}

template <class Counts>
Json CountsJson(const Counts& counts, std::size_t equal) {
    Json object = Json::object();
    for (const Change change : {Change::added, Change::removed, Change::changed, Change::moved}) {
        object[ChangeName(change)] = counts.Count(change);
    }
    object["equal"] = equal;
    return object;
}

Json KindsJson(const Diff& diff) {
    Json object = Json::object();
    for (const KindDiff& kind : diff.kinds) {
        Json& counts = object[kind.type->name] = CountsJson(kind, kind.equal);
        counts["orderDiffers"] = !kind.moved.empty();
    }
    return object;
}

}  // namespace

void WriteDiff(const Diff& diff, const DiffReport& report, std::ostream& out) {
    out << "--- " << OneLine(ToUtf8(report.nameA)) << "\n+++ " << OneLine(ToUtf8(report.nameB))
        << '\n';
    for (const KindDiff& kind : diff.kinds) {
        if (!kind.changes.empty() || !kind.moved.empty()) {
            WriteKind(kind, report.mostLines, out);
        }
    }
    out << Verdict(diff, report) << '\n';
}

void WriteDiffJson(const Diff& diff, KTAFileKind kind, const DiffReport& report,
                   std::ostream& out) {
    const Json tolerance = {{"absolute", report.tolerance.absolute},
                            {"relative", report.tolerance.relative}};
    out << "{\"a\":" << QuotedText(report.nameA) << ",\n\"b\":" << QuotedText(report.nameB)
        << ",\n\"kind\":\"" << KindName(kind)
        << "\",\n\"equal\":" << (diff.Different(report.order) ? "false" : "true")
        << ",\n\"tolerance\":" << tolerance.dump()
        << ",\n\"totals\":" << CountsJson(diff, diff.Equal()).dump()
        << ",\n\"kinds\":" << KindsJson(diff).dump() << ",\n\"changes\":[";
    const char* separator = "\n";
    for (const KindDiff& each : diff.kinds) {
        for (const ChunkChange& chunk : each.changes) {
            out << separator << ChunkJson(each, chunk).dump();
            separator = ",\n";
        }
    }
    out << (*separator == ',' ? "\n]}\n" : "]}\n");
}

}  // namespace kta
