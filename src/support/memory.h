// Heap memory of the library.
#ifndef VELNOR_SUPPORT_MEMORY_H
#define VELNOR_SUPPORT_MEMORY_H

#include <cstdint>

/// Releases `*pointer` with free(3) and sets it to null. Does nothing when `pointer` or `*pointer`
/// is null, so it may be called twice in a row.
void _vn_free(void** pointer);

/// The same for a variable of any pointer type.
template <class T>
void _vn_free(T** pointer) {
    if (pointer == nullptr) return;
    void* block = *pointer;
    _vn_free(&block);
    *pointer = nullptr;
}

/// A block of `size` bytes, not cleared, released with _vn_free. Null with code 4 when there is no
/// memory.
void* _vn_malloc(uint32_t size);

/// Resizes `block` (null: a new one) to `size` bytes, not 0, as realloc(3) does. Null with code 4
/// when there is no memory; `block` is then still the caller's.
void* _vn_realloc(void* block, uint32_t size);

#endif
