// The published nginx configurations, as installers and others meet them.
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <string>

#include "deploy/publish_command.h"
#include "harness/harness.h"
#include "velnor_deployment.h"

using harness::readFile;
using harness::run;

namespace {

const std::string kConfigHost = velnor::deployment::kConfigurationHost;
const std::string kContentHost = velnor::deployment::kContentHost;
const std::string kOriginFolder = "/origin.velnor.example/1.6.5/";
const std::string kArtifacts = "/Applications/srv/velnor/files" + kOriginFolder;
const std::string kRewritten = "https://" + kContentHost + kOriginFolder;
const std::string kClientIni = "/Applications/srv/velnor/client.ini";
const std::string kLogs = "/Applications/srv/velnor-logs/logs/";
const std::string kLogUrl = "http://127.0.0.1:8080/logs/";
const std::string kLogName = "0123456789abcdef0123456789abcdef.log";
const std::string kOwn = " " + kLogUrl + kLogName;

/// nginx with these files of deploy/hosting; it ends with the test's sandbox.
void host(const std::string& configurations,
          const std::string& certificate = TLS_FOLDER "/server") {
    const harness::CommandResult started =
        run("'" WEB_HOST "' '" NGINX "' '" HOSTING "' " + kConfigHost + " " + kContentHost + " '" +
            certificate + "' " + configurations + " 2>&1");
    ASSERT_EQ(started.status, 0) << "nginx does not start; is it missing? (make deps)\n"
                                 << started.output;
    std::filesystem::create_directories(kArtifacts);
}

// The answer's status, or what curl says when there is none.
std::string statusOf(const std::string& request) {
    return run("cd /tmp && curl -sS -o /dev/null -w '%{http_code}' " + request + " 2>&1").output;
}

// It makes its file "pid" in its own time, and is gone a moment after that.
const std::string kStop =
    "cd /tmp/nginx; until [ -s pid ]; do sleep 0.01; done; kill $(cat pid); "
    "while [ -e pid ]; do sleep 0.01; done; ";
const std::string kCheckLive = "'" VN_PUBLISH "' --check-live";

/// Puts a release in place, with the rewrite to the content host.
void publishRelease() {
    PublishCommand release;
    release.client = kArtifacts + "ksmac_1.6.5";
    release.clientUrl = "https:/" + kOriginFolder + "ksmac_1.6.5";
    release.uiTool = kArtifacts + "ui.tar.gz";
    release.uiToolUrl = "https:/" + kOriginFolder + "ui.tar.gz";
    release.logUrl = kLogUrl;
    release.output = kClientIni;
    release.more = "--content-host-rewrite";
    std::filesystem::copy_file(STANDIN_CLIENT, release.client);
    ASSERT_EQ(run("cd " + kFolder + " && tar -czf " + release.uiTool + " ui").status, 0);
    ASSERT_EQ(release.run().status, 0);
}

void expectClientIni() {
    const std::string head = run("curl -sS -D - -o /dev/null -H 'Accept-Encoding: gzip' https://" +
                                 kConfigHost + "/conf/client_ini.html?guid=0123456789abcdef")
                                 .output;
    for (const char* line : {"Content-Type: text/plain\r\n", "Content-Encoding: gzip\r\n",
                             "Cache-Control: no-store\r\n"}) {
        EXPECT_NE(head.find(line), std::string::npos) << head;
    }
}

void expectOneArtifact() {
    const std::string port = kContentHost.substr(kContentHost.find(':'));
    EXPECT_EQ(statusOf("https://origin.velnor.example" + port + "/1.6.5/ksmac_1.6.5"), "200");
    EXPECT_EQ(statusOf(kRewritten + "ksmac_1.6.5"), "200");
    EXPECT_EQ(statusOf(kRewritten + "ksmac_1.6.6"), "404");
    EXPECT_EQ(statusOf("https://" + kContentHost + "/localhost/1.6.5/ksmac_1.6.5"), "404");
}

TEST(Hosting, CarriesAnInstallationAndStoresItsLog) {
    host("config.conf content.conf downloads.conf logs.conf");
    publishRelease();
    const harness::CommandResult live = run(kCheckLive);
    EXPECT_EQ(live.status, 0) << live.output;
    const std::regex client("\nksmac_1.6.5  " + kRewritten +
                            "ksmac_1.6.5  accepted, [0-9]{1,3}(,[0-9]{3})+ bytes\n");
    EXPECT_TRUE(std::regex_search(live.output, client)) << live.output;
    EXPECT_FALSE(harness::exists(harness::kInstallPath));

    const harness::CommandResult installed = run("'" VNCTL "' install 2>&1 </dev/null");
    EXPECT_EQ(installed.status, 0) << installed.output;
    const std::string name = readFile(harness::installed("guid.ini")).substr(0, 32) + ".log";
    EXPECT_EQ(run("ls -A " + kLogs).output, name + "\n");
    EXPECT_EQ(readFile(kLogs + name), readFile(harness::installed("installer.txt")));

    expectClientIni();
    expectOneArtifact();
}

// Done in the folder of the servers' files, and what the check says then.
const std::pair<std::string, const char*> kLiveFaults[] = {
    {"rm files/*/*/ksmac*", "ksmac_1.6.5  refused: answers with status 404"},
    {"truncate -s 0 files/*/*/ui*", "refused: is empty"},
    {"truncate -s +1 files/*/*/ksmac*", "it is not the file that was signed"},
    {"sed -i 's/ToolSig=./&0/' client.ini", "its signature is not by the key"},
    {"sed -i /ToolSig/d client.ini", "client.ini has no MacOSUIToolSig="},
    {"sed -i /ToolURL/d client.ini", "ksmacui.tar.gz  refused: client.ini has no MacOSUIToolURL="},
    {"truncate -s 60 client.ini", "it has no MacOSClientURL="},
    {"sed -i 's,/logs/,\x1b,' client.ini", "LogfileUploadURL= is no URL"},
    {"sed -i 's/true/false/; s/origin[.]/nowhere./' client.ini", "host has no address"},
    {"rm client.ini", "guid=00000000000000000000000000000000  refused: answers with status 404"},
    {kStop, "host does not answer"},
};

TEST(Hosting, LiveCheckSaysWhatInstallersWouldTripOver) {
    host("config.conf content.conf downloads.conf");
    publishRelease();
    run("cp -a /Applications/srv/velnor /tmp/whole");
    for (const auto& [fault, said] : kLiveFaults) {
        run("cd /Applications/srv/velnor; " + fault);
        const harness::CommandResult live = run(kCheckLive);
        EXPECT_EQ(live.status, 1) << fault;
        EXPECT_NE(live.output.find(said), std::string::npos) << fault << '\n' << live.output;
        EXPECT_EQ(live.output.find('\x1b'), std::string::npos);
        run("cp -a /tmp/whole/. /Applications/srv/velnor");
    }
}

TEST(Hosting, LiveCheckNamesWhatIsWrongWithACertificate) {
    host("config.conf", TLS_FOLDER "/expired");
    const std::string said = run(kCheckLive).output;
    EXPECT_NE(said.find("certificate has expired"), std::string::npos) << said;
}

// What each of these GUIDs gets, one letter each, after this share was set as the guide does it.
std::string drawn(const std::string& share, const std::string& guids) {
    run(kStop + "sed -i 's/^    [0-9.]*% /    " + share +
        " /' conf.d/rollout.conf; '" NGINX "' -e error.log -p . -c nginx.conf");
    const std::string url = "https://" + kConfigHost + "/conf/client_ini.html?guid=";
    harness::writeFile("/tmp/guids", guids);
    return run("sed 's,.*,url = \"" + url + "&\",' /tmp/guids | curl -sS -K - 2>&1").output;
}

TEST(Hosting, RolloutDrawsAShareThatKeepsItsMembers) {
    host("rollout.conf");
    const std::string next = "/Applications/srv/velnor/next/client.ini";
    std::filesystem::create_directory("/Applications/srv/velnor/next");
    harness::writeFile(kClientIni, "o");
    harness::writeFile(next, "n");
    const std::string guids = run("seq -f %032.0f 10000").output;
    const std::string yours = std::string(32, 'F') + "\n";
    const std::string first = drawn("1%", guids + yours);
    const std::string then = drawn("10%", guids + guids.substr(0, 33 * 1'000));
    ASSERT_EQ(first.size(), 10'001U) << first.substr(0, 200);
    EXPECT_EQ(first.back(), 'n') << "32 f";
    EXPECT_EQ(then.substr(0, 1'000), then.substr(10'000)) << "asked twice";
    int shares[2] = {};
    for (size_t i = 0; i < 10'000; ++i) {
        shares[0] += first[i] == 'n';
        shares[1] += then[i] == 'n';
        EXPECT_LE(first[i] == 'n', then[i] == 'n');
    }
    EXPECT_NEAR(shares[0], 100, 30);
    EXPECT_NEAR(shares[1], 1'000, 100);

    const std::string special = std::string(32, '0') + "\n\n0123\n" + std::string(32, 'x') + "\n" +
                                std::string(33, 'a') + "\n0123456789ABCDEF0123456789abcdef\n";
    EXPECT_EQ(drawn("100%", special), "ooooon");
    std::filesystem::remove(next);
    EXPECT_EQ(drawn("100%", yours), "o") << "halted";
}

TEST(Hosting, HasAnArtifactThroughTheProxyAndKeepsIt) {
    host("downloads.conf content-proxy.conf");
    harness::writeFile(kArtifacts + "ksmac_1.6.5", "content");
    expectOneArtifact();
    std::filesystem::remove(kArtifacts + "ksmac_1.6.5");
    EXPECT_EQ(run("curl -sS " + kRewritten + "ksmac_1.6.5").output, "content");
}

TEST(LogServer, SaysYesToEachLogAndKeepsTheLast) {
    host("logs.conf");
    run("cd /tmp; truncate -s 4M largest; seq 100000 >last");
    for (const std::string file : {"largest", "last"}) {
        // As an installer sends it; curl would rather ask first whether it may.
        EXPECT_EQ(statusOf("-H Expect: -T " + file + kOwn), "200") << file;
        EXPECT_EQ(readFile(kLogs + kLogName), readFile("/tmp/" + file)) << file;
        EXPECT_EQ(harness::modeOf(kLogs + kLogName), 0600U);
    }
    const std::string statuses = run("curl -s -w '%{http_code} ' -o /dev/null '" + kLogUrl +
                                     "0123456789abcdef0123456789abc[100-199].log'")
                                     .output;
    EXPECT_TRUE(statuses.ends_with("429 ")) << "one that sends too many is slowed down";
}

TEST(LogServer, RefusesEverythingElse) {
    host("logs.conf");
    run("echo before >" + kLogs + kLogName + "; cd /tmp; echo >log; truncate -s 4194305 large");
    const std::pair<std::string, const char*> rows[] = {
        {kOwn, "403"},
        {"-X DELETE" + kOwn, "403"},
        {kLogUrl, "404"},
        {"-T log http://127.0.0.1:8080/stored", "404"},
        {"-X DELETE 'http://127.0.0.1:8081/logs/" + kLogName + "'", "403"},
        {"-T log " + kLogUrl + "0123456789abcdef0123456789abcde.log", "404"},
        {"-T log " + kLogUrl + "0123456789ABCDEF0123456789ABCDEF.log", "404"},
        {"-T log " + kLogUrl + kLogName + ".html", "404"},
        {"-T log " + kLogUrl + "0123456789abcdef0123456789abcdef_log", "404"},
        {"-T log " + kLogUrl + "logs/" + kLogName, "404"},
        {"-T large" + kOwn, "413"},
    };
    for (const auto& [request, status] : rows) EXPECT_EQ(statusOf(request), status) << request;
    EXPECT_EQ(run("cd " + kLogs + "; ls -A; cat *").output, kLogName + "\nbefore\n");
    std::filesystem::remove_all(kLogs);
    EXPECT_EQ(statusOf("-T log" + kOwn), "500") << "what cannot be stored";
}

}  // namespace
