// Requests are not taken apart: one read, one comparison, one write.
#include "lean_server.h"

#include <sys/socket.h>
#include <unistd.h>

#include <string_view>
#include <thread>
#include <utility>

#include "processor.h"
#include "sandbox/servers/loopback.h"
#include "sandbox/servers/raw_server.h"

namespace bench {
namespace {

constexpr size_t kRequestSize = 4096;

// A request up to its blank line, which ends the read: nobody here sends a second one before the
// first is answered. Empty when the connection has ended.
std::string_view readRequest(int fd, char* buffer) {
    size_t size = 0;
    do {
        const ssize_t count = recv(fd, buffer + size, kRequestSize - size, 0);
        if (count <= 0) return {};
        size += static_cast<size_t>(count);
    } while (!std::string_view(buffer, size).ends_with("\r\n\r\n"));
    return {buffer, size};
}

const ReadyReply* replyTo(std::string_view request, const std::vector<ReadyReply>& replies) {
    const std::string_view rest = request.substr(request.find(' ') + 1);
    const std::string_view path = rest.substr(0, rest.find(' '));
    for (const ReadyReply& reply : replies) {
        if (reply.path == path) return &reply;
    }
    return nullptr;
}

void answer(int fd, const std::vector<ReadyReply>& replies) {
    char buffer[kRequestSize];
    for (;;) {
        const std::string_view request = readRequest(fd, buffer);
        const ReadyReply* reply = request.empty() ? nullptr : replyTo(request, replies);
        if (reply == nullptr || !sandbox::sendAll(fd, reply->bytes) || reply->closes) return;
    }
}

}  // namespace

int startLeanServer(std::vector<ReadyReply> replies, std::atomic<int>& connections, int port) {
    const int listener = sandbox::listenOnLoopback(port, SOMAXCONN);
    std::thread([listener, replies = std::move(replies), &connections] {
        const OnProcessor here(Processor::Servers);
        int fd = -1;
        while ((fd = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC)) >= 0) {
            ++connections;
            answer(fd, replies);
            close(fd);
        }
    }).detach();
    return sandbox::portOf(listener);
}

}  // namespace bench
