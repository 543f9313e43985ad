// Internet passwords in the user's keychain, as far as the Mac backend asks for them.
#ifndef VELNOR_SDK_SECURITY_H
#define VELNOR_SDK_SECURITY_H
#include <CoreFoundation/CoreFoundation.h>
typedef struct __SecKeychainItem* SecKeychainItemRef;
typedef UInt32 SecKeychainAttrType;
typedef struct {
    SecKeychainAttrType tag;
    UInt32 length;
    void* data;
} SecKeychainAttribute;
typedef struct {
    UInt32 count;
    SecKeychainAttribute* attr;
} SecKeychainAttributeList;
typedef FourCharCode SecItemClass;
typedef FourCharCode SecProtocolType;
typedef FourCharCode SecAuthenticationType;
enum { errSecSuccess = 0, kSecAccountItemAttr = 0x61636374 };  // 'acct'
enum { kSecProtocolTypeHTTPProxy = 0x68747078, kSecProtocolTypeHTTPSProxy = 0x68747378 };
enum { kSecAuthenticationTypeAny = 0 };

#ifdef __APPLE__
#define VELNOR_OLD_KEYCHAIN \
    __attribute__((availability(macos, introduced = 10.2, deprecated = 10.10)))
#else
#define VELNOR_OLD_KEYCHAIN __attribute__((deprecated))
#endif
#ifdef __cplusplus
extern "C" {
#endif
OSStatus SecKeychainFindInternetPassword(CFTypeRef keychainOrArray, UInt32 serverNameLength,
                                         const char* serverName, UInt32 securityDomainLength,
                                         const char* securityDomain, UInt32 accountNameLength,
                                         const char* accountName, UInt32 pathLength,
                                         const char* path, UInt16 port, SecProtocolType protocol,
                                         SecAuthenticationType authenticationType,
                                         UInt32* passwordLength, void** passwordData,
                                         SecKeychainItemRef* item) VELNOR_OLD_KEYCHAIN;
OSStatus SecKeychainItemCopyContent(SecKeychainItemRef item, SecItemClass* itemClass,
                                    SecKeychainAttributeList* attributes, UInt32* length,
                                    void** data) VELNOR_OLD_KEYCHAIN;
OSStatus SecKeychainItemFreeContent(SecKeychainAttributeList* attributes,
                                    void* data) VELNOR_OLD_KEYCHAIN;
#ifdef __cplusplus
}
#endif
#endif
