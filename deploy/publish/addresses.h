// Rules for the URLs of a release, beyond what a web server would mind.
#ifndef VELNOR_DEPLOY_PUBLISH_ADDRESSES_H
#define VELNOR_DEPLOY_PUBLISH_ADDRESSES_H

#include <string>

namespace deploy {

// Each throws std::runtime_error with advice when an installation would trip over the URL.

/// The URL of an artifact.
void checkArtifactUrl(const std::string& url);

/// The URL of the client: it also gives the client its file name in the install directory.
void checkClientUrl(const std::string& url);

/// The URL that logs are uploaded to.
void checkLogUrl(const std::string& url);

}  // namespace deploy

#endif
