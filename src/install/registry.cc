// Reading and appending to the application registry.
#include "install/registry.h"

#include <cstring>
#include <utility>

#include "api/last_error.h"
#include "install/detail.h"
#include "support/files.h"
#include "support/log_file.h"
#include "support/paths.h"

namespace velnor {
namespace {

constexpr char kFunction[] = "vn_install";
constexpr long kPieceSize = 1024;

// Reads up to the next line feed, which is dropped, or the end of the file; at most kPieceSize - 1
// characters of the line go into `piece`. Returns the length of the whole line, -1 at the end.
long readLine(FILE* registry, char* piece) {
    long length = 0;
    int c = std::getc(registry);
    if (c == EOF) return -1;
    for (; c != EOF && c != '\n'; c = std::getc(registry), ++length) {
        if (length < kPieceSize - 1) piece[length] = static_cast<char>(c);
    }
    piece[length < kPieceSize ? length : kPieceSize - 1] = '\0';
    return length;
}

// Lines that do not fit are longer than any name that is looked for in them.
bool isListed(FILE* registry, const char* appName) {
    char piece[kPieceSize];
    long length = 0;
    while ((length = readLine(registry, piece)) >= 0) {
        if (length < kPieceSize && std::strcmp(piece, appName) == 0) return true;
    }
    return false;
}

bool append(File registry, const char* appName) {
    const bool written = std::fprintf(registry.get(), "%s\n", appName) > 0;
    return std::fclose(registry.release()) == 0 && written;
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
