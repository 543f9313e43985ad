// What a subcommand throws when it cannot do what it was asked to.
#ifndef VELNOR_TOOLS_VNCTL_FAILURE_H
#define VELNOR_TOOLS_VNCTL_FAILURE_H

#include <cstdint>
#include <stdexcept>
#include <string>

namespace vnctl {

/// A message for the person at the terminal, and the InstallResult that scripts and the exit
/// status go by.
class Failure : public std::runtime_error {
  public:
    Failure(uint32_t code, const std::string& message) : std::runtime_error(message), code_(code) {}

    uint32_t code() const { return code_; }

  private:
    uint32_t code_;
};

/// The failure that `code` of the library stands for, with what to do next where that is known.
Failure failureOf(uint32_t code);

/// Throws failureOf the last error when a function of the library did not return 0.
void check(int32_t result);

}  // namespace vnctl

#endif
