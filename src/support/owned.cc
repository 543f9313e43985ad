#include "support/owned.h"

#include <cstdlib>

#include "api/result/last_error.h"
#include "velnor/capi.h"

namespace velnor {
namespace {

void* orInsufficientMemory(void* block) {
    if (block == nullptr) _vn_setLastError(INSTALL_ERROR_INSUFFICIENTMEMORY);
    return block;
}

}  // namespace
}  // namespace velnor

void _vn_free(void** pointer) {
    if (pointer == nullptr) return;
    std::free(*pointer);
    *pointer = nullptr;
}

void* _vn_malloc(uint32_t size) { return velnor::orInsufficientMemory(std::malloc(size)); }

void* _vn_realloc(void* block, uint32_t size) {
    return velnor::orInsufficientMemory(std::realloc(block, size));
}
