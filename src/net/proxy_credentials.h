// Name and password for the proxy that serves a URL.
#ifndef VELNOR_NET_PROXY_CREDENTIALS_H
#define VELNOR_NET_PROXY_CREDENTIALS_H

#include "platform/keychain.h"
#include "platform/system_proxies.h"

/// Looks up the account of the proxy that the system is configured with for the scheme of `url`, in
/// the user's keychain. True with `credentials` filled; false for a URL that is neither "http://"
/// nor "https://", without a configured proxy, and without an entry for its host, port and kind.
/// Whether the proxy is switched on does not count.
bool _vn_mac_get_keychain_proxy_credentials(const char* url,
                                            velnor::platform::Credentials* credentials);

namespace velnor {

/// The same with settings that were copied before.
bool findProxyCredentials(const platform::SystemProxies& proxies, const char* url,
                          platform::Credentials* credentials);

}  // namespace velnor

#endif
