// The rehearsal's launchctl: loads, lists and unloads property lists for real. Tests change what it
// does through the file /run/launchd/mode and count its calls in /run/launchd/calls.
#include <cstdio>
#include <exception>
#include <optional>
#include <string>
#include <vector>

#include "agent.h"
#include "state.h"
#include "supervisor.h"

namespace launchctl {
namespace {

using Words = std::vector<std::string>;

struct Command {
    std::string verb;
    std::optional<std::string> session;  // the argument of -S
    Words operands;
};

int complain(const std::string& message) {
    std::fprintf(stderr, "launchctl: %s\n", message.c_str());
    return 1;
}

int usage() {
    std::fputs("usage: launchctl load [-S SESSION] PLIST | unload PLIST | list LABEL\n", stderr);
    return 2;
}

/// Nothing when the words are no command of ours.
std::optional<Command> parse(const Words& words) {
    if (words.empty()) return std::nullopt;
    Command command{.verb = words.front(), .session = {}, .operands = {}};
    for (size_t i = 1; i < words.size(); ++i) {
        if (words[i] == "-S") {
            if (++i == words.size()) return std::nullopt;
            command.session = words[i];
        } else if (words[i].starts_with("-")) {
            return std::nullopt;
        } else {
            command.operands.push_back(words[i]);
        }
    }
    return command;
}

int load(const Command& command) {
    const std::string mode = state::mode();
    if (mode == "silent") return 0;
    if (mode == "no-aqua" && command.session) {
        return complain("no session of type " + *command.session);
    }
    const Agent agent = readAgent(command.operands.front());
    const state::Lock lock;
    if (state::supervisor(agent.label)) return complain(agent.label + ": already loaded");
    return startSupervisor(agent) ? 0 : complain(agent.label + ": could not be started");
}

int unload(const Command& command) {
    const Agent agent = readAgent(command.operands.front());
    const state::Lock lock;
    if (!state::supervisor(agent.label)) return complain(agent.label + ": not loaded");
    stopSupervisor(agent.label);
    return 0;
}

int list(const Command& command) {
    const std::string mode = state::mode();
    if (mode == "silent") return 1;
    if (mode == "noisy") {
        std::puts("launchctl: something was said");
        return 1;
    }
    const std::string& label = command.operands.front();
    if (!state::supervisor(label)) return complain(label + ": not loaded");
    std::printf("{\n\t\"Label\" = \"%s\";\n", label.c_str());
    if (const std::optional<pid_t> pid = state::pid(label)) std::printf("\t\"PID\" = %d;\n", *pid);
    std::puts("};");
    return 0;
}

int perform(const Command& command) {
    if (command.operands.size() != 1) return usage();
    if (command.verb == "load") return load(command);
    if (command.verb == "unload") return unload(command);
    return command.verb == "list" ? list(command) : usage();
}

int run(const Words& words) {
    state::prepare();
    state::recordCall(words);
    const std::optional<Command> command = parse(words);
    return command ? perform(*command) : usage();
}

}  // namespace
}  // namespace launchctl

int main(int argc, char** argv) try {
    return launchctl::run({argv + 1, argv + argc});
} catch (const std::exception& error) {
    return launchctl::complain(error.what());
}
