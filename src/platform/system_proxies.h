// The user's proxy settings, as the system knows them at one moment.
#ifndef VELNOR_PLATFORM_SYSTEM_PROXIES_H
#define VELNOR_PLATFORM_SYSTEM_PROXIES_H

#include <cstdint>
#include <memory>

#include "platform/proxy_protocol.h"
#include "support/owned.h"

namespace velnor::platform {

class SystemProxies {
  public:
    virtual ~SystemProxies() = default;

    /// Host and port of the proxy that is configured for `protocol`, whether or not it is switched
    /// on, as far as the system knows such a state; `url` is what is being fetched, for systems
    /// whose settings depend on it. Returns null when none is configured, or with code 4; `*port`
    /// is left alone where the settings name no port.
    virtual OwnedText configuredHost(ProxyProtocol protocol, const char* url,
                                     int32_t* port) const = 0;
};

/// A copy of the current settings; null when the system has none to give or there is no memory.
std::unique_ptr<SystemProxies> copySystemProxies();

}  // namespace velnor::platform

#endif
