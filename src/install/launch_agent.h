// The client's launch agent: its files, and starting and stopping it through launchctl.
#ifndef VELNOR_INSTALL_LAUNCH_AGENT_H
#define VELNOR_INSTALL_LAUNCH_AGENT_H

#include <cstdint>

#include "velnor/capi.h"

// All of these find the agent's property list under the user's home: HOME, or the passwd entry when
// it is unset or no absolute path. A home whose paths do not fit kPathSize makes them fail before
// anything is written or run.

namespace velnor {

/// Writes loader.pl to `installPath` and the property list to the user's Library/LaunchAgents,
/// which is created when missing. Returns 0; 8 when either file cannot be created; 4 without
/// memory. An incomplete file is logged and no failure. Leaves codes of its helpers only.
InstallResult addStartupItem(const char* installPath);

/// Loads (unloads) the agent: launchd starts (stops) the client. Returns 0 whatever launchctl says;
/// 9 (10) without a home; 4 when the command could not be run.
InstallResult loadAgent();
InstallResult unloadAgent();

}  // namespace velnor

// The same for callers that need no reason: true or 1 for success, else false or 0.
inline bool _vn_mac_addStartupItem(const char* installPath) {
    return velnor::addStartupItem(installPath) == INSTALL_ERROR_OK;
}
inline int32_t _vn_start() { return velnor::loadAgent() == INSTALL_ERROR_OK ? 1 : 0; }
inline int32_t _vn_stop() { return velnor::unloadAgent() == INSTALL_ERROR_OK ? 1 : 0; }

/// Removes the property list. Returns the shell's status, -1 when no command could be run.
int32_t _vn_mac_removeStartupItem();

#endif
