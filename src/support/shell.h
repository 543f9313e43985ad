// Commands for the system's shell.
#ifndef VELNOR_SUPPORT_SHELL_H
#define VELNOR_SUPPORT_SHELL_H

namespace velnor {

/// `text` as one word of a shell command: as it is when the shell would leave every character
/// alone, else in single quotes. Owned by the caller; null with code 4 when there is no memory.
char* shellWord(const char* text);

/// Formats a command and runs it through system(3). Words that are no constants go through
/// shellWord first. Returns the shell's wait status; -1 when the command could not be formed or
/// run.
int runShell(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace velnor

#endif
