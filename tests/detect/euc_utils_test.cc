// The client probe against agents that are loaded or not, and against everything that can sit on
// the client's port.
#include "detect/euc_utils.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "harness/files.h"
#include "sandbox/servers/raw_server.h"
#include "sandbox/servers/silent_port.h"

namespace {

using sandbox::RawServer;
using sandbox::SilentPort;

constexpr int kPort = 9421;

size_t openDescriptors() {
    const std::filesystem::directory_iterator fds("/proc/self/fd");
    return static_cast<size_t>(std::distance(begin(fds), end(fds)));
}

class Probe : public testing::Test {
  protected:
    void SetUp() override { harness::writeFile("/run/launchd/mode", "noisy"); }

    // Probes in a process of its own, whose descriptors no server shares, and returns the message,
    // "(untouched)" when it was left alone.
    std::string probe(bool expected) {
        const pid_t child = fork();
        if (child == 0) {
            std::string message = "(untouched)";
            const size_t before = openDescriptors();
            const bool found = EUCUtils::isClientListening(message);
            const size_t leaked = openDescriptors() - before;
            harness::writeFile("/tmp/message", message);
            _exit(static_cast<int>(leaked * 2 + (found ? 1 : 0)));
        }
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status) % 2 == 1, expected);
        leaked_ = static_cast<size_t>(WEXITSTATUS(status) / 2);
        return harness::readFile("/tmp/message");
    }

    size_t leaked_ = 0;
};

RawServer::Talk answer(const std::string& reply) {
    return [reply](int fd, const std::string&) { sandbox::sendAll(fd, reply); };
}

TEST_F(Probe, AgentThatIsNotLoadedIsNotEvenPinged) {
    harness::writeFile("/run/launchd/mode", "silent");
    const RawServer server(answer("pong"), kPort);
    EXPECT_EQ(probe(false), "not installed or not running.");
    EXPECT_EQ(pingClient(), 0);
    EXPECT_EQ(server.connections(), 0U);
}

TEST_F(Probe, PongAnywhereInTheReplyIsTheClient) {
    for (const char* reply : {"HTTP/1.0 200 OK\r\n\r\n{\"result\":\"pong\"}", "pong", "xxpongxx",
                              "HTTP/1.1 404 pong\r\n\r\n"}) {
        const RawServer server(answer(reply), kPort);
        EXPECT_EQ(probe(true), "(untouched)") << reply;
        EXPECT_EQ(leaked_, 0U);
        EXPECT_EQ(pingClient(), 1);
        EXPECT_EQ(server.heads().at(0),
                  "GET /api?function=ping&cid=0 HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
    }
}

TEST_F(Probe, OtherRepliesAreQuoted) {
    const std::string prefix = "Unrecognized response from port 9421: '";
    const std::string suffix = "', is another service using this port?";
    const std::string late(1023, 'x');
    const std::pair<std::string, std::string> rows[] = {
        {"HTTP/1.0 200 OK\r\n\r\nping", "HTTP/1.0 200 OK\r\n\r\nping"},
        {std::string("po\0ng", 5), "po"},
        {late + "pong", late},
        {"", ""},  // closed at once
    };
    for (const auto& [reply, quoted] : rows) {
        const RawServer server(answer(reply), kPort);
        EXPECT_EQ(probe(false), prefix + quoted + suffix);
        EXPECT_EQ(leaked_, 0U);
    }
}

TEST_F(Probe, NobodyOnThePortIsARefusalThatLeavesItsSocket) {
    EXPECT_EQ(probe(false), "Couldn't connect to client on port 9421, connection refused.");
    EXPECT_EQ(leaked_, 1U);
}

TEST_F(Probe, SilentClientTimesOutAfterASecond) {
    const RawServer server(RawServer::blackHole(), kPort);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(probe(false), "Timeout getting response from EUC client, try restarting.");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1500));
    EXPECT_EQ(leaked_, 0U);
}

TEST_F(Probe, ConnectionThatNeverComesTimesOutAfterASecond) {
    const SilentPort port(kPort);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(probe(false), "Timeout trying to connect to EUC client. ");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1500));
    EXPECT_EQ(leaked_, 0U);
}

TEST_F(Probe, ResetWhileReadingNamesTheSystemsReason) {
    const RawServer server(
        [](int fd, const std::string&) {
            const linger reset{1, 0};
            setsockopt(fd, SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
            close(fd);  // the server's own close meets a closed one
        },
        kPort);
    EXPECT_EQ(probe(false), "Error reading from EUC client: Connection reset by peer");
    EXPECT_EQ(leaked_, 0U);
}

TEST_F(Probe, DescriptorThatSelectCannotWatchIsRefused) {
    rlimit limit{2048, 2048};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    ASSERT_GT(limit.rlim_max, static_cast<rlim_t>(FD_SETSIZE) + 10);
    std::vector<int> taken;
    while (taken.empty() || taken.back() < FD_SETSIZE - 1) taken.push_back(dup(0));
    EXPECT_EQ(probe(false), "Couldn't create socket: Too many open files");
    EXPECT_EQ(leaked_, 0U);
    for (const int fd : taken) close(fd);
}

TEST_F(Probe, SelectsRepeatAfterAnInterruption) {
    const RawServer server(RawServer::blackHole(), kPort);
    const pid_t child = fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        signal(SIGUSR1, [](int) {});
        std::string message;
        EUCUtils::isClientListening(message);
        _exit(0);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(600));
    kill(child, SIGUSR1);
    std::this_thread::sleep_for(std::chrono::milliseconds(2500));
    EXPECT_EQ(waitpid(child, nullptr, WNOHANG), 0) << "the time-out ended an interrupted wait";
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}

}  // namespace
