// A port to which connections stay in progress for ever, as to a host that drops every packet.
#ifndef SANDBOX_SERVERS_SILENT_PORT_H
#define SANDBOX_SERVERS_SILENT_PORT_H

#include <vector>

namespace sandbox {

/// On 127.0.0.1 from construction to destruction.
class SilentPort {
  public:
    /// Port 0 stands for any free one. Throws std::system_error when it cannot listen.
    explicit SilentPort(int port = 0);
    ~SilentPort();
    SilentPort(const SilentPort&) = delete;
    SilentPort& operator=(const SilentPort&) = delete;

    int port() const { return port_; }

  private:
    int port_;
    std::vector<int> sockets_;
};

}  // namespace sandbox

#endif
