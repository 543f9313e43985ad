// Lets every allocation of every entry point fail, one at a time. The call then succeeds all the
// same, or fails with a code that its row allows; nothing crashes, hangs, or stays open.
#include <unistd.h>

#include <csignal>
#include <memory>
#include <set>

#include "api/scripted_client.h"
#include "harness/harness.h"
#include "install/world.h"

namespace {

using test::kUrl;
size_t g_number = 0, g_lost = 0;  // of the allocation that fails; how often that was not survived
std::unique_ptr<test::ScriptedClient> g_client;
ApiHandle* g_handle = nullptr;

void lose(const char* what, uint32_t code) {
    ++g_lost;
    std::fprintf(stderr, "allocation %zu: %s, code %u\n", g_number, what, code);
}

// An installation, and a client that makes a challenge of everything and resets a download.
void stand() {
    const std::string challenge = test::textReply("Challenge:a\\\\b");
    harness::writeFile("/run/launchd/mode", "noisy");
    harness::makeInstallation("Velnor\n");
    harness::writeFile(harness::installed("client.ini"), "UninstallTimeOutSec=1\n");
    g_client = std::make_unique<test::ScriptedClient>(test::ScriptedClient::Replies{
        {"downloadFile", {challenge, test::kNull}},
        {"getFileAttributes", {R"({"resetdownload":true})", R"({"status":"PAUSED","path":"f"})"}},
        {"pauseFile", {test::kNull}},
        {"deleteFile", {challenge, test::kNull}},
        {"getClientAttributes", {R"({"executableversion":"1","uninstallMsgSent":true})"}},
        {"runPeriodicTasks", {R"({"result":null})"}},
        {"uninstall", {"{}"}}});
}

// A release, and a client that is listed from "launchctl load" on.
void offer() {
    static World world;
    world.addArtifact("MacOSClient", "ksmac_1.6.5", "#!/bin/sh\n");
    world.publish();
    g_client = std::make_unique<test::ScriptedClient>(test::ScriptedClient::Replies{});
    harness::writeFile("/run/launchd/mode", "silent");
    harness::run("echo 'echo noisy >/run/launchd/mode' >/tmp/launchctl; chmod 755 /tmp/launchctl");
    setenv("PATH", "/tmp:/usr/bin:/bin", 1);
}

const struct Row {
    const char* name;
    std::set<uint32_t> codes;  // that a failure may leave
    void (*prepare)();
    bool (*call)();
} kRows[] = {
    // clang-format off
    {"initialize", {2, 4}, stand, [] { return vn_initialize("A", &g_handle) == 0; }},
    {"calls", {4}, [] { stand(), vn_initialize("A", &g_handle); }, [] {
         const DownloadOptions options{0, ~0U, 1, "f", 0, "c", "q", "user", "pass", 2, 0, 1};
         FileAttributes file{};
         ClientAttributes client{};
         const bool succeeded =
             vn_downloadFile(g_handle, 7, kUrl, &options) == 0 &&
             vn_pauseFile(g_handle, 7, kUrl, 0) == 0 && vn_runPeriodicTasks(g_handle, 7, 0) == 0 &&
             vn_getAttributes(g_handle, 7, &client, 0) == 0 && client.executableversion &&
             vn_getFileAttributes(g_handle, 7, kUrl, &file, 0) == 0 && file.path && client.guid &&
             vn_deleteFile(g_handle, 7, kUrl, nullptr) == 0 && vn_acceptEULA(7, "eula", 0) == 0;
         if (succeeded && access("/Applications/Velnor/accepteula.txt", F_OK) != 0)
             lose("an EULA that is not recorded", 0);
         vn_cleanFileAttributes(g_handle, &file, 0);
         vn_cleanAttributes(g_handle, &client, 0);
         return succeeded;
     }},
    {"uninstall", {4, 10}, stand, [] {
         return vn_install("New", 7, nullptr, nullptr) == 0 && vn_uninstall("New", 0) == 0 &&
                vn_uninstall("Velnor", VN_UNINSTALL_KEEP_IDENTITY) == 0;
     }},
    {"install", {4, 5}, offer, [] { return vn_install("Velnor", 7, nullptr, nullptr) == 0; }},
    // clang-format on
};

void sweep(const Row& row) {
    std::vector<std::string> expected;
    size_t open = SIZE_MAX;
    for (bool reached = true; reached || g_number == 1; ++g_number) {
        alarm(120);
        harness::run("rm -rf /Applications/* ~/*; mkdir -p /Applications/Velnor ~/Library");
        row.prepare();
        harness::failAllocation(g_number);
        const bool succeeded = row.call();
        const uint32_t code = vn_getLastError();
        reached = harness::hasFailedAllocation();
        const auto asked = g_handle ? g_client->paths() : std::vector<std::string>{};
        if (g_number == 0) expected = asked;
        if (succeeded && asked != expected) lose("success without the same requests", code);
        if (!succeeded && !row.codes.contains(code)) lose("failure", code);
        if (g_handle != nullptr) vn_uninitialize(std::exchange(g_handle, nullptr), 0);
        g_client.reset();
        if (!harness::eventually([&] { return harness::openDescriptors() <= open; }))
            lose("open descriptors", code);
        open = harness::openDescriptors();
    }
    const size_t tried = g_number - 2;
    std::printf("alloc  %-26s %9zu %9zu %9zu\n", row.name, tried, tried,
                tried - std::min(tried, g_lost));
}

}  // namespace

// Without an argument, the names of the rows.
int main(int argc, char** argv) {
    for (const int number : {SIGALRM, SIGABRT, SIGSEGV})
        signal(number, [](int) { lose("crash or hang", 0), _exit(1); });
    for (const Row& row : kRows) {
        if (argc < 2) std::puts(row.name);
        if (argc > 1 && row.name == std::string(argv[1])) sweep(row);
    }
    return g_lost == 0 ? 0 : 1;
}
