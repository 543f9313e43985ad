// A download as tests look at it.
#ifndef TESTS_NET_FETCH_H
#define TESTS_NET_FETCH_H

#include <optional>
#include <string>

#include "api/last_error.h"
#include "harness/gzip.h"
#include "net/system_downloader.h"
#include "support/owned.h"

struct Fetched {
    std::optional<std::string> body;  // without its NUL byte
    uint32_t size = 0;
    uint32_t lastError = 0;
};

/// Downloads `url`; a body that is not followed by a NUL byte does not count as one.
inline Fetched fetch(const std::string& url, const char* userAgent = "test agent") {
    Fetched result;
    result.size = 0xffffffff;
    _vn_setLastError(99);
    const velnor::OwnedText body(
        _vn_downloadVelnorURL(userAgent, url.c_str(), &result.size, nullptr, 0, 0));
    result.lastError = _vn_getLastError();
    if (body && body.get()[result.size] == '\0') result.body.emplace(body.get(), result.size);
    return result;
}

using harness::gzip;

inline std::string urlOn(int port, const std::string& path = "/file") {
    return "http://127.0.0.1:" + std::to_string(port) + path;
}

#endif
