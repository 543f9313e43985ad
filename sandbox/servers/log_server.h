// The server that installers send their logs to.
#ifndef SANDBOX_SERVERS_LOG_SERVER_H
#define SANDBOX_SERVERS_LOG_SERVER_H

#include <string>

#include "file_server.h"

namespace sandbox {

/// Answers a PUT of /logs/NAME with 200, and nothing else. NAME has no "/", "%" or "?"
/// and does not begin with "."; the body becomes FOLDER/NAME, all of it at once. An empty `folder`
/// throws it away. Throws std::runtime_error when `folder` is not one.
void serveLogs(FileServer& server, const std::string& folder = {});

}  // namespace sandbox

#endif
