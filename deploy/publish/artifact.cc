#include "publish/artifact.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <system_error>

#include "support/files.h"

namespace deploy {
namespace {

// The downloader counts in 32 bits and adds a terminator.
constexpr uint64_t kLargest = std::numeric_limits<uint32_t>::max() - 1;

[[noreturn]] void cannotRead(const std::string& path) {
    throw std::runtime_error("cannot read " + path + ": " + std::generic_category().message(errno) +
                             "; give a file that exists and that you may read");
}

uint64_t checkedSize(FILE* file, const std::string& path) {
    struct stat status {};
    if (fstat(fileno(file), &status) != 0) cannotRead(path);
    if (!S_ISREG(status.st_mode)) {
        throw std::runtime_error(path +
                                 " is not a regular file; give the file that will be served");
    }
    const auto size = static_cast<uint64_t>(status.st_size);
    if (size == 0) {
        throw std::runtime_error(path +
                                 " is empty, which an installer takes for a failed download; "
                                 "build it again");
    }
    if (size > kLargest) {
        throw std::runtime_error(path + " has " + std::to_string(size) +
                                 " bytes, but installers take " + std::to_string(kLargest) +
                                 " at most; make it smaller");
    }
    return size;
}

}  // namespace

std::string readArtifact(const std::string& path) {
    const velnor::File file = velnor::openFile(path.c_str(), "rb");
    if (!file) cannotRead(path);
    std::string content(checkedSize(file.get(), path), '\0');
    if (std::fread(content.data(), 1, content.size(), file.get()) != content.size()) {
        if (std::ferror(file.get()) != 0) cannotRead(path);
        throw std::runtime_error(path +
                                 " became shorter while it was read; try again when it is "
                                 "complete");
    }
    return content;
}

std::string readArchive(const std::string& path) {
    static constexpr char kGzipMagic[] = "\x1f\x8b";
    std::string content = readArtifact(path);
    if (!content.starts_with(kGzipMagic)) {
        throw std::runtime_error(path +
                                 " is not compressed by gzip, so installers could not unpack "
                                 "it; make it with tar -czf");
    }
    return content;
}

}  // namespace deploy
