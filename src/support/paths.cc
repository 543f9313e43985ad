// The install directory and the paths in it.
#include "support/paths.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "api/last_error.h"
#include "support/format.h"
#include "velnor/capi.h"

namespace {

// Fixed: the launcher script, the agent and the client itself know the same path.
constexpr char kInstallPath[] = "/Applications/Velnor";

}  // namespace

bool velnor::formatPath(char* path, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(path, kPathSize, format, arguments);
    va_end(arguments);
    return length >= 0 && static_cast<uint32_t>(length) < kPathSize;
}

int32_t _vn_getInstallPath(char* buffer, uint32_t size) {
    if (size < sizeof kInstallPath) {
        // The memory code and not "Invalid Argument", deliberately: what is short is room.
        _vn_setLastError(INSTALL_ERROR_INSUFFICIENTMEMORY);
        return 0;
    }
    std::memcpy(buffer, kInstallPath, sizeof kInstallPath);
    return sizeof kInstallPath - 1;
}

char* _vn_getInstallPathForFile(const char* name) {
    char directory[velnor::kPathSize];
    if (_vn_getInstallPath(directory, sizeof directory) == 0) return nullptr;
    char* path = nullptr;
    _vn_snprintf(&path, static_cast<int32_t>(velnor::kPathSize), "%s/%s", directory, name);
    return path;
}
