// The library's handle and records, released with their owners; failures are thrown.
#ifndef VELNOR_TOOLS_VNCTL_CLIENT_H
#define VELNOR_TOOLS_VNCTL_CLIENT_H

#include <cstdint>
#include <string>
#include <utility>

#include "net/socket_http.h"
#include "velnor/capi.h"

namespace vnctl {

inline constexpr char kUserAgent[] = "vnctl/" VNCTL_VERSION;

/// Most characters of a request's path that go out with this user agent to "localhost".
inline constexpr size_t kLongestPath = velnor::kLongestHttpRequest - velnor::kRequestFrame -
                                       (sizeof "localhost" - 1) - (sizeof kUserAgent - 1);

/// A connection to the client, on behalf of the application with the number `cid`.
class Client {
  public:
    /// Throws Failure when the client does not answer.
    explicit Client(int32_t cid);
    ~Client() { vn_uninitialize(handle_, 0); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    ApiHandle* handle() const { return handle_; }
    int32_t cid() const { return cid_; }

  private:
    ApiHandle* handle_ = nullptr;
    int32_t cid_;
};

/// Whether there is a client to connect to, started by whomever.
bool clientAnswers();

/// The state of one download, as the client told it last.
class Download {
  public:
    /// `client` must outlive it.
    Download(const Client& client, std::string url) : client_(client), url_(std::move(url)) {}
    ~Download() { vn_cleanFileAttributes(client_.handle(), &file_, 0); }
    Download(const Download&) = delete;
    Download& operator=(const Download&) = delete;

    /// Asks the client anew. Returns 0, or the code of a failure, after which the record is empty.
    uint32_t ask();

    /// Asks, and throws Failure when that fails.
    void askOrThrow();

    const std::string& url() const { return url_; }
    const FileAttributes& record() const { return file_; }

  private:
    const Client& client_;
    const std::string url_;
    FileAttributes file_{};
};

}  // namespace vnctl

#endif
