// The stand-in client's control interface on the loopback address.
#ifndef SANDBOX_CLIENT_SERVER_H
#define SANDBOX_CLIENT_SERVER_H

#include <cstdint>

/// Serves until SIGTERM or SIGINT. Throws std::system_error when the port cannot be listened on.
void serve(uint16_t port);

#endif
