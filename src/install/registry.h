// appregistry.dat: the names of the applications that use the client, one a line.
#ifndef VELNOR_INSTALL_REGISTRY_H
#define VELNOR_INSTALL_REGISTRY_H

#include "velnor/capi.h"

namespace velnor {

enum class Registration { Failed, AlreadyRegistered, Registered };

/// Adds `appName` to the registry in `installPath` unless a line equals it. A failure is logged and
/// leaves code 16 or 20 with the path as detail, or 7 without a buffer.
Registration registerApplication(const char* installPath, const char* appName,
                                 InstallContext* context);

/// Takes every line that equals `appName` out of the registry in `installPath`. Returns how many
/// lines are left, 0 also without a registry; -1 with code 7 when it could not be rewritten, and
/// then it is as it was.
int32_t unregisterApplication(const char* installPath, const char* appName);

}  // namespace velnor

#endif
