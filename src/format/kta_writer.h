// Writes a KTA file.
#ifndef FORMAT_KTA_WRITER_H
#define FORMAT_KTA_WRITER_H

#include <stdio.h>
#include <string.h>

#include "core/types.h"
#include "format/records.h"

// Owns the open file, and gathers what is written to it into large pieces. Every write does nothing
// when no file is open; write errors are not detected.
class KTAWriter {
  public:
    KTAWriter() : file(NULL), numGathered(0) {}
    ~KTAWriter() { Close(); }

    // Creates the file, or empties a former one. False where that is impossible.
    bool Open(const char* path);
    void Close();
    // Hands over to the file what has been gathered.
    void Flush();

    // Logs the header's version.
    void WriteFileHeader(KTAFileKind kind);
    void WriteChunkHeader(Plinth::UInt32 id, Plinth::UInt32 size, Plinth::UInt32 version);
    void WriteChunk(Plinth::UInt32 id, Plinth::UInt32 size, const void* body,
                    Plinth::UInt32 version);
    void WriteRaw(const void* buffer, size_t length) {
        if (length <= sizeof(gathered) - numGathered) {
            memcpy(gathered + numGathered, buffer, length);
            numGathered += length;
        } else {
            WriteThrough(buffer, length);
        }
    }

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

  private:
    KTAWriter(const KTAWriter&);
    KTAWriter& operator=(const KTAWriter&);

    void WriteThrough(const void* buffer, size_t length);

    FILE* file;  // null: none is open
    size_t numGathered;
    Plinth::UInt8 gathered[65536];
};

#endif
