#include "core/disk_file.h"

#include <windows.h>

namespace Plinth {

namespace {

const UInt32 kNoPosition = 0xffffffffu;
// Of fseek where `long` has 32 bits; above it a skip would run backwards.
const UInt32 kMaxOffset = 0x7fffffffu;

// Null for a mode without a C mode.
const char* CMode(UInt32 mode) {
    switch (mode) {
        case kFileRead:
            return "r";
        case kFileWrite:
            return "w";
        case kFileUpdate:
            return "r+";
        case kFileWriteUpdate:
            return "w+";
        case kFileAppend:
            return "a";
        case kFileAppendUpdate:
            return "a+";
        default:
            return NULL;
    }
}

}  // namespace

DiskFile::DiskFile() : file(NULL), mode(0) {
}

DiskFile::~DiskFile() {
    DiskFile::Close();
}

bool DiskFile::Open(const String& name, UInt32 openMode, bool binary) {
    Close();
    mode = openMode;
    fileName = name;
    // Microsoft's fopen_s does not answer a faulty name or mode with an error: it ends the process.
    const char* const cMode = CMode(openMode);
    if (cMode == NULL || fileName.Data() == NULL) {
        return false;
    }
    char modeText[4];
    FormatInto(modeText, sizeof(modeText), "%s%c", cMode, binary ? 'b' : 't');
    if (fopen_s(&file, fileName.Data(), modeText) != 0) {
        file = NULL;
    }
    return file != NULL;
}

size_t DiskFile::Read(void* buffer, size_t size) {
    return file != NULL && fread(buffer, size, 1, file) == 1 ? size : 0;
}

size_t DiskFile::Write(const void* buffer, size_t size) {
    return file != NULL && fwrite(buffer, size, 1, file) == 1 ? size : 0;
}

void DiskFile::Close() {
    if (file != NULL) {
        fclose(file);
        file = NULL;
    }
}

void DiskFile::Flush() {
    if (file != NULL) {
        fflush(file);
    }
}

bool DiskFile::AtEnd() {
    return file == NULL || feof(file) != 0;
}

int DiskFile::GetChar() {
    return file != NULL ? fgetc(file) : -1;
}

UInt32 DiskFile::Position() {
    return file != NULL ? static_cast<UInt32>(ftell(file)) : kNoPosition;
}

UInt32 DiskFile::Size() {
    if (file == NULL) {
        return kNoPosition;
    }
    // A `long`: the position may be one that Seek does not take.
    const long position = ftell(file);
    fseek(file, 0, SEEK_END);
    const UInt32 size = Position();
    fseek(file, position, SEEK_SET);
    return size;
}

bool DiskFile::PutChar(char character) {
    return file != NULL && fputc(static_cast<UInt8>(character), file) != -1;
}

bool DiskFile::Skip(UInt32 count) {
    return file != NULL && count <= kMaxOffset &&
           fseek(file, static_cast<long>(count), SEEK_CUR) == 0;
}

bool DiskFile::Seek(UInt32 position) {
    return file != NULL && position <= kMaxOffset &&
           fseek(file, static_cast<long>(position), SEEK_SET) == 0;
}

bool DiskFile::IsOpen() {
    return file != NULL;
}

}  // namespace Plinth
