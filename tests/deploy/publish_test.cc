// What vn-publish writes is what an installation accepts.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <future>

#include "deploy/publish_command.h"
#include "harness/files.h"
#include "harness/signing.h"
#include "install/client_ini.h"

using harness::readFile;

namespace {

const std::string kClientIni = kFolder + "client.ini";

TEST(Publish, WritesEverySetting) {
    PublishCommand command;
    command.more =
        "--uninstaller un https://origin.example/un --content-host-rewrite "
        "--uninstall-timeout 30";
    const harness::CommandResult result = command.run();
    ASSERT_EQ(result.status, 0) << result.output;
    EXPECT_EQ(readFile(kClientIni),
              "LogfileUploadURL=http://logs.example/put\n"
              "EnableQ731=true\n"
              "MacOSClientURL=https://origin.example/1.6.5/ksmac_1.6.5\n"
              "MacOSClientSig=" +
                  harness::sign(kClientContent) +
                  "\n"
                  "MacOSUIToolURL=https://origin.example/1.6.5/ui.tar.gz\n"
                  "MacOSUIToolSig=" +
                  harness::sign(kArchiveContent) +
                  "\n"
                  "MacOSUninstallerURL=https://origin.example/un\n"
                  "MacOSUninstallerSig=" +
                  harness::sign(kArchiveContent) +
                  "\n"
                  "UninstallTimeOutSec=30\n");
}

TEST(Publish, LeavesOutWhatWasNotGiven) {
    ASSERT_EQ(PublishCommand().run().status, 0);
    const std::string text = readFile(kClientIni);
    EXPECT_FALSE(velnor::isRewriteOn(text.c_str()));
    EXPECT_EQ(text.find("MacOSUninstaller"), std::string::npos);
    EXPECT_EQ(text.find("UninstallTimeOutSec"), std::string::npos);
}

TEST(Publish, ReplacesTheOldFileAndNothingElse) {
    const PublishCommand command;
    harness::writeFile(kClientIni, std::string(100'000, 'x'));
    ASSERT_EQ(command.run().status, 0);
    EXPECT_TRUE(readFile(kClientIni).ends_with(harness::sign(kArchiveContent) + "\n"));
    EXPECT_EQ(harness::modeOf(kClientIni), 0644U);
    EXPECT_EQ(harness::run("ls -A " + kFolder).output, "client\nclient.ini\nui\nun\n");
}

// A lease on one file shows when it is read, and holds the reader up until we have changed another.
TEST(Publish, NoticesAnArtifactThatChangesMeanwhile) {
    const PublishCommand command;
    const int archive = open((kFolder + "ui").c_str(), O_RDWR);
    ASSERT_EQ(fcntl(archive, F_SETLEASE, F_WRLCK), 0);
    sigset_t leaseBreak;
    sigemptyset(&leaseBreak);
    sigaddset(&leaseBreak, SIGIO);
    pthread_sigmask(SIG_BLOCK, &leaseBreak, nullptr);

    auto running = std::async(std::launch::async, [&command] { return command.run(); });
    const timespec patience{10, 0};
    EXPECT_EQ(sigtimedwait(&leaseBreak, nullptr, &patience), SIGIO);
    harness::writeFile(kFolder + "client", kClientContent + "changed");
    fcntl(archive, F_SETLEASE, F_UNLCK);

    const harness::CommandResult result = running.get();
    close(archive);
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.output.find("installers would refuse client"), std::string::npos)
        << result.output;
    EXPECT_FALSE(harness::exists(kClientIni));
}

TEST(Publish, TakesEveryUrlThatInstallationsFind) {
    for (const char* url : {
             "http://origin.example:8080/ksmac_1",
             "https://h/any-name",
             "https://h/a%20b",
             "https://h/get?id=ksmac_1",
             "https://h/get?file=corvane_mac_1",
             "https://[::1]/x",
         }) {
        PublishCommand command;
        command.clientUrl = url;
        const harness::CommandResult result = command.run();
        EXPECT_EQ(result.status, 0) << url << ": " << result.output;
    }
}

}  // namespace
