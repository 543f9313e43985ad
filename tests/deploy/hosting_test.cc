// The published nginx configurations, as installers and others meet them.
#include <gtest/gtest.h>

#include <filesystem>
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
void host(const std::string& configurations) {
    const harness::CommandResult started =
        run("'" WEB_HOST "' '" NGINX "' '" HOSTING "' " + kConfigHost + " " + kContentHost +
            " '" TLS_SERVER "' " + configurations + " 2>&1");
    ASSERT_EQ(started.status, 0) << "nginx does not start; is it missing? (make deps)\n"
                                 << started.output;
    std::filesystem::create_directories(kArtifacts);
}

// The answer's status, or what curl says when there is none.
std::string statusOf(const std::string& request) {
    return run("cd /tmp && curl -sS -o /dev/null -w '%{http_code}' " + request + " 2>&1").output;
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

    const harness::CommandResult installed = run("'" VNCTL "' install 2>&1 </dev/null");
    EXPECT_EQ(installed.status, 0) << installed.output;
    const std::string name = readFile(harness::installed("guid.ini")).substr(0, 32) + ".log";
    EXPECT_EQ(run("ls -A " + kLogs).output, name + "\n");
    EXPECT_EQ(readFile(kLogs + name), readFile(harness::installed("installer.txt")));

    expectClientIni();
    expectOneArtifact();
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
