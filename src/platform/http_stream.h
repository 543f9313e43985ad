// One HTTP exchange through the system's HTTP stack, read as a stream: TLS, redirects and the talk
// with a proxy are the stack's; attempts, credentials and time limits are the caller's.
#ifndef VELNOR_PLATFORM_HTTP_STREAM_H
#define VELNOR_PLATFORM_HTTP_STREAM_H

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "platform/keychain.h"
#include "platform/system_proxies.h"

namespace velnor::platform {

enum class StreamStatus : int32_t {
    NotOpen = 0,
    Opening = 1,
    Open = 2,  // connected (TLS included) and not yet read to the end
    Reading = 3,
    AtEnd = 5,
    Closed = 6,
    Error = 7,
};

struct HttpHeader {
    const char* name;
    const char* value;
};

/// What a proxy demanded in a 407 reply; made from the response and needed to answer it.
class ProxyAuthentication {
  public:
    virtual ~ProxyAuthentication() = default;

    /// False for schemes that authenticate otherwise (Kerberos tickets, say).
    virtual bool requiresUserNameAndPassword() const = 0;
};

/// A request. All pointers stay the caller's and are valid for as long as the stream is.
struct HttpRequest {
    const char* method;
    const char* url;                         // absolute
    std::span<const HttpHeader> headers;     // all that is sent besides Host, Content-Length and
                                             // an authorization
    std::string_view body = {};              // null data: none, and no Content-Length
    const SystemProxies* proxies = nullptr;  // null: connect directly
    const ProxyAuthentication* authentication = nullptr;  // with credentials: answers a 407
    const Credentials* credentials = nullptr;
};

/// Belongs to one thread. Work happens only inside its calls.
class HttpStream {
  public:
    virtual ~HttpStream() = default;  // closes it

    /// Starts the exchange; false when it cannot even start.
    virtual bool open() = 0;

    virtual StreamStatus status() const = 0;

    /// True when a read returns without waiting: bytes are there, or the end, or an error.
    virtual bool hasBytesAvailable() const = 0;

    /// Lets the exchange go on for at most `milliseconds`; each returns as soon as its answer is
    /// known: the status is Open or Error, or a read need not wait.
    virtual void waitUntilOpen(int milliseconds) = 0;
    virtual void waitForBytes(int milliseconds) = 0;

    /// Reads at most `size` body bytes, waiting without limit for the first. Returns their number,
    /// 0 at the end, -1 on failure (status Error).
    virtual int32_t read(void* buffer, uint32_t size) = 0;

    /// Status code of the final response; 0 while there is none.
    virtual int32_t responseCode() const = 0;

    /// True when the final response has a header `name` (any letter case) with exactly `value`.
    virtual bool hasResponseHeader(const char* name, const char* value) const = 0;

    /// Announced length of the body in bytes; -1 when unknown.
    virtual int64_t announcedLength() const = 0;

    /// What a 407 response demands; null when it names no scheme that is known here.
    virtual std::unique_ptr<ProxyAuthentication> proxyAuthentication() const = 0;
};

/// A stream for `request`; null when none can be made, for a URL that is none or for want of
/// memory. Redirects are followed: to http and https only, 20 at most, never from https to http.
/// The method and the body stay as they are, but after a 303 it is a GET without one.
std::unique_ptr<HttpStream> createHttpStream(const HttpRequest& request);

}  // namespace velnor::platform

#endif
