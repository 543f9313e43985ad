#include "logs/folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <new>
#include <system_error>
#include <utility>

#include "support/files.h"

namespace logs {
namespace {

constexpr size_t kBlock = size_t{64} * 1024;
constexpr size_t kGuidLength = 32;
constexpr std::string_view kLogEnd = ".log";

Reading whyNot(int error) {
    if (error == ENOENT) return Reading::Gone;
    // A link, and a socket.
    return error == ELOOP || error == ENXIO ? Reading::NoLogFile : Reading::Failed;
}

}  // namespace

FolderError::FolderError(const std::string& path)
    : std::runtime_error("cannot read " + path + ": " + std::generic_category().message(errno)) {}

Folder::Folder(std::string path) : path_(std::move(path)), entries_(opendir(path_.c_str())) {
    if (entries_ == nullptr) throw FolderError(path_);
}

Folder::~Folder() { closedir(entries_); }

const char* Folder::next() {
    errno = 0;
    while (const dirent* entry = readdir(entries_)) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") return entry->d_name;
    }
    if (errno != 0) throw FolderError(path_);
    return nullptr;
}

void Folder::rewind() { rewinddir(entries_); }

Reading Folder::read(const char* name, const std::function<void(std::string_view)>& take) const {
    const int fd =
        openat(dirfd(entries_), name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd == -1) return whyNot(errno);
    const velnor::File file(fdopen(fd, "rb"));
    if (!file) throw std::bad_alloc();
    struct stat entry {};
    if (fstat(fd, &entry) != 0) return Reading::Failed;
    if (!S_ISREG(entry.st_mode)) return Reading::NoLogFile;
    std::array<char, kBlock> block;
    while (const size_t count = std::fread(block.data(), 1, block.size(), file.get())) {
        take({block.data(), count});
    }
    return std::ferror(file.get()) == 0 ? Reading::Read : Reading::Failed;
}

std::string_view machineOf(std::string_view name) {
    const bool isLog = name.size() == kGuidLength + kLogEnd.size() && name.ends_with(kLogEnd);
    const std::string_view guid = name.substr(0, isLog ? kGuidLength : 0);
    return guid.find_first_not_of("0123456789abcdef") == std::string_view::npos ? guid : "";
}

}  // namespace logs
