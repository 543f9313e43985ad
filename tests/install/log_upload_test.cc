// The log's upload: what is sent where, which answers count, and every refusal.
#include "install/log_upload.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "harness/allocations.h"
#include "harness/files.h"
#include "sandbox/servers/file_server.h"
#include "sandbox/servers/raw_server.h"

namespace {

using sandbox::FileServer;
using sandbox::RawServer;
using sandbox::Reply;
using sandbox::Request;
using Lines = std::vector<std::string>;

constexpr char kGuid[] = "0123456789abcdef0123456789abcdef";
const std::string kLog = harness::installed("installer.txt");
const std::string kError = "[eror] _vn_uploadLogs: ";

// Uploads a log that begins with `text` and returns what went into the log meanwhile, without the
// line that announces the upload.
Lines upload(const std::string& url, const std::string& text = "") {
    harness::makeInstallDirectory();
    harness::writeFile(kLog, "");
    const std::string announced =
        "[info] _vn_uploadLogs: Uploading the log file " + kLog + " to " + url;
    if (!text.empty()) harness::writeFile(kLog, text);
    _vn_uploadLogs(url.c_str(), kGuid);
    const std::string log = harness::readFile(kLog).substr(text.size());
    harness::writeFile(kLog, log);
    Lines lines = harness::logMessages();
    EXPECT_EQ(lines.at(0), announced);
    lines.erase(lines.begin());
    return lines;
}

std::string urlOn(int port, const std::string& path = "/put/") {
    return "http://127.0.0.1:" + std::to_string(port) + path;
}

void answerOk(int fd, const std::string& /*head*/) {
    sandbox::sendAll(fd, "HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
}

std::string couldNot(const std::string& url) {
    return kError + "Could not upload logs to " + url + ". Got error 0";
}

TEST(LogUpload, RequestCarriesTheLogUpToItsFirstNul) {
    const std::string text = "what happened\n";
    const RawServer server(answerOk);
    const std::string url = urlOn(server.port());
    EXPECT_EQ(upload(url, text + std::string("\0rest", 5)), Lines{});
    const std::string port = std::to_string(server.port());
    EXPECT_EQ(server.heads(),
              Lines{"PUT /put/" + std::string(kGuid) + ".log HTTP/1.1\r\nHost: 127.0.0.1:" + port +
                    "\r\nUser-Agent: Installer\r\nContent-Length: 14\r\n\r\n"});
}

TEST(LogUpload, NamesItsObjectAfterTheMachine) {
    FileServer server;
    server.handle("/", [](const Request&) { return Reply{}; });
    const std::string object = std::string(kGuid) + ".log";
    const std::pair<std::string, std::string> rows[] = {
        {"/put/", "/put/" + object},
        {"/put", "/put/" + object},
        {"/a/b?c=/", "/a/b?c=/" + object},
        {"/", "//" + object},  // the path is empty, and does not end in "/"
    };
    for (const auto& [path, target] : rows) {
        EXPECT_EQ(upload(urlOn(server.port(), path)), Lines{});
        EXPECT_EQ(server.requests().back().target, target);
        EXPECT_EQ(server.requests().back().method, "PUT");
        EXPECT_NE(server.requests().back().body.find("Uploading the log file"), std::string::npos);
    }
    EXPECT_EQ(server.requests().size(), std::size(rows)) << "one request each";
}

TEST(LogUpload, TargetIsCutTo255Characters) {
    FileServer server;
    server.handle("/", [](const Request&) { return Reply{}; });
    const std::string origin = urlOn(server.port(), "");
    for (const size_t length : {218, 219, 230, 255, 256, 300}) {
        const std::string path = "/" + std::string(length - origin.size() - 2, 'p') + "/";
        EXPECT_EQ(upload(origin + path), Lines{});
        EXPECT_EQ(origin + server.requests().back().target,
                  (origin + path + kGuid + ".log").substr(0, 255));
    }
}

TEST(LogUpload, AnswersThatEndIt) {
    const std::string empty = "Content-Length: 0\r\n\r\n";
    const struct {
        std::string answer;
        size_t requests;  // one for each attempt
    } rows[] = {
        {"HTTP/1.1 201 Created\r\n" + empty, 2},
        {"HTTP/1.1 204 No Content\r\n\r\n", 2},
        {"HTTP/1.1 302 Found\r\n" + empty, 2},
        {"HTTP/1.1 404 Not Found\r\n" + empty, 2},
        {"HTTP/1.1 500 Oops\r\n" + empty, 2},
        {"HTTP/1.1 407 Who are you\r\n" + empty, 1},  // to whom?
        {"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc", 1},
    };
    for (const auto& row : rows) {
        const RawServer server(
            [&](int fd, const std::string&) { sandbox::sendAll(fd, row.answer); });
        const std::string url = urlOn(server.port());
        EXPECT_EQ(upload(url), Lines{couldNot(url)}) << row.answer;
        EXPECT_EQ(server.heads().size(), row.requests) << row.answer;
    }
}

TEST(LogUpload, RedirectsAreFollowedWithTheLog) {
    FileServer server;
    const std::string elsewhere = urlOn(server.port(), "/other");
    server.handle("/other", [](const Request&) { return Reply{}; });
    for (const auto& [status, method] : {std::pair{302, "PUT"}, {307, "PUT"}, {303, "GET"}}) {
        server.handle("/put/", [&](const Request&) {
            return Reply{status, "", {{"Location", elsewhere}}};
        });
        EXPECT_EQ(upload(urlOn(server.port())), Lines{}) << status;
        EXPECT_EQ(server.requests().back().method, method) << status;
        EXPECT_EQ(server.requests().back().body.empty(), status == 303) << status;
    }
}

TEST(LogUpload, GoesOnUntilAnUnreachableServerIsThere) {
    constexpr int kPort = 9100;
    std::unique_ptr<RawServer> server;
    std::thread maker([&] {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        server = std::make_unique<RawServer>(answerOk, kPort);
    });
    const std::clock_t before = std::clock();
    EXPECT_EQ(upload(urlOn(kPort)), Lines{});
    EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 4) << "attempts without a pause";
    maker.join();
    EXPECT_EQ(server->heads().size(), 1U);
}

TEST(LogUpload, GoesOnAtAPaceWhileConnectionsAreDropped) {
    using Clock = std::chrono::steady_clock;
    std::atomic<int> count = 0;
    const RawServer server([&](int fd, const std::string& head) {
        if (++count == 4) answerOk(fd, head);
    });
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(upload(urlOn(server.port())), Lines{});
    EXPECT_EQ(server.heads().size(), 4U);
    EXPECT_GE(Clock::now() - start, 3 * std::chrono::milliseconds(50));
}

TEST(LogUpload, UrlsThatAreRefused) {
    const std::pair<std::string, std::string> rows[] = {
        {"", "No upload URL"},
        {"https://127.0.0.1/put/", "Not a valid upload URL: https://127.0.0.1/put/"},
        {"HTTP://127.0.0.1/put/", "Not a valid upload URL: HTTP://127.0.0.1/put/"},
        {"http://127.0.0.1", "Not a valid upload URL, has no path: http://127.0.0.1"},
        {"http:///put/", "Could not upload logs to http:///put/. Got error 0"},
        {"http://h h/put/", "Could not upload logs to http://h h/put/. Got error 0"},
        {"http://127.0.0.1:port/%n%s/",
         "Could not upload logs to http://127.0.0.1:port/%n%s/. "
         "Got error 0"},
    };
    for (const auto& [url, message] : rows) EXPECT_EQ(upload(url), Lines{kError + message});
    _vn_uploadLogs(nullptr, kGuid);
    EXPECT_EQ(harness::logMessages().back(), kError + "No upload URL");
}

TEST(LogUpload, LogThatIsEmptyOrCannotBeReadIsNotSent) {
    FileServer server;
    const std::string url = urlOn(server.port());
    harness::makeInstallDirectory();
    harness::writeFile(kLog, "");
    // Nothing can be logged there, so it stays empty.
    chmod(kLog.c_str(), 0400);
    _vn_uploadLogs(url.c_str(), kGuid);
    chmod(kLog.c_str(), 0200);
    _vn_uploadLogs(url.c_str(), kGuid);
    chmod(kLog.c_str(), 0600);
    EXPECT_EQ(harness::logMessages().back(), kError + "Unable to open log file: " + kLog);
    EXPECT_TRUE(server.requests().empty());
}

TEST(LogUpload, WantOfMemoryIsLogged) {
    FileServer server;
    server.handle("/", [](const Request&) { return Reply{}; });
    const std::string url = urlOn(server.port());
    harness::makeInstallDirectory();
    std::set<std::string> messages;
    for (size_t number = 1; number < 200; ++number) {
        std::filesystem::remove(kLog);
        harness::FailingAllocation fail(number);
        _vn_uploadLogs(url.c_str(), kGuid);
        if (!fail.end()) break;
        for (const std::string& message : harness::logMessages()) messages.insert(message);
    }
    const std::string expected[] = {
        kError +
            "Unable to allocate memory for buufer to read the log file. Not uploading the log "
            "files",
        kError + "Unable to get host name from the URL: " + url,
        couldNot(url),
    };
    for (const std::string& message : expected) EXPECT_TRUE(messages.contains(message)) << message;
}

}  // namespace
