#include "format/kta_writer.h"

#include <string.h>

#include "core/log.h"

bool KTAWriter::Open(const char* path) {
    Close();
    file = fopen(path, "wb");
    return file != NULL;
}

void KTAWriter::Close() {
    if (file != NULL) {
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

void KTAWriter::WriteRaw(const void* buffer, size_t length) {
    if (file != NULL) {
        fwrite(buffer, length, 1, file);
    }
}

fpos_t KTAWriter::ChunkPosition() {
    fpos_t position;
    memset(&position, 0, sizeof(position));
    if (file != NULL) {
        fgetpos(file, &position);
    }
    return position;
}

void KTAWriter::SetPosition(const fpos_t& position) {
    if (file != NULL) {
        fsetpos(file, &position);
    }
}
