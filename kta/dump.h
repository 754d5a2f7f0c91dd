// Every chunk and field of a KTA file as text or as JSON. docs/kta-format.md has the table of
// field names.
#pragma once

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "kta/fields.h"
#include "kta/reader.h"

namespace kta {

// What of a file is dumped.
struct DumpSelection {
    std::vector<std::string> chunks;  // names of kinds of chunks; empty: all
    bool withArrays = true;           // vertices, faces, keys, weights and points too
    // In text: without them, nor the file's name and size, what did not change reads the same.
    bool withOffsets = true;
};

// `path` is shown as the file's name. Lines with the fields' offsets, in file order.
void DumpText(const std::string& path, const File& file, std::ostream& out,
              const DumpSelection& selection = {});

// One JSON object, a line for each chunk. A finite float is written with the digits that read back
// to the same f32; others are the texts "nan", "inf" and "-inf". Faults, where there are any, are
// the object's last member; of a file that could not be read, or whose header is faulty, they or
// the reason ("error") are all that there is.
void DumpJson(const std::string& path, const Reading& reading, std::ostream& out,
              const DumpSelection& selection = {});

// The object's members that tell what is wrong with a file, each with a comma before it; empty
// where nothing is.
std::string FaultMembers(const Reading& reading);

// The text as UTF-8: valid UTF-8 stays, and every byte that is no part of it becomes the code
// point of its own number (Latin-1).
std::string ToUtf8(std::string_view text);

// A number as dumps show it: 0.5, 1.0, "nan".
std::string NumberText(float value);

// The value of a record's field as JSON dumps show it: [1.0,0.0,0.0].
std::string ValueText(const Field& field, const void* record);

// The text as a JSON string.
std::string QuotedText(std::string_view text);

}  // namespace kta
