// Interpreting values of client.ini.
#include "install/client_ini.h"

#include <cstring>

#include "api/last_error.h"
#include "support/format.h"
#include "support/text_copy.h"
#include "support/text_extraction.h"
#include "velnor/capi.h"
#include "velnor_deployment.h"

namespace velnor {

OwnedText iniValue(const char* iniText, const char* key) {
    _vn_setLastError(INSTALL_ERROR_INTERNAL);
    return OwnedText(_vn_pluckString(iniText, key));
}

bool isOutOfMemory() { return _vn_getLastError() == INSTALL_ERROR_INSUFFICIENTMEMORY; }

bool isRewriteOn(const char* iniText) {
    const OwnedText value = iniValue(iniText, kRewriteKey);
    return value && std::strcmp(value.get(), "true") == 0;
}

const char* fileNameOf(const char* url) {
    const char* name = url;
    for (const char* c = url; *c != '\0'; ++c) {
        if (*c == '/' || *c == '=') name = c + 1;
    }
    const bool unusable =
        *name == '\0' || std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
    return unusable ? nullptr : name;
}

OwnedText rewriteToContentHost(const char* url) {
    static constexpr char kSeparator[] = "://";
    const char* separator = std::strstr(url, kSeparator);
    if (separator == nullptr) return copyText(url);
    OwnedText rewritten;
    const char* rest = separator + sizeof kSeparator - 1;
    _vn_snprintf(rewritten.out(), 0, "%.*s%s/%s", static_cast<int>(rest - url), url,
                 deployment::kContentHost, rest);
    return rewritten;
}

}  // namespace velnor
