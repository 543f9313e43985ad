#include "publish/addresses.h"

#include <strings.h>

#include <cstring>
#include <stdexcept>

#include "install/client_ini.h"
#include "support/product.h"
#include "support/url.h"

namespace deploy {
namespace {

// Joined to an upload URL: "/", the GUID's 32 digits and ".log". The engine cuts the result to fit
// 255 characters.
constexpr size_t kLogNameLength = 1 + 32 + 4;
constexpr size_t kLongestLogTarget = 255;
constexpr size_t kLongestFileName = 255;

void require(bool holds, const std::string& url, const std::string& advice) {
    if (!holds) throw std::runtime_error("unusable URL " + url + ": " + advice);
}

// The downloader refuses all others.
void checkCharacters(const std::string& url) {
    require(url.find('\0') == std::string::npos && velnor::isUrlText(url.c_str()), url,
            "write blanks, line breaks, a % of its own and all but plain ASCII characters as %XX");
}

void checkHostAndPath(const std::string& url) {
    const char* host = velnor::behindScheme(url.c_str());
    require(*host != '/' && std::strchr(host, '/') != nullptr, url,
            "give a host and, behind it, a path");
}

// The launcher takes what stands behind the last "/" and, when there is no such file, the newest
// client whose name begins in one of these ways.
bool isFoundByLauncher(const std::string& url, const std::string& name) {
    return name == url.substr(url.rfind('/') + 1) || name.starts_with("ksmac_") ||
           name.starts_with("corvane_mac_");
}

}  // namespace

void checkArtifactUrl(const std::string& url) {
    checkCharacters(url);
    require(velnor::isHttpsUrl(url.c_str()) || velnor::isHttpUrl(url.c_str()), url,
            "begin it with https:// or http://");
    checkHostAndPath(url);
}

void checkClientUrl(const std::string& url) {
    checkArtifactUrl(url);
    const char* fileName = velnor::fileNameOf(url.c_str());
    require(fileName != nullptr, url,
            "end it with the client's file name, behind the last \"/\" or \"=\"");
    const std::string name = fileName;
    require(name.size() <= kLongestFileName, url, "its file name is longer than a disk takes");
    for (const char* taken : velnor::kInstalledFiles) {
        // Letter case makes no difference on the disks that this is installed on.
        require(strcasecmp(fileName, taken) != 0, url,
                "the installation has another file of the name " + name + "; rename the client");
    }
    require(isFoundByLauncher(url, name), url,
            "the launcher would not find a client of the name " + name +
                "; give it one that begins with ksmac_");
}

void checkLogUrl(const std::string& url) {
    checkCharacters(url);
    require(velnor::isHttpUrl(url.c_str()), url,
            "logs are uploaded over plain HTTP; begin it with http://");
    checkHostAndPath(url);
    require(url.size() + kLogNameLength <= kLongestLogTarget, url,
            "with the log's name it would be cut off; shorten it to " +
                std::to_string(kLongestLogTarget - kLogNameLength) + " characters");
}

}  // namespace deploy
