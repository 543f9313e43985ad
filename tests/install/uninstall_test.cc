// Uninstalling: what the client is told, how long its farewell is awaited, and what is deleted when
// no application is left.
#include "install/uninstall.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "api/scripted_client.h"
#include "harness/files.h"
#include "velnor/capi.h"

namespace {

using harness::exists;
using harness::installed;
using harness::makeInstallation;
using Clock = std::chrono::steady_clock;
using Texts = std::vector<std::string>;
namespace fs = std::filesystem;

const std::string kRegistry = installed("appregistry.dat");
const std::string kAgent = harness::agentPath();
const std::string kPane = harness::panePath();
const std::string kSent = R"({"uninstallMsgSent" : true})";
const std::string kNotSent = R"({"uninstallMsgSent":false})";

bool isUnloaded() {
    return harness::readFile("/run/launchd/calls").ends_with("unload " + kAgent + "\n");
}

TEST(Uninstall, TellsTheClientAndAwaitsItsFarewell) {
    const struct {
        const char* registry;
        const char* name;  // none forces the client out
        const char* ini;
        Texts polls;
        size_t polled;
        bool isRemoved;
    } rows[] = {
        {"Velnor\n", "Velnor", "", {kSent}, 1, true},
        {"Velnor\nOther\n", nullptr, "", {kSent}, 1, true},
        {"Velnor\nOther\n", "Velnor", "UninstallTimeOutSec=90", {}, 1, false},
        {"Other\n", "Velnor", "", {}, 0, false},  // it does not even answer the farewell
        {"Other\n", "Velnor", "X=1\nUninstallTimeOutSec=3x", {kNotSent, "garbage", ""}, 3, false},
        {"Other\n", "Velnor", "UninstallTimeOutSec=-5\n", {kNotSent, kSent}, 2, false},
        {"Other\n", "Velnor", "", {R"({"uninstallMsgSent":"true"})"}, 10, false},
    };
    for (const auto& row : rows) {
        makeInstallation(row.registry);
        harness::writeFile(installed("client.ini"), row.ini);
        harness::writeFile("/run/launchd/mode", "noisy");
        test::ScriptedClient::Replies replies;
        if (row.polled > 0) replies.push_back({"uninstall", {"{}"}});
        if (!row.polls.empty()) replies.push_back({"getClientAttributes", row.polls});
        const test::ScriptedClient told(replies);
        const Clock::time_point start = Clock::now();
        EXPECT_EQ(_vn_uninstall(row.name, false), 1);
        EXPECT_GE(Clock::now() - start + std::chrono::seconds(1), std::chrono::seconds(row.polled))
            << row.ini;
        Texts requests(row.polled, "getClientAttributes&cid=1&apiversion=capi_1.6.5&complete");
        requests.insert(requests.begin(),
                        row.isRemoved ? "uninstall&cid=1&removing=true" : "uninstall&cid=1");
        EXPECT_EQ(told.paths(), requests) << row.ini;
        const std::string agent = row.name != nullptr ? row.name : "(force)";
        EXPECT_NE(told.head().find("User-Agent: " + agent + "\r\n"), std::string::npos);
        EXPECT_EQ(isUnloaded(), row.isRemoved);
        const int left = exists(kAgent) + exists(harness::kInstallPath) + exists(kPane);
        EXPECT_EQ(left, row.isRemoved ? 0 : 3);
        fs::remove("/run/launchd/calls");
    }
    EXPECT_EQ(harness::readFile(kRegistry), "Other\n");
}

TEST(Uninstall, FailuresHaveTheirCodes) {
    makeInstallation("Velnor\n");
    EXPECT_EQ(vn_uninstall(nullptr, 0), -1);
    EXPECT_EQ(vn_getLastError(), INSTALL_ERROR_INVALIDARGUMENT + 0U);
    setenv("HOME", ("/tmp/" + std::string(1000, 'x')).c_str(), 1);
    const test::ScriptedClient told(test::ScriptedClient::Replies{});
    EXPECT_EQ(vn_uninstall("Velnor", 0), -1);
    EXPECT_EQ(vn_getLastError(), INSTALL_ERROR_STOP + 0U);
    EXPECT_TRUE(exists(kRegistry));
    EXPECT_EQ(told.paths(), Texts{}) << "an agent that is not listed is told nothing";
}

TEST(RecursiveDelete, KeepsTheIdentityByDeletingElsewhere) {
    makeInstallation("Velnor\n");
    fs::create_directories("/tmp/work/installer.txt/folder");
    fs::current_path("/tmp/work/installer.txt");
    for (const char* name : {"a", "guid.ini", "GUID.INI", "keep", "folder/guid.ini"}) {
        harness::writeFile(name, "");
    }
    fs::current_path("..");
    EXPECT_EQ(_vn_recursiveDelete("keep", true), 0);
    EXPECT_FALSE(exists("installer.txt/a") || exists("installer.txt/folder"));
    for (const char* name : {"guid.ini", "GUID.INI", "keep"}) {
        EXPECT_TRUE(exists(std::string("installer.txt/") + name)) << name;
    }
    EXPECT_EQ(vn_uninstall("Velnor", VN_UNINSTALL_KEEP_IDENTITY), 0);
    EXPECT_EQ(vn_getLastError(), 0U);
    EXPECT_EQ(harness::readFile(installed("guid.ini")), "0");
    EXPECT_FALSE(exists(kAgent) || exists(kPane));
    EXPECT_EQ(_vn_recursiveDelete(std::string(2000, 'x').c_str(), true), -1);
}

}  // namespace
