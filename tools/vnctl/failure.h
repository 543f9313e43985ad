// What a subcommand throws when it cannot do what it was asked to.
#ifndef VELNOR_TOOLS_VNCTL_FAILURE_H
#define VELNOR_TOOLS_VNCTL_FAILURE_H

#include <cstdint>
#include <stdexcept>
#include <string>

#include "vnctl/exit_status.h"

namespace vnctl {

/// A message for the person at the terminal, and for scripts an InstallResult and the exit status,
/// which follows from it unless it is given.
class Failure : public std::runtime_error {
  public:
    Failure(uint32_t code, const std::string& message)
        : Failure(code, message, exitStatusOfCode(code)) {}
    Failure(uint32_t code, const std::string& message, int status)
        : std::runtime_error(message), code_(code), status_(status) {}

    uint32_t code() const { return code_; }
    int status() const { return status_; }

  private:
    uint32_t code_;
    int status_;
};

/// The failure that `code` of the library stands for, with what to do next where that is known.
Failure failureOf(uint32_t code);

/// Throws failureOf the last error when a function of the library did not return 0.
void check(int32_t result);

}  // namespace vnctl

#endif
