// A server whose replies are written by hand, byte by byte, for the ones that no web server would
// give.
#ifndef SANDBOX_SERVERS_RAW_SERVER_H
#define SANDBOX_SERVERS_RAW_SERVER_H

#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace sandbox {

/// Listens on 127.0.0.1 from construction to destruction, and closes every connection at its end.
class RawServer {
  public:
    /// Called on a thread of its own for every request, with what came up to and including the
    /// empty line that ends a head; the body, if any, is left to be read from `fd`. The connection
    /// is closed when it returns. When the server ends, reading and writing fail.
    using Talk = std::function<void(int fd, const std::string& head)>;

    /// Port 0 stands for any free one. Throws std::system_error when it cannot listen.
    explicit RawServer(Talk talk, int port = 0);

    /// Accepts, never reads, never answers.
    static Talk blackHole() { return nullptr; }

    ~RawServer();
    RawServer(const RawServer&) = delete;
    RawServer& operator=(const RawServer&) = delete;

    int port() const { return port_; }

    /// How many connections were accepted so far.
    size_t connections() const;

    /// The heads of all requests so far, in the order of arrival.
    std::vector<std::string> heads() const;

  private:
    struct Connection {
        int fd;  // -1 once it is closed
        std::thread thread = {};
    };

    void accept();
    void serve(Connection& connection);
    void forgetClosed();
    void end(const Connection& connection);

    const Talk talk_;
    int listener_;
    int port_ = 0;
    mutable std::mutex mutex_;
    std::list<Connection> connections_;
    size_t accepted_ = 0;
    std::vector<std::string> heads_;
    std::thread thread_;
};

/// What comes up to and including the empty line that ends a head; empty when the other side closes
/// first. For a further request on the connection.
std::string readHead(int fd);

/// Writes all of it; false when the other side has gone. Never raises SIGPIPE.
bool sendAll(int fd, const std::string& bytes);

}  // namespace sandbox

#endif
