#include "platform/linux/system_proxies_libproxy.h"

#include <proxy.h>

#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <new>
#include <utility>

#include "api/result/last_error.h"
#include "platform/linux/bounded_call.h"
#include "support/text.h"
#include "support/url.h"
#include "velnor/capi.h"

namespace velnor::platform {

// What a thread that asks libproxy needs; whoever is last to let it go ends it.
struct Libproxy {
    pxProxyFactory* factory = nullptr;
    OwnedText origin;
    OwnedText answer;
    bool outOfMemory = false;

    Libproxy() = default;
    ~Libproxy() {
        if (factory != nullptr) px_proxy_factory_free(factory);
    }
    Libproxy(const Libproxy&) = delete;
    Libproxy& operator=(const Libproxy&) = delete;

    void ask();
};

namespace {

using Parsed = ProxyAddress::Parsed;

constexpr std::chrono::seconds kLimit{15};
constexpr char kDirect[] = "direct://";
constexpr char kSocks[] = "socks://";

struct ProxyListDeleter {
    void operator()(char** list) const { px_proxy_factory_free_proxies(list); }
};

// The first of some variables that is set to something; null when none is.
const char* variable(std::initializer_list<const char*> names) {
    for (const char* name : names) {
        const char* value = std::getenv(name);
        if (value != nullptr && *value != '\0') return value;
    }
    return nullptr;
}

// The proxy that the environment names for URLs of this kind, as curl(1) looks for it.
const char* ownVariable(const char* origin) {
    return isHttpsUrl(origin) ? variable({"https_proxy", "HTTPS_PROXY"}) : variable({"http_proxy"});
}

bool hasScheme(const char* address) { return behindScheme(address) != nullptr; }

// As curl(1) reads it, with the exceptions that go with it.
Parsed parseVariable(const char* value, ProxyAddress* proxy) {
    const char* except = variable({"no_proxy", "NO_PROXY"});
    if (except != nullptr) proxy->except = copyText(except);
    return except != nullptr && !proxy->except ? Parsed::NoMemory : proxy->parse(value);
}

// What libproxy calls a SOCKS proxy resolves the names, as others do.
Parsed parseAnswer(const char* answer, ProxyAddress* proxy) {
    if (!beginsWith(answer, kSocks)) return proxy->parse(answer);
    OwnedText socks;
    const int32_t length =
        _vn_snprintf(socks.out(), 0, "socks5h://%s", answer + std::strlen(kSocks));
    return length != 0 ? proxy->parse(socks.get()) : Parsed::NoMemory;
}

// As libcurl reads such a list of names (CURLOPT_NOPROXY): hosts, what hosts end with, and "*"
// alone for all.
bool isExcepted(const char* list, const char* url) {
    const OwnedText names = copyText(list);
    OwnedText copy;
    char *host = nullptr, *path = nullptr, *rest = nullptr;
    int32_t port = 0;
    if (!names || _vn_getHostName(url, copy.out(), &host, &port, &path) == 0) return false;
    if (std::strcmp(list, "*") == 0) return true;
    const size_t size = std::strlen(host);
    for (char* name = strtok_r(names.get(), ", ", &rest); name != nullptr;
         name = strtok_r(nullptr, ", ", &rest)) {
        if (*name == '.') ++name;
        const size_t length = std::strlen(name);
        const char* end = host + (length < size ? size - length : 0);
        if ((end == host || end[-1] == '.') && equalIgnoringCase(end, name)) return true;
    }
    return false;
}

}  // namespace

// libproxy is C++ behind its C interface and lets what it meets pass.
void Libproxy::ask() try {
    answer = OwnedText();
    outOfMemory = false;
    if (factory == nullptr) factory = px_proxy_factory_new();
    if (factory == nullptr) return;
    const std::unique_ptr<char*, ProxyListDeleter> list(
        px_proxy_factory_get_proxies(factory, origin.get()));
    // The first entry is the one to use; the caller has its own second attempt.
    const char* first = list ? list.get()[0] : nullptr;
    if (first == nullptr || beginsWith(first, kDirect)) return;
    answer = copyText(first);
    outOfMemory = !answer;
} catch (...) {
    outOfMemory = true;
}

SystemProxies::SystemProxies(std::shared_ptr<Libproxy> libproxy) : libproxy_(std::move(libproxy)) {}

// Stores libproxy's answer for an origin; null when it is to connect directly.
Parsed SystemProxies::ask(const char* origin, const char** answer) const {
    *answer = nullptr;
    if (!libproxy_) return Parsed::Done;
    // What it said once holds: a script may say another proxy each time, and the password for one
    // must not go to the other.
    const bool isAsked = libproxy_->origin && std::strcmp(libproxy_->origin.get(), origin) == 0;
    if (!isAsked) {
        libproxy_->origin = copyText(origin);
        if (!libproxy_->origin) return Parsed::NoMemory;
        const Call call = runWithin(kLimit, [libproxy = libproxy_] { libproxy->ask(); });
        if (call == Call::TimedOut) {
            libproxy_.reset();
            return Parsed::Done;
        }
        if (call == Call::NotStarted || libproxy_->outOfMemory) {
            libproxy_->origin = OwnedText();
            return Parsed::NoMemory;
        }
    }
    *answer = libproxy_->answer.get();
    return Parsed::Done;
}

Parsed SystemProxies::proxyFor(const char* url, ProxyAddress* proxy) const {
    *proxy = ProxyAddress();
    // No more of the URL: libproxy would take an "@" in a path for the end of an account, and a
    // script has no use for what is asked of a server.
    const OwnedText origin = originOf(url);
    if (!origin) return Parsed::NoMemory;
    const char* own = ownVariable(origin.get());
    // What libproxy does not read as curl does: an address without a scheme, which it hands on in
    // some cases and not in others, and a proxy for everything.
    if (own != nullptr && !hasScheme(own)) return parseVariable(own, proxy);
    const char* answer = nullptr;
    if (ask(origin.get(), &answer) != Parsed::Done) return Parsed::NoMemory;
    if (answer != nullptr && hasScheme(answer)) return parseAnswer(answer, proxy);
    const char* all = own == nullptr ? variable({"all_proxy", "ALL_PROXY"}) : nullptr;
    return all != nullptr ? parseVariable(all, proxy) : Parsed::Done;
}

OwnedText configuredProxyHost(const SystemProxies& proxies, ProxyProtocol protocol, const char* url,
                              int32_t* port) {
    const char* anyUrl =
        protocol == ProxyProtocol::Https ? "https://host.invalid/" : "http://host.invalid/";
    ProxyAddress proxy;
    if (proxies.proxyFor(url, &proxy) != Parsed::Done) return {};
    // A proxy that is off for this URL's host still shows for a host that nobody excludes.
    if (!proxy.url && proxies.proxyFor(anyUrl, &proxy) != Parsed::Done) return {};
    if (proxy.host) *port = proxy.port;
    return std::move(proxy.host);
}

bool isProxied(const SystemProxies& proxies, const char* url) {
    ProxyAddress proxy;
    if (proxies.proxyFor(url, &proxy) != Parsed::Done || !proxy.url) return false;
    return !proxy.except || !isExcepted(proxy.except.get(), url);
}

OwnedProxies copySystemProxies() {
    try {
        return OwnedProxies(new SystemProxies(std::make_shared<Libproxy>()));
    } catch (const std::bad_alloc&) {
        _vn_setLastError(INSTALL_ERROR_INSUFFICIENTMEMORY);
        return nullptr;
    }
}

void SystemProxiesDeleter::operator()(SystemProxies* proxies) const { delete proxies; }

}  // namespace velnor::platform
