// vnctl install: command lines, exit statuses, and what it says about an outcome.
#include <gtest/gtest.h>

#include <string>

#include "harness/files.h"
#include "harness/shell.h"
#include "harness/signing.h"
#include "sandbox/servers/release.h"
#include "sandbox/servers/tls_files.h"
#include "velnor_deployment.h"

using harness::run;

namespace {

const std::string kConfigurationHost = velnor::deployment::kConfigurationHost;

harness::CommandResult vnctl(const std::string& arguments) {
    return run("'" VNCTL "' " + arguments);
}

// A configuration server and content host in one.
class Maker {
  public:
    explicit Maker(const std::string& clientIni)
        : server_(std::stoi(kConfigurationHost.substr(kConfigurationHost.find(':') + 1)),
                  sandbox::tlsFiles("server")) {
        const sandbox::Release release{clientIni, {{"ksmac_1", kClient}, {"ui", kArchive}}};
        serveContent(server_, release);
        serveConfiguration(server_, release);
    }

    static std::string releaseIni() {
        const std::string base = "https://" + kConfigurationHost + "/files/";
        return "LogfileUploadURL=http://h/put\nMacOSClientURL=" + base +
               "ksmac_1\nMacOSClientSig=" + harness::sign(kClient) + "\nMacOSUIToolURL=" + base +
               "ui\nMacOSUIToolSig=" + harness::sign(kArchive) + "\n";
    }

  private:
    static inline const std::string kClient = harness::readFile(STANDIN_CLIENT);
    static inline const std::string kArchive =
        run("cd /tmp; touch tool; tar -cz tool 2>/dev/null").output;
    sandbox::FileServer server_;
};

TEST(VnctlInstall, ShowsProgressAndSuccess) {
    const Maker maker(Maker::releaseIni());
    const harness::CommandResult result =
        vnctl("install --name 'Some App' --eula terms --cid 7 2>&1 </dev/null");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "5%\n10%\n15%\n80%\n85%\n90%\n95%\n100%\nSuccess\n");
    EXPECT_EQ(harness::readFile(harness::installed("appregistry.dat")), "Some App\n");
    EXPECT_EQ(harness::readFile(harness::installed("accepteula.txt")), "7_terms\r\n");
    // A second time the client is there already, and the name is that of the installer.
    EXPECT_EQ(vnctl("install").output, "5%\n10%\n90%\n95%\n100%\nSuccess\n");
    EXPECT_EQ(harness::readFile(harness::installed("appregistry.dat")), "Some App\nVelnor\n");
    EXPECT_EQ(vnctl("install").status, 0);
}

TEST(VnctlInstall, NamesTheUrlThatCouldNotBeFetched) {
    const harness::CommandResult result = vnctl("install 2>&1 >/dev/null");
    const std::string guid = harness::readFile(harness::installed("guid.ini")).substr(0, 32);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "vnctl: Network Failure. Failed to download https://" +
                                 kConfigurationHost + "/conf/client_ini.html?guid=" + guid + "\n");
    EXPECT_EQ(vnctl("install 2>/dev/null").output, "5%\n10%\n15%\n");
}

TEST(VnctlInstall, KeepsWhatAServerSaysFromTheTerminal) {
    const Maker maker("LogfileUploadURL=http://h/put\nMacOSClientURL=\x1b]0;%n\x07\xc3\xa4\xff/\n");
    EXPECT_EQ(vnctl("install 2>&1 >/dev/null").output,
              "vnctl: Client.ini Failure: Error in parsing path \\x1b]0;%n\\x07\xc3\xa4\\xff/\n");
    EXPECT_EQ(run("LC_ALL=C '" VNCTL "' install 2>&1 >/dev/null").output,
              "vnctl: Client.ini Failure: Error in parsing path "
              "\\x1b]0;%n\\x07\\xc3\\xa4\\xff/\n");
}

TEST(VnctlInstall, SurvivesAReaderThatHangsUp) {
    const Maker maker(Maker::releaseIni());
    EXPECT_EQ(run("{ '" VNCTL "' install; echo $? >/tmp/status; } | head -n 1").output, "5%\n");
    EXPECT_EQ(harness::readFile("/tmp/status"), "0\n");
}

TEST(VnctlUsage, IsExplainedAndInstallsNothing) {
    const std::pair<std::string, const char*> rows[] = {
        {"", "A subcommand is required"},
        {"instal", "A subcommand is required"},
        {"install --eula terms", "--eula requires --cid"},
        {"install --cid 1", "--cid requires --eula"},
        {"install --cid -1 --eula terms", "not in range 0 to 2147483647"},
        {"install --cid 2147483648 --eula terms", "--cid"},
        {"install --cid 1 --eula ''", "one line of 1 to 1011 bytes"},
        {"install --cid 1 --eula 'a\nb'", "one line of 1 to 1011 bytes"},
        {"install --cid 1 --eula " + std::string(1012, 'x'), "one line of 1 to 1011 bytes"},
        {"install --name ''", "printable ASCII"},
        {"install --name 'a\nb'", "printable ASCII"},
        {"install --name \xc3\xa4", "printable ASCII"},
    };
    for (const auto& [arguments, message] : rows) {
        const harness::CommandResult result = vnctl(arguments + " 2>&1 >/dev/null");
        EXPECT_EQ(result.status, 2) << arguments;
        EXPECT_NE(result.output.find(message), std::string::npos) << result.output;
    }
    EXPECT_FALSE(harness::exists(harness::kInstallPath));
    EXPECT_NE(vnctl("install --help").output.find("Exit status: 0 done, 1 failed"),
              std::string::npos);
}

}  // namespace
