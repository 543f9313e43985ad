// The library beside the rehearsal's client, which keeps real downloads.
#include <chrono>
#include <string>

#include "api/client.h"
#include "harness/shell.h"
#include "tools/client_world.h"

namespace {

using test::Handle;
using test::outcome;

constexpr char kUrl[] = "http://127.0.0.1:1/nobody/listens";

uint32_t statusOf(ApiHandle* handle) {
    FileAttributes file{};
    EXPECT_EQ(outcome(vn_getFileAttributes(handle, 0, kUrl, &file, 0)), 0U);
    const auto status = static_cast<uint32_t>(file.status);
    vn_cleanFileAttributes(handle, &file, 0);
    return status;
}

uint32_t download(ApiHandle* handle, uint32_t flags, int32_t delay = 0) {
    DownloadOptions options{};
    options.flags = flags;
    options.httpDelay = delay;
    return outcome(vn_downloadFile(handle, 0, kUrl, &options));
}

TEST(Standin, ReportsADownloadThatCannotBegin) {
    const RunningClient client;
    const Handle handle;
    EXPECT_EQ(download(handle, VN_DOWNLOAD_WAIT), 0U);
    EXPECT_EQ(statusOf(handle), FILE_STATUS_WAITING + 0U);
    EXPECT_EQ(download(handle, VN_DOWNLOAD_HTTP_DELAY, 1000), 0U);
    EXPECT_EQ(statusOf(handle), FILE_STATUS_SEARCHING + 0U);
    EXPECT_EQ(outcome(vn_pauseFile(handle, 0, kUrl, 0)), 0U);
    EXPECT_EQ(statusOf(handle), FILE_STATUS_PAUSED + 0U);
    EXPECT_EQ(download(handle, 0), 0U);
    EXPECT_TRUE(
        harness::eventually([&] { return statusOf(handle) == FILE_STATUS_DISCONNECTED + 0U; }));
    EXPECT_EQ(outcome(vn_deleteFile(handle, 0, kUrl, nullptr)), 0U);
    EXPECT_EQ(outcome(vn_deleteFile(handle, 0, kUrl, nullptr)), 13U);
}

TEST(Standin, MisbehavesAndTheLibraryCopes) {
    const RunningClient client;
    const Handle handle;
    EXPECT_EQ(download(handle, VN_DOWNLOAD_WAIT), 0U);
    setClientMode("error");
    EXPECT_EQ(outcome(vn_pauseFile(handle, 0, kUrl, 0)), 1U);
    setClientMode("reset");
    FileAttributes file{};
    EXPECT_EQ(outcome(vn_getFileAttributes(handle, 0, kUrl, &file, 0)), 24U);
    EXPECT_EQ(download(handle, VN_DOWNLOAD_WAIT), 0U) << "ordered to begin anew";
    EXPECT_EQ(statusOf(handle), FILE_STATUS_WAITING + 0U);
    setClientMode("reset-always");
    EXPECT_EQ(download(handle, VN_DOWNLOAD_WAIT), 0U) << "judged by the second answer";
    setClientMode("close");
    EXPECT_EQ(outcome(vn_runPeriodicTasks(handle, 0, 0)), 0U);
    EXPECT_NE(vn_pauseFile(handle, 0, kUrl, 0), 0) << "the connection has gone";
    EXPECT_EQ(outcome(vn_pauseFile(handle, 0, kUrl, 0)), 0U);
    setClientMode("");
}

}  // namespace
