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
void addDiagnose(CLI::App& app, program::Body& chosen);

/// What subcommands are told on the command line.
struct Request {
    std::string url;  // empty for subcommands that are not about one download
    int32_t cid = 0;
    bool asJSON = false;
    bool isQuiet = false;
};

/// What --cid is for most subcommands.
inline constexpr char kAsker[] = "The number of the application that asks";

/// Adds to `app` the options of Request that may stand before the subcommand too. `request` must
/// outlive the parsing.
void addCommonOptions(CLI::App& app, Request& request);

/// Adds the URL, or the number of the application, to `command`. `request` must outlive the
/// parsing.
void addUrl(CLI::App& command, Request& request);
void addCid(CLI::App& command, Request& request, const std::string& description = kAsker);

/// What is wrong with a URL on the command line; empty when nothing is.
std::string checkUrl(const std::string& url);

/// Adds --json and --quiet, and to the help the exit statuses: those of all requests and
/// `statuses`. When the command line picks `command`, `work` is what to do, on `request`, and is
/// told as attempt() does.
void setWork(CLI::App& command, program::Body& chosen, const std::shared_ptr<Request>& request,
             std::initializer_list<ExitStatus> statuses, std::function<int()> work);

/// The exit status that `work` returns. Failures that it throws are told on standard error, or as
/// JSON on standard output.
int attempt(const Request& request, const std::function<int()>& work);

/// Adds --name, the application that `command` is about. It fills `name`, which keeps its value
/// when the option is not given and must outlive the parsing.
void addName(CLI::App& command, std::string& name, const std::string& description);

/// A range of numbers from 0 up, for an option's check, without words of its own in the help.
CLI::Validator notNegative();

/// How many characters of a request `text` takes, which goes there percent-encoded.
size_t sizeInRequest(const std::string& text);

/// Says that all went well: `message`, unless it is to be quiet, or {"result":"ok"}, with "path"
/// unless that is null. Returns the exit status 0.
int sayDone(const Request& request, const std::string& message, const char* path = nullptr);

/// Where to read more about a failed installation, as the end of its message; empty when there is
/// no log.
std::string whereTheLogIs();

}  // namespace vnctl

#endif
