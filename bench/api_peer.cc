// The other side of the client API's benchmarks, in a process of its own.
//   velnor_bench_api_peer serve            is a client on port 9421 that knows one download
//   velnor_bench_api_peer allocated        prints how many bytes vn_getFileAttributes allocates
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <string>

#include "api_reply.h"
#include "harness/harness.h"
#include "lean_server.h"
#include "velnor/capi.h"

namespace {

bench::ReadyReply ready(const std::string& query, const std::string& body) {
    return {"/api?function=" + query,
            "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: " +
                std::to_string(body.size()) + "\r\nConnection: keep-alive\r\n\r\n" + body,
            false};
}

[[noreturn]] void serve() {
    static std::atomic<int> connections = 0;
    const std::string ask = "getFileAttributes&cid=0&apiversion=capi_1.6.5&url=";
    bench::startLeanServer(
        {ready("ping", "{}"), ready(ask + bench::kApiUrlEncoded + "&complete", bench::kApiReply)},
        connections, 9421);
    for (;;) pause();
}

bool printAllocated() {
    ApiHandle* handle = nullptr;
    FileAttributes file{};
    if (vn_initialize("bench", &handle) != 0) return false;
    const bool warm = vn_getFileAttributes(handle, 0, bench::kApiUrl, &file, 0) == 0;
    harness::failAllocation(0);
    const bool counted = vn_getFileAttributes(handle, 0, bench::kApiUrl, &file, 0) == 0;
    harness::hasFailedAllocation();
    std::printf("%zu\n", harness::allocatedBytes());
    vn_cleanFileAttributes(handle, &file, 0);
    vn_uninitialize(handle, 0);
    return warm && counted;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string mode = argc == 2 ? argv[1] : "";
    if (mode == "serve") serve();
    return mode == "allocated" && printAllocated() ? 0 : 1;
}
