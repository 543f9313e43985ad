// Cutting URLs by their separators.
#include "net/http_url.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "api/last_error.h"
#include "support/text_copy.h"
#include "velnor/capi.h"

namespace {

constexpr char kHttp[] = "http://";
constexpr size_t kHttpLength = sizeof kHttp - 1;

// As atoi(3), but numbers that are too large stay too large.
int32_t portNumber(const char* text) {
    using Limits = std::numeric_limits<int32_t>;
    return static_cast<int32_t>(
        std::clamp<long>(std::strtol(text, nullptr, 10), Limits::min(), Limits::max()));
}

// Ends the text at the first `separator` and returns what follows; null when there is none.
char* cutAt(char* text, char separator) {
    char* found = std::strchr(text, separator);
    if (found == nullptr) return nullptr;
    *found = '\0';
    return found + 1;
}

}  // namespace

bool velnor::isHttpUrl(const char* url) { return std::strncmp(url, kHttp, kHttpLength) == 0; }

bool velnor::isHttpUrlWithPath(const char* url) {
    return isHttpUrl(url) && std::strchr(url + kHttpLength, '/') != nullptr;
}

int32_t _vn_getHostName(const char* url, char** copyOut, char** hostOut, int32_t* portOut,
                        char** pathOut) {
    static constexpr char kSeparator[] = "://";
    if (copyOut != nullptr) *copyOut = nullptr;
    if (hostOut != nullptr) *hostOut = nullptr;
    if (pathOut != nullptr) *pathOut = nullptr;
    if (url == nullptr || copyOut == nullptr || hostOut == nullptr || portOut == nullptr ||
        pathOut == nullptr || std::strstr(url, kSeparator) == nullptr) {
        _vn_setLastError(INSTALL_ERROR_INVALIDARGUMENT);
        return 0;
    }
    *copyOut = velnor::copyText(url).release();
    if (*copyOut == nullptr) return 0;
    *hostOut = std::strstr(*copyOut, kSeparator) + sizeof kSeparator - 1;
    *pathOut = cutAt(*hostOut, '/');
    if (const char* port = cutAt(*hostOut, ':')) *portOut = portNumber(port);
    return 1;
}
