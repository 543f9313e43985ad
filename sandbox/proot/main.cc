// Runs one command in a world made by proot, and ends that world with it: proot itself stays for as
// long as anything of it runs, and what an installation starts is there to stay.
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cctype>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "confine.h"

namespace keeper {
namespace {

using Words = std::vector<std::string>;

constexpr int kComplaint = 125;
constexpr int kNotStarted = 127;
constexpr char kInside[] = "--inside";

[[noreturn]] void become(const Words& words) {
    std::vector<char*> arguments;
    for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    execvp(arguments.front(), arguments.data());
    std::perror(arguments.front());
    _exit(kNotStarted);
}

/// As a shell has it.
int statusOf(int waited) {
    return WIFEXITED(waited) ? WEXITSTATUS(waited) : 128 + WTERMSIG(waited);
}

/// The number behind NAME in /proc/PID/status, or 0.
pid_t numberIn(const std::filesystem::path& process, const std::string& name) {
    std::ifstream file(process / "status");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(name)) return std::atoi(line.c_str() + name.size());
    }
    return 0;
}

/// Every process of which NAME in its status is this number is killed; returns how many.
int killAll(const std::string& name, pid_t number) {
    int killed = 0;
    std::error_code error;
    for (const auto& process : std::filesystem::directory_iterator("/proc", error)) {
        const std::string pid = process.path().filename();
        if (std::isdigit(static_cast<unsigned char>(pid.front())) == 0) continue;
        if (numberIn(process.path(), name) != number) continue;
        killed += static_cast<int>(kill(std::atoi(pid.c_str()), SIGKILL) == 0);
    }
    return killed;
}

/// In the world: its command, whose status goes to `result`. Only here, because proot itself has
/// files in the system's /tmp.
int runInside(int result, const Words& writable, const Words& command) {
    fcntl(result, F_SETFD, FD_CLOEXEC);
    allowWritingOnlyIn(writable);
    refuseCallsUnknownToProot();
    // The terminal asks the command to end, which may well go on.
    struct sigaction before_int {
    }, before_quit{}, ignored{};
    ignored.sa_handler = SIG_IGN;
    sigaction(SIGINT, &ignored, &before_int);
    sigaction(SIGQUIT, &ignored, &before_quit);
    const pid_t child = fork();
    if (child == 0) {
        sigaction(SIGINT, &before_int, nullptr);
        sigaction(SIGQUIT, &before_quit, nullptr);
        become(command);
    }
    int waited = 0;
    if (child < 0 || waitpid(child, &waited, 0) != child) return kComplaint;
    const int status = statusOf(waited);
    return write(result, &status, sizeof status) == sizeof status ? status : kComplaint;
}

class World {
  public:
    /// Starts proot, with this command in its world.
    World(Words proot, const Words& command) {
        // Whoever lost its parent becomes a child of this process, and none is overlooked.
        prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);
        prctl(PR_SET_PDEATHSIG, SIGTERM, 0, 0, 0);
        sigset_t signals;
        sigemptyset(&signals);
        for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGCHLD}) sigaddset(&signals, signal);
        sigset_t before;
        sigprocmask(SIG_BLOCK, &signals, &before);
        int ends[2];
        signals_ = signalfd(-1, &signals, SFD_CLOEXEC);
        if (signals_ < 0 || pipe(ends) != 0) throw std::runtime_error("no more descriptors");
        result_ = ends[0];
        fcntl(result_, F_SETFD, FD_CLOEXEC);
        fcntl(result_, F_SETFL, O_NONBLOCK);
        const std::string self = std::filesystem::read_symlink("/proc/self/exe");
        proot.insert(proot.end(), {self, kInside, std::to_string(ends[1])});
        proot.insert(proot.end(), command.begin(), command.end());
        proot_ = fork();
        if (proot_ < 0) throw std::runtime_error("no more processes");
        if (proot_ == 0) {
            sigprocmask(SIG_SETMASK, &before, nullptr);
            become(proot);
        }
        close(ends[1]);
    }

    /// The status of the command, of proot when it could not start, or that of a signal to this
    /// process.
    int wait() {
        for (;;) {
            pollfd fds[] = {{result_, POLLIN, 0}, {signals_, POLLIN, 0}};
            if (poll(fds, 2, -1) < 0) continue;
            // The result last: it is there before proot's end is.
            const std::optional<int> end = signalled();
            if (const std::optional<int> status = result()) return *status;
            if (end) return *end;
        }
    }

    /// First what proot traces, because without proot its paths would mean the system's files.
    void end() {
        while (proot_ != 0) {
            killAll("TracerPid:", proot_);
            usleep(2000);
            reap();
        }
        while (killAll("PPid:", getpid()) > 0) {
            while (waitpid(-1, nullptr, WNOHANG) > 0) continue;
            usleep(2000);
        }
    }

  private:
    std::optional<int> result() const {
        int status = 0;
        if (read(result_, &status, sizeof status) != sizeof status) return std::nullopt;
        return status;
    }

    /// What a signal says about the end, if there was one and it does.
    std::optional<int> signalled() {
        signalfd_siginfo info{};
        pollfd fd{signals_, POLLIN, 0};
        if (poll(&fd, 1, 0) != 1 || read(signals_, &info, sizeof info) != sizeof info) {
            return std::nullopt;
        }
        if (info.ssi_signo != SIGCHLD) return 128 + static_cast<int>(info.ssi_signo);
        return reap();
    }

    /// The status of proot when it has ended.
    std::optional<int> reap() {
        std::optional<int> status;
        int waited = 0;
        for (pid_t pid = 0; (pid = waitpid(-1, &waited, WNOHANG)) > 0;) {
            if (pid != proot_) continue;
            proot_ = 0;
            status = statusOf(waited);
        }
        return status;
    }

    pid_t proot_ = 0;  // 0 when it has ended
    int result_ = -1;
    int signals_ = -1;
};

/// From `next` to the next "--" or the end; `next` is then behind that.
Words section(const Words& words, size_t& next) {
    Words found;
    while (next < words.size() && words[next] != "--") found.push_back(words[next++]);
    ++next;
    return found;
}

/// A folder in which others may have taken rights from themselves.
void removeAll(const std::filesystem::path& folder) {
    namespace fs = std::filesystem;
    std::error_code error;
    if (fs::remove_all(folder, error); !error) return;
    constexpr auto kAll = fs::perms::owner_all;
    for (fs::recursive_directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (!entry->is_directory(error) || entry->is_symlink(error)) continue;
        fs::permissions(entry->path(), kAll, fs::perm_options::add, error);
    }
    fs::remove_all(folder, error);
}

int run(const Words& words) {
    constexpr char kUsage[] =
        "usage: keeper FOLDER LOCK PROOT ARG... -- WRITABLE... -- COMMAND ARG...";
    if (words.size() < 3) throw std::runtime_error(kUsage);
    const bool inside = words[0] == kInside;
    size_t next = 2;
    const Words first = section(words, next);
    if (next >= words.size()) throw std::runtime_error(kUsage);
    const Words rest(words.begin() + static_cast<long>(next), words.end());
    if (inside) return runInside(std::stoi(words[1]), first, rest);
    // What makes it the only world here stays open in this process and in no other.
    fcntl(std::stoi(words[1]), F_SETFD, FD_CLOEXEC);
    World world(first, rest);
    const int status = world.wait();
    world.end();
    removeAll(words[0]);
    return status;
}

}  // namespace
}  // namespace keeper

int main(int argc, char** argv) try {
    return keeper::run({argv + 1, argv + argc});
} catch (const std::exception& error) {
    std::fprintf(stderr, "keeper: %s\n", error.what());
    return keeper::kComplaint;
}
