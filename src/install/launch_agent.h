// The client's launch agent: its files, and starting and stopping it through launchctl.
#ifndef VELNOR_INSTALL_LAUNCH_AGENT_H
#define VELNOR_INSTALL_LAUNCH_AGENT_H

#include <cstdint>

// All of these find the agent's property list under the user's home: HOME, or the passwd entry when
// it is unset or empty. A home whose paths do not fit kPathSize makes them fail before anything is
// written or run.

/// Writes loader.pl to `installPath` and the property list to the user's Library/LaunchAgents,
/// which is created when missing. False when either file cannot be created; an incomplete one is
/// logged and no failure. Leaves codes of its helpers only.
bool _vn_mac_addStartupItem(const char* installPath);

/// Loads (unloads) the agent: launchd starts (stops) the client. Returns 1 whatever launchctl says;
/// 0 when the command could not be formed.
int32_t _vn_start();
int32_t _vn_stop();

/// Removes the property list. Returns the shell's status, -1 when no command could be run.
int32_t _vn_mac_removeStartupItem();

#endif
