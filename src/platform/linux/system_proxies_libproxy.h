// Proxy settings on Linux: the environment and the desktop's settings, through libproxy, and the
// addresses that they name.
#ifndef VELNOR_PLATFORM_LINUX_SYSTEM_PROXIES_LIBPROXY_H
#define VELNOR_PLATFORM_LINUX_SYSTEM_PROXIES_LIBPROXY_H

#include <cstdint>
#include <memory>

#include "platform/keychain.h"
#include "platform/system_proxies.h"
#include "support/owned.h"

namespace velnor::platform {

/// A proxy's address, taken apart once, by libcurl, so that the password is looked up for the very
/// host that is connected to.
struct ProxyAddress {
    OwnedText url;        // scheme, host and port; null: connect directly
    OwnedText host;       // without the brackets of an IPv6 address
    int32_t port = 0;     // 80 when the address names none
    Credentials account;  // that the address names; no user: none
    OwnedText except;     // hosts that are connected to directly, as in no_proxy; null: none

    enum class Parsed { Done, Refused, NoMemory };

    /// Fills all but `except` from the text of an address; "http://" may be missing. What libcurl
    /// takes for no URL, or cannot decode, is refused.
    Parsed parse(const char* text);
};

/// Scheme, host and port of `url` as a URL, as libcurl reads them; null when it is none, or without
/// memory.
OwnedText originOf(const char* url);

struct Libproxy;

class SystemProxies {
  public:
    explicit SystemProxies(std::shared_ptr<Libproxy> libproxy);

    /// Fills `proxy` for a request to `url`, for which about 15 seconds are waited: libproxy may
    /// have to fetch a script (PAC) that says it. Who does not answer in time has no proxy.
    ProxyAddress::Parsed proxyFor(const char* url, ProxyAddress* proxy) const;

  private:
    ProxyAddress::Parsed ask(const char* origin, const char** answer) const;

    // Keeps its last answer; empty once it has not come back.
    mutable std::shared_ptr<Libproxy> libproxy_;
};

}  // namespace velnor::platform

#endif
