// Peak memory of a download, beyond what it cannot do without: the body, and what came over the
// wire where that is another one. Each in a process of its own; what such a process needs for a
// small body is taken off.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

#include "comparison.h"
#include "groups.h"
#include "servers.h"

namespace bench {
namespace {

// Peak resident memory in bytes of one fetch.
size_t peakOf(const std::string& url, bool gzip) {
    const pid_t child = fork();
    if (child == 0) {
        execl(FETCH_ONCE, FETCH_ONCE, "engine", url.c_str(), gzip ? "gzip" : "plain", nullptr);
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    if (wait4(child, &status, 0, &usage) != child || status != 0) {
        throw std::runtime_error("the fetch failed");
    }
    return static_cast<size_t>(usage.ru_maxrss) * kKiB;
}

void addPeak(size_t size, bool https, bool gzip) {
    measureMiB(
        std::string("memory beyond the body, ") + (https ? "https" : "http") +
            (gzip ? " gzip " : " plain ") + std::to_string(size / kMiB) + " MiB",
        [=](benchmark::State& state) {
            for (auto _ : state) {
                const size_t base = peakOf(urlOf(kKiB, https, gzip), gzip);
                const size_t peak = peakOf(urlOf(size, https, gzip), gzip);
                const size_t needed = size + (gzip ? bytesOnTheWire(size, gzip) : 0);
                state.counters["value"] =
                    (double(peak) - double(base) - double(needed)) / double(kMiB);
            }
        },
        4.0);
}

}  // namespace

void addMemory() {
    for (const bool gzip : {false, true}) addPeak(256 * kMiB, false, gzip);
    addPeak(256 * kMiB, true, false);
}

}  // namespace bench
