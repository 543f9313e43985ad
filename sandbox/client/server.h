// The stand-in client's control interface on the loopback address.
#ifndef SANDBOX_CLIENT_SERVER_H
#define SANDBOX_CLIENT_SERVER_H

#include <csignal>
#include <cstdint>

#include "connection.h"

class Server {
  public:
    /// Listens. From here on SIGTERM and SIGINT are held back on this thread and those that it
    /// starts. Throws std::system_error when the port cannot be listened on.
    explicit Server(uint16_t port);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// Answers until SIGTERM or SIGINT comes; then ends all connections and waits for them.
    void run(const Responder& responder);

  private:
    sigset_t waiting_;
    int listener_;
};

#endif
