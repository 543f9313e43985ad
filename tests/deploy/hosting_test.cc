// The published nginx configurations, as installers and others meet them.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "deploy/publish_command.h"
#include "deploy/web_host.h"
#include "harness/files.h"
#include "harness/shell.h"
#include "net/fetch.h"
#include "velnor_deployment.h"

using harness::readFile;
using harness::run;
using harness::writeFile;

namespace {

const std::string kArtifactUrl = "https://origin.velnor.example/1.6.5/ksmac_1.6.5";
const std::string kArtifacts = kSrv + "velnor/files/origin.velnor.example/1.6.5/";
const std::string kClientIni = kSrv + "velnor/client.ini";
const std::string kLogs = kSrv + "velnor-logs/logs/";
const std::string kLogName = "0123456789abcdef0123456789abcdef.log";

// The answer's status, or what curl says when there is none.
std::string statusOf(const std::string& request) {
    return run("cd /tmp && curl -sS -o /dev/null -w '%{http_code}' " + request + " 2>&1").output;
}

// As an installer sends it; curl would rather ask first whether it may.
std::string put(const std::string& file, const std::string& name) {
    return statusOf("-H 'Expect:' --path-as-is -T " + file + " '" + kLogUrl + name + "'");
}

std::string filesIn(const std::string& folder) { return run("ls -A " + folder).output; }

TEST(Hosting, CarriesAnInstallationAndStoresItsLog) {
    const WebHost host({"config.conf", "content.conf", "logs.conf"});
    PublishCommand release;
    release.client = STANDIN_CLIENT;
    release.clientUrl = kArtifactUrl;
    ASSERT_EQ(run("cd " + kFolder + " && tar -czf ui.tar.gz ui").status, 0);
    release.uiTool = "ui.tar.gz";
    release.uiToolUrl = "https://origin.velnor.example/1.6.5/ui.tar.gz";
    release.logUrl = kLogUrl;
    release.output = kClientIni;
    release.more = "--content-host-rewrite";
    std::filesystem::create_directories(kArtifacts);
    std::filesystem::copy_file(STANDIN_CLIENT, kArtifacts + "ksmac_1.6.5");
    std::filesystem::copy_file(kFolder + "ui.tar.gz", kArtifacts + "ui.tar.gz");
    ASSERT_EQ(release.run().status, 0);

    const harness::CommandResult installed = run("'" VNCTL "' install 2>&1 </dev/null");
    EXPECT_EQ(installed.status, 0) << installed.output;
    const std::string name = readFile(harness::installed("guid.ini")).substr(0, 32) + ".log";
    EXPECT_EQ(filesIn(kLogs), name + "\n");
    EXPECT_EQ(readFile(kLogs + name), readFile(harness::installed("installer.txt")));
    EXPECT_EQ(run("grep -c PUT " + kAccessLog).output, "1\n");
}

TEST(Hosting, ServesTheNewestClientIniAsItIs) {
    const WebHost host({"config.conf"});
    std::filesystem::create_directories(kSrv + "velnor");
    const std::string url = "https://" + std::string(velnor::deployment::kConfigurationHost) +
                            "/conf/client_ini.html?guid=0123456789abcdef0123456789abcdef";
    for (const std::string& text : {std::string("Key=1\r\n\n\xff"), std::string(5000, 'x')}) {
        writeFile(kClientIni + ".new", text);
        std::filesystem::rename(kClientIni + ".new", kClientIni);
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

class HostedArtifact : public testing::TestWithParam<const char*> {};

TEST_P(HostedArtifact, IsThereUnderBothUrls) {
    const WebHost host({"downloads.conf", GetParam()});
    const std::string data = run("head -c 3000000 /dev/urandom").output;
    std::filesystem::create_directories(kArtifacts);
    writeFile(kArtifacts + "ksmac_1.6.5", data);
    const std::string contentHost = velnor::deployment::kContentHost;
    const std::string port = contentHost.substr(contentHost.find(':'));
    const std::string rewritten = "https://" + contentHost + "/origin.velnor.example/1.6.5/";
    EXPECT_EQ(fetch("https://origin.velnor.example" + port + "/1.6.5/ksmac_1.6.5").body, data);
    EXPECT_EQ(fetch(rewritten + "ksmac_1.6.5").body, data);
    EXPECT_EQ(statusOf(rewritten + "ksmac_1.6.6"), "404");
    EXPECT_EQ(statusOf("https://" + contentHost + "/localhost/1.6.5/ksmac_1.6.5"), "404");
}

INSTANTIATE_TEST_SUITE_P(All, HostedArtifact, testing::Values("content.conf", "content-proxy.conf"),
                         [](const auto& tested) {
                             return std::string(tested.param) == "content.conf" ? "Folder"
                                                                                : "Proxy";
                         });

TEST(ContentProxy, KeepsWhatItHasFetched) {
    const WebHost host({"downloads.conf", "content-proxy.conf"});
    const std::string url = "https://" + std::string(velnor::deployment::kContentHost) +
                            "/origin.velnor.example/1.6.5/ui.tar.gz";
    std::filesystem::create_directories(kArtifacts);
    writeFile(kArtifacts + "ui.tar.gz", "archive");
    EXPECT_EQ(fetch(url).body, "archive");
    std::filesystem::remove(kArtifacts + "ui.tar.gz");
    EXPECT_EQ(fetch(url).body, "archive");
}

TEST(LogServer, SaysYesToEachLogAndKeepsTheLast) {
    const WebHost host({"logs.conf"});
    run("seq 100000 >/tmp/first; truncate -s 4M /tmp/largest; echo short >/tmp/last");
    for (const std::string file : {"first", "largest", "last"}) {
        EXPECT_EQ(put(file, kLogName), "200") << file;
        EXPECT_EQ(readFile(kLogs + kLogName), readFile("/tmp/" + file)) << file;
        EXPECT_EQ(harness::modeOf(kLogs + kLogName), 0600U);
    }
    EXPECT_EQ(filesIn(kSrv + "velnor-logs/incoming"), "");
}

TEST(LogServer, RefusesEverythingElse) {
    const WebHost host({"logs.conf"});
    writeFile(kLogs + kLogName, "before");
    writeFile("/tmp/log", "after");
    const std::string own = " '" + kLogUrl + kLogName + "'";
    const std::pair<std::string, const char*> rows[] = {
        {own, "403"},
        {"-X DELETE" + own, "403"},
        {"-X MOVE -H 'Destination: /logs/x.log'" + own, "403"},
        {kLogUrl, "404"},
        {"-T log http://127.0.0.1:8080/stored", "404"},
        {"-X DELETE 'http://127.0.0.1:8081/logs/" + kLogName + "'", "403"},
    };
    for (const auto& [request, status] : rows) {
        EXPECT_EQ(statusOf(request), status) << request;
    }
    for (const char* name : {
             "0123456789abcdef0123456789abcde.log",
             "0123456789ABCDEF0123456789ABCDEF.log",
             "0123456789abcdef0123456789abcdef.log.html",
             "0123456789abcdef0123456789abcdef_log",
             "logs/0123456789abcdef0123456789abcdef.log",
             "%2e%2e/0123456789abcdef0123456789abcdef.log",
         }) {
        const std::string status = put("log", name);
        EXPECT_TRUE(status == "404" || status == "400") << name << ": " << status;
    }
    run("truncate -s 4194305 /tmp/large");
    EXPECT_EQ(put("large", kLogName), "413");
    EXPECT_EQ(filesIn(kLogs), kLogName + "\n");
    EXPECT_EQ(readFile(kLogs + kLogName), "before");
}

TEST(LogServer, SlowsDownWhoSendsTooMany) {
    const WebHost host({"logs.conf"});
    writeFile("/tmp/log", "log");
    const std::string statuses = run("curl -s -w '%{http_code}\\n' -o /dev/null -T /tmp/log '" +
                                     kLogUrl + "0123456789abcdef0123456789abc[100-199].log'")
                                     .output;
    EXPECT_TRUE(statuses.starts_with("200\n200\n")) << statuses;
    EXPECT_TRUE(statuses.ends_with("429\n")) << statuses;
}

TEST(LogServer, SaysNoWhenItCannotStore) {
    const WebHost host({"logs.conf"});
    writeFile("/tmp/log", "log");
    std::filesystem::permissions(kLogs, std::filesystem::perms::owner_read);
    EXPECT_EQ(put("log", kLogName), "500");
    std::filesystem::remove(kLogs);
    EXPECT_EQ(put("log", kLogName), "500");
}

TEST(LogServer, KeepsTheOldLogWhenTheNewOneBreaksOff) {
    const WebHost host({"logs.conf"});
    writeFile(kLogs + kLogName, "before");
    run("bash -c 'exec 3<>/dev/tcp/127.0.0.1/8080; printf \"PUT /logs/" + kLogName +
        " HTTP/1.1\\r\\nHost: h\\r\\nContent-Length: 6\\r\\n\\r\\nhal\" >&3'");
    EXPECT_TRUE(harness::eventually(
        [] { return readFile(kAccessLog).find("HTTP/1.1\" 400 ") != std::string::npos; }));
    EXPECT_EQ(readFile(kLogs + kLogName), "before");
}

TEST(LogServerOnFullDisk, SaysNoAndKeepsTheOldLog) {
    const WebHost host({"logs.conf"});
    writeFile(kLogs + kLogName, "before");
    run("seq 100000 >/tmp/log");
    harness::fillDisk("/Applications", 1);
    EXPECT_EQ(put("log", kLogName), "500");
    EXPECT_EQ(readFile(kLogs + kLogName), "before");
    EXPECT_TRUE(harness::eventually([] { return filesIn(kSrv + "velnor-logs/incoming").empty(); }));
}

}  // namespace
