// The readers of the bodies that are more than one record. Each reads, into a chunk whose header is
// filled, the body at which the cursor stands, or stops the cursor.
#pragma once

#include "kta/fields.h"

namespace kta {

void ReadMeshBody(Cursor& cursor, Chunk& chunk);
// A body may be shorter than declared; how it is told from a cut one, see Weights.
void ReadWeightsBody(Cursor& cursor, Chunk& chunk);
void ReadMorphBody(Cursor& cursor, Chunk& chunk);
void ReadWireBody(Cursor& cursor, Chunk& chunk);
// In the layout that the chunk's version tells.
void ReadKeyTrackBody(Cursor& cursor, Chunk& chunk);

// A body that is one record.
template <typename Record>
void ReadRecordBody(Cursor& cursor, Chunk& chunk) {
    if (chunk.size != sizeof(Record)) {
        cursor.Stop(
            chunk.offset + offsetof(KTAChunkHeader, size),
            Found(IssueCode::chunkSize, "size", chunk.size, std::to_string(sizeof(Record))));
    }
    if (cursor.Require(sizeof(Record), "body")) {
        chunk.body = ReadRecord<Record>(cursor);
    }
}

// Whether the file ends at the cursor, or goes on with what may be the header of an actor's chunk.
bool IsChunkEnd(const Cursor& cursor);

}  // namespace kta
