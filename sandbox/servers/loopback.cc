#include "loopback.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <string>
#include <system_error>

namespace sandbox {
namespace {

struct Address {
    explicit Address(int port) {
        in.sin_family = AF_INET;
        in.sin_port = htons(static_cast<uint16_t>(port));
        in.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    }
    const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&in); }

    sockaddr_in in{};
};

}  // namespace

int listenOnLoopback(int port, int backlog) {
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const Address address(port);
    if (bind(fd, address.get(), sizeof address.in) != 0 || listen(fd, backlog) != 0) {
        const int reason = errno;
        close(fd);
        throw std::system_error(reason, std::generic_category(), "port " + std::to_string(port));
    }
    return fd;
}

int portOf(int fd) {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

int beginConnecting(int port) {
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const Address address(port);
    if (connect(fd, address.get(), sizeof address.in) != 0 && errno != EINPROGRESS) {
        throw std::system_error(errno, std::generic_category(), "port " + std::to_string(port));
    }
    return fd;
}

}  // namespace sandbox
