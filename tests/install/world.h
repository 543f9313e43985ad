// The servers of an installation, the release that they offer, and what vn_install made of it.
#ifndef TESTS_INSTALL_WORLD_H
#define TESTS_INSTALL_WORLD_H

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "sandbox/servers/file_server.h"
#include "velnor/capi.h"

/// Keys and values of a client.ini, in alphabetical order of the keys.
using ClientIni = std::map<std::string, std::string>;

std::string toText(const ClientIni& ini, const std::string& lineEnd = "\n");

/// A configuration server and a content host with a complete release, as an installation meets
/// them, and a log server.
class World {
  public:
    World();

    /// The values that a test may change before it publishes.
    ClientIni ini;
    std::map<std::string, std::string> artifacts;  // by file name

    /// Serves `ini` and `artifacts`, or the given text in place of `ini`.
    void publish();
    void publish(const std::string& iniText);

    /// Signs the artifact anew and enters its URL and signature.
    void addArtifact(const std::string& key, const std::string& fileName, const std::string& data);

    /// URL of a file on the origin host.
    static std::string originUrl(const std::string& fileName);

    /// Paths that were asked for, in order: of the configuration server, of the artifacts.
    std::vector<std::string> configurationRequests() const;
    std::vector<std::string> artifactRequests() const;
    const sandbox::FileServer& configurationServer() const { return *configuration_; }

    /// Names of the logs that were uploaded, in order, and the last one's text.
    std::vector<std::string> uploads() const;
    std::string lastUpload() const { return log_->requests().back().body; }

  private:
    std::unique_ptr<sandbox::FileServer> configuration_;
    std::unique_ptr<sandbox::FileServer> content_;
    std::unique_ptr<sandbox::FileServer> log_;
};

struct Installed {
    int32_t result;
    uint32_t code;
    std::string detail;
    std::vector<uint32_t> progress;
};

/// Runs vn_install with a detail buffer; `eula` may be null.
Installed install(const char* appName = "Velnor", const char* eula = nullptr, int32_t cid = 0);

/// The same without any context.
Installed installWithoutContext(const char* appName = "Velnor");

/// The last message of the log that is not the upload's.
std::string lastMessage();

/// Ends the client and its agent, as a user's `launchctl unload` does.
void stopClient();

#endif
