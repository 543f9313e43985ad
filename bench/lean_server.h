// A server that does next to nothing for a request, so that what is measured is the client.
#ifndef BENCH_LEAN_SERVER_H
#define BENCH_LEAN_SERVER_H

#include <atomic>
#include <string>
#include <vector>

namespace bench {

/// A reply as it goes over the wire, to a GET request for `path`.
struct ReadyReply {
    std::string path;  // with its leading "/"
    std::string bytes;
    bool closes;  // the connection, which is kept otherwise
};

/// Serves on 127.0.0.1, on a free port or the given one, in a thread of its own on
/// Processor::Servers, until the process ends: one connection at a time, and nothing beside
/// `replies`. Counts in `connections` what it accepts. Returns the port.
int startLeanServer(std::vector<ReadyReply> replies, std::atomic<int>& connections, int port = 0);

}  // namespace bench

#endif
