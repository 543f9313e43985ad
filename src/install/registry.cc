// Reading, extending and rewriting the application registry.
#include "install/registry.h"

#include <cerrno>
#include <utility>

#include "api/last_error.h"
#include "install/detail.h"
#include "support/files.h"
#include "support/log_file.h"
#include "support/paths.h"

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

// Writes the registry at `path` anew from its backup. Returns the number of lines, -1 when not all
// of it could be read and written.
int32_t rewrite(const char* backup, const char* path, const char* appName) {
    const File old = openFile(backup, "r");
    File renewed = old ? openFile(path, "w") : File();
    if (!renewed) return -1;
    int32_t others = 0;
    Line line = Line::Other;
    while ((line = readLine(old.get(), appName, renewed.get())) != Line::End) {
        if (line == Line::Other) ++others;
    }
    const bool whole = std::ferror(old.get()) == 0 && std::ferror(renewed.get()) == 0;
    return std::fclose(renewed.release()) == 0 && whole ? others : -1;
}

// Half a registry would cost other applications their client.
void restore(const char* backup, const char* path) {
    if (std::rename(backup, path) == 0) return;
    std::remove(path);  // a folder that was moved aside takes no file's place
    std::rename(backup, path);
}

// Moves the registry aside and writes it anew. Returns as unregisterApplication.
int32_t replace(const char* path, const char* backup, const char* appName) {
    std::remove(backup);
    if (std::rename(path, backup) != 0) return errno == ENOENT || errno == ENOTDIR ? 0 : -1;
    const int32_t others = rewrite(backup, path, appName);
    if (others != -1) {
        std::remove(backup);
    } else {
        restore(backup, path);
    }
    return others;
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

int32_t unregisterApplication(const char* installPath, const char* appName) {
    char path[kPathSize];
    char backup[kPathSize];
    const bool formed = formatPath(path, "%s/appregistry.dat", installPath) &&
                        formatPath(backup, "%s/appregistry.dat.bak", installPath);
    const int32_t others = formed ? replace(path, backup, appName) : -1;
    if (others == -1) _vn_setLastError(INSTALL_ERROR_DISK);
    return others;
}

}  // namespace velnor
