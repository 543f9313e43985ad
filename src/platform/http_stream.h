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

enum class StreamStatus {
    Opening,
    Open,   // connected (TLS included), or a failure that shows when it is read
    Error,  // no answer began: nobody was there, or the connection was closed again
};

struct HttpHeader {
    const char* name;
    const char* value;
};

/// What a proxy demanded in a 407 reply; made from the response and needed to answer it. It holds
/// what the exchange has learnt from the reply (a nonce, say), so it answers one request. Each
/// backend has its own.
class ProxyAuthentication;
struct ProxyAuthenticationDeleter {
    void operator()(ProxyAuthentication* authentication) const;
};
using OwnedAuthentication = std::unique_ptr<ProxyAuthentication, ProxyAuthenticationDeleter>;

/// False for schemes that authenticate otherwise (Kerberos tickets, say).
bool requiresUserNameAndPassword(const ProxyAuthentication& authentication);

/// A request. All pointers stay the caller's and are valid for as long as the stream is.
struct HttpRequest {
    const char* method;
    const char* url;                         // absolute
    std::span<const HttpHeader> headers;     // all that is sent besides Host, Content-Length, an
                                             // authorization and what the system insists on
    std::string_view body = {};              // null data: none, and no Content-Length
    const SystemProxies* proxies = nullptr;  // null: connect directly
    ProxyAuthentication* authentication = nullptr;  // with credentials: answers a 407
    const Credentials* credentials = nullptr;
};

/// Belongs to one thread. Work happens inside the calls below, or by itself where the system's
/// stack works so. Each backend has its own.
class HttpStream;
struct HttpStreamDeleter {
    void operator()(HttpStream* stream) const;  // closes it
};
using OwnedStream = std::unique_ptr<HttpStream, HttpStreamDeleter>;

/// Starts the exchange; null when it cannot even start, for a URL that is none or without memory.
/// Redirects are followed: to http and https only, as often as the system allows (20 times where it
/// leaves that to us), and not from https to http (where the system might, what began with https
/// fails when it has ended with http). The method and the body stay as they are, but after a 303 it
/// is a GET without one.
OwnedStream openStream(const HttpRequest& request);

/// A failure behind which there is the beginning of an answer, or one that will be the same the
/// next time, shows as Open as far as the system tells: the read fails.
StreamStatus statusOf(const HttpStream& stream);

/// True when a read returns without waiting: bytes are there, or the end, or an error.
bool hasBytesAvailable(const HttpStream& stream);

/// Lets the exchange go on for at most `milliseconds`; each returns as soon as its answer is known:
/// the status is Open or Error, or a read need not wait.
void waitUntilOpen(HttpStream& stream, int milliseconds);
void waitForBytes(HttpStream& stream, int milliseconds);

/// Reads at most `size` body bytes, waiting without limit for the first. Returns their number, 0 at
/// the end, -1 on failure.
int32_t readBody(HttpStream& stream, void* buffer, uint32_t size);

/// Status code of the final response; 0 while there is none.
int32_t responseCode(const HttpStream& stream);

/// Puts what the system's stack says about a failure, such as "certificate has expired", into
/// `text`; an empty text where it says nothing, or more than fits.
void copyFailureText(const HttpStream& stream, std::span<char> text);

/// True when the final response has a header `name` (any letter case) with exactly `value`.
bool hasResponseHeader(const HttpStream& stream, const char* name, const char* value);

/// What a 407 response demands, once it has been read to its end; null when it names no scheme that
/// is known here. The exchange goes over to it: of the stream nothing is asked afterwards.
OwnedAuthentication takeProxyAuthentication(HttpStream& stream);

}  // namespace velnor::platform

#endif
