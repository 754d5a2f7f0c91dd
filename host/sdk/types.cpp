// The SDK's basic types: points, colours, time ranges, texts, and the host's heap.
#include <color.h>
#include <interval.h>
#include <maxheap.h>
#include <point3.h>
#include <strclass.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

namespace {

float FromByte(DWORD value) {
    return static_cast<float>(value & 0xff) / 255.0f;
}

// `length` characters and a NUL, owned by the caller.
char* CopyOf(const char* text, std::size_t length) {
    char* copy = new char[length + 1];
    std::memcpy(copy, text, length);
    copy[length] = 0;
    return copy;
}

}  // namespace

// ---------------------------------------------------------------- points

Point3 Point3::operator^(const Point3& b) const {
    return Point3(double{y} * b.z - double{z} * b.y, double{z} * b.x - double{x} * b.z,
                  double{x} * b.y - double{y} * b.x);
}

Point3 Point3::Normalize() const {
    const double length = std::sqrt(double{x} * x + double{y} * y + double{z} * z);
    if (!(length > 0) || !std::isfinite(length))
        return *this;
    return Point3(x / length, y / length, z / length);
}

// ---------------------------------------------------------------- colours

Color::Color(DWORD rgb) : r(FromByte(rgb)), g(FromByte(rgb >> 8)), b(FromByte(rgb >> 16)) {
}

// ---------------------------------------------------------------- time ranges

Interval Interval::operator&(const Interval& other) const {
    const Interval both(std::max(start_, other.start_), std::min(end_, other.end_));
    return Empty() || other.Empty() || both.Empty() ? NEVER : both;
}

// ---------------------------------------------------------------- texts

CStr::CStr() : text_(CopyOf("", 0)) {
}

CStr::CStr(const char* text) : text_(text ? CopyOf(text, std::strlen(text)) : CopyOf("", 0)) {
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

CStr& CStr::operator+=(const CStr& tail) {
    return *this = (std::string(text_) + tail.text_).c_str();
}

// ---------------------------------------------------------------- the host's heap

void* MaxHeapOperators::operator new(size_t size) {
    return ::operator new(size);
}

void* MaxHeapOperators::operator new[](size_t size) {
    return ::operator new[](size);
}

void* MaxHeapOperators::operator new(size_t size, const std::nothrow_t& nothrow) throw() {
    return ::operator new(size, nothrow);
}

void* MaxHeapOperators::operator new[](size_t size, const std::nothrow_t& nothrow) throw() {
    return ::operator new[](size, nothrow);
}

void MaxHeapOperators::operator delete(void* memory) throw() {
    ::operator delete(memory);
}

void MaxHeapOperators::operator delete[](void* memory) throw() {
    ::operator delete[](memory);
}

void MaxHeapOperators::operator delete(void* memory, const std::nothrow_t& nothrow) throw() {
    ::operator delete(memory, nothrow);
}

void MaxHeapOperators::operator delete[](void* memory, const std::nothrow_t& nothrow) throw() {
    ::operator delete[](memory, nothrow);
}
