// Fetches one URL in a process of its own, and prints by how many KiB its peak memory has grown
// since it started.
//   velnor_bench_fetch engine|socket|libcurl URL SIZE
// "libcurl" is there to be compared with by hand.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "curl_peer.h"
#include "net/socket_http.h"
#include "net/system_downloader.h"
#include "support/owned.h"

namespace {

// The system's own count. That of getrusage(2) begins with what the parent process had.
long peakKiB() {
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word && word != "VmHWM:") {
    }
    long peak = 0;
    status >> peak;
    return peak;
}

// The size of what came, 0 on failure.
size_t fetch(const std::string& client, const char* url) {
    if (client == "libcurl") {
        bench::CurlPeer peer(url, true);
        return peer.fetch() ? peer.size() : 0;
    }
    uint32_t size = 0;
    const velnor::OwnedText body(client == "socket"
                                     ? _vn_downloadURL("bench", url, nullptr, &size, nullptr)
                                     : _vn_downloadVelnorURL("bench", url, &size, nullptr, 0, 0));
    return body ? size : 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) return 2;
    const long start = peakKiB();
    if (fetch(argv[1], argv[2]) != std::strtoul(argv[3], nullptr, 10)) return 1;
    std::printf("%ld\n", peakKiB() - start);
    return start > 0 ? 0 : 1;
}
