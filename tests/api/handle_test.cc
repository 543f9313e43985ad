// Handles, their one connection, and what goes over it.
#include <array>
#include <atomic>
#include <filesystem>
#include <iterator>
#include <string>
#include <thread>

#include "api/client.h"
#include "api/handle.h"
#include "api/last_error.h"
#include "api/scripted_client.h"
#include "harness/allocations.h"

namespace {

using test::Handle;
using test::outcome;
using test::reply;
using test::ScriptedClient;

int32_t runTasks(ApiHandle* handle) { return vn_runPeriodicTasks(handle, 0, 0); }

const std::string kDone = reply(R"({"result":null})");

TEST(Handle, NeedsAClientAndBothArguments) {
    auto* const untouched = reinterpret_cast<ApiHandle*>(1);
    ApiHandle* handle = untouched;
    EXPECT_EQ(outcome(vn_initialize("A", &handle)), INSTALL_ERROR_NOTINSTALLED);
    const ScriptedClient client([](const std::string&) { return ""; });
    EXPECT_EQ(outcome(vn_initialize(nullptr, &handle)), INSTALL_ERROR_INVALIDARGUMENT);
    EXPECT_EQ(outcome(vn_initialize("A\r\nB: C", &handle)), INSTALL_ERROR_NOTINSTALLED);
    EXPECT_EQ(handle, untouched);
    EXPECT_EQ(outcome(vn_initialize("A", nullptr)), INSTALL_ERROR_INVALIDARGUMENT);
    EXPECT_EQ(outcome(vn_initialize("A", &handle)), INSTALL_ERROR_OK);
    EXPECT_EQ(client.connections(), 0U) << "none before the first request";
    EXPECT_EQ(outcome(vn_uninitialize(handle, 1)), INSTALL_ERROR_INVALIDARGUMENT);
    EXPECT_EQ(vn_uninitialize(handle, 0), 0);
    EXPECT_EQ(vn_getLastError(), INSTALL_ERROR_INVALIDARGUMENT + 0U) << "left alone";
    EXPECT_EQ(outcome(vn_uninitialize(nullptr, 0)), INSTALL_ERROR_INVALIDARGUMENT);
}

size_t openFiles() {
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return static_cast<size_t>(std::distance(begin(files), end(files)));
}

TEST(Handle, ClosesWhatItOpened) {
    const size_t before = openFiles();
    {
        const ScriptedClient client([](const std::string& path) {
            return path.find("cid=1&") != std::string::npos ? "" : kDone;
        });
        for (int i = 0; i < 5; ++i) {
            const Handle handle;
            EXPECT_EQ(outcome(runTasks(handle)), INSTALL_ERROR_OK);
            EXPECT_EQ(outcome(vn_runPeriodicTasks(handle, 1, 0)), INSTALL_ERROR_NETWORK);
            EXPECT_EQ(outcome(runTasks(handle)), INSTALL_ERROR_OK);
        }
    }
    EXPECT_EQ(openFiles(), before);
}

TEST(Handle, KeepsOneConnection) {
    const ScriptedClient client([](const std::string&) { return kDone; });
    const Handle handle;
    for (int i = 0; i < 3; ++i) EXPECT_EQ(outcome(runTasks(handle)), INSTALL_ERROR_OK);
    EXPECT_EQ(client.connections(), 1U);
    EXPECT_EQ(client.head(),
              "GET /api?function=runPeriodicTasks&cid=0&apiversion=capi_1.6.5 HTTP/1.0\r\n"
              "Host: localhost\r\nUser-Agent: Test/1.0\r\nConnection: keep-alive\r\n\r\n");
}

TEST(Handle, LosesOneCallWhenTheClientRestarts) {
    auto client = std::make_unique<ScriptedClient>([](const std::string&) { return kDone; });
    const Handle handle;
    EXPECT_EQ(outcome(runTasks(handle)), INSTALL_ERROR_OK);
    client.reset();
    EXPECT_NE(runTasks(handle), 0);
    EXPECT_EQ(outcome(runTasks(handle)), INSTALL_ERROR_NOTINSTALLED);
    client = std::make_unique<ScriptedClient>([](const std::string&) { return kDone; });
    EXPECT_EQ(outcome(runTasks(handle)), INSTALL_ERROR_OK);
    client = nullptr;
    client = std::make_unique<ScriptedClient>([](const std::string&) { return kDone; });
    EXPECT_NE(runTasks(handle), 0) << "not repeated";
    EXPECT_EQ(outcome(runTasks(handle)), INSTALL_ERROR_OK);
    EXPECT_EQ(client->paths().size(), 1U);
}

// The reply to one request must never be taken for the reply to the next.
TEST(Handle, LeavesAConnectionThatSaysTooMuch) {
    for (const size_t tooMuch : {1, 5000}) {
        bool first = true;
        const ScriptedClient client([&](const std::string&) {
            const bool talkative = std::exchange(first, false);
            return talkative ? kDone + std::string(tooMuch, ' ') + reply("{}") : kDone;
        });
        const Handle handle;
        EXPECT_EQ(outcome(runTasks(handle)), INSTALL_ERROR_OK);
        EXPECT_EQ(outcome(runTasks(handle)), INSTALL_ERROR_OK) << tooMuch;
    }
}

TEST(Handle, OneForEachThread) {
    const ScriptedClient client([](const std::string& path) {
        const bool throttled = path.find("cid=1&") != std::string::npos;
        return throttled ? reply(R"({"result":"running of periodic tasks is throttled"})") : kDone;
    });
    std::array<std::atomic<int>, 2> right{};
    const auto call = [&right](int32_t cid) {
        const Handle handle;
        for (int i = 0; i < 200; ++i) {
            const uint32_t expected = cid == 1 ? INSTALL_ERROR_THROTTLED : INSTALL_ERROR_OK;
            right[cid] += outcome(vn_runPeriodicTasks(handle, cid, 0)) == expected ? 1 : 0;
        }
    };
    std::thread other(call, 1);
    call(0);
    other.join();
    EXPECT_EQ(right[0], 200);
    EXPECT_EQ(right[1], 200);
    EXPECT_EQ(client.connections(), 2U);
}

TEST(Ping, CountsAnyAnswerWithABody) {
    EXPECT_EQ(_vn_ping("A"), 1);
    const sandbox::RawServer server(
        [](int fd, const std::string&) { sandbox::sendAll(fd, reply("no JSON at all")); }, 9421);
    EXPECT_EQ(_vn_ping("A"), 0);
    EXPECT_EQ(server.heads().at(0),
              "GET /api?function=ping HTTP/1.0\r\nHost: 127.0.0.1\r\nUser-Agent: A\r\n"
              "Connection: keep-alive\r\n\r\n");
}

TEST(Handle, EveryAllocationOfItsBeginningMayFail) {
    const ScriptedClient client([](const std::string&) { return kDone; });
    for (size_t number = 1;; ++number) {
        ApiHandle* handle = nullptr;
        harness::FailingAllocation failing(number);
        const int32_t result = vn_initialize("A", &handle);
        const bool failed = failing.end();
        EXPECT_EQ(result, failed ? -1 : 0) << number;
        EXPECT_EQ(handle != nullptr, !failed) << number;
        if (!failed) {
            EXPECT_EQ(vn_uninitialize(handle, 0), 0);
            break;
        }
    }
}

}  // namespace
