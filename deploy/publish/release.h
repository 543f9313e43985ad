// A release to be published: what its maker decides, in the words of client.ini.
#ifndef VELNOR_DEPLOY_PUBLISH_RELEASE_H
#define VELNOR_DEPLOY_PUBLISH_RELEASE_H

#include <cstdint>
#include <optional>
#include <string>

#include "publish/artifact.h"

namespace deploy {

struct Release {
    Artifact client;
    Artifact uiTool;
    std::optional<Artifact> uninstaller;
    std::string logUrl;
    bool isRewritten = false;
    std::optional<int64_t> uninstallTimeout;  // seconds
};

/// Signs the artifacts of `release` with the private key in the file `keyPath` and writes the
/// client.ini that offers them to the file `output`, which it replaces. Everything is first checked
/// as an installation will see it. Throws std::runtime_error with a message that says what to do;
/// `output` is then as it was.
void publish(const Release& release, const std::string& keyPath, const std::string& output);

}  // namespace deploy

#endif
