#include <maxheap.h>

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
