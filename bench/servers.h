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

/// Starts the servers: one for HTTP, one for HTTPS, and a lean one for HTTP; they end with this
/// process.
void startServers();

/// URL of a body of `size` bytes.
std::string urlOf(size_t size, bool https, bool gzip);

/// How many bytes that body has on the wire.
size_t bytesOnTheWire(size_t size, bool gzip);

/// The lean server's port on 127.0.0.1, and how many connections it has had.
int leanPort();
int leanConnections();

/// A reply of the client's size and kind; the lean server's body at kJsonPath.
inline constexpr char kJsonPath[] = "json";
const std::string& jsonReply();

/// What ends a body of the lean server: the length in its header, or the connection's end.
enum class End { Length, Close };

/// Path of a body there, of 10 MiB or, ended by Close, of 64 MiB. No path here begins with "/".
std::string leanPath(size_t size, End end);

std::string leanUrl(const std::string& path);

}  // namespace bench

#endif
