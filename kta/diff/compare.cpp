#include <cmath>
#include <limits>
#include <numbers>
#include <unordered_map>

#include "kta/diff/bodies.h"

namespace kta {

// ---------------------------------------------------------------- values

double DeviationOf(float a, float b, const Tolerance& tolerance) {
    if (a == b || (std::isnan(a) && std::isnan(b))) {
        return 0;
    }
    if (!std::isfinite(a) || !std::isfinite(b)) {
        return std::numeric_limits<double>::infinity();
    }
    const double x = a;
    const double y = b;
    const double allowed =
        std::max(tolerance.absolute, tolerance.relative * std::max(std::abs(x), std::abs(y)));
    const double deviation = std::abs(x - y);
    return deviation <= allowed ? 0 : deviation;
}

double DeviationOf(std::span<const float> a, std::span<const float> b, const Tolerance& tolerance) {
    double deviation = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        deviation = std::max(deviation, DeviationOf(a[i], b[i], tolerance));
    }
    return deviation;
}

double DeviationOf(const Field& field, const void* a, const void* b, const Tolerance& tolerance) {
    if (field.type == FieldType::text) {
        return TextAt(field, a) == TextAt(field, b) ? 0 : 1;
    }
    double deviation = 0;
    for (std::size_t i = 0; i < field.count; ++i) {
        const bool real = field.type == FieldType::f32;
        const double its =
            real ? DeviationOf(RealAt(field, a, i), RealAt(field, b, i), tolerance)
                 : static_cast<double>(IntegerAt(field, a, i) != IntegerAt(field, b, i));
        deviation = std::max(deviation, its);
    }
    return deviation;
}

namespace {

// Of any length but 0; none where there is no direction.
std::optional<std::array<double, 4>> UnitQuaternion(const Field& field, const void* record) {
    std::array<double, 4> q{};
    double square = 0;
    for (std::size_t i = 0; i < q.size(); ++i) {
        q[i] = RealAt(field, record, i);
        square += q[i] * q[i];
    }
    const double length = std::sqrt(square);
    if (!(length > 0) || !std::isfinite(length)) {
        return std::nullopt;
    }
    for (double& component : q) {
        component /= length;
    }
    return q;
}

}  // namespace

// From the chord between the two, which is precise for small angles; a quaternion and its negative
// are one rotation.
std::optional<double> DegreesBetween(const Field& field, const void* a, const void* b) {
    if (field.type != FieldType::f32 || field.count != 4 || field.columns != 0) {
        return std::nullopt;
    }
    const auto p = UnitQuaternion(field, a);
    const auto q = UnitQuaternion(field, b);
    if (!p || !q) {
        return std::nullopt;
    }
    double apart = 0;
    double together = 0;
    for (std::size_t i = 0; i < p->size(); ++i) {
        apart += ((*p)[i] - (*q)[i]) * ((*p)[i] - (*q)[i]);
        together += ((*p)[i] + (*q)[i]) * ((*p)[i] + (*q)[i]);
    }
    const double chord = std::sqrt(std::min(apart, together));
    return 4 * std::asin(std::min(1.0, chord / 2)) * 180 / std::numbers::pi;
}

std::string ListText(std::span<const float> values) {
    std::string text = "[";
    for (const float value : values) {
        text += (text.size() == 1 ? "" : ",") + NumberText(value);
    }
    return text + "]";
}

void AppendSurplus(FieldChange form, std::size_t added, std::size_t removed,
                   std::vector<FieldChange>& changes) {
    for (const auto& [change, count] :
         {std::pair(Change::removed, removed), std::pair(Change::added, added)}) {
        if (count > 0) {
            form.change = change;
            form.count = form.compared = count;
            changes.push_back(form);
        }
    }
}

// ---------------------------------------------------------------- pairs of chunks

namespace {

// Numbers of nodes are not compared: chunks that carry one are matched by it. A layer's number is
// passed over where it is that of the material before it in both files.
bool IsMatchedBy(const Field& field, const Subject& a, const Subject& b) {
    const std::string_view name = field.name;
    return name == "nodeNumber" || (name == "parentMaterial" && a.followsOwner && b.followsOwner);
}

void CompareRecords(const Subject& a, const Subject& b, const Tolerance& tolerance,
                    std::vector<FieldChange>& changes) {
    const std::vector<RecordView> recordsA = RecordsOf(*a.chunk);
    const std::vector<RecordView> recordsB = RecordsOf(*b.chunk);
    for (std::size_t i = 0; i < recordsA.size(); ++i) {
        for (const Field& field : recordsA[i].fields) {
            const double deviation =
                DeviationOf(field, recordsA[i].record, recordsB[i].record, tolerance);
            if (deviation == 0 || IsMatchedBy(field, a, b)) {
                continue;
            }
            FieldChange change;
            change.field = field.name;
            change.a = ValueText(field, recordsA[i].record);
            change.b = ValueText(field, recordsB[i].record);
            if (field.type == FieldType::f32) {
                change.deviation = deviation;
                change.degrees = DegreesBetween(field, recordsA[i].record, recordsB[i].record);
            }
            changes.push_back(std::move(change));
        }
    }
}

std::vector<FieldChange> CompareChunks(const Subject& a, const Subject& b, const Comparison& by) {
    std::vector<FieldChange> changes;
    CompareRecords(a, b, by.tolerance, changes);
    const Chunk& chunkA = *a.chunk;
    const Chunk& chunkB = *b.chunk;
    switch (chunkA.type->id) {
        case kChunkMesh:
            CompareMeshes(*chunkA.As<Mesh>(), *chunkB.As<Mesh>(), by, changes);
            break;
        case kChunkWeights:
            CompareWeights(*chunkA.As<Weights>(), *chunkB.As<Weights>(), by, changes);
            break;
        case kChunkMorph:
            CompareMorphs(*chunkA.As<Morph>(), *chunkB.As<Morph>(), by, changes);
            break;
        case kChunkKeyTrack:
            CompareTracks(chunkA, chunkB, by, changes);
            break;
        default:
            break;
    }
    return changes;
}

ChunkChange ChangeOf(Change change, const Subject* a, const Subject* b) {
    const Subject& named = a != nullptr ? *a : *b;
    ChunkChange result;
    result.change = change;
    result.identity = named.identity;
    result.ordinal = named.ordinal;
    if (a != nullptr) {
        result.inA = a->place;
    }
    if (b != nullptr) {
        result.inB = b->place;
    }
    return result;
}

// Finds the first chunk that stands before one that it stood behind, of those that hang from one
// owner.
class OrderWatch {
  public:
    void See(const Subject& a, std::size_t position, KindDiff& kind) {
        const auto [least, isFirst] = least_.emplace(a.owner, position);
        if (!isFirst && position < least->second && kind.moved.empty()) {
            kind.moved = a.identity;
        }
        least->second = std::max(least->second, position);
    }

  private:
    std::unordered_map<std::string_view, std::size_t> least_;
};

void ComparePair(const Subject& a, const Subject& b, const Comparison& by, KindDiff& kind) {
    std::vector<FieldChange> fields = CompareChunks(a, b, by);
    if (fields.empty()) {
        ++kind.equal;
        return;
    }
    const bool onlyMoved = std::all_of(fields.begin(), fields.end(), [](const FieldChange& field) {
        return field.change == Change::moved;
    });
    ChunkChange change = ChangeOf(onlyMoved ? Change::moved : Change::changed, &a, &b);
    change.fields = std::move(fields);
    kind.changes.push_back(std::move(change));
}

KindDiff CompareKind(const KTAChunkType& type, const Subjects& a, const Subjects& b,
                     const Comparison& by) {
    KindDiff kind;
    kind.type = &type;
    const Match match = MatchByKeys(a.keys, b.keys);
    OrderWatch order;
    for (std::size_t i = 0; i < a.list.size(); ++i) {
        const std::size_t j = match.counterparts[i];
        if (j == kNoCounterpart) {
            kind.changes.push_back(ChangeOf(Change::removed, &a.list[i], nullptr));
        } else {
            order.See(a.list[i], j, kind);
            ComparePair(a.list[i], b.list[j], by, kind);
        }
    }
    for (const std::size_t j : match.added) {
        kind.changes.push_back(ChangeOf(Change::added, nullptr, &b.list[j]));
    }
    return kind;
}

}  // namespace

// ---------------------------------------------------------------- files

const char* ChangeName(Change change) {
    constexpr const char* kNames[] = {"added", "removed", "changed", "moved"};
    return kNames[static_cast<int>(change)];
}

std::size_t KindDiff::Count(Change change) const {
    return static_cast<std::size_t>(
        std::count_if(changes.begin(), changes.end(),
                      [&](const ChunkChange& its) { return its.change == change; }));
}

std::size_t Diff::Count(Change change) const {
    std::size_t count = 0;
    for (const KindDiff& kind : kinds) {
        count += kind.Count(change);
    }
    return count;
}

std::size_t Diff::Equal() const {
    std::size_t count = 0;
    for (const KindDiff& kind : kinds) {
        count += kind.equal;
    }
    return count;
}

bool Diff::Moved() const {
    return Count(Change::moved) > 0 ||
           std::any_of(kinds.begin(), kinds.end(),
                       [](const KindDiff& kind) { return !kind.moved.empty(); });
}

bool Diff::Different(bool order) const {
    return Count(Change::added) + Count(Change::removed) + Count(Change::changed) > 0 ||
           (order && Moved());
}

Diff Compare(const File& a, const File& b, const Tolerance& tolerance) {
    const auto [referencesA, referencesB] = BindReferences(a, b);
    const Comparison by{referencesA, referencesB, tolerance};
    const std::vector<Subjects> subjectsA = SubjectsOf(a, referencesA);
    const std::vector<Subjects> subjectsB = SubjectsOf(b, referencesB);
    Diff diff;
    for (std::size_t i = 0; i < subjectsA.size(); ++i) {
        if (!subjectsA[i].list.empty() || !subjectsB[i].list.empty()) {
            diff.kinds.push_back(CompareKind(kChunkTypes[i], subjectsA[i], subjectsB[i], by));
        }
    }
    return diff;
}

}  // namespace kta
