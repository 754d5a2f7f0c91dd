// The fields of the records as one table a record: the reader checks by it, dumps are written by
// it. docs/kta-format.md has the same tables.
#pragma once

#include "kta/cursor.h"

namespace kta {

enum class FieldType { text, character, u8, u16, i16, i32, u32, f32 };

// The reader's check of each element. Without a rule a text must have a NUL and a real must be
// finite.
enum class FieldRule {
    none,
    flag,      // 0 or 1
    constant,  // `least`
    range,     // `least` to `most`
    atLeast,   // `least` or more; anything else ends the reading
    letters
};

struct Field {
    const char* name;   // the member of the record, and the name in dumps
    const char* label;  // what faults call it
    FieldType type;
    std::size_t offset;   // in the record
    std::size_t size;     // of an element
    std::size_t count;    // of elements; 1 where it is no array
    std::size_t columns;  // of a matrix's rows; 0 where it is none
    FieldRule rule = FieldRule::none;
    std::int32_t least = 0;
    std::int32_t most = 0;
    const char* letters = nullptr;
    // Called when the rule was checked, with the record, which stands at the offset.
    void (*also)(Cursor& cursor, std::uint64_t offset, const void* record) = nullptr;
};

// Those of a record that is not padding, in its order. There is a table for every record; the
// records that occur by the thousand in a chunk (vertices, weights, keys, points) have their rules
// with their readers.
template <typename Record>
std::span<const Field> FieldsOf();

// As in "diffuse"; null for a number that is no layer's type.
const char* LayerTypeName(int type);

// An element of a field that is an integer or a character, or a real.
std::int64_t IntegerAt(const Field& field, const void* record, std::size_t element);
float RealAt(const Field& field, const void* record, std::size_t element);
std::string_view TextAt(const Field& field, const void* record);

// Checks the fields of a record that stands at the offset.
void CheckFields(Cursor& cursor, std::span<const Field> fields, std::uint64_t offset,
                 const void* record);

// Reads a record whose bytes the caller knows to be there, and checks it.
template <typename Record>
Record ReadRecord(Cursor& cursor) {
    const std::uint64_t offset = cursor.Offset();
    const auto record = cursor.Read<Record>();
    CheckFields(cursor, FieldsOf<Record>(), offset, &record);
    return record;
}

// A record that stands at an offset of the file.
struct RecordView {
    std::span<const Field> fields;
    const void* record;
    std::uint64_t offset;
};

// The records that a chunk begins with.
std::vector<RecordView> RecordsOf(const Chunk& chunk);

}  // namespace kta
