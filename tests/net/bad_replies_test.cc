// Replies that are cut, slow, oddly framed or no HTTP at all.
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <string>

#include "net/fetch.h"
#include "sandbox/servers/raw_server.h"

namespace {

using sandbox::RawServer;

TEST(BadReply, CutAtEveryByteGivesNothing) {
    const std::string replies[] = {
        "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n0123456789",
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: "
        "chunked\r\n\r\n4\r\n0123\r\n6\r\n456789\r\n0\r\n\r\n",
    };
    for (const std::string& reply : replies) {
        size_t length = 0;
        const RawServer server(
            [&](int fd, const std::string&) { sandbox::sendAll(fd, reply.substr(0, length)); });
        for (; length < reply.size(); ++length) {
            // The two closing bytes of a chunked body carry nothing: it may count as whole.
            const bool chunked = reply.find("chunked") != std::string::npos;
            const bool mayBeWhole = chunked && length >= reply.size() - 2;
            const Fetched fetched = fetch(urlOn(server.port()));
            EXPECT_TRUE(!fetched.body || mayBeWhole) << reply.substr(0, length);
        }
        EXPECT_EQ(fetch(urlOn(server.port())).body, "0123456789");
    }
}

TEST(BadReply, IsRefused) {
    const std::string replies[] = {
        "hello",
        "HTTP/1.1 200 OK\r\nContent-Length: 99999999999999999999\r\n\r\nx",
        "HTTP/1.1 200 OK\r\nContent-Length: 9223372036854775807\r\n\r\nx",
    };
    for (const std::string& reply : replies) {
        const RawServer server([&](int fd, const std::string&) { sandbox::sendAll(fd, reply); });
        EXPECT_EQ(fetch(urlOn(server.port())).body, std::nullopt) << reply.substr(0, 80);
        EXPECT_EQ(server.connections(), 2U) << reply.substr(0, 80);
    }
}

TEST(BadReply, AnyOtherHonestFramingIsRead) {
    const std::pair<const char*, const char*> rows[] = {
        {"HTTP/1.1 200 OK\r\n\r\nuntil the end", "until the end"},
        {"HTTP/1.1 200 OK\ncontent-length: 2\n\nhi", "hi"},
        // A length that does not count, and a line behind the body.
        {"HTTP/1.1 200 OK\r\nContent-Length: 5\r\nTransfer-Encoding: chunked\r\n\r\n"
         "2\r\nhi\r\n0\r\nX: y\r\n\r\n",
         "hi"},
    };
    for (const auto& [reply, body] : rows) {
        const RawServer server([reply = std::string(reply)](int fd, const std::string&) {
            sandbox::sendAll(fd, reply);
        });
        EXPECT_EQ(fetch(urlOn(server.port())).body, body) << reply;
    }
}

// More stirs of the socket than there are polls, none of which is an answer yet; then a body that
// takes as many reads.
TEST(SlowReply, IsWaitedFor) {
    const RawServer server([](int fd, const std::string&) {
        const auto drip = [fd] {
            for (int i = 0; i < 400; ++i) {
                sandbox::sendAll(fd, "x");
                usleep(2000);
            }
        };
        sandbox::sendAll(fd, "HTTP/1.1 200 OK\r\nContent-Length: 400\r\nX-Padding: ");
        drip();
        sandbox::sendAll(fd, "\r\n\r\n");
        drip();
    });
    EXPECT_EQ(fetch(urlOn(server.port())).body, std::string(400, 'x'));
    EXPECT_EQ(server.connections(), 1U);
}

TEST(SlowReply, AServerThatNeverAnswersCostsFifteenSecondsAnAttempt) {
    const RawServer server(RawServer::blackHole());
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(fetch(urlOn(server.port())).body, std::nullopt);
    const auto seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start);
    EXPECT_NEAR(seconds.count(), 30, 1);
    EXPECT_EQ(server.connections(), 2U);
}

}  // namespace
