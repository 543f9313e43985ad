// --name: the application that a subcommand is about.
#ifndef VELNOR_TOOLS_VNCTL_NAME_OPTION_H
#define VELNOR_TOOLS_VNCTL_NAME_OPTION_H

#include <CLI/CLI.hpp>
#include <string>

namespace vnctl {

/// Adds --name to `command`. It fills `name`, which keeps its value when the option is not given
/// and must outlive the parsing.
void addNameOption(CLI::App& command, std::string& name, const std::string& description);

}  // namespace vnctl

#endif
