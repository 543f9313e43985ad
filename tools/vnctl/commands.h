// The subcommands of vnctl: a file for each.
#ifndef VELNOR_TOOLS_VNCTL_COMMANDS_H
#define VELNOR_TOOLS_VNCTL_COMMANDS_H

#include "program/command_line.h"

namespace vnctl {

// Each adds its subcommand to `app`. When the command line picks it, `chosen` becomes what to do.

void addInstall(CLI::App& app, program::Body& chosen);
void addUninstall(CLI::App& app, program::Body& chosen);
void addStatus(CLI::App& app, program::Body& chosen);
void addDownload(CLI::App& app, program::Body& chosen);
void addAttributes(CLI::App& app, program::Body& chosen);
void addPause(CLI::App& app, program::Body& chosen);
void addDelete(CLI::App& app, program::Body& chosen);
void addRunTasks(CLI::App& app, program::Body& chosen);

}  // namespace vnctl

#endif
