// Listens, accepts, and stops when it is told to.
#include "server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

namespace {

volatile std::sig_atomic_t stopping = 0;

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

Server::Server(uint16_t port) : waiting_(holdStopSignals()), listener_(listenOn(port)) {}

Server::~Server() { close(listener_); }

void Server::run(const Responder& responder) {
    Connections connections(responder);
    pollfd watched{listener_, POLLIN, 0};
    while (stopping == 0) {
        if (ppoll(&watched, 1, nullptr, &waiting_) <= 0) continue;
        const int connection = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection >= 0) connections.add(connection);
    }
}
