// The client that rehearsed installations download, verify and start. It stays in the foreground,
// as an agent's program must, until it is told to stop.
#include <curl/curl.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>

#include "../servers/raw_server.h"
#include "api.h"
#include "downloads.h"
#include "faults.h"

namespace {

/// Permissions alone do not tell: a world without namespaces is held by landlock, which access(2)
/// does not ask.
bool mayWriteIn(const std::filesystem::path& folder) {
    if (access(folder.c_str(), W_OK) != 0) return false;
    const int nameless = open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600);
    if (nameless < 0) return errno != EACCES;
    close(nameless);
    return true;
}

/// The folder of the executable or, when that may not be written to, .velnor in the home folder.
std::filesystem::path ownFolder() {
    auto folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    const char* home = std::getenv("HOME");
    if (mayWriteIn(folder) || home == nullptr) return folder;
    return std::filesystem::path(home) / ".velnor";
}

/// Before any thread starts, so that all of them leave the signals to the main one. A connection
/// that is gone, and a file that grows too large, come as errors instead.
sigset_t holdStopSignals() {
    for (const int signal : {SIGPIPE, SIGXFSZ}) std::signal(signal, SIG_IGN);
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT}) sigaddset(&signals, signal);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

void talk(standin::Api& api, int connection, std::string head) {
    standin::Answer answer{.bytes = {}, .keepsOpen = true};
    for (; !head.empty() && answer.keepsOpen; head = sandbox::readHead(connection)) {
        answer = api.answer(sandbox::parseHead(head));
        if (!sandbox::sendAll(connection, answer.bytes) || !answer.keepsOpen) return;
    }
}

void run() {
    const sigset_t signals = holdStopSignals();
    standin::Downloads downloads(ownFolder());
    standin::Api api(downloads);
    const sandbox::RawServer server(
        [&api](int connection, const std::string& head) { talk(api, connection, head); }, 9421);
    // Not before it listens, so that a second client does not touch the downloads of the first.
    downloads.takeUp();
    int signal = 0;
    sigwait(&signals, &signal);
}

}  // namespace

int main() try {
    if (standin::currentMode().word == "refuse") {
        std::fputs("standin_client: told to refuse\n", stderr);
        return 1;
    }
    curl_global_init(CURL_GLOBAL_DEFAULT);
    run();
    curl_global_cleanup();
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "standin_client: %s\n", error.what());
    return 1;
}
