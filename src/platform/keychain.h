// Passwords that the user has stored with the system.
#ifndef VELNOR_PLATFORM_KEYCHAIN_H
#define VELNOR_PLATFORM_KEYCHAIN_H

#include <cstdint>

#include "platform/system_proxies.h"
#include "support/owned.h"

namespace velnor::platform {

/// Account of a server; both texts are UTF-8.
struct Credentials {
    OwnedText user;
    OwnedText password;
};

/// Looks up the internet password for the proxy at `server` and `port`. The system may ask the user
/// to unlock the store, and gives time for it: two minutes where it sets no limit of its own. True
/// with `credentials` filled when there is one.
bool findProxyPassword(const char* server, uint16_t port, ProxyProtocol protocol,
                       Credentials* credentials);

}  // namespace velnor::platform

#endif
