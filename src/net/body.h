// Response bodies: as they grow, and inflated when they came compressed.
#ifndef VELNOR_NET_BODY_H
#define VELNOR_NET_BODY_H

#include <cstdint>

#include "support/owned.h"

namespace velnor {

/// `size` bytes and one NUL byte behind them; null data: there is none.
struct Body {
    OwnedText data;
    uint32_t size = 0;
};

/// A body that is written piece by piece, into the one block of memory that its reader gets.
class GrowingBody {
  public:
    /// Where the next `size` bytes can be written; null with code 4 when there is no memory, or the
    /// body would outgrow 32 bits.
    char* room(uint32_t size);

    /// So many bytes have been written there.
    void add(uint32_t size) { size_ += size; }

    /// The body, in a block of its size; null data with code 4 when there is no memory.
    Body take();

  private:
    OwnedText block_;
    uint32_t capacity_ = 0;
    uint32_t size_ = 0;
};

/// Inflates a body in gzip format (RFC 1952), and releases it. What follows the end of the gzip
/// stream is ignored. Null data and size 0 on failure: a body of 10 bytes or less (code 1), no
/// memory for the output (code 4), broken or incomplete data (no code).
Body inflateGzip(Body compressed);

}  // namespace velnor

#endif
