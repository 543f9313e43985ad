// Starting and asking the peers.
#include "net/proxy_peer.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>

#include "harness/harness.h"

using harness::run;

ProxyPeer::ProxyPeer(Demand demand, int port) : folder_("/tmp/proxy" + std::to_string(port)) {
    const char* kinds[] = {"Nothing", "Basic", "Digest"};
    const harness::CommandResult started =
        run("'" WEB_PROXY "' " + std::string(kinds[static_cast<int>(demand)]) + " " +
            std::to_string(port) + " " + folder_ + " 2>&1");
    EXPECT_EQ(started.status, 0) << started.output;
    EXPECT_TRUE(harness::eventually([this] { return harness::exists(folder_ + "/pid"); }));
}

ProxyPeer::~ProxyPeer() {
    run("kill $(cat " + folder_ + "/pid)");
    harness::eventually([this] { return !harness::exists(folder_ + "/pid"); });
}

void ProxyPeer::expectRequests(std::vector<std::string> expected) const {
    std::sort(expected.begin(), expected.end());
    std::string lines;
    for (const std::string& request : expected) lines += request + "\n";
    const auto seen = [this] { return run("sort " + folder_ + "/access").output; };
    harness::eventually([&] { return seen().size() >= lines.size(); });
    EXPECT_EQ(seen(), lines);
}

void startKeyring() {
    const harness::CommandResult bus =
        run("dbus-daemon --session --fork --print-address 2>/dev/null");
    ASSERT_EQ(bus.status, 0);
    setenv("DBUS_SESSION_BUS_ADDRESS", bus.output.substr(0, bus.output.find('\n')).c_str(), 1);
    ASSERT_EQ(run("printf login | gnome-keyring-daemon --unlock --daemonize --components=secrets"
                  " >/dev/null 2>&1")
                  .status,
              0);
}

// With the command that users are told, but for this proxy.
void storePassword(const std::string& protocol, const std::string& password, int port) {
    const std::string told =
        run("\"$(dirname '" WEB_PROXY
            "')\"/../../tools/commands print "
            "docs/network.md | sed 's/proxy.example/127.0.0.1/; s/3128/" +
            std::to_string(port) + "/; s/protocol http/protocol " + protocol + "/'")
            .output;
    ASSERT_NE(told.find("secret-tool"), std::string::npos) << told;
    ASSERT_EQ(run("printf '%s' '" + password + "' | { " + told + "}").status, 0);
}
