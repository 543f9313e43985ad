// Benchmarks in pairs, and the table that puts each beside its peer.
#ifndef BENCH_COMPARISON_H
#define BENCH_COMPARISON_H

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

namespace bench {

/// What the figure of a pair is to stay within.
struct Limit {
    enum class Kind {
        None,
        MaxRatio,        // ours / peer
        MaxExtraMillis,  // ours - peer
    } kind = Kind::None;
    double value = 0;
};

using Body = std::function<void(benchmark::State&)>;

/// Registers both sides of a comparison of times.
void compare(const std::string& name, Body ours, const std::string& peerName, Body peer,
             Limit limit, bool manualTime = false, int iterations = 0);

/// The same for sizes in KiB: the counter "value" of each side.
void compareKiB(const std::string& name, Body ours, const std::string& peerName, Body peer);

/// A figure with a limit and no peer, in `unit`: the counter "value" of `body`.
void measure(const std::string& name, const std::string& unit, Body body, double limit);

/// Runs everything that was registered and prints the table, in which a limit is "kept" or
/// "missed". False when a side failed to do its work.
bool runAndPrint();

}  // namespace bench

#endif
