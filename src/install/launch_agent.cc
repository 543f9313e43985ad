#include "install/launch_agent.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

#include "install/launch_agent_files.h"
#include "support/files.h"
#include "support/log_file.h"
#include "support/owned.h"
#include "support/paths.h"
#include "support/product.h"
#include "support/shell.h"

namespace velnor {
namespace {

constexpr char kFunction[] = "_vn_mac_addStartupItem";

struct AgentPaths {
    char directory[kPathSize];
    char propertyList[kPathSize];

    bool form() {
        const char* home = homeVariable();
        char buffer[4096];
        passwd entry{};
        passwd* user = nullptr;
        if (home == nullptr) {
            getpwuid_r(getuid(), &entry, buffer, sizeof buffer, &user);
            home = user != nullptr ? user->pw_dir : nullptr;
        }
        return home != nullptr && *home == '/' &&
               formatPath(directory, "%s/Library/LaunchAgents", home) &&
               formatPath(propertyList, "%s/com.velnor.client.plist", directory);
    }
};

// A command's own status counts for nothing, but it has to be run.
InstallResult resultOf(int status) {
    return status != kNotRun ? INSTALL_ERROR_OK : INSTALL_ERROR_INSUFFICIENTMEMORY;
}

InstallResult writeLoader(const char* installPath) {
    char path[kPathSize];
    if (!formatPath(path, "%s/%s", installPath, kLoaderFile)) return INSTALL_ERROR_PLATFORM;
    File file = openFile(path, "w");
    if (!file) {
        VN_LOG_ERROR(kFunction, "Failed to create loader script.");
        return INSTALL_ERROR_PLATFORM;
    }
    if (!writeAndClose(std::move(file), kLoaderScript, sizeof kLoaderScript - 1)) {
        VN_LOG_ERROR(kFunction, "Failed to write loader script correctly.");
    }
    return resultOf(runShell("chmod 755 %s", path));
}

InstallResult writePropertyList(const AgentPaths& paths) {
    File file = openFile(paths.propertyList, "w");
    if (!file) {
        mkdir(paths.directory, 0755);
        file = openFile(paths.propertyList, "w");
    }
    if (!file) {
        VN_LOG_ERROR(kFunction, "Failed to create loader plist.");
        return INSTALL_ERROR_PLATFORM;
    }
    if (!writeAndClose(std::move(file), kAgentPropertyList, sizeof kAgentPropertyList - 1)) {
        VN_LOG_ERROR(kFunction, "Failed to write loader plist correctly.");
    }
    return INSTALL_ERROR_OK;
}

}  // namespace

InstallResult addStartupItem(const char* installPath) {
    AgentPaths paths;
    if (!paths.form()) {
        VN_LOG_ERROR(kFunction, "Failed to create loader plist.");
        return INSTALL_ERROR_PLATFORM;
    }
    const InstallResult loader = writeLoader(installPath);
    return loader == INSTALL_ERROR_OK ? writePropertyList(paths) : loader;
}

InstallResult loadAgent() {
    AgentPaths paths;
    if (!paths.form()) return INSTALL_ERROR_START;
    const OwnedText path(shellWord(paths.propertyList));
    if (!path) return INSTALL_ERROR_INSUFFICIENTMEMORY;
    // For the graphical login session first; the plain form is for sessions without one.
    return resultOf(runShell("launchctl load -S Aqua %s 2>/dev/null || launchctl load %s",
                             path.get(), path.get()));
}

InstallResult unloadAgent() {
    AgentPaths paths;
    if (!paths.form()) return INSTALL_ERROR_STOP;
    const OwnedText path(shellWord(paths.propertyList));
    if (!path) return INSTALL_ERROR_INSUFFICIENTMEMORY;
    return resultOf(runShell("launchctl unload %s", path.get()));
}

}  // namespace velnor

int32_t _vn_mac_removeStartupItem() {
    velnor::AgentPaths paths;
    const velnor::OwnedText path(paths.form() ? velnor::shellWord(paths.propertyList) : nullptr);
    return path ? velnor::runShell("rm -f %s", path.get()) : velnor::kNotRun;
}
