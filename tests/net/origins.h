// Where downloads end: a plain and a secure web server, and redirects between them.
#ifndef TESTS_NET_ORIGINS_H
#define TESTS_NET_ORIGINS_H

#include <gtest/gtest.h>

#include <string>

#include "net/fetch.h"
#include "sandbox/servers/file_server.h"

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
