// Accepts connections and answers each on a thread of its own, so that one that stays silent holds
// up nobody else.
#include "server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string>
#include <system_error>
#include <thread>

#include "api.h"
#include "mode.h"

namespace {

constexpr size_t kLargestHead = 64 * 1024;
constexpr timeval kPatience{5, 0};

volatile std::sig_atomic_t stopping = 0;

/// What came up to the empty line that ends a request's head; empty when none came.
std::string readHead(int connection) {
    std::string head;
    char block[4096];
    while (head.find("\r\n\r\n") == std::string::npos) {
        const ssize_t got = recv(connection, block, sizeof block, 0);
        if (got <= 0 || head.size() > kLargestHead) return {};
        head.append(block, static_cast<size_t>(got));
    }
    return head;
}

void sendAll(int connection, const std::string& text) {
    for (size_t sent = 0; sent < text.size();) {
        const ssize_t now = send(connection, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
        if (now <= 0) return;
        sent += static_cast<size_t>(now);
    }
}

void talk(int connection) {
    setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &kPatience, sizeof kPatience);
    const std::string head = readHead(connection);
    if (currentMode() == "mute") {
        char rest = 0;
        while (recv(connection, &rest, 1, 0) > 0) continue;
    } else if (!head.empty()) {
        sendAll(connection, answer(head));
    }
    close(connection);
}

int listenOn(uint16_t port) {
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(fd, SOMAXCONN) != 0)
        throw std::system_error(errno, std::generic_category(), "port " + std::to_string(port));
    return fd;
}

/// Lets the signals that stop us through only while we wait in ppoll, so that none is missed.
sigset_t holdStopSignals() {
    struct sigaction action {};
    action.sa_handler = [](int) { stopping = 1; };
    sigset_t held;
    sigemptyset(&held);
    for (const int signal : {SIGTERM, SIGINT}) {
        sigaction(signal, &action, nullptr);
        sigaddset(&held, signal);
    }
    sigset_t before;
    sigprocmask(SIG_BLOCK, &held, &before);
    return before;
}

}  // namespace

void serve(uint16_t port) {
    const sigset_t waiting = holdStopSignals();
    const int listener = listenOn(port);
    pollfd watched{listener, POLLIN, 0};
    while (stopping == 0) {
        if (ppoll(&watched, 1, nullptr, &waiting) <= 0) continue;
        const int connection = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection >= 0) std::thread(talk, connection).detach();
    }
    close(listener);
}
