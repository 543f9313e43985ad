// The path of an API request, put together piece by piece.
#ifndef VELNOR_API_REQUEST_PATH_H
#define VELNOR_API_REQUEST_PATH_H

#include <cstddef>
#include <cstdint>

namespace velnor {

/// Most characters of a path; beside a user agent fewer go out (net/socket_http.h).
inline constexpr size_t kLongestRequest = 1023;

/// Most bytes of "user:password", which goes into a request in Base64.
inline constexpr size_t kLongestLogin = 189;

/// Holds at most kLongestRequest characters. A piece for which there is no room, or no memory to
/// encode it, spoils the path.
class RequestPath {
  public:
    /// Begins with "api?function=", the function, "&cid=", and the API version.
    RequestPath(const char* function, int32_t cid);

    /// The same for a function on one file, whose URL follows.
    RequestPath(const char* function, int32_t cid, const char* url);

    void add(const char* text);
    void addNumber(int32_t number);

    /// Adds `text` percent-encoded. Leaves code 4 when there is no memory.
    void addEncoded(const char* text);

    /// The path, while this object lives; null when it is spoilt.
    const char* get() const { return spoilt_ ? nullptr : text_; }

  private:
    char text_[kLongestRequest + 1] = {};
    size_t size_ = 0;
    bool spoilt_ = false;
};

}  // namespace velnor

#endif
