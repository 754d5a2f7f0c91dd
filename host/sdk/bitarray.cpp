#include <bitarray.h>

#include <algorithm>
#include <bit>
#include <cstdint>

namespace {

DWORD MaskOf(int i) {
    return DWORD{1} << (i % 32);
}

}  // namespace

BitArray::BitArray() : words_(nullptr), size_(0) {
}

BitArray::BitArray(int n) : words_(nullptr), size_(0) {
    SetSize(n);
}

BitArray::BitArray(const BitArray& other) : words_(nullptr), size_(0) {
    *this = other;
}

BitArray::~BitArray() {
    delete[] words_;
}

BitArray& BitArray::operator=(const BitArray& other) {
    if (this == &other)
        return *this;
    SetSize(other.size_);
    std::copy_n(other.words_, WordCount(), words_);
    return *this;
}

void BitArray::SetSize(int n, int save) {
    n = std::max(n, 0);
    DWORD* words = n > 0 ? new DWORD[WordCount(n)]() : nullptr;
    if (save)
        std::copy_n(words_, std::min(WordCount(), WordCount(n)), words);
    delete[] words_;
    words_ = words;
    size_ = n;
    ClearTail();
}

void BitArray::Set(int i) {
    if (i >= 0 && i < size_)
        words_[i / 32] |= MaskOf(i);
}

void BitArray::Set(int i, int b) {
    if (b) {
        Set(i);
    } else {
        Clear(i);
    }
}

void BitArray::Clear(int i) {
    if (i >= 0 && i < size_)
        words_[i / 32] &= ~MaskOf(i);
}

int BitArray::operator[](int i) const {
    return i >= 0 && i < size_ && (words_[i / 32] & MaskOf(i)) != 0;
}

void BitArray::SetAll() {
    std::fill_n(words_, WordCount(), ~DWORD{0});
    ClearTail();
}

void BitArray::ClearAll() {
    std::fill_n(words_, WordCount(), DWORD{0});
}

int BitArray::NumberSet() const {
    int count = 0;
    for (int word = 0; word < WordCount(); ++word) {
        count += std::popcount(static_cast<std::uint32_t>(words_[word]));
    }
    return count;
}

BitArray& BitArray::operator&=(const BitArray& other) {
    for (int word = 0; word < WordCount(); ++word)
        words_[word] &= other.WordOf(word);
    return *this;
}

BitArray& BitArray::operator|=(const BitArray& other) {
    for (int word = 0; word < WordCount(); ++word)
        words_[word] |= other.WordOf(word);
    ClearTail();
    return *this;
}

BitArray& BitArray::operator^=(const BitArray& other) {
    for (int word = 0; word < WordCount(); ++word)
        words_[word] ^= other.WordOf(word);
    ClearTail();
    return *this;
}

BitArray BitArray::operator~() const {
    BitArray inverted(*this);
    for (int word = 0; word < WordCount(); ++word)
        inverted.words_[word] = ~words_[word];
    inverted.ClearTail();
    return inverted;
}

int BitArray::operator==(const BitArray& other) const {
    return size_ == other.size_ && std::equal(words_, words_ + WordCount(), other.words_);
}

void BitArray::ClearTail() {
    if (size_ % 32 != 0)
        words_[WordCount() - 1] &= MaskOf(size_) - 1;
}
