// The growing response body.
#include "net/response_body.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "api/last_error.h"
#include "velnor/capi.h"

namespace velnor {
namespace {

constexpr uint32_t kMaxCapacity = std::numeric_limits<uint32_t>::max();
// Large enough for the C library to map such blocks on their own and to grow them in place.
constexpr uint32_t kMinGrowth = 1024 * 1024;
// An announced length is somebody's word: beyond this, memory comes with the bytes.
constexpr int64_t kMaxReserve = 1024 * 1024 * 1024;

}  // namespace

void ResponseBody::reserve(int64_t size) {
    if (size <= 0 || size > kMaxReserve || size_ != 0) return;
    const uint32_t before = _vn_getLastError();
    if (!resize(static_cast<uint32_t>(size) + 1)) _vn_setLastError(before);
}

bool ResponseBody::append(const char* bytes, uint32_t size) {
    if (capacity_ - size_ <= size) {
        const uint64_t needed = uint64_t{size_} + size + 1;
        if (needed > kMaxCapacity) {
            _vn_setLastError(INSTALL_ERROR_INSUFFICIENTMEMORY);
            return false;
        }
        const uint64_t grown = needed + std::max(kMinGrowth, size_ / 8);
        if (!resize(static_cast<uint32_t>(std::min<uint64_t>(grown, kMaxCapacity)))) return false;
    }
    std::memcpy(block_.get() + size_, bytes, size);
    size_ += size;
    return true;
}

OwnedText ResponseBody::take(uint32_t* size) {
    if (capacity_ != size_ + 1 && !resize(size_ + 1)) return {};
    block_.get()[size_] = '\0';
    *size = size_;
    capacity_ = size_ = 0;
    return std::move(block_);
}

bool ResponseBody::resize(uint32_t capacity) {
    if (!block_.resize(capacity)) return false;
    capacity_ = capacity;
    return true;
}

}  // namespace velnor
