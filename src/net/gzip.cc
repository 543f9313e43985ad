// Inflating with zlib into a block that grows in fixed steps.
#include "net/gzip.h"

#include <zlib.h>

#include <limits>

#include "api/last_error.h"
#include "velnor/capi.h"

namespace velnor {
namespace {

// A gzip header alone has 10 bytes.
constexpr uint32_t kHeaderSize = 10;
constexpr uint32_t kGrowth = 128 * 1024;
// The gzip wrapper only, with the largest window (zlib.h, inflateInit2).
constexpr int kGzipWindowBits = 31;

class Inflater {
  public:
    Inflater() = default;
    ~Inflater() {
        if (ready_) inflateEnd(&stream_);
    }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    bool prepare(char* body, uint32_t size) {
        // The version of the interface that this was written for: zlib compares its first digit.
        ready_ = inflateInit2_(&stream_, kGzipWindowBits, "1.2.3", sizeof stream_) == Z_OK;
        stream_.next_in = reinterpret_cast<Bytef*>(body);
        stream_.avail_in = size;
        return ready_;
    }

    // Inflates to the end of the gzip stream; false when the data or the memory does not reach.
    bool run() {
        for (;;) {
            if (!grow()) return false;
            const uint32_t room = capacity_ - produced_;
            stream_.next_out = reinterpret_cast<Bytef*>(output_.get() + produced_);
            stream_.avail_out = room;
            const int result = inflate(&stream_, Z_NO_FLUSH);
            produced_ += room - stream_.avail_out;
            if (result == Z_STREAM_END) return true;
            if (result != Z_OK || stream_.avail_out != 0) return false;
        }
    }

    OwnedText take(uint32_t* size) {
        if (produced_ == std::numeric_limits<uint32_t>::max() || !resize(produced_ + 1)) return {};
        output_.get()[produced_] = '\0';
        *size = produced_;
        return std::move(output_);
    }

  private:
    bool grow() {
        if (capacity_ > std::numeric_limits<uint32_t>::max() - kGrowth) {
            _vn_setLastError(INSTALL_ERROR_INSUFFICIENTMEMORY);
            return false;
        }
        return resize(capacity_ + kGrowth);
    }

    bool resize(uint32_t capacity) {
        if (!output_.resize(capacity)) return false;
        capacity_ = capacity;
        return true;
    }

    z_stream stream_{};
    bool ready_ = false;
    OwnedText output_;
    uint32_t capacity_ = 0;
    uint32_t produced_ = 0;
};

}  // namespace

OwnedText inflateGzip(OwnedText body, uint32_t* size) {
    const uint32_t compressed = *size;
    *size = 0;
    if (compressed <= kHeaderSize) {
        _vn_setLastError(INSTALL_ERROR_INVALIDARGUMENT);
        return {};
    }
    Inflater inflater;
    if (!inflater.prepare(body.get(), compressed) || !inflater.run()) return {};
    return inflater.take(size);
}

}  // namespace velnor
