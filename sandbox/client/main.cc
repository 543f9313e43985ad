// The client that rehearsed installations download, verify and start. It stays in the foreground,
// as an agent's program must, until it is told to stop.
#include <curl/curl.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <stdexcept>

#include "api.h"
#include "downloads.h"
#include "folder.h"
#include "mode.h"
#include "server.h"

namespace {

struct Curl {
    Curl() {
        if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK)
            throw std::runtime_error("libcurl does not start");
    }
    ~Curl() { curl_global_cleanup(); }
};

}  // namespace

int main() try {
    if (currentMode().word == "refuse") {
        std::fputs("standin_client: told to refuse\n", stderr);
        return 1;
    }
    // A connection that is gone, and a file that grows too large, come as errors instead.
    for (const int signal : {SIGPIPE, SIGXFSZ}) std::signal(signal, SIG_IGN);
    const Curl curl;
    // First of all, so that a second client does not touch the downloads of the first.
    Server server(9421);
    const auto folder = ownFolder();
    Downloads downloads(folder);
    Api api(downloads, folder);
    server.run([&api](const std::string& head) { return api.answer(head); });
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "standin_client: %s\n", error.what());
    return 1;
}
