// The servers of an installation, the release that they offer, and what vn_install made of it.
#ifndef TESTS_INSTALL_WORLD_H
#define TESTS_INSTALL_WORLD_H

#include <map>
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

    sandbox::FileServer configuration;
    sandbox::FileServer content;
    sandbox::FileServer log;

    /// The values that a test may change before it publishes.
    ClientIni ini;
    std::map<std::string, std::string> artifacts;  // by file name

    /// Serves `artifacts` and `ini`, or another text in its place.
    void publish(const std::string& iniText = "");

    /// Signs the artifact anew and enters its URL and signature.
    void addArtifact(const std::string& key, const std::string& fileName, const std::string& data);

    /// URL of a file on the origin host.
    static std::string originUrl(const std::string& fileName);
};

/// What a server was asked for, in order.
std::vector<std::string> targetsOf(const sandbox::FileServer& server);

struct Installed {
    int32_t result;
    uint32_t code;
    std::string detail;
    std::vector<uint32_t> progress;
};

/// Runs vn_install with a detail buffer; `eula` may be null.
Installed install(const char* appName = "Velnor", const char* eula = nullptr, int32_t cid = 0);

/// Ends the client and its agent, as a user's `launchctl unload` does.
void stopClient();

#endif
