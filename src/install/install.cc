#include <sys/stat.h>

#include <array>
#include <cstddef>
#include <cstring>

#include "api/result/last_error.h"
#include "detect/euc_utils.h"
#include "install/client_ini.h"
#include "install/detail.h"
#include "install/launch_agent.h"
#include "install/log_upload.h"
#include "install/records.h"
#include "install/verified_download.h"
#include "net/system_downloader.h"
#include "support/files.h"
#include "support/log_file.h"
#include "support/owned.h"
#include "support/paths.h"
#include "support/product.h"
#include "support/shell.h"
#include "support/text.h"
#include "velnor/capi.h"
#include "velnor_deployment.h"

static_assert(sizeof(void*) != 8 ||
              (sizeof(InstallContext) == 48 && offsetof(InstallContext, progress) == 8 &&
               offsetof(InstallContext, errorDetail) == 16 &&
               offsetof(InstallContext, reserved) == 24));

namespace velnor {
namespace {

constexpr char kFunction[] = "vn_install";
// Pings after the one that follows the start at once, a second apart.
constexpr int kFurtherPings = 120;

// One run of vn_install. Every step returns false with the last error set when it ends the run.
class Installation {
  public:
    Installation(const char* appName, int32_t cid, const char* eula, InstallContext* context)
        : appName_(appName), cid_(cid), eula_(eula), context_(context) {}

    bool run() {
        const bool installed = runSteps();
        // The maker sees every installation that has come as far as knowing where to send its log.
        if (logUploadUrl_) uploadLog();
        return installed;
    }

  private:
    bool runSteps() {
        report(5);
        if (_vn_getInstallPath(installPath_, sizeof installPath_) == 0) return false;
        report(10);
        if (pingClient()) {
            acceptEula();
            return registerApplication();
        }
        return fetchConfiguration() && readConfiguration() && downloadArtifacts() &&
               prepareClient() && startClient() && registerApplication();
    }

    // The result stands before the upload and is not touched by it.
    void uploadLog() const {
        const uint32_t code = _vn_getLastError();
        _vn_uploadLogs(logUploadUrl_.get(), guid_.get());
        _vn_setLastError(code);
    }

    void report(uint32_t percentage) const {
        if (context_ != nullptr) context_->progress(percentage, 0);
    }

    // The record is a courtesy to the application; an installation does not fail for it.
    void acceptEula() const {
        if (eula_ != nullptr) vn_acceptEULA(cid_, eula_, 0);
    }

    static bool fail(InstallResult code) {
        _vn_setLastError(code);
        return false;
    }

    bool failWithDetail(InstallResult code, const char* detail) const {
        setDetailError(context_, code, detail);
        return false;
    }

    bool fetchConfiguration() {
        mkdir(installPath_, 0777);
        VN_LOG_INFO(kFunction, "Starting Installation");
        guid_ = OwnedText(_vn_generateGuid());
        if (!guid_) return fail(INSTALL_ERROR_INSUFFICIENTMEMORY);
        userAgent_ = installerUserAgent(appName_);
        if (!userAgent_) return false;
        report(15);
        const OwnedText url = configurationUrl(guid_.get());
        if (!url) return false;
        ini_ = OwnedText(
            _vn_downloadVelnorURL(userAgent_.get(), url.get(), &iniSize_, nullptr, 15, 25));
        if (ini_ && iniSize_ != 0) return true;
        VN_LOG_ERROR(kFunction, "Failed in downloading client.ini");
        return failWithDetail(INSTALL_ERROR_DOWNLOAD_FAILURE, url.get());
    }

    bool readConfiguration() {
        VN_LOG_INFO(kFunction, "Downloaded client.ini");
        switch (iniValue(ini_.get(), kLogUploadUrlKey, &logUploadUrl_)) {
            case Found::Here:
                return saveConfiguration() && nameClient();
            case Found::NoMemory:
                return fail(INSTALL_ERROR_INSUFFICIENTMEMORY);
            default:
                VN_LOG_ERROR(kFunction, "Log Server address not found in client.ini");
                return fail(INSTALL_ERROR_INI);
        }
    }

    bool saveConfiguration() const {
        char path[kPathSize];
        if (!formatPath(path, "%s/%s", installPath_, kClientIniFile)) return false;
        if (!_vn_writeFile(path, ini_.get(), iniSize_, "wb")) {
            VN_LOG_ERROR(kFunction, "Failed in saving client.ini");
            return failWithDetail(INSTALL_ERROR_DISK_WRITE, path);
        }
        // The trailing blank is fixed by the interface: readers of logs search for the whole text.
        VN_LOG_INFO(kFunction, "Saved client.ini at location %s ", path);
        return true;
    }

    bool nameClient() {
        const Found found = iniValue(ini_.get(), kClientUrlKey, &clientUrl_);
        if (found == Found::NoMemory) return fail(INSTALL_ERROR_INSUFFICIENTMEMORY);
        if (found == Found::Absent) {
            VN_LOG_ERROR(kFunction, "Binary path not found in client.ini");
            return failWithDetail(INSTALL_ERROR_INI_PATH_NOT_FOUND, "MacOSClientURL");
        }
        clientFile_ = fileNameOf(clientUrl_.get());
        if (clientFile_ != nullptr) return true;
        VN_LOG_ERROR(kFunction, "Unable to parse name in %s", clientUrl_.get());
        return failWithDetail(INSTALL_ERROR_INI_PARSE_ERR, clientUrl_.get());
    }

    bool downloadArtifacts() const {
        struct Download {
            const char* urlKey;
            const char* fileName;
            const char* signatureKey;
            uint32_t progressFrom;
            uint32_t progressTo;
        };
        const std::array<Download, 3> downloads{{
            {kClientUrlKey, clientFile_, kClientSignatureKey, 25, 70},
            {kUiToolUrlKey, kUiToolArchive, kUiToolSignatureKey, 70, 75},
            {kUninstallerUrlKey, kUninstallerArchive, kUninstallerSignatureKey, 75, 80},
        }};
        const bool rewrite = isRewriteOn(ini_.get());
        for (const Download& next : downloads) {
            if (_vn_downloadAndWrite(ini_.get(), userAgent_.get(), context_, rewrite, next.urlKey,
                                     next.fileName, next.signatureKey, next.progressFrom,
                                     next.progressTo) != INSTALL_ERROR_OK) {
                return false;
            }
        }
        return true;
    }

    bool prepareClient() const {
        report(80);
        acceptEula();
        const OwnedText clientWord(shellWord(clientFile_));
        // A client that is not executable or not loaded would be waited for in vain.
        if (!clientWord || runShell("chmod 755 %s/%s", installPath_, clientWord.get()) == kNotRun) {
            return fail(INSTALL_ERROR_INSUFFICIENTMEMORY);
        }
        const InstallResult added = addStartupItem(installPath_);
        if (added != INSTALL_ERROR_OK) {
            VN_LOG_ERROR(kFunction, "Error in installing the client");
            return fail(added);
        }
        VN_LOG_INFO(kFunction, "Client Installed");
        report(85);
        return true;
    }

    bool startClient() const {
        const InstallResult started = loadAgent();
        if (started != INSTALL_ERROR_OK) {
            VN_LOG_ERROR(kFunction, "Error in starting the client");
            return fail(started);
        }
        VN_LOG_INFO(kFunction, "Waiting for a response from client");
        bool answers = pingClient() != 0;
        for (int ping = 0; !answers && ping < kFurtherPings; ++ping) {
            _vn_sleep(1);
            answers = pingClient() != 0;
        }
        if (answers) return true;
        VN_LOG_ERROR(kFunction, "Waited enough for client; no response, exiting");
        VN_LOG_INFO(kFunction, "Network Statistics");
        // Goes into the log itself: who else holds the port is the first question.
        runShell("netstat -an -p tcp | %s \"%d\" >> \"%s/%s\"", "grep", kClientPort, installPath_,
                 kLogFileName);
        return fail(INSTALL_ERROR_CLIENT_NOTRESPONDING);
    }

    bool registerApplication() const {
        report(90);
        const Registration registration =
            velnor::registerApplication(installPath_, appName_, context_);
        if (registration == Registration::Failed) return false;
        const bool isNew = registration == Registration::Registered;
        if (isNew) report(95);
        VN_LOG_INFO(kFunction, "Successfully installed the client");
        // An application that is there already leaves the last error as it was.
        if (isNew) _vn_setLastError(INSTALL_ERROR_OK);
        return true;
    }

    const char* appName_;
    int32_t cid_;
    const char* eula_;
    InstallContext* context_;
    char installPath_[kPathSize] = {};
    OwnedText guid_;
    OwnedText userAgent_;
    OwnedText logUploadUrl_;
    OwnedText ini_;
    uint32_t iniSize_ = 0;
    OwnedText clientUrl_;
    const char* clientFile_ = nullptr;  // within clientUrl_
};

}  // namespace
}  // namespace velnor

int32_t vn_install(const char* appName, int32_t cid, const char* eula, InstallContext* context) {
    if (appName == nullptr || (context != nullptr && context->progress == nullptr)) {
        _vn_setLastError(INSTALL_ERROR_INVALIDARGUMENT);
        return -1;
    }
    _vn_setLastError(INSTALL_ERROR_INTERNAL);
    return velnor::Installation(appName, cid, eula, context).run() ? 0 : -1;
}
