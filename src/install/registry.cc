// Reading and appending to the application registry.
#include "install/registry.h"

#include <cstring>
#include <utility>

#include "api/last_error.h"
#include "install/detail.h"
#include "support/files.h"
#include "support/format.h"
#include "support/log_file.h"
#include "support/owned.h"
#include "support/paths.h"

namespace velnor {
namespace {

constexpr char kFunction[] = "vn_install";
constexpr size_t kPieceSize = 1024;

// True when the line ends here, so that a piece of a longer one never passes for a whole name.
bool atLineEnd(FILE* registry) {
    const int next = std::getc(registry);
    if (next != EOF) std::ungetc(next, registry);
    return next == EOF || next == '\n';
}

bool isListed(FILE* registry, const char* appName) {
    char piece[kPieceSize];
    bool atLineStart = true;
    while (std::fgets(piece, sizeof piece, registry) != nullptr) {
        size_t length = std::strlen(piece);
        const bool terminated = length > 0 && piece[length - 1] == '\n';
        while (length > 0 && piece[length - 1] == '\n') piece[--length] = '\0';
        if (atLineStart && std::strcmp(piece, appName) == 0 &&
            (terminated || atLineEnd(registry))) {
            return true;
        }
        atLineStart = terminated;
    }
    return false;
}

bool append(File registry, const char* appName) {
    OwnedText line;
    const int32_t length = _vn_snprintf(line.out(), 0, "%s\n", appName);
    return length > 0 &&
           writeAndClose(std::move(registry), line.get(), static_cast<size_t>(length));
}

}  // namespace

Registration registerApplication(const char* installPath, const char* appName,
                                 InstallContext* context) {
    char path[kPathSize];
    if (!formatPath(path, "%s/appregistry.dat", installPath)) return Registration::Failed;
    // Opened for both, so that reading and adding see one and the same file.
    File registry = openFile(path, "a+");
    if (!registry) {
        VN_LOG_ERROR(kFunction, "Unable to open path: %s", path);
        setDetailError(context, INSTALL_ERROR_DISK_WRITE, path);
        return Registration::Failed;
    }
    if (std::fseek(registry.get(), 0, SEEK_SET) != 0) {
        VN_LOG_ERROR(kFunction, "Unable to seek to: %s", path);
        setDetailError(context, INSTALL_ERROR_FILE_ACCESS, path);
        return Registration::Failed;
    }
    if (isListed(registry.get(), appName)) {
        VN_LOG_INFO(kFunction, "Client is already registered.");
        return Registration::AlreadyRegistered;
    }
    if (std::fseek(registry.get(), 0, SEEK_END) != 0) {
        VN_LOG_ERROR(kFunction, "Unable to seek to: %s", path);
        setDetailError(context, INSTALL_ERROR_FILE_ACCESS, path);
        return Registration::Failed;
    }
    if (!append(std::move(registry), appName)) {
        VN_LOG_ERROR(kFunction, "Unable to write to: %s", path);
        setDetailError(context, INSTALL_ERROR_DISK_WRITE, path);
        return Registration::Failed;
    }
    VN_LOG_INFO(kFunction, "Registered the client");
    return Registration::Registered;
}

}  // namespace velnor
