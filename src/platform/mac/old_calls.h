// The calls of this backend that Apple has marked as old, and nobody else's: whoever includes this
// may not see that a call is old, so it is the one place where the compiler does not say it.
#ifndef VELNOR_PLATFORM_MAC_OLD_CALLS_H
#define VELNOR_PLATFORM_MAC_OLD_CALLS_H

#ifdef __OBJC__
#import <AppKit/AppKit.h>
#endif
#include <CFNetwork/CFNetwork.h>
#include <Security/Security.h>
#include <dlfcn.h>

#include <cstring>

#include "platform/mac/cf_ref.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace velnor::platform::old {

inline CfRef<CFReadStreamRef> makeStream(CFHTTPMessageRef request) {
    return CfRef<CFReadStreamRef>(CFReadStreamCreateForHTTPRequest(nullptr, request));
}

inline bool setProxies(CFReadStreamRef stream, CFDictionaryRef proxies) {
    return CFReadStreamSetProperty(stream, kCFStreamPropertyHTTPProxy, proxies) != 0;
}

inline bool followRedirects(CFReadStreamRef stream) {
    return CFReadStreamSetProperty(stream, kCFStreamPropertyHTTPShouldAutoredirect,
                                   kCFBooleanTrue) != 0;
}

/// Head of the final response; null while there is none.
inline CfRef<CFHTTPMessageRef> copyResponse(CFReadStreamRef stream) {
    CFTypeRef response = CFReadStreamCopyProperty(stream, kCFStreamPropertyHTTPResponseHeader);
    return CfRef<CFHTTPMessageRef>(static_cast<CFHTTPMessageRef>(const_cast<void*>(response)));
}

/// Scheme of the URL that redirects have led to; null when the system does not say. Both names are
/// looked up when the program runs: linked, they would keep it from starting on a system that has
/// dropped them.
inline CfRef<CFStringRef> copyFinalScheme(CFReadStreamRef stream) {
    using CopyScheme = CFStringRef(CFURLRef);
    const auto* name =
        static_cast<CFStringRef*>(dlsym(RTLD_DEFAULT, "kCFStreamPropertyHTTPFinalURL"));
    auto* copyScheme = reinterpret_cast<CopyScheme*>(dlsym(RTLD_DEFAULT, "CFURLCopyScheme"));
    if (name == nullptr || copyScheme == nullptr) return nullptr;
    const CfRef<CFURLRef> url(static_cast<CFURLRef>(CFReadStreamCopyProperty(stream, *name)));
    return CfRef<CFStringRef>(url ? copyScheme(url.get()) : nullptr);
}

/// The item for a server in the user's keychains, of any account, path and kind of authentication;
/// null when there is none.
inline CfRef<SecKeychainItemRef> findInternetPassword(const char* server, UInt16 port,
                                                      SecProtocolType protocol) {
    SecKeychainItemRef item = nullptr;
    const OSStatus found = SecKeychainFindInternetPassword(
        nullptr, static_cast<UInt32>(std::strlen(server)), server, 0, nullptr, 0, nullptr, 0,
        nullptr, port, protocol, kSecAuthenticationTypeAny, nullptr, nullptr, &item);
    return CfRef<SecKeychainItemRef>(found == errSecSuccess ? item : nullptr);
}

/// The parts of an item that `attributes` name, and its secret, until freeContent.
inline bool copyContent(SecKeychainItemRef item, SecKeychainAttributeList* attributes,
                        UInt32* length, void** data) {
    return SecKeychainItemCopyContent(item, nullptr, attributes, length, data) == errSecSuccess;
}

inline void freeContent(SecKeychainAttributeList* attributes, void* data) {
    SecKeychainItemFreeContent(attributes, data);
}

#ifdef __OBJC__
inline void runAlertPanel(NSString* title, NSString* message, NSString* button) {
    // The message is an argument, because the panel takes a format.
    NSRunAlertPanel(title, @"%@", button, nil, nil, message);
}
#endif

}  // namespace velnor::platform::old

#pragma GCC diagnostic pop

#endif
