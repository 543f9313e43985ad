// Handles, their one connection, and the last error.
#include "api/handle.h"

#include <pthread.h>

#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "api/client.h"
#include "api/outcome.h"
#include "api/result/last_error.h"
#include "harness/files.h"
#include "support/text.h"

namespace test {
namespace {

uint32_t runTasks(ApiHandle* handle) { return outcome(vn_runPeriodicTasks(handle, 0, 0)); }

const std::string kDone = reply(R"({"result":null})");
std::string done(const std::string&) { return kDone; }

TEST(Handle, NeedsAClientAndBothArguments) {
    auto* const untouched = reinterpret_cast<ApiHandle*>(1);
    ApiHandle* handle = untouched;
    EXPECT_EQ(outcome(vn_initialize("A", &handle)), 2U);
    const sandbox::RawServer server([](int fd, const std::string&) { sandbox::sendAll(fd, kDone); },
                                    9421);
    EXPECT_EQ(outcome(vn_initialize(nullptr, &handle)), 1U);
    EXPECT_EQ(outcome(vn_initialize("A", nullptr)), 1U);
    EXPECT_EQ(outcome(vn_initialize("A\r\nB: C", &handle)), 2U);
    EXPECT_EQ(handle, untouched);
    EXPECT_EQ(outcome(vn_initialize("A", &handle)), 0U);
    EXPECT_EQ(runTasks(handle), 0U);
    EXPECT_EQ(server.heads().at(0),
              "GET /api?function=ping HTTP/1.0\r\nHost: 127.0.0.1\r\nUser-Agent: A\r\n"
              "Connection: keep-alive\r\n\r\n");
    EXPECT_NE(server.heads().at(1).find("\r\nHost: localhost\r\nUser-Agent: A\r\n"),
              std::string::npos);
    EXPECT_EQ(outcome(vn_uninitialize(handle, 1)), 1U);
    EXPECT_EQ(vn_uninitialize(handle, 0), 0);
    EXPECT_EQ(vn_getLastError(), 1U) << "left alone";
    EXPECT_EQ(outcome(vn_uninitialize(nullptr, 0)), 1U);
}

TEST(Handle, LosesOneCallWhenTheClientRestarts) {
    std::optional<ScriptedClient> client(done);
    const Handle handle;
    EXPECT_EQ(runTasks(handle), 0U);
    client.emplace(done);
    EXPECT_NE(runTasks(handle), 0U) << "not repeated";
    EXPECT_EQ(runTasks(handle), 0U);
    EXPECT_EQ(client->paths().size(), 1U);
    client.reset();
    EXPECT_NE(runTasks(handle), 0U);
    EXPECT_EQ(runTasks(handle), 2U);
}

// The reply to one request must never be taken for the reply to the next.
TEST(Handle, LeavesAConnectionThatSaysTooMuchOrNotEnough) {
    const std::string more = reply("{}");
    for (const auto& [bytes, code] : {std::pair{kDone + more, 0U},
                                      {kDone + std::string(5000, ' ') + more, 0U},
                                      {"HTTP/1.0 200 OK\r\n\r\n{\"result\":null", 5U}}) {
        const ScriptedClient client(
            [&, asked = 0](const std::string&) mutable { return asked++ == 0 ? bytes : kDone; });
        const Handle handle;
        EXPECT_EQ(runTasks(handle), code);
        EXPECT_EQ(runTasks(handle), 0U) << bytes;
    }
}

TEST(Reply, IsCheckedAndItsChallengeAnswered) {
    EXPECT_EQ(_vn_responseCheck("", R"({"error":"x"})"), INSTALL_ERROR_INTERNAL);
    EXPECT_EQ(_vn_responseCheck(kUrl, ""), INSTALL_ERROR_INTERNAL);
    EXPECT_EQ(_vn_responseCheck(kUrl, R"({"error":"x"})"), INSTALL_ERROR_INVALIDARGUMENT);
    const ScriptedClient client(done);
    const Handle handle;
    for (const auto& [given, last] :
         {std::pair("None", textReply("None")), {"Challenge:abc", R"({"result":null})"}}) {
        char* first = velnor::copyText(textReply(given)).release();
        const velnor::OwnedText now(_vn_answerChallenge(handle, 0, kUrl, "p", first, "/tmp/file"));
        EXPECT_EQ(now.get(), last);
    }
    EXPECT_EQ(harness::readFile("/tmp/file"), "abc");
}

TEST(LastError, BelongsToItsThreadAndSaysWhenTheProcessHasNoKeyLeft) {
    std::vector<pthread_key_t> keys;
    for (pthread_key_t key = 0; pthread_key_create(&key, nullptr) == 0;) keys.push_back(key);
    EXPECT_EQ(_vn_setLastError(5), EAGAIN);
    EXPECT_EQ(vn_getLastError(), 0U);
    for (const pthread_key_t key : keys) pthread_key_delete(key);
    EXPECT_EQ(_vn_setLastError(4294967295U), 0);
    EXPECT_EQ(vn_getLastError(), 4294967295U);
    std::thread([] { EXPECT_EQ(vn_getLastError(), 0U); }).join();
}

}  // namespace
}  // namespace test
