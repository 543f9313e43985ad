// vnctl pause: stops a download until it is asked for again.
#include <memory>

#include "vnctl/client.h"
#include "vnctl/commands.h"
#include "vnctl/failure.h"
#include "vnctl/request.h"
#include "vnctl/result_text.h"

namespace vnctl {
namespace {

int pause(const Request& request) {
    const Client client(request.cid);
    if (vn_pauseFile(client.handle(), client.cid(), request.url.c_str(), 0) != 0) {
        const uint32_t code = vn_getLastError();
        // The client's words for a download that it does not know are not always understood here,
        // but those for its state are.
        if (code == INSTALL_ERROR_INTERNAL) Download(client, request.url).askOrThrow();
        if (code == INSTALL_ERROR_ALREADY_DOWNLOADED) {
            throw Failure(code, resultText(code, "") + ". There is nothing to pause.");
        }
        throw failureOf(code);
    }
    return sayDone(request, "The download is paused. 'vnctl download' takes it up again.");
}

}  // namespace

void addPause(CLI::App& app, program::Body& chosen) {
    const auto request = std::make_shared<Request>();
    CLI::App* command =
        app.add_subcommand("pause", "Pause a download; 'vnctl download' takes it up again");
    addUrl(*command, *request);
    setWork(*command, chosen, request, [request] { return pause(*request); });
}

}  // namespace vnctl
