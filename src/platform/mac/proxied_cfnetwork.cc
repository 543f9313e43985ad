// Whether a URL's host is on the list of exceptions, which CFNetwork alone reads as it does itself.
#include <CFNetwork/CFNetwork.h>

#include "platform/mac/system_proxies_sc.h"

namespace velnor::platform {

bool isProxied(const SystemProxies& proxies, const char* url) {
    const CfRef<CFStringRef> text = makeString(url);
    const CfRef<CFURLRef> parsed(text ? CFURLCreateWithString(nullptr, text.get(), nullptr)
                                      : nullptr);
    if (!parsed) return false;
    const CfRef<CFArrayRef> ways(CFNetworkCopyProxiesForURL(parsed.get(), proxies.settings()));
    if (!ways || CFArrayGetCount(ways.get()) == 0) return false;
    // The first is the one that is tried first. A script that is still to be asked is a proxy here.
    const auto* way = static_cast<CFDictionaryRef>(CFArrayGetValueAtIndex(ways.get(), 0));
    const auto* kind = static_cast<CFStringRef>(CFDictionaryGetValue(way, kCFProxyTypeKey));
    return kind != nullptr && CFStringCompare(kind, kCFProxyTypeNone, 0) != kCFCompareEqualTo;
}

}  // namespace velnor::platform
