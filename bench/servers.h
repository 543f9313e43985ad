// The servers of the benchmarks, in a process of their own.
#ifndef BENCH_SERVERS_H
#define BENCH_SERVERS_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace bench {

inline constexpr size_t kKiB = 1024;
inline constexpr size_t kMiB = 1024 * kKiB;

/// Sizes of the bodies that are served.
inline constexpr size_t kSizes[] = {kKiB, kMiB, 256 * kMiB};

/// Bodies that compress about as well as programs do.
std::string bodyOf(size_t size);

/// Starts the servers; they end with this process.
void startServers();

/// URL of a body of `size` bytes.
std::string urlOf(size_t size, bool https, bool gzip);

/// How many bytes that body has on the wire.
size_t bytesOnTheWire(size_t size, bool gzip);

}  // namespace bench

#endif
