// Starting and asking the peers.
#include "net/proxy_peer.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <sstream>

#include "harness/files.h"
#include "harness/shell.h"

using harness::run;

namespace {

std::string configuration(const std::string& folder, Demand demand, int port) {
    std::string text = "ServerRoot /usr/lib/apache2\nServerName proxy.velnor.example\n";
    text += "Listen 127.0.0.1:" + std::to_string(port) + "\nPidFile " + folder + "/pid\n";
    text += "DefaultRuntimeDir " + folder + "\nMutex file:" + folder + "\n";
    text += "ErrorLog " + folder + "/error\n";
    text += "LogFormat \"%m %>s\" short\nCustomLog " + folder + "/access short\n";
    for (const char* name : {"mpm_event", "authn_core", "authn_file", "authz_core", "authz_user",
                             "auth_basic", "auth_digest", "proxy", "proxy_http", "proxy_connect"}) {
        text += std::string("LoadModule ") + name + "_module modules/mod_" + name + ".so\n";
    }
    text += "ProxyRequests On\nAllowCONNECT 1-65535\nProxyVia On\n<Proxy \"*\">\n";
    if (demand != Demand::Nothing) {
        const std::string kind = demand == Demand::Basic ? "Basic" : "Digest";
        text += "AuthType " + kind + "\nAuthName proxy\n";
        text += "Auth" + kind + "Provider file\nAuthUserFile " + folder + "/users\n";
        text += "Require valid-user\n";
    } else {
        text += "Require all granted\n";
    }
    return text + "</Proxy>\n";
}

std::string users(Demand demand) {
    if (demand == Demand::Digest) {
        return run("printf 'alice:proxy:'; printf 'alice:proxy:s3cret pass' | md5sum | cut -c1-32")
            .output;
    }
    return "alice:" + run("openssl passwd -apr1 's3cret pass'").output;
}

}  // namespace

ProxyPeer::ProxyPeer(Demand demand, int port) : folder_("/tmp/proxy" + std::to_string(port)) {
    std::filesystem::create_directory(folder_);
    harness::writeFile(folder_ + "/conf", configuration(folder_, demand, port));
    harness::writeFile(folder_ + "/users", users(demand));
    EXPECT_EQ(run("/usr/sbin/apache2 -f " + folder_ + "/conf -k start </dev/null 2>&1").status, 0);
    EXPECT_TRUE(harness::eventually([this] { return harness::exists(folder_ + "/pid"); }));
}

ProxyPeer::~ProxyPeer() {
    run("kill $(cat " + folder_ + "/pid)");
    harness::eventually([this] { return !harness::exists(folder_ + "/pid"); });
}

std::vector<std::string> ProxyPeer::requests() const {
    std::vector<std::string> lines;
    std::istringstream log(harness::readFile(folder_ + "/access"));
    for (std::string line; std::getline(log, line);) lines.push_back(line);
    return lines;
}

void ProxyPeer::expectRequests(const std::vector<std::string>& expected) const {
    harness::eventually([&] { return requests().size() >= expected.size(); });
    EXPECT_EQ(requests(), expected);
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

void storePassword(const std::string& protocol, const std::string& password, int port) {
    const std::string command = "printf '%s' '" + password +
                                "' | secret-tool store --label=proxy xdg:schema "
                                "org.gnome.keyring.NetworkPassword user alice server 127.0.0.1 "
                                "protocol " +
                                protocol + " port " + std::to_string(port);
    ASSERT_EQ(run(command).status, 0);
}
