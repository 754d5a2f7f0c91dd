#include "wrapped_calls.h"

#include <windows.h>

#include <cstddef>
#include <new>
#include <utility>

#include "core/memory_manager.h"

namespace {

// Refuses calls of one kind, from one on.
class Refusal {
  public:
    void Arm(int failing, int count) {
        untilFailure_ = failing;
        count_ = count;
        refused_ = 0;
    }
    void Disarm() { count_ = 0; }
    int Refused() const { return refused_; }

    // Whether to refuse this call.
    bool Next() {
        const bool refuse = refused_ < count_ && untilFailure_-- <= 0;
        refused_ += refuse ? 1 : 0;
        return refuse;
    }

  private:
    int untilFailure_ = 0;
    int count_ = 0;
    int refused_ = 0;
};

Refusal reallocRefusal;
Refusal newRefusal;
long reallocations = 0;
StorageRequests* currentRequests = nullptr;

}  // namespace

// The mangled names of `new` and of MemoryManager::Reallocate.
#ifdef _WIN32
#define REAL_NEW __real__Znwy
#define WRAP_NEW __wrap__Znwy
#define REAL_REALLOCATE __real__ZN6Plinth13MemoryManager10ReallocateEPvyjjj
#define WRAP_REALLOCATE __wrap__ZN6Plinth13MemoryManager10ReallocateEPvyjjj
#else
#define REAL_NEW __real__Znwm
#define WRAP_NEW __wrap__Znwm
#define REAL_REALLOCATE __real__ZN6Plinth13MemoryManager10ReallocateEPvmjjj
#define WRAP_REALLOCATE __wrap__ZN6Plinth13MemoryManager10ReallocateEPvmjjj
#endif

extern "C" {

void* __real_realloc(void* memory, std::size_t size);
void* __wrap_realloc(void* memory, std::size_t size);

void* __wrap_realloc(void* memory, std::size_t size) {
    ++reallocations;
    return reallocRefusal.Next() ? nullptr : __real_realloc(memory, size);
}

void* REAL_NEW(std::size_t size);
void* WRAP_NEW(std::size_t size);

void* WRAP_NEW(std::size_t size) {
    if (newRefusal.Next()) {
        throw std::bad_alloc();
    }
    return REAL_NEW(size);
}

void* REAL_REALLOCATE(Plinth::MemoryManager* manager, void* memory, std::size_t size,
                      Plinth::UInt32 category, Plinth::UInt32 alignment, Plinth::UInt32 blockId);
void* WRAP_REALLOCATE(Plinth::MemoryManager* manager, void* memory, std::size_t size,
                      Plinth::UInt32 category, Plinth::UInt32 alignment, Plinth::UInt32 blockId);

void* WRAP_REALLOCATE(Plinth::MemoryManager* manager, void* memory, std::size_t size,
                      Plinth::UInt32 category, Plinth::UInt32 alignment, Plinth::UInt32 blockId) {
    if (currentRequests != nullptr) {
        currentRequests->Add({category, alignment, blockId});
    }
    return REAL_REALLOCATE(manager, memory, size, category, alignment, blockId);
}

}  // extern "C"

FailingReallocations::FailingReallocations(int failing, int count) {
    reallocRefusal.Arm(failing, count);
}

FailingReallocations::~FailingReallocations() {
    reallocRefusal.Disarm();
}

int FailingReallocations::Refused() const {
    return reallocRefusal.Refused();
}

FailingNews::FailingNews(int failing, int count) {
    newRefusal.Arm(failing, count);
}

FailingNews::~FailingNews() {
    newRefusal.Disarm();
}

int FailingNews::Refused() const {
    return newRefusal.Refused();
}

StorageRequests::StorageRequests() {
    currentRequests = this;
}

StorageRequests::~StorageRequests() {
    currentRequests = nullptr;
}

std::vector<StorageRequest> StorageRequests::Take() {
    return std::exchange(requests_, {});
}

long ReallocationCount() {
    Plinth::GetMemoryManager();
    return reallocations;
}

#ifndef _WIN32

namespace {

std::vector<std::string>& OpenModes() {
    static std::vector<std::string> modes;
    return modes;
}

}  // namespace

extern "C" {

errno_t __real_fopen_s(FILE** file, const char* name, const char* mode);
errno_t __wrap_fopen_s(FILE** file, const char* name, const char* mode);

errno_t __wrap_fopen_s(FILE** file, const char* name, const char* mode) {
    OpenModes().push_back(mode);
    return __real_fopen_s(file, name, mode);
}

}  // extern "C"

std::vector<std::string> TakeOpenModes() {
    return std::exchange(OpenModes(), {});
}

#endif
