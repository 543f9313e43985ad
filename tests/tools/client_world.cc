#include "tools/client_world.h"

#include <gtest/gtest.h>

#include "harness/harness.h"

harness::CommandResult vnctl(const std::string& arguments) {
    return harness::run("mkdir -p /tmp/work; cd /tmp/work; '" VNCTL "' " + arguments);
}

void expectOutcomes(const std::vector<Outcome>& outcomes) {
    for (const auto& [arguments, status, message] : outcomes) {
        const harness::CommandResult result = vnctl("2>&1 " + arguments);
        EXPECT_EQ(result.status, status) << arguments;
        EXPECT_NE(result.output.find(message), std::string::npos) << result.output;
    }
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
    static const std::string film = harness::run("head -c 3M /dev/urandom").output;
    return film;
}

HalfServer::HalfServer()
    : server_(
          [this](int fd, const std::string& /*head*/) {
              const size_t half = filmContent().size() / 2;
              sandbox::sendAll(fd, "HTTP/1.1 200 OK\r\nContent-Length: 3145728\r\n\r\n" +
                                       filmContent().substr(0, half));
              goesOn_.wait(false);
              sandbox::sendAll(fd, filmContent().substr(half));
          },
          kPort) {}
