// Sockets on 127.0.0.1, closed on exec.
#ifndef SANDBOX_SERVERS_LOOPBACK_H
#define SANDBOX_SERVERS_LOOPBACK_H

namespace sandbox {

/// A listening socket; port 0 stands for any free one. Throws std::system_error when it cannot
/// listen.
int listenOnLoopback(int port, int backlog);

/// The port that a socket is bound to.
int portOf(int fd);

/// A non-blocking socket on its way to `port`, connected or not.
int beginConnecting(int port);

}  // namespace sandbox

#endif
