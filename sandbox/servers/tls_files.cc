#include "tls_files.h"

namespace sandbox {

TlsFiles tlsFiles(const std::string& name, const std::string& folder) {
    const std::string base = (folder.empty() ? SANDBOX_TLS_FOLDER : folder) + "/" + name;
    return {.certificate = base + ".crt", .key = base + ".key"};
}

}  // namespace sandbox
