// The published nginx configurations, as installers and others meet them.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "deploy/publish_command.h"
#include "harness/harness.h"
#include "net/fetch.h"
#include "velnor_deployment.h"

using harness::readFile;
using harness::run;
using harness::writeFile;

namespace {

const std::string kConfigHost = velnor::deployment::kConfigurationHost;
const std::string kContentHost = velnor::deployment::kContentHost;
const std::string kOriginFolder = "/origin.velnor.example/1.6.5/";
const std::string kArtifacts = "/Applications/srv/velnor/files" + kOriginFolder;
const std::string kClientIni = "/Applications/srv/velnor/client.ini";
const std::string kLogs = "/Applications/srv/velnor-logs/logs/";
const std::string kLogUrl = "http://127.0.0.1:8080/logs/";
const std::string kLogName = "0123456789abcdef0123456789abcdef.log";

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

// As an installer sends it; curl would rather ask first whether it may.
std::string put(const std::string& file, const std::string& name) {
    return statusOf("-H 'Expect:' --path-as-is -T " + file + " '" + kLogUrl + name + "'");
}

TEST(Hosting, CarriesAnInstallationAndStoresItsLog) {
    host("config.conf content.conf logs.conf");
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
    EXPECT_EQ(run("grep -c PUT /tmp/nginx/access.log").output, "1\n");
}

TEST(Hosting, ServesTheNewestClientIniAsItIs) {
    host("config.conf");
    const std::string url =
        "https://" + kConfigHost + "/conf/client_ini.html?guid=0123456789abcdef";
    for (const std::string& text : {std::string("Key=1\r\n\n\xff"), std::string(5000, 'x')}) {
        writeFile(kClientIni, text);
        EXPECT_EQ(fetch(url).body, text);
        EXPECT_EQ(run("curl -sS '" + url + "'").output, text);
    }
    const std::string head =
        run("curl -sS -D - -o /dev/null -H 'Accept-Encoding: gzip' '" + url + "'").output;
    for (const char* line : {"Content-Type: text/plain\r\n", "Content-Encoding: gzip\r\n",
                             "Cache-Control: no-store\r\n"}) {
        EXPECT_NE(head.find(line), std::string::npos) << head;
    }
}

void expectArtifacts() {
    const std::string data = run("head -c 3000000 /dev/urandom").output;
    writeFile(kArtifacts + "ksmac_1.6.5", data);
    const std::string port = kContentHost.substr(kContentHost.find(':'));
    const std::string rewritten = "https://" + kContentHost + kOriginFolder;
    EXPECT_EQ(fetch("https://origin.velnor.example" + port + "/1.6.5/ksmac_1.6.5").body, data);
    EXPECT_EQ(fetch(rewritten + "ksmac_1.6.5").body, data);
    EXPECT_EQ(statusOf(rewritten + "ksmac_1.6.6"), "404");
    EXPECT_EQ(statusOf("https://" + kContentHost + "/localhost/1.6.5/ksmac_1.6.5"), "404");
}

TEST(Hosting, HasAnArtifactUnderBothUrls) {
    host("downloads.conf content.conf");
    expectArtifacts();
}

TEST(Hosting, HasAnArtifactThroughTheProxyAndKeepsIt) {
    host("downloads.conf content-proxy.conf");
    expectArtifacts();
    std::filesystem::remove(kArtifacts + "ksmac_1.6.5");
    EXPECT_EQ(statusOf("https://" + kContentHost + kOriginFolder + "ksmac_1.6.5"), "200");
}

TEST(LogServer, SaysYesToEachLogAndKeepsTheLast) {
    host("logs.conf");
    run("seq 100000 >/tmp/first; truncate -s 4M /tmp/largest; echo short >/tmp/last");
    for (const std::string file : {"first", "largest", "last"}) {
        EXPECT_EQ(put(file, kLogName), "200") << file;
        EXPECT_EQ(readFile(kLogs + kLogName), readFile("/tmp/" + file)) << file;
        EXPECT_EQ(harness::modeOf(kLogs + kLogName), 0600U);
    }
    const std::string statuses = run("curl -s -w '%{http_code} ' -o /dev/null -T /tmp/last '" +
                                     kLogUrl + "0123456789abcdef0123456789abc[100-199].log'")
                                     .output;
    EXPECT_TRUE(statuses.ends_with("429 ")) << "one that sends too many is slowed down";
}

TEST(LogServer, RefusesEverythingElse) {
    host("logs.conf");
    writeFile(kLogs + kLogName, "before");
    run("echo after >/tmp/log; truncate -s 4194305 /tmp/large");
    const std::string own = " '" + kLogUrl + kLogName + "'";
    const std::pair<std::string, const char*> rows[] = {
        {own, "403"},
        {"-X DELETE" + own, "403"},
        {kLogUrl, "404"},
        {"-T log http://127.0.0.1:8080/stored", "404"},
        {"-X DELETE 'http://127.0.0.1:8081/logs/" + kLogName + "'", "403"},
        {"-T log " + kLogUrl + "0123456789abcdef0123456789abcde.log", "404"},
        {"-T log " + kLogUrl + "0123456789ABCDEF0123456789ABCDEF.log", "404"},
        {"-T log " + kLogUrl + kLogName + ".html", "404"},
        {"-T log " + kLogUrl + "0123456789abcdef0123456789abcdef_log", "404"},
        {"-T log " + kLogUrl + "logs/" + kLogName, "404"},
        {"-T large" + own, "413"},
    };
    for (const auto& [request, status] : rows) EXPECT_EQ(statusOf(request), status) << request;
    EXPECT_EQ(readFile(kLogs + kLogName), "before");
    EXPECT_EQ(run("ls -A " + kLogs).output, kLogName + "\n");
    std::filesystem::remove_all(kLogs);
    EXPECT_EQ(put("log", kLogName), "500") << "what cannot be stored";
}

}  // namespace
