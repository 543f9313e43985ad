// A response body as it arrives, in the one block of memory that the caller gets in the end.
#ifndef VELNOR_NET_RESPONSE_BODY_H
#define VELNOR_NET_RESPONSE_BODY_H

#include <cstdint>

#include "support/owned.h"

namespace velnor {

class ResponseBody {
  public:
    /// Makes room for `size` bytes in advance; a hint from outside, so no memory is no failure.
    void reserve(int64_t size);

    /// False with code 4 when there is no memory, or the body outgrows 32 bits with its terminator.
    bool append(const char* bytes, uint32_t size);

    /// The bytes and one NUL byte behind them, in a block of that size; null with code 4 when there
    /// is no memory. The body is empty afterwards.
    OwnedText take(uint32_t* size);

  private:
    bool resize(uint32_t capacity);

    OwnedText block_;
    uint32_t capacity_ = 0;
    uint32_t size_ = 0;
};

}  // namespace velnor

#endif
