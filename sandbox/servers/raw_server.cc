// RawServer on plain sockets.
#include "raw_server.h"

#include <sys/socket.h>
#include <unistd.h>

#include "loopback.h"

namespace sandbox {

RawServer::RawServer(Talk talk, int port)
    : talk_(std::move(talk)),
      listener_(listenOnLoopback(port, SOMAXCONN)),
      port_(portOf(listener_)) {
    thread_ = std::thread([this] { accept(); });
}

RawServer::~RawServer() {
    shutdown(listener_, SHUT_RDWR);
    thread_.join();
    close(listener_);
    for (Connection& connection : connections_) {
        shutdown(connection.fd, SHUT_RDWR);
        if (connection.thread.joinable()) connection.thread.join();
        close(connection.fd);
    }
}

size_t RawServer::connections() const {
    const std::lock_guard lock(mutex_);
    return connections_.size();
}

std::vector<std::string> RawServer::heads() const {
    const std::lock_guard lock(mutex_);
    return heads_;
}

void RawServer::accept() {
    int fd = -1;
    while ((fd = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0) {
        const std::lock_guard lock(mutex_);
        connections_.push_back(
            {fd, talk_ ? std::thread([this, fd] { serve(fd); }) : std::thread()});
    }
}

void RawServer::serve(int fd) {
    const std::string head = readHead(fd);
    if (!head.empty()) {
        {
            const std::lock_guard lock(mutex_);
            heads_.push_back(head);
        }
        talk_(fd, head);
    }
    shutdown(fd, SHUT_RDWR);  // closed by the destructor, so that its number is not used again
}

// Byte by byte, so that a body stays in the socket.
std::string readHead(int fd) {
    std::string head;
    char byte = 0;
    while (!head.ends_with("\r\n\r\n")) {
        if (recv(fd, &byte, 1, 0) <= 0) return {};
        head += byte;
    }
    return head;
}

bool sendAll(int fd, const std::string& bytes) {
    for (size_t sent = 0; sent < bytes.size();) {
        const ssize_t now = send(fd, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (now <= 0) return false;
        sent += static_cast<size_t>(now);
    }
    return true;
}

}  // namespace sandbox
