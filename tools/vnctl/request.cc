// Options and outcomes that the subcommands share.
#include "vnctl/request.h"

#include <cstring>
#include <exception>
#include <iostream>
#include <limits>
#include <utility>

#include "support/encodings.h"
#include "support/owned.h"
#include "velnor/capi.h"
#include "vnctl/exit_status.h"
#include "vnctl/failure.h"
#include "vnctl/json_object.h"

namespace vnctl {
namespace {

int sayFailure(const Request& request, uint32_t code, const char* message, int status) {
    if (request.asJSON) {
        JSONObject().number("code", code).text("error", message).print();
    } else {
        std::cerr << "vnctl: " << message << std::endl;
    }
    return status;
}

int run(const Request& request, const std::function<int()>& work) try {
    const int status = work();
    program::finishOutput();
    return status;
} catch (const Failure& failure) {
    return sayFailure(request, failure.code(), failure.what(), failure.status());
} catch (const std::exception& failure) {
    return sayFailure(request, INSTALL_ERROR_INTERNAL, failure.what(),
                      exitStatusOfCode(INSTALL_ERROR_INTERNAL));
}

// Of the 1023 characters of a request, what the shortest question about a download's state leaves
// to the URL. No download has a longer one, because it is asked with every order.
constexpr size_t kLongestUrl = 960;

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

}  // namespace

void addUrl(CLI::App& command, Request& request) {
    command.add_option("URL", request.url, "The download's URL")->required()->check(checkUrl);
}

size_t sizeInRequest(const std::string& text) {
    const velnor::OwnedText encoded(_vn_urlEncode(text.c_str()));
    return encoded ? std::strlen(encoded.get()) : 0;
}

CLI::Validator notNegative() {
    return CLI::Range(std::numeric_limits<int32_t>::max()).description("");
}

void setWork(CLI::App& command, program::Body& chosen, const std::shared_ptr<Request>& request,
             std::function<int()> work) {
    command.add_option("--cid", request->cid, "The number of the application that asks")
        ->type_name("N")
        ->capture_default_str()
        ->check(notNegative());
    command.add_flag("--json", request->asJSON,
                     "Answer in JSON, failures too, but for a wrong command line");
    command.footer(exitStatusHelp(command.get_name()));
    command.callback([request, &chosen, work = std::move(work)] {
        chosen = [request, work] { return run(*request, work); };
    });
}

int sayDone(const Request& request, const std::string& message, const char* path) {
    if (request.asJSON) {
        JSONObject object;
        object.text("result", "ok");
        if (path != nullptr) object.text("path", path);
        object.print();
    } else {
        std::cout << message << std::endl;
    }
    return 0;
}

}  // namespace vnctl
