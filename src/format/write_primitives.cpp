#include <string.h>

#include "format/records.h"
#include "plugin/kta_exp.h"
#include "plugin/motion_pass.h"

void KTAExp::WriteFileHeader() {
    if (file == NULL) {
        return;
    }
    KTAFileHeader header = {{'K', 'T', 'A', ' '}, 1, 1, kFileKindMotion};
    if (!g_motionPass) {
        header.kind = kFileKindActor;
    }
    Plinth::Log("Writing file header version %d.%d", header.majorVersion, header.minorVersion);
    WriteRaw(&header, sizeof(header));
}

void KTAExp::WriteChunkHeader(Plinth::UInt32 id, Plinth::UInt32 size, Plinth::UInt32 version) {
    const KTAChunkHeader header = {id, size, version};
    WriteRaw(&header, sizeof(header));
}

void KTAExp::WriteChunk(Plinth::UInt32 id, Plinth::UInt32 size, const void* body,
                        Plinth::UInt32 version) {
    WriteChunkHeader(id, size, version);
    WriteRaw(body, size);
}

void KTAExp::WriteRaw(const void* buffer, size_t length) {
    if (file != NULL) {
        fwrite(buffer, length, 1, file);
    }
}

fpos_t KTAExp::ChunkPosition() {
    fpos_t position;
    memset(&position, 0, sizeof(position));
    if (file != NULL) {
        fgetpos(file, &position);
    }
    return position;
}

void KTAExp::PatchChunk(const fpos_t& position, Plinth::UInt32 id, Plinth::UInt32 size,
                        Plinth::UInt32 version, const void* beginning, size_t length) {
    if (file == NULL) {
        return;
    }
    const fpos_t end = ChunkPosition();
    fsetpos(file, &position);
    WriteChunkHeader(id, size, version);
    WriteRaw(beginning, length);
    fsetpos(file, &end);
}
