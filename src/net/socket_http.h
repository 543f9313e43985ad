// A small HTTP/1.0 client (RFC 1945) on plain sockets, for the client's interface on the loopback
// address. What goes through proxies or TLS is the system downloader's.
#ifndef VELNOR_NET_SOCKET_HTTP_H
#define VELNOR_NET_SOCKET_HTTP_H

#include <cstddef>
#include <cstdint>

namespace velnor {

/// Most bytes of a request.
inline constexpr size_t kLongestHttpRequest = 1023;

/// What a request holds besides its path, its host's name and the user agent.
inline constexpr size_t kRequestFrame =
    sizeof "GET / HTTP/1.0\r\nHost: \r\nUser-Agent: \r\nConnection: keep-alive\r\n\r\n" - 1;

}  // namespace velnor

/// Sends a GET request for `path` (without its leading "/") on the connected `socket` and returns
/// the reply's body with one NUL byte behind it, owned by the caller; null on failure. The status
/// is not looked at. The socket stays open, for a further request when the peer allows one.
///
/// The header block has at most 4096 bytes. A reply with "Content-Length: " in what comes first,
/// the headers and whatever is in the same reads, has 1 to 10,485,760 bytes of body; what follows
/// them is not part of it, and whether it is still in the socket then is left open. One without
/// goes on until the peer closes. The whole request has at most 1023 characters.
///
/// `headersOut` (may be null) receives a copy of the header block with its blank line, owned by the
/// caller, and null on failure; `lengthOut` (may be null) the body's length on success.
///
/// Codes left: 1 a null argument, or a line break in a text; 4 no memory, or a length that is out
/// of bounds; 5 a reply that is incomplete or has no header block, or, on a socket whose waits are
/// limited, a peer that is silent for too long. A request that is too long or could not be sent
/// leaves none.
char* _vn_downloadPathFromSocket(const char* userAgent, const char* path, const char* hostName,
                                 int32_t socket, char** headersOut, uint32_t* lengthOut);

/// Fetches an "http://" URL and returns the body as above, of a reply with status 200; null on
/// failure. Redirects are followed without a limit on their number, to "http://" URLs only. A peer
/// may be silent for 30 seconds.
///
/// `socketOut` (may be null) receives the open socket of a success, owned by the caller, and -1 on
/// failure; without it the socket is closed. `lengthOut` (may be null) receives the body's length
/// on success. `reserved` is not used.
///
/// Codes left besides those above: 1 for another kind of URL, one without a "/" behind its host,
/// or an unknown host; 5 when the host cannot be connected to. Any other status than 200, and a
/// redirect to nowhere, leave none.
char* _vn_downloadURL(const char* userAgent, const char* url, int32_t* socketOut,
                      uint32_t* lengthOut, void* reserved);

#endif
