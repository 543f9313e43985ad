// What vn-publish writes is what an installation accepts; what it refuses changes nothing.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <future>

#include "deploy/publish_command.h"
#include "harness/harness.h"

using harness::readFile;

namespace {

const std::string kClientIni = kFolder + "client.ini";

TEST(Publish, WritesWhatWasGivenInThePlaceOfTheOldFile) {
    PublishCommand command;
    const std::string artifacts =
        "MacOSClientURL=https://origin.example/1.6.5/ksmac_1.6.5\nMacOSClientSig=" +
        harness::sign(kClientContent) +
        "\nMacOSUIToolURL=https://origin.example/1.6.5/ui.tar.gz\nMacOSUIToolSig=" +
        harness::sign(kArchiveContent) + "\n";
    harness::writeFile(kClientIni, std::string(100'000, 'x'));
    ASSERT_EQ(command.run().status, 0);
    EXPECT_EQ(readFile(kClientIni),
              "LogfileUploadURL=http://logs.example/put\nEnableQ731=false\n" + artifacts);
    EXPECT_EQ(harness::modeOf(kClientIni), 0644U);
    EXPECT_EQ(harness::run("ls -A " + kFolder).output, "client\nclient.ini\nui\nun\n");

    command.more =
        "--uninstaller un https://origin.example/un --content-host-rewrite --uninstall-timeout 30";
    ASSERT_EQ(command.run().status, 0);
    EXPECT_EQ(readFile(kClientIni),
              "LogfileUploadURL=http://logs.example/put\nEnableQ731=true\n" + artifacts +
                  "MacOSUninstallerURL=https://origin.example/un\nMacOSUninstallerSig=" +
                  harness::sign(kArchiveContent) + "\nUninstallTimeOutSec=30\n");
}

// A lease on the second artifact stops vn-publish when it has signed the first.
TEST(Publish, VerifiesWhatIsOnTheDisk) {
    const PublishCommand command;
    const int archive = open((kFolder + "ui").c_str(), O_RDWR);
    ASSERT_EQ(fcntl(archive, F_SETLEASE, F_WRLCK), 0);
    sigset_t leaseBreak;
    sigemptyset(&leaseBreak);
    sigaddset(&leaseBreak, SIGIO);
    pthread_sigmask(SIG_BLOCK, &leaseBreak, nullptr);
    auto running = std::async(std::launch::async, [&command] { return command.run(); });
    const timespec limit{60, 0};
    EXPECT_EQ(sigtimedwait(&leaseBreak, nullptr, &limit), SIGIO);
    harness::writeFile(kFolder + "client", kClientContent + "changed");
    fcntl(archive, F_SETLEASE, F_UNLCK);
    close(archive);
    const harness::CommandResult result = running.get();
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.output.find("installers would refuse client"), std::string::npos);
    EXPECT_FALSE(harness::exists(kClientIni));
}

TEST(Publish, TakesEveryUrlThatInstallationsFind) {
    for (const char* url :
         {"http://origin.example:8080/ksmac_1", "https://h/any-name", "https://h/a%20b",
          "https://h/get?id=ksmac_1", "https://h/get?file=corvane_mac_1", "https://[::1]/x"}) {
        PublishCommand command;
        command.clientUrl = url;
        EXPECT_EQ(command.run().status, 0) << url;
    }
}

// One argument, and what vn-publish says when it has this value.
struct Refusal {
    std::string PublishCommand::*argument;
    std::string value;
    const char* advice;
    int status = 1;
};

constexpr auto kKey = &PublishCommand::key;
constexpr auto kClientUrl = &PublishCommand::clientUrl;
constexpr auto kUiToolUrl = &PublishCommand::uiToolUrl;
constexpr auto kLogUrl = &PublishCommand::logUrl;
constexpr auto kOutput = &PublishCommand::output;
constexpr auto kMore = &PublishCommand::more;
constexpr auto kBefore = &PublishCommand::before;

const Refusal kRefusals[] = {
    {kKey, "none", "cannot read the key none: No such file"},
    {kKey, "ui", "give the file that vn-keygen made"},
    {kKey, "/tmp/other.pem", "build installers for this one with -DVELNOR_PUBLIC_KEY=30819f"},

    {kBefore, "rm client;", "cannot read client: No such file"},
    {kBefore, ": >client;", "client is empty"},
    {kBefore, "truncate -s 4294967295 client;", "take 4294967294 at most; make it smaller"},
    {&PublishCommand::uiTool, "client", "make it with tar -czf"},

    {kClientUrl, "ftp://h/ksmac_1", "begin it with https:// or http://"},
    {kClientUrl, "https:///ksmac_1", "give a host and, behind it, a path"},
    {kUiToolUrl, "https://h/a\nb", "write blanks, line breaks"},
    {kClientUrl, "https://h/releases/", "end it with the client's file name"},
    {kClientUrl, "https://h/Loader.pl", "another file of the name Loader.pl"},
    {kClientUrl, "https://h/" + std::string(256, 'a'), "longer than a disk takes"},
    {kClientUrl, "https://h/get?file=client", "begins with ksmac_"},
    {kLogUrl, "https://h/put", "begin it with http://"},
    {kLogUrl, "http://h/a b", "write blanks, line breaks"},
    {kLogUrl, "http://h", "give a host and, behind it, a path"},
    {kLogUrl, "http://h/" + std::string(210, 'a'), "shorten it to 218 characters"},

    {kUiToolUrl, "https://h/?MacOSUninstallerURL=x", "\"MacOSUninstallerURL=\" also stands"},
    {kUiToolUrl, "https://h/?MacOSClientURL=x", "\"MacOSClientURL=\" also stands"},

    {kOutput, "none/client.ini", "No such file or directory; give --output a place"},
    {kOutput, "/dev/null", "is no file that can be replaced"},
    {kBefore, "ulimit -f 0; trap '' XFSZ;", "File too large; give --output a place"},
    {kMore, "--uninstall-timeout 0", "not in range", 2},
    {kMore, "--uninstaller un", "--uninstaller", 2},
};

TEST(Publish, SaysWhatToDoAndChangesNothing) {
    ASSERT_EQ(harness::run("'" VN_KEYGEN "' /tmp/other.pem 2>/dev/null").status, 0);
    for (const auto& [argument, value, advice, status] : kRefusals) {
        PublishCommand command;
        command.*argument = value;
        harness::writeFile(kClientIni, "before\n");
        const harness::CommandResult result = command.run();
        EXPECT_EQ(result.status, status) << value;
        EXPECT_NE(result.output.find(advice), std::string::npos) << result.output;
        EXPECT_EQ(readFile(kClientIni), "before\n") << value;
        EXPECT_EQ(harness::run("ls -A " + kFolder + " | grep -v '^client$'").output,
                  "client.ini\nui\nun\n");
    }
}

}  // namespace
