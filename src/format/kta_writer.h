// Writes a KTA file.
#ifndef FORMAT_KTA_WRITER_H
#define FORMAT_KTA_WRITER_H

#include <stdio.h>

#include "core/types.h"
#include "format/records.h"

// Owns the open file. Every write does nothing when no file is open; write errors are not detected.
class KTAWriter {
  public:
    KTAWriter() : file(NULL) {}
    ~KTAWriter() { Close(); }

    // Creates the file, or empties a former one. False where that is impossible.
    bool Open(const char* path);
    void Close();

    // Logs the header's version.
    void WriteFileHeader(KTAFileKind kind);
    void WriteChunkHeader(Plinth::UInt32 id, Plinth::UInt32 size, Plinth::UInt32 version);
    void WriteChunk(Plinth::UInt32 id, Plinth::UInt32 size, const void* body,
                    Plinth::UInt32 version);
    void WriteRaw(const void* buffer, size_t length);

    // A chunk of which the record is all that its size covers.
    template <typename Record>
    void WriteChunk(const Record& record) {
        WriteChunk(Record::kChunkId, sizeof(record), &record, Record::kChunkVersion);
    }

    // The beginning of a chunk of that declared size; more of its body may follow.
    template <typename Record>
    void BeginChunk(const Record& head, Plinth::UInt32 size,
                    Plinth::UInt32 version = Record::kChunkVersion) {
        WriteChunkHeader(Record::kChunkId, size, version);
        WriteRecord(head);
    }

    // A part of a body that is built piece by piece.
    template <typename Record>
    void WriteRecord(const Record& record) {
        WriteRaw(&record, sizeof(record));
    }

    // A chunk whose beginning is known only when all of it has been written: remember the position,
    // begin the chunk, go on to its end, and let PatchChunk begin it again. The file stands at its
    // end afterwards.
    fpos_t ChunkPosition();
    template <typename Record>
    void PatchChunk(const fpos_t& position, const Record& head, Plinth::UInt32 size,
                    Plinth::UInt32 version = Record::kChunkVersion) {
        const fpos_t end = ChunkPosition();
        SetPosition(position);
        BeginChunk(head, size, version);
        SetPosition(end);
    }

  private:
    KTAWriter(const KTAWriter&);
    KTAWriter& operator=(const KTAWriter&);

    void SetPosition(const fpos_t& position);

    FILE* file;  // null: none is open
};

#endif
