// A web server of the rehearsal: HTTP or HTTPS on 127.0.0.1, in threads of its own.
#ifndef SANDBOX_SERVERS_FILE_SERVER_H
#define SANDBOX_SERVERS_FILE_SERVER_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "http.h"
#include "tls_files.h"

namespace sandbox {

using Handler = std::function<Reply(const Request&)>;
using Observer = std::function<void(const Request&, const Reply&)>;

/// Serves from construction to destruction; what it serves may be changed meanwhile from any
/// thread. What nobody serves is answered with 404.
class FileServer {
  public:
    /// Speaks HTTP. Port 0 stands for any free one. Throws std::runtime_error when it cannot
    /// listen.
    explicit FileServer(int port = 0);

    /// Speaks HTTPS.
    FileServer(int port, const TlsFiles& tls);

    /// Ends open connections; may wait up to a second for a client that keeps an idle one.
    ~FileServer();

    FileServer(const FileServer&) = delete;
    FileServer& operator=(const FileServer&) = delete;

    int port() const;

    /// Answers every target that begins with `prefix`, of whichever method; the longest prefix
    /// wins. The handler runs on the server's threads, several at a time.
    void handle(const std::string& prefix, Handler handler);

    /// Answers the path, whatever query follows it, with this reply. Goes before every prefix.
    void serve(const std::string& path, Reply reply);
    void serve(const std::string& path, Body body);

    /// Is told of every request with the reply that it gets.
    void observe(Observer observer);

    /// Every request so far, in the order of arrival.
    std::vector<Request> requests() const;

  private:
    class Implementation;
    std::unique_ptr<Implementation> implementation_;
};

}  // namespace sandbox

#endif
