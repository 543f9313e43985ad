#include "net/proxy_credentials.h"

#include <cstring>

#include "support/url.h"

namespace velnor {
namespace {

constexpr int32_t kDefaultPort = 80;
// Room for a host name with its terminator, in bytes.
constexpr size_t kMaxHostSize = 1024;

bool isUsableHost(const char* host) {
    return host != nullptr && *host != '\0' && std::strlen(host) < kMaxHostSize;
}

}  // namespace

bool findProxyCredentials(const platform::SystemProxies& proxies, const char* url,
                          platform::Credentials* credentials) {
    using platform::ProxyProtocol;
    const bool https = isHttpsUrl(url);
    if (!https && !isHttpUrl(url)) return false;
    const ProxyProtocol protocol = https ? ProxyProtocol::Https : ProxyProtocol::Http;
    int32_t port = kDefaultPort;
    const OwnedText host = configuredProxyHost(proxies, protocol, url, &port);
    return isUsableHost(host.get()) &&
           findProxyPassword(host.get(), static_cast<uint16_t>(port), protocol, credentials);
}

}  // namespace velnor

bool _vn_mac_get_keychain_proxy_credentials(const char* url,
                                            velnor::platform::Credentials* credentials) {
    const auto proxies = velnor::platform::copySystemProxies();
    return proxies && velnor::findProxyCredentials(*proxies, url, credentials);
}
