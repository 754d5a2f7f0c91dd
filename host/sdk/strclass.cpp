#include <strclass.h>

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>

namespace {

const char* OrEmpty(const char* text) {
    return text ? text : "";
}

// `length` characters and a NUL, owned by the caller.
char* CopyOf(const char* text, size_t length) {
    char* copy = new char[length + 1];
    std::memcpy(copy, text, length);
    copy[length] = 0;
    return copy;
}

char* Joined(const char* head, const char* tail) {
    const size_t headLength = std::strlen(head);
    const size_t tailLength = std::strlen(tail);
    char* text = new char[headLength + tailLength + 1];
    std::memcpy(text, head, headLength);
    std::memcpy(text + headLength, tail, tailLength + 1);
    return text;
}

// Cuts the part [start, start + count) to what stands inside a text of `length` characters.
void CutToText(int length, int& start, int& count) {
    const std::int64_t end = std::clamp<std::int64_t>(std::int64_t{start} + count, 0, length);
    start = std::clamp(start, 0, length);
    count = std::max(static_cast<int>(end) - start, 0);
}

}  // namespace

CStr::CStr() : text_(CopyOf("", 0)) {
}

CStr::CStr(const char* text) : text_(CopyOf(OrEmpty(text), std::strlen(OrEmpty(text)))) {
}

CStr::CStr(const CStr& other) : text_(CopyOf(other.text_, std::strlen(other.text_))) {
}

CStr::~CStr() {
    delete[] text_;
}

CStr& CStr::operator=(const CStr& other) {
    return *this = other.text_;
}

CStr& CStr::operator=(const char* text) {
    // The source may be a part of this text.
    CStr copy(text);
    std::swap(text_, copy.text_);
    return *this;
}

int CStr::Length() const {
    return static_cast<int>(std::strlen(text_));
}

CStr& CStr::Append(const CStr& tail) {
    char* text = Joined(text_, tail.text_);
    delete[] text_;
    text_ = text;
    return *this;
}

CStr CStr::operator+(const CStr& tail) const {
    return CStr(*this).Append(tail);
}

int CStr::operator==(const CStr& other) const {
    return *this == other.text_;
}

int CStr::operator==(const char* other) const {
    return std::strcmp(text_, OrEmpty(other)) == 0;
}

int CStr::first(char character) const {
    const char* found = std::strchr(text_, character);
    return found && character ? static_cast<int>(found - text_) : -1;
}

int CStr::last(char character) const {
    const char* found = std::strrchr(text_, character);
    return found && character ? static_cast<int>(found - text_) : -1;
}

CStr& CStr::remove(int pos) {
    return remove(std::max(pos, 0), Length());
}

CStr& CStr::remove(int pos, int count) {
    const int length = Length();
    CutToText(length, pos, count);
    std::memmove(text_ + pos, text_ + pos + count, length - pos - count + 1);
    return *this;
}

CStr CStr::Substr(int start, int count) const {
    CutToText(Length(), start, count);
    CStr part;
    delete[] part.text_;
    part.text_ = nullptr;
    part.text_ = CopyOf(text_ + start, count);
    return part;
}

CStr& CStr::Replace(const CStr& from, const CStr& to) {
    const size_t fromLength = std::strlen(from.text_);
    if (fromLength == 0)
        return *this;
    const size_t toLength = std::strlen(to.text_);
    size_t count = 0;
    for (const char* at = text_; (at = std::strstr(at, from.text_)); at += fromLength)
        ++count;
    char* replaced = new char[std::strlen(text_) - count * fromLength + count * toLength + 1];
    char* end = replaced;
    const char* source = text_;
    while (const char* at = std::strstr(source, from.text_)) {
        end = std::copy(source, at, end);
        end = std::copy_n(to.text_, toLength, end);
        source = at + fromLength;
    }
    std::strcpy(end, source);
    delete[] text_;
    text_ = replaced;
    return *this;
}

void CStr::toUpper() {
    for (char* c = text_; *c; ++c) {
        if (*c >= 'a' && *c <= 'z')
            *c = static_cast<char>(*c - 'a' + 'A');
    }
}

void CStr::toLower() {
    for (char* c = text_; *c; ++c) {
        if (*c >= 'A' && *c <= 'Z')
            *c = static_cast<char>(*c - 'A' + 'a');
    }
}

int CStr::printf(const char* format, ...) {
    va_list arguments, again;
    va_start(arguments, format);
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    if (length >= 0) {
        std::unique_ptr<char[]> text(new char[static_cast<size_t>(length) + 1]);
        std::vsnprintf(text.get(), static_cast<size_t>(length) + 1, format, again);
        delete[] text_;
        text_ = text.release();
    }
    va_end(again);
    return length;
}
