// Proxy settings on Linux: the environment and the desktop's settings, through libproxy.
#ifndef VELNOR_PLATFORM_LINUX_SYSTEM_PROXIES_LIBPROXY_H
#define VELNOR_PLATFORM_LINUX_SYSTEM_PROXIES_LIBPROXY_H

#include <proxy.h>

#include "platform/system_proxies.h"

namespace velnor::platform {

class LibproxyProxies final : public SystemProxies {
  public:
    explicit LibproxyProxies(pxProxyFactory* factory) : factory_(factory) {}
    ~LibproxyProxies() override { px_proxy_factory_free(factory_); }
    LibproxyProxies(const LibproxyProxies&) = delete;
    LibproxyProxies& operator=(const LibproxyProxies&) = delete;

    OwnedText configuredHost(ProxyProtocol protocol, const char* url, int32_t* port) const override;

    /// Stores the URL of the proxy to use for `url`, null to connect directly. It may hold an
    /// account. False with code 4 when there is no memory.
    bool proxyFor(const char* url, OwnedText* proxy) const;

    /// `proxy` without an account in it; null with code 4 when there is no memory.
    static OwnedText withoutAccount(const OwnedText& proxy);

  private:
    pxProxyFactory* factory_;
};

}  // namespace velnor::platform

#endif
