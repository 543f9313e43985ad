// Real peers of the proxy scenarios: a web proxy that may ask for a password, and a keyring.
#ifndef TESTS_NET_PROXY_PEER_H
#define TESTS_NET_PROXY_PEER_H

#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <string>
#include <vector>

#include "harness/harness.h"

enum class Demand { Nothing, Basic, Digest };

/// An Apache web server as forward proxy on 127.0.0.1, for user "alice" with password "s3cret
/// pass".
class ProxyPeer {
  public:
    explicit ProxyPeer(Demand demand, int port = 3128)
        : folder_("/tmp/proxy" + std::to_string(port)) {
        const char* kinds[] = {"Nothing", "Basic", "Digest"};
        const harness::CommandResult started =
            harness::run("'" WEB_PROXY "' " + std::string(kinds[static_cast<int>(demand)]) + " " +
                         std::to_string(port) + " " + folder_ + " 2>&1");
        EXPECT_EQ(started.status, 0) << started.output;
        EXPECT_TRUE(harness::eventually([this] { return harness::exists(folder_ + "/pid"); }));
    }
    ~ProxyPeer() {
        harness::run("kill $(cat " + folder_ + "/pid)");
        harness::eventually([this] { return !harness::exists(folder_ + "/pid"); });
    }
    ProxyPeer(const ProxyPeer&) = delete;
    ProxyPeer& operator=(const ProxyPeer&) = delete;

    /// Compares "METHOD status" of every request so far, once as many show as are expected: in any
    /// order, since those of two connections are logged as their processes come to it.
    void expectRequests(std::vector<std::string> expected) const {
        std::sort(expected.begin(), expected.end());
        std::string lines;
        for (const std::string& request : expected) lines += request + "\n";
        const auto seen = [this] { return harness::run("sort " + folder_ + "/access").output; };
        harness::eventually([&] { return seen().size() >= lines.size(); });
        EXPECT_EQ(seen(), lines);
    }

  private:
    std::string folder_;
};

/// A session bus and a keyring that is unlocked, for the rest of the test.
inline void startKeyring() {
    const harness::CommandResult bus =
        harness::run("dbus-daemon --session --fork --print-address 2>/dev/null");
    ASSERT_EQ(bus.status, 0);
    setenv("DBUS_SESSION_BUS_ADDRESS", bus.output.substr(0, bus.output.find('\n')).c_str(), 1);
    const std::string unlock =
        "printf login | gnome-keyring-daemon --unlock --daemonize --components=secrets";
    ASSERT_EQ(harness::run(unlock + " >/dev/null 2>&1").status, 0);
}

/// Stores a network password for the proxy at 127.0.0.1:`port`, kind "http" or "https", with the
/// command that users are told.
inline void storePassword(const std::string& protocol, const std::string& password,
                          int port = 3128) {
    const std::string told =
        harness::run("\"$(dirname '" WEB_PROXY
                     "')\"/../../tools/commands print docs/network.md | "
                     "sed 's/proxy.example/127.0.0.1/; s/3128/" +
                     std::to_string(port) + "/; s/protocol http/protocol " + protocol + "/'")
            .output;
    ASSERT_NE(told.find("secret-tool"), std::string::npos) << told;
    ASSERT_EQ(harness::run("printf '%s' '" + password + "' | { " + told + "}").status, 0);
}

#endif
