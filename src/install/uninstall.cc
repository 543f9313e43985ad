// The uninstall sequence.
#include "install/uninstall.h"

#include <sys/stat.h>

#include <cstdlib>

#include "api/client_interface.h"
#include "api/last_error.h"
#include "detect/euc_utils.h"
#include "install/client_ini.h"
#include "install/launch_agent.h"
#include "install/registry.h"
#include "net/socket_http.h"
#include "support/files.h"
#include "support/format.h"
#include "support/log_file.h"
#include "support/owned.h"
#include "support/paths.h"
#include "support/shell.h"
#include "support/text_extraction.h"
#include "support/wait.h"
#include "velnor/capi.h"

using velnor::File;
using velnor::kPathSize;
using velnor::OwnedText;

namespace {

constexpr int64_t kDefaultTimeout = 10;
// The "~" is for the shell.
constexpr char kPreferencePane[] = "~/Library/PreferencePanes/VelnorCorvane.prefPane";

OwnedText readIni(const char* installPath) {
    char path[kPathSize];
    struct stat entry {};
    if (!velnor::formatPath(path, "%s/client.ini", installPath) || stat(path, &entry) != 0 ||
        !S_ISREG(entry.st_mode)) {
        return {};
    }
    const File file = velnor::openFile(path, "r");
    return file ? velnor::readText(file.get(), static_cast<uint32_t>(entry.st_size)) : OwnedText();
}

// How many times, a second apart, the client is asked whether it has said its farewell.
int64_t timeoutOf(const char* installPath) {
    const OwnedText ini = readIni(installPath);
    int64_t seconds = 0;
    const bool named = ini && _vn_pluckInt(ini.get(), kUninstallTimeoutKey, &seconds);
    return named && seconds >= 1 ? seconds : kDefaultTimeout;
}

// Waits until the client has told its servers, it has gone, or it has been asked often enough.
void awaitFarewell(const char* userAgent, int64_t timeout) {
    OwnedText url;
    if (_vn_snprintf(
            url.out(), 0,
            "http://127.0.0.1:%d/api?function=getClientAttributes&cid=1&apiversion=%s&complete",
            velnor::kClientPort, velnor::kApiVersion) == 0) {
        return;
    }
    for (int64_t poll = 0; poll < timeout; ++poll) {
        const OwnedText reply(_vn_downloadURL(userAgent, url.get(), nullptr, nullptr, nullptr));
        if (!reply || _vn_pluckJSONBool(reply.get(), "uninstallMsgSent")) return;
        _vn_sleep(1);
    }
}

void tellClient(const char* userAgent, bool removing, int64_t timeout) {
    OwnedText url;
    if (!pingClient() ||
        _vn_snprintf(url.out(), 0, "http://127.0.0.1:%d/api?function=uninstall&cid=1%s",
                     velnor::kClientPort, removing ? "&removing=true" : "") == 0) {
        return;
    }
    const OwnedText reply(_vn_downloadURL(userAgent, url.get(), nullptr, nullptr, nullptr));
    if (reply) awaitFarewell(userAgent, timeout);
}

bool fail(InstallResult code) {
    _vn_setLastError(code);
    return false;
}

// What cannot be deleted stays; the client is gone all the same.
bool removeClient(const char* installPath, bool keepIdentity) {
    if (!_vn_stop()) return fail(INSTALL_ERROR_STOP);
    _vn_mac_removeStartupItem();
    _vn_recursiveDelete(installPath, keepIdentity);
    // With an empty HOME, the shell would find the system's folder under "~".
    const char* home = std::getenv("HOME");
    if (home != nullptr && *home != '\0') _vn_recursiveDelete(kPreferencePane, false);
    return true;
}

bool uninstall(const char* appName, bool keepIdentity) {
    char installPath[kPathSize];
    if (_vn_getInstallPath(installPath, sizeof installPath) == 0) {
        return fail(INSTALL_ERROR_INTERNAL);
    }
    const int32_t others =
        appName != nullptr ? velnor::unregisterApplication(installPath, appName) : 0;
    tellClient(appName != nullptr ? appName : "(force)", others == 0, timeoutOf(installPath));
    // Set once more: the talk with the client may have left a code of its own.
    if (others == -1) return fail(INSTALL_ERROR_DISK);
    return others > 0 || removeClient(installPath, keepIdentity);
}

}  // namespace

int32_t _vn_uninstall(const char* appName, bool keepIdentity) {
    return uninstall(appName, keepIdentity) ? 1 : 0;
}

int32_t _vn_recursiveDelete(const char* path, bool keepIdentity) {
    if (!keepIdentity) return velnor::runShell("rm -rf %.1017s", path);
    char command[kPathSize];
    // The log's name where one expects the folder, and the folder where one expects the log's name,
    // deliberately: so the install directory stays whole, and the identity in it.
    const bool formed = velnor::formatPath(
        command, "find %s/* \\( ! -iname \"%s\" -and ! -iname \"guid.ini\" \\) -exec rm -rf '{}' +",
        kLogFileName, path);
    return formed ? velnor::runShell("%s", command) : -1;
}

int32_t vn_uninstall(const char* appName, uint32_t flags) {
    if (appName == nullptr) {
        _vn_setLastError(INSTALL_ERROR_INVALIDARGUMENT);
        return -1;
    }
    _vn_setLastError(INSTALL_ERROR_INTERNAL);
    if (!_vn_uninstall(appName, flags != 0)) return -1;
    _vn_setLastError(INSTALL_ERROR_OK);
    return 0;
}
