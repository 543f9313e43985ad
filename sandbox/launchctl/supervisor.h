// The process behind a loaded agent: starts its program and keeps it alive.
#ifndef SANDBOX_LAUNCHCTL_SUPERVISOR_H
#define SANDBOX_LAUNCHCTL_SUPERVISOR_H

#include "agent.h"

namespace launchctl {

/// Starts a supervisor for the agent that outlives this process, and returns when it has the agent
/// in its charge (and its program started, when it runs at load). False when that did not succeed.
bool startSupervisor(const Agent& agent);

/// Ends the agent's supervisor and, through it, its program. Returns when both are gone; one that
/// does not listen is killed after a few seconds.
void stopSupervisor(const std::string& label);

}  // namespace launchctl

#endif
