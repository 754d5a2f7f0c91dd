// A set of numbers from 0 to size - 1.
#ifndef HOST_SDK_INCLUDE_BITARRAY_H
#define HOST_SDK_INCLUDE_BITARRAY_H

#include <coreexp.h>
#include <windows.h>

// Bits outside the array read as 0, and setting them does nothing.
class GEOMexport BitArray {
  public:
    BitArray();
    explicit BitArray(int n);  // n bits, all 0
    BitArray(const BitArray& other);
    ~BitArray();
    BitArray& operator=(const BitArray& other);

    // `save` nonzero: the bits that stay keep their values; else all are 0. New bits are 0.
    void SetSize(int n, int save = 0);
    int GetSize() const { return size_; }

    void Set(int i);
    void Set(int i, int b);  // `b` nonzero: 1
    void Clear(int i);
    int operator[](int i) const;
    void SetAll();
    void ClearAll();
    int NumberSet() const;

    // Bit by bit, in the size of the left one; what the right one has not counts as 0.
    BitArray& operator&=(const BitArray& other);
    BitArray& operator|=(const BitArray& other);
    BitArray& operator^=(const BitArray& other);
    BitArray operator&(const BitArray& other) const { return BitArray(*this) &= other; }
    BitArray operator|(const BitArray& other) const { return BitArray(*this) |= other; }
    BitArray operator^(const BitArray& other) const { return BitArray(*this) ^= other; }
    BitArray operator~() const;

    // Same size and same bits.
    int operator==(const BitArray& other) const;
    int operator!=(const BitArray& other) const { return !(*this == other); }

  private:
    int WordCount() const { return WordCount(size_); }
    static int WordCount(int bits) { return bits / 32 + (bits % 32 != 0); }
    DWORD WordOf(int word) const { return word < WordCount() ? words_[word] : 0; }
    void ClearTail();

    DWORD* words_;  // owned; null: no bits. Bits past the size are 0.
    int size_;
};

#endif  // HOST_SDK_INCLUDE_BITARRAY_H
