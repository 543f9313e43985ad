// Heap memory on the C library's allocator.
#include "support/memory.h"

#include <cstdlib>

#include "api/last_error.h"
#include "velnor/capi.h"

namespace {

void* orInsufficientMemory(void* block) {
    if (block == nullptr) _vn_setLastError(INSTALL_ERROR_INSUFFICIENTMEMORY);
    return block;
}

}  // namespace

void _vn_free(void** pointer) {
    if (pointer == nullptr) return;
    std::free(*pointer);
    *pointer = nullptr;
}

void* _vn_malloc(uint32_t size) { return orInsufficientMemory(std::malloc(size)); }

void* _vn_realloc(void* block, uint32_t size) {
    return orInsufficientMemory(std::realloc(block, size));
}
