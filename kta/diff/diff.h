// What differs between two KTA files of one kind, by what the chunks are about and not by where
// they stand.
//
// A chunk's counterpart is the chunk of the same kind with the same names: a node, material or
// motion part of the same name; what hangs from it under the same node or material. Of several of
// one name the first belongs to the first, and so on. Numbers of nodes and materials are the same
// where they stand for counterparts. docs/kta.md tells all of it.
#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "kta/reader.h"

namespace kta {

// Two reals a and b are equal where |a - b| <= max(absolute, relative * max(|a|, |b|)), the rule of
// PEP 485. Not a number is equal to itself alone, and so is an infinity; -0 is 0.
struct Tolerance {
    double absolute = 0;
    double relative = 0;
};

// |a - b|, infinite where one of them is not finite; 0 where they are equal by the tolerance.
double DeviationOf(float a, float b, const Tolerance& tolerance);

// `moved`: the same in another order.
enum class Change { added, removed, changed, moved };

// "added" and so on.
const char* ChangeName(Change change);

// What something is, as in {"node", "\"Arm\""}; the value is JSON.
using Label = std::pair<const char*, std::string>;

// What is different in two chunks that are each other's counterparts: a field of theirs, a field of
// some of their items, or items that only one of them has or that are in another order.
struct FieldChange {
    Change change = Change::changed;
    std::string subMesh;              // JSON of the material's name; empty: of the chunk itself
    std::string field;                // as dumps name it; empty: whole items
    std::string item;                 // "vertex", "key", ...; empty: a field of the chunk
    std::size_t count = 1;            // of such items
    std::size_t compared = 1;         // among so many
    std::vector<Label> place;         // the item that differs most, in the first file
    std::string a, b;                 // the values there as JSON; empty for whole items
    std::optional<double> deviation;  // of reals: the largest of a component
    std::optional<double> degrees;    // of rotations: how far these two are turned apart
};

// Where a chunk stands, and the number in its file of the node or material that it is about (a wire
// of its first node); -1 where there is none.
struct ChunkPlace {
    std::uint64_t offset = 0;
    std::int64_t node = -1;
    std::int64_t material = -1;
};

struct ChunkChange {
    Change change = Change::changed;  // moved: nothing but the order of items differs
    std::vector<Label> identity;
    std::size_t ordinal = 1;             // among those with the same identity
    std::optional<ChunkPlace> inA, inB;  // none in a file that does not have it
    std::vector<FieldChange> fields;     // of a changed or moved one
};

// The chunks of one kind.
struct KindDiff {
    const KTAChunkType* type = nullptr;
    std::size_t equal = 0;             // pairs
    std::vector<ChunkChange> changes;  // in the first file's order, then those added
    // Labels of the first chunk that stands before one that it stood behind.
    std::vector<Label> moved;

    std::size_t Count(Change change) const;
};

struct Diff {
    std::vector<KindDiff> kinds;  // those that occur, by id

    std::size_t Count(Change change) const;
    std::size_t Equal() const;
    // Whether anything is in another order.
    bool Moved() const;
    // Whether anything but the order differs; with `order`, anything at all.
    bool Different(bool order) const;
};

// Both files must be of one kind. Takes time in proportion to the files' sizes, but for meshes
// whose faces differ, which are sorted.
Diff Compare(const File& a, const File& b, const Tolerance& tolerance);

// ---------------------------------------------------------------- reports

struct DiffReport {
    std::string nameA, nameB;  // of the files, in any encoding
    Tolerance tolerance{};
    bool order = false;         // whether another order is a difference
    std::size_t mostLines = 0;  // of a kind of chunk, in text; 0: all
};

// A paragraph for each kind of chunk that differs, and a line in the end that sums up.
void WriteDiff(const Diff& diff, const DiffReport& report, std::ostream& out);

// One JSON object, with a line for each chunk that differs; docs/kta.md has its members.
void WriteDiffJson(const Diff& diff, KTAFileKind kind, const DiffReport& report, std::ostream& out);

}  // namespace kta
