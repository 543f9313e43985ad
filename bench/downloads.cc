// The system downloader against a plain curl_easy_perform into memory.
#include <string>

#include "comparison.h"
#include "curl_peer.h"
#include "groups.h"
#include "net/system_downloader.h"
#include "servers.h"
#include "support/owned.h"

namespace bench {
namespace {

size_t fetchWithCurl(const char* url, bool gzip) {
    CurlPeer peer(url, gzip);
    return peer.fetch() ? peer.size() : 0;
}

size_t fetchWithEngine(const char* url) {
    uint32_t size = 0;
    char* body = _vn_downloadVelnorURL("bench", url, &size, nullptr, 0, 0);
    const size_t fetched = body != nullptr ? size : 0;
    _vn_free(&body);
    return fetched;
}

template <class Fetch>
Body repeat(Fetch fetch, size_t size) {
    return [fetch, size](benchmark::State& state) {
        for (auto _ : state) {
            if (fetch() != size) {
                state.SkipWithError("the body did not come whole");
                return;
            }
        }
    };
}

std::string sizeName(size_t size) {
    return size < kMiB ? std::to_string(size / kKiB) + " KiB"
                       : std::to_string(size / kMiB) + " MiB";
}

void addDownload(size_t size, bool https, bool gzip) {
    const std::string url = urlOf(size, https, gzip);
    // A file that is fetched in milliseconds is judged by what it costs more, a large one by its
    // throughput.
    const Limit limit = size < kSizes[2] ? Limit{Limit::Kind::MaxExtraMillis, 2.0}
                                         : Limit{Limit::Kind::MaxRatio, 1.0};
    compare(std::string("download ") + (https ? "https" : "http") + (gzip ? " gzip " : " plain ") +
                sizeName(size),
            repeat([url] { return fetchWithEngine(url.c_str()); }, size), "libcurl",
            repeat([url, gzip] { return fetchWithCurl(url.c_str(), gzip); }, size), limit);
}

}  // namespace

void addDownloads() {
    for (const size_t size : kSizes) {
        for (const bool https : {false, true}) {
            for (const bool gzip : {false, true}) addDownload(size, https, gzip);
        }
    }
}

}  // namespace bench
