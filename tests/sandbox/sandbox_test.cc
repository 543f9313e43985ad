// The rehearsal itself: nobody outside can be reached, and its folders, hosts, certificates and
// stand-in client are the ones that the product will meet.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "harness/files.h"
#include "harness/shell.h"
#include "sandbox/servers/file_server.h"
#include "sandbox/servers/tls_files.h"
#include "velnor_deployment.h"

namespace {

using harness::eventually;
using harness::run;

const std::string kConfigurationHost = velnor::deployment::kConfigurationHost;
const std::string kName = kConfigurationHost.substr(0, kConfigurationHost.find(':'));
const std::string kConfiguration = "https://" + kConfigurationHost + "/conf/client_ini.html?guid=0";
const std::string kContent = "https://" + std::string(velnor::deployment::kContentHost) + "/";

/// `world` serving a client.ini of one line and one file, until the object goes.
class World {
  public:
    World() {
        std::filesystem::create_directories("/tmp/release/files");
        harness::writeFile("/tmp/release/client.ini", "a=b\n");
        harness::writeFile("/tmp/release/files/tool.tar.gz", "some bytes");
        run("'" SANDBOX_FOLDER
            "/world' --release /tmp/release --ready /tmp/ready --log /tmp/log"
            " </dev/null >/dev/null 2>&1 & echo $! > /tmp/world");
        EXPECT_TRUE(eventually([] { return std::filesystem::exists("/tmp/ready"); }));
    }
    ~World() { run("kill $(cat /tmp/world)"); }
};

/// What curl exits with for `url`: 0, or 60 for a certificate that it does not accept.
int statusOfCurl(const std::string& url) { return run("curl -s -o /dev/null " + url).status; }

TEST(Sandbox, HasNoNetworkButLoopback) {
    EXPECT_EQ(run("tail -n +3 /proc/net/dev | cut -d: -f1 | tr -d ' '").output, "lo\n");
    EXPECT_EQ(run("getent hosts " + kName + " | cut -d' ' -f1").output, "127.0.0.1\n");
    EXPECT_NE(run("getent hosts elsewhere.example").status, 0);
}

TEST(Sandbox, IsAMacThatHasNeverSeenTheClient) {
    EXPECT_TRUE(std::filesystem::is_empty("/Applications"));
    EXPECT_EQ(run("ls ~").output, "Library\n");
    EXPECT_EQ(run("ls ~/Library").output, "");
    EXPECT_EQ(run("mkdir -m 0777 /Applications/Velnor && touch /Applications/Velnor/x ~/x").status,
              0);
    EXPECT_NE(run("touch /x 2>/dev/null").status, 0);
}

TEST(Sandbox, RunsAsAnOrdinaryUser) {
    EXPECT_EQ(run("id -un; id -u").output, "rehearsal\n1000\n");
    EXPECT_EQ(run("grep CapEff /proc/self/status").output, "CapEff:\t0000000000000000\n");
    EXPECT_EQ(run("command -v launchctl").output, "/bin/launchctl\n");
}

TEST(World, ServesAReleaseOverTrustedConnections) {
    const World world;
    EXPECT_EQ(run("curl -s '" + kConfiguration + "'").output, "a=b\n");
    EXPECT_EQ(run("curl -s " + kContent + "tool.tar.gz").output, "some bytes");
    EXPECT_EQ(run("curl -s " + kContent + "origin.example/a/tool.tar.gz").output, "some bytes");
    EXPECT_EQ(run("curl -s -o /dev/null -w '%{http_code}' " + kContent + "other").output, "404");
    EXPECT_NE(harness::readFile("/tmp/log").find("GET /origin.example/a/tool.tar.gz 200 10\n"),
              std::string::npos);
}

TEST(Certificates, OnlyTheServersOwnIsAccepted) {
    for (const auto& [name, expected] :
         {std::pair{"server", 0}, {"untrusted", 60}, {"expired", 60}, {"wrong-host", 60}}) {
        sandbox::FileServer server(0, sandbox::tlsFiles(name));
        server.serve("/", "hello");
        const std::string url = "https://" + kName + ":" + std::to_string(server.port()) + "/";
        EXPECT_EQ(statusOfCurl(url), expected) << name;
    }
}

TEST(StandinClient, AnswersPingAndItsModes) {
    const std::string ping = "curl -s -m 1 'http://127.0.0.1:9421/api?function=ping&cid=0'";
    run("'" SANDBOX_FOLDER "/standin_client' </dev/null >/dev/null 2>&1 & echo $! > /tmp/client");
    EXPECT_TRUE(eventually([&] { return run(ping).output.find("pong") != std::string::npos; }));
    EXPECT_EQ(run("curl -s -o /dev/null -w '%{http_code}' http://127.0.0.1:9421/").output, "404");
    harness::writeFile("/tmp/standin_client.mode", "garbage");
    EXPECT_EQ(run(ping).output.find("pong"), std::string::npos);
    harness::writeFile("/tmp/standin_client.mode", "mute");
    EXPECT_EQ(run(ping).status, 28);
    run("kill $(cat /tmp/client)");
    EXPECT_TRUE(eventually([&] { return run(ping).status == 7; }));
    harness::writeFile("/tmp/standin_client.mode", "refuse");
    EXPECT_EQ(run("'" SANDBOX_FOLDER "/standin_client' 2>/dev/null").status, 1);
}

}  // namespace
