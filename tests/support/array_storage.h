// The memory manager's calls for the plug-in's arrays, which the linker leads through here.
#pragma once

#include <cstddef>

// Counts from its making on. At most one lives at a time.
class ArrayStorage {
  public:
    // The request number `failing` (0: the next one) and all later ones give null; negative: none.
    explicit ArrayStorage(int failing = -1);
    ~ArrayStorage();
    ArrayStorage(const ArrayStorage&) = delete;
    ArrayStorage& operator=(const ArrayStorage&) = delete;

    // Bytes that were in use at the same time, at most, of what was taken since the making.
    std::size_t Peak() const;
    int Requests() const;
};
