// Every operation: its requests as they go over the wire, its arguments, and what it makes of every
// kind of reply.
#include <string>
#include <vector>

#include "api/client.h"

namespace test {
namespace {

using Paths = std::vector<std::string>;

// How an operation is asked, the request that it is judged by, and one before or after that.
const struct Operation {
    int32_t (*call)(ApiHandle* handle, const char* url, int32_t cid);
    std::string before, judged, after;
} kOperations[] = {
    // clang-format off
    {[](ApiHandle* handle, const char* url, int32_t cid) {
         return vn_downloadFile(handle, cid, url, nullptr);
     }, "", "downloadFile" + kQuery, kAsk},
    {[](ApiHandle* handle, const char* url, int32_t cid) {
         FileAttributes file{};
         const int32_t result = vn_getFileAttributes(handle, cid, url, &file, 0);
         EXPECT_EQ(vn_cleanFileAttributes(handle, &file, 0), handle != nullptr ? 0 : -1);
         return result;
     }, "", kAsk, ""},
    {[](ApiHandle* handle, const char* url, int32_t cid) {
         return vn_pauseFile(handle, cid, url, 0);
     }, "", "pauseFile" + kQuery, ""},
    {[](ApiHandle* handle, const char* url, int32_t cid) {
         return vn_deleteFile(handle, cid, url, nullptr);
     }, kAsk, "deleteFile" + kQuery + "&keepphysicalfileondelete=false", ""},
    {[](ApiHandle* handle, const char*, int32_t cid) {
         return vn_runPeriodicTasks(handle, cid, 0);
     }, "", "runPeriodicTasks&cid=7&apiversion=capi_1.6.5", ""},
    {[](ApiHandle* handle, const char*, int32_t cid) {
         ClientAttributes client{};
         const int32_t result = vn_getAttributes(handle, cid, &client, 0);
         EXPECT_EQ(vn_cleanAttributes(handle, &client, 0), handle != nullptr ? 0 : -1);
         return result;
     }, "", "getClientAttributes&cid=7&apiversion=capi_1.6.5&complete", ""},
    // clang-format on
};

TEST(Operation, AsksExactlyThisOnOneConnection) {
    const ScriptedClient client(kWilling);
    const Handle handle;
    EXPECT_EQ(client.connections(), 1U) << "for the ping";
    Paths expected;
    for (const auto& [call, before, judged, after] : kOperations) {
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
    for (const auto& [call, before, judged, after] : kOperations) {
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
    EXPECT_EQ(client.paths(), Paths{});
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

}  // namespace
}  // namespace test
