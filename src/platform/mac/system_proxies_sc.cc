#include "platform/mac/system_proxies_sc.h"

#include <SystemConfiguration/SystemConfiguration.h>

#include <new>
#include <utility>

#include "api/result/last_error.h"
#include "support/text.h"
#include "velnor/capi.h"

namespace velnor::platform {
namespace {

// Room for a host name with its terminator, in bytes.
constexpr CFIndex kMaxHostSize = 1024;

// The value of a key if it is of that type; null otherwise. It belongs to the settings.
CFTypeRef valueOf(CFDictionaryRef settings, CFStringRef key, CFTypeID type) {
    CFTypeRef value = CFDictionaryGetValue(settings, key);
    return value != nullptr && CFGetTypeID(value) == type ? value : nullptr;
}

}  // namespace

OwnedProxies copySystemProxies() {
    CfRef<CFDictionaryRef> settings(SCDynamicStoreCopyProxies(nullptr));
    if (!settings) return nullptr;
    OwnedProxies proxies(new (std::nothrow) SystemProxies(std::move(settings)));
    if (!proxies) _vn_setLastError(INSTALL_ERROR_INSUFFICIENTMEMORY);
    return proxies;
}

// Nothing here asks whether the proxy is switched on, which other keys say.
OwnedText configuredProxyHost(const SystemProxies& proxies, ProxyProtocol protocol,
                              const char* /*url*/, int32_t* port) {
    const bool https = protocol == ProxyProtocol::Https;
    CFTypeRef host = valueOf(proxies.settings(),
                             https ? kSCPropNetProxiesHTTPSProxy : kSCPropNetProxiesHTTPProxy,
                             CFStringGetTypeID());
    CFTypeRef number =
        valueOf(proxies.settings(), https ? kSCPropNetProxiesHTTPSPort : kSCPropNetProxiesHTTPPort,
                CFNumberGetTypeID());
    char text[kMaxHostSize];
    if (host == nullptr || CFStringGetCString(static_cast<CFStringRef>(host), text, sizeof text,
                                              kCFStringEncodingUTF8) == 0) {
        return {};
    }
    SInt32 value = 0;
    // A number that is no 32-bit integer is none.
    if (number != nullptr &&
        CFNumberGetValue(static_cast<CFNumberRef>(number), kCFNumberSInt32Type, &value) != 0) {
        *port = value;
    }
    return copyText(text);
}

void SystemProxiesDeleter::operator()(SystemProxies* proxies) const { delete proxies; }

}  // namespace velnor::platform
