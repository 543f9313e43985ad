// Exit statuses: one number for each kind of failure that a script may want to tell apart.
#ifndef VELNOR_TOOLS_VNCTL_EXIT_STATUS_H
#define VELNOR_TOOLS_VNCTL_EXIT_STATUS_H

#include <cstdint>
#include <string>

namespace vnctl {

/// For what the caller has to mend, on the command line or in a file that it names.
inline constexpr int kWrongUsage = 2;

/// After SIGINT, as shells count it.
inline constexpr int kInterrupted = 130;

/// The exit status of an InstallResult.
int exitStatusOfCode(uint32_t code);

/// The exit status of a download that has come to rest in this FileStatus.
int exitStatusOfState(int32_t state);

/// Those that the subcommand can end with, a line each, for --help.
std::string exitStatusHelp(const std::string& subcommand);

}  // namespace vnctl

#endif
