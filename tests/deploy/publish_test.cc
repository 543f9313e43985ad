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
    const int archive = open((kFolder + "ui").c_str(), O_RDWR | O_CLOEXEC);
    signal(SIGIO, SIG_IGN);
    ASSERT_EQ(fcntl(archive, F_SETLEASE, F_WRLCK), 0);
    auto running = std::async(std::launch::async, [&command] { return command.run(); });
    EXPECT_TRUE(harness::eventually([&] { return fcntl(archive, F_GETLEASE) != F_WRLCK; }));
    harness::writeFile(kFolder + "client", kClientContent + "changed");
    close(archive);
    const std::string said = running.get().output;
    EXPECT_NE(said.find("installers would refuse client"), std::string::npos) << said;
    EXPECT_FALSE(harness::exists(kClientIni));
}

// One argument, and what vn-publish says when it has this value.
using Args = PublishCommand;

const struct {
    std::string Args::*argument;
    std::string value;
    const char* said;
    int status = 1;
} kRows[] = {
    {&Args::clientUrl, "http://[::1]:8080/ksmac_1", "Wrote client.ini", 0},
    {&Args::clientUrl, "https://h/any-name", "Wrote client.ini", 0},
    {&Args::clientUrl, "https://h/a%20b", "Wrote client.ini", 0},
    {&Args::clientUrl, "https://h/get?id=ksmac_1", "Wrote client.ini", 0},
    {&Args::clientUrl, "https://h/get?file=corvane_mac_1", "Wrote client.ini", 0},

    {&Args::key, "none", "cannot read the key none: No such file"},
    {&Args::key, "ui", "give the file that vn-keygen made"},
    {&Args::key, "/tmp/other.pem", "build installers for this one with -DVELNOR_PUBLIC_KEY=30819f"},

    {&Args::before, "rm client;", "cannot read client: No such file"},
    {&Args::before, ": >client;", "client is empty"},
    {&Args::before, "truncate -s 4294967295 client;", "take 4294967294 at most; make it smaller"},
    {&Args::uiTool, "client", "make it with tar -czf"},

    {&Args::clientUrl, "ftp://h/ksmac_1", "begin it with https:// or http://"},
    {&Args::clientUrl, "https:///ksmac_1", "give a host and, behind it, a path"},
    {&Args::uiToolUrl, "https://h/a\nb", "write blanks, line breaks"},
    {&Args::clientUrl, "https://h/releases/", "end it with the client's file name"},
    {&Args::clientUrl, "https://h/Loader.pl", "another file of the name Loader.pl"},
    {&Args::clientUrl, "https://h/" + std::string(256, 'a'), "longer than a disk takes"},
    {&Args::clientUrl, "https://h/get?file=client", "begins with ksmac_"},
    {&Args::logUrl, "https://h/put", "begin it with http://"},
    {&Args::logUrl, "http://h/a b", "write blanks, line breaks"},
    {&Args::logUrl, "http://h", "give a host and, behind it, a path"},
    {&Args::logUrl, "http://h/" + std::string(210, 'a'), "shorten it to 218 characters"},

    {&Args::uiToolUrl, "https://h/?MacOSUninstallerURL=x", "\"MacOSUninstallerURL=\" also stands"},
    {&Args::uiToolUrl, "https://h/?MacOSClientURL=x", "\"MacOSClientURL=\" also stands"},

    {&Args::output, "none/client.ini", "No such file or directory; give --output a place"},
    {&Args::output, "/dev/null", "is no file that can be replaced"},
    {&Args::before, "ulimit -f 0; trap '' XFSZ;", "File too large; give --output a place"},
    {&Args::more, "--uninstall-timeout 0", "not in range", 2},
    {&Args::more, "--uninstaller un", "--uninstaller", 2},
};

TEST(Publish, SaysWhatToDoAndChangesNothing) {
    ASSERT_EQ(harness::run("'" VN_KEYGEN "' /tmp/other.pem 2>/dev/null").status, 0);
    for (const auto& [argument, value, said, status] : kRows) {
        PublishCommand command;
        command.*argument = value;
        harness::writeFile(kClientIni, "before\n");
        const harness::CommandResult result = command.run();
        EXPECT_EQ(result.status, status) << value;
        EXPECT_NE(result.output.find(said), std::string::npos) << result.output;
        EXPECT_EQ(readFile(kClientIni) == "before\n", status != 0) << value;
    }
    EXPECT_EQ(harness::run("ls -A " + kFolder).output, "client\nclient.ini\nui\nun\n");
}

}  // namespace
