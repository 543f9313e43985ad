// Uninstalling: the registry rewritten, the client told, and what is deleted when nobody is left.
#include "install/uninstall.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "api/last_error.h"
#include "harness/files.h"
#include "install/registry.h"
#include "sandbox/servers/raw_server.h"
#include "velnor/capi.h"

namespace {

using harness::exists;
using harness::installed;
using sandbox::RawServer;
using Clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

const std::string kRegistry = installed("appregistry.dat");
const std::string kHome = getenv("HOME");
const std::string kAgent = kHome + "/Library/LaunchAgents/com.velnor.client.plist";
const std::string kPane = kHome + "/Library/PreferencePanes/VelnorCorvane.prefPane";

// What an installation leaves, without a running client.
void prepare(const std::string& registry) {
    harness::makeInstallDirectory();
    fs::create_directories(kHome + "/Library/LaunchAgents");
    fs::create_directories(kPane + "/Contents");
    harness::writeFile(kRegistry, registry);
    harness::writeFile(installed("guid.ini"), "0");
    harness::writeFile(kAgent, "");
}

std::string calls() { return harness::readFile("/run/launchd/calls"); }

int32_t unregister(const std::string& name) {
    return velnor::unregisterApplication(harness::kInstallPath.c_str(), name.c_str());
}

TEST(Unregister, TakesWholeLinesOut) {
    const std::string line1023(1023, 'x');
    const std::string line2050(2050, 'x');
    const struct {
        std::string before;
        std::string name;
        int32_t others;
        std::string after;
    } rows[] = {
        {"", "A", 0, ""},
        {"A\n", "A", 0, ""},
        {"A", "A", 0, ""},
        {"A\nB\nA\n", "A", 1, "B\n"},
        {"B\nAA\na\nXA\n", "A", 4, "B\nAA\na\nXA\n"},
        {"AA\nA", "AA", 1, "A\n"},
        {"A\r\nB\r\n", "A", 2, "A\r\nB\r\n"},
        {"A\r\n", "A\r", 0, ""},
        {"\n\nA\n", "A", 2, "\n\n"},
        {"\nA\n", "", 1, "A\n"},
        {line1023 + "\nA\n", line1023, 1, "A\n"},
        {line1023 + "\nA\n", "A", 1, line1023 + "\n"},
        {line1023 + "x\n", line1023 + "x", 1, line1023 + "x\n"},
        {line1023 + "A\nA\n", "A", 1, line1023 + "A\n"},
        {line2050 + "\nA\n" + line2050, "A", 2, line2050 + "\n" + line2050 + "\n"},
        {std::string("A\0\nA\n", 5), "A", 1, std::string("A\0\n", 3)},
    };
    for (const auto& row : rows) {
        prepare(row.before);
        harness::writeFile(kRegistry + ".bak", "old");
        EXPECT_EQ(unregister(row.name), row.others) << row.before.substr(0, 20);
        EXPECT_EQ(harness::readFile(kRegistry), row.after);
        EXPECT_FALSE(exists(kRegistry + ".bak"));
    }
}

TEST(Unregister, RegistryThatCannotBeRewrittenStays) {
    EXPECT_EQ(unregister("A"), 0) << "nothing is installed";
    harness::makeInstallDirectory();
    EXPECT_EQ(unregister("A"), 0);
    EXPECT_EQ(_vn_getLastError(), 0U);
    const std::pair<const char*, std::function<void()>> rows[] = {
        {"read-only folder around it", [] { chmod(harness::kInstallPath.c_str(), 0555); }},
        {"unreadable", [] { chmod(kRegistry.c_str(), 0); }},
        {"backup that is a folder", [] { fs::create_directories(kRegistry + ".bak/full"); }},
    };
    for (const auto& [what, spoil] : rows) {
        prepare("A\nB\n");
        spoil();
        _vn_setLastError(0);
        EXPECT_EQ(unregister("A"), -1) << what;
        EXPECT_EQ(_vn_getLastError(), INSTALL_ERROR_DISK + 0U) << what;
        chmod(harness::kInstallPath.c_str(), 0755);
        chmod(kRegistry.c_str(), 0600);
        EXPECT_EQ(harness::readFile(kRegistry), "A\nB\n") << what;
    }
    fs::remove_all(kRegistry + ".bak");
    chmod(kRegistry.c_str(), 0400);
    EXPECT_EQ(unregister("A"), 1) << "a registry that is only read-only";

    // One descriptor is free: the new registry cannot be opened beside the backup.
    prepare("A\nB\n");
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    const int next = dup(0);
    close(next);
    const rlimit tight{static_cast<rlim_t>(next) + 1, limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &tight);
    EXPECT_EQ(unregister("A"), -1);
    setrlimit(RLIMIT_NOFILE, &limit);
    EXPECT_EQ(harness::readFile(kRegistry), "A\nB\n");
}

TEST(UnregisterOnFullDisk, KeepsEveryRegistration) {
    const std::string registry = "A\n" + std::string(3 * 4096, 'B') + "\n";
    prepare(registry);
    for (const size_t leftBlocks : {size_t{2}, size_t{0}}) {
        harness::fillDisk(harness::kInstallPath, leftBlocks);
        EXPECT_EQ(vn_uninstall("A", 0), -1);
        EXPECT_EQ(vn_getLastError(), INSTALL_ERROR_DISK + 0U);
        EXPECT_TRUE(harness::readFile(kRegistry) == registry);
        EXPECT_FALSE(exists(kRegistry + ".bak"));
        EXPECT_EQ(calls().find("unload"), std::string::npos) << "the client keeps running";
    }
}

using Replies = std::map<std::string, std::string>;

// A client that answers what begins with a function's name with the text that it has here, and the
// rest, pings among it, with "pong". "hang up" and "hang" are no answers; "once more" acknowledges
// a farewell when it is asked for the second time.
class Client {
  public:
    explicit Client(Replies replies)
        : replies_(std::move(replies)),
          server_([this](int fd, const std::string& head) { answer(fd, head); }, 9421) {
        harness::writeFile("/run/launchd/mode", "noisy");
    }

    // "AGENT FUNCTION..." of every request but the pings.
    std::vector<std::string> requests() const {
        std::vector<std::string> requests;
        for (const std::string& head : server_.heads()) {
            const size_t agent = head.find("User-Agent: ");
            if (agent == std::string::npos) continue;
            requests.push_back(head.substr(agent + 12, head.find('\r', agent) - agent - 12) + " " +
                               functionOf(head));
        }
        return requests;
    }

  private:
    static std::string functionOf(const std::string& head) {
        const size_t begin = head.find("function=") + 9;
        return head.substr(begin, head.find(' ', begin) - begin);
    }

    void answer(int fd, const std::string& head) {
        const std::string function = functionOf(head);
        std::string reply = "pong";
        for (const auto& [prefix, text] : replies_) {
            if (function.starts_with(prefix)) reply = text;
        }
        if (reply == "hang up") return;
        if (reply == "hang") {
            for (char byte = 0; read(fd, &byte, 1) > 0;) continue;  // until the other side goes
        }
        if (reply == "once more") reply = "{\"uninstallMsgSent\":" + isSecond() + "}";
        sandbox::sendAll(fd, "HTTP/1.0 200 OK\r\n\r\n" + reply);
    }

    std::string isSecond() { return asked_++ == 0 ? "false" : "true"; }

    const Replies replies_;
    std::atomic<int> asked_ = 0;
    RawServer server_;
};

constexpr char kPoll[] = " getClientAttributes&cid=1&apiversion=capi_1.6.5&complete";

TEST(Uninstall, ClientOfOthersIsToldAndKeptRunning) {
    prepare("Velnor\nOther\n");
    const Client client(Replies{{"getClientAttributes", "{\"uninstallMsgSent\":true}"}});
    EXPECT_EQ(vn_uninstall("Velnor", 0), 0);
    EXPECT_EQ(vn_getLastError(), 0U);
    EXPECT_EQ(client.requests(),
              (std::vector<std::string>{"Velnor uninstall&cid=1", std::string("Velnor") + kPoll}));
    EXPECT_EQ(harness::readFile(kRegistry), "Other\n");
    EXPECT_EQ(calls().find("unload"), std::string::npos);
    EXPECT_TRUE(exists(kAgent));
}

TEST(Uninstall, LastOneTakesEverythingAlong) {
    prepare("Velnor\n");
    harness::writeFile(kHome + "/Library/PreferencePanes/other", "");
    const Client client(Replies{{"getClientAttributes", "{\"uninstallMsgSent\" : true}"}});
    EXPECT_EQ(vn_uninstall("Velnor", 0), 0);
    EXPECT_EQ(client.requests().at(0), "Velnor uninstall&cid=1&removing=true");
    EXPECT_TRUE(calls().ends_with("unload " + kAgent + "\n")) << calls();
    for (const std::string& path : {kAgent, harness::kInstallPath, kPane}) {
        EXPECT_FALSE(exists(path)) << path;
    }
    EXPECT_TRUE(exists(kHome + "/Library/PreferencePanes/other"));
}

TEST(Uninstall, WithoutANameTheClientIsForcedOut) {
    prepare("Velnor\nOther\n");
    const Client client(Replies{{"getClientAttributes", "hang up"}});
    EXPECT_EQ(_vn_uninstall(nullptr, false), 1);
    EXPECT_EQ(client.requests(), (std::vector<std::string>{"(force) uninstall&cid=1&removing=true",
                                                           std::string("(force)") + kPoll}));
    EXPECT_FALSE(exists(harness::kInstallPath));
}

TEST(Uninstall, ClientThatDoesNotAnswerThePingIsNotToldAnything) {
    prepare("Velnor\n");
    const Client client(Replies{{"ping", "garbage"}});
    _vn_setLastError(99);
    EXPECT_EQ(vn_uninstall("Velnor", 0), 0);
    EXPECT_EQ(vn_getLastError(), 0U);
    EXPECT_EQ(client.requests(), std::vector<std::string>{});
    EXPECT_FALSE(exists(harness::kInstallPath));
}

TEST(Uninstall, FarewellIsAwaitedAsLongAsClientIniSays) {
    const struct {
        std::string ini;
        Replies replies;
        size_t polls;
    } rows[] = {
        {"UninstallTimeOutSec=2\n", {{"getClientAttributes", "{\"uninstallMsgSent\":false}"}}, 2},
        {"X=1\nUninstallTimeOutSec=1", {{"getClientAttributes", "garbage"}}, 1},
        {"UninstallTimeOutSec=2x", {{"getClientAttributes", ""}}, 2},
        {"UninstallTimeOutSec=3", {{"getClientAttributes", "hang up"}}, 1},
        {"UninstallTimeOutSec=3", {{"uninstall", "hang up"}}, 0},
        {"UninstallTimeOutSec=0\n", {{"getClientAttributes", "once more"}}, 2},
        {"UninstallTimeOutSec=-5\n", {{"getClientAttributes", "once more"}}, 2},
        {"UninstallTimeOutSec=text\n", {{"getClientAttributes", "once more"}}, 2},
        {"UninstallTimeOutSec", {{"getClientAttributes", "once more"}}, 2},
        {"", {{"getClientAttributes", "once more"}}, 2},
    };
    for (const auto& row : rows) {
        prepare("Other\n");
        harness::writeFile(installed("client.ini"), row.ini);
        const Client client(row.replies);
        const Clock::time_point start = Clock::now();
        EXPECT_EQ(vn_uninstall("Velnor", 0), 0);
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - start);
        EXPECT_EQ(client.requests().size(), 1 + row.polls) << row.ini;
        EXPECT_LE(seconds.count(), static_cast<int64_t>(row.polls)) << row.ini;
        EXPECT_GE(seconds.count() + 1, static_cast<int64_t>(row.polls)) << row.ini;
    }
}

TEST(Uninstall, FarewellIsAwaitedTenTimesByDefault) {
    prepare("Other\n");
    const Client client(Replies{{"getClientAttributes", "{\"uninstallMsgSent\":\"true\"}"}});
    EXPECT_EQ(vn_uninstall("Velnor", 0), 0);
    EXPECT_EQ(client.requests().size(), 1U + 10U);
}

TEST(Uninstall, ClientThatHangsIsGivenUp) {
    prepare("Velnor\n");
    const Client client(Replies{{"uninstall", "hang"}});
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(vn_uninstall("Velnor", 0), 0);
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(40));
    EXPECT_FALSE(exists(harness::kInstallPath));
}

TEST(Uninstall, FailuresHaveTheirCodes) {
    EXPECT_EQ(vn_uninstall(nullptr, 0), -1);
    EXPECT_EQ(vn_getLastError(), INSTALL_ERROR_INVALIDARGUMENT + 0U);

    prepare("");
    fs::remove(kRegistry);
    fs::create_directory(kRegistry);
    const Client client(Replies{{"uninstall", "hang up"}});
    EXPECT_EQ(vn_uninstall("Velnor", 0), -1);
    EXPECT_EQ(vn_getLastError(), INSTALL_ERROR_DISK + 0U)
        << "whatever the talk with the client left";
    EXPECT_EQ(client.requests().at(0), "Velnor uninstall&cid=1");

    EXPECT_TRUE(fs::is_directory(kRegistry));

    fs::remove(kRegistry);
    setenv("HOME", ("/tmp/" + std::string(1000, 'x')).c_str(), 1);
    EXPECT_EQ(vn_uninstall("Velnor", 0), -1);
    EXPECT_EQ(vn_getLastError(), INSTALL_ERROR_STOP + 0U);
    EXPECT_TRUE(exists(harness::kInstallPath));
}

TEST(RecursiveDelete, KeepsTheIdentityByDeletingElsewhere) {
    prepare("Velnor\n");
    fs::create_directories("/tmp/work/installer.txt/folder");
    fs::current_path("/tmp/work");
    for (const char* name : {"a", "guid.ini", "GUID.INI", "keep", "folder/guid.ini"}) {
        harness::writeFile(std::string("installer.txt/") + name, "");
    }
    harness::writeFile("outside", "");
    EXPECT_EQ(_vn_recursiveDelete("keep", true), 0);
    EXPECT_FALSE(exists("installer.txt/a"));
    EXPECT_FALSE(exists("installer.txt/folder")) << "with the guid.ini in it";
    for (const char* name : {"guid.ini", "GUID.INI", "keep"}) {
        EXPECT_TRUE(exists(std::string("installer.txt/") + name)) << name;
    }
    EXPECT_TRUE(exists("outside"));

    EXPECT_EQ(vn_uninstall("Velnor", VN_UNINSTALL_KEEP_IDENTITY), 0);
    EXPECT_FALSE(exists("installer.txt/keep"));
    EXPECT_TRUE(exists("installer.txt/guid.ini"));
    EXPECT_EQ(harness::readFile(installed("guid.ini")), "0");
    EXPECT_FALSE(exists(kAgent));
    EXPECT_FALSE(exists(kPane));
    EXPECT_EQ(_vn_recursiveDelete(std::string(2000, 'x').c_str(), true), -1);
}

}  // namespace
