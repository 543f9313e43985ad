// Whom a download over TLS trusts.
#include <gtest/gtest.h>
#include <stdlib.h>

#include "net/fetch.h"
#include "sandbox/servers/file_server.h"
#include "sandbox/servers/tls_files.h"

namespace {

using sandbox::tlsFiles;

TEST(Tls, OnlyAValidCertificateOfAKnownAuthorityIsAccepted) {
    // The authority that the system does not know, beside the certificate that it signed.
    const std::string folder = tlsFiles("untrusted").certificate;
    const std::string authority = folder.substr(0, folder.rfind('/')) + "/untrusted-ca.crt";
    const struct {
        const char* certificate;
        bool accepted;
        const char* file = nullptr;    // SSL_CERT_FILE
        const char* folder = nullptr;  // SSL_CERT_DIR
    } rows[] = {
        {"server", true},
        {"untrusted", false},
        {"expired", false},
        {"wrong-host", false},
        {"untrusted", true, authority.c_str()},
        {"server", true, authority.c_str()},  // the system's folder still counts
        {"server", false, authority.c_str(), "/no/such/folder"},
    };
    for (const auto& row : rows) {
        row.file != nullptr ? setenv("SSL_CERT_FILE", row.file, 1) : unsetenv("SSL_CERT_FILE");
        row.folder != nullptr ? setenv("SSL_CERT_DIR", row.folder, 1) : unsetenv("SSL_CERT_DIR");
        sandbox::FileServer server(0, tlsFiles(row.certificate));
        server.serve("/file", "body");
        const std::string url = "https://localhost:" + std::to_string(server.port()) + "/file";
        EXPECT_EQ(fetch(url).body.has_value(), row.accepted) << row.certificate;
        EXPECT_EQ(server.requests().empty(), !row.accepted) << row.certificate;
    }
}

}  // namespace
