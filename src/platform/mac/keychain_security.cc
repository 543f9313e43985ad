// Passwords on a Mac: the internet passwords of the user's keychains.
#include "platform/keychain.h"
#include "platform/mac/old_calls.h"
#include "support/text.h"

namespace velnor::platform {
namespace {

OwnedText copyBytes(const void* bytes, UInt32 size) {
    return copyText({static_cast<const char*>(bytes), size});
}

}  // namespace

bool findProxyPassword(const char* server, uint16_t port, ProxyProtocol protocol,
                       Credentials* credentials) {
    const SecProtocolType type =
        protocol == ProxyProtocol::Https ? kSecProtocolTypeHTTPSProxy : kSecProtocolTypeHTTPProxy;
    const CfRef<SecKeychainItemRef> item = old::findInternetPassword(server, port, type);
    if (!item) return false;
    SecKeychainAttribute account{kSecAccountItemAttr, 0, nullptr};
    SecKeychainAttributeList attributes{1, &account};
    UInt32 size = 0;
    void* password = nullptr;
    if (!old::copyContent(item.get(), &attributes, &size, &password)) return false;
    credentials->user = copyBytes(account.data, account.length);
    credentials->password = copyBytes(password, size);
    old::freeContent(&attributes, password);
    return credentials->user && credentials->password;
}

}  // namespace velnor::platform
