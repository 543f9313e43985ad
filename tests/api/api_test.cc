// The client API: handles with their one connection, every operation with its requests as they go
// over the wire, its arguments, options and replies, longer conversations, and the records.
#include <gtest/gtest.h>
#include <pthread.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "api/handle.h"
#include "api/outcome.h"
#include "api/result/last_error.h"
#include "api/scripted_client.h"
#include "harness/harness.h"
#include "support/text.h"
#include "velnor/capi.h"

namespace {

using namespace test;
using Texts = std::vector<std::string>;
using Numbers = std::vector<int64_t>;

// What follows a function's name in every request for kUrl with cid 7.
const std::string kQuery = "&cid=7&apiversion=capi_1.6.5&url=http%3a%2f%2fa.example%2fb%20c";
const std::string kAsk = "getFileAttributes" + kQuery + "&complete";
const char* const kAttributes = R"({"status":"COMPLETE"})";

// A client that does what it is asked.
const ScriptedClient::Replies kWilling = {
    {"downloadFile", {kNull}},       {"getFileAttributes", {kAttributes}},
    {"pauseFile", {kNull}},          {"deleteFile", {kNull}},
    {"getClientAttributes", {"{}"}}, {"runPeriodicTasks", {R"({"result": null})"}},
};

// A handle from its construction to its destruction; the client has to be there.
struct Handle {
    Handle() { EXPECT_EQ(vn_initialize("Test/1.0", &handle), 0); }
    ~Handle() { EXPECT_EQ(vn_uninitialize(handle, 0), 0); }
    operator ApiHandle*() const { return handle; }
    ApiHandle* handle = nullptr;
};

// What a call came to: -1 is replaced by the last error, which must not be 0 then.
uint32_t outcome(int32_t result) {
    EXPECT_EQ(result, vn_getLastError() == INSTALL_ERROR_OK ? 0 : -1);
    return vn_getLastError();
}

uint32_t runTasks(ApiHandle* handle) { return outcome(vn_runPeriodicTasks(handle, 0, 0)); }

const std::string kDone = reply(R"({"result":null})");
std::string done(const std::string&) { return kDone; }

TEST(Handle, NeedsAClientAndBothArguments) {
    auto* const untouched = reinterpret_cast<ApiHandle*>(1);
    ApiHandle* handle = untouched;
    EXPECT_EQ(outcome(vn_initialize("A", &handle)), 2U);
    const sandbox::RawServer server([](int fd, const std::string&) { sandbox::sendAll(fd, kDone); },
                                    9421);
    EXPECT_EQ(outcome(vn_initialize(nullptr, &handle)), 1U);
    EXPECT_EQ(outcome(vn_initialize("A", nullptr)), 1U);
    EXPECT_EQ(outcome(vn_initialize("A\r\nB: C", &handle)), 2U);
    EXPECT_EQ(handle, untouched);
    std::srand(1);
    const int usual = std::rand();
    std::srand(1);
    EXPECT_EQ(outcome(vn_initialize("A", &handle)), 0U);
    EXPECT_NE(std::rand(), usual) << "seeded anew";
    EXPECT_EQ(runTasks(handle), 0U);
    EXPECT_EQ(server.heads().at(0),
              "GET /api?function=ping HTTP/1.0\r\nHost: 127.0.0.1\r\nUser-Agent: A\r\n"
              "Connection: keep-alive\r\n\r\n");
    EXPECT_NE(server.heads().at(1).find("\r\nHost: localhost\r\nUser-Agent: A\r\n"),
              std::string::npos);
    EXPECT_EQ(outcome(vn_uninitialize(handle, 1)), 1U);
    EXPECT_EQ(vn_uninitialize(handle, 0), 0);
    EXPECT_EQ(vn_getLastError(), 1U) << "left alone";
    EXPECT_EQ(outcome(vn_uninitialize(nullptr, 0)), 1U);
}

// The reply to one request must never be taken for the reply to the next.
TEST(Handle, LeavesAConnectionThatSaysTooMuchOrNotEnough) {
    const std::string more = reply("{}");
    for (const auto& [bytes, code] : {std::pair{kDone + more, 0U},
                                      {kDone + std::string(5000, ' ') + more, 0U},
                                      {"HTTP/1.0 200 OK\r\n\r\n{\"result\":null", 5U},
                                      {"", 5U}}) {
        std::optional<ScriptedClient> client(
            [&, asked = 0](const std::string&) mutable { return asked++ == 0 ? bytes : kDone; });
        const Handle handle;
        EXPECT_EQ(runTasks(handle), code);
        EXPECT_EQ(runTasks(handle), 0U) << bytes;
        client.reset();
        EXPECT_NE(runTasks(handle), 0U);
        EXPECT_EQ(runTasks(handle), 2U) << "nobody is there";
    }
}

TEST(Reply, IsCheckedAndItsChallengeAnswered) {
    EXPECT_EQ(_vn_responseCheck("", R"({"error":"x"})"), INSTALL_ERROR_INTERNAL);
    EXPECT_EQ(_vn_responseCheck(kUrl, ""), INSTALL_ERROR_INTERNAL);
    EXPECT_EQ(_vn_responseCheck(kUrl, R"({"error":"x"})"), INSTALL_ERROR_INVALIDARGUMENT);
    const ScriptedClient client(done);
    const Handle handle;
    for (const auto& [given, last] :
         {std::pair("None", textReply("None")), {"Challenge:abc", R"({"result":null})"}}) {
        char* first = velnor::copyText(textReply(given)).release();
        const velnor::OwnedText now(_vn_answerChallenge(handle, 0, kUrl, "p", first, "/tmp/file"));
        EXPECT_EQ(now.get(), last);
    }
    EXPECT_EQ(harness::readFile("/tmp/file"), "abc");
}

TEST(LastError, BelongsToItsThreadAndSaysWhenTheProcessHasNoKeyLeft) {
    std::vector<pthread_key_t> keys;
    for (pthread_key_t key = 0; pthread_key_create(&key, nullptr) == 0;) keys.push_back(key);
    EXPECT_EQ(_vn_setLastError(5), EAGAIN);
    EXPECT_EQ(vn_getLastError(), 0U);
    for (const pthread_key_t key : keys) pthread_key_delete(key);
    EXPECT_EQ(_vn_setLastError(4294967295U), 0);
    EXPECT_EQ(vn_getLastError(), 4294967295U);
    std::thread([] { EXPECT_EQ(vn_getLastError(), 0U); }).join();
}

// The request that an operation is judged by, one before or after that, and how it is asked.
const struct Operation {
    std::string before, judged, after;
    int32_t (*call)(ApiHandle* handle, const char* url, int32_t cid);
} kOperations[] = {
    {"", "downloadFile" + kQuery, kAsk,
     [](auto* handle, auto* url, auto cid) { return vn_downloadFile(handle, cid, url, nullptr); }},
    {"", kAsk, "",
     [](auto* handle, auto* url, auto cid) {
         FileAttributes file{};
         const int32_t result = vn_getFileAttributes(handle, cid, url, &file, 0);
         EXPECT_EQ(vn_cleanFileAttributes(handle, &file, 0), handle != nullptr ? 0 : -1);
         return result;
     }},
    {"", "pauseFile" + kQuery, "",
     [](auto* handle, auto* url, auto cid) { return vn_pauseFile(handle, cid, url, 0); }},
    {kAsk, "deleteFile" + kQuery + "&keepphysicalfileondelete=false", "",
     [](auto* handle, auto* url, auto cid) { return vn_deleteFile(handle, cid, url, nullptr); }},
    {"", "runPeriodicTasks&cid=7&apiversion=capi_1.6.5", "",
     [](auto* handle, auto*, auto cid) { return vn_runPeriodicTasks(handle, cid, 0); }},
    {"", "getClientAttributes&cid=7&apiversion=capi_1.6.5&complete", "",
     [](auto* handle, auto*, auto cid) {
         ClientAttributes client{};
         const int32_t result = vn_getAttributes(handle, cid, &client, 0);
         EXPECT_EQ(vn_cleanAttributes(handle, &client, 0), handle != nullptr ? 0 : -1);
         return result;
     }},
};

TEST(Operation, AsksExactlyThisOnOneConnection) {
    const ScriptedClient client(kWilling);
    const Handle handle;
    EXPECT_EQ(client.connections(), 1U) << "for the ping";
    Texts expected;
    for (const auto& [before, judged, after, call] : kOperations) {
        EXPECT_EQ(outcome(call(handle, kUrl, 7)), 0U) << judged;
        for (const std::string& path : {before, judged, after}) {
            if (!path.empty()) expected.push_back(path);
        }
    }
    EXPECT_EQ(client.paths(), expected);
    DownloadOptions keeping{};
    keeping.keepPhysicalFileOnDelete = 2;
    EXPECT_EQ(outcome(vn_deleteFile(handle, 7, kUrl, &keeping)), 0U);
    EXPECT_TRUE(client.paths().back().ends_with("&keepphysicalfileondelete=true"));
    EXPECT_EQ(client.connections(), 2U);
}

TEST(Operation, SendsNothingForBadArguments) {
    const ScriptedClient client(kWilling);
    const Handle handle;
    const std::string longUrl = "http://a.example/" + std::string(983, 'a');
    for (const auto& [before, judged, after, call] : kOperations) {
        EXPECT_EQ(outcome(call(nullptr, kUrl, 7)), 1U) << judged;
        EXPECT_EQ(outcome(call(handle, kUrl, -1)), 1U) << judged;
        if (judged.find("url=") == judged.npos) continue;
        EXPECT_EQ(outcome(call(handle, nullptr, 7)), 1U) << judged;
        EXPECT_EQ(outcome(call(handle, longUrl.c_str(), 7)), 3U) << judged;
    }
    FileAttributes file{};
    ClientAttributes record{};
    for (const int32_t result :
         {vn_runPeriodicTasks(handle, 7, 1), vn_pauseFile(handle, 7, kUrl, 1),
          vn_getFileAttributes(handle, 7, kUrl, &file, 1),
          vn_getFileAttributes(handle, 7, kUrl, nullptr, 0),
          vn_getAttributes(handle, 7, &record, 1), vn_getAttributes(handle, 7, nullptr, 0),
          vn_cleanFileAttributes(handle, nullptr, 0), vn_cleanFileAttributes(nullptr, &file, 0),
          vn_cleanFileAttributes(handle, &file, 1), vn_cleanAttributes(handle, nullptr, 0),
          vn_cleanAttributes(nullptr, &record, 0), vn_cleanAttributes(handle, &record, 1)}) {
        EXPECT_EQ(outcome(result), 1U);
    }
    EXPECT_EQ(client.paths(), Texts{});
}

TEST(Operation, MakesThisOfEachReply) {
    const struct {
        std::string body;
        uint32_t codes[6];  // in the order of kOperations
    } rows[] = {
        {kNull, {0, 3, 0, 0, 3, 0}},
        {R"({"result":null})", {3, 3, 3, 3, 0, 0}},
        {R"({"status":"what is this?"})", {3, 0, 3, 3, 3, 0}},
        {R"({"status":"COMPLETE","resetdownload":true})", {3, 24, 3, 3, 3, 0}},
        {textReply("FILE NOT FOUND."), {3, 13, 3, 3, 3, 0}},
        {textReply("file not found"), {13, 3, 13, 3, 3, 0}},
        {textReply("invalid url."), {1, 1, 1, 3, 3, 0}},
        {textReply("Cannot pause file already completed"), {22, 3, 22, 3, 3, 0}},
        {R"({"error":"x","http:\/\/a.example/b c":"file not found"})", {1, 3, 1, 3, 3, 0}},
        {R"({"result":"running of periodic tasks is throttled"})", {3, 3, 3, 3, 23, 0}},
        {std::string("\0{\"result\":null}", 16), {3, 3, 3, 3, 3, 0}},
        {"", {4, 4, 4, 4, 4, 4}},
    };
    for (const auto& [body, codes] : rows) {
        for (size_t i = 0; i < std::size(codes); ++i) {
            const Operation& operation = kOperations[i];
            const ScriptedClient client([&](const std::string& path) {
                return path.ends_with(operation.judged) ? reply(body) : reply(kAttributes);
            });
            const Handle handle;
            EXPECT_EQ(outcome(operation.call(handle, kUrl, 7)), codes[i])
                << operation.judged << ": " << body;
        }
    }
}

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

TEST(FileAttributes, HoldWhatTheClientSaid) {
    const ScriptedClient client({{"getFileAttributes",
                                  {R"({"status":"complete","path" : "\/\b\f\r\t\u0041 y",
"size":  1000,"uniquerecv":9007199254740993,"progress":-1,"downloadrate":44,"errorstring":"a\"b",
"error":7.9,"suberror":99999999999999999999,"verifiedcontentmd5":""})",
                                   R"({"status":"PAUSED"})", ""}}});
    const Handle handle;
    FileAttributes file{};
    file.reserved = 5;
    EXPECT_EQ(outcome(vn_getFileAttributes(handle, 3, kUrl, &file, 0)), 0U);
    EXPECT_EQ(file.reserved, 0U);
    EXPECT_EQ((Numbers{file.cid, file.status, file.size, file.uniquerecv, file.progress,
                       file.downloadrate, file.error, file.suberror}),
              (Numbers{3, 5, 1000, 9007199254740993, 0, 44, 7, INT64_MAX}));
    EXPECT_STREQ(file.url, kUrl);
    EXPECT_STREQ(file.path, "/\b\f\r\tu0041 y");
    EXPECT_STREQ(file.errorstring, "a") << "an escaped quote ends a text";
    EXPECT_STREQ(file.verifiedcontentmd5, "");
    // What is in the record is released by the next call, whatever becomes of it; the leak checker
    // looks.
    EXPECT_EQ(outcome(vn_getFileAttributes(handle, 4, kUrl, &file, 0)), 0U);
    EXPECT_EQ(file.path, nullptr);
    EXPECT_EQ(outcome(vn_getFileAttributes(handle, 4, kUrl, &file, 0)), 4U) << "no reply at all";
    EXPECT_EQ(file.url, nullptr);
}

TEST(FileAttributes, StatesHaveKeywordsInAnyLetterCaseAndTexts) {
    std::string texts;
    int32_t status = 0;
    for (const std::string keyword :
         {"COMPLETED", "SEARCHING", "waiting", "DOWNLOADING", "PAUSED", "complete",
          "InsufficientDiskSpace", "DISCONNECTED", "NOTFOUND", "moving", "FORBIDDEN"}) {
        const ScriptedClient client({{"getFileAttributes", {R"({"status":")" + keyword + "\"}"}}});
        const Handle handle;
        FileAttributes file{};
        EXPECT_EQ(outcome(vn_getFileAttributes(handle, 0, kUrl, &file, 0)), 0U);
        EXPECT_EQ(file.status, status) << keyword;
        vn_cleanFileAttributes(handle, &file, 0);
        texts += vn_fileStatusToString(status++) + std::string(".");
    }
    texts += vn_errorToString(24) + std::string(". ") + vn_errorToString(25);
    EXPECT_EQ(texts,
              "Unknown State.Searching.Waiting.Downloading.Paused.Complete.Insufficient Disk Space."
              "Disconnected.Not Found.Moving.Forbidden.File download was reset. Unknown Error");
}

TEST(ClientAttributes, HoldWhatTheClientAndTheInstallationSay) {
    const ScriptedClient client(
        {{"getClientAttributes",
          {R"({"isonline":true,"sharerate":11,"downloadrate":22,"version":4294967297,
"acceptedeula":true,"executableversion":"1.6.5","configurationversion":"c"})",
           R"({"isonline":True,"acceptedeula":true,"version":7})", ""}}});
    const Handle handle;
    const std::string guid = "0123456789abcdef0123456789ABCDEF";
    harness::makeInstallDirectory();
    harness::writeFile(harness::installed("guid.ini"), guid + "4");
    ClientAttributes record{};
    record.reserved = 5;
    const auto numbers = [&record] {
        return Numbers{record.isonline, record.sharerate,    record.downloadrate,
                       record.version,  record.acceptedeula, static_cast<int64_t>(record.reserved)};
    };
    EXPECT_EQ(outcome(vn_getAttributes(handle, 0, &record, 0)), 0U);
    EXPECT_EQ(numbers(), (Numbers{1, 11, 22, 1, 1, 5})) << "with the version's lower 32 bits";
    EXPECT_STREQ(record.executableversion, "1.6.5");
    EXPECT_STREQ(record.configurationversion, "c");
    EXPECT_EQ(record.guid, guid);

    std::filesystem::remove(harness::installed("guid.ini"));
    EXPECT_EQ(outcome(vn_getAttributes(handle, 0, &record, 0)), 0U) << "also without it";
    EXPECT_EQ(record.executableversion, nullptr);
    EXPECT_EQ(record.guid, nullptr);
    EXPECT_EQ(outcome(vn_getAttributes(handle, 0, &record, 0)), 4U) << "no reply at all";
    EXPECT_EQ(numbers(), (Numbers{0, 0, 0, 7, 1, 5})) << "and the record stays";
}

}  // namespace
