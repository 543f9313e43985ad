#include "install/verified_download.h"

#include <fcntl.h>
#include <unistd.h>

#include <climits>
#include <cstring>
#include <utility>

#include "api/result/last_error.h"
#include "install/client_ini.h"
#include "install/detail.h"
#include "net/system_downloader.h"
#include "support/files.h"
#include "support/log_file.h"
#include "support/owned.h"
#include "support/paths.h"
#include "support/shell.h"
#include "support/text.h"

namespace velnor {
namespace {

constexpr char kFunction[] = "_vn_downloadAndWrite";

bool isOptional(const char* urlKey) { return std::strcmp(urlKey, kUninstallerUrlKey) == 0; }

bool isArchive(const char* urlKey) {
    return isOptional(urlKey) || std::strcmp(urlKey, kUiToolUrlKey) == 0;
}

// The process's current directory, returned to when this goes.
class DirectoryKeeper {
  public:
    DirectoryKeeper() : fd_(open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        // One that may be entered and not read has only its name.
        if (fd_ == -1 && getcwd(path_, sizeof path_) == nullptr) path_[0] = '\0';
    }
    ~DirectoryKeeper() {
        static_cast<void>((fd_ != -1 ? fchdir(fd_) : chdir(path_)) == 0);
        if (fd_ != -1) close(fd_);
    }
    DirectoryKeeper(const DirectoryKeeper&) = delete;
    DirectoryKeeper& operator=(const DirectoryKeeper&) = delete;

  private:
    int fd_;
    char path_[PATH_MAX];
};

// False with code 4 when the command could not be run. What tar says counts for nothing.
bool unpack(const char* installPath, const char* fileName) {
    const OwnedText word(shellWord(fileName));
    if (!word) return false;
    const DirectoryKeeper keeper;
    // Never in another directory: an archive could overwrite what lies there.
    if (chdir(installPath) != 0) return true;
    if (runShell("/usr/bin/tar -zxf %s", word.get()) == kNotRun) {
        _vn_setLastError(INSTALL_ERROR_INSUFFICIENTMEMORY);
        return false;
    }
    VN_LOG_INFO(kFunction, "Untarred %s at location: %s", fileName, installPath);
    return true;
}

// One artifact on its way. Every step returns false with the last error set when it ends the way.
struct Artifact {
    const char* iniText;
    const char* userAgent;
    InstallContext* context;
    const char* urlKey;
    const char* fileName;
    const char* sigKey;
    OwnedText url;
    OwnedText data;
    uint32_t size = 0;

    // An optional artifact that is not named ends the way with success.
    bool findUrl(bool rewrite) {
        const Found found = iniValue(iniText, urlKey, &url);
        if (found == Found::NoMemory) return false;
        if (isMissing(url) && isOptional(urlKey)) {
            _vn_setLastError(INSTALL_ERROR_OK);
            return false;
        }
        if (isMissing(url)) {
            VN_LOG_ERROR(kFunction, "Path %s not found in client.ini", urlKey);
            setDetailError(context, INSTALL_ERROR_INI_PATH_NOT_FOUND, urlKey);
            return false;
        }
        if (rewrite) url = rewriteToContentHost(url.get());
        return static_cast<bool>(url);
    }

    bool download(uint32_t progressFrom, uint32_t progressTo) {
        data = OwnedText(
            _vn_downloadVelnorURL(userAgent, url.get(), &size, context, progressFrom, progressTo));
        if (data && size != 0) {
            VN_LOG_INFO(kFunction, "Downloaded %s", url.get());
            return true;
        }
        VN_LOG_ERROR(kFunction, "Error in downloading %s", url.get());
        setDetailError(context, INSTALL_ERROR_DOWNLOAD_FAILURE, url.get());
        return false;
    }

    bool verify() {
        OwnedText signature;
        const Found found = iniValue(iniText, sigKey, &signature);
        if (found == Found::NoMemory) return false;
        if (isMissing(signature)) {
            VN_LOG_ERROR(kFunction, "Binary Signature %s not found in client.ini", sigKey);
            setDetailError(context, INSTALL_ERROR_INI_PATH_NOT_FOUND, sigKey);
            return false;
        }
        if (_vn_checkAgainstSignature(signature.get(), url.get(), data.get(), size)) {
            VN_LOG_INFO(kFunction, "Hash verified for %s", url.get());
            return true;
        }
        VN_LOG_ERROR(kFunction, "Hash of downloaded binary %s does not match with the signature",
                     fileName);
        setDetailError(context, INSTALL_ERROR_VERIFICATION_FAILURE, url.get());
        return false;
    }

    bool save(const char* installPath) {
        char path[kPathSize];
        // A name too long for the path buffer is one that the disk refuses as well.
        const bool fits = formatPath(path, "%s/%s", installPath, fileName);
        if (fits && _vn_writeFile(path, data.get(), size, "wb")) {
            VN_LOG_INFO(kFunction, "Saved binary %s at location: %s", fileName, path);
            return true;
        }
        VN_LOG_ERROR(kFunction, "Error in saving the binary %s at %s", fileName, path);
        setDetailError(context, INSTALL_ERROR_DISK_WRITE, path);
        return false;
    }
};

}  // namespace
}  // namespace velnor

int32_t _vn_downloadAndWrite(const char* iniText, const char* userAgent, InstallContext* context,
                             bool rewrite, const char* urlKey, const char* fileName,
                             const char* sigKey, uint32_t progressFrom, uint32_t progressTo) {
    if (iniText == nullptr || userAgent == nullptr || urlKey == nullptr || fileName == nullptr ||
        sigKey == nullptr) {
        _vn_setLastError(INSTALL_ERROR_INVALIDARGUMENT);
        return INSTALL_ERROR_INVALIDARGUMENT;
    }
    char installPath[velnor::kPathSize];
    if (_vn_getInstallPath(installPath, sizeof installPath) == 0) {
        return static_cast<int32_t>(_vn_getLastError());
    }
    velnor::Artifact artifact{iniText, userAgent, context, urlKey, fileName, sigKey, {}, {}};
    if (artifact.findUrl(rewrite) && artifact.download(progressFrom, progressTo) &&
        artifact.verify() && artifact.save(installPath) &&
        (!velnor::isArchive(urlKey) || velnor::unpack(installPath, fileName))) {
        _vn_setLastError(INSTALL_ERROR_OK);
    }
    return static_cast<int32_t>(_vn_getLastError());
}
