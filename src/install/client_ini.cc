#include "install/client_ini.h"

#include <cstring>

#include "support/text.h"
#include "support/url.h"
#include "velnor_deployment.h"

namespace velnor {

OwnedText configurationUrl(const char* guid) {
    OwnedText url;
    _vn_snprintf(url.out(), 0, "https://%s/conf/client_ini.html?guid=%s",
                 deployment::kConfigurationHost, guid);
    return url;
}

OwnedText installerUserAgent(const char* appName) {
    OwnedText userAgent;
    _vn_snprintf(userAgent.out(), 0, "Kestrin Installer %s %s", "mac", appName);
    return userAgent;
}

Found iniValue(const char* iniText, const char* key, OwnedText* value) {
    const auto found = lineValue(iniText, key);
    *value = found ? copyText(*found) : OwnedText();
    if (!found) return Found::Absent;
    return *value ? Found::Here : Found::NoMemory;
}

bool isRewriteOn(const char* iniText) { return lineValue(iniText, kRewriteKey) == "true"; }

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
    const char* host = behindScheme(url);
    if (host == nullptr) return copyText(url);
    OwnedText rewritten;
    _vn_snprintf(rewritten.out(), 0, "%.*s%s/%s", static_cast<int>(host - url), url,
                 deployment::kContentHost, host);
    return rewritten;
}

}  // namespace velnor
