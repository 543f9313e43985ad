// What a socket of our own does not do to the process.
#ifndef VELNOR_PLATFORM_SOCKET_SIGNALS_H
#define VELNOR_PLATFORM_SOCKET_SIGNALS_H

#include <sys/socket.h>

namespace velnor::platform {

/// Sending on `socket` raises no SIGPIPE, also where the system knows MSG_NOSIGNAL by name only.
inline void raiseNoSigpipe([[maybe_unused]] int socket) {
#ifdef SO_NOSIGPIPE
    const int on = 1;
    setsockopt(socket, SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on);
#endif
}

}  // namespace velnor::platform

#endif
