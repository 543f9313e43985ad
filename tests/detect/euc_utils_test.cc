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
#include <string>
#include <thread>
#include <vector>

#include "harness/harness.h"
#include "sandbox/servers/raw_server.h"
#include "sandbox/servers/silent_port.h"

namespace {

using sandbox::RawServer;

constexpr int kPort = 9421;
constexpr std::chrono::seconds kTimeout{1};

const std::string kUntouched = "(untouched)";  // the message, and the client is there

void setAgent(const char* mode) { harness::writeFile("/run/launchd/mode", mode); }

// Probes in a process of its own, whose descriptors no server shares, and returns the message.
std::string probe(size_t expectedLeak = 0) {
    const pid_t child = fork();
    if (child == 0) {
        std::string message = kUntouched;
        const size_t before = harness::openDescriptors();
        const bool found = EUCUtils::isClientListening(message);
        const bool isTold = found == (message == kUntouched);
        harness::writeFile("/tmp/message", message);
        _exit(isTold && harness::openDescriptors() - before == expectedLeak ? 0 : 1);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    return harness::readFile("/tmp/message");
}

RawServer::Talk answer(const std::string& reply) {
    return [reply](int fd, const std::string&) { sandbox::sendAll(fd, reply); };
}

TEST(Probe, TellsWhatItFinds) {
    const std::string before = "Unrecognized response from port 9421: '";
    const std::string after = "', is another service using this port?";
    const std::string late(1023, 'x');
    const auto reset = [](int fd, const std::string&) {
        const linger now{1, 0};
        setsockopt(fd, SOL_SOCKET, SO_LINGER, &now, sizeof now);
        close(fd);  // the server's own close meets a closed one
    };
    const std::pair<RawServer::Talk, std::string> rows[] = {
        {answer("HTTP/1.0 404 x\r\n\r\n{\"result\":\"pong\"}"), kUntouched},
        {answer(std::string("po\0ng", 5)), before + "po" + after},
        {answer(late + "pong"), before + late + after},
        {answer(""), before + after},  // closed at once
        {reset, "Error reading from EUC client: Connection reset by peer"},
        {RawServer::blackHole(), "Timeout getting response from EUC client, try restarting."},
    };
    for (const auto& [talk, message] : rows) {
        const RawServer server(talk, kPort);
        setAgent("silent");
        EXPECT_EQ(probe(), "not installed or not running.");
        EXPECT_EQ(server.connections(), 0U) << "not even pinged";
        setAgent("noisy");
        EXPECT_EQ(probe(), message);
        const std::vector<std::string> ping{
            "GET /api?function=ping&cid=0 HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n"};
        EXPECT_EQ(server.heads(), talk ? ping : std::vector<std::string>{});
    }
    constexpr size_t kLeaked = 1;  // the failure that leaves its socket open
    EXPECT_EQ(probe(kLeaked), "Couldn't connect to client on port 9421, connection refused.");
    const sandbox::SilentPort silent(kPort);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(probe(), "Timeout trying to connect to EUC client. ");
    EXPECT_GE(std::chrono::steady_clock::now() - start, kTimeout);
    const rlimit limit{FD_SETSIZE + 100, FD_SETSIZE + 100};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    while (dup(0) < FD_SETSIZE - 1) continue;
    EXPECT_EQ(probe(), "Couldn't create socket: Too many open files");
}

TEST(Probe, SelectsRepeatAfterAnInterruption) {
    setAgent("noisy");
    const RawServer server(RawServer::blackHole(), kPort);
    const pid_t child = fork();
    if (child == 0) {
        static int interruptions = 0;
        signal(SIGALRM, [](int) {
            if (++interruptions == 100) ualarm(0, 0);
        });
        ualarm(20'000, 20'000);
        _exit(pingClient());
    }
    EXPECT_TRUE(harness::eventually([&server] { return server.connections() > 0; }));
    std::this_thread::sleep_for(std::chrono::milliseconds(3500));  // 2 s of signals, and a time-out
    EXPECT_EQ(waitpid(child, nullptr, WNOHANG), 0) << "the time-out ended an interrupted wait";
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}

}  // namespace
