// The two kinds of web proxy that a system is configured with.
#ifndef VELNOR_PLATFORM_PROXY_PROTOCOL_H
#define VELNOR_PLATFORM_PROXY_PROTOCOL_H

namespace velnor::platform {

/// Named after the URLs that the proxy serves.
enum class ProxyProtocol { Http, Https };

}  // namespace velnor::platform

#endif
