#include "net/body.h"

#include <zlib.h>

#include <algorithm>
#include <limits>
#include <utility>

#include "api/result/last_error.h"
#include "velnor/capi.h"

namespace velnor {
namespace {

constexpr uint64_t kMaxCapacity = std::numeric_limits<uint32_t>::max();
constexpr uint64_t kFirstCapacity = 64 * 1024;
// A gzip header alone has 10 bytes.
constexpr uint32_t kGzipHeaderSize = 10;
constexpr uint32_t kInflateStep = 128 * 1024;
// The gzip wrapper only, with the largest window (zlib.h, inflateInit2).
constexpr int kGzipWindowBits = 31;

// Inflates to the end of the gzip stream; null data when the data or the memory does not reach. The
// steps are fixed by the interface, and the memory is shrunk to fit in the end.
Body inflateAll(z_stream* stream) {
    OwnedText output;
    uint32_t capacity = 0;
    do {
        if (capacity > kMaxCapacity - kInflateStep) {
            _vn_setLastError(INSTALL_ERROR_INSUFFICIENTMEMORY);
            return {};
        }
        if (!output.resize(capacity + kInflateStep)) return {};
        stream->next_out = reinterpret_cast<Bytef*>(output.get() + capacity);
        stream->avail_out = kInflateStep;
        capacity += kInflateStep;
        const int result = inflate(stream, Z_NO_FLUSH);
        if (result != Z_OK && result != Z_STREAM_END) return {};
        if (result == Z_STREAM_END) {
            const uint32_t size = capacity - stream->avail_out;
            if (size == kMaxCapacity || !output.resize(size + 1)) return {};
            output.get()[size] = '\0';
            return {std::move(output), size};
        }
    } while (stream->avail_out == 0);
    return {};
}

}  // namespace

char* GrowingBody::room(uint32_t size) {
    const uint64_t needed = uint64_t{size_} + size + 1;
    if (needed > kMaxCapacity) {
        _vn_setLastError(INSTALL_ERROR_INSUFFICIENTMEMORY);
        return nullptr;
    }
    if (needed > capacity_) {
        // Twice as much each time is cheap: the C library maps large blocks on their own, and the
        // system moves them without a copy and backs only what has been written.
        const uint64_t wanted = std::max({needed, uint64_t{capacity_} * 2, kFirstCapacity});
        const auto capacity = static_cast<uint32_t>(std::min(wanted, kMaxCapacity));
        if (!block_.resize(capacity)) return nullptr;
        capacity_ = capacity;
    }
    return block_.get() + size_;
}

Body GrowingBody::take() {
    if (!block_.resize(size_ + 1)) return {};
    block_.get()[size_] = '\0';
    return {std::move(block_), size_};
}

Body inflateGzip(Body compressed) {
    if (compressed.size <= kGzipHeaderSize) {
        _vn_setLastError(INSTALL_ERROR_INVALIDARGUMENT);
        return {};
    }
    z_stream stream{};
    stream.next_in = reinterpret_cast<Bytef*>(compressed.data.get());
    stream.avail_in = compressed.size;
    // The version of the interface that this was written for: zlib compares its first digit.
    if (inflateInit2_(&stream, kGzipWindowBits, "1.2.3", sizeof stream) != Z_OK) return {};
    Body body = inflateAll(&stream);
    inflateEnd(&stream);
    return body;
}

}  // namespace velnor
