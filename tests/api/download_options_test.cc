// Downloads with options, and the conversations that are longer than a request and a reply:
// challenges, resets, files in use.
#include <sys/stat.h>

#include <chrono>
#include <string>
#include <vector>

#include "api/client.h"
#include "api/scripted_client.h"
#include "harness/files.h"

namespace {

using test::Handle;
using test::kAttributes;
using test::kNull;
using test::kUrl;
using test::outcome;
using test::reply;
using test::ScriptedClient;
using test::textReply;
using Paths = std::vector<std::string>;

const std::string kQuery = test::query(0);
const std::string kAsk = "getFileAttributes" + kQuery + "&complete";
const std::string kReset = R"({"status":"PAUSED","resetdownload":true})";
const char* const kPath = "/tmp/a file";
const std::string kPathQuery = "&path=%2ftmp%2fa%20file";

TEST(DownloadOptions, BecomeFragmentsInTheirOrder) {
    DownloadOptions all{};
    all.flags = ~0U;
    all.reserved0 = all.reserved1 = all.reserved2 = 9;
    all.targetSpeed = -1;
    all.path = "/tmp/\xc3\xa9~";
    all.cookieString = "a=b; c";
    all.queryAuth = "";
    all.basicAuthUser = "user";
    all.basicAuthPassword = "p\xc3\xa9?\?>";
    all.httpDelay = 2147483647;
    DownloadOptions speed{};
    speed.flags = VN_DOWNLOAD_TARGET_SPEED | VN_DOWNLOAD_CHECK_CONTENT_MD5;
    speed.targetSpeed = 100;
    speed.basicAuthUser = "alone";
    DownloadOptions password{};
    password.basicAuthPassword = "alone";
    password.httpDelay = 5;
    const std::pair<DownloadOptions, std::string> rows[] = {
        {DownloadOptions{}, ""},
        {speed, "&targetspeed=100&checkcontentmd5"},
        {password, ""},
        {all,
         "&targetspeed=-1&delayhttp=2147483647&checkcontentmd5&path=%2ftmp%2f%c3%a9%7e"
         "&backgroundDownload=1&cookiestring=a%3db%3b%20c&queryauth="
         "&basicauth=dXNlcjpww6k%2fPz4%3d&wait=1&originonly"},
    };
    const auto expect = [](const DownloadOptions& options, const std::string& fragments) {
        const ScriptedClient client(
            {{"downloadFile", {kNull}}, {"getFileAttributes", {kAttributes}}});
        const Handle handle;
        EXPECT_EQ(outcome(vn_downloadFile(handle, 0, kUrl, &options)), 0U);
        EXPECT_EQ(client.paths(), (Paths{"downloadFile" + kQuery + fragments, kAsk}));
    };
    for (const auto& [options, fragments] : rows) expect(options, fragments);
    // By their numbers, which programs that are already built hold.
    for (const auto& [flag, fragment] : {std::pair{1U, "&targetspeed=0"},
                                         {2U, "&backgroundDownload=1"},
                                         {4U, "&wait=1"},
                                         {8U, "&delayhttp=0"},
                                         {16U, "&originonly"},
                                         {32U, ""},
                                         {64U, "&checkcontentmd5"}}) {
        DownloadOptions options{};
        options.flags = flag;
        expect(options, fragment);
    }
}

TEST(DownloadOptions, HaveTheirLimits) {
    const ScriptedClient client({{"downloadFile", {kNull}}, {"getFileAttributes", {kAttributes}}});
    const Handle handle;
    const std::string user(100, 'u');
    DownloadOptions options{};
    options.basicAuthUser = user.c_str();
    for (const auto& [length, code] : {std::pair{88, 0U}, {89, 1U}, {5000, 1U}}) {
        const std::string password(static_cast<size_t>(length), 'p');
        options.basicAuthPassword = password.c_str();
        EXPECT_EQ(outcome(vn_downloadFile(handle, 0, kUrl, &options)), code) << length;
    }
    EXPECT_EQ(client.paths().size(), 2U) << "of the one that fits";

    // With everything around it, the path below makes a request of 1023 characters.
    const std::string around = "GET /api?function=downloadFile" + kQuery +
                               "&path=%2f HTTP/1.0\r\nHost: localhost\r\nUser-Agent: Test/1.0\r\n"
                               "Connection: keep-alive\r\n\r\n";
    for (const auto& [tooMany, code] : {std::pair{0, 0U}, {1, 3U}, {300, 3U}}) {
        const std::string path = "/" + std::string(1023 - around.size() + tooMany, 'p');
        DownloadOptions longPath{};
        longPath.path = path.c_str();
        EXPECT_EQ(outcome(vn_downloadFile(handle, 0, kUrl, &longPath)), code) << tooMany;
    }
    EXPECT_EQ(client.paths().size(), 4U);
}

TEST(Challenge, IsWrittenAndTheRequestRepeatedOnce) {
    const struct {
        std::string challenge;
        std::string written;
    } rows[] = {
        {"abc", "abc"},
        {"", ""},
        {R"(a\\nb\\\\c)", "a\nb\\c"},  // escaped by JSON, and again
        {R"(a\nb)", "a\nb"},
        {R"(\\)", ""},
        {"Challenge:x", "Challenge:x"},
    };
    DownloadOptions options{};
    options.path = kPath;
    for (const auto& [challenge, written] : rows) {
        harness::writeFile(kPath, "what was here before");
        const ScriptedClient client(
            {{"downloadFile", {textReply("Challenge:" + challenge), kNull}},
             {"deleteFile", {textReply("Challenge:" + challenge), kNull}},
             {"getFileAttributes", {R"({"status":"PAUSED","path":"\/tmp\/a file"})"}}});
        const Handle handle;
        EXPECT_EQ(outcome(vn_downloadFile(handle, 0, kUrl, &options)), 0U);
        const std::string request = "downloadFile" + kQuery + kPathQuery;
        EXPECT_EQ(client.paths(), (Paths{request, request, kAsk}));
        EXPECT_EQ(harness::readFile(kPath), written) << challenge;

        harness::writeFile(kPath, "what was here before");
        EXPECT_EQ(outcome(vn_deleteFile(handle, 0, kUrl, nullptr)), 0U);
        EXPECT_EQ(client.paths().size(), 6U) << "asked, ordered, ordered again";
        EXPECT_EQ(harness::readFile(kPath), written) << challenge;
    }
}

TEST(Challenge, IsNoneWithoutItsPrefixOrAPath) {
    for (const char* text : {"challenge:a", "Challenge a", "a Challenge:"}) {
        const ScriptedClient client(
            {{"downloadFile", {textReply(text), kNull}}, {"getFileAttributes", {kAttributes}}});
        const Handle handle;
        DownloadOptions options{};
        options.path = kPath;
        EXPECT_EQ(outcome(vn_downloadFile(handle, 0, kUrl, &options)), 3U) << text;
    }
    const ScriptedClient client(
        {{"deleteFile", {textReply("Challenge:a"), kNull}}, {"getFileAttributes", {kAttributes}}});
    const Handle handle;
    EXPECT_EQ(outcome(vn_deleteFile(handle, 0, kUrl, nullptr)), 3U) << "the client names no path";
    EXPECT_EQ(client.paths().size(), 2U);
}

TEST(Challenge, MakesAnOrdinaryFileOrNone) {
    const ScriptedClient client(
        {{"downloadFile", {textReply("Challenge:abc")}}, {"getFileAttributes", {kAttributes}}});
    const Handle handle;
    DownloadOptions options{};
    const mode_t mask = umask(0);
    options.path = "/tmp/new file";
    EXPECT_EQ(outcome(vn_downloadFile(handle, 0, kUrl, &options)), 3U) << "not answered twice";
    umask(mask);
    EXPECT_EQ(harness::readFile(options.path), "abc");
    EXPECT_EQ(harness::modeOf(options.path), 0666U);
    for (const char* unopenable : {"/tmp/missing/file", "/tmp", ""}) {
        const size_t before = client.paths().size();
        options.path = unopenable;
        EXPECT_EQ(outcome(vn_downloadFile(handle, 0, kUrl, &options)), 3U);
        EXPECT_EQ(client.paths().size(), before + 3) << "repeated all the same";
    }
    EXPECT_EQ(outcome(vn_downloadFile(handle, 0, kUrl, nullptr)), 3U);
    EXPECT_TRUE(client.paths().at(client.paths().size() - 2).ends_with("b%20c")) << "not repeated";
}

TEST(ResetDownload, IsOrderedOnce) {
    const std::string first = "downloadFile" + kQuery;
    const std::string second = first + "&resetdownload=1";
    const struct {
        std::vector<std::string> attributes;
        std::vector<std::string> replies;
        uint32_t code;
        Paths paths;
    } rows[] = {
        {{kReset, kAttributes}, {"{}", kNull}, 0, {first, kAsk, second, kAsk}},
        {{kReset}, {"{}", kNull}, 0, {first, kAsk, second, kAsk}},
        {{kReset}, {kNull, textReply("Invalid URL.")}, 1, {first, kAsk, second, kAsk}},
        {{kReset, textReply("File not found.")}, {kNull}, 13, {first, kAsk, second, kAsk}},
        {{textReply("File not found.")}, {kNull}, 13, {first, kAsk}},
    };
    for (const auto& row : rows) {
        const ScriptedClient client(
            {{"downloadFile", row.replies}, {"getFileAttributes", row.attributes}});
        const Handle handle;
        EXPECT_EQ(outcome(vn_downloadFile(handle, 0, kUrl, nullptr)), row.code);
        EXPECT_EQ(client.paths(), row.paths);
    }
    // With the order to begin anew, the request is one character too long.
    {
        const ScriptedClient client({{"downloadFile", {kNull}}, {"getFileAttributes", {kReset}}});
        const Handle handle;
        const std::string path(845, 'p');
        DownloadOptions options{};
        options.path = path.c_str();
        EXPECT_EQ(outcome(vn_downloadFile(handle, 0, kUrl, &options)), 3U);
        EXPECT_EQ(client.paths().size(), 2U);
    }
    // A challenge in the second pass is answered without the order.
    const ScriptedClient client({{"downloadFile", {kNull, textReply("Challenge:abc"), kNull}},
                                 {"getFileAttributes", {kReset, kAttributes}}});
    const Handle handle;
    DownloadOptions options{};
    options.path = kPath;
    EXPECT_EQ(outcome(vn_downloadFile(handle, 0, kUrl, &options)), 0U);
    EXPECT_EQ(client.paths(),
              (Paths{first + kPathQuery, kAsk,
                     second.substr(0, first.size()) + kPathQuery + "&resetdownload=1",
                     first + kPathQuery, kAsk}));
}

TEST(DeleteFile, WaitsForAFileInUse) {
    using Clock = std::chrono::steady_clock;
    const std::string inUse = textReply("File is in use. By somebody.");
    const struct {
        std::vector<std::string> replies;
        uint32_t code;
        size_t orders;
        std::chrono::seconds least;
    } rows[] = {
        {{inUse, inUse, inUse, inUse, kNull}, 0, 5, std::chrono::seconds(4)},
        {{inUse}, INSTALL_ERROR_FILEINUSE, 5, std::chrono::seconds(4)},
        {{inUse, textReply("file is in use.")}, 3, 2, std::chrono::seconds(1)},
        {{inUse, ""}, 4, 2, std::chrono::seconds(1)},
    };
    for (const auto& row : rows) {
        const ScriptedClient client(
            {{"deleteFile", row.replies}, {"getFileAttributes", {kAttributes}}});
        const Handle handle;
        const Clock::time_point begin = Clock::now();
        EXPECT_EQ(outcome(vn_deleteFile(handle, 0, kUrl, nullptr)), row.code);
        const auto elapsed = Clock::now() - begin;
        EXPECT_GE(elapsed, row.least - std::chrono::milliseconds(20));
        EXPECT_LT(elapsed, row.least + std::chrono::milliseconds(2500));
        EXPECT_EQ(client.paths().size(), row.orders + 1);
    }
}

TEST(DeleteFile, AsksForTheFileFirst) {
    const std::pair<std::string, uint32_t> rows[] = {
        {textReply("file not found."), 13},
        {textReply("file not found"), 3},
        {textReply("Invalid URL."), 1},
        {textReply("anything"), 3},
    };
    for (const auto& [body, code] : rows) {
        const ScriptedClient client({{"getFileAttributes", {body}}});
        const Handle handle;
        EXPECT_EQ(outcome(vn_deleteFile(handle, 0, kUrl, nullptr)), code) << body;
        EXPECT_EQ(client.paths(), Paths{kAsk});
    }
}

}  // namespace
