// The peer of the downloader: a plain curl_easy_perform into memory.
#ifndef BENCH_CURL_PEER_H
#define BENCH_CURL_PEER_H

#include <cstddef>

namespace bench {

/// Fetches `url`; with `gzip` it asks for gzip and lets libcurl undo it. Returns the number of
/// bytes that came, 0 on failure.
size_t fetchWithCurl(const char* url, bool gzip);

}  // namespace bench

#endif
