#include "core/holder.h"

#include <stdlib.h>

#include "core/memory_manager.h"

namespace Plinth {

void CloseFile(FILE* file) {
    fclose(file);
}

void FreeMemory(void* memory) {
    GetMemoryManager().Free(memory);
}

void FreeHeapMemory(void* memory) {
    free(memory);
}

}  // namespace Plinth
