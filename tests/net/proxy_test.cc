// Downloads through a real proxy, with the password in a real keyring, wrong, or nowhere.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <chrono>
#include <tuple>

#include "net/fetch.h"
#include "net/proxy_credentials.h"
#include "net/proxy_peer.h"

namespace {

using std::chrono::steady_clock;

constexpr char kPassword[] = "s3cret pass";
constexpr char kWantsBasic[] = "Proxy-Authenticate: Basic realm=x\r\n";

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

    // From both origins; each second request gets this status.
    void fetchWith(const char* password, Demand demand, int port, const std::string& second) {
        const ProxyPeer proxy(demand, port);
        useProxy(port, password);
        EXPECT_EQ(fetchPlain(), "here");
        EXPECT_EQ(fetch(secure("/file")).body, "secure");
        proxy.expectRequests({"GET 407", "GET " + second, "CONNECT 407", "CONNECT " + second});
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
    fetchWith(kPassword, Demand::Basic, 3128, "200");
    fetchWith("wrong", Demand::Basic, 3129, "407");
    EXPECT_EQ(cameThroughProxy(), (std::vector<bool>{true, false}));
}

TEST_F(Proxy, PasswordFromTheKeyringGoesInADigest) {
    startKeyring();
    fetchWith(kPassword, Demand::Digest, 3128, "200");
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

TEST_F(Proxy, ThatHasAnAnswerTellsMoreThanAHostOutOfReach) {
    const sandbox::RawServer proxy =
        answering("HTTP/1.1 404 Gone\r\nContent-Length: 0\r\n\r\n", 3128);
    velnor::Answer last{velnor::Ending::Failed};
    EXPECT_EQ(velnor::downloadWebUrl("A", "http://nowhere.invalid/x", nullptr, &last), nullptr);
    EXPECT_EQ(last.status, 404);
}

TEST_F(Proxy, IsTakenFromTheEnvironmentAsCurlDoes) {
    const ProxyPeer proxy(Demand::Nothing);
    const struct {
        const char *variable, *value, *except;
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
    http_.serve("/npm/package@1.2.3/file", "there");
    for (const auto& [variable, value, except, used, path] : rows) {
        unsetenv("http_proxy");
        setenv(variable, value, 1);
        setenv("no_proxy", except, 1);
        EXPECT_TRUE(fetch(plain(path)).body) << value;
        EXPECT_EQ(cameThroughProxy().back(), used)
            << variable << "=" << value << " no_proxy=" << except << " " << path;
        unsetenv(variable);
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
    const sandbox::RawServer other = demanding(kWantsBasic, 3129);
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

TEST_F(Proxy, NobodySeesThePasswordButAProxyThatWantsIt) {
    setenv("no_proxy", "localhost", 1);
    startKeyring();
    storePassword("http", kPassword);
    const std::tuple<const char*, std::string, size_t> rows[] = {
        {"Proxy-Authenticate: Negotiate\r\n", plain("/file"), 1},
        {"", plain("/file"), 1},
        // An origin that poses as a proxy is asked twice by each of the two attempts.
        {kWantsBasic, "http://localhost:3128/", 4},
    };
    for (const auto& [challenge, url, requests] : rows) {
        const sandbox::RawServer server = demanding(challenge, 3128);
        EXPECT_EQ(fetch(url).body.has_value(), requests == 1) << challenge;
        EXPECT_EQ(server.heads().size(), requests) << challenge;
        for (const std::string& head : server.heads()) {
            EXPECT_EQ(head.find("uthorization"), std::string::npos) << head;
        }
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
    const std::tuple<const char*, const char*, const char*> rows[] = {
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
        EXPECT_EQ(_vn_mac_get_keychain_proxy_credentials(url, &found), password != nullptr);
        EXPECT_STREQ(found.password.get(), password) << address;
        EXPECT_STREQ(found.user.get(), password != nullptr ? "alice" : nullptr);
    }
}

}  // namespace
