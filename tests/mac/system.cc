// The system's proxy settings and the user's keychain, which are libproxy's and libsecret's.
#include <cstdlib>
#include <cstring>

#include "mac/objects.h"

namespace platform = velnor::platform;
using platform::ProxyProtocol;

struct __SecKeychainItem : mac::Object {
    platform::Credentials account;
};

namespace {

void* lendBytes(const char* text, UInt32* size) {
    *size = static_cast<UInt32>(std::strlen(text));
    // Not ended by a NUL byte, as whoever takes them for a text is to learn.
    void* bytes = std::memset(std::malloc(*size + 1U), '?', *size + 1U);
    return std::memcpy(bytes, text, *size);
}

void addProxy(__CFDictionary* settings, ProxyProtocol kind, const char* anyUrl, CFStringRef hostKey,
              CFStringRef portKey) {
    SInt32 port = 0;
    const velnor::OwnedText name =
        platform::configuredProxyHost(*settings->proxies, kind, anyUrl, &port);
    if (!name) return;
    const CFTypeRef values[] = {mac::make<__CFString>(name.get()), mac::make<__CFNumber>(port)};
    settings->add(hostKey, values[0]);
    settings->add(portKey, values[1]);
    for (CFTypeRef value : values) CFRelease(value);
}

}  // namespace

const CFStringRef kSCPropNetProxiesHTTPProxy = mac::make<__CFString>("HTTPProxy");
const CFStringRef kSCPropNetProxiesHTTPPort = mac::make<__CFString>("HTTPPort");
const CFStringRef kSCPropNetProxiesHTTPSProxy = mac::make<__CFString>("HTTPSProxy");
const CFStringRef kSCPropNetProxiesHTTPSPort = mac::make<__CFString>("HTTPSPort");

extern "C" {

CFDictionaryRef SCDynamicStoreCopyProxies(SCDynamicStoreRef) {
    auto* settings = mac::make<__CFDictionary>();
    settings->proxies = platform::copySystemProxies();
    addProxy(settings, ProxyProtocol::Http, "http://host.invalid/", kSCPropNetProxiesHTTPProxy,
             kSCPropNetProxiesHTTPPort);
    addProxy(settings, ProxyProtocol::Https, "https://host.invalid/", kSCPropNetProxiesHTTPSProxy,
             kSCPropNetProxiesHTTPSPort);
    return settings;
}

OSStatus SecKeychainFindInternetPassword(CFTypeRef, UInt32 size, const char* server, UInt32,
                                         const char*, UInt32, const char*, UInt32, const char*,
                                         UInt16 port, SecProtocolType protocol,
                                         SecAuthenticationType, UInt32*, void**,
                                         SecKeychainItemRef* item) {
    const std::string host(server, size);
    const bool isHttp = protocol == kSecProtocolTypeHTTPProxy;
    platform::Credentials account;
    if ((!isHttp && protocol != kSecProtocolTypeHTTPSProxy) ||
        !platform::findProxyPassword(
            host.c_str(), port, isHttp ? ProxyProtocol::Http : ProxyProtocol::Https, &account)) {
        return -25300;  // as the system says that there is none
    }
    *item = mac::make<__SecKeychainItem>();
    (*item)->account = std::move(account);
    return errSecSuccess;
}

OSStatus SecKeychainItemCopyContent(SecKeychainItemRef item, SecItemClass*,
                                    SecKeychainAttributeList* attributes, UInt32* length,
                                    void** data) {
    SecKeychainAttribute& account = attributes->attr[0];
    if (attributes->count != 1 || account.tag != kSecAccountItemAttr) {
        mac::complain("an attribute that is not known here");
    }
    account.data = lendBytes(item->account.user.get(), &account.length);
    *data = lendBytes(item->account.password.get(), length);
    return errSecSuccess;
}

OSStatus SecKeychainItemFreeContent(SecKeychainAttributeList* attributes, void* data) {
    for (void* bytes : {attributes->attr[0].data, data}) std::free(bytes);
    return errSecSuccess;
}

}  // extern "C"
