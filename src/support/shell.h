// Commands for the system's shell, and waiting for what they began.
#ifndef VELNOR_SUPPORT_SHELL_H
#define VELNOR_SUPPORT_SHELL_H

#include <cstdint>

namespace velnor {

/// What runShell returns for a command that was not run at all.
inline constexpr int kNotRun = -1;

/// `text` as one word of a shell command: as it is when the shell would leave every character
/// alone, else in single quotes. Owned by the caller; null with code 4 when there is no memory.
char* shellWord(const char* text);

/// Formats a command and runs it through system(3). Words that are no constants go through
/// shellWord first. Returns the shell's wait status; 0 when the command ran and its status is lost,
/// because the application ignores SIGCHLD; kNotRun when there was no memory, or no process, to run
/// it.
int runShell(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace velnor

/// Waits `seconds` seconds. Returns 0 after a full wait and -1 when a signal ended it early. Sets
/// no code.
int32_t _vn_sleep(uint32_t seconds);

#endif
