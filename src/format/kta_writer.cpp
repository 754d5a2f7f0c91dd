#include "format/kta_writer.h"

#include "core/log.h"

bool KTAWriter::Open(const char* path) {
    Close();
    numGathered = 0;
    file = fopen(path, "wb");
    if (file != NULL) {
        setvbuf(file, NULL, _IONBF, 0);
    }
    return file != NULL;
}

void KTAWriter::Close() {
    if (file != NULL) {
        Flush();
        fclose(file);
        file = NULL;
    }
}

void KTAWriter::WriteFileHeader(KTAFileKind kind) {
    if (file == NULL) {
        return;
    }
    const KTAFileHeader header = {{'K', 'T', 'A', ' '}, 1, 1, static_cast<Plinth::UInt8>(kind)};
    Plinth::Log("Writing file header version %d.%d", header.majorVersion, header.minorVersion);
    WriteRecord(header);
}

void KTAWriter::WriteChunkHeader(Plinth::UInt32 id, Plinth::UInt32 size, Plinth::UInt32 version) {
    const KTAChunkHeader header = {id, size, version};
    WriteRecord(header);
}

void KTAWriter::WriteChunk(Plinth::UInt32 id, Plinth::UInt32 size, const void* body,
                           Plinth::UInt32 version) {
    WriteChunkHeader(id, size, version);
    WriteRaw(body, size);
}

void KTAWriter::WriteThrough(const void* buffer, size_t length) {
    Flush();
    if (length > sizeof(gathered) && file != NULL) {
        fwrite(buffer, length, 1, file);
    } else if (length <= sizeof(gathered)) {
        memcpy(gathered, buffer, length);
        numGathered = length;
    }
}

void KTAWriter::Flush() {
    if (file != NULL && numGathered > 0) {
        fwrite(gathered, numGathered, 1, file);
    }
    numGathered = 0;
}
