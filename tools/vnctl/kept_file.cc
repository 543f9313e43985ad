#include "vnctl/kept_file.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#ifdef __linux__
#include <linux/fs.h>
#endif

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "program/text.h"
#include "velnor/capi.h"
#include "vnctl/failure.h"

namespace vnctl {
namespace {

class Descriptor {
  public:
    explicit Descriptor(int fd) : fd_(fd) {}
    ~Descriptor() {
        if (fd_ >= 0) close(fd_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return fd_; }

  private:
    int fd_;
};

// The bytes are shared where the file system can do that.
bool copyBytes(int from, int to) {
#ifdef FICLONE
    if (ioctl(to, FICLONE, from) == 0) return true;
#endif
    std::vector<char> buffer(1 << 20);
    for (;;) {
        const ssize_t size = read(from, buffer.data(), buffer.size());
        if (size <= 0) return size == 0;
        for (ssize_t at = 0; at < size;) {
            const ssize_t written = write(to, buffer.data() + at, static_cast<size_t>(size - at));
            if (written < 0) return false;
            at += written;
        }
    }
}

timespec changeOf(const struct stat& file) {
#ifdef __APPLE__
    return file.st_mtimespec;
#else
    return file.st_mtim;
#endif
}

bool isUntouched(const struct stat& before, const char* path) {
    struct stat now {};
    const timespec then = changeOf(before);
    return lstat(path, &now) == 0 && now.st_ino == before.st_ino && now.st_dev == before.st_dev &&
           now.st_size == before.st_size && changeOf(now).tv_sec == then.tv_sec &&
           changeOf(now).tv_nsec == then.tv_nsec;
}

// A new file beside another, deleted again unless it is kept.
class FileBeside {
  public:
    explicit FileBeside(const std::string& path)
        : path_(path + ".XXXXXX"), file_(mkstemp(path_.data())) {}
    ~FileBeside() {
        const int error = errno;
        if (!isKept_ && file_.get() >= 0) unlink(path_.c_str());
        errno = error;
    }
    FileBeside(const FileBeside&) = delete;
    FileBeside& operator=(const FileBeside&) = delete;

    int get() const { return file_.get(); }
    const std::string& path() const { return path_; }
    void keep() { isKept_ = true; }

  private:
    std::string path_;
    Descriptor file_;
    bool isKept_ = false;
};

// The copy is the user's file in everything that this program may set.
bool copyTo(int to, const std::string& path, const struct stat& file) {
    const Descriptor from(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    const timespec times[] = {{0, UTIME_OMIT}, changeOf(file)};
    return to >= 0 && from.get() >= 0 && copyBytes(from.get(), to) &&
           fchmod(to, file.st_mode & 07777) == 0 &&
           (fchown(to, file.st_uid, file.st_gid) == 0 || errno == EPERM) &&
           futimens(to, times) == 0;
}

// The life of the guard, which calls nothing that another thread of the program could have left
// locked. No terminal and no shell ends it.
[[noreturn]] void guard(int lifeline, const struct stat& before, const char* path, const char* copy,
                        const std::string& whereItIs) {
    setsid();
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) std::signal(signal, SIG_IGN);
    char nothing = 0;
    while (read(lifeline, &nothing, 1) < 0 && errno == EINTR) {
    }
    if (isUntouched(before, path)) _exit(unlink(copy));
    if (std::rename(copy, path) == 0) _exit(0);
    if (write(STDERR_FILENO, whereItIs.data(), whereItIs.size()) < 0) _exit(1);
    _exit(1);
}

[[noreturn]] void fail(const std::string& path) {
    throw Failure(INSTALL_ERROR_DISK, "Cannot protect " + program::printable(path) +
                                          " from the client: " + std::strerror(errno));
}

}  // namespace

KeptFile::KeptFile(const std::string& path) {
    struct stat file {};
    if (lstat(path.c_str(), &file) != 0 || !S_ISREG(file.st_mode)) return;
    FileBeside copy(path);
    if (!copyTo(copy.get(), path, file)) fail(path);
    const std::string whereItIs =
        "vnctl: The file could not be put back. It is " + program::printable(copy.path()) + "\n";
    int ends[2] = {-1, -1};
    if (pipe(ends) == 0) guard_ = fork();
    if (guard_ == 0) {
        close(ends[1]);
        guard(ends[0], file, path.c_str(), copy.path().c_str(), whereItIs);
    }
    const int error = errno;
    close(ends[0]);
    lifeline_ = ends[1];
    if (guard_ > 0) {
        copy.keep();
        return;
    }
    close(lifeline_);
    errno = error;
    fail(path);
}

KeptFile::~KeptFile() {
    if (guard_ <= 0) return;
    close(lifeline_);
    while (waitpid(guard_, nullptr, 0) < 0 && errno == EINTR) {
    }
}

}  // namespace vnctl
