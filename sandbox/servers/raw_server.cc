#include "raw_server.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <string_view>
#include <utility>

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
        end(connection);
        if (connection.thread.joinable()) connection.thread.join();
        if (connection.fd != -1) close(connection.fd);
    }
}

void RawServer::end(const Connection& connection) {
    const std::lock_guard lock(mutex_);
    if (connection.fd != -1) shutdown(connection.fd, SHUT_RDWR);
}

size_t RawServer::connections() const {
    const std::lock_guard lock(mutex_);
    return accepted_;
}

std::vector<std::string> RawServer::heads() const {
    const std::lock_guard lock(mutex_);
    return heads_;
}

void RawServer::accept() {
    int fd = -1;
    while ((fd = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0) {
        const std::lock_guard lock(mutex_);
        forgetClosed();
        ++accepted_;
        Connection& connection = connections_.emplace_back(Connection{fd});
        if (talk_) connection.thread = std::thread([this, &connection] { serve(connection); });
    }
}

void RawServer::forgetClosed() {
    connections_.remove_if([](Connection& connection) {
        if (connection.fd == -1) connection.thread.join();
        return connection.fd == -1;
    });
}

void RawServer::serve(Connection& connection) {
    const std::string head = readHead(connection.fd);
    if (!head.empty()) {
        {
            const std::lock_guard lock(mutex_);
            heads_.push_back(head);
        }
        talk_(connection.fd, head);
    }
    shutdown(connection.fd, SHUT_RDWR);
    // Closed with something unread it would be reset, and the reply might be lost.
    char byte = 0;
    const bool isUnread = recv(connection.fd, &byte, 1, MSG_PEEK | MSG_DONTWAIT) > 0;
    const std::lock_guard lock(mutex_);
    if (!isUnread) close(std::exchange(connection.fd, -1));
}

// Looked at before it is taken, so that a body stays in the socket.
std::string readHead(int fd) {
    constexpr std::string_view kEnd = "\r\n\r\n";
    std::string head;
    char block[4096];
    for (size_t end = std::string::npos; end == std::string::npos;) {
        const ssize_t seen = recv(fd, block, sizeof block, MSG_PEEK);
        if (seen <= 0) return {};
        const size_t before = head.size();
        head.append(block, static_cast<size_t>(seen));
        end = head.find(kEnd, before - std::min(before, kEnd.size() - 1));
        if (end != std::string::npos) head.resize(end + kEnd.size());
        if (recv(fd, block, head.size() - before, 0) <= 0) return {};
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
