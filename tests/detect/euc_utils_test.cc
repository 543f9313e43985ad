// The client probe against agents that are loaded or not, and against everything that can sit on
// the client's port.
#include "detect/euc_utils.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "harness/files.h"
#include "harness/shell.h"
#include "sandbox/servers/raw_server.h"
#include "sandbox/servers/silent_port.h"

namespace {

using sandbox::RawServer;

constexpr int kPort = 9421;
constexpr std::chrono::seconds kTimeout{1};

// Probes in a process of its own, whose descriptors no server shares, and returns the message,
// "(untouched)" when it was left alone.
std::string probe(bool expected, size_t expectedLeak = 0) {
    const pid_t child = fork();
    if (child == 0) {
        std::string message = "(untouched)";
        const size_t before = harness::openDescriptors();
        const bool found = EUCUtils::isClientListening(message);
        harness::writeFile("/tmp/message", message);
        _exit(found == expected && harness::openDescriptors() - before == expectedLeak ? 0 : 1);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    return harness::readFile("/tmp/message");
}

RawServer::Talk answer(const std::string& reply) {
    return [reply](int fd, const std::string&) { sandbox::sendAll(fd, reply); };
}

class Probe : public testing::Test {
  protected:
    void SetUp() override { harness::writeFile("/run/launchd/mode", "noisy"); }
};

TEST_F(Probe, AgentThatIsNotLoadedIsNotEvenPinged) {
    harness::writeFile("/run/launchd/mode", "silent");
    const RawServer server(answer("pong"), kPort);
    EXPECT_EQ(probe(false), "not installed or not running.");
    EXPECT_EQ(pingClient(), 0);
    EXPECT_EQ(server.connections(), 0U);
}

TEST_F(Probe, PongAnywhereInTheReplyIsTheClient) {
    const RawServer server(answer("HTTP/1.0 404 x\r\n\r\n{\"result\":\"pong\"}"), kPort);
    EXPECT_EQ(probe(true), "(untouched)");
    EXPECT_EQ(pingClient(), 1);
    EXPECT_EQ(server.heads().at(0),
              "GET /api?function=ping&cid=0 HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
}

TEST_F(Probe, OtherAnswersAreQuotedOrTold) {
    const std::string before = "Unrecognized response from port 9421: '";
    const std::string after = "', is another service using this port?";
    const std::string late(1023, 'x');
    const auto reset = [](int fd, const std::string&) {
        const linger now{1, 0};
        setsockopt(fd, SOL_SOCKET, SO_LINGER, &now, sizeof now);
        close(fd);  // the server's own close meets a closed one
    };
    const std::pair<RawServer::Talk, std::string> rows[] = {
        {answer(std::string("po\0ng", 5)), before + "po" + after},
        {answer(late + "pong"), before + late + after},
        {answer(""), before + after},  // closed at once
        {reset, "Error reading from EUC client: Connection reset by peer"},
        {RawServer::blackHole(), "Timeout getting response from EUC client, try restarting."},
    };
    for (const auto& [talk, message] : rows) {
        const RawServer server(talk, kPort);
        EXPECT_EQ(probe(false), message);
    }
    constexpr size_t kLeaked = 1;  // the failure that leaves its socket open
    EXPECT_EQ(probe(false, kLeaked),
              "Couldn't connect to client on port 9421, connection refused.");
}

TEST_F(Probe, ConnectionThatNeverComesTimesOutAfterASecond) {
    const sandbox::SilentPort port(kPort);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(probe(false), "Timeout trying to connect to EUC client. ");
    EXPECT_GE(std::chrono::steady_clock::now() - start, kTimeout);
}

TEST_F(Probe, DescriptorThatSelectCannotWatchIsRefused) {
    const rlimit limit{FD_SETSIZE + 100, FD_SETSIZE + 100};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    while (dup(0) < FD_SETSIZE - 1) continue;
    EXPECT_EQ(probe(false), "Couldn't create socket: Too many open files");
}

TEST_F(Probe, SelectsRepeatAfterAnInterruption) {
    std::atomic<pid_t> child = 0;
    std::atomic<bool> isInterrupted = false;
    const RawServer server(
        [&](int fd, const std::string&) {
            // One of them meets the wait for the answer, however late that begins.
            for (int i = 0; i < 50; ++i) {
                if (child > 0) kill(child, SIGUSR1);
                std::this_thread::sleep_for(kTimeout / 50);
            }
            isInterrupted = true;
            sandbox::readHead(fd);
        },
        kPort);
    signal(SIGUSR1, [](int) {});
    child = fork();
    if (child == 0) _exit(pingClient());
    EXPECT_TRUE(harness::eventually([&isInterrupted] { return isInterrupted.load(); }));
    std::this_thread::sleep_for(kTimeout * 5 / 2);
    EXPECT_EQ(waitpid(child, nullptr, WNOHANG), 0) << "the time-out ended an interrupted wait";
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}

}  // namespace
