// Peak memory of a download, each in a process of its own.
#include <stdexcept>
#include <string>

#include "comparison.h"
#include "groups.h"
#include "harness/harness.h"
#include "servers.h"

namespace bench {
namespace {

// How many bytes the peak grows by one fetch.
double growthBy(const std::string& client, const std::string& url, size_t size) {
    const auto fetch =
        harness::run("'" FETCH_ONCE "' " + client + " '" + url + "' " + std::to_string(size));
    if (fetch.status != 0) throw std::runtime_error("the fetch failed");
    return std::stod(fetch.output) * double(kKiB);
}

// Beyond what a download cannot do without: the body, and what came over the wire where that is
// another one. What a process needs for a small body is taken off.
void addEngine(size_t size, bool https, bool gzip) {
    measure(
        std::string("memory beyond the body, ") + (https ? "https" : "http") +
            (gzip ? " gzip " : " plain ") + std::to_string(size / kMiB) + " MiB",
        "MiB",
        [=](benchmark::State& state) {
            for (auto _ : state) {
                const double base = growthBy("engine", urlOf(kKiB, https, gzip), kKiB);
                const double growth = growthBy("engine", urlOf(size, https, gzip), size);
                const size_t needed = size + (gzip ? bytesOnTheWire(size, gzip) : 0);
                state.counters["value"] = (growth - base - double(needed)) / double(kMiB);
            }
        },
        4.0);
}

// All of it, since the start of the process. A body whose length nobody has announced may take
// twice its size, and 2 MiB.
void addSocket(size_t size) {
    const double mib = double(size) / double(kMiB);
    measure(
        "memory, plain HTTP client, until closed " + std::to_string(size / kMiB) + " MiB", "MiB",
        [size](benchmark::State& state) {
            for (auto _ : state) {
                state.counters["value"] =
                    growthBy("socket", leanUrl(leanPath(size, End::Close)), size) / double(kMiB);
            }
        },
        2 * mib + 2);
}

}  // namespace

void addMemory() {
    for (const bool gzip : {false, true}) addEngine(256 * kMiB, false, gzip);
    addEngine(256 * kMiB, true, false);
    for (const size_t size : {10 * kMiB, 64 * kMiB}) addSocket(size);
}

}  // namespace bench
