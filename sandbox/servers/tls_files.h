// The certificates that the build made for the rehearsal.
#ifndef SANDBOX_SERVERS_TLS_FILES_H
#define SANDBOX_SERVERS_TLS_FILES_H

#include <string>

namespace sandbox {

/// Paths of PEM files.
struct TlsFiles {
    std::string certificate;
    std::string key;
};

/// The pair `name` in `folder`, which is by default the one that the build filled: "server" is good
/// for every host of the rehearsal, "untrusted", "expired" and "wrong-host" for none.
TlsFiles tlsFiles(const std::string& name = "server", const std::string& folder = {});

}  // namespace sandbox

#endif
