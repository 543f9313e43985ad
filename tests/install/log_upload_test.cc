// What of the log is sent where, directly and through a proxy, which answers count, and every
// refusal.
#include "install/log_upload.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <chrono>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include "harness/harness.h"
#include "net/fetch.h"
#include "net/proxy_peer.h"

namespace {

using sandbox::FileServer;
using sandbox::RawServer;
using sandbox::Reply;
using sandbox::Request;
using Lines = std::vector<std::string>;

const std::string kGuid = "0123456789abcdef0123456789abcdef";
const std::string kLog = harness::installed("installer.txt");
const std::string kError = "[eror] _vn_uploadLogs: ";
const std::string kEmpty = "Content-Length: 0\r\n\r\n";
const std::string kOk = "HTTP/1.1 200 OK\r\n" + kEmpty;

// Uploads a log that begins with `text` and returns what went into the log meanwhile, without the
// line that announces the upload.
Lines upload(const std::string& url, const std::string& text = "") {
    harness::makeInstallDirectory();
    harness::writeFile(kLog, text);
    _vn_uploadLogs(url.c_str(), kGuid.c_str());
    harness::writeFile(kLog, harness::readFile(kLog).substr(text.size()));
    Lines lines = harness::logMessages();
    EXPECT_EQ(lines.at(0), "[info] _vn_uploadLogs: Uploading the log file " + kLog + " to " + url);
    lines.erase(lines.begin());
    return lines;
}

std::string couldNot(const std::string& url) {
    return kError + "Could not upload logs to " + url + ". Got error 0";
}

TEST(LogUpload, SendsTheLogUpToItsFirstNulUnderTheMachinesName) {
    const RawServer server([](int fd, const std::string&) { sandbox::sendAll(fd, kOk); });
    const std::string origin = urlOn(server.port(), "");
    const std::string longPath = "/" + std::string(210, 'p') + "/";
    const std::pair<std::string, std::string> rows[] = {
        {"/put", "/put/" + kGuid + ".log"},
        {"/a/b?c=/", "/a/b?c=/" + kGuid + ".log"},
        {"/", "//" + kGuid + ".log"},  // the path is empty, and does not end in "/"
        {longPath, (longPath + kGuid).substr(0, 255 - origin.size())},
    };
    Lines heads;
    for (const auto& [path, target] : rows) {
        EXPECT_EQ(upload(origin + path, std::string("what happened\n\0rest", 19)), Lines{});
        heads.push_back("PUT " + target + " HTTP/1.1\r\nHost: " + origin.substr(7) +
                        "\r\nUser-Agent: Installer\r\nContent-Length: 14\r\n\r\n");
    }
    EXPECT_EQ(server.heads(), heads);
}

TEST(LogUpload, AnswersThatEndIt) {
    const struct {
        std::string answer;
        size_t requests;  // one for each attempt
    } rows[] = {
        {"HTTP/1.1 201 Created\r\n" + kEmpty, 2},
        {"HTTP/1.1 407 Who are you\r\n" + kEmpty, 1},  // to whom?
        {"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc", 1},
        {"220 mail.example ready\r\n", 1},
        {"HTTP/1.1 302 Found\r\nLocation: /put/\r\nConnection: close\r\n" + kEmpty, 21},
    };
    for (const auto& row : rows) {
        const RawServer server(
            [&](int fd, const std::string&) { sandbox::sendAll(fd, row.answer); });
        const std::string url = urlOn(server.port(), "/put/");
        EXPECT_EQ(upload(url), Lines{couldNot(url)}) << row.answer;
        EXPECT_EQ(server.heads().size(), row.requests) << row.answer;
    }
}

TEST(LogUpload, RedirectsAreFollowedWithTheLog) {
    FileServer server;
    server.handle("/other", [](const Request&) { return Reply{}; });
    for (const auto& [status, expected] : {std::pair{302, "PUT body"}, {303, "GET"}}) {
        server.handle("/put/", [&](const Request&) {
            return Reply{status, "", {{"Location", urlOn(server.port(), "/other")}}};
        });
        EXPECT_EQ(upload(urlOn(server.port(), "/put/")), Lines{}) << status;
        const Request last = server.requests().back();
        EXPECT_EQ(last.method + (last.body.empty() ? "" : " body"), expected) << status;
    }
}

// More than a proxy takes before it answers, and more than libcurl sends without being asked to.
const std::string kLongText = std::string(3 * 1024 * 1024, 'x') + "\n";

void useProxyWithPassword() {
    startKeyring();
    storePassword("http", "s3cret pass");
    setenv("http_proxy", urlOn(3128, "").c_str(), 1);
}

void expectWholeThrough(Demand demand) {
    FileServer server;
    server.handle("/put/", [](const Request&) { return Reply{}; });
    useProxyWithPassword();
    const ProxyPeer proxy(demand);
    EXPECT_EQ(upload(urlOn(server.port(), "/put/"), kLongText), Lines{});
    proxy.expectRequests({"PUT 407", "PUT 200"});
    ASSERT_FALSE(server.requests().empty());
    const Request arrived = server.requests().back();
    EXPECT_TRUE(arrived.body.starts_with(kLongText));
    EXPECT_NE(arrived.header("Via"), "");
    EXPECT_EQ(arrived.header("Expect") + arrived.header("Proxy-Authorization"), "");
}
TEST(LogUpload, GoesWholeThroughAProxyThatWantsThePassword) { expectWholeThrough(Demand::Basic); }
TEST(LogUpload, GoesWholeThroughAProxyThatWantsADigest) { expectWholeThrough(Demand::Digest); }

// To a demand for NTLM libcurl begins with a request without the log; this proxy lets it pass.
TEST(LogUpload, IsNotDeliveredWithoutTheLog) {
    useProxyWithPassword();
    FileServer proxy(3128);
    proxy.handle("http://", [&](const Request&) {
        return proxy.requests().size() > 1
                   ? Reply{}
                   : Reply{407, "", {{"Proxy-Authenticate", "NTLM"}, {"Connection", "close"}}};
    });
    EXPECT_EQ(upload(urlOn(1, "/put/"), kLongText), Lines{couldNot(urlOn(1, "/put/"))});
    EXPECT_EQ(proxy.requests().back().body, "");
}

TEST(LogUpload, GoesOnEverMoreSlowlyUntilAnAnswerComes) {
    constexpr int kPort = 8123;
    auto uploaded = std::async(std::launch::async, [] { return upload(urlOn(kPort, "/put/")); });
    std::this_thread::sleep_for(std::chrono::milliseconds(200));  // refused at first
    std::vector<std::chrono::steady_clock::time_point> times;
    const RawServer server(
        [&](int fd, const std::string&) {
            times.push_back(std::chrono::steady_clock::now());
            if (times.size() == 4) sandbox::sendAll(fd, kOk);
        },
        kPort);
    EXPECT_EQ(uploaded.get(), Lines{});
    ASSERT_EQ(times.size(), 4U);
    EXPECT_GE(times.at(3) - times.at(0), std::chrono::milliseconds(50 + 100 + 200));
}

TEST(LogUpload, UrlsAndLogsThatAreRefused) {
    const std::pair<std::string, std::string> rows[] = {
        {"", kError + "No upload URL"},
        {"HTTP://127.0.0.1/put/", kError + "Not a valid upload URL: HTTP://127.0.0.1/put/"},
        {"http://127.0.0.1", kError + "Not a valid upload URL, has no path: http://127.0.0.1"},
        {"http:///put/", couldNot("http:///put/")},
        {"http://127.0.0.1:port/%n%s/", couldNot("http://127.0.0.1:port/%n%s/")},
    };
    for (const auto& [url, message] : rows) EXPECT_EQ(upload(url), Lines{message});
    _vn_uploadLogs(nullptr, kGuid.c_str());
    EXPECT_EQ(harness::logMessages().back(), kError + "No upload URL");

    const FileServer server;
    harness::writeFile(kLog, "");
    chmod(kLog.c_str(), 0400);  // nothing can be logged there, so it stays empty
    _vn_uploadLogs(urlOn(server.port(), "/put/").c_str(), kGuid.c_str());
    chmod(kLog.c_str(), 0200);
    _vn_uploadLogs(urlOn(server.port(), "/put/").c_str(), kGuid.c_str());
    chmod(kLog.c_str(), 0600);
    EXPECT_EQ(harness::logMessages().back(), kError + "Unable to open log file: " + kLog);
    EXPECT_TRUE(server.requests().empty());
}

}  // namespace
