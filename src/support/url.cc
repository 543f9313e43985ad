#include "support/url.h"

#include <strings.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "api/result/last_error.h"
#include "support/text.h"
#include "velnor/capi.h"

namespace velnor {
namespace {

constexpr char kSeparator[] = "://";
constexpr char kHttp[] = "http://";
constexpr char kHttps[] = "https://";

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

const char* behindScheme(const char* url) {
    const char* separator = std::strstr(url, kSeparator);
    return separator != nullptr ? separator + sizeof kSeparator - 1 : nullptr;
}

bool hasHttpScheme(const char* url) { return strncasecmp(url, kHttp, sizeof kHttp - 1) == 0; }

bool hasHttpsScheme(const char* url) { return strncasecmp(url, kHttps, sizeof kHttps - 1) == 0; }

bool isHttpUrl(const char* url) { return beginsWith(url, kHttp); }

bool isHttpUrlWithPath(const char* url) {
    return isHttpUrl(url) && std::strchr(url + sizeof kHttp - 1, '/') != nullptr;
}

bool isHttpsUrl(const char* url) { return beginsWith(url, kHttps); }

bool hasWebScheme(const char* text) { return hasHttpScheme(text) || hasHttpsScheme(text); }

bool isUrlText(const char* text) {
    static constexpr char kPunctuation[] = "-._~:/?#[]@!$&'()*+,;=%";
    for (const char* c = text; *c != '\0'; ++c) {
        const auto byte = static_cast<unsigned char>(*c);
        if (byte > 0x7f || (!std::isalnum(byte) && std::strchr(kPunctuation, byte) == nullptr)) {
            return false;
        }
        if (byte == '%' && !(std::isxdigit(static_cast<unsigned char>(c[1])) &&
                             std::isxdigit(static_cast<unsigned char>(c[2])))) {
            return false;
        }
    }
    return *text != '\0';
}

bool isWebUrl(const char* text) {
    if (!hasWebScheme(text)) return false;
    const char* host = behindScheme(text);
    return *host != '/' && *host != '\0' && isUrlText(text);
}

}  // namespace velnor

int32_t _vn_getHostName(const char* url, char** copyOut, char** hostOut, int32_t* portOut,
                        char** pathOut) {
    if (copyOut != nullptr) *copyOut = nullptr;
    if (hostOut != nullptr) *hostOut = nullptr;
    if (pathOut != nullptr) *pathOut = nullptr;
    const char* host = url != nullptr ? velnor::behindScheme(url) : nullptr;
    if (host == nullptr || copyOut == nullptr || hostOut == nullptr || portOut == nullptr ||
        pathOut == nullptr) {
        _vn_setLastError(INSTALL_ERROR_INVALIDARGUMENT);
        return 0;
    }
    *copyOut = velnor::copyText(url).release();
    if (*copyOut == nullptr) return 0;
    *hostOut = *copyOut + (host - url);
    *pathOut = velnor::cutAt(*hostOut, '/');
    if (const char* port = velnor::cutAt(*hostOut, ':')) *portOut = velnor::portNumber(port);
    return 1;
}
