// Downloads through a real proxy, with the password in a real keyring, wrong, or nowhere.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <chrono>

#include "net/origins.h"
#include "net/proxy_credentials.h"
#include "net/proxy_peer.h"

namespace {

using std::chrono::steady_clock;

constexpr char kPassword[] = "s3cret pass";

// From a server that asks for a password whatever it is sent.
sandbox::RawServer demanding(const std::string& challenge, int port) {
    return answering("HTTP/1.1 407 Who are you\r\n" + challenge + "Content-Length: 0\r\n\r\n",
                     port);
}

class Proxy : public Origins {
  protected:
    Proxy() { useProxy(3128); }

    // For both kinds of URL; the keyring learns its password, when there is one.
    static void useProxy(int port, const std::string& password = "") {
        const std::string address = "http://127.0.0.1:" + std::to_string(port);
        for (const std::string kind : {"http", "https"}) {
            setenv((kind + "_proxy").c_str(), address.c_str(), 1);
            if (!password.empty()) storePassword(kind, password, port);
        }
    }

    std::optional<std::string> fetchPlain() { return fetch(plain("/file")).body; }
    // Whether each request to the origin came through the proxy.
    std::vector<bool> cameThroughProxy() const {
        std::vector<bool> came;
        for (const sandbox::Request& request : http_.requests()) {
            EXPECT_EQ(request.header("Proxy-Authorization"), "");
            came.push_back(!request.header("Via").empty());
        }
        return came;
    }
};

TEST_F(Proxy, PasswordFromTheKeyringGoesWithAnotherRequest) {
    startKeyring();
    const struct {
        Demand demand;
        int port;
        const char* password;
        std::string second;  // the status of each second request
    } rows[] = {
        {Demand::Basic, 3128, kPassword, "200"},
        {Demand::Digest, 3129, kPassword, "200"},
        {Demand::Basic, 3130, "wrong", "407"},
    };
    for (const auto& [demand, port, password, second] : rows) {
        const ProxyPeer proxy(demand, port);
        useProxy(port, password);
        EXPECT_EQ(fetchPlain(), "here");
        EXPECT_EQ(fetch(secure("/file")).body, "secure");
        proxy.expectRequests({"GET 407", "GET " + second, "CONNECT 407", "CONNECT " + second});
    }
    EXPECT_EQ(cameThroughProxy(), (std::vector<bool>{true, true, false}));
}

TEST_F(Proxy, WithoutAPasswordOrAKeyringTheConnectionIsDirectAfterOneRequest) {
    const ProxyPeer proxy(Demand::Basic);
    EXPECT_EQ(fetchPlain(), "here");
    startKeyring();
    storePassword("https", kPassword);       // of the other kind
    storePassword("http", kPassword, 8080);  // on another port
    EXPECT_EQ(fetchPlain(), "here");
    proxy.expectRequests({"GET 407", "GET 407"});
    EXPECT_EQ(cameThroughProxy(), (std::vector<bool>{false, false}));
}

TEST_F(Proxy, IsTakenFromTheEnvironmentAsCurlDoes) {
    const ProxyPeer proxy(Demand::Nothing);
    const struct {
        const char* variable;
        const char* value;
        const char* except;
        bool used;
        const char* path = "/file";
    } rows[] = {
        {"http_proxy", "127.0.0.1:3128", "", true},
        {"http_proxy", "127.0.0.1:3128", "127.0.0.1", false},
        {"ALL_PROXY", "http://127.0.0.1:3128/", "other.test", true},
        {"https_proxy", "127.0.0.1:3128", "", false},
        // What is behind the host is no part of the host.
        {"http_proxy", "http://127.0.0.1:3128", "127.0.0.1", false, "/npm/package@1.2.3/file"},
        {"http_proxy", "http://127.0.0.1:3128", "", true, "/file?u=a:///b"},
        {"http_proxy", "http:/127.0.0.1:3128/://trusted.test", "", true},
        {"http_proxy", "http://127.0.0.1:99999", "", false},
        {"http_proxy", "127.0.0.1:1", "", false},
    };
    unsetenv("https_proxy");
    http_.handle("/", [](const sandbox::Request&) { return sandbox::Reply{200, "there", {}}; });
    for (const auto& row : rows) {
        unsetenv("http_proxy");
        setenv(row.variable, row.value, 1);
        setenv("no_proxy", row.except, 1);
        EXPECT_TRUE(fetch(plain(row.path)).body) << row.value;
        EXPECT_EQ(cameThroughProxy().back(), row.used)
            << row.variable << "=" << row.value << " no_proxy=" << row.except << " " << row.path;
        unsetenv(row.variable);
    }
}

TEST_F(Proxy, ThatHangsWhileItIsLookedUpIsPassedBy) {
    const sandbox::RawServer scripts(sandbox::RawServer::blackHole());
    setenv("http_proxy", ("pac+" + urlOn(scripts.port(), "/pac")).c_str(), 1);
    const auto start = steady_clock::now();
    EXPECT_EQ(fetchPlain(), "here");
    EXPECT_GE(steady_clock::now() - start, std::chrono::seconds(15));
    EXPECT_EQ(scripts.connections(), 1U);
}

TEST_F(Proxy, KeyringThatHangsIsGivenUp) {
    const sandbox::RawServer bus(sandbox::RawServer::blackHole());
    const std::string address = "tcp:host=127.0.0.1,port=" + std::to_string(bus.port());
    setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
    const ProxyPeer proxy(Demand::Basic);
    const auto start = steady_clock::now();
    EXPECT_EQ(fetchPlain(), "here");
    EXPECT_GE(steady_clock::now() - start, std::chrono::minutes(2));
    EXPECT_GE(bus.connections(), 1U);
    proxy.expectRequests({"GET 407"});
}

TEST_F(Proxy, PasswordStaysWithTheProxyThatItBelongsTo) {
    const ProxyPeer proxy(Demand::Basic);
    const sandbox::RawServer other = demanding("Proxy-Authenticate: Basic realm=x\r\n", 3129);
    setenv("https_proxy", "http://127.0.0.1:3129", 1);
    startKeyring();
    storePassword("http", kPassword);
    EXPECT_EQ(fetchRedirected("https://localhost:1/file"), std::nullopt);
    proxy.expectRequests({"GET 407", "GET 302"});
    ASSERT_EQ(other.heads().size(), 1U);
    EXPECT_EQ(other.heads().at(0).find("uthorization"), std::string::npos);
}

TEST_F(Proxy, KeyringPrevailsOverAnAccountInTheAddressOnceTheProxyHasRefusedIt) {
    const ProxyPeer proxy(Demand::Basic);
    startKeyring();
    storePassword("http", kPassword);
    for (const char* account : {"bob:bad", "alice:s3cret%20pass"}) {
        setenv("http_proxy", ("http://" + std::string(account) + "@127.0.0.1:3128").c_str(), 1);
        EXPECT_EQ(fetchPlain(), "here");
    }
    proxy.expectRequests({"GET 407", "GET 200", "GET 200"});
    EXPECT_EQ(cameThroughProxy(), (std::vector<bool>{true, true}));
}

TEST_F(Proxy, SchemesThatNeedNoPasswordAreNotAnswered) {
    startKeyring();
    storePassword("http", kPassword);
    for (const char* challenge : {"Proxy-Authenticate: Negotiate\r\n", ""}) {
        const sandbox::RawServer proxy = demanding(challenge, 3128);
        EXPECT_EQ(fetchPlain(), "here");
        EXPECT_EQ(proxy.heads().size(), 1U) << challenge;
    }
}

// Of every address, the host that libcurl connects to; for a host that has no proxy, that of
// others.
TEST_F(Proxy, KeychainIsAskedForTheConfiguredProxyOfTheScheme) {
    startKeyring();
    storePassword("http", "for http");
    storePassword("http", "on 80", 80);
    storePassword("https", "for https", 3129);
    setenv("https_proxy", "http://127.0.0.1:3129", 1);
    setenv("no_proxy", "off.example", 1);
    const struct {
        const char* url;
        const char* address;
        const char* password;
    } rows[] = {
        {"https://any.example/", "", "for https"},
        {"http://any.example/", "", nullptr},
        {"ftp://any.example/", "http://127.0.0.1:3128", nullptr},
        {"http://off.example/", "http://127.0.0.1:3128", "for http"},
        {"http://any.example/", "http:/127.0.0.1:3128/://trusted.test", "for http"},
        {"http://any.example/", "http://trusted.test#@127.0.0.1:3128/", nullptr},
        {"http://any.example/", "http://127.0.0.1#x", "on 80"},
        {"http://any.example/", "http://bob:x@127.0.0.1:3128", "for http"},
    };
    for (const auto& [url, address, password] : rows) {
        setenv("http_proxy", address, 1);
        velnor::platform::Credentials found;
        const bool isFound = _vn_mac_get_keychain_proxy_credentials(url, &found);
        ASSERT_EQ(isFound, password != nullptr) << address;
        EXPECT_STREQ(isFound ? found.password.get() : nullptr, password) << address;
        EXPECT_STREQ(isFound ? found.user.get() : "alice", "alice");
    }
}

TEST_F(Proxy, OriginThatPosesAsAProxyNeverSeesThePassword) {
    setenv("no_proxy", "127.0.0.1", 1);
    startKeyring();
    storePassword("http", kPassword);
    const sandbox::RawServer origin = demanding("Proxy-Authenticate: Basic realm=x\r\n", 0);
    EXPECT_EQ(fetch(urlOn(origin.port())).body, std::nullopt);
    ASSERT_EQ(origin.heads().size(), 4U) << "two requests for each of the two attempts";
    for (const std::string& head : origin.heads()) {
        EXPECT_EQ(head.find("uthorization"), std::string::npos) << head;
    }
}

}  // namespace
