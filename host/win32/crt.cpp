#include <sys/file.h>
#include <windows.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace {

// Takes the lock that stands for Microsoft's sharing rule: a writer shares with nobody, a reader
// with readers. It is given up when the file is closed. A file system without locks refuses nobody.
bool Lock(FILE* file, bool forReading) {
    return flock(fileno(file), (forReading ? LOCK_SH : LOCK_EX) | LOCK_NB) == 0 ||
           errno != EWOULDBLOCK;
}

// Null, with errno set, when the file cannot be opened or is in use.
FILE* OpenUnshared(const char* name, const char* mode) {
    const bool forReading = mode[0] == 'r' && std::strchr(mode, '+') == nullptr;
    if (mode[0] == 'w') {
        // A file in use must not be emptied, so the lock is tried before.
        FILE* probe = std::fopen(name, "ab");
        if (probe == nullptr) {
            return nullptr;
        }
        const bool free = Lock(probe, false);
        std::fclose(probe);
        if (!free) {
            errno = EACCES;
            return nullptr;
        }
    }
    FILE* file = std::fopen(name, mode);
    if (file != nullptr && !Lock(file, forReading)) {
        std::fclose(file);
        errno = EACCES;
        return nullptr;
    }
    return file;
}

// Letters as in the C locale, whatever the current one is: Microsoft's follow it.
char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}
char Upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c;
}

char* Change(char* text, char (*change)(char)) {
    for (char* c = text; *c; ++c) {
        *c = change(*c);
    }
    return text;
}

}  // namespace

extern "C" {

errno_t strcpy_s(char* destination, size_t size, const char* source) {
    if (!destination || size == 0) {
        return EINVAL;
    }
    destination[0] = '\0';
    if (!source) {
        return EINVAL;
    }
    const size_t length = std::strlen(source);
    if (length >= size) {
        return ERANGE;
    }
    std::memcpy(destination, source, length + 1);
    return 0;
}

errno_t fopen_s(FILE** file, const char* name, const char* mode) {
    if (!file) {
        return EINVAL;
    }
    *file = nullptr;
    if (!name || !mode) {
        return EINVAL;
    }
    *file = OpenUnshared(name, mode);
    return *file ? 0 : errno;
}

int _stricmp(const char* a, const char* b) {
    while (*a && Lower(*a) == Lower(*b)) {
        ++a;
        ++b;
    }
    return static_cast<unsigned char>(Lower(*a)) - static_cast<unsigned char>(Lower(*b));
}

char* _strupr(char* text) {
    return Change(text, Upper);
}

char* _strlwr(char* text) {
    return Change(text, Lower);
}

}  // extern "C"
