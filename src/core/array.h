// The library's growable array.
#ifndef PLINTH_ARRAY_H
#define PLINTH_ARRAY_H

#include <limits.h>
#include <stddef.h>
#include <string.h>

#include "core/memory_manager.h"
#include "core/types.h"

namespace Plinth {

// Elements are moved and zeroed as bytes: T must be copyable that way, and neither constructors nor
// destructors of elements run. Indices are not checked; numbers below 0 do nothing. Where memory is
// missing, the array stays as it is and the operation returns false. Not copyable.
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
    bool Add(const T& value) {
        const T copy = value;
        if (count == capacity && (count > INT_MAX - 2 || !SetCapacity(count + 2))) {
            return false;
        }
        elements[count++] = copy;
        return true;
    }

    // As Add, but doubles a full array's capacity first: for what grows by very many, one by one.
    bool AddAmortized(const T& value) {
        const T copy = value;
        if (count == capacity && count < INT_MAX / 2 - 8 && !Reserve(2 * count + 16)) {
            return false;
        }
        return Add(copy);
    }

    // Sets the count; a count above the capacity makes the capacity newCount + 1. New elements are
    // zero.
    bool Resize(Int32 newCount) {
        if (newCount < 0) {
            return true;
        }
        if (newCount > capacity && (newCount == INT_MAX || !SetCapacity(newCount + 1))) {
            return false;
        }
        if (newCount > count) {
            memset(static_cast<void*>(elements + count), 0,
                   static_cast<size_t>(newCount - count) * sizeof(T));
        }
        count = newCount;
        return true;
    }

    // Makes the capacity exactly newCapacity, also when that is less than before; a capacity below
    // the count does nothing.
    bool Reserve(Int32 newCapacity) {
        return newCapacity < count || newCapacity == capacity || SetCapacity(newCapacity);
    }

    // Closes the gap by moving the tail; the capacity stays.
    void Remove(Int32 index) {
        --count;
        memmove(static_cast<void*>(elements + index), elements + index + 1,
                static_cast<size_t>(count - index) * sizeof(T));
    }

    // Gives the storage back.
    void Clear() {
        GetMemoryManager().Free(elements);
        elements = NULL;
        count = 0;
        capacity = 0;
    }

  private:
    Array(const Array&);
    Array& operator=(const Array&);

    bool SetCapacity(Int32 newCapacity) {
        if (newCapacity == 0) {
            Clear();
            return true;
        }
        const size_t size = static_cast<size_t>(newCapacity) * sizeof(T);
        if (size / sizeof(T) != static_cast<size_t>(newCapacity)) {
            return false;
        }
        void* const grown = GetMemoryManager().Reallocate(elements, size, kMemoryCategoryArray,
                                                          kMemoryAlignment, kMemoryCategoryArray);
        if (grown == NULL) {
            return false;
        }
        elements = static_cast<T*>(grown);
        capacity = newCapacity;
        return true;
    }

    T* elements;
    Int32 count;
    Int32 capacity;
};

}  // namespace Plinth

#endif
