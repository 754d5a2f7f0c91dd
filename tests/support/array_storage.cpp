#include "tests/support/array_storage.h"

#include <algorithm>
#include <unordered_map>

#include "core/memory_manager.h"

namespace {

struct State {
    std::unordered_map<void*, std::size_t> sizes;
    std::size_t inUse = 0;
    std::size_t peak = 0;
    int requests = 0;
    int failing = -1;
    bool active = false;
};

State state;

void Forget(void* memory) {
    const auto entry = state.sizes.find(memory);
    if (entry != state.sizes.end()) {
        state.inUse -= entry->second;
        state.sizes.erase(entry);
    }
}

}  // namespace

// The mangled names of MemoryManager::Reallocate and Free.
#ifdef _WIN32
#define REAL_REALLOCATE __real__ZN6Plinth13MemoryManager10ReallocateEPvyjjj
#define WRAP_REALLOCATE __wrap__ZN6Plinth13MemoryManager10ReallocateEPvyjjj
#else
#define REAL_REALLOCATE __real__ZN6Plinth13MemoryManager10ReallocateEPvmjjj
#define WRAP_REALLOCATE __wrap__ZN6Plinth13MemoryManager10ReallocateEPvmjjj
#endif
#define REAL_FREE __real__ZN6Plinth13MemoryManager4FreeEPv
#define WRAP_FREE __wrap__ZN6Plinth13MemoryManager4FreeEPv

extern "C" {

void* REAL_REALLOCATE(Plinth::MemoryManager* manager, void* memory, std::size_t size,
                      unsigned category, unsigned alignment, unsigned blockId);
void* WRAP_REALLOCATE(Plinth::MemoryManager* manager, void* memory, std::size_t size,
                      unsigned category, unsigned alignment, unsigned blockId);
void REAL_FREE(Plinth::MemoryManager* manager, void* memory);
void WRAP_FREE(Plinth::MemoryManager* manager, void* memory);

void* WRAP_REALLOCATE(Plinth::MemoryManager* manager, void* memory, std::size_t size,
                      unsigned category, unsigned alignment, unsigned blockId) {
    if (!state.active) {
        return REAL_REALLOCATE(manager, memory, size, category, alignment, blockId);
    }
    const int request = state.requests++;
    if (state.failing >= 0 && request >= state.failing) {
        return nullptr;
    }
    Forget(memory);
    void* const given = REAL_REALLOCATE(manager, memory, size, category, alignment, blockId);
    state.sizes[given] = size;
    state.inUse += size;
    state.peak = std::max(state.peak, state.inUse);
    return given;
}

void WRAP_FREE(Plinth::MemoryManager* manager, void* memory) {
    Forget(memory);
    REAL_FREE(manager, memory);
}

}  // extern "C"

ArrayStorage::ArrayStorage(int failing) {
    state = State();
    state.failing = failing;
    state.active = true;
}

ArrayStorage::~ArrayStorage() {
    state = State();
}

std::size_t ArrayStorage::Peak() const {
    return state.peak;
}

int ArrayStorage::Requests() const {
    return state.requests;
}
