// Every operation: its requests as they go over the wire, its arguments, and what it makes of every
// kind of reply.
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "api/client.h"
#include "api/last_error.h"
#include "api/scripted_client.h"
#include "harness/allocations.h"

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

int32_t download(ApiHandle* handle, int32_t cid, const char* url, uint32_t) {
    return vn_downloadFile(handle, cid, url, nullptr);
}
// With everything that takes memory of its own.
int32_t downloadWithOptions(ApiHandle* handle, int32_t cid, const char* url, uint32_t) {
    DownloadOptions options{};
    options.path = "/tmp/file";
    options.basicAuthUser = options.basicAuthPassword = "a";
    return vn_downloadFile(handle, cid, url, &options);
}
int32_t attributes(ApiHandle* handle, int32_t cid, const char* url, uint32_t reserved) {
    FileAttributes file{};
    const int32_t result = vn_getFileAttributes(handle, cid, url, &file, reserved);
    const FileAttributes empty{};
    EXPECT_TRUE(result == 0 || std::memcmp(&file, &empty, sizeof file) == 0);
    EXPECT_EQ(vn_cleanFileAttributes(handle != nullptr ? handle : reinterpret_cast<ApiHandle*>(1),
                                     &file, 0),
              0);
    return result;
}
int32_t clientAttributes(ApiHandle* handle, int32_t cid, const char*, uint32_t reserved) {
    ClientAttributes client{};
    const int32_t result = vn_getAttributes(handle, cid, &client, reserved);
    vn_cleanAttributes(handle, &client, 0);
    return result;
}
int32_t erase(ApiHandle* handle, int32_t cid, const char* url, uint32_t) {
    return vn_deleteFile(handle, cid, url, nullptr);
}
int32_t tasks(ApiHandle* handle, int32_t cid, const char*, uint32_t reserved) {
    return vn_runPeriodicTasks(handle, cid, reserved);
}

const std::string kQuery = test::query(7);
const std::string kAsk = "getFileAttributes" + kQuery + "&complete";

// How an operation is asked, and what it asks the client.
const struct Operation {
    const char* name;
    int32_t (*call)(ApiHandle* handle, int32_t cid, const char* url, uint32_t reserved);
    bool hasUrl;
    bool hasReserved;
    Paths paths;
} kOperations[] = {
    {"download", download, true, false, {"downloadFile" + kQuery, kAsk}},
    {"attributes", attributes, true, true, {kAsk}},
    {"pause", vn_pauseFile, true, true, {"pauseFile" + kQuery}},
    {"delete",
     erase,
     true,
     false,
     {kAsk, "deleteFile" + kQuery + "&keepphysicalfileondelete=false"}},
    {"client",
     clientAttributes,
     false,
     true,
     {"getClientAttributes&cid=7&apiversion=capi_1.6.5&complete"}},
    {"tasks", tasks, false, true, {"runPeriodicTasks&cid=7&apiversion=capi_1.6.5"}},
};

const ScriptedClient::Replies kWilling = {
    {"downloadFile", {kNull}},       {"getFileAttributes", {kAttributes}},
    {"pauseFile", {kNull}},          {"deleteFile", {kNull}},
    {"getClientAttributes", {"{}"}}, {"runPeriodicTasks", {R"({"result": null})"}},
};

TEST(Operation, AsksExactlyThis) {
    const ScriptedClient client(kWilling);
    const Handle handle;
    Paths expected;
    for (const Operation& operation : kOperations) {
        EXPECT_EQ(outcome(operation.call(handle, 7, kUrl, 0)), 0U) << operation.name;
        expected.insert(expected.end(), operation.paths.begin(), operation.paths.end());
        EXPECT_EQ(client.paths(), expected);
        EXPECT_EQ(client.head(), "GET /api?function=" + expected.back() +
                                     " HTTP/1.0\r\nHost: localhost\r\nUser-Agent: Test/1.0\r\n"
                                     "Connection: keep-alive\r\n\r\n");
    }
    DownloadOptions keeping{};
    keeping.keepPhysicalFileOnDelete = 2;
    EXPECT_EQ(outcome(vn_deleteFile(handle, 7, kUrl, &keeping)), 0U);
    EXPECT_TRUE(client.paths().back().ends_with("&keepphysicalfileondelete=true"));
}

TEST(Operation, SendsNothingForBadArguments) {
    const ScriptedClient client(kWilling);
    const Handle handle;
    const std::string longUrl = "http://a.example/" + std::string(983, 'a');
    for (const Operation& operation : kOperations) {
        SCOPED_TRACE(operation.name);
        EXPECT_EQ(outcome(operation.call(nullptr, 7, kUrl, 0)), INSTALL_ERROR_INVALIDARGUMENT);
        EXPECT_EQ(outcome(operation.call(handle, -1, kUrl, 0)), INSTALL_ERROR_INVALIDARGUMENT);
        if (operation.hasReserved) {
            EXPECT_EQ(outcome(operation.call(handle, 7, kUrl, 1)), INSTALL_ERROR_INVALIDARGUMENT);
        }
        if (!operation.hasUrl) continue;
        EXPECT_EQ(outcome(operation.call(handle, 7, nullptr, 0)), INSTALL_ERROR_INVALIDARGUMENT);
        EXPECT_EQ(outcome(operation.call(handle, 7, longUrl.c_str(), 0)), INSTALL_ERROR_INTERNAL);
    }
    EXPECT_EQ(outcome(vn_getFileAttributes(handle, 0, kUrl, nullptr, 0)), 1U);
    EXPECT_EQ(outcome(vn_getAttributes(handle, 0, nullptr, 0)), 1U);
    EXPECT_EQ(outcome(vn_cleanFileAttributes(handle, nullptr, 0)), 1U);
    EXPECT_EQ(outcome(vn_cleanAttributes(handle, nullptr, 0)), 1U);
    FileAttributes file{};
    EXPECT_EQ(outcome(vn_cleanFileAttributes(nullptr, &file, 0)), 1U);
    EXPECT_EQ(outcome(vn_cleanFileAttributes(handle, &file, 1)), 1U);
    ClientAttributes attributes{};
    EXPECT_EQ(outcome(vn_cleanAttributes(nullptr, &attributes, 0)), 1U);
    EXPECT_EQ(outcome(vn_cleanAttributes(handle, &attributes, 1)), 1U);
    EXPECT_EQ(client.paths(), Paths{});
}

// The last reply of an operation, and the code that it leaves.
TEST(Operation, MakesThisOfEachReply) {
    // In the order of kOperations; an operation without a column's reply asks nothing of the kind.
    const struct {
        std::string body;
        uint32_t download, attributes, pause, erase, client, tasks;
    } rows[] = {
        {kNull, 0, 3, 0, 0, 0, 3},
        {R"({"result":null})", 3, 3, 3, 3, 0, 0},
        {kAttributes, 3, 0, 3, 3, 0, 3},
        {R"({"status":"what is this?"})", 3, 0, 3, 3, 0, 3},
        {R"({"status":5})", 3, 3, 3, 3, 0, 3},
        {R"({"status":"COMPLETE","resetdownload":true})", 3, 24, 3, 3, 0, 3},
        {textReply("File not found."), 3, 13, 3, 3, 0, 3},
        {textReply("FILE NOT FOUND."), 3, 13, 3, 3, 0, 3},
        {textReply("file not found"), 13, 3, 13, 3, 0, 3},
        {textReply("Invalid URL."), 1, 1, 1, 3, 0, 3},
        {textReply("invalid url."), 1, 1, 1, 3, 0, 3},
        {textReply("Cannot pause file already completed"), 22, 3, 22, 3, 0, 3},
        {textReply(""), 3, 3, 3, 3, 0, 3},
        {textReply("something else"), 3, 3, 3, 3, 0, 3},
        {textReply("Challenge:abc"), 3, 3, 3, 3, 0, 3},
        {R"({"error":"Invalid URL."})", 1, 3, 1, 3, 0, 3},
        {R"({"error":"x","http:\/\/a.example/b c":"file not found"})", 1, 3, 1, 3, 0, 3},
        {R"({"error":5})", 3, 3, 3, 3, 0, 3},
        {R"({"result":"Running of periodic tasks is throttled"})", 3, 3, 3, 3, 0, 23},
        {R"({"result":"running of periodic tasks is throttled"})", 3, 3, 3, 3, 0, 23},
        {R"({"result":"Running of periodic tasks is throttled!"})", 3, 3, 3, 3, 0, 3},
        {R"({"result":"x"})", 3, 3, 3, 3, 0, 3},
        {"\"http://a.example/b c\":null", 3, 3, 3, 3, 0, 3},
        {"{}", 3, 3, 3, 3, 0, 3},
        {"\xff\xfe\x80\\", 3, 3, 3, 3, 0, 3},
        {std::string("\0{\"result\":null}", 16), 3, 3, 3, 3, 0, 3},
        {"{\"http://a.example/b c", 3, 3, 3, 3, 0, 3},
        {"{\"http://a.example/b c\":\"", 3, 3, 3, 3, 0, 3},
    };
    for (const auto& row : rows) {
        const uint32_t codes[] = {row.download, row.attributes, row.pause,
                                  row.erase,    row.client,     row.tasks};
        for (size_t i = 0; i < std::size(codes); ++i) {
            const std::string last = kOperations[i].paths.back();
            const bool isDownload = i == 0;
            const ScriptedClient client([&](const std::string& path) {
                const bool judged = isDownload ? path.find("downloadFile") != std::string::npos
                                               : path.ends_with(last);
                return reply(judged ? row.body : kAttributes);
            });
            const Handle handle;
            EXPECT_EQ(outcome(kOperations[i].call(handle, 7, kUrl, 0)), codes[i])
                << kOperations[i].name << ": " << row.body;
        }
    }
}

TEST(Operation, FailsWithoutAClient) {
    auto client = std::make_unique<ScriptedClient>(kWilling);
    for (const Operation& operation : kOperations) {
        if (!client) client = std::make_unique<ScriptedClient>(kWilling);
        const Handle handle;
        client.reset();
        EXPECT_EQ(outcome(operation.call(handle, 7, kUrl, 0)), INSTALL_ERROR_NOTINSTALLED)
            << operation.name;
    }
}

// What happens to the connection, at each of an operation's requests.
TEST(Operation, FailsWithTheConnection) {
    const struct {
        std::string bytes;
        uint32_t code;
    } rows[] = {
        {"", INSTALL_ERROR_NETWORK},
        {"HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n", INSTALL_ERROR_INSUFFICIENTMEMORY},
        {"HTTP/1.1 200 OK\r\nContent-Length: 10485761\r\n\r\n", INSTALL_ERROR_INSUFFICIENTMEMORY},
    };
    for (const auto& row : rows) {
        for (const Operation& operation : kOperations) {
            for (size_t failing = 0; failing < operation.paths.size(); ++failing) {
                size_t request = 0;
                const ScriptedClient client([&](const std::string& path) {
                    if (request++ == failing) return row.bytes;
                    const bool asks = path.find("Attributes") != std::string::npos;
                    return reply(asks ? kAttributes : kNull);
                });
                const Handle handle;
                EXPECT_EQ(outcome(operation.call(handle, 7, kUrl, 0)), row.code)
                    << operation.name << " " << failing;
            }
        }
    }
}

// Downloads and deletions are challenged each time, and their repeated requests granted.
std::string replyWithEverything(const std::string& path, bool repeated) {
    if (path.find("getFileAttributes") != std::string::npos) {
        return reply(R"({"status":"PAUSED","path":"/tmp/file","errorstring":"b"})");
    }
    if (path.find("getClientAttributes") != std::string::npos) {
        return reply(R"({"executableversion":"1","configurationversion":"2"})");
    }
    if (path.find("pauseFile") != std::string::npos || repeated) return reply(kNull);
    return reply(path.find("url=") != std::string::npos ? textReply("Challenge:a\\\\b")
                                                        : R"({"result":null})");
}

TEST(Operation, EveryAllocationMayFail) {
    const std::pair<const char*, decltype(Operation::call)> operations[] = {
        {"download", downloadWithOptions}, {"attributes", attributes},
        {"pause", vn_pauseFile},           {"delete", erase},
        {"client", clientAttributes},      {"tasks", tasks}};
    for (const auto& [name, call] : operations) {
        std::string last;
        const ScriptedClient client([&last](const std::string& path) {
            const bool repeated = path == last;
            last = repeated ? "" : path;
            return replyWithEverything(path, repeated);
        });
        const Handle handle;
        for (size_t number = 1;; ++number) {
            last.clear();
            harness::FailingAllocation failing(number);
            const int32_t result = call(handle, 7, kUrl, 0);
            const uint32_t code = vn_getLastError();
            if (!failing.end()) {
                EXPECT_EQ(result, 0) << name;
                break;
            }
            EXPECT_EQ(result, -1) << name << " " << number;
            EXPECT_EQ(code, INSTALL_ERROR_INSUFFICIENTMEMORY + 0U) << name << " " << number;
        }
    }
}

}  // namespace
