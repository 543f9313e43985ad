// Commands and waits that tests of several rooms need.
#ifndef TESTS_HARNESS_SHELL_H
#define TESTS_HARNESS_SHELL_H

#include <functional>
#include <string>

namespace harness {

struct CommandResult {
    int status;  // as the shell's $?
    std::string output;
};

/// Runs `command` in the shell and collects its standard output.
CommandResult run(const std::string& command);

/// Asks every 10 ms whether `holds`, for at least a minute.
bool eventually(const std::function<bool()>& holds);

}  // namespace harness

#endif
