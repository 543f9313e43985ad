// Whole-file reads and writes on the C library's streams.
#include "support/files.h"

#include <utility>

#include "api/last_error.h"
#include "velnor/capi.h"

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

velnor::OwnedText velnor::readText(FILE* file, uint32_t size) {
    OwnedText text;
    if (size == UINT32_MAX) --size;  // room for the NUL byte
    if (!text.resize(size + 1)) return text;
    std::rewind(file);
    text.get()[std::fread(text.get(), 1, size, file)] = '\0';
    return text;
}

bool velnor::writeAndClose(File file, const void* buffer, size_t size) {
    const bool written = std::fwrite(buffer, 1, size, file.get()) == size;
    const bool closed = std::fclose(file.release()) == 0;
    return written && closed;
}
