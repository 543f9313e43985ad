// The user's proxy settings, as the system knows them at one moment.
#ifndef VELNOR_PLATFORM_SYSTEM_PROXIES_H
#define VELNOR_PLATFORM_SYSTEM_PROXIES_H

#include <cstdint>
#include <memory>

#include "support/owned.h"

namespace velnor::platform {

/// The two kinds of web proxy that a system is configured with, named after the URLs that they
/// serve.
enum class ProxyProtocol { Http, Https };

/// Each backend has its own.
class SystemProxies;
struct SystemProxiesDeleter {
    void operator()(SystemProxies* proxies) const;
};
using OwnedProxies = std::unique_ptr<SystemProxies, SystemProxiesDeleter>;

/// A copy of the current settings; null when the system has none to give or there is no memory.
OwnedProxies copySystemProxies();

/// Host and port of the proxy that is configured for `protocol`, whether or not it is switched on,
/// as far as the system knows such a state; `url` is what is being fetched, for systems whose
/// settings depend on it. Returns null when none is configured, or with code 4; `*port` is left
/// alone where the settings name no port.
OwnedText configuredProxyHost(const SystemProxies& proxies, ProxyProtocol protocol, const char* url,
                              int32_t* port);

/// Whether a request for `url` is sent through its proxy: not where the settings except its host.
/// False as well where that cannot be said.
bool isProxied(const SystemProxies& proxies, const char* url);

}  // namespace velnor::platform

#endif
