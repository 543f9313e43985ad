// Whom a download over TLS trusts.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <string>

#include "net/fetch.h"
#include "sandbox/servers/file_server.h"
#include "sandbox/servers/tls_files.h"

namespace {

using sandbox::FileServer;

std::optional<std::string> fetchFrom(const FileServer& server) {
    return fetch("https://localhost:" + std::to_string(server.port()) + "/file").body;
}

// The authority that the system does not know, beside the certificate that it signed.
std::string untrustedAuthority() {
    const std::filesystem::path certificate = sandbox::tlsFiles("untrusted").certificate;
    return (certificate.parent_path() / "untrusted-ca.crt").string();
}

TEST(Tls, OnlyAValidCertificateOfAKnownAuthorityIsAccepted) {
    const std::pair<const char*, std::optional<std::string>> rows[] = {
        {"server", "body"},
        {"untrusted", std::nullopt},
        {"expired", std::nullopt},
        {"wrong-host", std::nullopt},
    };
    for (const auto& [name, body] : rows) {
        FileServer server(0, sandbox::tlsFiles(name));
        server.serve("/file", "body");
        EXPECT_EQ(fetchFrom(server), body) << name;
        EXPECT_EQ(server.requests().empty(), !body) << name;
    }
}

TEST(Tls, TheEnvironmentNamesTheTrustStore) {
    FileServer known(0, sandbox::tlsFiles());
    FileServer unknown(0, sandbox::tlsFiles("untrusted"));
    known.serve("/file", "known");
    unknown.serve("/file", "unknown");

    setenv("SSL_CERT_FILE", untrustedAuthority().c_str(), 1);
    EXPECT_EQ(fetchFrom(unknown), "unknown");
    EXPECT_EQ(fetchFrom(known), "known") << "the system's folder still counts";

    setenv("SSL_CERT_DIR", "/no/such/folder", 1);
    EXPECT_EQ(fetchFrom(known), std::nullopt);
}

TEST(Tls, APlainServerOnTheSecurePortFails) {
    FileServer server;
    EXPECT_EQ(fetchFrom(server), std::nullopt);
}

}  // namespace
