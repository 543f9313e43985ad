// vnctl run-tasks: lets the client do its periodic tasks now.
#include <memory>

#include "vnctl/client.h"
#include "vnctl/commands.h"
#include "vnctl/failure.h"
#include "vnctl/request.h"

namespace vnctl {
namespace {

int runTasks(const Request& request) {
    const Client client(request.cid);
    check(vn_runPeriodicTasks(client.handle(), client.cid(), 0));
    return sayDone(request, "The client does its periodic tasks.");
}

}  // namespace

void addRunTasks(CLI::App& app, program::Body& chosen) {
    const auto request = std::make_shared<Request>();
    CLI::App* command = app.add_subcommand("run-tasks", "Let the client do its periodic tasks now");
    setWork(*command, chosen, request, [request] { return runTasks(*request); });
}

}  // namespace vnctl
