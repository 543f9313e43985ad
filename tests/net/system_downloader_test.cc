// What a download sends, and what it makes of good replies.
#include "net/system_downloader.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "harness/allocations.h"
#include "net/fetch.h"
#include "sandbox/servers/file_server.h"
#include "sandbox/servers/raw_server.h"
#include "velnor/capi.h"

namespace {

using sandbox::FileServer;
using sandbox::RawServer;
using sandbox::Reply;

std::string pattern(size_t size) {
    std::string text(size, '\0');
    for (size_t i = 0; i < size; ++i) text[i] = static_cast<char>(i * 31 + i / 251);
    return text;
}

TEST(Download, RequestHoldsNothingButWhatItMust) {
    const RawServer server([](int fd, const std::string&) {
        sandbox::sendAll(fd, "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nhi");
    });
    EXPECT_EQ(fetch(urlOn(server.port(), "/a?b=c"), "Kestrin Installer mac Velnor").body, "hi");
    EXPECT_EQ(server.heads().at(0),
              "GET /a?b=c HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(server.port()) +
                  "\r\nUser-Agent: Kestrin Installer mac Velnor\r\n"
                  "Accept-Encoding: gzip\r\n\r\n");
    EXPECT_EQ(server.heads().size(), 1U);
}

TEST(Download, BodiesOfAnySizeComeWhole) {
    FileServer server;
    for (const size_t size : {0U, 1U, 1023U, 1024U, 1025U, 200'000U, 5'000'000U}) {
        server.serve("/file", pattern(size));
        const Fetched fetched = fetch(urlOn(server.port()));
        EXPECT_TRUE(fetched.body == pattern(size)) << size;
        EXPECT_EQ(fetched.size, size);
        EXPECT_EQ(fetched.lastError, 99U) << "a success sets no code";
        const velnor::OwnedText uncounted(
            _vn_downloadVelnorURL("a", urlOn(server.port()).c_str(), nullptr, nullptr, 0, 0));
        EXPECT_TRUE(uncounted) << size;
    }
}

TEST(Download, EncodedBodies) {
    const std::string step(128 * 1024, 'z');
    const std::string text = pattern(300'000);
    const std::string packed = gzip(text);
    const std::string tiny = gzip("");
    const struct {
        const char* what;
        const char* encoding;
        std::string sent;
        std::optional<std::string> body;
        uint32_t lastError;
    } rows[] = {
        {"gzip", "gzip", packed, text, 99},
        {"exactly one step", "gzip", gzip(step), step, 99},
        {"a byte more", "gzip", gzip(step + "x"), step + "x", 99},
        {"nothing inside", "gzip", tiny, "", 99},
        {"followed by more", "gzip", packed + "garbage", text, 99},
        {"upper case is unknown", "GZIP", packed, packed, 99},
        {"deflate is unknown", "deflate", packed, packed, 99},
        {"10 bytes", "gzip", packed.substr(0, 10), std::nullopt, 1},
        {"empty", "gzip", "", std::nullopt, 1},
        {"11 bytes", "gzip", packed.substr(0, 11), std::nullopt, 99},
        {"without its check sum", "gzip", packed.substr(0, packed.size() - 1), std::nullopt, 99},
        {"no gzip at all", "gzip", pattern(50), std::nullopt, 99},
        {"flipped", "gzip", packed.substr(0, packed.size() - 8) + "12345678", std::nullopt, 99},
    };
    FileServer server;
    for (const auto& row : rows) {
        server.serve("/file", Reply{200, row.sent, {{"Content-Encoding", row.encoding}}});
        const size_t before = server.requests().size();
        const Fetched fetched = fetch(urlOn(server.port()));
        EXPECT_TRUE(fetched.body == row.body) << row.what;
        EXPECT_EQ(fetched.lastError, row.lastError) << row.what;
        EXPECT_EQ(fetched.size, row.body ? row.body->size() : 0U) << row.what;
        EXPECT_EQ(server.requests().size() - before, row.body ? 1U : 2U) << row.what;
    }
}

TEST(Download, AGzipBodyNeedsACount) {
    FileServer server;
    server.serve("/file", Reply{200, gzip(pattern(1000)), {{"content-encoding", "gzip"}}});
    EXPECT_EQ(_vn_downloadVelnorURL("a", urlOn(server.port()).c_str(), nullptr, nullptr, 0, 0),
              nullptr);
    EXPECT_EQ(_vn_getLastError(), INSTALL_ERROR_INVALIDARGUMENT + 0U);
    EXPECT_EQ(server.requests().size(), 2U);
}

TEST(Download, AnyOtherStatusIsAskedForTwice) {
    FileServer server;
    for (const int status : {201, 206, 404, 500, 503}) {
        server.serve("/file", Reply{status, "some text", {}});
        const size_t before = server.requests().size();
        const Fetched fetched = fetch(urlOn(server.port()));
        EXPECT_EQ(fetched.body, std::nullopt) << status;
        EXPECT_EQ(fetched.lastError, 99U) << status;
        EXPECT_EQ(fetched.size, 0xffffffffU) << status;
        EXPECT_EQ(server.requests().size() - before, 2U) << status;
    }
}

TEST(Download, UnusableTextsNeverReachTheNetwork) {
    const RawServer server(RawServer::blackHole());
    const std::string url = urlOn(server.port());
    const std::string userAgents[] = {"caf\xc3\xa9", "a\r\nX-Other: 1", "a\nb", "\x7f"};
    for (const std::string& userAgent : userAgents) {
        EXPECT_EQ(fetch(url, userAgent.c_str()).body, std::nullopt) << userAgent;
    }
    for (const char* tail :
         {" ", "\xc3\xa9", "\r\n", "%", "%4", "%zz", "<", "\"", "\\", "^", "{"}) {
        EXPECT_EQ(fetch(url + tail).body, std::nullopt) << tail;
    }
    EXPECT_EQ(_vn_downloadVelnorURL(nullptr, url.c_str(), nullptr, nullptr, 0, 0), nullptr);
    EXPECT_EQ(_vn_downloadVelnorURL("a", nullptr, nullptr, nullptr, 0, 0), nullptr);
    EXPECT_EQ(server.connections(), 0U);
}

TEST(Download, OtherSchemesAndDeadPortsFailAtOnce) {
    for (const char* url : {"ftp://127.0.0.1/x", "file:///etc/passwd", "nothing", "://x", "http://",
                            "http://127.0.0.1:1/x", "http://no-such-host.example/x"}) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(fetch(url).body, std::nullopt) << url;
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2)) << url;
    }
}

// Downloads once for each allocation that can fail; returns how often nothing came.
size_t failEveryAllocation(const std::string& url, const std::string& body) {
    size_t failures = 0;
    for (size_t number = 1; number < 200; ++number) {
        _vn_setLastError(0);
        uint32_t size = 0;
        harness::FailingAllocation fail(number);
        const velnor::OwnedText fetched(
            _vn_downloadVelnorURL("a", url.c_str(), &size, nullptr, 0, 0));
        if (!fail.end()) return failures;
        if (fetched) {
            EXPECT_TRUE(std::string(fetched.get(), size) == body) << number;
        } else {
            EXPECT_EQ(_vn_getLastError(), INSTALL_ERROR_INSUFFICIENTMEMORY + 0U) << number;
            ++failures;
        }
    }
    ADD_FAILURE() << "no end of allocations";
    return failures;
}

TEST(Download, EveryFailedAllocationEndsInTheWholeBodyOrNone) {
    const std::string text = pattern(300'000);
    FileServer server;
    server.serve("/file", Reply{200, gzip(text), {{"Content-Encoding", "gzip"}}});
    EXPECT_EQ(failEveryAllocation(urlOn(server.port()), text), 0U) << "the second attempt helps";

    const RawServer unannounced([&](int fd, const std::string&) {
        sandbox::sendAll(fd, "HTTP/1.1 200 OK\r\n\r\n" + text);
    });
    EXPECT_GT(failEveryAllocation(urlOn(unannounced.port()), text), 0U) << "no second attempt";
}

}  // namespace
