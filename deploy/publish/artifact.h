// The files that a release offers, as they will be served.
#ifndef VELNOR_DEPLOY_PUBLISH_ARTIFACT_H
#define VELNOR_DEPLOY_PUBLISH_ARTIFACT_H

#include <string>

namespace deploy {

struct Artifact {
    std::string file;
    std::string url;  // under which the file will be served
};

/// The content of an artifact. Throws std::runtime_error with advice when there is none, or when it
/// is more than an installation can take.
std::string readArtifact(const std::string& path);

/// The same for an archive, which must be compressed by gzip, because tar -z unpacks it.
std::string readArchive(const std::string& path);

}  // namespace deploy

#endif
