#include "core/instance_manager.h"

#include <stdlib.h>

#include <new>

namespace Plinth {

namespace {

InstanceRegistry* globalRegistry = NULL;

void DestroyGlobalRegistry() {
    delete globalRegistry;
    globalRegistry = NULL;
}

}  // namespace

InstanceRegistry::InstanceRegistry() : holders(NULL), count(0) {
}

InstanceRegistry::~InstanceRegistry() {
    DestroyAll();
}

void InstanceRegistry::Register(InstanceManagerBase* holder) {
    void* const grown = realloc(holders, (static_cast<size_t>(count) + 1) * sizeof(*holders));
    if (grown == NULL) {
        delete holder;
        throw std::bad_alloc();
    }
    holders = static_cast<InstanceManagerBase**>(grown);
    holders[count++] = holder;
}

void InstanceRegistry::DestroyAll() {
    SortByPriority();
    for (Int32 i = 0; i < count; ++i) {
        InstanceManagerBase* const holder = holders[i];
        holder->DestroyInstance();
        delete holder;
    }
    free(holders);
    holders = NULL;
    count = 0;
}

InstanceRegistry& InstanceRegistry::Global() {
    if (globalRegistry == NULL) {
        globalRegistry = new InstanceRegistry;
        atexit(DestroyGlobalRegistry);
    }
    return *globalRegistry;
}

// A selection sort: which of two equal holders goes first is part of the order of destruction.
void InstanceRegistry::SortByPriority() {
    for (Int32 i = 0; i + 1 < count; ++i) {
        Int32 smallest = i;
        for (Int32 k = i + 1; k < count; ++k) {
            if (*holders[k] < *holders[smallest]) {
                smallest = k;
            }
        }
        InstanceManagerBase* const former = holders[i];
        holders[i] = holders[smallest];
        holders[smallest] = former;
    }
}

}  // namespace Plinth
