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
    std::fputs("usage: launchctl load [-w] [-S SESSION] PLIST | unload [-w] PLIST | list [LABEL]\n",
               stderr);
    return 2;
}

/// Nothing when the words are no command of ours.
std::optional<Command> parse(const Words& words) {
    if (words.empty()) return std::nullopt;
    Command command{.verb = words.front(), .session = {}, .operands = {}};
    for (size_t i = 1; i < words.size(); ++i) {
        if (words[i] == "-w") continue;
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
    if (mode == "no-aqua" && command.session)
        return complain("no session of type " + *command.session);
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

void listAll() {
    std::puts("PID\tStatus\tLabel");
    for (const std::string& label : state::labels()) {
        const std::optional<int> pid = state::get(label, "pid");
        const std::string shown = pid ? std::to_string(*pid) : "-";
        std::printf("%s\t%d\t%s\n", shown.c_str(), state::get(label, "status").value_or(0),
                    label.c_str());
    }
}

void listOne(const std::string& label) {
    std::printf("{\n\t\"Label\" = \"%s\";\n\t\"LastExitStatus\" = %d;\n", label.c_str(),
                state::get(label, "status").value_or(0));
    if (const std::optional<int> pid = state::get(label, "pid"))
        std::printf("\t\"PID\" = %d;\n", *pid);
    std::puts("};");
}

int list(const Command& command) {
    const std::string mode = state::mode();
    if (mode == "silent") return 1;
    if (mode == "noisy") {
        std::puts("launchctl: something was said");
        return 1;
    }
    if (command.operands.empty()) {
        listAll();
        return 0;
    }
    const std::string& label = command.operands.front();
    if (!state::supervisor(label)) return complain(label + ": not loaded");
    listOne(label);
    return 0;
}

int run(const Command& command) {
    if (state::mode() == "failing") return complain("cannot reach launchd");
    const size_t operands = command.operands.size();
    if (command.verb == "load" && operands == 1) return load(command);
    if (command.verb == "unload" && operands == 1) return unload(command);
    if (command.verb == "list" && operands <= 1) return list(command);
    return usage();
}

}  // namespace

int main(int argc, char** argv) try {
    const Words words(argv + 1, argv + argc);
    state::prepare();
    state::recordCall(words);
    const std::optional<Command> command = parse(words);
    return command ? run(*command) : usage();
} catch (const std::exception& error) {
    return complain(error.what());
}
