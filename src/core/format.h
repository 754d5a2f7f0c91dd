// Text of bounded length: the printf-style formatter through which all text is made, and names in
// the fixed-width fields of records.
#ifndef PLINTH_FORMAT_H
#define PLINTH_FORMAT_H

#include <stdarg.h>

// Lets the compiler check the arguments of a printf-style function against its format. Both
// numbers count from 1, `this` included; firstArgument is 0 for a va_list.
#if defined(__GNUC__) && defined(_WIN32) && !defined(__clang__)
#define PLINTH_PRINTF(formatIndex, firstArgument) \
    __attribute__((format(gnu_printf, formatIndex, firstArgument)))
#elif defined(__GNUC__)
#define PLINTH_PRINTF(formatIndex, firstArgument) \
    __attribute__((format(printf, formatIndex, firstArgument)))
#else
#define PLINTH_PRINTF(formatIndex, firstArgument)
#endif

namespace Plinth {

// Formats into a buffer of `size` bytes, cuts what does not fit and always ends the text with a
// NUL. Returns the number of characters stored, the NUL not counted: at most size - 1; 0 for a null
// buffer or a size below 1, which stay untouched. Text that the C library cannot format is empty.
int FormatBounded(char* buffer, int size, const char* format, va_list arguments)
    PLINTH_PRINTF(3, 0);

// The same with the arguments in place.
int FormatInto(char* buffer, int size, const char* format, ...) PLINTH_PRINTF(3, 4);

// The number of characters that formatting yields, the NUL not counted; 0 where the C library
// cannot format.
int MeasureFormat(const char* format, va_list arguments) PLINTH_PRINTF(1, 0);

// Copies a C text into a field of `fieldSize` bytes: at most fieldSize - 1 characters, then zeros
// up to the field's end. A null text is the empty one; a fieldSize below 1 does nothing. The text
// may lie in the field itself.
void CopyName(char* field, int fieldSize, const char* text);

}  // namespace Plinth

#endif
