#include "publish/live.h"

#include <algorithm>
#include <functional>
#include <iostream>
#include <new>
#include <stdexcept>

#include "api/result/last_error.h"
#include "install/client_ini.h"
#include "install/verified_download.h"
#include "net/system_downloader.h"
#include "program/answer.h"
#include "program/text.h"
#include "publish/addresses.h"
#include "support/product.h"
#include "support/text.h"
#include "support/url.h"

namespace deploy {
namespace {

using velnor::OwnedText;

struct Download {
    OwnedText data;
    uint32_t size = 0;
};

[[noreturn]] void refuse(const std::string& reason) { throw std::runtime_error(reason); }

const char* text(const OwnedText& owned) {
    if (!owned) throw std::bad_alloc();
    return owned.get();
}

// What failed for lack of memory here says nothing of the servers.
void refuseWithoutMemory() {
    if (vn_getLastError() == INSTALL_ERROR_INSUFFICIENTMEMORY) throw std::bad_alloc();
}

// A download that failed after this answer.
std::string whyNot(const velnor::Answer& last, const char* url) {
    if (last.ending == velnor::Ending::Answered) {
        if (last.status != velnor::kStatusOk) {
            return "answers with status " + std::to_string(last.status) +
                   "; put the file there, or see what the server's error log says";
        }
        return last.isGzip
                   ? "comes as \"Content-Encoding: gzip\" and is not gzip; serve it as it is"
                   : "is empty; upload it again";
    }
    const std::string host = velnor::behindScheme(url);
    const std::string words = program::answerText(last, host.substr(0, host.find('/')));
    const std::string detail =
        *last.failure == '\0' ? "" : " (" + program::printable(last.failure) + ")";
    const char* advice =
        last.ending == velnor::Ending::NoAnswer
            ? "; check the name in the DNS, the server and its firewall"
        : velnor::isHttpsUrl(url)
            ? "; give it a certificate for this name with its intermediates, from an authority "
              "that your users' systems trust, and no redirect to http"
            : "; see what the server's error log says";
    return "its host " + words + detail + advice;
}

Download fetch(const char* url) {
    const OwnedText userAgent = velnor::installerUserAgent("vn-publish");
    velnor::Answer last{velnor::Ending::Failed};
    Download download;
    _vn_setLastError(INSTALL_ERROR_OK);
    download.data = OwnedText(velnor::downloadWebUrl(text(userAgent), url, &download.size, &last));
    if (!download.data) refuseWithoutMemory();
    if (!download.data || download.size == 0) refuse(whyNot(last, url));
    return download;
}

std::string grouped(uint32_t number) {
    std::string digits = std::to_string(number);
    for (size_t end = digits.size(); end > 3;) digits.insert(end -= 3, ",");
    return digits;
}

// One line; `check` returns the number of bytes of what is accepted, or throws the reason why not.
bool tell(const std::string& name, const std::string& url, const std::function<uint32_t()>& check) {
    std::cout << name << "  " << url << "  " << std::flush;
    try {
        const uint32_t size = check();
        std::cout << "accepted, " << grouped(size) << " bytes\n";
        return true;
    } catch (const std::runtime_error& error) {
        std::cout << "refused: " << error.what() << '\n';
        return false;
    }
}

// The value of `key`, empty when there is none.
std::string valueOf(const char* ini, const char* key) {
    OwnedText value;
    if (velnor::iniValue(ini, key, &value) == velnor::Found::NoMemory) throw std::bad_alloc();
    return value ? value.get() : "";
}

// Without these an installation does not come as far as the artifacts.
void checkIni(const char* ini) {
    for (const char* key : {velnor::kLogUploadUrlKey, velnor::kClientUrlKey}) {
        const std::string url = valueOf(ini, key);
        if (url.empty()) {
            refuse(
                std::string("it has no ") + key +
                " with a line end, so it is no client.ini or not all of one; upload the one that "
                "vn-publish wrote");
        }
        // What is no URL may be anything, which a terminal would obey.
        if (!velnor::isUrlText(url.c_str())) {
            refuse(std::string("what it has as ") + key + " is no URL; publish again");
        }
    }
    checkLogUrl(valueOf(ini, velnor::kLogUploadUrlKey));
    checkClientUrl(valueOf(ini, velnor::kClientUrlKey));
}

void verify(const char* ini, const char* signatureKey, const Download& download) {
    const std::string signature = valueOf(ini, signatureKey);
    if (signature.empty()) {
        refuse(std::string("client.ini has no ") + signatureKey + "; publish again");
    }
    _vn_setLastError(INSTALL_ERROR_OK);
    const velnor::SignatureCheck check =
        velnor::checkSignature(signature.c_str(), download.data.get(), download.size);
    if (check.verified) return;
    refuseWithoutMemory();
    if (*check.message != '\0') refuse(std::string(check.message) + "; publish again");
    refuse(check.isOfOurKey
               ? "it is not the file that was signed; upload that one, see that the server changes "
                 "nothing, as with \"Content-Encoding: gzip\", or publish again"
               : "its signature is not by the key that the installers of this build verify with; "
                 "publish with the vn-publish of their build");
}

bool checkArtifact(const char* ini, const char* urlKey, const char* signatureKey,
                   const char* name) {
    const std::string url = valueOf(ini, urlKey);
    if (!velnor::isUrlText(url.c_str())) {
        std::cout << name << "  refused: client.ini has no " << urlKey
                  << " with a URL; publish again\n";
        return false;
    }
    const OwnedText target(velnor::isRewriteOn(ini) ? velnor::rewriteToContentHost(url.c_str())
                                                    : velnor::copyText(url.c_str()));
    return tell(name, text(target), [&] {
        checkArtifactUrl(url);
        const Download download = fetch(target.get());
        verify(ini, signatureKey, download);
        return download.size;
    });
}

}  // namespace

bool checkLive(const std::string& guid) {
    const OwnedText url = velnor::configurationUrl(guid.c_str());
    Download ini;
    const bool isUsable = tell(velnor::kClientIniFile, text(url), [&] {
        ini = fetch(url.get());
        checkIni(ini.data.get());
        return ini.size;
    });
    if (!isUsable) return false;
    const char* lines = ini.data.get();
    const std::string clientUrl = valueOf(lines, velnor::kClientUrlKey);
    const bool hasUninstaller = !valueOf(lines, velnor::kUninstallerUrlKey).empty();
    const bool results[] = {
        checkArtifact(lines, velnor::kClientUrlKey, velnor::kClientSignatureKey,
                      velnor::fileNameOf(clientUrl.c_str())),
        checkArtifact(lines, velnor::kUiToolUrlKey, velnor::kUiToolSignatureKey,
                      velnor::kUiToolArchive),
        !hasUninstaller ||
            checkArtifact(lines, velnor::kUninstallerUrlKey, velnor::kUninstallerSignatureKey,
                          velnor::kUninstallerArchive),
    };
    return std::ranges::all_of(results, std::identity());
}

}  // namespace deploy
