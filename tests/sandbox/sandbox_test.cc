// The rehearsal itself: nobody outside can be reached, its folders, hosts and servers are the ones
// that the product will meet, and its stand-in client misbehaves on demand.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "harness/files.h"
#include "harness/shell.h"
#include "velnor_deployment.h"

namespace {

using harness::eventually;
using harness::run;

const std::string kConfigurationHost = velnor::deployment::kConfigurationHost;
const std::string kName = kConfigurationHost.substr(0, kConfigurationHost.find(':'));
const std::string kConfiguration = "https://" + kConfigurationHost + "/conf/client_ini.html?guid=0";
const std::string kContent = "https://" + std::string(velnor::deployment::kContentHost) + "/";

/// `world` serving a client.ini of one line and one file, and keeping logs, until the object goes.
class World {
  public:
    World() {
        std::filesystem::create_directories("/tmp/release/files");
        std::filesystem::create_directories("/tmp/logs");
        harness::writeFile("/tmp/release/client.ini", "a=b\n");
        harness::writeFile("/tmp/release/files/tool.tar.gz", "some bytes");
        run("'" SANDBOX_FOLDER
            "/world' --release /tmp/release --ready /tmp/ready --log /tmp/log --logs /tmp/logs"
            " </dev/null >/dev/null 2>&1 & echo $! > /tmp/world");
        EXPECT_TRUE(eventually([] { return std::filesystem::exists("/tmp/ready"); }));
    }
    ~World() { run("kill $(cat /tmp/world)"); }
};

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
    EXPECT_EQ(run("curl -s -r 5- -w ' %{http_code}' " + kContent + "tool.tar.gz").output,
              "bytes 206");
    EXPECT_NE(harness::readFile("/tmp/log").find("GET /origin.example/a/tool.tar.gz 200 10\n"),
              std::string::npos);
}

TEST(World, KeepsLogsUnderPlainNamesOnly) {
    const World world;
    const std::pair<const char*, const char*> rows[] = {
        {"PUT /logs/a-1_B.log", "200"}, {"GET /logs/a-1_B.log", "405"},
        {"PUT /logs/", "404"},          {"PUT /logs/.b", "404"},
        {"PUT /logs/../b", "404"},      {"PUT /logs/a%2fb", "404"},
        {"PUT /logs/a?b", "404"},       {"PUT /b", "404"},
    };
    const std::string curl = "curl -s -o /dev/null -w '%{http_code}' --path-as-is -d 'a log'";
    for (const auto& [request, status] : rows) {
        std::string arguments = request;
        arguments.insert(arguments.find('/'), "'http://log.velnor.example:8445");
        EXPECT_EQ(run(curl + " -X " + arguments + "'").output, status) << request;
    }
    EXPECT_EQ(run("cd /tmp/logs && grep -r . .").output, "./a-1_B.log:a log\n");
    EXPECT_NE(harness::readFile("/tmp/log").find(":8445 PUT /logs/a-1_B.log 200 5\n"),
              std::string::npos);
}

/// What the stand-in client replies to a function of its interface, as curl's status or the body.
harness::CommandResult ask(const std::string& function) {
    return run("curl -s -m 1 'http://127.0.0.1:9421/api?function=" + function + "'");
}

void setMode(const std::string& mode) { harness::writeFile("/tmp/standin_client.mode", mode); }

TEST(StandinClient, MisbehavesAsItsModeSays) {
    const auto answers = [] { return ask("ping").output == R"({"result":"pong"})"; };
    const auto serversKnow = [] {
        return ask("getClientAttributes").output.find(R"("uninstallMsgSent":true)") !=
               std::string::npos;
    };
    run("'" SANDBOX_FOLDER "/standin_client' </dev/null >/dev/null 2>&1 & echo $! > /tmp/client");
    EXPECT_TRUE(eventually(answers));
    EXPECT_FALSE(serversKnow()) << "nobody has left";
    ask("uninstall");
    EXPECT_TRUE(eventually(serversKnow));
    setMode("unacknowledged");
    EXPECT_FALSE(serversKnow());
    setMode("garbage");
    EXPECT_FALSE(answers());
    setMode("mute");
    EXPECT_EQ(ask("ping").status, 28) << "a time-out";
    run("kill $(cat /tmp/client)");
    EXPECT_TRUE(eventually([] { return ask("ping").status == 7; }));
    setMode("refuse");
    EXPECT_EQ(run("'" SANDBOX_FOLDER "/standin_client' 2>/dev/null").status, 1);
}

}  // namespace
