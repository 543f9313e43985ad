// Owned<T>: one heap pointer that goes through _vn_free when its owner goes.
#ifndef VELNOR_SUPPORT_OWNED_H
#define VELNOR_SUPPORT_OWNED_H

#include <utility>

#include "support/memory.h"

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
