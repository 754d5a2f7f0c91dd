// The abstract byte stream with typed read and write operators.
#ifndef PLINTH_STREAM_H
#define PLINTH_STREAM_H

#include <stddef.h>

#include "core/string.h"
#include "core/types.h"

namespace Plinth {

// The function name in the exception of a failed string read; may be replaced.
extern const char* streamReadFunction;

// A plain concatenation of the values' bytes in the machine's order, without padding. `long` has 4
// bytes in a stream on every platform: the other bits are not written, and come back as copies of
// the sign (signed) or zero (unsigned). A `long` that holds the same 4 bytes already keeps its
// other bits.
//
// The operators return the stream itself and ignore what Read and Write answer. A value that cannot
// be read keeps what it holds.
class Stream {
  public:
    virtual ~Stream();

    // Return a nonzero count on success and 0 on failure; here they do nothing and return 1.
    virtual size_t Read(void* buffer, size_t size);
    virtual size_t Write(const void* buffer, size_t size);

    // The characters and one NUL byte; that byte alone for a null text or a string without storage.
    virtual Stream& operator<<(const char* text);
    virtual Stream& operator<<(const String& text);
    virtual Stream& operator<<(Float64 value);
    virtual Stream& operator<<(Float32 value);
    virtual Stream& operator<<(int value);
    virtual Stream& operator<<(unsigned int value);
    virtual Stream& operator<<(long value);
    virtual Stream& operator<<(unsigned long value);
    virtual Stream& operator<<(short value);
    virtual Stream& operator<<(unsigned short value);
    virtual Stream& operator<<(char value);
    virtual Stream& operator<<(unsigned char value);
    virtual Stream& operator<<(bool value);

    // Appends the characters up to the next NUL byte to `text`, which is not cleared first. Throws
    // an Exception when Read fails before the NUL; what was read by then stays appended.
    virtual Stream& operator>>(String& text);
    virtual Stream& operator>>(Float64& value);
    virtual Stream& operator>>(Float32& value);
    virtual Stream& operator>>(int& value);
    virtual Stream& operator>>(unsigned int& value);
    virtual Stream& operator>>(long& value);
    virtual Stream& operator>>(unsigned long& value);
    virtual Stream& operator>>(short& value);
    virtual Stream& operator>>(unsigned short& value);
    virtual Stream& operator>>(char& value);
    virtual Stream& operator>>(unsigned char& value);
    // Any byte but 0 is true.
    virtual Stream& operator>>(bool& value);

  private:
    template <class Value>
    Stream& WriteValue(Value value);
    template <class Stored, class Value>
    Stream& ReadValue(Value& value);
};

}  // namespace Plinth

#endif
