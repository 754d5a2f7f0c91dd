#include "core/string.h"

#include <limits.h>
#include <stdlib.h>
#include <string.h>

#include <windows.h>

#include "core/memory_manager.h"

namespace Plinth {

namespace {

enum { kMaxLength = INT_MAX - 1, kFormatCapacity = 2048 };

Int32 CountOf(const char* text) {
    const size_t count = text != NULL ? strlen(text) : 0;
    return count < kMaxLength ? static_cast<Int32>(count) : kMaxLength;
}

Int32 LengthInRange(Int32 length) {
    return length < 0 ? 0 : (length > kMaxLength ? kMaxLength : length);
}

bool IsSeparator(char character) {
    return character == ' ' || character == '\n' || character == '\t';
}

bool EndsWith(const char* text, size_t textLength, const char* end, size_t endLength) {
    return textLength >= endLength && memcmp(text + textLength - endLength, end, endLength) == 0;
}

}  // namespace

// ---------------------------------------------------------------- construction and storage

String::String() : data(NULL), length(0), maxLength(0) {
}

String::String(const char* text) : data(NULL), length(0), maxLength(0) {
    Assign(text);
}

String::String(char character) : data(NULL), length(0), maxLength(0) {
    Assign(&character, 1);
}

String::String(const String& other) : data(NULL), length(0), maxLength(0) {
    if (other.data != NULL) {
        Assign(other.data, other.length);
    }
}

String::String(const char* first, Int32 firstCount, const char* second, Int32 secondCount)
    : data(NULL), length(0), maxLength(0) {
    const Int32 head = first != NULL ? LengthInRange(firstCount) : 0;
    const Int32 tail = second != NULL ? LengthInRange(secondCount) : 0;
    if (tail > kMaxLength - head) {
        return;
    }
    Resize(head + tail);
    if (data == NULL) {
        return;
    }
    if (head > 0) {
        memcpy(data, first, head);
    }
    if (tail > 0) {
        memcpy(data + head, second, tail);
    }
}

String::~String() {
    // Without storage, the first use of the memory manager might throw.
    if (data != NULL) {
        GetMemoryManager().Free(data);
    }
}

void String::Resize(Int32 newLength, Int32 extra) {
    Grow(newLength, extra);
    if (data != NULL) {
        data[length] = '\0';
    }
}

void String::Grow(Int32 newLength, Int32 extra) {
    newLength = LengthInRange(newLength);
    extra = LengthInRange(extra);
    if (extra > kMaxLength - newLength) {
        extra = kMaxLength - newLength;
    }
    if (data == NULL || newLength + extra > maxLength) {
        MemoryManager& memory = GetMemoryManager();
        maxLength = newLength + extra;
        void* const grown =
            memory.Reallocate(data, static_cast<size_t>(maxLength) + 1, kMemoryCategoryText,
                              kMemoryAlignment, kMemoryCategoryText);
        if (grown == NULL) {
            memory.Free(data);
        }
        data = static_cast<char*>(grown);
    }
    length = newLength;
}

void String::Clear(bool keepStorage) {
    if (!keepStorage) {
        GetMemoryManager().Free(data);
        data = NULL;
        maxLength = 0;
    }
    length = 0;
    if (data != NULL) {
        data[0] = '\0';
    }
}

void String::Swap(String& other) {
    char* const formerData = data;
    const Int32 formerLength = length;
    const Int32 formerMaxLength = maxLength;
    data = other.data;
    length = other.length;
    maxLength = other.maxLength;
    other.data = formerData;
    other.length = formerLength;
    other.maxLength = formerMaxLength;
}

// ---------------------------------------------------------------- assignment and concatenation

void String::Assign(const char* text, Int32 count) {
    char* const former = data;
    data = NULL;
    if (text != NULL) {
        Resize(count);
        if (data != NULL) {
            memcpy(data, text, length);
        }
    }
    // Not earlier: the text may lie in it.
    GetMemoryManager().Free(former);
}

void String::Assign(const char* text) {
    Assign(text, CountOf(text));
}

String& String::operator=(const String& other) {
    String copy(other);
    Swap(copy);
    return *this;
}

String& String::operator=(const char* text) {
    Assign(text);
    return *this;
}

void String::Append(const char* text, Int32 count) {
    const Int32 oldLength = TextLength();
    count = text != NULL ? LengthInRange(count) : 0;
    if (count > kMaxLength - oldLength) {
        Assign(NULL, 0);
        return;
    }
    // Growing moves the storage; a text that lies in it moves along, and the NUL may fall into it.
    const size_t offset = reinterpret_cast<size_t>(text) - reinterpret_cast<size_t>(data);
    const bool own = data != NULL && offset <= static_cast<size_t>(maxLength);
    Grow(oldLength + count, 0);
    if (data == NULL) {
        return;
    }
    if (count > 0) {
        memmove(data + oldLength, own ? data + offset : text, count);
    }
    data[length] = '\0';
}

void String::Append(const char* text) {
    Append(text, CountOf(text));
}

void String::Append(const String& text) {
    Append(text.Text(), text.TextLength());
}

void String::Append(char character) {
    Append(&character, 1);
}

String String::operator+(const String& right) const {
    return String(Text(), TextLength(), right.Text(), right.TextLength());
}

String String::operator+(const char* right) const {
    return String(Text(), TextLength(), right, CountOf(right));
}

String String::operator+(char right) const {
    return String(Text(), TextLength(), &right, 1);
}

// ---------------------------------------------------------------- formatting

void String::SetFormatted(Int32 capacity, const char* format, va_list measured, va_list printed) {
    const Int32 count = MeasureFormat(format, measured);
    Resize(count, capacity - count);
    if (data != NULL) {
        FormatBounded(data, length + 1, format, printed);
    }
}

// The arguments may lie in the string's own storage, so the text is made in another string.
void String::Format(const char* format, ...) {
    va_list measured;
    va_list printed;
    va_start(measured, format);
    va_start(printed, format);
    String text;
    text.SetFormatted(maxLength < kFormatCapacity ? kFormatCapacity : maxLength, format, measured,
                      printed);
    va_end(printed);
    va_end(measured);
    Swap(text);
}

void String::FormatAdd(const char* format, ...) {
    va_list measured;
    va_list printed;
    va_start(measured, format);
    va_start(printed, format);
    String text;
    text.SetFormatted(0, format, measured, printed);
    va_end(printed);
    va_end(measured);
    if (text.data != NULL) {
        Append(text);
    } else {
        Assign(NULL, 0);
    }
}

// ---------------------------------------------------------------- comparison and search

bool String::operator==(const String& other) const {
    return TextLength() == other.TextLength() && memcmp(Text(), other.Text(), TextLength()) == 0;
}

bool String::operator==(const char* other) const {
    return TextLength() == CountOf(other) &&
           memcmp(Text(), other != NULL ? other : "", TextLength()) == 0;
}

bool String::EqualsNoCase(const String& other) const {
    return TextLength() == other.TextLength() && _stricmp(Text(), other.Text()) == 0;
}

Int32 String::Compare(const String& other) const {
    const int order = strcmp(Text(), other.Text());
    return order < 0 ? -1 : (order > 0 ? 1 : 0);
}

Int32 String::Find(const char* subText) const {
    const char* const text = Text();
    const char* const found = strstr(text, subText != NULL ? subText : "");
    return found != NULL ? static_cast<Int32>(found - text) : -1;
}

bool String::RemoveFirst(const char* subText) {
    const Int32 count = CountOf(subText);
    const Int32 position = Find(subText);
    if (count == 0 || position < 0) {
        return false;
    }
    return CloseGap(position, position + count);
}

// Characters are kept one by one, and the sub-text is dropped as soon as it stands at the end of
// the text kept so far: the same as removing the first occurrence again and again, in one walk.
bool String::RemoveAll(const char* subText) {
    const String removed(subText);
    if (data == NULL || removed.TextLength() == 0) {
        return false;
    }
    const Int32 searched = CountOf(data);
    Int32 kept = 0;
    for (Int32 i = 0; i < searched; ++i) {
        data[kept++] = data[i];
        if (EndsWith(data, kept, removed.data, removed.length)) {
            kept -= removed.length;
        }
    }
    return CloseGap(kept, searched);
}

// Takes out the characters from `begin` up to `end`; returns whether there were any.
bool String::CloseGap(Int32 begin, Int32 end) {
    if (begin == end) {
        return false;
    }
    memmove(data + begin, data + end, length - end + 1);
    length -= end - begin;
    return true;
}

bool String::RemoveChars(const char* characterSet) {
    // Read whole before anything moves: the set may lie in the string's own storage.
    bool inSet[UCHAR_MAX + 1] = {false};
    for (const char* c = characterSet; c != NULL && *c != '\0'; ++c) {
        inSet[static_cast<UInt8>(*c)] = true;
    }
    const Int32 searched = CountOf(data);
    Int32 kept = 0;
    for (Int32 i = 0; i < searched; ++i) {
        if (!inSet[static_cast<UInt8>(data[i])]) {
            data[kept++] = data[i];
        }
    }
    return CloseGap(kept, searched);
}

// ---------------------------------------------------------------- case and trimming

String& String::ToUpper() {
    if (data != NULL) {
        _strupr(data);
    }
    return *this;
}

String& String::ToLower() {
    if (data != NULL) {
        _strlwr(data);
    }
    return *this;
}

String String::Uppered() const {
    String copy(*this);
    copy.ToUpper();
    return copy;
}

String String::Lowered() const {
    String copy(*this);
    copy.ToLower();
    return copy;
}

void String::TrimLeft(char character) {
    Int32 run = 0;
    while (run < TextLength() && data[run] == character) {
        ++run;
    }
    if (run > 0) {
        length -= run;
        memmove(data, data + run, static_cast<size_t>(length) + 1);
    }
}

void String::Trim(char character) {
    TrimLeft(character);
    Int32 end = TextLength();
    while (end > 0 && data[end - 1] == character) {
        --end;
    }
    if (data != NULL) {
        length = end;
        data[end] = '\0';
    }
}

// ---------------------------------------------------------------- words

bool String::FindWord(Int32 index, Int32& begin, Int32& end) const {
    end = 0;
    for (Int32 number = 0;; ++number) {
        begin = end;
        while (begin < TextLength() && IsSeparator(data[begin])) {
            ++begin;
        }
        end = begin;
        while (end < TextLength() && !IsSeparator(data[end])) {
            ++end;
        }
        if (begin == end || number == index) {
            return begin != end;
        }
    }
}

Int32 String::CountWords() const {
    Int32 words = 0;
    for (Int32 i = 0; i < TextLength(); ++i) {
        const bool startsWord = !IsSeparator(data[i]) && (i == 0 || IsSeparator(data[i - 1]));
        words += startsWord ? 1 : 0;
    }
    return words;
}

String String::ExtractWord(Int32 index) const {
    String word;
    Int32 begin;
    Int32 end;
    if (index >= 0 && FindWord(index, begin, end)) {
        word.Assign(data + begin, end - begin);
    }
    return word;
}

// ---------------------------------------------------------------- conversion

Float32 String::ToFloat() const {
    return static_cast<Float32>(atof(Text()));
}

Int32 String::ToInt() const {
    return atoi(Text());
}

bool String::ToBool() const {
    if (TextLength() == 1) {
        return ToInt() == 1;
    }
    return TextLength() == 4 && _stricmp(Text(), "true") == 0;
}

bool String::HasOnlyNumberCharacters(const char* characterSet) const {
    for (Int32 i = 0; i < TextLength(); ++i) {
        const char character = data[i];
        const bool isSign = character == '+' || character == '-';
        if (character == '\0' || strchr(characterSet, character) == NULL || (isSign && i > 0)) {
            return false;
        }
    }
    return true;
}

bool String::IsValidFloat() const {
    return HasOnlyNumberCharacters("0123456789.e+-");
}

bool String::IsValidInt() const {
    return HasOnlyNumberCharacters("0123456789+-");
}

// ---------------------------------------------------------------- hashing and scrambling

UInt32 String::CalcCRC32() const {
    UInt32 crc = 0xffffffffu;
    for (const char* character = Text(); *character != '\0'; ++character) {
        crc ^= static_cast<UInt8>(*character);
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc & 1u) != 0 ? (crc >> 1) ^ 0xedb88320u : crc >> 1;
        }
    }
    return ~crc;
}

void String::Scramble(const String& key) {
    const Int32 keyLength = key.TextLength();
    if (keyLength == 0) {
        return;
    }
    for (Int32 i = 0; i < TextLength(); ++i) {
        data[i] = static_cast<char>(data[i] ^ key.data[i % keyLength]);
    }
}

void String::Unscramble(const String& key) {
    Scramble(key);
}

String String::Scrambled(const String& key) const {
    String copy(*this);
    copy.Scramble(key);
    return copy;
}

String String::Unscrambled(const String& key) const {
    return Scrambled(key);
}

}  // namespace Plinth
