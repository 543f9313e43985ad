// Plain TCP connections to IPv4 hosts.
#ifndef VELNOR_NET_SOCKET_H
#define VELNOR_NET_SOCKET_H

#include <cstdint>
#include <utility>

/// Connects to `hostName`, a name or an IPv4 address in text, at `port`. Returns the descriptor,
/// owned by the caller; -1 with code 1 when there is no such host and 5 when it cannot be connected
/// to, a port outside 1 to 65535 included. Programs that are started later do not inherit it.
int32_t _vn_openSocket(const char* hostName, int32_t port);

/// Receives until `size` bytes are in `buffer`, or the peer closes or fails. Returns their number.
uint32_t _vn_recvUpToSize(int32_t socket, void* buffer, uint32_t size);

namespace velnor {

/// Makes sending and receiving on the socket fail after 30 seconds without progress. The client
/// answers at once; this is for one that hangs.
void limitWaits(int32_t socket);

/// _vn_recvUpToSize, which tells besides whether it ended because the peer was silent for too
/// long.
uint32_t receiveUpToSize(int32_t socket, void* buffer, uint32_t size, bool* silent);

/// Whether bytes have come that nobody has received yet. Does not wait.
bool hasUnread(int32_t socket);

/// Receives what is there, waiting for the first byte; at most `size` bytes. Returns their number,
/// 0 when the peer has closed, -1 on failure.
int64_t receive(int32_t socket, void* buffer, uint32_t size);

/// Sends all of it, without SIGPIPE when the peer has gone. False when it could not be sent whole.
bool sendAll(int32_t socket, const void* bytes, uint32_t size);

/// An open descriptor, closed when its owner goes; -1 for none.
class Socket {
  public:
    explicit Socket(int32_t descriptor) : descriptor_(descriptor) {}
    ~Socket();
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    int32_t get() const { return descriptor_; }
    explicit operator bool() const { return descriptor_ != -1; }

    /// Hands the descriptor to the caller, who closes it.
    int32_t release() { return std::exchange(descriptor_, -1); }

  private:
    int32_t descriptor_;
};

}  // namespace velnor

#endif
