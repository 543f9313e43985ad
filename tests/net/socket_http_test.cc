// The plain HTTP client against replies, URLs and peers of every kind.
#include "net/socket_http.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <csignal>

#include "net/fetch.h"
#include "net/socket.h"
#include "support/url.h"
#include "velnor/capi.h"

namespace {

using sandbox::RawServer;
using velnor::OwnedText;

const std::string kOk = "HTTP/1.0 200 OK\r\n";

Fetched fetchPlain(const std::string& url) {
    return fetchBy([&](uint32_t* size) {
        return _vn_downloadURL("agent", url.c_str(), nullptr, size, nullptr);
    });
}

std::string replyOfLength(const std::string& length, const std::string& body) {
    return kOk + "Content-Length: " + length + "\r\n\r\n" + body;
}

TEST(SocketHttp, EachReplyHasItsOutcome) {
    const auto headOf = [](size_t size) {
        return kOk + "A: " + std::string(size - kOk.size() - 7, 'a') + "\r\n\r\n";
    };
    const std::string location = "\r\nLocation: http://127.0.0.1:1/\r\n\r\n";
    const std::string large = pattern(10 * 1024 * 1024);
    const struct {
        std::string reply;
        std::optional<std::string> body;
        uint32_t code = kUntouched;
    } rows[] = {
        {replyOfLength("10485760", large), large},
        {kOk + "\r\n" + large, large},
        {kOk + "content-length: 3\r\n\r\nabcdef", "abcdef"},
        {replyOfLength("3junk", "abcdef"), "abc"},
        {kOk + "\r\nContent-Length: 2", "Co"},  // searched for in all that has come
        {headOf(4096) + std::string("a\0b", 3), std::string("a\0b", 3)},
        {headOf(4097), std::nullopt, INSTALL_ERROR_NETWORK},
        {kOk + "\r", std::nullopt, INSTALL_ERROR_NETWORK},
        {replyOfLength("10", "012345678"), std::nullopt, INSTALL_ERROR_NETWORK},
        {"A\r\n\r\n", std::nullopt, INSTALL_ERROR_NETWORK},
        {"A\r\n\r\n200 OK", std::nullopt},
        {replyOfLength("0", "a"), std::nullopt, INSTALL_ERROR_INSUFFICIENTMEMORY},
        {replyOfLength("10485761", "a"), std::nullopt, INSTALL_ERROR_INSUFFICIENTMEMORY},
        {"HTTP/1.0 299 Odd" + location, std::nullopt},
        {"HTTP/1.0 399 Odd" + location, std::nullopt, INSTALL_ERROR_NETWORK},
        {"HTTP/1.0 302 Found\r\n\r\nto nothing", std::nullopt},
        {"HTTP/1.0 302 Found\r\nLocation: https://127.0.0.1/\r\n\r\n", std::nullopt,
         INSTALL_ERROR_INVALIDARGUMENT},
    };
    for (const auto& row : rows) {
        const Fetched fetched = fetchPlain(urlOn(answering(row.reply).port()));
        EXPECT_TRUE(fetched.body == row.body) << row.reply.substr(0, 80);
        EXPECT_EQ(fetched.lastError, row.code) << row.reply.substr(0, 80);
    }
}

TEST(SocketHttp, RedirectsAreFollowedHoweverMany) {
    constexpr int kLastPort = 65535;
    const std::string again = "HTTP/1.0 302 Found\r\nLocation: " + urlOn(kLastPort) + "\r\n\r\n";
    const RawServer server(
        [&, left = 200](int fd, const std::string&) mutable {
            sandbox::sendAll(fd, left-- > 0 ? again : replyOfLength("7", "arrived"));
        },
        kLastPort);
    EXPECT_EQ(fetchPlain(urlOn(kLastPort)).body, "arrived");
}

TEST(SocketHttp, UrlsThatLeadNowhere) {
    const RawServer there = answering(replyOfLength("1", "x"));
    const auto onPort = [&](long more) {
        return "http://127.0.0.1:" + std::to_string(there.port() + more) + "/";
    };
    const std::pair<std::string, uint32_t> rows[] = {
        {"http://127.0.0.1", INSTALL_ERROR_INVALIDARGUMENT},
        {"HTTP" + onPort(0).substr(4), INSTALL_ERROR_INVALIDARGUMENT},
        {"http://nobody.example/", INSTALL_ERROR_INVALIDARGUMENT},
        {"http://[::1]:80/", INSTALL_ERROR_INVALIDARGUMENT},
        {"http://127.0.0.1:9/", INSTALL_ERROR_NETWORK},
        {"http://127.0.0.1:/", INSTALL_ERROR_NETWORK},  // port 0
        {onPort(1L << 16), INSTALL_ERROR_NETWORK},
        {onPort(1L << 32), INSTALL_ERROR_NETWORK},
    };
    for (const auto& [url, code] : rows) EXPECT_EQ(fetchPlain(url).lastError, code) << url;
    EXPECT_EQ(there.connections(), 0U);
    EXPECT_EQ(_vn_downloadURL("agent", nullptr, nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(_vn_openSocket(nullptr, 80), -1);
    OwnedText copy;
    char *host = nullptr, *path = nullptr;
    int32_t port = 7;
    EXPECT_EQ(_vn_getHostName("any://h", copy.out(), &host, nullptr, &path), 0);
    EXPECT_EQ(_vn_getHostName(nullptr, nullptr, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(_vn_getHostName("any://h", copy.out(), &host, &port, &path), 1);
    EXPECT_EQ(port, 7) << "stays, where the URL names none";
    EXPECT_EQ(path, nullptr);
}

TEST(SocketHttp, SocketStaysOpenForFurtherRequests) {
    const RawServer server([](int fd, const std::string&) {
        sandbox::sendAll(fd, replyOfLength("1", "1"));
        if (!sandbox::readHead(fd).empty()) sandbox::sendAll(fd, replyOfLength("1", "2"));
        sandbox::readHead(fd);
    });
    int32_t fd = -1;
    uint32_t length = 0;
    const std::string url = urlOn(server.port(), "/p?q");
    const OwnedText first(_vn_downloadURL("agent", url.c_str(), &fd, nullptr, nullptr));
    EXPECT_STREQ(first.get(), "1");
    EXPECT_EQ(server.heads().at(0),
              "GET /p?q HTTP/1.0\r\nHost: 127.0.0.1\r\nUser-Agent: agent\r\n"
              "Connection: keep-alive\r\n\r\n");
    const velnor::Socket socket(fd);
    OwnedText headers;
    const OwnedText second(_vn_downloadPathFromSocket("a", "p", "h", fd, headers.out(), &length));
    EXPECT_STREQ(second.get(), "2");
    EXPECT_EQ(headers.get(), kOk + "Content-Length: 1\r\n\r\n");
    EXPECT_EQ(length, 1U);
    // The peer hangs up now: a request fails, and no signal ends the process.
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(_vn_downloadPathFromSocket("a", "p", "h", fd, headers.out(), nullptr), nullptr);
        EXPECT_FALSE(headers);
    }
}

TEST(SocketHttp, RequestsThatCannotBeWrittenAreNotSent) {
    const RawServer server = answering(replyOfLength("1", "x"));
    const velnor::Socket socket(_vn_openSocket("localhost", server.port()));
    const auto codeOf = [&](const char* agent, const char* path, const char* host) {
        const Fetched fetched = fetchBy([&](uint32_t* size) {
            return _vn_downloadPathFromSocket(agent, path, host, socket.get(), nullptr, size);
        });
        EXPECT_EQ(fetched.body, std::nullopt);
        return fetched.lastError;
    };
    for (const char* text : {"a\r\nX: y", "a\nX: y", "a\r", static_cast<const char*>(nullptr)}) {
        for (const uint32_t code :
             {codeOf(text, "p", "h"), codeOf("a", text, "h"), codeOf("a", "p", text)}) {
            EXPECT_EQ(code, INSTALL_ERROR_INVALIDARGUMENT + 0U);
        }
    }
    EXPECT_EQ(codeOf("a", std::string(1000, 'x').c_str(), "h"), kUntouched);
    shutdown(socket.get(), SHUT_WR);
    EXPECT_EQ(codeOf("a", "p", "h"), kUntouched) << "not taken by the connection";
}

// Every millisecond a signal, which would end system calls of the servers' threads too.
TEST(SocketHttp, SignalsNeitherCutAReplyNorProlongSilence) {
    const std::string body(200, 'b');
    sigset_t alarm;
    sigemptyset(&alarm);
    sigaddset(&alarm, SIGALRM);
    pthread_sigmask(SIG_BLOCK, &alarm, nullptr);
    const RawServer slow([&](int fd, const std::string&) {
        for (const char c : kOk + "Content-Length: 200\r\n\r\n" + body) {
            usleep(500);
            sandbox::sendAll(fd, std::string(1, c));
        }
    });
    const RawServer silent([](int fd, const std::string&) {
        sandbox::sendAll(fd, kOk + "\r\nhalf of it");
        sandbox::readHead(fd);  // until the other side goes
    });
    struct sigaction action {};
    action.sa_handler = [](int) {};  // without SA_RESTART
    sigaction(SIGALRM, &action, nullptr);
    pthread_sigmask(SIG_UNBLOCK, &alarm, nullptr);
    ualarm(1000, 1000);
    EXPECT_EQ(fetchPlain(urlOn(slow.port())).body, body);
    const velnor::Socket unlimited(_vn_openSocket("127.0.0.1", slow.port()));
    EXPECT_EQ(
        OwnedText(_vn_downloadPathFromSocket("a", "p", "h", unlimited.get(), nullptr, nullptr))
            .get(),
        body);
    const Fetched cut = fetchPlain(urlOn(silent.port()));
    EXPECT_EQ(cut.body, std::nullopt);
    EXPECT_EQ(cut.lastError, INSTALL_ERROR_NETWORK + 0U);
}

}  // namespace
