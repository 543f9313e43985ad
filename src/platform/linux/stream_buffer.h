// Body bytes between libcurl, which pushes them, and the reader, who pulls.
#ifndef VELNOR_PLATFORM_LINUX_STREAM_BUFFER_H
#define VELNOR_PLATFORM_LINUX_STREAM_BUFFER_H

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "support/owned.h"

namespace velnor::platform {

class StreamBuffer {
  public:
    /// libcurl is asked to pause once this many bytes wait, so that a slow reader costs no memory.
    static constexpr uint32_t kHighWater = 64 * 1024;

    bool empty() const { return begin_ == end_; }
    bool full() const { return end_ - begin_ >= kHighWater; }

    /// False when there is no memory.
    bool append(const char* bytes, uint32_t size) {
        if (empty()) begin_ = end_ = 0;
        if (!ensureRoom(size)) return false;
        std::memcpy(block_.get() + end_, bytes, size);
        end_ += size;
        return true;
    }

    uint32_t take(void* bytes, uint32_t size) {
        const uint32_t taken = std::min(size, end_ - begin_);
        if (taken > 0) std::memcpy(bytes, block_.get() + begin_, taken);
        begin_ += taken;
        return taken;
    }

  private:
    bool ensureRoom(uint32_t size) {
        if (capacity_ - end_ >= size) return true;
        const uint32_t capacity = end_ + size + kHighWater;
        if (!block_.resize(capacity)) return false;
        capacity_ = capacity;
        return true;
    }

    Owned<char> block_;
    uint32_t capacity_ = 0;
    uint32_t begin_ = 0;
    uint32_t end_ = 0;
};

}  // namespace velnor::platform

#endif
