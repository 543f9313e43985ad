// Attempts at one request through the system's HTTP stack: by way of the system's proxies, with a
// password of the user's keychain when a proxy wants one, or directly.
#ifndef VELNOR_NET_HTTP_ATTEMPTS_H
#define VELNOR_NET_HTTP_ATTEMPTS_H

#include <cstdint>

#include "net/body.h"
#include "platform/http_stream.h"

namespace velnor {

enum class Way { Proxied, Direct };

enum class Ending {
    Answered,  // with whatever status
    NoAnswer,  // no connection or no first byte within the time, or a failure before it
    Failed,  // it could not start, or the answer broke off, is no HTTP, redirects to where it must
             // not lead, or wants a password that there is not
    NoMemory,  // for the body
};

struct Answer {
    Ending ending;
    int32_t status = 0;
    Body body = {};  // of a status 200 alone, and null data when it is not kept
    bool isGzip = false;
    char failure[512] = "";  // the system's words for NoAnswer or Failed; empty without any
};

enum class Keep { Body, Status };

constexpr int32_t kStatusOk = 200;

class HttpAttempts {
  public:
    /// `request` is without proxies and credentials, which are filled in here. Bodies that are not
    /// kept are read to their ends all the same.
    HttpAttempts(const platform::HttpRequest& request, Keep keep)
        : request_(request), keep_(keep), proxies_(platform::copySystemProxies()) {}

    /// One attempt. It waits about 15 s for the connection and 15 s for the first bytes, and
    /// without limit for the rest. The first 407 is answered by a second request, which carries the
    /// proxy's credentials when the way is not direct; a later one is an answer like others.
    Answer send(Way way);

    /// Lets the next attempt answer a 407 once more.
    void forgetProxyDemand() { authentication_.reset(); }

  private:
    bool answerDemand(platform::HttpStream& stream);
    platform::HttpRequest requestFor(Way way) const;

    platform::HttpRequest request_;
    Keep keep_;
    platform::OwnedProxies proxies_;
    platform::OwnedAuthentication authentication_;
    platform::Credentials credentials_;
};

}  // namespace velnor

#endif
