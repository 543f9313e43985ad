// The log's upload through a real proxy, with the password in a real keyring, wrong, or nowhere.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "harness/files.h"
#include "install/log_upload.h"
#include "net/proxy_peer.h"
#include "sandbox/servers/file_server.h"
#include "sandbox/servers/raw_server.h"

namespace {

using Lines = std::vector<std::string>;

constexpr char kPassword[] = "s3cret pass";
// More than a proxy takes before it answers, and more than libcurl sends without being asked to.
const std::string kText(3 * 1024 * 1024, 'x');

std::string urlOn(int port) { return "http://127.0.0.1:" + std::to_string(port) + "/put/"; }

// True when the upload ends without an error in the log.
bool upload(int port) {
    harness::makeInstallDirectory();
    const std::string log = harness::installed("installer.txt");
    harness::writeFile(log, kText + "\n");
    _vn_uploadLogs(urlOn(port).c_str(), "guid");
    return harness::readFile(log).find("[eror]", kText.size()) == std::string::npos;
}

class UploadProxy : public testing::Test {
  protected:
    UploadProxy() {
        setenv("http_proxy", "http://127.0.0.1:3128", 1);
        server_.handle("/put/", [](const sandbox::Request&) { return sandbox::Reply{}; });
    }

    // What arrived: for each log, whether it came whole and by which way.
    Lines arrivals() const {
        Lines lines;
        for (const sandbox::Request& request : server_.requests()) {
            EXPECT_EQ(request.header("Expect"), "");
            EXPECT_EQ(request.header("Proxy-Authorization"), "");
            const bool whole = request.method == "PUT" && request.body.starts_with(kText);
            lines.push_back(std::string(whole ? "whole " : "broken ") +
                            (request.header("Via").empty() ? "directly" : "by proxy"));
        }
        return lines;
    }

    sandbox::FileServer server_;
};

TEST_F(UploadProxy, PasswordFromTheKeyringOpensTheWay) {
    startKeyring();
    storePassword("http", kPassword);
    {
        const ProxyPeer proxy(Demand::Basic);
        EXPECT_TRUE(upload(server_.port()));
        proxy.expectRequests({"PUT 407", "PUT 200"});
    }
    const ProxyPeer proxy(Demand::Digest, 3129);
    setenv("http_proxy", "http://127.0.0.1:3129", 1);
    storePassword("http", kPassword, 3129);
    EXPECT_TRUE(upload(server_.port()));
    proxy.expectRequests({"PUT 407", "PUT 407", "PUT 200"});
    EXPECT_EQ(arrivals(), (Lines{"whole by proxy", "whole by proxy"}));
}

TEST_F(UploadProxy, WrongPasswordFallsBackAndArrivesDirectly) {
    const ProxyPeer proxy(Demand::Basic);
    startKeyring();
    storePassword("http", "wrong");
    EXPECT_TRUE(upload(server_.port()));
    proxy.expectRequests({"PUT 407", "PUT 407"});
    EXPECT_EQ(arrivals(), Lines{"whole directly"});
}

TEST_F(UploadProxy, WithoutAPasswordItEnds) {
    const ProxyPeer proxy(Demand::Basic);
    startKeyring();
    EXPECT_FALSE(upload(server_.port()));
    proxy.expectRequests({"PUT 407"});
    EXPECT_EQ(arrivals(), Lines{});
}

TEST_F(UploadProxy, DeadProxyIsPassedBy) {
    EXPECT_TRUE(upload(server_.port()));
    EXPECT_EQ(arrivals(), Lines{"whole directly"});
}

TEST_F(UploadProxy, SecondDemandIsNotAnsweredWhoeverMakesIt) {
    const ProxyPeer proxy(Demand::Basic);
    startKeyring();
    storePassword("http", "wrong");
    const sandbox::RawServer origin([](int fd, const std::string&) {
        sandbox::sendAll(fd,
                         "HTTP/1.1 407 Give it to me\r\nProxy-Authenticate: Basic realm=x\r\n"
                         "Content-Length: 0\r\nConnection: close\r\n\r\n");
        for (char rest[4096]; read(fd, rest, sizeof rest) > 0;) continue;
    });
    EXPECT_FALSE(upload(origin.port()));
    ASSERT_EQ(origin.heads().size(), 1U);
    EXPECT_EQ(origin.heads().at(0).find("uthorization"), std::string::npos);
}

}  // namespace
