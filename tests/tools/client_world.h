// A client that runs, a server for it to download from, and vnctl beside them.
#ifndef TESTS_TOOLS_CLIENT_WORLD_H
#define TESTS_TOOLS_CLIENT_WORLD_H

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <vector>

#include "harness/harness.h"
#include "sandbox/servers/raw_server.h"

/// Standard output of vnctl in the folder /tmp/work; `arguments` may end with redirections.
inline harness::CommandResult vnctl(const std::string& arguments) {
    return harness::run("mkdir -p /tmp/work; cd /tmp/work; '" VNCTL "' " + arguments);
}

/// vnctl with these arguments, and what it is to end with and to say on either output.
struct Outcome {
    std::string arguments;
    int status;
    std::string message;
};
inline void expectOutcomes(const std::vector<Outcome>& outcomes) {
    for (const auto& [arguments, status, message] : outcomes) {
        const harness::CommandResult result = vnctl("2>&1 " + arguments);
        EXPECT_EQ(result.status, status) << arguments;
        EXPECT_NE(result.output.find(message), std::string::npos) << result.output;
    }
}

/// The stand-in client, started and answering.
class RunningClient {
  public:
    RunningClient() { start(); }
    ~RunningClient() { stop(); }

    void start() {
        pid_ = harness::run("'" STANDIN_CLIENT "' </dev/null >/dev/null 2>&1 & echo $!").output;
        EXPECT_TRUE(
            harness::eventually([] { return vnctl("status >/dev/null 2>&1").status == 0; }));
    }
    void stop() {
        harness::run("kill " + pid_);
        EXPECT_TRUE(harness::eventually([] { return vnctl("status 2>/dev/null").status == 3; }));
    }

    /// How it misbehaves from now on.
    static void setMode(const std::string& mode) {
        harness::writeFile("/tmp/standin_client.mode", mode);
    }

  private:
    std::string pid_;
};

/// Where a test's own server is.
inline const std::string kHost = "http://127.0.0.1:8080";
constexpr int kPort = 8080;
inline const std::string kFilm = kHost + "/film.mov";

/// 3 MiB in which no two parts are alike.
inline const std::string& filmContent() {
    static const std::string film = harness::run("head -c 3M /dev/urandom").output;
    return film;
}

/// The server of kFilm, which stops in the middle of it until it is told to go on.
class HalfServer {
  public:
    ~HalfServer() { goOn(); }

    void goOn() {
        goesOn_ = true;
        goesOn_.notify_all();
    }

  private:
    void send(int fd) {
        const size_t half = filmContent().size() / 2;
        const std::string head = "HTTP/1.1 200 OK\r\nContent-Length: 3145728\r\n\r\n";
        sandbox::sendAll(fd, head + filmContent().substr(0, half));
        goesOn_.wait(false);
        sandbox::sendAll(fd, filmContent().substr(half));
    }

    std::atomic<bool> goesOn_ = false;
    sandbox::RawServer server_{[this](int fd, const std::string&) { send(fd); }, kPort};
};

#endif
