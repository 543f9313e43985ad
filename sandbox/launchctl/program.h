// The program of an agent as a process.
#ifndef SANDBOX_LAUNCHCTL_PROGRAM_H
#define SANDBOX_LAUNCHCTL_PROGRAM_H

#include <sys/types.h>

#include "agent.h"

namespace launchctl {

/// Makes this process one that programs may be started from: their environment, their log in place
/// of the standard output, all signals as the system's defaults have them.
void prepareForPrograms(const Agent& agent);

/// Starts the agent's program in a session of its own, with no signal blocked. -1 when there can be
/// no further process.
pid_t startProgram(const Agent& agent);

/// Signals a program and what it started.
void signalProgram(pid_t program, int signal);

}  // namespace launchctl

#endif
