// Writing the launch agent's files and running launchctl.
#include "install/launch_agent.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <utility>

#include "install/launch_agent_files.h"
#include "support/files.h"
#include "support/log_file.h"
#include "support/owned.h"
#include "support/paths.h"
#include "support/shell.h"

using velnor::kPathSize;
using velnor::OwnedText;

namespace {

constexpr char kFunction[] = "_vn_mac_addStartupItem";

// Calls `use` with the home directory; false when there is none.
template <class Use>
bool withHome(Use use) {
    const char* home = std::getenv("HOME");
    if (home != nullptr && *home != '\0') return use(home);
    char buffer[4096];
    passwd entry{};
    passwd* found = nullptr;
    getpwuid_r(getuid(), &entry, buffer, sizeof buffer, &found);
    return found != nullptr && found->pw_dir != nullptr && use(found->pw_dir);
}

struct AgentPaths {
    char directory[kPathSize];
    char propertyList[kPathSize];

    bool form() {
        return withHome([this](const char* home) {
            return velnor::formatPath(directory, "%s/Library/LaunchAgents", home) &&
                   velnor::formatPath(propertyList, "%s/com.velnor.client.plist", directory);
        });
    }
};

bool writeLoader(const char* installPath) {
    char path[kPathSize];
    if (!velnor::formatPath(path, "%s/loader.pl", installPath)) return false;
    velnor::File file = velnor::openFile(path, "w");
    if (!file) {
        VN_LOG_ERROR(kFunction, "Failed to create loader script.");
        return false;
    }
    if (!velnor::writeAndClose(std::move(file), velnor::kLoaderScript,
                               sizeof velnor::kLoaderScript - 1)) {
        VN_LOG_ERROR(kFunction, "Failed to write loader script correctly.");
    }
    velnor::runShell("chmod 755 %s", path);
    return true;
}

bool writePropertyList(const AgentPaths& paths) {
    velnor::File file = velnor::openFile(paths.propertyList, "w");
    if (!file) {
        mkdir(paths.directory, 0755);
        file = velnor::openFile(paths.propertyList, "w");
    }
    if (!file) {
        VN_LOG_ERROR(kFunction, "Failed to create loader plist.");
        return false;
    }
    if (!velnor::writeAndClose(std::move(file), velnor::kAgentPropertyList,
                               sizeof velnor::kAgentPropertyList - 1)) {
        VN_LOG_ERROR(kFunction, "Failed to write loader plist correctly.");
    }
    return true;
}

// The property list's path as a word for the shell; empty when it cannot be formed.
OwnedText propertyListWord() {
    AgentPaths paths;
    return OwnedText(paths.form() ? velnor::shellWord(paths.propertyList) : nullptr);
}

}  // namespace

bool _vn_mac_addStartupItem(const char* installPath) {
    AgentPaths paths;
    if (!paths.form()) {
        VN_LOG_ERROR(kFunction, "Failed to create loader plist.");
        return false;
    }
    return writeLoader(installPath) && writePropertyList(paths);
}

int32_t _vn_start() {
    const OwnedText path = propertyListWord();
    if (!path) return 0;
    // For the graphical login session first; the plain form is for sessions without one.
    velnor::runShell("launchctl load -S Aqua %s 2>/dev/null || launchctl load %s", path.get(),
                     path.get());
    return 1;
}

int32_t _vn_stop() {
    const OwnedText path = propertyListWord();
    if (!path) return 0;
    velnor::runShell("launchctl unload %s", path.get());
    return 1;
}

int32_t _vn_mac_removeStartupItem() {
    const OwnedText path = propertyListWord();
    return path ? velnor::runShell("rm -f %s", path.get()) : -1;
}
