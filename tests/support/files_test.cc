// Files and paths, on disks that are full and in buffers that are small.
#include "support/files.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <string>

#include "api/last_error.h"
#include "harness/files.h"
#include "support/owned.h"
#include "support/paths.h"
#include "support/wait.h"
#include "velnor/capi.h"

namespace {

TEST(WriteFile, CountsAsDoneOnlyWhenTheDiskTookIt) {
    const std::string big(100000, 'x');
    const struct {
        const char* path;
        uint32_t size;
        int32_t result;
    } rows[] = {
        {"/tmp/file", 5, 1},      {"/tmp/file", 0, 1},
        {"/dev/full", 5, 0},       // shows at the close
        {"/dev/full", 100000, 0},  // shows at the write
        {"/tmp", 5, 0},           {"/no/such/folder", 5, 0},
    };
    for (const auto& row : rows) {
        _vn_setLastError(0);
        EXPECT_EQ(_vn_writeFile(row.path, big.data(), row.size, "wb"), row.result) << row.path;
        EXPECT_EQ(_vn_getLastError(), row.result ? 0U : INSTALL_ERROR_DISK + 0U) << row.path;
    }
}

TEST(ReadFile, ReadsUpToTheGivenSize) {
    harness::writeFile("/tmp/f", "abcdef");
    harness::writeFile("/tmp/empty", "");
    char buffer[8] = "zzzzzzz";
    _vn_setLastError(9);
    EXPECT_EQ(_vn_readFile("/tmp/f", buffer, 3, "r"), 3U);
    EXPECT_EQ(std::string(buffer), "abczzzz");
    EXPECT_EQ(_vn_readFile("/tmp/empty", buffer, 3, "r"), 0U);
    EXPECT_EQ(_vn_getLastError(), 9U);
    EXPECT_EQ(_vn_readFile("/tmp/missing", buffer, 3, "r"), 0U);
    EXPECT_EQ(_vn_getLastError(), INSTALL_ERROR_DISK + 0U);
}

TEST(InstallPath, NeedsRoomForItsTerminator) {
    char buffer[21] = "untouched";
    EXPECT_EQ(_vn_getInstallPath(buffer, 20), 0);
    EXPECT_EQ(_vn_getLastError(), INSTALL_ERROR_INSUFFICIENTMEMORY + 0U);
    EXPECT_STREQ(buffer, "untouched");
    EXPECT_EQ(_vn_getInstallPath(buffer, 21), 20);
    EXPECT_STREQ(buffer, "/Applications/Velnor");
    EXPECT_STREQ(velnor::OwnedText(_vn_getInstallPathForFile("installer.txt")).get(),
                 "/Applications/Velnor/installer.txt");
}

TEST(FormatPath, RefusesWhatDoesNotFit) {
    char path[velnor::kPathSize];
    EXPECT_TRUE(velnor::formatPath(path, "%s", std::string(1023, 'x').c_str()));
    EXPECT_FALSE(velnor::formatPath(path, "%s", std::string(1024, 'x').c_str()));
}

TEST(Sleep, WaitsWholeSecondsAndASignalEndsIt) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(_vn_sleep(1), 0);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(990));
    std::signal(SIGALRM, [](int) {});
    alarm(1);
    EXPECT_EQ(_vn_sleep(30), -1);
}

}  // namespace
