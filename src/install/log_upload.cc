// Preparing the log's PUT request.
#include "install/log_upload.h"

#include <sys/stat.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "net/http_attempts.h"
#include "net/http_url.h"
#include "net/url_text.h"
#include "support/files.h"
#include "support/format.h"
#include "support/log_file.h"
#include "support/owned.h"
#include "support/paths.h"

using velnor::AttemptPolicy;
using velnor::File;
using velnor::Next;
using velnor::OwnedText;

namespace {

constexpr char kFunction[] = "_vn_uploadLogs";
constexpr size_t kTargetSize = 256;

// Without end while nothing answers, deliberately: the maker is to see every installation, those
// above all that had trouble with the network.
constexpr AttemptPolicy kPolicy{
    .noStream = Next::GiveUp,
    .noAnswer = Next::DirectAgain,
    .brokenAnswer = Next::GiveUp,
    .noCredentials = Next::GiveUp,
    .refusal = Next::DirectOnce,
    .asksProxyOnce = true,
};

bool isUploadUrl(const char* url) {
    if (url == nullptr || *url == '\0') {
        VN_LOG_ERROR(kFunction, "No upload URL");
        return false;
    }
    if (!velnor::isHttpUrl(url)) {
        VN_LOG_ERROR(kFunction, "Not a valid upload URL: %s", url);
        return false;
    }
    if (!velnor::isHttpUrlWithPath(url)) {
        VN_LOG_ERROR(kFunction, "Not a valid upload URL, has no path: %s", url);
        return false;
    }
    return true;
}

// Size of the file in bytes; 0 when the system does not say.
off_t sizeOf(const char* path) {
    struct stat entry {};
    if (stat(path, &entry) == 0) return entry.st_size;
    VN_LOG_ERROR(kFunction, "Could not get the size of log file; Not uploading the file.");
    return 0;
}

OwnedText readLog(const char* path) {
    const File file = velnor::openFile(path, "rb");
    if (!file) {
        VN_LOG_ERROR(kFunction, "Unable to open log file: %s", path);
        return {};
    }
    const off_t size = sizeOf(path);
    if (size == 0) {
        VN_LOG_ERROR(kFunction, "Unable to get the file length for the log file: %s", path);
        return {};
    }
    OwnedText text = velnor::readText(file.get(), static_cast<uint32_t>(size));
    if (!text) {
        // "buufer" is part of the text; whoever searches the logs for it searches for it so.
        VN_LOG_ERROR(kFunction,
                     "Unable to allocate memory for buufer to read the log file. Not uploading the "
                     "log files");
    }
    return text;
}

// Forms the URL that the log gets in `target`, cut off when it is too long.
bool formTarget(const char* url, const char* guid, char* target) {
    OwnedText copy;
    char* host = nullptr;
    int32_t port = 0;
    char* path = nullptr;
    if (!_vn_getHostName(url, copy.out(), &host, &port, &path)) {
        VN_LOG_ERROR(kFunction, "Unable to get host name from the URL: %s", url);
        return false;
    }
    // A URL that ends in the "/" behind its host gets a second one: the path is empty then, and
    // does not end in one.
    const size_t length = std::strlen(path);
    const bool endsInSlash = length > 0 && path[length - 1] == '/';
    OwnedText name;
    if (_vn_snprintf(name.out(), 0, endsInSlash ? "%s.log" : "/%s.log", guid) == 0) return false;
    std::snprintf(target, kTargetSize, "%s%s", url, name.get());
    return true;
}

bool put(const char* target, std::string_view body) {
    if (!velnor::isUrlText(target)) return false;
    const std::array<velnor::platform::HttpHeader, 1> headers{{{"User-Agent", "Installer"}}};
    return velnor::sendInAttempts(
        {.method = "PUT", .url = target, .headers = headers, .body = body}, kPolicy, nullptr);
}

}  // namespace

void _vn_uploadLogs(const char* uploadUrl, const char* guid) {
    const OwnedText path(_vn_getInstallPathForFile(kLogFileName));
    if (!path) return;
    VN_LOG_INFO(kFunction, "Uploading the log file %s to %s", path.get(),
                uploadUrl != nullptr ? uploadUrl : "(null)");
    if (!isUploadUrl(uploadUrl)) return;
    const OwnedText text = readLog(path.get());
    if (!text) return;
    char target[kTargetSize];
    if (!formTarget(uploadUrl, guid, target)) return;
    // As a text, so that it ends at the first NUL byte, should the log hold one.
    if (!put(target, text.get())) {
        // The number is 0 whatever the server said, deliberately: it is part of the text.
        VN_LOG_ERROR(kFunction, "Could not upload logs to %s. Got error %d", uploadUrl, 0);
    }
}
