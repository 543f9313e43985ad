#include "program/answer.h"

#include <netdb.h>

#include <new>

namespace program {
namespace {

// Why the name of `host`, which may end with a port, has no address; empty when it has one.
std::string nameFailure(const std::string& host) {
    addrinfo* found = nullptr;
    const int result =
        getaddrinfo(host.substr(0, host.rfind(':')).c_str(), nullptr, nullptr, &found);
    if (result == 0) freeaddrinfo(found);
    return result == 0 ? "" : gai_strerror(result);
}

}  // namespace

std::string answerText(const velnor::Answer& answer, const std::string& host) {
    switch (answer.ending) {
        case velnor::Ending::Answered:
            return "answers, its certificate is valid";
        case velnor::Ending::NoAnswer: {
            const std::string reason = nameFailure(host);
            return reason.empty() ? "does not answer" : "has no address: " + reason;
        }
        case velnor::Ending::NoMemory:
            throw std::bad_alloc();
        default:
            return "gives no answer that can be used: no valid certificate, or no HTTP";
    }
}

}  // namespace program
