// A client that never answers: two minutes of patience, counted, and what is left for support.
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "harness/files.h"
#include "harness/shell.h"
#include "install/world.h"

namespace {

TEST(SilentClient, IsPinged121TimesASecondApart) {
    World world;
    harness::writeFile("/tmp/standin_client.mode", "refuse");
    world.publish();
    const auto start = std::chrono::steady_clock::now();
    const Installed failed = install();
    const auto seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start);
    EXPECT_EQ(failed.result, -1);
    EXPECT_EQ(failed.code, INSTALL_ERROR_CLIENT_NOTRESPONDING + 0U);
    EXPECT_EQ(failed.progress, (std::vector<uint32_t>{5, 10, 15, 80, 85}));
    EXPECT_GE(seconds.count(), 119.9);
    EXPECT_LE(seconds.count(), 150.0);
    EXPECT_EQ(harness::run("grep -c '^list' /run/launchd/calls").output, "122\n")
        << "one before the installation, 121 after the start";
    const std::string log = harness::readFile(harness::installed("installer.txt"));
    const size_t waited = log.find("Waited enough for client; no response, exiting\n");
    ASSERT_NE(waited, std::string::npos);
    EXPECT_NE(log.find("Network Statistics\n", waited), std::string::npos);
}

}  // namespace
