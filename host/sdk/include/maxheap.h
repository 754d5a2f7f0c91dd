// Base of the classes whose objects may be made in one module and deleted in another: all of them
// live in the host's heap.
#ifndef HOST_SDK_INCLUDE_MAXHEAP_H
#define HOST_SDK_INCLUDE_MAXHEAP_H

#include <coreexp.h>
#include <stddef.h>

#include <new>

class CoreExport MaxHeapOperators {
  public:
    // Throw std::bad_alloc when there is no memory.
    static void* operator new(size_t size);
    static void* operator new[](size_t size);
    // Give null when there is no memory.
    static void* operator new(size_t size, const std::nothrow_t& nothrow) throw();
    static void* operator new[](size_t size, const std::nothrow_t& nothrow) throw();
    static void* operator new(size_t, void* place) throw() { return place; }

    static void operator delete(void* memory) throw();
    static void operator delete[](void* memory) throw();
    static void operator delete(void* memory, const std::nothrow_t& nothrow) throw();
    static void operator delete[](void* memory, const std::nothrow_t& nothrow) throw();
    static void operator delete(void*, void*) throw() {}
};

#endif  // HOST_SDK_INCLUDE_MAXHEAP_H
