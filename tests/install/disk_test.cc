// Disks that are full at one file, and folders that belong to somebody else.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "harness/files.h"
#include "harness/shell.h"
#include "install/world.h"

namespace {

using harness::installed;

TEST(FullDisk, AtEveryFile) {
    const struct {
        std::string path;
        int32_t result;
        uint32_t code;
        uint32_t plainCode;
    } rows[] = {
        {installed("installer.txt"), 0, 0, 0},      {installed("client.ini"), -1, 16, 7},
        {installed("ksmac_1.6.5"), -1, 16, 7},      {installed("ksmacui.tar.gz"), -1, 16, 7},
        {installed("uninstall.tar.gz"), -1, 16, 7}, {installed("accepteula.txt"), 0, 0, 0},
    };
    World world;
    world.publish();
    for (const auto& row : rows) {
        harness::makeInstallDirectory();
        harness::putOnFullDisk(row.path);
        const Installed done = install("Velnor", "eula");
        EXPECT_EQ(done.result, row.result) << row.path;
        EXPECT_EQ(done.code, row.code) << row.path;
        EXPECT_EQ(done.detail, row.result == 0 ? "" : row.path);
        stopClient();
        if (row.result != 0) {
            EXPECT_EQ(installWithoutContext().code, row.plainCode) << row.path;
        }
        std::filesystem::remove_all(harness::kInstallPath);
    }
}

// Every size of the free space, block by block, until all fits. The last artifact does not verify,
// so that no client is waited for.
TEST(ShrunkenDisk, NeverHoldsHalfAFileThatCounts) {
    World world;
    world.addArtifact("MacOSClient", "ksmac_1.6.5", std::string(20'000, 'c'));
    world.ini["MacOSUninstallerSig"] = world.ini["MacOSClientSig"];
    world.publish();
    for (size_t blocks = 1; blocks < 60; ++blocks) {
        harness::makeInstallDirectory();
        harness::fillDisk("/Applications", blocks);
        const Installed failed = install();
        EXPECT_EQ(failed.result, -1) << blocks;
        if (failed.code == INSTALL_ERROR_VERIFICATION_FAILURE) {
            EXPECT_GT(blocks, 5U) << "the client alone needs five";
            EXPECT_EQ(harness::readFile(installed("ksmac_1.6.5")), std::string(20'000, 'c'));
            return;
        }
        EXPECT_EQ(failed.code, INSTALL_ERROR_DISK_WRITE + 0U) << blocks;
        EXPECT_FALSE(harness::exists(installed("loader.pl")));
        std::filesystem::remove_all(harness::kInstallPath);
        std::filesystem::remove("/Applications/filler");
    }
    FAIL() << "never enough";
}

TEST(ForeignFolder, IsAWriteFailureOfTheFirstFile) {
    World world;
    world.publish();
    harness::makeInstallDirectory();
    ASSERT_EQ(chmod(harness::kInstallPath.c_str(), 0555), 0);
    const Installed failed = install();
    EXPECT_EQ(failed.code, INSTALL_ERROR_DISK_WRITE + 0U);
    EXPECT_EQ(failed.detail, installed("client.ini"));
    EXPECT_EQ(harness::run("ls -A /Applications/Velnor").output, "");
}

TEST(ForeignFolder, FileInPlaceOfTheFolderIsAWriteFailure) {
    World world;
    world.publish();
    harness::writeFile(harness::kInstallPath, "in the way");
    EXPECT_EQ(install().code, INSTALL_ERROR_DISK_WRITE + 0U);
    EXPECT_EQ(harness::readFile(harness::kInstallPath), "in the way");
}

}  // namespace
