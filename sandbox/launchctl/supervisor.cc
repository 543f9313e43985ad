// A detached process per agent that waits for signals: its program's end, or the order to stop.
#include "supervisor.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <optional>
#include <thread>

#include "program.h"
#include "state.h"

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

namespace launchctl {
namespace {

constexpr auto kThrottle = 1s;   // between two starts of a program that keeps ending
constexpr auto kGrace = 2s;      // from SIGTERM to SIGKILL
constexpr auto kStopLimit = 5s;  // for a supervisor to stop its program and itself

sigset_t watchedSignals() {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : {SIGCHLD, SIGTERM, SIGINT}) sigaddset(&set, signal);
    return set;
}

class Supervisor {
  public:
    explicit Supervisor(const Agent& agent) : agent_(agent), watched_(watchedSignals()) {}

    void begin() {
        if (agent_.runAtLoad || agent_.keepAlive) start();
    }

    void run() {
        while (wait() != SIGTERM) {
            reap();
            if (program_ == 0 && agent_.keepAlive && Clock::now() >= started_ + kThrottle) start();
        }
        stop();
    }

  private:
    void start() {
        started_ = Clock::now();
        program_ = std::max(startProgram(agent_), 0);
        if (program_ != 0) state::putPid(agent_.label, program_);
    }

    /// Waits for a signal, at most until the program may be started again. SIGINT counts as
    /// SIGTERM.
    int wait() const {
        int signal = 0;
        if (program_ == 0 && agent_.keepAlive) {
            const auto left = std::max<Clock::duration>(started_ + kThrottle - Clock::now(), 1ms);
            const timespec limit{0,
                                 static_cast<long>(std::min<Clock::duration>(left, 999ms) / 1ns)};
            signal = sigtimedwait(&watched_, nullptr, &limit);
        } else {
            signal = sigwaitinfo(&watched_, nullptr);
        }
        return signal == SIGINT ? SIGTERM : signal;
    }

    void reap() {
        if (program_ == 0 || waitpid(program_, nullptr, WNOHANG) != program_) return;
        program_ = 0;
        state::remove(agent_.label, "pid");
    }

    void stop() {
        const auto limit = Clock::now() + kGrace;
        if (program_ != 0) signalProgram(program_, SIGTERM);
        while (program_ != 0 && Clock::now() < limit) {
            std::this_thread::sleep_for(5ms);
            reap();
        }
        if (program_ == 0) return;
        signalProgram(program_, SIGKILL);
        waitpid(program_, nullptr, 0);
    }

    const Agent agent_;
    const sigset_t watched_;
    pid_t program_ = 0;  // 0 while none runs
    Clock::time_point started_;
};

/// Leaves the caller's session, folder and descriptors. Returns what `ready` has become.
int detach(int ready) {
    setsid();
    if (fork() != 0) _exit(0);
    if (chdir("/") != 0) _exit(1);
    constexpr int kFirstFree = STDERR_FILENO + 1;
    dup2(ready, kFirstFree);
    fcntl(kFirstFree, F_SETFD, FD_CLOEXEC);
    closefrom(kFirstFree + 1);  // whoever loaded the agent must not be held by what it had open
    return kFirstFree;
}

[[noreturn]] void supervise(const Agent& agent, int ready) {
    ready = detach(ready);
    prepareForPrograms(agent);
    const sigset_t watched = watchedSignals();
    sigprocmask(SIG_BLOCK, &watched, nullptr);
    if (!state::claim(agent.label)) _exit(1);
    Supervisor supervisor(agent);
    supervisor.begin();
    if (write(ready, "", 1) != 1) _exit(1);
    close(ready);
    supervisor.run();
    _exit(0);
}

bool isLoadedUntil(const std::string& label, Clock::time_point limit) {
    while (state::supervisor(label)) {
        if (Clock::now() >= limit) return true;
        std::this_thread::sleep_for(5ms);
    }
    return false;
}

}  // namespace

bool startSupervisor(const Agent& agent) {
    std::array<int, 2> ready{};
    if (pipe2(ready.data(), O_CLOEXEC) != 0) return false;
    const pid_t child = fork();
    if (child == 0) supervise(agent, ready[1]);
    close(ready[1]);
    char byte = 0;
    ssize_t got = -1;
    if (child > 0) {
        while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) continue;
        got = read(ready[0], &byte, 1);
    }
    close(ready[0]);
    return got == 1;
}

void stopSupervisor(const std::string& label) {
    const std::optional<pid_t> pid = state::supervisor(label);
    if (!pid) return;
    kill(*pid, SIGTERM);
    if (isLoadedUntil(label, Clock::now() + kStopLimit)) {
        const std::optional<pid_t> program = state::pid(label);
        kill(*pid, SIGKILL);
        if (program) signalProgram(*program, SIGKILL);
        isLoadedUntil(label, Clock::now() + kStopLimit);
    }
    for (const char* what : {"pid", "supervisor"}) state::remove(label, what);
}

}  // namespace launchctl
