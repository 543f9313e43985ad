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

TEST(FullDisk, FailsTheInstallationAtItsOwnFiles) {
    const std::pair<const char*, bool> rows[] = {{"installer.txt", false},
                                                 {"client.ini", true},
                                                 {"ksmacui.tar.gz", true},
                                                 {"accepteula.txt", false}};
    World world;
    world.publish();
    for (const auto& [name, fails] : rows) {
        harness::makeInstallDirectory();
        harness::putOnFullDisk(installed(name));
        const Installed done = install("Velnor", "eula");
        EXPECT_EQ(done.result, fails ? -1 : 0) << name;
        EXPECT_EQ(done.code, fails ? INSTALL_ERROR_DISK_WRITE + 0U : 0U) << name;
        EXPECT_EQ(done.detail, fails ? installed(name) : "");
        stopClient();
        if (fails) {
            EXPECT_EQ(installWithoutContext().code, INSTALL_ERROR_DISK + 0U) << name;
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
