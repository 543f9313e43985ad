// URLs of the plain HTTP client, taken apart.
#ifndef VELNOR_NET_HTTP_URL_H
#define VELNOR_NET_HTTP_URL_H

#include <cstdint>

/// Splits `url` at "://" and the first "/" behind it. Returns 1 with
///   *copyOut  a copy of the URL, cut into pieces, owned by the caller
///   *hostOut  the host, without a port, within the copy
///   *portOut  the number behind the host's first ":"; left alone when there is none
///   *pathOut  what follows the "/", within the copy; null when there is no "/"
/// Nothing is decoded or checked further: "user@", an IPv6 literal or a port that is no number end
/// up as a host or port that does not exist. Returns 0 with code 1 for a null argument or a URL
/// without "://", 4 without memory; the three texts are null then.
int32_t _vn_getHostName(const char* url, char** copyOut, char** hostOut, int32_t* portOut,
                        char** pathOut);

namespace velnor {

/// True when `url` begins with "http://" (in lower case).
bool isHttpUrl(const char* url);

/// The same, and there is a "/" behind that.
bool isHttpUrlWithPath(const char* url);

}  // namespace velnor

#endif
