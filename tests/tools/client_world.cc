// Starting and stopping what vnctl's tests need.
#include "tools/client_world.h"

#include <gtest/gtest.h>

#include <thread>

#include "harness/files.h"

harness::CommandResult vnctl(const std::string& arguments) {
    return harness::run("mkdir -p /tmp/work; cd /tmp/work; '" VNCTL "' " + arguments);
}

void setClientMode(const std::string& mode) {
    harness::writeFile("/tmp/standin_client.mode", mode);
}

void RunningClient::start() {
    pid_ = harness::run("'" STANDIN_CLIENT "' </dev/null >/tmp/client.log 2>&1 & echo $!").output;
    EXPECT_TRUE(harness::eventually([] { return vnctl("status >/dev/null 2>&1").status == 0; }));
}

void RunningClient::stop() {
    harness::run("kill " + pid_);
    EXPECT_TRUE(harness::eventually([] { return vnctl("status 2>/dev/null").status == 3; }));
}

const std::string& filmContent() {
    static const std::string film = [] {
        std::string content;
        for (uint32_t state = 1; content.size() < 3U << 20; state = state * 1664525 + 1013904223) {
            content += static_cast<char>(state >> 24);
        }
        return content;
    }();
    return film;
}

HalfServer::HalfServer(std::chrono::milliseconds pause)
    : server_([this, pause](int fd, const std::string& /*head*/) {
          const size_t half = filmContent().size() / 2;
          sandbox::sendAll(fd, "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(2 * half) +
                                   "\r\n\r\n" + filmContent().substr(0, half));
          const auto end = std::chrono::steady_clock::now() + pause;
          while (!goesOn_ && std::chrono::steady_clock::now() < end) {
              std::this_thread::sleep_for(std::chrono::milliseconds(10));
          }
          sandbox::sendAll(fd, filmContent().substr(half));
      }) {}

std::string HalfServer::url() const {
    return "http://127.0.0.1:" + std::to_string(server_.port()) + "/film.mov";
}
