// Names of certificate files.
#include "tls_files.h"

sandbox::TlsFiles sandbox::tlsFiles(const std::string& name, const std::string& folder) {
    const std::string base = (folder.empty() ? SANDBOX_TLS_FOLDER : folder) + "/" + name;
    return {.certificate = base + ".crt", .key = base + ".key"};
}
