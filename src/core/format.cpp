#include "core/format.h"

#include <stdio.h>
#include <string.h>

namespace Plinth {

int FormatBounded(char* buffer, int size, const char* format, va_list arguments) {
    if (buffer == NULL || size <= 0) {
        return 0;
    }
#if defined(_MSC_VER)
    // _vsnprintf answers -1 both for a text that it cuts and for one that it cannot format, and
    // puts no NUL behind a text that fills the buffer. The list is a plain pointer there, so it can
    // be used twice.
    int stored = _vscprintf(format, arguments);
    _vsnprintf(buffer, size, format, arguments);
#else
    int stored = vsnprintf(buffer, size, format, arguments);
#endif
    if (stored < 0) {
        stored = 0;
    }
    if (stored >= size) {
        stored = size - 1;
    }
    buffer[stored] = '\0';
    return stored;
}

int FormatInto(char* buffer, int size, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int stored = FormatBounded(buffer, size, format, arguments);
    va_end(arguments);
    return stored;
}

int MeasureFormat(const char* format, va_list arguments) {
#if defined(_MSC_VER)
    const int needed = _vscprintf(format, arguments);
#else
    const int needed = vsnprintf(NULL, 0, format, arguments);
#endif
    return needed < 0 ? 0 : needed;
}

void CopyName(char* field, int fieldSize, const char* text) {
    if (fieldSize < 1) {
        return;
    }
    int length = 0;
    if (text != NULL) {
        while (length < fieldSize - 1 && text[length] != '\0') {
            ++length;
        }
        memmove(field, text, length);
    }
    memset(field + length, 0, fieldSize - length);
}

}  // namespace Plinth
