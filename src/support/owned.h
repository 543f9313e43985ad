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

  private:
    T* block_ = nullptr;
};

/// A NUL-terminated text on the heap.
using OwnedText = Owned<char>;

}  // namespace velnor

#endif
