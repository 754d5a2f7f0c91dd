// Linked into a copy of the plug-in: its memory manager's Reallocate asks the program first.
#include <cstddef>

extern "C" bool NextAllocationFails();

#define REALLOCATE(prefix) prefix##_ZN6Plinth13MemoryManager10ReallocateEPvmjjj

extern "C" void* REALLOCATE(__real_)(void* manager, void* memory, std::size_t size, unsigned,
                                     unsigned, unsigned);
extern "C" void* REALLOCATE(__wrap_)(void* manager, void* memory, std::size_t size, unsigned,
                                     unsigned, unsigned);

void* REALLOCATE(__wrap_)(void* manager, void* memory, std::size_t size, unsigned category,
                          unsigned alignment, unsigned blockId) {
    return NextAllocationFails()
               ? nullptr
               : REALLOCATE(__real_)(manager, memory, size, category, alignment, blockId);
}
