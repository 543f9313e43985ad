// The folder /run/launchd. An agent is loaded exactly while a process holds the record lock on
// LABEL.supervisor, so a supervisor that was killed never looks loaded.
#include "state.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace launchctl::state {
namespace {

constexpr char kFolder[] = "/run/launchd";
constexpr char kSupervisorSuffix[] = ".supervisor";

int openFile(const std::string& name, int flags) {
    const int fd = open(path(name).c_str(), flags | O_CLOEXEC, 0644);
    if (fd < 0) throw std::system_error(errno, std::generic_category(), path(name));
    return fd;
}

struct flock wholeFile() {
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    return lock;
}

}  // namespace

void prepare() { std::filesystem::create_directories(kFolder); }

std::string path(const std::string& name) { return std::string(kFolder) + "/" + name; }

void recordCall(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words) line += (line.empty() ? "" : " ") + word;
    line += '\n';
    const int fd = openFile("calls", O_WRONLY | O_CREAT | O_APPEND);
    if (write(fd, line.data(), line.size()) < 0) std::perror("launchctl: calls");
    close(fd);
}

std::string mode() {
    std::string word;
    std::ifstream(path("mode")) >> word;
    return word;
}

Lock::Lock() : fd_(openFile("lock", O_RDWR | O_CREAT)) {
    while (flock(fd_, LOCK_EX) != 0 && errno == EINTR) continue;
}

Lock::~Lock() { close(fd_); }

bool claim(const std::string& label) {
    const int fd = openFile(label + kSupervisorSuffix, O_RDWR | O_CREAT);
    struct flock lock = wholeFile();
    if (fcntl(fd, F_SETLK, &lock) == 0) return true;  // fd stays open: any close ends the claim
    close(fd);
    return false;
}

std::optional<pid_t> supervisor(const std::string& label) {
    const int fd = open(path(label + kSupervisorSuffix).c_str(), O_RDWR | O_CLOEXEC);
    if (fd < 0) return std::nullopt;
    struct flock lock = wholeFile();
    const bool known = fcntl(fd, F_GETLK, &lock) == 0;
    close(fd);
    if (!known || lock.l_type == F_UNLCK) return std::nullopt;
    return lock.l_pid;
}

void putPid(const std::string& label, pid_t program) {
    const std::string name = path(label + ".pid");
    std::ofstream(name + ".new") << program << '\n';
    std::filesystem::rename(name + ".new", name);
}

std::optional<pid_t> pid(const std::string& label) {
    pid_t program = 0;
    if (std::ifstream(path(label + ".pid")) >> program) return program;
    return std::nullopt;
}

void remove(const std::string& label, const std::string& what) {
    unlink(path(label + "." + what).c_str());
}

}  // namespace launchctl::state
