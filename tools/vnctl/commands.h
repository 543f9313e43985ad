// The subcommands of vnctl, and what they have in common: options, and how their outcome is told.
#ifndef VELNOR_TOOLS_VNCTL_COMMANDS_H
#define VELNOR_TOOLS_VNCTL_COMMANDS_H

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>

#include "program/command_line.h"
#include "vnctl/failure.h"

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

/// What subcommands that talk to the client are told on the command line.
struct Request {
    std::string url;  // empty for subcommands that are about no download
    int32_t cid = 0;
    bool asJSON = false;
};

/// Adds the URL to `command`. `request` must outlive the parsing.
void addUrl(CLI::App& command, Request& request);

/// Adds --cid and --json, and to the help the exit statuses: those of all requests and `statuses`.
/// When the command line picks `command`, `work` is what to do, on `request`, of which it returns
/// the exit status: failures that it throws are told on standard error, or as JSON on standard
/// output.
void setWork(CLI::App& command, program::Body& chosen, const std::shared_ptr<Request>& request,
             std::initializer_list<ExitStatus> statuses, std::function<int()> work);

/// Adds --name, the application that `command` is about. It fills `name`, which keeps its value
/// when the option is not given and must outlive the parsing.
void addName(CLI::App& command, std::string& name, const std::string& description);

/// A range of numbers from 0 up, for an option's check, without words of its own in the help.
CLI::Validator notNegative();

/// How many characters of a request `text` takes, which goes there percent-encoded.
size_t sizeInRequest(const std::string& text);

/// Says that all went well: `message`, or {"result":"ok"}, with "path" unless that is null. Returns
/// the exit status 0.
int sayDone(const Request& request, const std::string& message, const char* path = nullptr);

}  // namespace vnctl

#endif
