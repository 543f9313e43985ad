// Starting programs as launchd does: not with what the caller of launchctl happened to have.
#include "program.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>
#include <vector>

#include "state.h"

namespace launchctl {
namespace {

void redirect(int target, const char* path, int flags) {
    const int fd = open(path, flags, 0644);
    if (fd < 0) return;
    dup2(fd, target);
    if (fd != target) close(fd);
}

/// The options of the sanitizers stay, so that an instrumented program can be told what to do.
void setEnvironment() {
    std::vector<std::pair<std::string, std::string>> kept;
    for (const char* name : {"HOME", "USER", "LANG", "XDG_RUNTIME_DIR", "ASAN_OPTIONS",
                             "LSAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS"}) {
        if (const char* value = std::getenv(name)) kept.emplace_back(name, value);
    }
    clearenv();
    for (const auto& [name, value] : kept) setenv(name.c_str(), value.c_str(), 1);
    setenv("PATH", "/usr/bin:/bin:/usr/sbin:/sbin", 1);
}

[[noreturn]] void become(const Agent& agent) {
    setsid();
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    std::vector<char*> arguments;
    for (const std::string& text : agent.arguments) {
        arguments.push_back(const_cast<char*>(text.c_str()));
    }
    arguments.push_back(nullptr);
    execv(arguments.front(), arguments.data());
    _exit(127);
}

}  // namespace

void prepareForPrograms(const Agent& agent) {
    for (const int signal : {SIGPIPE, SIGHUP, SIGCHLD, SIGTERM, SIGINT, SIGQUIT}) {
        std::signal(signal, SIG_DFL);
    }
    redirect(0, "/dev/null", O_RDONLY);
    redirect(1, state::path(agent.label + ".log").c_str(), O_WRONLY | O_CREAT | O_APPEND);
    dup2(1, 2);
    setEnvironment();
}

pid_t startProgram(const Agent& agent) {
    const pid_t program = fork();
    if (program == 0) become(agent);
    return program;
}

void signalProgram(pid_t program, int signal) {
    // Just after its start a program may have no group of its own yet.
    if (kill(-program, signal) != 0) kill(program, signal);
}

}  // namespace launchctl
