// The handler ends the program itself: the library goes on waiting after a signal.
#include "vnctl/interrupt.h"

#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <utility>

#include "vnctl/exit_status.h"

namespace vnctl {
namespace {

// Never freed, so that it is there whenever the signal comes.
const std::string* g_message = nullptr;

void onInterrupt(int /*signal*/) {
    // Nothing can be done when it cannot be written.
    if (write(STDERR_FILENO, g_message->data(), g_message->size()) < 0) _exit(kInterrupted);
    _exit(kInterrupted);
}

}  // namespace

void explainInterrupt(std::string message) {
    struct sigaction action {};
    sigaction(SIGINT, nullptr, &action);
    if (action.sa_handler == SIG_IGN) return;
    g_message = new std::string(std::move(message));
    action = {};
    action.sa_handler = onInterrupt;
    sigaction(SIGINT, &action, nullptr);
}

}  // namespace vnctl
