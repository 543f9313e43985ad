// The folder /run/launchd. An agent is loaded exactly while a process holds the record lock on
// LABEL.supervisor, so a supervisor that was killed never looks loaded.
#include "state.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace {

constexpr char kFolder[] = "/run/launchd";
constexpr char kSupervisorSuffix[] = ".supervisor";

int openFile(const std::string& name, int flags) {
    const int fd = open(state::path(name).c_str(), flags | O_CLOEXEC, 0644);
    if (fd < 0) throw std::system_error(errno, std::generic_category(), state::path(name));
    return fd;
}

struct flock wholeFile() {
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    return lock;
}

}  // namespace

void state::prepare() { std::filesystem::create_directories(kFolder); }

std::string state::path(const std::string& name) { return std::string(kFolder) + "/" + name; }

void state::recordCall(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words) line += (line.empty() ? "" : " ") + word;
    line += '\n';
    const int fd = openFile("calls", O_WRONLY | O_CREAT | O_APPEND);
    if (write(fd, line.data(), line.size()) < 0) std::perror("launchctl: calls");
    close(fd);
}

std::string state::mode() {
    std::string word;
    std::ifstream(path("mode")) >> word;
    return word;
}

state::Lock::Lock() : fd_(openFile("lock", O_RDWR | O_CREAT)) {
    while (flock(fd_, LOCK_EX) != 0 && errno == EINTR) continue;
}

state::Lock::~Lock() { close(fd_); }

bool state::claim(const std::string& label) {
    const int fd = openFile(label + kSupervisorSuffix, O_RDWR | O_CREAT);
    struct flock lock = wholeFile();
    if (fcntl(fd, F_SETLK, &lock) == 0) return true;  // fd stays open: any close ends the claim
    close(fd);
    return false;
}

std::optional<pid_t> state::supervisor(const std::string& label) {
    const int fd = open(path(label + kSupervisorSuffix).c_str(), O_RDWR | O_CLOEXEC);
    if (fd < 0) return std::nullopt;
    struct flock lock = wholeFile();
    const bool known = fcntl(fd, F_GETLK, &lock) == 0;
    close(fd);
    if (!known || lock.l_type == F_UNLCK) return std::nullopt;
    return lock.l_pid;
}

void state::put(const std::string& label, const std::string& what, int number) {
    const std::string name = path(label + "." + what);
    std::ofstream(name + ".new") << number << '\n';
    std::filesystem::rename(name + ".new", name);
}

std::optional<int> state::get(const std::string& label, const std::string& what) {
    int number = 0;
    if (std::ifstream(path(label + "." + what)) >> number) return number;
    return std::nullopt;
}

void state::remove(const std::string& label, const std::string& what) {
    unlink(path(label + "." + what).c_str());
}

std::vector<std::string> state::labels() {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(kFolder)) {
        const std::filesystem::path file = entry.path().filename();
        if (file.extension() == kSupervisorSuffix && supervisor(file.stem()))
            found.push_back(file.stem());
    }
    std::sort(found.begin(), found.end());
    return found;
}
