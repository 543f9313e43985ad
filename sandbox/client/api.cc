// The functions of the control interface, as far as an installation's life needs them.
#include "api.h"

#include <atomic>
#include <chrono>
#include <cstdio>

#include "http.h"
#include "mode.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kTellingServers{1500};

/// When the client's servers will know that an application has left.
std::atomic<Clock::time_point> serversKnow = Clock::time_point::max();

struct Reply {
    const char* status;
    std::string body;
};

std::string ping() { return R"({"result":"pong"})"; }

std::string uninstall() {
    serversKnow = Clock::now() + kTellingServers;
    return R"({"result":null})";
}

std::string attributes() {
    const bool sent = Clock::now() >= serversKnow.load() && currentMode() != "unacknowledged";
    return std::string(R"({"version":10605,"executableversion":"1.6.5","uninstallMsgSent":)") +
           (sent ? "true}" : "false}");
}

constexpr struct {
    const char* parameter;
    std::string (*reply)();
} kFunctions[] = {
    {"function=ping", ping},
    {"function=uninstall", uninstall},
    {"function=getClientAttributes", attributes},
};

Reply replyTo(const std::string& target) {
    if (currentMode() == "garbage") return {"200 OK", "something else"};
    if (target.starts_with("/api?"))
        for (const auto& [parameter, reply] : kFunctions)
            if (http::hasParameter(target, parameter)) return {"200 OK", reply()};
    return {"404 Not Found", R"({"result":"unknown"})"};
}

/// Flushed, because whoever has the reply looks for the line next.
void note(const std::string& agent, const std::string& target, const std::string& body) {
    std::printf("%s\t%s\t%s\n", agent.empty() ? "-" : agent.c_str(), target.c_str(), body.c_str());
    std::fflush(stdout);
}

}  // namespace

std::string answer(const std::string& head) {
    const std::string target = http::targetOf(head).value_or("");
    const Reply reply = replyTo(target);
    if (!http::hasParameter(target, "function=ping"))
        note(http::headerOf(head, "User-Agent"), target, reply.body);
    return http::reply(reply.status, reply.body);
}
