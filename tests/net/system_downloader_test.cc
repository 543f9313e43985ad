// What a download sends; what it makes of replies: whole, encoded, cut, slow, oddly framed or no
// HTTP at all; where redirects lead; and whom it trusts over TLS.
#include "net/system_downloader.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <future>

#include "harness/harness.h"
#include "net/fetch.h"

namespace {

using harness::gzip;
using sandbox::RawServer;

TEST(Download, PlainAndEncodedBodies) {
    const std::string step(128 * 1024, 'z');
    const std::string text = pattern(5'000'000);
    const std::string packed = gzip(text);
    const struct {
        const char* what;
        const char* encoding;
        std::string sent;
        std::optional<std::string> body;
        uint32_t lastError = kUntouched;
    } rows[] = {
        {"plain", "", text, text},
        {"nothing", "", "", ""},
        {"gzip", "gzip", packed, text},
        {"exactly one step", "gzip", gzip(step), step},
        {"followed by more", "gzip", packed + "garbage", text},
        {"upper case is unknown", "GZIP", packed, packed},
        {"10 bytes", "gzip", packed.substr(0, 10), std::nullopt, 1},
        {"11 bytes", "gzip", packed.substr(0, 11), std::nullopt},
        {"without its check sum", "gzip", packed.substr(0, packed.size() - 1), std::nullopt},
        {"flipped", "gzip", packed.substr(0, packed.size() - 8) + "12345678", std::nullopt},
    };
    sandbox::FileServer server;
    const std::string url = urlOn(server.port());
    for (const auto& row : rows) {
        server.serve("/file", sandbox::Reply{200, row.sent, {{"content-encoding", row.encoding}}});
        const size_t before = server.requests().size();
        const Fetched fetched = fetch(url);
        EXPECT_TRUE(fetched.body == row.body) << row.what;
        EXPECT_EQ(fetched.lastError, row.lastError) << row.what;
        EXPECT_EQ(fetched.size, row.body ? row.body->size() : 0U) << row.what;
        EXPECT_EQ(server.requests().size() - before, row.body ? 1U : 2U) << row.what;
        // Without a count it takes no encoded body.
        const velnor::OwnedText uncounted(
            _vn_downloadVelnorURL("a", url.c_str(), nullptr, nullptr, 0, 0));
        EXPECT_EQ(uncounted.get() != nullptr, row.encoding != std::string("gzip")) << row.what;
    }
}

TEST(Download, RepliesThatAreReadAndThatAreAskedForTwice) {
    const std::string ok = "HTTP/1.1 200 OK\r\n";
    const std::string chunked = ok + "Transfer-Encoding: chunked\r\n\r\n4\r\n0123\r\n6\r\n4567";
    const std::pair<std::string, std::optional<std::string>> rows[] = {
        {ok + "\r\nuntil the end", "until the end"},
        {"HTTP/1.1 200 OK\ncontent-length: 2\n\nhi", "hi"},
        {"HTTP/1.1 100 Continue\r\n\r\n" + ok + "\r\nhi", "hi"},
        {chunked + "89\r\n0\r\n\r\n", "0123456789"},
        // A length that does not count, and a line behind the body.
        {ok + "Content-Length: 5\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nhi\r\n0\r\nX: y\r\n\r\n",
         "hi"},
        {ok + "Content-Length: 99999999999999999999\r\n\r\nx", std::nullopt},
        {"hello", std::nullopt},
        {"HTTP/1.1 201 Created\r\nContent-Length: 1\r\n\r\nx", std::nullopt},
        {"HTTP/1.1 404 Not Found\r\nContent-Length: 1\r\n\r\nx", std::nullopt},
        // Cut short.
        {"H", std::nullopt},
        {"HTTP/1.1 100 Continue\r\n\r\n", std::nullopt},
        {"HTTP/1.1 100 Continue\r\n\r\n" + ok + "Content-Length: 1", std::nullopt},
        {ok + "Content-Length: 2\r\n\r\n0", std::nullopt},
        {chunked, std::nullopt},
    };
    for (const auto& [reply, body] : rows) {
        const RawServer server = answering(reply);
        const Fetched fetched = fetch(urlOn(server.port(), "/a?b=c"));
        EXPECT_EQ(server.heads().at(0),
                  "GET /a?b=c HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(server.port()) +
                      "\r\nUser-Agent: test agent\r\nAccept-Encoding: gzip\r\n\r\n");
        EXPECT_EQ(fetched.body, body) << reply;
        EXPECT_EQ(fetched.size, body ? body->size() : 0xffffffff) << reply;
        EXPECT_EQ(fetched.lastError, kUntouched) << reply;
        EXPECT_EQ(server.connections(), body ? 1U : 2U) << reply;
    }
}

// More stirs of the socket than there are polls, none of which is an answer yet; then a body that
// takes as many reads.
TEST(Download, SlowReplyIsWaitedFor) {
    const RawServer server([](int fd, const std::string&) {
        for (const char* head :
             {"HTTP/1.1 200 OK\r\nContent-Length: 400\r\nX-Padding: ", "\r\n\r\n"}) {
            sandbox::sendAll(fd, head);
            for (int i = 0; i < 400; ++i) {
                sandbox::sendAll(fd, "x");
                usleep(2000);
            }
        }
    });
    EXPECT_EQ(fetch(urlOn(server.port())).body, std::string(400, 'x'));
    EXPECT_EQ(server.connections(), 1U);
}

double secondsToFail(const std::string& url) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(fetch(url).body, std::nullopt);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// One that takes the request, and one that does not even take part in the TLS handshake.
TEST(Download, SilenceCostsFifteenSecondsAnAttempt) {
    const RawServer plain(RawServer::blackHole());
    const RawServer secure(RawServer::blackHole());
    auto other = std::async(std::launch::async, secondsToFail,
                            "https://localhost:" + std::to_string(secure.port()) + "/");
    for (const double seconds : {secondsToFail(urlOn(plain.port())), other.get()}) {
        EXPECT_GE(seconds, 29.8);
        EXPECT_LE(seconds, 120);
    }
    EXPECT_EQ(plain.connections() + secure.connections(), 2U + 2U);
}

TEST(Download, UnusableTextsNeverReachTheNetwork) {
    const RawServer server(RawServer::blackHole());
    const std::string url = urlOn(server.port());
    const std::string address = url.substr(7);
    for (const char* userAgent : {"caf\xc3\xa9", "a\r\nX-Other: 1", "\x7f"}) {
        EXPECT_EQ(fetch(url, userAgent).body, std::nullopt) << userAgent;
    }
    for (const std::string& text :
         {url + " ", url + "\xc3\xa9", url + "\r\n", url + "%4", url + "%zz", url + "<",
          "http:///" + address, "ftp://" + address}) {
        EXPECT_EQ(fetch(text).body, std::nullopt) << text;
    }
    EXPECT_EQ(_vn_downloadVelnorURL(nullptr, url.c_str(), nullptr, nullptr, 0, 0), nullptr);
    EXPECT_EQ(_vn_downloadVelnorURL("a", nullptr, nullptr, nullptr, 0, 0), nullptr);
    EXPECT_EQ(server.connections(), 0U);
}

TEST(Download, NobodyThereFailsAtOnce) {
    for (const char* url : {"http://127.0.0.1:1/x", "http://no-such-host.example/x"}) {
        EXPECT_LT(secondsToFail(url), 14) << url;
    }
}

using Redirects = Origins;

TEST_F(Redirects, AreFollowedFromAnyKindWithoutTheTextOnTheWay) {
    for (const int status : {301, 302, 303, 307, 308}) {
        EXPECT_EQ(fetchRedirected("/file", status), "here") << status;
        EXPECT_EQ(fetchRedirected(secure("/file"), status), "secure") << status;
        EXPECT_EQ(https_.requests().back().header("User-Agent"), "test agent");
        EXPECT_EQ(https_.requests().back().header("Accept-Encoding"), "gzip");
    }
    // Blanks in a target are encoded.
    const sandbox::RawServer there = answering("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
    EXPECT_EQ(fetchRedirected(urlOn(there.port(), "/a b%20c")), "");
    EXPECT_TRUE(there.heads().back().starts_with("GET /a%20b%20c HTTP/1.1\r\n"));
}

TEST_F(Redirects, ThatLeadNowhereFail) {
    https_.serve("/down", redirect(plain("/file")));
    for (const std::string& target : {std::string("ftp://localhost/x"), std::string("http://"),
                                      std::string("file:///etc/passwd"), secure("/down")}) {
        EXPECT_EQ(fetchRedirected(target), std::nullopt) << target;
    }
    EXPECT_EQ(fetch(secure("/down")).body, std::nullopt);
    http_.serve("/old", sandbox::Reply{302, "no target", {}});
    EXPECT_EQ(fetch(plain("/old")).body, std::nullopt);
    const sandbox::RawServer cut = answering("HTTP/1.1 302 Found\r\nLocation: /next\r\nContent-Le");
    EXPECT_EQ(fetch(urlOn(cut.port())).body, std::nullopt);
    EXPECT_EQ(cut.heads().size(), 2U) << "one request for each attempt";
}

TEST(Tls, OnlyAValidCertificateOfAKnownAuthorityIsAccepted) {
    // The authority that the system does not know, beside the certificate that it signed.
    const std::string folder = sandbox::tlsFiles("untrusted").certificate;
    const std::string authority = folder.substr(0, folder.rfind('/')) + "/untrusted-ca.crt";
    const struct {
        const char* certificate;
        bool accepted;
        const char* file = nullptr;    // SSL_CERT_FILE
        const char* folder = nullptr;  // SSL_CERT_DIR
    } rows[] = {
        {"server", true},
        {"untrusted", false},
        {"expired", false},
        {"wrong-host", false},
        {"untrusted", true, authority.c_str()},
        {"server", true, authority.c_str()},  // the system's folder still counts
        {"server", false, authority.c_str(), "/no/such/folder"},
    };
    for (const auto& row : rows) {
        row.file != nullptr ? setenv("SSL_CERT_FILE", row.file, 1) : unsetenv("SSL_CERT_FILE");
        row.folder != nullptr ? setenv("SSL_CERT_DIR", row.folder, 1) : unsetenv("SSL_CERT_DIR");
        sandbox::FileServer server(0, sandbox::tlsFiles(row.certificate));
        server.serve("/file", "body");
        const std::string url = "https://localhost:" + std::to_string(server.port()) + "/file";
        EXPECT_EQ(fetch(url).body.has_value(), row.accepted) << row.certificate;
        EXPECT_EQ(server.requests().empty(), !row.accepted) << row.certificate;
    }
}

}  // namespace
