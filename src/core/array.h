// The library's growable array.
#ifndef PLINTH_ARRAY_H
#define PLINTH_ARRAY_H

#include <limits.h>
#include <stddef.h>
#include <string.h>

#include <new>

#include "core/memory_manager.h"
#include "core/types.h"

namespace Plinth {

// Elements are moved and zeroed as bytes: T must be copyable that way, and neither constructors nor
// destructors of elements run. Indices are not checked; numbers below 0 do nothing. An operation
// that needs memory and gets none throws std::bad_alloc and leaves the array as it is. Not
// copyable.
//
// Capacity grows by the exact rules below, never in proportion: reserve a count known in advance.
template <class T>
class Array {
  public:
    Array() : elements(NULL), count(0), capacity(0) {}
    ~Array() { Clear(); }

    Int32 Count() const { return count; }
    Int32 Capacity() const { return capacity; }
    // The first element; null without storage.
    T* Data() { return elements; }
    const T* Data() const { return elements; }
    T& operator[](Int32 index) { return elements[index]; }
    const T& operator[](Int32 index) const { return elements[index]; }

    // Appends. A full array's capacity becomes the new count + 1. The value may be an element.
    void Add(const T& value) {
        const T copy = value;
        if (count == capacity) {
            SetCapacity(count, 2);
        }
        elements[count++] = copy;
    }

    // As Add, but doubles a full array's capacity first: for what grows by very many, one by one.
    void AddAmortized(const T& value) {
        const T copy = value;
        MakeRoom();
        Add(copy);
    }

    // Doubles a full array's capacity, so that the next Add needs no memory.
    void MakeRoom() {
        if (count == capacity) {
            SetCapacity(count, count < INT_MAX / 2 - 8 ? count + 16 : 2);
        }
    }

    // Sets the count; a count above the capacity makes the capacity newCount + 1. New elements are
    // zero.
    void Resize(Int32 newCount) {
        if (newCount < 0) {
            return;
        }
        if (newCount > capacity) {
            SetCapacity(newCount, 1);
        }
        if (newCount > count) {
            memset(static_cast<void*>(elements + count), 0,
                   static_cast<size_t>(newCount - count) * sizeof(T));
        }
        count = newCount;
    }

    // Makes the capacity exactly newCapacity, also when that is less than before; a capacity below
    // the count does nothing.
    void Reserve(Int32 newCapacity) {
        if (newCapacity >= count && newCapacity != capacity) {
            SetCapacity(newCapacity, 0);
        }
    }

    // Closes the gap by moving the tail; the capacity stays.
    void Remove(Int32 index) {
        --count;
        memmove(static_cast<void*>(elements + index), elements + index + 1,
                static_cast<size_t>(count - index) * sizeof(T));
    }

    // Gives the storage back.
    void Clear() {
        if (elements != NULL) {
            GetMemoryManager().Free(elements);
        }
        elements = NULL;
        count = 0;
        capacity = 0;
    }

  private:
    Array(const Array&);
    Array& operator=(const Array&);

    // Makes the capacity elementCount + extra; neither is below 0.
    void SetCapacity(Int32 elementCount, Int32 extra) {
        if (elementCount > INT_MAX - extra) {
            throw std::bad_alloc();
        }
        const Int32 newCapacity = elementCount + extra;
        if (newCapacity == 0) {
            Clear();
            return;
        }
        const size_t size = static_cast<size_t>(newCapacity) * sizeof(T);
        if (size / sizeof(T) != static_cast<size_t>(newCapacity)) {
            throw std::bad_alloc();
        }
        void* const grown = GetMemoryManager().Reallocate(elements, size, kMemoryCategoryArray,
                                                          kMemoryAlignment, kMemoryCategoryArray);
        if (grown == NULL) {
            throw std::bad_alloc();
        }
        elements = static_cast<T*>(grown);
        capacity = newCapacity;
    }

    T* elements;
    Int32 count;
    Int32 capacity;
};

}  // namespace Plinth

#endif
