// A download as tests look at it, and the servers that it is from.
#ifndef TESTS_NET_FETCH_H
#define TESTS_NET_FETCH_H

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "api/result/last_error.h"
#include "net/system_downloader.h"
#include "sandbox/servers/file_server.h"
#include "sandbox/servers/raw_server.h"
#include "support/owned.h"

constexpr uint32_t kUntouched = 99;

struct Fetched {
    std::optional<std::string> body;  // without its NUL byte; one that has none is no body
    uint32_t size = 0xffffffff;
    uint32_t lastError = 0;
};

/// What `download` gives, which stores the size where it is told to.
template <class Download>
Fetched fetchBy(Download download) {
    Fetched result;
    _vn_setLastError(kUntouched);
    const velnor::OwnedText body(download(&result.size));
    result.lastError = _vn_getLastError();
    if (body && body.get()[result.size] == '\0') result.body.emplace(body.get(), result.size);
    return result;
}

inline Fetched fetch(const std::string& url, const char* userAgent = "test agent") {
    return fetchBy([&](uint32_t* size) {
        return _vn_downloadVelnorURL(userAgent, url.c_str(), size, nullptr, 0, 0);
    });
}

inline std::string urlOn(int port, const std::string& path = "/file") {
    return "http://127.0.0.1:" + std::to_string(port) + path;
}

/// A server that answers every connection with these bytes.
inline sandbox::RawServer answering(const std::string& reply, int port = 0) {
    return sandbox::RawServer([reply](int fd, const std::string&) { sandbox::sendAll(fd, reply); },
                              port);
}

/// A text in which no two places look alike for long.
inline std::string pattern(size_t size) {
    std::string text(size, '\0');
    for (size_t i = 0; i < size; ++i) text[i] = static_cast<char>(i * 31 + i / 251);
    return text;
}

/// Where downloads end: a plain and a secure web server, and redirects between them.
class Origins : public testing::Test {
  protected:
    Origins() {
        http_.serve("/file", "here");
        https_.serve("/file", "secure");
    }

    std::string plain(const std::string& path) const { return urlOn(http_.port(), path); }
    std::string secure(const std::string& path) const {
        return "https://localhost:" + std::to_string(https_.port()) + path;
    }
    // As if compressed, which only the final reply's headers can say of a body.
    static sandbox::Reply redirect(const std::string& target, int status = 302) {
        return {status,
                "moved, " + std::string(5000, 'x'),
                {{"Location", target}, {"Content-Encoding", "gzip"}}};
    }
    std::optional<std::string> fetchRedirected(const std::string& target, int status = 302) {
        http_.serve("/old", redirect(target, status));
        return fetch(plain("/old")).body;
    }

    sandbox::FileServer http_;
    sandbox::FileServer https_{0, sandbox::tlsFiles()};
};

#endif
