// The launch agent's files, the launcher's choice, and homes of every kind.
#include "install/launch_agent.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "harness/files.h"
#include "harness/shell.h"
#include "support/log_file.h"

namespace {

using harness::exists;
using harness::installed;
using harness::readFile;
using harness::writeFile;

const std::string kAgent = "/Library/LaunchAgents/com.velnor.client.plist";
const std::string kLoader = installed("loader.pl");

std::string home() { return getenv("HOME"); }

bool addItem() {
    harness::makeInstallDirectory();
    return _vn_mac_addStartupItem(harness::kInstallPath.c_str());
}

TEST(StartupItem, WritesBothFilesInTheirExactSizes) {
    umask(022);
    ASSERT_TRUE(addItem());
    EXPECT_EQ(readFile(kLoader).size(), 1554U);
    EXPECT_EQ(harness::modeOf(kLoader), 0755U);
    EXPECT_EQ(readFile(home() + kAgent).size(), 543U);
    EXPECT_EQ(harness::modeOf(home() + "/Library/LaunchAgents"), 0755U);
    EXPECT_EQ(harness::run("perl -wc " + kLoader + " 2>&1").output, kLoader + " syntax OK\n");
    ASSERT_TRUE(addItem()) << "over existing files";
    EXPECT_EQ(readFile(home() + kAgent).size(), 543U);
}

TEST(StartupItem, FileThatCannotBeCreatedIsAFailure) {
    const std::vector<std::string> loaderFailed{
        "[eror] _vn_mac_addStartupItem: Failed to create loader script."};
    harness::makeInstallDirectory();
    std::filesystem::create_directory(kLoader);
    EXPECT_FALSE(addItem());
    EXPECT_EQ(harness::logMessages(), loaderFailed);
    std::filesystem::remove(kLoader);
    std::filesystem::create_directories(home() + kAgent);
    EXPECT_FALSE(addItem());
    EXPECT_EQ(harness::logMessages().back(),
              "[eror] _vn_mac_addStartupItem: Failed to create loader plist.");
}

// The log has room left in the block that it holds already.
TEST(StartupItemOnFullDisk, ShortWritesAreLoggedAndNoFailure) {
    harness::makeInstallDirectory();
    std::filesystem::create_directories(home() + "/Library/LaunchAgents");
    VN_LOG_INFO("test", "first");
    harness::fillDisk("/Applications");
    harness::putOnFullDisk(home() + kAgent);
    EXPECT_TRUE(addItem());
    EXPECT_EQ(harness::logMessages(),
              (std::vector<std::string>{
                  "[info] test: first",
                  "[eror] _vn_mac_addStartupItem: Failed to write loader script correctly.",
                  "[eror] _vn_mac_addStartupItem: Failed to write loader plist correctly."}));
}

TEST(StartupItem, HomeMayBeUnsetOrUnusualAndIsOneWordForTheShell) {
    umask(022);
    const std::string passwdHome = home();
    for (const std::string& name :
         {std::string(), std::string("/tmp/a b"), std::string("/tmp/it's;touch owned"),
          std::string("/tmp/$(id)")}) {
        const std::string expected = name.empty() ? passwdHome : name;
        std::filesystem::create_directories(expected + "/Library");
        setenv("HOME", name.c_str(), 1);
        ASSERT_TRUE(addItem()) << name;
        EXPECT_EQ(readFile(expected + kAgent).size(), 543U) << name;
        EXPECT_EQ(_vn_start(), 1);
        EXPECT_EQ(harness::run("launchctl list com.velnor.client.plist").status, 0) << name;
        EXPECT_EQ(_vn_stop(), 1);
        EXPECT_NE(harness::run("launchctl list com.velnor.client.plist 2>&1").status, 0) << name;
        EXPECT_EQ(_vn_mac_removeStartupItem(), 0);
        EXPECT_FALSE(exists(expected + kAgent)) << name;
    }
    unsetenv("HOME");
    EXPECT_TRUE(addItem());
    EXPECT_TRUE(exists(passwdHome + kAgent));
    EXPECT_FALSE(exists("owned"));
}

TEST(StartupItem, HomeTooLongForThePathsRunsAndWritesNothing) {
    setenv("HOME", ("/tmp/" + std::string(980, 'x')).c_str(), 1);
    EXPECT_FALSE(addItem());
    EXPECT_FALSE(exists(kLoader));
    EXPECT_EQ(_vn_start(), 0);
    EXPECT_EQ(_vn_stop(), 0);
    EXPECT_EQ(_vn_mac_removeStartupItem(), -1);
    EXPECT_FALSE(exists("/run/launchd/calls"));
}

TEST(Start, FallsBackToThePlainLoad) {
    ASSERT_TRUE(addItem());
    writeFile("/run/launchd/mode", "no-aqua");
    EXPECT_EQ(_vn_start(), 1);
    EXPECT_EQ(harness::run("cut -d' ' -f1-2 /run/launchd/calls").output,
              "load -S\nload " + home() + kAgent + "\n");
    EXPECT_EQ(harness::run("launchctl list com.velnor.client.plist").status, 0);
}

// Puts down an executable that writes its own name to /tmp/started.
void putCandidate(const std::string& name, int age, unsigned mode = 0755) {
    writeFile(installed(name), "#!/bin/sh\nbasename \"$0\" > /tmp/started\npwd >> /tmp/started\n");
    chmod(installed(name).c_str(), mode);
    harness::run("touch -d '" + std::to_string(age) + " hours ago' '" + installed(name) + "'");
}

std::string started(const std::string& clientIni) {
    std::filesystem::remove("/tmp/started");
    std::filesystem::remove(installed("client.ini"));
    if (!clientIni.empty()) writeFile(installed("client.ini"), clientIni);
    EXPECT_EQ(harness::run(kLoader + " 2>&1").output, "") << "says nothing";
    const std::string text = readFile("/tmp/started");
    return text.substr(0, text.find("\n/Applications/Velnor\n"));
}

TEST(Loader, ChoosesTheNamedClientOrElseTheNewest) {
    ASSERT_TRUE(addItem());
    EXPECT_EQ(started(""), "") << "nothing to start";
    putCandidate("ksmac_1", 3);
    putCandidate("corvane_mac_2", 2);
    putCandidate("ksmac_3", 1, 0644);
    putCandidate("other_4", 0);
    std::filesystem::create_directory(installed("ksmac_5"));
    const std::pair<const char*, const char*> rows[] = {
        {"", "corvane_mac_2"},
        {"MacOSClientURL=https://h.example/p/ksmac_1\n", "ksmac_1"},
        {"MacOSClientURL=https://h.example/p/ksmac_1\r\n", "ksmac_1"},
        {"MacOSClientURL = other_4", "other_4"},
        {"XMacOSClientURL=a/other_4\n", "other_4"},
        {"MacOSClientURL=a/ksmac_1\nMacOSClientURL=a/other_4\n", "other_4"},
        {"MacOSClientURL=a/other_4\nMacOSClientURL=a/missing\n", "other_4"},
        {"MacOSClientURL=a/ksmac_3\n", "corvane_mac_2"},
        {"MacOSClientURL=a/ksmac_5\n", "corvane_mac_2"},
        {"MacOSClientURL=a/\n", "corvane_mac_2"},
        {"MacOSClientURL=\n", "corvane_mac_2"},
        {"Other=1\n", "corvane_mac_2"},
    };
    for (const auto& [clientIni, expected] : rows)
        EXPECT_EQ(started(clientIni), expected) << clientIni;
}

}  // namespace
