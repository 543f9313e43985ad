// The launch agent's files, the launcher's choice, and homes of every kind.
#include "install/launch_agent.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "harness/files.h"
#include "harness/shell.h"

namespace {

using harness::exists;
using harness::installed;
using harness::readFile;
using harness::run;
namespace fs = std::filesystem;

const std::string kAgent = "/Library/LaunchAgents/com.velnor.client.plist";
const std::string kLoader = installed("loader.pl");

bool addItem() {
    harness::makeInstallDirectory();
    return _vn_mac_addStartupItem(harness::kInstallPath.c_str());
}

TEST(StartupItem, OnlyAFileThatCannotBeCreatedIsAFailure) {
    fs::create_directories(kLoader);
    EXPECT_FALSE(addItem());
    fs::remove(kLoader);
    fs::create_directories(harness::agentPath());
    EXPECT_FALSE(addItem());
    fs::remove(harness::agentPath());
    const rlimit limit{500, RLIM_INFINITY};
    signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    EXPECT_TRUE(addItem());
    const std::string error = "[eror] _vn_mac_addStartupItem: Failed to ";
    EXPECT_EQ(
        harness::logMessages(),
        (std::vector<std::string>{error + "create loader script.", error + "create loader plist.",
                                  error + "write loader script correctly.",
                                  error + "write loader plist correctly."}));
}

TEST(StartupItem, IsWrittenAndLoadedInAnyHome) {
    umask(022);
    const std::string passwdHome = getenv("HOME");
    for (const std::string name : {"", "/tmp/it's a;touch owned", "/tmp/$(id)", "../tmp"}) {
        const std::string expected = name.starts_with('/') ? name : passwdHome;
        fs::create_directories(expected + "/Library");
        setenv("HOME", name.c_str(), 1);
        ASSERT_TRUE(addItem()) << name;
        EXPECT_EQ(readFile(kLoader).size(), 1554U);
        EXPECT_EQ(harness::modeOf(kLoader), 0755U);
        EXPECT_EQ(readFile(expected + kAgent).size(), 543U) << name;
        EXPECT_EQ(harness::modeOf(expected + "/Library/LaunchAgents"), 0755U);
        EXPECT_EQ(_vn_start(), 1);
        EXPECT_EQ(run("launchctl list com.velnor.client.plist").status, 0) << name;
        EXPECT_EQ(_vn_stop(), 1);
        EXPECT_NE(run("launchctl list com.velnor.client.plist 2>&1").status, 0) << name;
        EXPECT_EQ(_vn_mac_removeStartupItem(), 0) << name;
        EXPECT_FALSE(exists(expected + kAgent)) << name;
    }
    unsetenv("HOME");
    EXPECT_TRUE(addItem());
    EXPECT_TRUE(exists(passwdHome + kAgent));
    EXPECT_FALSE(exists("owned"));
}

TEST(Start, FallsBackToThePlainLoad) {
    ASSERT_TRUE(addItem());
    harness::writeFile("/run/launchd/mode", "no-aqua");
    EXPECT_EQ(_vn_start(), 1);
    EXPECT_EQ(run("cut -d' ' -f1-2 /run/launchd/calls").output,
              "load -S\nload " + harness::agentPath() + "\n");
}

// Clients that write their own name and folder to /tmp/started.
TEST(Loader, ChoosesTheNamedClientOrElseTheNewest) {
    ASSERT_TRUE(addItem());
    EXPECT_EQ(run(kLoader + " 2>&1").output, "") << "nothing to start";
    run("cd /Applications/Velnor; mkdir ksmac_5;"
        "for n in ksmac_1 corvane_mac_2 ksmac_3 other_4; do"
        "  echo '#!/bin/sh\n(basename \"$0\"; pwd) > /tmp/started' > $n; chmod 755 $n;"
        "  touch -d \"2020-01-0${n##*_}\" $n;"
        "done; chmod 644 ksmac_3");
    const std::pair<const char*, const char*> rows[] = {
        {"MacOSClientURL=https://h.example/p/ksmac_1\r\n", "ksmac_1"},
        {"MacOSClientURL=a/ksmac_1\nXMacOSClientURL = other_4", "other_4"},
        {"MacOSClientURL=a/other_4\nMacOSClientURL=a/missing\n", "other_4"},
        {"MacOSClientURL=a/ksmac_3\n", "corvane_mac_2"},
        {"MacOSClientURL=a/ksmac_5\n", "corvane_mac_2"},
        {"MacOSClientURL=\n", "corvane_mac_2"},
    };
    for (const auto& [clientIni, expected] : rows) {
        harness::writeFile(installed("client.ini"), clientIni);
        EXPECT_EQ(run(kLoader + " 2>&1").output, "") << "says nothing";
        EXPECT_EQ(readFile("/tmp/started"), std::string(expected) + "\n/Applications/Velnor\n");
    }
}

}  // namespace
