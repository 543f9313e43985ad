#include "install/uninstall.h"

#include <sys/stat.h>

#include "api/result/last_error.h"
#include "detect/euc_utils.h"
#include "install/client_ini.h"
#include "install/launch_agent.h"
#include "install/records.h"
#include "net/socket_http.h"
#include "support/files.h"
#include "support/log_file.h"
#include "support/owned.h"
#include "support/paths.h"
#include "support/product.h"
#include "support/shell.h"
#include "support/text.h"
#include "support/text_extraction.h"
#include "velnor/capi.h"

namespace velnor {
namespace {

constexpr int64_t kDefaultTimeout = 10;
// The "~" is for the shell.
constexpr char kPreferencePane[] = "~/Library/PreferencePanes/VelnorCorvane.prefPane";

OwnedText readIni(const char* installPath) {
    char path[kPathSize];
    struct stat entry {};
    if (!formatPath(path, "%s/%s", installPath, kClientIniFile) || stat(path, &entry) != 0 ||
        !S_ISREG(entry.st_mode)) {
        return {};
    }
    const File file = openFile(path, "r");
    return file ? readText(file.get(), static_cast<uint32_t>(entry.st_size)) : OwnedText();
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
    if (_vn_snprintf(url.out(), 0,
                     "%sapi?function=getClientAttributes&cid=1&apiversion=%s&complete", kClientUrl,
                     kApiVersion) == 0) {
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
    if (!pingClient() || _vn_snprintf(url.out(), 0, "%sapi?function=uninstall&cid=1%s", kClientUrl,
                                      removing ? "&removing=true" : "") == 0) {
        return;
    }
    const OwnedText reply(_vn_downloadURL(userAgent, url.get(), nullptr, nullptr, nullptr));
    if (reply) awaitFarewell(userAgent, timeout);
}

int32_t fail(InstallResult code) {
    _vn_setLastError(code);
    return 0;
}

// What cannot be deleted stays; the client is gone all the same. But no deletion may fail to be
// run.
int32_t removeClient(const char* installPath, bool keepIdentity) {
    if (!_vn_stop()) return fail(INSTALL_ERROR_STOP);
    bool tried = _vn_mac_removeStartupItem() != kNotRun;
    tried &= _vn_recursiveDelete(installPath, keepIdentity) != kNotRun;
    // Without a home, the shell would find the system's folder, or an option, under "~".
    if (homeVariable() != nullptr) {
        tried &= _vn_recursiveDelete(kPreferencePane, false) != kNotRun;
    }
    return tried ? 1 : fail(INSTALL_ERROR_INSUFFICIENTMEMORY);
}

}  // namespace
}  // namespace velnor

int32_t _vn_uninstall(const char* appName, bool keepIdentity) {
    char installPath[velnor::kPathSize];
    if (_vn_getInstallPath(installPath, sizeof installPath) == 0) {
        return velnor::fail(INSTALL_ERROR_INTERNAL);
    }
    const int32_t others =
        appName != nullptr ? velnor::unregisterApplication(installPath, appName) : 0;
    velnor::tellClient(appName != nullptr ? appName : "(force)", others == 0,
                       velnor::timeoutOf(installPath));
    // After the talk with the client, which may leave a code of its own.
    if (others == -1) return velnor::fail(INSTALL_ERROR_DISK);
    return others > 0 ? 1 : velnor::removeClient(installPath, keepIdentity);
}

int32_t _vn_recursiveDelete(const char* path, bool keepIdentity) {
    if (!keepIdentity) return velnor::runShell("rm -rf %.1017s", path);
    char command[velnor::kPathSize];
    // The log's name where one expects the folder, and the folder where one expects the log's name:
    // fixed by the interface, and so the install directory stays whole, and the identity in it.
    const bool formed = velnor::formatPath(
        command, "find %s/* \\( ! -iname \"%s\" -and ! -iname \"%s\" \\) -exec rm -rf '{}' +",
        velnor::kLogFileName, path, velnor::kGuidFile);
    return formed ? velnor::runShell("%s", command) : velnor::kNotRun;
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
