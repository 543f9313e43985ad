// A download as tests look at it.
#ifndef TESTS_NET_FETCH_H
#define TESTS_NET_FETCH_H

#include <zlib.h>

#include <optional>
#include <string>

#include "api/last_error.h"
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

/// `data` in gzip format.
inline std::string gzip(const std::string& data) {
    z_stream stream{};
    deflateInit2(&stream, 9, Z_DEFLATED, 31, 9, Z_DEFAULT_STRATEGY);
    std::string out(deflateBound(&stream, data.size()) + 64, '\0');
    std::string in = data;
    stream.next_in = reinterpret_cast<Bytef*>(in.data());
    stream.avail_in = static_cast<uInt>(in.size());
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = static_cast<uInt>(out.size());
    deflate(&stream, Z_FINISH);
    out.resize(stream.total_out);
    deflateEnd(&stream);
    return out;
}

inline std::string urlOn(int port, const std::string& path = "/file") {
    return "http://127.0.0.1:" + std::to_string(port) + path;
}

#endif
