#include "detect/euc_utils.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <utility>

#include "platform/socket_signals.h"
#include "support/product.h"

namespace EUCUtils {
namespace {

constexpr int kConnectRounds = 100;
constexpr size_t kReplySize = 1024;
constexpr char kPing[] = "GET /api?function=ping&cid=0 HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n";
static_assert(velnor::kClientPort == 9421, "The messages name it.");

constexpr bool kWithErrno = true;
constexpr bool kPlain = false;
// Failures that pass this leave the socket open: which failures close it is as fixed by the
// interface as their texts.
constexpr int kLeaveOpen = -1;

enum class Direction { Read, Write };

// Waits up to 1 second for the socket. But once a signal has interrupted a select, selects with
// the same sets repeat until one fails for another reason: nothing but the next round clears the
// mark.
int waitFor(int fd, Direction direction) {
    fd_set readSet;
    fd_set writeSet;
    fd_set exceptSet;
    FD_ZERO(&readSet);
    FD_ZERO(&writeSet);
    FD_ZERO(&exceptSet);
    FD_SET(fd, direction == Direction::Read ? &readSet : &writeSet);
    bool interrupted = false;
    int ready = 0;
    do {
        timeval timeout{1, 0};  // some systems count it down, so each select gets its own
        ready = select(fd + 1, &readSet, &writeSet, &exceptSet, &timeout);
        if (ready < 0 && errno != EINTR) return ready;
        if (ready < 0) interrupted = true;
    } while (interrupted);
    return ready;
}

int pendingError(int fd, int* error) {
    socklen_t size = sizeof *error;
    return getsockopt(fd, SOL_SOCKET, SO_ERROR, error, &size);
}

// A socket that select can watch and that the started client does not inherit; -1 with errno.
int createSocket() {
    const int fd = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    if (fd == -1) return -1;
    fcntl(fd, F_SETFD, FD_CLOEXEC);
    if (fd < FD_SETSIZE) return fd;
    close(fd);
    errno = EMFILE;
    return -1;
}

bool makeNonBlocking(int fd) {
    const int flags = fcntl(fd, F_GETFL, 0);
    return flags != -1 && fcntl(fd, F_SETFL, flags | O_NONBLOCK) != -1;
}

// Opens a non-blocking socket and fills the client's address; false after a failure is reported.
bool prepareSocket(int* fd, sockaddr_in* address, std::string& message) {
    *fd = createSocket();
    if (*fd == -1) return findClientFailed(message, "Couldn't create socket: ", kWithErrno, -1);
    if (!makeNonBlocking(*fd)) {
        return findClientFailed(message, "Couldn't make socket non-blocking.", kPlain, kLeaveOpen);
    }
    velnor::platform::raiseNoSigpipe(*fd);
    address->sin_family = AF_INET;
    address->sin_port = htons(velnor::kClientPort);
    const int parsed = inet_pton(AF_INET, velnor::kClientHost, &address->sin_addr);
    if (parsed == 0) return findClientFailed(message, "Unparsable address.", kPlain, kLeaveOpen);
    if (parsed < 0) {
        return findClientFailed(message, "Error: inet_pton() failed: ", kWithErrno, kLeaveOpen);
    }
    return true;
}

// Waits for a connection in progress, in rounds of one select each. `early` is an error that was
// pending before: the system reports it once, so the first round takes it as its own.
bool awaitConnection(int fd, int early, std::string& message) {
    for (int round = 0; round < kConnectRounds; ++round) {
        const int ready = waitFor(fd, Direction::Write);
        if (ready == 0) {
            return findClientFailed(message, "Timeout trying to connect to EUC client. ", kPlain,
                                    fd);
        }
        if (ready < 0) return findClientFailed(message, "Select failed: ", kWithErrno, fd);
        int error = 0;
        if (pendingError(fd, &error) != 0) {
            return findClientFailed(message, "getsockopt() failed: ", kWithErrno, fd);
        }
        if (error == 0) error = std::exchange(early, 0);
        if (error == 0) return true;
        if (error == ECONNREFUSED) {
            return findClientFailed(message,
                                    "Couldn't connect to client on port 9421, connection refused.",
                                    kPlain, kLeaveOpen);
        }
        if (error != EINPROGRESS) {
            // The text of errno and not of the pending error is fixed by the interface.
            return findClientFailed(message, "Error connecting: ", kWithErrno, kLeaveOpen);
        }
    }
    return findClientFailed(message, "Connection stuck INPROGRESS for too long, giving up.", kPlain,
                            kLeaveOpen);
}

bool connectToClient(int* fd, std::string& message) {
    sockaddr_in address{};
    if (!prepareSocket(fd, &address, message)) return false;
    if (connect(*fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
        return awaitConnection(*fd, 0, message);
    }
    if (errno != EAGAIN && errno != EINPROGRESS) {
        return findClientFailed(message, "Error Connecting to client: ", kWithErrno, kLeaveOpen);
    }
    int early = 0;
    pendingError(*fd, &early);
    return awaitConnection(*fd, early, message);
}

bool sendPing(int fd, std::string& message) {
    constexpr size_t kSize = sizeof kPing - 1;
    const ssize_t sent = send(fd, kPing, kSize, MSG_NOSIGNAL);
    if (sent < 0 && errno == EPIPE) {
        return findClientFailed(
            message, "Couldn't connect to client on port 9421, connection closed.", kPlain, fd);
    }
    if (sent < 0) {
        return findClientFailed(message, "Couldn't send to EUC client: ", kWithErrno, fd);
    }
    if (static_cast<size_t>(sent) < kSize) {
        return findClientFailed(message, "Couldn't send entire message to EUC client, aborting.",
                                kPlain, fd);
    }
    return true;
}

// Waits for the reply, which fills `reply` with its terminator, and closes the socket in every
// case.
bool receiveReply(int& fd, char (&reply)[kReplySize], std::string& message) {
    const int ready = waitFor(fd, Direction::Read);
    if (ready == 0) {
        return findClientFailed(
            message, "Timeout getting response from EUC client, try restarting.", kPlain, fd);
    }
    if (ready < 0) return findClientFailed(message, "Select failed to read: ", kWithErrno, fd);
    const ssize_t received = recv(fd, reply, sizeof reply - 1, 0);
    if (received < 0) {
        return findClientFailed(message, "Error reading from EUC client: ", kWithErrno, fd);
    }
    close(std::exchange(fd, -1));
    reply[received] = '\0';
    return true;
}

bool pingLoadedClient(int& fd, std::string& message) {
    if (!connectToClient(&fd, message) || !sendPing(fd, message)) return false;
    // No text of the library: a client that is there must not seem to be none without memory.
    char reply[kReplySize];
    if (!receiveReply(fd, reply, message)) return false;
    if (std::strstr(reply, "pong") != nullptr) return true;
    return findClientFailed(message,
                            "Unrecognized response from port 9421: '" + std::string(reply) +
                                "', is another service using this port?",
                            kPlain, -1);
}

FILE* openListing() {
    static constexpr char kCommand[] = "/bin/launchctl list com.velnor.client.plist 2>/dev/null";
    // Both ways where the system's pipes go both ways; elsewhere that mode is refused.
    FILE* pipe = popen(kCommand, "r+");
    return pipe != nullptr ? pipe : popen(kCommand, "r");
}

}  // namespace

bool findClientFailed(std::string& message, std::string text, bool withErrno, int fd) {
    if (withErrno) text += std::strerror(errno);
    message = std::move(text);
    if (fd != -1) close(fd);
    return false;
}

bool isClientRunning(std::string& message) {
    FILE* pipe = openListing();
    if (pipe == nullptr) {
        return findClientFailed(message, "Couldn't open pipe to launchctl, aborting.", kPlain, -1);
    }
    char line[4096];
    const bool loaded = std::fgets(line, sizeof line, pipe) != nullptr;
    pclose(pipe);
    if (loaded) return true;
    return findClientFailed(message, "not installed or not running.", kPlain, -1);
}

bool isClientListening(std::string& message) {
    if (!isClientRunning(message)) return false;
    int fd = -1;
    try {
        return pingLoadedClient(fd, message);
    } catch (const std::bad_alloc&) {
        if (fd != -1) close(fd);
        throw;
    }
}

}  // namespace EUCUtils

int32_t pingClient() {
    // The messages are library strings; no exception of theirs may reach the caller.
    try {
        std::string message;
        return EUCUtils::isClientListening(message) ? 1 : 0;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}
