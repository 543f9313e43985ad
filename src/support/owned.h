// Heap memory of the library, and Owned<T>: one block that goes through _vn_free when its owner
// goes.
#ifndef VELNOR_SUPPORT_OWNED_H
#define VELNOR_SUPPORT_OWNED_H

#include <cstdint>
#include <utility>

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

namespace velnor {

template <class T>
class Owned {
  public:
    Owned() = default;
    explicit Owned(T* block) : block_(block) {}
    Owned(Owned&& other) noexcept : block_(other.release()) {}
    Owned& operator=(Owned&& other) noexcept {
        std::swap(block_, other.block_);
        return *this;
    }
    ~Owned() { _vn_free(&block_); }

    T* get() const { return block_; }
    explicit operator bool() const { return block_ != nullptr; }

    /// Address for an out-parameter; what was held before is released.
    T** out() {
        _vn_free(&block_);
        return &block_;
    }

    /// Hands the block to the caller, who releases it with _vn_free.
    T* release() { return std::exchange(block_, nullptr); }

    /// Resizes the block to `size` bytes, not 0, keeping its content. False with code 4, and the
    /// block as it was, when there is no memory.
    bool resize(uint32_t size) {
        void* resized = _vn_realloc(block_, size);
        if (resized == nullptr) return false;
        block_ = static_cast<T*>(resized);
        return true;
    }

  private:
    T* block_ = nullptr;
};

/// A NUL-terminated text on the heap.
using OwnedText = Owned<char>;

}  // namespace velnor

#endif
