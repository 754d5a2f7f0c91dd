#include "core/stream.h"

#include <string.h>

#include "core/exception.h"

namespace Plinth {

const char* streamReadFunction = "Stream::operator>>(String &text)()";

Stream::~Stream() {
}

size_t Stream::Read(void*, size_t) {
    return 1;
}

size_t Stream::Write(const void*, size_t) {
    return 1;
}

template <class Value>
Stream& Stream::WriteValue(Value value) {
    Write(&value, sizeof(value));
    return *this;
}

// Reads into a copy of the target, so that a short read leaves the target as it was. A copy that
// lacks bits of the target is not put back unless it changed: Read may have done nothing.
template <class Stored, class Value>
Stream& Stream::ReadValue(Value& value) {
    const Stored former = static_cast<Stored>(value);
    Stored stored = former;
    const bool whole = sizeof(Stored) == sizeof(Value);
    if (Read(&stored, sizeof(stored)) != 0 && (whole || stored != former)) {
        value = static_cast<Value>(stored);
    }
    return *this;
}

Stream& Stream::operator<<(const char* text) {
    if (text == NULL) {
        text = "";
    }
    Write(text, strlen(text) + 1);
    return *this;
}

Stream& Stream::operator<<(const String& text) {
    const size_t length = text.Data() != NULL ? text.Length() : 0;
    Write(text.Text(), length + 1);
    return *this;
}

Stream& Stream::operator<<(Float64 value) {
    return WriteValue<Float64>(value);
}
Stream& Stream::operator<<(Float32 value) {
    return WriteValue<Float32>(value);
}
Stream& Stream::operator<<(int value) {
    return WriteValue<Int32>(value);
}
Stream& Stream::operator<<(unsigned int value) {
    return WriteValue<UInt32>(value);
}
Stream& Stream::operator<<(long value) {
    return WriteValue<Int32>(static_cast<Int32>(value));
}
Stream& Stream::operator<<(unsigned long value) {
    return WriteValue<UInt32>(static_cast<UInt32>(value));
}
Stream& Stream::operator<<(short value) {
    return WriteValue<Int16>(value);
}
Stream& Stream::operator<<(unsigned short value) {
    return WriteValue<UInt16>(value);
}
Stream& Stream::operator<<(char value) {
    return WriteValue<char>(value);
}
Stream& Stream::operator<<(unsigned char value) {
    return WriteValue<UInt8>(value);
}
Stream& Stream::operator<<(bool value) {
    return WriteValue<UInt8>(value ? 1 : 0);
}

Stream& Stream::operator>>(String& text) {
    for (;;) {
        char character = '\0';
        if (Read(&character, 1) == 0) {
            throw Exception(
                "String cannot be read from stream, something went wrong while reading.\n"
                "Might be because we're reading past the end of the stream or something...",
                streamReadFunction);
        }
        if (character == '\0') {
            return *this;
        }
        text.Append(character);
    }
}

Stream& Stream::operator>>(Float64& value) {
    return ReadValue<Float64>(value);
}
Stream& Stream::operator>>(Float32& value) {
    return ReadValue<Float32>(value);
}
Stream& Stream::operator>>(int& value) {
    return ReadValue<Int32>(value);
}
Stream& Stream::operator>>(unsigned int& value) {
    return ReadValue<UInt32>(value);
}
Stream& Stream::operator>>(long& value) {
    return ReadValue<Int32>(value);
}
Stream& Stream::operator>>(unsigned long& value) {
    return ReadValue<UInt32>(value);
}
Stream& Stream::operator>>(short& value) {
    return ReadValue<Int16>(value);
}
Stream& Stream::operator>>(unsigned short& value) {
    return ReadValue<UInt16>(value);
}
Stream& Stream::operator>>(char& value) {
    return ReadValue<char>(value);
}
Stream& Stream::operator>>(unsigned char& value) {
    return ReadValue<UInt8>(value);
}

// The byte is looked at instead of the truth value, which may hold anything before it is read.
Stream& Stream::operator>>(bool& value) {
    UInt8 stored;
    memcpy(&stored, &value, 1);
    if (Read(&stored, 1) != 0) {
        value = stored != 0;
    }
    return *this;
}

}  // namespace Plinth
