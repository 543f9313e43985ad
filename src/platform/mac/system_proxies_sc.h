// Proxy settings on a Mac: the dictionary in which the system keeps them, as its HTTP stack takes
// it.
#ifndef VELNOR_PLATFORM_MAC_SYSTEM_PROXIES_SC_H
#define VELNOR_PLATFORM_MAC_SYSTEM_PROXIES_SC_H

#include <utility>

#include "platform/mac/cf_ref.h"
#include "platform/system_proxies.h"

namespace velnor::platform {

class SystemProxies {
  public:
    explicit SystemProxies(CfRef<CFDictionaryRef> settings) : settings_(std::move(settings)) {}

    CFDictionaryRef settings() const { return settings_.get(); }

  private:
    CfRef<CFDictionaryRef> settings_;
};

}  // namespace velnor::platform

#endif
