// What the subcommands that talk to the client have in common: options, and how their outcome is
// told.
#ifndef VELNOR_TOOLS_VNCTL_REQUEST_H
#define VELNOR_TOOLS_VNCTL_REQUEST_H

#include <CLI/CLI.hpp>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "program/command_line.h"

namespace vnctl {

struct Request {
    std::string url;  // empty for subcommands that are about no download
    int32_t cid = 0;
    bool asJSON = false;
};

/// Adds the URL to `command`. `request` must outlive the parsing.
void addUrl(CLI::App& command, Request& request);

/// Adds --cid and --json and the exit statuses. When the command line picks `command`, `work` is
/// what to do, on `request`, of which it returns the exit status: failures that it throws are told
/// on standard error, or as JSON on standard output.
void setWork(CLI::App& command, program::Body& chosen, const std::shared_ptr<Request>& request,
             std::function<int()> work);

/// How many characters of a request `text` takes, which goes there percent-encoded.
size_t sizeInRequest(const std::string& text);

/// Says that all went well: `message`, or {"result":"ok"}, with "path" unless that is null. Returns
/// the exit status 0.
int sayDone(const Request& request, const std::string& message, const char* path = nullptr);

/// A range of numbers from 0 up, for an option's check, without words of its own in the help.
CLI::Validator notNegative();

}  // namespace vnctl

#endif
