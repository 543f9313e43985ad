// Proxy settings on Linux through libproxy.
#include "platform/linux/system_proxies_libproxy.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "api/last_error.h"
#include "support/format.h"
#include "velnor/capi.h"

namespace velnor::platform {
namespace {

constexpr char kDirect[] = "direct://";
constexpr char kSocks[] = "socks://";

struct ProxyListDeleter {
    void operator()(char** list) const { px_proxy_factory_free_proxies(list); }
};

bool beginsWith(const char* text, const char* prefix) {
    return std::strncmp(text, prefix, std::strlen(prefix)) == 0;
}

OwnedText copyText(const char* text, size_t length) {
    OwnedText copy;
    _vn_snprintf(copy.out(), 0, "%.*s", static_cast<int>(length), text);
    return copy;
}

// Where the host begins in "[user:password@]host[:port][/]".
const char* hostOf(const char* authority) {
    const char* host = authority;
    for (const char* c = authority; *c != '\0' && *c != '/'; ++c) {
        if (*c == '@') host = c + 1;
    }
    return host;
}

// Takes "[user:password@]host[:port][/]" apart; the host of "[::1]:80" is "::1".
OwnedText splitAuthority(const char* authority, int32_t* port) {
    authority = hostOf(authority);
    const bool bracketed = *authority == '[';
    const char* host = bracketed ? authority + 1 : authority;
    const char* hostEnd = host + std::strcspn(host, bracketed ? "]" : ":/");
    const char* colon = bracketed && *hostEnd == ']' ? hostEnd + 1 : hostEnd;
    if (*colon == ':') *port = std::atoi(colon + 1);
    return hostEnd == host ? OwnedText() : copyText(host, static_cast<size_t>(hostEnd - host));
}

}  // namespace

bool LibproxyProxies::proxyFor(const char* url, OwnedText* proxy) const {
    *proxy = OwnedText();
    const std::unique_ptr<char*, ProxyListDeleter> list(
        px_proxy_factory_get_proxies(factory_, url));
    // The first entry is the one to use; the caller has its own second attempt.
    const char* first = list ? list.get()[0] : nullptr;
    if (first == nullptr || beginsWith(first, kDirect)) return true;
    const bool isSocks = beginsWith(first, kSocks);
    return _vn_snprintf(proxy->out(), 0, "%s%s", isSocks ? "socks5h://" : "",
                        isSocks ? first + std::strlen(kSocks) : first) != 0;
}

OwnedText LibproxyProxies::withoutAccount(const OwnedText& proxy) {
    const char* separator = std::strstr(proxy.get(), "://");
    const char* authority = separator != nullptr ? separator + 3 : proxy.get();
    OwnedText plain;
    _vn_snprintf(plain.out(), 0, "%.*s%s", static_cast<int>(authority - proxy.get()), proxy.get(),
                 hostOf(authority));
    return plain;
}

OwnedText LibproxyProxies::configuredHost(ProxyProtocol protocol, const char* url,
                                          int32_t* port) const {
    OwnedText proxy;
    if (!proxyFor(url, &proxy)) return {};
    // A proxy that is off for this URL's host still shows for a host that nobody excludes.
    if (!proxy && !proxyFor(protocol == ProxyProtocol::Https ? "https://host.invalid/"
                                                             : "http://host.invalid/",
                            &proxy)) {
        return {};
    }
    const char* separator = proxy ? std::strstr(proxy.get(), "://") : nullptr;
    return separator != nullptr ? splitAuthority(separator + 3, port) : OwnedText();
}

std::unique_ptr<SystemProxies> copySystemProxies() {
    pxProxyFactory* factory = nullptr;
    try {
        factory = px_proxy_factory_new();
    } catch (...) {
        // libproxy is C++ behind its C interface and lets what it meets pass.
        _vn_setLastError(INSTALL_ERROR_INSUFFICIENTMEMORY);
        return nullptr;
    }
    if (factory == nullptr) return nullptr;
    std::unique_ptr<SystemProxies> proxies(new (std::nothrow) LibproxyProxies(factory));
    if (!proxies) px_proxy_factory_free(factory);
    return proxies;
}

}  // namespace velnor::platform
