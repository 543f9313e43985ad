// Proxy accounts from the system's settings and keychain.
#include "net/proxy_credentials.h"

#include <cstring>

#include "platform/system_proxies.h"

namespace {

constexpr int32_t kDefaultPort = 80;
// Room for a host name with its terminator, in bytes.
constexpr size_t kMaxHostSize = 1024;

bool beginsWith(const char* text, const char* prefix) {
    return std::strncmp(text, prefix, std::strlen(prefix)) == 0;
}

bool isUsableHost(const char* host) {
    return host != nullptr && *host != '\0' && std::strlen(host) < kMaxHostSize;
}

}  // namespace

bool _vn_mac_get_keychain_proxy_credentials(const char* url,
                                            velnor::platform::Credentials* credentials) {
    using velnor::platform::ProxyProtocol;
    const bool https = beginsWith(url, "https://");
    if (!https && !beginsWith(url, "http://")) return false;
    const auto proxies = velnor::platform::copySystemProxies();
    if (!proxies) return false;
    const ProxyProtocol protocol = https ? ProxyProtocol::Https : ProxyProtocol::Http;
    int32_t port = kDefaultPort;
    const velnor::OwnedText host = proxies->configuredHost(protocol, url, &port);
    return isUsableHost(host.get()) &&
           findProxyPassword(host.get(), static_cast<uint16_t>(port), protocol, credentials);
}
