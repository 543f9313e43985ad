// Downloads with options, and conversations that are longer than a request and a reply.
#include <chrono>
#include <string>
#include <vector>

#include "api/client.h"
#include "harness/files.h"

namespace test {
namespace {

using Texts = std::vector<std::string>;

const char* const kPath = "/tmp/a_-Z9 file";
const char* const kErase = "";

// Deletes for kErase, else downloads to there.
uint32_t run(const char* path, DownloadOptions options = {}) {
    const Handle handle;
    options.path = path;
    return outcome(path == kErase ? vn_deleteFile(handle, 7, kUrl, nullptr)
                                  : vn_downloadFile(handle, 7, kUrl, &options));
}

TEST(DownloadOptions, BecomeFragmentsInTheirOrder) {
    const std::string user(100, 'u'), password(90, 'p');
    std::vector<std::pair<DownloadOptions, std::string>> rows(2);
    rows[0] = {{9, ~0U, -1, kPath, 9, "~z.@[`{", "", "user", "p\xc3\xa9?\?>", INT32_MAX, 9, 9},
               "&targetspeed=-1&delayhttp=2147483647&checkcontentmd5&path=%2ftmp%2fa_-Z9%20file"
               "&backgroundDownload=1&cookiestring=%7ez.%40%5b%60%7b&queryauth="
               "&basicauth=dXNlcjpww6k%2fPz4%3d&wait=1&originonly"};
    rows[1].first.basicAuthUser = user.c_str();  // alone
    // By their numbers, which programs that are already built hold.
    DownloadOptions options{};
    options.flags = 1;
    for (const char* fragment : {"&targetspeed=0", "&backgroundDownload=1", "&wait=1",
                                 "&delayhttp=0", "&originonly", "", "&checkcontentmd5"}) {
        rows.emplace_back(options, fragment);
        options.flags *= 2;
    }
    const ScriptedClient client(kWilling);
    Texts expected;
    for (const auto& [given, fragments] : rows) {
        EXPECT_EQ(run(given.path, given), 0U);
        expected.insert(expected.end(), {"downloadFile" + kQuery + fragments, kAsk});
    }
    EXPECT_EQ(client.paths(), expected);
    options = rows[1].first;
    for (const uint32_t tooLong : {1U, 0U}) {
        options.basicAuthPassword = &password[2 - tooLong];
        EXPECT_EQ(run(nullptr, options), tooLong) << "of 190 bytes with the colon, and of 189";
    }
}

// Requests in short: "a" asks for the attributes, "o" orders, "r" orders to begin anew.
std::string requestsTo(const ScriptedClient& client) {
    std::string all;
    for (const std::string& path : client.paths()) {
        all += path == kAsk ? 'a' : path.ends_with("&resetdownload=1") ? 'r' : 'o';
    }
    return all;
}

// Challenges, resets, files in use, and failures before the last request.
TEST(Conversation, GoesLikeThis) {
    const std::string paused = R"({"status":"PAUSED","path":"\/tmp\/a_-Z9 file"})";
    const std::string reset = R"({"status":"PAUSED","resetdownload":true})";
    const std::string challenge = textReply("Challenge:abc");
    const auto begin = std::chrono::steady_clock::now();
    const struct {
        const char* path;
        Texts attributes, orders;
        uint32_t code;
        const char* requests;
        std::string file = "before";
    } rows[] = {
        {kPath, {paused}, {textReply("Challenge:"), kNull}, 0, "ooa", ""},
        // Escaped by JSON, and again.
        {kPath, {paused}, {textReply(R"(Challenge:a\\n\\\\)"), "{}"}, 3, "ooa", "a\n\\"},
        {kPath, {paused}, {challenge, challenge}, 3, "ooa", "abc"},
        {kPath, {paused}, {textReply("challenge:a")}, 3, "oa"},
        {"/tmp/missing/file", {paused}, {challenge, kNull}, 0, "ooa"},
        {nullptr, {paused}, {challenge}, 3, "oa"},
        {nullptr, {reset, kAttributes}, {"{}", kNull}, 0, "oara"},
        {nullptr, {reset}, {kNull, "{}"}, 3, "oara"},
        {nullptr, {textReply("File not found.")}, {kNull}, 13, "oa"},
        {kPath, {reset, paused}, {kNull, challenge, kNull}, 0, "oaroa", "abc"},
        {kErase, {paused}, {challenge, kNull}, 0, "aoo", "abc"},
        {kErase, {kAttributes}, {challenge}, 3, "ao"},
        {kErase, {textReply("file not found.")}, {kNull}, 13, "a"},
        {kErase, {""}, {kNull}, 4, "a"},
        {kErase, {kAttributes}, {textReply("File is in use. By another.")}, 12, "aooooo"},
    };
    for (const auto& [path, attributes, orders, code, requests, file] : rows) {
        harness::writeFile(kPath, "before");
        const ScriptedClient client(
            {{"downloadFile", orders}, {"deleteFile", orders}, {"getFileAttributes", attributes}});
        EXPECT_EQ(run(path), code) << orders[0];
        EXPECT_EQ(requestsTo(client), requests);
        EXPECT_EQ(harness::readFile(kPath), file) << orders[0];
    }
    // A second between two orders for the file in use.
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(3980));
}

}  // namespace
}  // namespace test
