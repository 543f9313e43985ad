// Options and outcomes that the subcommands share.
#include "vnctl/request.h"

#include <exception>
#include <iostream>
#include <limits>
#include <utility>

#include "velnor/capi.h"
#include "vnctl/exit_status.h"
#include "vnctl/failure.h"
#include "vnctl/json_object.h"

namespace vnctl {
namespace {

int sayFailure(const Request& request, uint32_t code, const char* message) {
    if (request.asJSON) {
        JSONObject().number("code", code).text("error", message).print();
    } else {
        std::cerr << "vnctl: " << message << std::endl;
    }
    return exitStatusOfCode(code);
}

int run(const Request& request, const std::function<int()>& work) try {
    const int status = work();
    program::finishOutput();
    return status;
} catch (const Failure& failure) {
    return sayFailure(request, failure.code(), failure.what());
} catch (const std::exception& failure) {
    return sayFailure(request, INSTALL_ERROR_INTERNAL, failure.what());
}

std::string checkUrl(const std::string& url) {
    for (const char c : url) {
        if (c <= ' ' && c >= 0) return "The URL holds a blank or a control character.";
    }
    return url.empty() ? "The URL is empty." : "";
}

}  // namespace

void addUrl(CLI::App& command, Request& request) {
    command.add_option("URL", request.url, "The download's URL")->required()->check(checkUrl);
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
    command.add_flag("--json", request->asJSON, "Answer in JSON, failures too");
    command.footer(exitStatusHelp());
    command.callback([request, &chosen, work = std::move(work)] {
        chosen = [request, work] { return run(*request, work); };
    });
}

int sayDone(const Request& request, const std::string& message) {
    if (request.asJSON) {
        JSONObject().text("result", "ok").print();
    } else {
        std::cout << message << std::endl;
    }
    return 0;
}

}  // namespace vnctl
