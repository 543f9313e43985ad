// The linker sends malloc and realloc of the objects in the test through here.
#include "harness/harness.h"

#include <cstdlib>
#include <new>

namespace {

thread_local bool t_watching = false;
thread_local bool t_lasts = false;
thread_local size_t t_number = 0;
thread_local size_t t_count = 0;
thread_local size_t t_bytes = 0;

bool fails(size_t size) {
    if (!t_watching) return false;
    t_bytes += size;
    return ++t_count == t_number || (t_lasts && t_count > t_number);
}

}  // namespace

extern "C" {
void* __real_malloc(size_t size);
void* __real_realloc(void* block, size_t size);

void* __wrap_malloc(size_t size) { return fails(size) ? nullptr : __real_malloc(size); }
void* __wrap_realloc(void* block, size_t size) {
    return fails(size) ? nullptr : __real_realloc(block, size);
}
}

// C++ libraries beneath the engine allocate here as well.
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, size_t) noexcept { std::free(block); }
void* operator new(size_t size) {
    void* block = fails(size) ? nullptr : __real_malloc(size);
    if (block == nullptr && std::get_new_handler() != nullptr) std::get_new_handler()();
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

namespace harness {

void failAllocation(size_t number, bool lasts) {
    t_number = number;
    t_lasts = lasts;
    t_count = t_bytes = 0;
    t_watching = true;
}

bool hasFailedAllocation() {
    t_watching = false;
    return t_number != 0 && t_count >= t_number;
}

size_t allocatedBytes() { return t_bytes; }

}  // namespace harness
