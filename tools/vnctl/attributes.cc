// vnctl attributes: everything that the client tells about one download.
#include <memory>

#include "vnctl/client.h"
#include "vnctl/commands.h"
#include "vnctl/record.h"
#include "vnctl/request.h"

namespace vnctl {
namespace {

int attributes(const Request& request) {
    const Client client(request.cid);
    Download download(client, request.url);
    download.askOrThrow();
    printRecord(download.record(), request.asJSON);
    return 0;
}

}  // namespace

void addAttributes(CLI::App& app, program::Body& chosen) {
    const auto request = std::make_shared<Request>();
    CLI::App* command = app.add_subcommand("attributes", "Show the state of a download");
    addUrl(*command, *request);
    setWork(*command, chosen, request, [request] { return attributes(*request); });
}

}  // namespace vnctl
