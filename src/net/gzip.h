// Inflating a gzip-encoded response body.
#ifndef VELNOR_NET_GZIP_H
#define VELNOR_NET_GZIP_H

#include <cstdint>

#include "support/owned.h"

namespace velnor {

/// Inflates `body`, `*size` bytes in gzip format (RFC 1952), and releases it. Returns the inflated
/// bytes with one NUL byte behind them and stores their number in `*size`. On failure null with
/// `*size` 0: a body of 10 bytes or less (code 1), no memory for the output (code 4), broken or
/// incomplete data (no code). What follows the end of the gzip stream is ignored.
OwnedText inflateGzip(OwnedText body, uint32_t* size);

}  // namespace velnor

#endif
