// The string class. 8-bit characters, compared and changed byte by byte; upper and lower case
// exist for A to Z alone.
#ifndef HOST_SDK_INCLUDE_STRCLASS_H
#define HOST_SDK_INCLUDE_STRCLASS_H

#include <coreexp.h>
#include <strbasic.h>

// Lets the compiler check the arguments of a printf-like member function: the positions of the
// format and of the first argument behind it, `this` counted.
#if defined(__GNUC__) && defined(__MINGW32__)
#define MAXHOST_PRINTF(text, arguments) __attribute__((format(gnu_printf, text, arguments)))
#elif defined(__GNUC__)
#define MAXHOST_PRINTF(text, arguments) __attribute__((format(printf, text, arguments)))
#else
#define MAXHOST_PRINTF(text, arguments)
#endif

// Always holds a terminated text, "" at first. What is written through data() or operator[] counts:
// the length is where the NUL stands.
class UtilExport CStr {
  public:
    CStr();
    CStr(const char* text);  // null is ""
    CStr(const CStr& other);
    ~CStr();

    CStr& operator=(const CStr& other);
    CStr& operator=(const char* text);  // null is ""

    // Valid until the text is changed or destroyed.
    char* data() { return text_; }
    const char* data() const { return text_; }
    operator char*() { return text_; }
    operator const char*() const { return text_; }

    int Length() const;
    int length() const { return Length(); }
    bool isNull() const { return text_[0] == 0; }  // whether the text is ""

    // `index` from 0 to Length().
    char& operator[](int index) { return text_[index]; }
    char operator[](int index) const { return text_[index]; }

    CStr& Append(const CStr& tail);
    CStr operator+(const CStr& tail) const;
    CStr& operator+=(const CStr& tail) { return Append(tail); }

    int operator==(const CStr& other) const;
    int operator==(const char* other) const;  // null is ""
    int operator!=(const CStr& other) const { return !(*this == other); }
    int operator!=(const char* other) const { return !(*this == other); }

    // Position of the first or last `character`; -1: there is none.
    int first(char character) const;
    int last(char character) const;

    // Drops what stands from `pos` on, or `count` characters of it. Parts outside the text are
    // passed over, here and in Substr.
    CStr& remove(int pos);
    CStr& remove(int pos, int count);
    CStr Substr(int start, int count) const;
    // Replaces every occurrence from left to right; an empty `from` changes nothing.
    CStr& Replace(const CStr& from, const CStr& to);

    void toUpper();
    void toLower();

    // Replaces the text by the formatted one, of any length, and returns its length. The arguments
    // may point into this text. An invalid format leaves the text alone and gives -1.
    int printf(const char* format, ...) MAXHOST_PRINTF(2, 3);

  private:
    char* text_;  // owned, never null
};

typedef CStr TSTR;
typedef CStr MSTR;

#endif  // HOST_SDK_INCLUDE_STRCLASS_H
