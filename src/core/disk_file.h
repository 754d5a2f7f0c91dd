// A file of the C library as a stream.
#ifndef PLINTH_DISK_FILE_H
#define PLINTH_DISK_FILE_H

#include <stdio.h>

#include "core/stream.h"

namespace Plinth {

// The place of files in the class tree of streams.
class File : public Stream {};

enum FileMode {
    kFileRead = 1,         // "r"
    kFileWrite = 2,        // "w": an existing file is emptied
    kFileUpdate = 3,       // "r+"
    kFileWriteUpdate = 4,  // "w+"
    kFileAppend = 5,       // "a"
    kFileAppendUpdate = 6  // "a+"
};

// On a closed file every operation fails as its comment says; none crashes. Not copyable.
class DiskFile : public File {
  public:
    DiskFile();
    // Closes the file.
    virtual ~DiskFile();

    // Closes the open file first. Text mode unless `binary`. A mode that FileMode does not name and
    // a name without text fail. Returns whether the file is open; mode and name are kept in either
    // case.
    bool Open(const String& name, UInt32 openMode, bool binary);

    // All or nothing: return `size`, or 0 for a short transfer.
    virtual size_t Read(void* buffer, size_t size);
    virtual size_t Write(const void* buffer, size_t size);

    virtual void Close();
    virtual void Flush();
    // Whether a read has met the end; true for a closed file.
    virtual bool AtEnd();
    // The next byte; -1 at the end.
    virtual int GetChar();
    // All bits set for a closed file.
    virtual UInt32 Position();
    // In bytes; all bits set for a closed file.
    virtual UInt32 Size();
    virtual bool PutChar(char character);
    // Forward from the current position. A count of 2 GiB or more fails.
    virtual bool Skip(UInt32 count);
    // From the start. A position of 2 GiB or more fails.
    virtual bool Seek(UInt32 position);
    virtual bool IsOpen();

    // As given to Open last; 0 and the empty text before.
    UInt32 Mode() const { return mode; }
    const String& Name() const { return fileName; }

  private:
    DiskFile(const DiskFile&);
    DiskFile& operator=(const DiskFile&);

    FILE* file;
    UInt32 mode;
    String fileName;
};

}  // namespace Plinth

#endif
