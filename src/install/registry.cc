#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "api/result/last_error.h"
#include "install/detail.h"
#include "install/records.h"
#include "support/files.h"
#include "support/log_file.h"
#include "support/owned.h"
#include "support/paths.h"
#include "support/product.h"
#include "support/text.h"

namespace velnor {
namespace {

constexpr char kFunction[] = "vn_install";
// Longer lines are no names, and longer names never match a line.
constexpr size_t kMaxName = 1023;

enum class Line { Name, Other, End };

// Reads a line, which counts as `appName` only when it equals it as a whole. Any other goes to
// `copy`, unless that is null, with a line feed at its end. Lines are of any length and may hold
// any byte; what has matched so far need not be kept, because it is the beginning of `appName`.
Line readLine(FILE* registry, const char* appName, FILE* copy) {
    int c = std::getc(registry);
    if (c == EOF) return Line::End;
    size_t matched = 0;
    for (; c != EOF && c != '\n' && c != '\0' && c == static_cast<unsigned char>(appName[matched]);
         c = std::getc(registry)) {
        ++matched;
    }
    const bool ended = c == EOF || c == '\n';
    if (ended && appName[matched] == '\0' && matched <= kMaxName) return Line::Name;
    if (copy != nullptr) std::fwrite(appName, 1, matched, copy);
    for (; c != EOF && c != '\n'; c = std::getc(registry)) {
        if (copy != nullptr) std::putc(c, copy);
    }
    if (copy != nullptr) std::putc('\n', copy);
    return Line::Other;
}

bool isListed(FILE* registry, const char* appName) {
    Line line = Line::Other;
    while (line == Line::Other) line = readLine(registry, appName, nullptr);
    return line == Line::Name;
}

struct RegistryPaths {
    char registry[kPathSize];
    char backup[kPathSize];
    char renewed[kPathSize];

    bool form(const char* installPath) {
        return formatPath(registry, "%s/%s", installPath, kRegistryFile) &&
               formatPath(backup, "%s/%s", installPath, kRegistryBackupFile) &&
               formatPath(renewed, "%s/%s", installPath, kNewRegistryFile);
    }

    // Puts the backup in the place of a registry that is missing: a rewriting that was killed has
    // left it so where it had to rename. False when that is needed and cannot be done.
    bool recover() const {
        struct stat entry {};
        if (access(registry, F_OK) == 0 || errno != ENOENT) return true;
        const bool hasBackup = stat(backup, &entry) == 0 && S_ISREG(entry.st_mode);
        return !hasBackup || std::rename(backup, registry) == 0;
    }
};

// Writes what is left of `old` to `path`. Returns the number of lines, -1 when not all of it could
// be read and written.
int32_t writeRenewed(FILE* old, const char* path, const char* appName) {
    File renewed = openFile(path, "w");
    if (!renewed) return -1;
    int32_t others = 0;
    Line line = Line::Other;
    while ((line = readLine(old, appName, renewed.get())) != Line::End) {
        if (line == Line::Other) ++others;
    }
    const bool whole = std::ferror(old) == 0 && std::ferror(renewed.get()) == 0;
    return closeDurably(std::move(renewed)) && whole ? others : -1;
}

// A second name for the registry, which stays in its place. Where the file system has no links it
// is moved there instead.
bool makeBackup(const RegistryPaths& paths) {
    std::remove(paths.backup);
    if (link(paths.registry, paths.backup) == 0) return true;
    const bool hasLinks =
        errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS && errno != EMLINK;
    return !hasLinks && std::rename(paths.registry, paths.backup) == 0;
}

// Writes the registry anew under another name and puts that in its place, so that at every moment
// one file has all the names: half a registry would cost other applications their client. Returns
// as unregisterApplication.
int32_t rewrite(const RegistryPaths& paths, const char* appName) {
    struct stat entry {};
    if (!paths.recover()) return -1;
    if (stat(paths.registry, &entry) != 0) return errno == ENOENT || errno == ENOTDIR ? 0 : -1;
    const File old = S_ISREG(entry.st_mode) ? openFile(paths.registry, "r") : File();
    if (!old || !makeBackup(paths)) return -1;
    const int32_t others = writeRenewed(old.get(), paths.renewed, appName);
    if (others != -1 && std::rename(paths.renewed, paths.registry) == 0) {
        std::remove(paths.backup);
        return others;
    }
    std::remove(paths.renewed);
    if (access(paths.registry, F_OK) == 0) {
        std::remove(paths.backup);
    } else {
        std::rename(paths.backup, paths.registry);
    }
    return -1;
}

// The line for `appName`, which begins a new one where the last one was torn off.
OwnedText newLine(FILE* registry, const char* appName) {
    const int last = std::fseek(registry, -1, SEEK_END) == 0 ? std::getc(registry) : EOF;
    const bool torn = last != EOF && last != '\n';
    OwnedText line;
    _vn_snprintf(line.out(), 0, "%s%s\n", torn ? "\n" : "", appName);
    return line;
}

}  // namespace

Registration registerApplication(const char* installPath, const char* appName,
                                 InstallContext* context) {
    RegistryPaths paths;
    if (!paths.form(installPath)) return Registration::Failed;
    const char* path = paths.registry;
    // Opened for both, so that reading and adding see one and the same file.
    File registry = paths.recover() ? openFile(path, "a+") : File();
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
    const OwnedText line = newLine(registry.get(), appName);
    if (!line) return Registration::Failed;
    if (!extendAndClose(std::move(registry), line.get(), std::strlen(line.get()))) {
        VN_LOG_ERROR(kFunction, "Unable to write to: %s", path);
        setDetailError(context, INSTALL_ERROR_DISK_WRITE, path);
        return Registration::Failed;
    }
    VN_LOG_INFO(kFunction, "Registered the client");
    return Registration::Registered;
}

int32_t unregisterApplication(const char* installPath, const char* appName) {
    RegistryPaths paths;
    return paths.form(installPath) ? rewrite(paths, appName) : -1;
}

}  // namespace velnor
