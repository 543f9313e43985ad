#include "support/files.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "api/result/last_error.h"
#include "velnor/capi.h"

namespace velnor {
namespace {

// Past a stream's buffer, which would write once more what has failed when the stream is closed.
bool writeAll(int fd, const void* buffer, size_t size) {
    const auto* next = static_cast<const char*>(buffer);
    while (size > 0) {
        const ssize_t count = write(fd, next, size);
        if (count < 0 && errno == EINTR) continue;
        if (count < 1) return false;
        next += count;
        size -= static_cast<size_t>(count);
    }
    return true;
}

// Also on a file system that has nothing to wait for.
bool isOnDisk(int fd) { return fsync(fd) == 0 || errno == EINVAL || errno == ENOTSUP; }

}  // namespace

OwnedText readText(FILE* file, uint32_t size) {
    OwnedText text;
    if (size == UINT32_MAX) --size;  // room for the NUL byte
    if (!text.resize(size + 1)) return text;
    std::rewind(file);
    text.get()[std::fread(text.get(), 1, size, file)] = '\0';
    return text;
}

bool extendAndClose(File file, const void* buffer, size_t size) {
    const int fd = fileno(file.get());
    struct stat before {};
    if (fstat(fd, &before) != 0) return false;
    if (writeAll(fd, buffer, size) && isOnDisk(fd)) return true;
    // That this may fail as well adds nothing to what is reported.
    [[maybe_unused]] const int cut = ftruncate(fd, before.st_size);
    return false;
}

bool closeDurably(File file) {
    const bool written = std::fflush(file.get()) == 0 && isOnDisk(fileno(file.get()));
    return std::fclose(file.release()) == 0 && written;
}

bool writeAndClose(File file, const void* buffer, size_t size) {
    const bool written = std::fwrite(buffer, 1, size, file.get()) == size;
    const bool closed = std::fclose(file.release()) == 0;
    return written && closed;
}

}  // namespace velnor

FILE* _vn_fopen(const char* path, const char* mode) { return std::fopen(path, mode); }

uint32_t _vn_readFile(const char* path, void* buffer, uint32_t size, const char* mode) {
    const velnor::File file = velnor::openFile(path, mode);
    if (!file) {
        _vn_setLastError(INSTALL_ERROR_DISK);
        return 0;
    }
    return static_cast<uint32_t>(std::fread(buffer, 1, size, file.get()));
}

int32_t _vn_writeFile(const char* path, const void* buffer, uint32_t size, const char* mode) {
    velnor::File file = velnor::openFile(path, mode);
    // Unbuffered, so that the bytes go out in one write and appended lines stay whole.
    if (file) std::setvbuf(file.get(), nullptr, _IONBF, 0);
    if (file && velnor::writeAndClose(std::move(file), buffer, size)) return 1;
    _vn_setLastError(INSTALL_ERROR_DISK);
    return 0;
}
