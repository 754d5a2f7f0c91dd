// Owned 8-bit text that grows.
#ifndef PLINTH_STRING_H
#define PLINTH_STRING_H

#include <stddef.h>

#include "core/format.h"
#include "core/types.h"

namespace Plinth {

// Text of a signed 32-bit length, ended by a NUL. Storage comes from the memory manager and has
// exactly the capacity that was asked for: the library's texts are short, and appending n
// characters one at a time reallocates n times.
//
// A string that never received storage, or lost it, has null data. Every operation that reads takes
// such a string, and a null C text, for the empty text. Texts given to an operation may lie in the
// string's own storage. Lengths and counts below 0 count as 0, those above 2147483646 as that.
//
// Nothing reports errors: where memory is missing, or two texts are longer together than that, the
// string that an operation writes or returns ends up with null data, never with a part of its text.
// RemoveAll alone then leaves the text as it is and returns false.
class String {
  public:
    // Null data.
    String();
    // Always has storage, of exactly the text's length + 1 bytes; none for a null pointer.
    String(const char* text);
    explicit String(char character);
    // Null data when `other` has null data.
    String(const String& other);
    // Two pieces, pointer and count each, laid end to end.
    String(const char* first, Int32 firstCount, const char* second, Int32 secondCount);
    virtual ~String();

    // ------------------------------------------------ access

    // Null for a string without storage.
    char* Data() { return data; }
    const char* Data() const { return data; }
    // The same characters; "" in place of a null pointer.
    const char* Text() const { return data != NULL ? data : ""; }
    // As last set, also when the data is null.
    Int32 Length() const { return length; }
    // Capacity in characters, the NUL not counted.
    Int32 MaxLength() const { return maxLength; }

    // Not checked against the length; NUL for a string without storage.
    char CharAt(Int32 index) const { return data != NULL ? data[index] : '\0'; }
    // Not checked either; null for a string without storage.
    char* CharAddress(Int32 index) { return data != NULL ? data + index : NULL; }
    const char* CharAddress(Int32 index) const { return data != NULL ? data + index : NULL; }

    // ------------------------------------------------ storage

    // Sets the length, and the NUL there. Reallocates, to exactly newLength + extra characters,
    // where those exceed the capacity or there is no storage; characters are kept, new ones have no
    // defined value.
    void Resize(Int32 newLength, Int32 extra = 0);

    // Empties the string; without keepStorage the data is null afterwards.
    void Clear(bool keepStorage);

    // ------------------------------------------------ assignment and concatenation

    // Replaces text and storage. A null text leaves null data, the length and the capacity as they
    // were.
    void Assign(const char* text, Int32 count);
    void Assign(const char* text);
    String& operator=(const String& other);
    String& operator=(const char* text);

    void Append(const char* text, Int32 count);
    void Append(const char* text);
    void Append(const String& text);
    void Append(char character);

    String operator+(const String& right) const;
    String operator+(const char* right) const;
    String operator+(char right) const;

    // ------------------------------------------------ formatting, printf-style

    // Replaces the text; the capacity is at least 2048 afterwards.
    void Format(const char* format, ...) PLINTH_PRINTF(2, 3);
    // Appends the text.
    void FormatAdd(const char* format, ...) PLINTH_PRINTF(2, 3);

    // ------------------------------------------------ comparison and search

    bool operator==(const String& other) const;
    bool operator==(const char* other) const;
    bool operator!=(const String& other) const { return !(*this == other); }
    bool operator!=(const char* other) const { return !(*this == other); }
    bool EqualsNoCase(const String& other) const;
    // -1, 0 or 1, by unsigned bytes.
    Int32 Compare(const String& other) const;

    // 0-based position of the first occurrence, or -1; 0 for the empty text.
    Int32 Find(const char* subText) const;

    // These return whether anything was removed; nothing is for an empty argument.
    bool RemoveFirst(const char* subText);
    // Until no occurrence is left, those included that a removal brings about.
    bool RemoveAll(const char* subText);
    // All occurrences of each character of the set.
    bool RemoveChars(const char* characterSet);

    // ------------------------------------------------ case and trimming

    // Which bytes are letters is up to the C library's _strupr and _strlwr: ASCII letters in any
    // case, further ones where they follow the current C locale.
    String& ToUpper();
    String& ToLower();
    String Uppered() const;
    String Lowered() const;

    void TrimLeft(char character);
    // Both ends.
    void Trim(char character);

    // ------------------------------------------------ words: runs without blank, newline and tab

    Int32 CountWords() const;
    // By 0-based number; the empty string when there is none of that number.
    String ExtractWord(Int32 index) const;

    // ------------------------------------------------ conversion

    Float32 ToFloat() const;
    Int32 ToInt() const;
    // True for a one-character text whose number is 1 and for "true" in any case.
    bool ToBool() const;
    // Characters of "0123456789.e+-", signs in front only: "1e-5" is none. True for "".
    bool IsValidFloat() const;
    // The same with "0123456789+-".
    bool IsValidInt() const;

    // ------------------------------------------------ hashing and scrambling

    // The CRC-32 of IEEE 802.3 (ITU-T V.42: reflected, all ones before and after) of the characters
    // before the first NUL; 0 for the empty text.
    UInt32 CalcCRC32() const;

    // XOR with the key, repeated; an empty key changes nothing. The two are one operation.
    void Scramble(const String& key);
    void Unscramble(const String& key);
    String Scrambled(const String& key) const;
    String Unscrambled(const String& key) const;

  private:
    Int32 TextLength() const { return data != NULL ? length : 0; }
    void Swap(String& other);
    // Resize without the NUL.
    void Grow(Int32 newLength, Int32 extra);
    // Two lists of the same arguments, because each is used up once.
    void SetFormatted(Int32 capacity, const char* format, va_list measured, va_list printed)
        PLINTH_PRINTF(3, 0);
    bool CloseGap(Int32 begin, Int32 end);
    bool FindWord(Int32 index, Int32& begin, Int32& end) const;
    bool HasOnlyNumberCharacters(const char* characterSet) const;

    char* data;
    Int32 length;
    Int32 maxLength;
};

}  // namespace Plinth

#endif
