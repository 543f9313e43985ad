#include "net/socket.h"

#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <memory>

#include "api/result/last_error.h"
#include "platform/socket_signals.h"
#include "velnor/capi.h"

namespace velnor {
namespace {

constexpr int32_t kMaxPort = 65535;
constexpr time_t kLongestSilence = 30;

struct AddressListDeleter {
    void operator()(addrinfo* list) const { freeaddrinfo(list); }
};
using AddressList = std::unique_ptr<addrinfo, AddressListDeleter>;

// By getaddrinfo(3), because gethostbyname(3) answers in memory that all threads share.
AddressList resolve(const char* hostName) {
    addrinfo wanted{};
    wanted.ai_family = AF_INET;
    wanted.ai_socktype = SOCK_STREAM;
    wanted.ai_protocol = IPPROTO_TCP;
    addrinfo* list = nullptr;
    return AddressList(getaddrinfo(hostName, nullptr, &wanted, &list) == 0 ? list : nullptr);
}

// A connect(2) that a signal has interrupted goes on by itself; repeating it would be an error.
bool awaitConnection(int fd) {
    pollfd watched{fd, POLLOUT, 0};
    int ready = 0;
    do {
        ready = poll(&watched, 1, -1);
    } while (ready == -1 && errno == EINTR);
    int error = 0;
    socklen_t size = sizeof error;
    return ready == 1 && getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &size) == 0 && error == 0;
}

bool connectTo(int fd, addrinfo* host, int32_t port) {
    if (port < 1 || port > kMaxPort) return false;
    reinterpret_cast<sockaddr_in*>(host->ai_addr)->sin_port = htons(static_cast<uint16_t>(port));
    if (connect(fd, host->ai_addr, host->ai_addrlen) == 0) return true;
    return errno == EINTR && awaitConnection(fd);
}

using Clock = std::chrono::steady_clock;

// Whether the socket's limit on waits has passed since `start`; never for one without.
bool isOver(int fd, Clock::time_point start) {
    timeval limit{};
    socklen_t size = sizeof limit;
    return getsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, &size) == 0 && limit.tv_sec > 0 &&
           Clock::now() - start >= std::chrono::seconds(limit.tv_sec);
}

}  // namespace

Socket::~Socket() {
    if (descriptor_ != -1) close(descriptor_);
}

void limitWaits(int32_t socket) {
    const timeval limit{kLongestSilence, 0};
    setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

bool hasUnread(int32_t socket) {
    char byte = 0;
    return recv(socket, &byte, sizeof byte, MSG_PEEK | MSG_DONTWAIT) > 0;
}

int64_t receive(int32_t socket, void* buffer, uint32_t size) {
    // A signal does not begin the wait anew: they may come more often than the limit.
    const Clock::time_point start = Clock::now();
    ssize_t count = 0;
    do {
        count = recv(socket, buffer, size, 0);
    } while (count == -1 && errno == EINTR && !isOver(socket, start));
    if (count == -1 && errno == EINTR) errno = EAGAIN;
    return count;
}

uint32_t receiveUpToSize(int32_t socket, void* buffer, uint32_t size, bool* silent) {
    auto* bytes = static_cast<char*>(buffer);
    uint32_t received = 0;
    int64_t count = 1;
    while (received < size) {
        count = receive(socket, bytes + received, size - received);
        if (count < 1) break;
        received += static_cast<uint32_t>(count);
    }
    *silent = count == -1 && (errno == EAGAIN || errno == EWOULDBLOCK);
    return received;
}

bool sendAll(int32_t socket, const void* bytes, uint32_t size) {
    const auto* next = static_cast<const char*>(bytes);
    while (size > 0) {
        const ssize_t count = send(socket, next, size, MSG_NOSIGNAL);
        if (count == -1 && errno == EINTR) continue;
        if (count < 1) return false;
        next += count;
        size -= static_cast<uint32_t>(count);
    }
    return true;
}

}  // namespace velnor

int32_t _vn_openSocket(const char* hostName, int32_t port) {
    const velnor::AddressList host = hostName != nullptr ? velnor::resolve(hostName) : nullptr;
    if (!host) {
        _vn_setLastError(INSTALL_ERROR_INVALIDARGUMENT);
        return -1;
    }
    velnor::Socket fd(socket(host->ai_family, host->ai_socktype, host->ai_protocol));
    if (fd) fcntl(fd.get(), F_SETFD, FD_CLOEXEC);
    if (fd) velnor::platform::raiseNoSigpipe(fd.get());
    if (!fd || !velnor::connectTo(fd.get(), host.get(), port)) {
        _vn_setLastError(INSTALL_ERROR_NETWORK);
        return -1;
    }
    return fd.release();
}

uint32_t _vn_recvUpToSize(int32_t socket, void* buffer, uint32_t size) {
    bool silent = false;
    return velnor::receiveUpToSize(socket, buffer, size, &silent);
}
