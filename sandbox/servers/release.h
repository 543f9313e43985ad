// A published release: the configuration file and the artifacts that it names.
#ifndef SANDBOX_SERVERS_RELEASE_H
#define SANDBOX_SERVERS_RELEASE_H

#include <map>
#include <string>

#include "file_server.h"
#include "http.h"

namespace sandbox {

struct Release {
    Body clientIni;
    std::map<std::string, Body> files;  // by the last segment of their URL's path
};

/// Reads DIR/client.ini and every file in DIR/files. Throws std::runtime_error for what it cannot
/// read.
Release readRelease(const std::string& dir);

/// Answers /conf/client_ini.html?guid=... as a configuration server does.
void serveConfiguration(FileServer& server, const Release& release);

/// Answers every path whose last segment names a file, as a content host does: the folder before it
/// may be anything, such as the name of the host that the file comes from.
void serveContent(FileServer& server, const Release& release);

}  // namespace sandbox

#endif
