// Failures of vnctl: what a subcommand throws when it cannot do what it was asked to, and the exit
// statuses, one for each kind of failure that a script may want to tell apart.
#ifndef VELNOR_TOOLS_VNCTL_FAILURE_H
#define VELNOR_TOOLS_VNCTL_FAILURE_H

#include <cstdint>
#include <initializer_list>
#include <stdexcept>
#include <string>

namespace vnctl {

enum ExitStatus : int {
    kDone = 0,
    kFailed = 1,      // for a reason that has no status of its own
    kWrongUsage = 2,  // what the caller has to mend, on the command line or in a file that it names
    kNotRunning = 3,
    kNetwork = 4,
    kNotFound = 5,
    kForbidden = 6,
    kDisk = 7,
    kAlreadyDownloaded = 8,
    kTooSoon = 9,
    kInUse = 10,
    kPaused = 12,
    kInterrupted = 130,  // after SIGINT, as shells count it
};

/// The exit status of an InstallResult.
ExitStatus exitStatusOfCode(uint32_t code);

/// The exit status of a download that has ended in this FileStatus.
ExitStatus exitStatusOfState(int32_t state);

/// The statuses that every request can end with, and `statuses`, a line each, for --help.
std::string exitStatusHelp(std::initializer_list<ExitStatus> statuses);

/// The text of `code` with `detail` in the place that it leaves for one. Characters of the detail
/// that a terminal would obey or could not show appear as "\x1b": it may come from a server.
std::string resultText(uint32_t code, const char* detail);

/// A message for the person at the terminal, and for scripts an InstallResult and the exit status,
/// which follows from it unless it is given.
class Failure : public std::runtime_error {
  public:
    Failure(uint32_t code, const std::string& message)
        : Failure(code, message, exitStatusOfCode(code)) {}
    Failure(uint32_t code, const std::string& message, ExitStatus status)
        : std::runtime_error(message), code_(code), status_(status) {}

    uint32_t code() const { return code_; }
    ExitStatus status() const { return status_; }

  private:
    uint32_t code_;
    ExitStatus status_;
};

/// The failure that `code` of the library stands for, with what to do next where that is known.
Failure failureOf(uint32_t code);

/// Throws failureOf the last error when a function of the library did not return 0.
void check(int32_t result);

}  // namespace vnctl

#endif
