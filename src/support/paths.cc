#include "support/paths.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "api/result/last_error.h"
#include "support/text.h"
#include "velnor/capi.h"

namespace velnor {
namespace {

// Fixed: the launcher script, the agent and the client itself know the same path.
constexpr char kInstallPath[] = "/Applications/Velnor";

}  // namespace

bool formatPath(char* path, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(path, kPathSize, format, arguments);
    va_end(arguments);
    return length >= 0 && static_cast<uint32_t>(length) < kPathSize;
}

const char* homeVariable() {
    const char* home = std::getenv("HOME");
    return home != nullptr && *home == '/' ? home : nullptr;
}

}  // namespace velnor

int32_t _vn_getInstallPath(char* buffer, uint32_t size) {
    if (size < sizeof velnor::kInstallPath) {
        // The memory code and not "Invalid Argument", fixed by the interface: what is short is
        // room.
        _vn_setLastError(INSTALL_ERROR_INSUFFICIENTMEMORY);
        return 0;
    }
    std::memcpy(buffer, velnor::kInstallPath, sizeof velnor::kInstallPath);
    return sizeof velnor::kInstallPath - 1;
}

char* _vn_getInstallPathForFile(const char* name) {
    char directory[velnor::kPathSize];
    if (_vn_getInstallPath(directory, sizeof directory) == 0) return nullptr;
    char* path = nullptr;
    _vn_snprintf(&path, static_cast<int32_t>(velnor::kPathSize), "%s/%s", directory, name);
    return path;
}
