// The system's proxy settings.
#ifndef VELNOR_SDK_SYSTEMCONFIGURATION_H
#define VELNOR_SDK_SYSTEMCONFIGURATION_H
#include <CoreFoundation/CoreFoundation.h>
typedef const struct __SCDynamicStore* SCDynamicStoreRef;

// Outside extern "C", as the system has them; names of variables are the same either way.
extern const CFStringRef kSCPropNetProxiesHTTPProxy;
extern const CFStringRef kSCPropNetProxiesHTTPPort;
extern const CFStringRef kSCPropNetProxiesHTTPSProxy;
extern const CFStringRef kSCPropNetProxiesHTTPSPort;
#ifdef __cplusplus
extern "C" {
#endif
CFDictionaryRef SCDynamicStoreCopyProxies(SCDynamicStoreRef store);
#ifdef __cplusplus
}
#endif
#endif
