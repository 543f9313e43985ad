#include "common/new_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

namespace deploy {

NewFile::NewFile(std::string path, mode_t mode)
    : path_(std::move(path)),
      fd_(open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode)) {
    if (fd_ == -1) fail();
}

NewFile::~NewFile() {
    if (fd_ != -1) close(fd_);
    if (!isKept_) unlink(path_.c_str());
}

void NewFile::write(std::string_view content) {
    while (!content.empty()) {
        const ssize_t count = ::write(fd_, content.data(), content.size());
        if (count == -1 && errno == EINTR) continue;
        if (count == -1) fail();
        content.remove_prefix(static_cast<size_t>(count));
    }
    // A full disk may show no sooner than here.
    if (fsync(fd_) != 0 || close(std::exchange(fd_, -1)) != 0) fail();
}

void NewFile::replace(const std::string& target) {
    if (std::rename(path_.c_str(), target.c_str()) != 0) {
        throw std::system_error(errno, std::generic_category(), "cannot write " + target);
    }
    isKept_ = true;
}

void NewFile::fail() const {
    throw std::system_error(errno, std::generic_category(), "cannot write " + path_);
}

}  // namespace deploy
