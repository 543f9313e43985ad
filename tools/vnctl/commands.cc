#include "vnctl/commands.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <filesystem>
#include <iostream>
#include <limits>
#include <new>
#include <utility>

#include "api/request_path.h"
#include "support/encodings.h"
#include "support/owned.h"
#include "support/paths.h"
#include "support/product.h"
#include "velnor/capi.h"
#include "vnctl/client.h"
#include "vnctl/record.h"

namespace vnctl {
namespace {

// What a question about a download's state leaves to the URL. No download has a longer one, because
// it is asked with every order.
constexpr size_t kLongestUrl =
    kLongestPath - (sizeof velnor::kApiVersion - 1) -
    (sizeof "api?function=getFileAttributes&cid=2147483647&apiversion=&url=&complete" - 1);

// The client is told of an application by a request with its name as the user agent. What else is
// in the longest of these requests takes less than 200 characters.
constexpr size_t kLongestName = 800;
static_assert(kLongestName + 200 <= velnor::kLongestRequest);

int sayFailure(const Request& request, uint32_t code, const char* message, int status) {
    if (request.asJSON) {
        program::JSONObject().number("code", code).text("error", message).print();
    } else {
        std::cerr << "vnctl: " << message << std::endl;
    }
    return status;
}

std::string checkName(const std::string& name) {
    const bool plain =
        std::all_of(name.begin(), name.end(), [](char c) { return c >= ' ' && c <= '~'; });
    // The name is a line of the registry and a part of the user agent.
    return plain && !name.empty() && name.size() <= kLongestName
               ? ""
               : "The name must be 1 to " + std::to_string(kLongestName) +
                     " printable ASCII characters.";
}

CLI::Option* addCidOption(CLI::App& app, Request& request, const std::string& description) {
    return app.add_option("--cid", request.cid, description)
        ->type_name("N")
        ->capture_default_str()
        ->check(notNegative());
}

void addOutputOptions(CLI::App& app, Request& request) {
    app.add_flag("--json", request.asJSON,
                 "Answer in JSON, failures too, but for a wrong command line");
    app.add_flag("-q,--quiet", request.isQuiet, "No progress and no success in words");
}

// What stood before the subcommand counts as if it stood behind it.
void takeCommonOptions(const CLI::App& app, const CLI::App& command, Request& request) {
    request.asJSON = request.asJSON || app.count("--json") > 0;
    request.isQuiet = request.isQuiet || app.count("--quiet") > 0;
    if (app.count("--cid") == 0) return;
    const CLI::Option* own = command.get_option_no_throw("--cid");
    if (own == nullptr) {
        throw CLI::ValidationError("--cid", "'" + command.get_name() + "' takes no such number.");
    }
    if (own->count() == 0) request.cid = app.get_option("--cid")->as<int32_t>();
}

}  // namespace

void addCommonOptions(CLI::App& app, Request& request) {
    addOutputOptions(app, request);
    addCidOption(app, request, kAsker);
}

void addUrl(CLI::App& command, Request& request) {
    command.add_option("URL", request.url, "The download's URL")->required()->check(checkUrl);
}

void addCid(CLI::App& command, Request& request, const std::string& description) {
    addCidOption(command, request, description);
}

std::string checkUrl(const std::string& url) {
    for (const char c : url) {
        if (c <= ' ' && c >= 0) return "The URL holds a blank or a control character.";
    }
    if (url.empty()) return "The URL is empty.";
    return sizeInRequest(url) <= kLongestUrl
               ? ""
               : "The URL is longer than " + std::to_string(kLongestUrl) +
                     " characters, percent-encoded.";
}

void setWork(CLI::App& command, program::Body& chosen, const std::shared_ptr<Request>& request,
             std::initializer_list<ExitStatus> statuses, std::function<int()> work) {
    addOutputOptions(command, *request);
    command.footer(exitStatusHelp(statuses));
    command.callback([request, &chosen, &command, work = std::move(work)] {
        takeCommonOptions(*command.get_parent(), command, *request);
        chosen = [request, work] { return attempt(*request, work); };
    });
}

int attempt(const Request& request, const std::function<int()>& work) try {
    return work();
} catch (const Failure& failure) {
    return sayFailure(request, failure.code(), failure.what(), failure.status());
} catch (const std::bad_alloc&) {
    // Without memory for JSON either, this throws once more, and the whole program ends with it.
    return sayFailure(request, INSTALL_ERROR_INSUFFICIENTMEMORY, program::kOutOfMemory, kFailed);
} catch (const std::exception& failure) {
    return sayFailure(request, INSTALL_ERROR_INTERNAL, failure.what(), kFailed);
}

void addName(CLI::App& command, std::string& name, const std::string& description) {
    command.add_option("--name", name, description)
        ->type_name("NAME")
        ->capture_default_str()
        ->check(checkName);
}

CLI::Validator notNegative() {
    return CLI::Range(std::numeric_limits<int32_t>::max()).description("");
}

size_t sizeInRequest(const std::string& text) {
    const velnor::OwnedText encoded(_vn_urlEncode(text.c_str()));
    if (!encoded) throw std::bad_alloc();
    return std::strlen(encoded.get());
}

int sayDone(const Request& request, const std::string& message, const char* path) {
    if (request.asJSON) {
        program::JSONObject object;
        object.text("result", "ok");
        if (path != nullptr) object.text("path", path);
        object.print();
    } else if (!request.isQuiet) {
        std::cout << message << '\n';
    }
    return kDone;
}

std::string whereTheLogIs() {
    const velnor::OwnedText log(_vn_getInstallPathForFile(velnor::kLogFileName));
    std::error_code unknown;
    if (!log || !std::filesystem::exists(log.get(), unknown)) return "";
    return std::string(". The log is ") + log.get();
}

}  // namespace vnctl
