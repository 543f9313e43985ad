// The HTTP calls of CFNetwork that the Mac backend makes. Deprecated as on a Mac, so that code that
// calls an old one unawares is warned about here too.
#ifndef VELNOR_SDK_CFNETWORK_H
#define VELNOR_SDK_CFNETWORK_H
#include <CoreFoundation/CoreFoundation.h>
typedef struct __CFHTTPMessage* CFHTTPMessageRef;
typedef struct _CFHTTPAuthentication* CFHTTPAuthenticationRef;

#ifdef __APPLE__
#define VELNOR_OLD(version) \
    __attribute__((availability(macos, introduced = 10.1, deprecated = version)))
#else
#define VELNOR_OLD(version) __attribute__((deprecated))
#endif
#ifdef __cplusplus
extern "C" {
#endif
extern const CFStringRef kCFHTTPVersion1_1;
extern const CFStringRef kCFHTTPAuthenticationUsername;
extern const CFStringRef kCFHTTPAuthenticationPassword;
extern const CFStringRef kCFProxyTypeKey;
extern const CFStringRef kCFProxyTypeNone;
extern const CFStringRef kCFStreamPropertyHTTPResponseHeader VELNOR_OLD(10.11);
extern const CFStringRef kCFStreamPropertyHTTPFinalURL VELNOR_OLD(10.11);
extern const CFStringRef kCFStreamPropertyHTTPProxy VELNOR_OLD(10.11);
extern const CFStringRef kCFStreamPropertyHTTPShouldAutoredirect VELNOR_OLD(10.11);
CFReadStreamRef CFReadStreamCreateForHTTPRequest(CFAllocatorRef allocator, CFHTTPMessageRef request)
    VELNOR_OLD(10.11);
CFHTTPMessageRef CFHTTPMessageCreateRequest(CFAllocatorRef allocator, CFStringRef method,
                                            CFURLRef url, CFStringRef version);
CFHTTPMessageRef CFHTTPMessageCreateEmpty(CFAllocatorRef allocator, Boolean isRequest);
Boolean CFHTTPMessageAppendBytes(CFHTTPMessageRef message, const UInt8* bytes, CFIndex size);
void CFHTTPMessageSetHeaderFieldValue(CFHTTPMessageRef message, CFStringRef name,
                                      CFStringRef value);
void CFHTTPMessageSetBody(CFHTTPMessageRef message, CFDataRef body);
CFIndex CFHTTPMessageGetResponseStatusCode(CFHTTPMessageRef message);
CFStringRef CFHTTPMessageCopyHeaderFieldValue(CFHTTPMessageRef message, CFStringRef name);
CFDataRef CFHTTPMessageCopyBody(CFHTTPMessageRef message);
CFHTTPAuthenticationRef CFHTTPAuthenticationCreateFromResponse(CFAllocatorRef allocator,
                                                               CFHTTPMessageRef response);
Boolean CFHTTPAuthenticationRequiresUserNameAndPassword(CFHTTPAuthenticationRef demand);
Boolean CFHTTPMessageApplyCredentialDictionary(CFHTTPMessageRef request,
                                               CFHTTPAuthenticationRef demand,
                                               CFDictionaryRef credentials, CFStreamError* error);
CFArrayRef CFNetworkCopyProxiesForURL(CFURLRef url, CFDictionaryRef settings);
#ifdef __cplusplus
}
#endif
#endif
