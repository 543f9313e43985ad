// The peer of both HTTP clients: libcurl's easy interface into memory.
#ifndef BENCH_CURL_PEER_H
#define BENCH_CURL_PEER_H

#include <cstddef>

namespace bench {

/// One easy handle; while it lives it keeps its connection, as far as the server does.
class CurlPeer {
  public:
    /// With `gzip` it asks for gzip and lets libcurl undo it.
    explicit CurlPeer(const char* url, bool gzip = false);
    ~CurlPeer();
    CurlPeer(const CurlPeer&) = delete;
    CurlPeer& operator=(const CurlPeer&) = delete;

    /// Fetches the URL, as often as it is called. False on failure.
    bool fetch();

    /// What the last call fetched.
    const char* body() const { return body_; }
    size_t size() const { return size_; }

  private:
    static size_t append(char* bytes, size_t, size_t size, void* self);

    void* easy_;
    char* body_ = nullptr;
    size_t size_ = 0;
};

}  // namespace bench

#endif
