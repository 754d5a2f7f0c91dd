// The string class: 8-bit characters.
#ifndef HOST_SDK_INCLUDE_STRCLASS_H
#define HOST_SDK_INCLUDE_STRCLASS_H

#include <coreexp.h>
#include <strbasic.h>

// Always holds a terminated text, "" at first. What is written through data() counts: the length is
// where the NUL stands.
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

    CStr& operator+=(const CStr& tail);

  private:
    char* text_;  // owned, never null
};

typedef CStr TSTR;
typedef CStr MSTR;

#endif  // HOST_SDK_INCLUDE_STRCLASS_H
