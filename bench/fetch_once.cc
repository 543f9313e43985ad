// Fetches one URL and ends, so that the peak memory of the process is the peak of the download.
//   velnor_bench_fetch engine|libcurl URL plain|gzip
#include <cstdio>
#include <cstring>

#include "curl_peer.h"
#include "net/system_downloader.h"
#include "support/memory.h"

int main(int argc, char** argv) {
    if (argc != 4) return 2;
    if (std::strcmp(argv[1], "libcurl") == 0) {
        return bench::fetchWithCurl(argv[2], std::strcmp(argv[3], "gzip") == 0) > 0 ? 0 : 1;
    }
    uint32_t size = 0;
    char* body = _vn_downloadVelnorURL("bench", argv[2], &size, nullptr, 0, 0);
    const bool fetched = body != nullptr && size > 0;
    _vn_free(&body);
    return fetched ? 0 : 1;
}
