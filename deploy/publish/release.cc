// Publishing: check, sign, compose, check again as an installer, and only then put it in place.
#include "publish/release.h"

#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>
#include <system_error>
#include <vector>

#include "common/new_file.h"
#include "common/signing_key.h"
#include "install/client_ini.h"
#include "install/verified_download.h"
#include "publish/addresses.h"
#include "publish/client_ini.h"
#include "support/files.h"
#include "velnor_deployment.h"

namespace deploy {
namespace {

constexpr mode_t kReadableByAll = 0666;  // less the umask

// An artifact with its place in client.ini.
struct Part {
    const char* urlKey;
    const char* signatureKey;
    std::string (*read)(const std::string& path);
    std::optional<Artifact> artifact;
};

std::vector<Part> partsOf(const Release& release) {
    return {
        {velnor::kClientUrlKey, velnor::kClientSignatureKey, readArtifact, release.client},
        {velnor::kUiToolUrlKey, velnor::kUiToolSignatureKey, readArchive, release.uiTool},
        {velnor::kUninstallerUrlKey, velnor::kUninstallerSignatureKey, readArchive,
         release.uninstaller},
    };
}

void checkAddresses(const Release& release) {
    checkLogUrl(release.logUrl);
    checkClientUrl(release.client.url);
    checkArtifactUrl(release.uiTool.url);
    if (release.uninstaller) checkArtifactUrl(release.uninstaller->url);
}

SigningKey loadKey(const std::string& path) {
    SigningKey key = SigningKey::load(path);
    const std::string publicHex = toHex(key.publicDer());
    // Letter case makes no difference in hex text.
    if (strcasecmp(publicHex.c_str(), velnor::deployment::kPublicKeyHex) == 0) return key;
    throw std::runtime_error(path +
                             " is not the key that the installers of this build verify with; give "
                             "the right one, or build installers for this one with "
                             "-DVELNOR_PUBLIC_KEY=" +
                             publicHex);
}

Settings signedSettings(const Release& release, const SigningKey& key) {
    Settings settings{{velnor::kLogUploadUrlKey, release.logUrl},
                      {velnor::kRewriteKey, release.isRewritten ? "true" : "false"}};
    for (const Part& part : partsOf(release)) {
        Setting url{part.urlKey, std::nullopt};
        Setting signature{part.signatureKey, std::nullopt};
        if (part.artifact) {
            url.value = part.artifact->url;
            signature.value = toHex(key.sign(part.read(part.artifact->file)));
        }
        settings.insert(settings.end(), {url, signature});
    }
    settings.push_back({velnor::kUninstallTimeoutKey, std::nullopt});
    if (release.uninstallTimeout) settings.back().value = std::to_string(*release.uninstallTimeout);
    return settings;
}

// Reads the artifacts anew, because a file may have changed since it was signed.
void verifyArtifacts(const Release& release, const std::string& clientIni) {
    for (const Part& part : partsOf(release)) {
        if (!part.artifact) continue;
        const std::string content = part.read(part.artifact->file);
        velnor::OwnedText signature;
        velnor::iniValue(clientIni.c_str(), part.signatureKey, &signature);
        const auto size = static_cast<uint32_t>(content.size());
        if (velnor::checkSignature(signature.get(), content.data(), size).verified) continue;
        throw std::runtime_error("installers would refuse " + part.artifact->file +
                                 ": its signature does not verify; publish again when the file no "
                                 "longer changes");
    }
}

std::string readBack(const std::string& path, size_t expectedSize) {
    std::string text(expectedSize + 1, '\0');
    text.resize(_vn_readFile(path.c_str(), text.data(), static_cast<uint32_t>(text.size()), "rb"));
    return text;
}

void checkTarget(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode)) return;
    throw std::runtime_error(path +
                             " is no file that can be replaced; give --output a file's name");
}

// What is put in place are the very bytes that were checked.
void writeClientIni(const std::string& output, const std::string& text) {
    const std::string beside = output + "." + std::to_string(getpid()) + ".new";
    NewFile file(beside, kReadableByAll);
    file.write(text);
    if (readBack(beside, text.size()) != text) {
        throw std::runtime_error(output +
                                 " reads back otherwise than it was written; check the disk");
    }
    file.replace(output);
}

}  // namespace

void publish(const Release& release, const std::string& keyPath, const std::string& output) {
    checkAddresses(release);
    checkTarget(output);
    const Settings settings = signedSettings(release, loadKey(keyPath));
    const std::string text = compose(settings);
    checkSettings(text, settings);
    verifyArtifacts(release, text);
    try {
        writeClientIni(output, text);
    } catch (const std::system_error& error) {
        throw std::runtime_error(
            std::string(error.what()) +
            "; give --output a place that exists, has room and may be written");
    }
}

}  // namespace deploy
