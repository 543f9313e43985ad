#include "install/log_upload.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <thread>

#include "net/http_attempts.h"
#include "support/files.h"
#include "support/log_file.h"
#include "support/owned.h"
#include "support/paths.h"
#include "support/text.h"
#include "support/url.h"

namespace velnor {
namespace {

constexpr char kFunction[] = "_vn_uploadLogs";
constexpr size_t kTargetSize = 256;

constexpr std::chrono::milliseconds kFirstPause{50};
constexpr std::chrono::milliseconds kLongestPause{30000};

bool isUploadUrl(const char* url) {
    if (url == nullptr || *url == '\0') {
        VN_LOG_ERROR(kFunction, "No upload URL");
        return false;
    }
    if (!isHttpUrl(url)) {
        VN_LOG_ERROR(kFunction, "Not a valid upload URL: %s", url);
        return false;
    }
    if (!isHttpUrlWithPath(url)) {
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
    const File file = openFile(path, "rb");
    if (!file) {
        VN_LOG_ERROR(kFunction, "Unable to open log file: %s", path);
        return {};
    }
    const off_t size = sizeOf(path);
    if (size == 0) {
        VN_LOG_ERROR(kFunction, "Unable to get the file length for the log file: %s", path);
        return {};
    }
    OwnedText text = readText(file.get(), static_cast<uint32_t>(size));
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
    if (!isWebUrl(target)) return false;
    const std::array<platform::HttpHeader, 1> headers{{{"User-Agent", "Installer"}}};
    HttpAttempts attempts({.method = "PUT", .url = target, .headers = headers, .body = body},
                          Keep::Status);
    auto pause = kFirstPause;
    for (Way way = Way::Proxied;; way = Way::Direct) {
        const Answer answer = attempts.send(way);
        if (answer.status == kStatusOk) return true;
        if (answer.ending == Ending::NoAnswer) {
            // Without end, which is fixed by the interface: the maker is to see every installation,
            // those above all that had no network. A refused connection fails at once, and without
            // a pause its repetition would fill a core. The pause grows, so that many machines do
            // not beat a server that is down.
            std::this_thread::sleep_for(pause);
            pause = std::min(2 * pause, kLongestPause);
        } else if (answer.ending != Ending::Answered || way == Way::Direct) {
            // An answer that is none will be none the next time.
            return false;
        }
    }
}

}  // namespace
}  // namespace velnor

void _vn_uploadLogs(const char* uploadUrl, const char* guid) {
    const velnor::OwnedText path(_vn_getInstallPathForFile(velnor::kLogFileName));
    if (!path) return;
    VN_LOG_INFO(velnor::kFunction, "Uploading the log file %s to %s", path.get(),
                uploadUrl != nullptr ? uploadUrl : "(null)");
    if (!velnor::isUploadUrl(uploadUrl)) return;
    const velnor::OwnedText text = velnor::readLog(path.get());
    if (!text) return;
    char target[velnor::kTargetSize];
    if (!velnor::formTarget(uploadUrl, guid, target)) return;
    // As a text, so that it ends at the first NUL byte, should the log hold one.
    if (!velnor::put(target, text.get())) {
        // The number is fixed by the interface: 0 whatever the server said.
        VN_LOG_ERROR(velnor::kFunction, "Could not upload logs to %s. Got error %d", uploadUrl, 0);
    }
}
