// vnctl install: command lines, exit statuses, and what it says about an outcome.
#include <gtest/gtest.h>

#include <string>

#include "harness/files.h"
#include "harness/shell.h"
#include "install/world.h"
#include "velnor_deployment.h"

using harness::run;

namespace {

harness::CommandResult vnctl(const std::string& arguments) {
    return run("'" VNCTL "' " + arguments);
}

TEST(VnctlInstall, ShowsProgressAndSuccess) {
    World world;
    world.publish();
    const harness::CommandResult result =
        vnctl("install --name 'Some App' --eula terms --cid 7 2>&1 </dev/null");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "5%\n10%\n15%\n80%\n85%\n90%\n95%\n100%\nSuccess\n");
    EXPECT_EQ(harness::readFile(harness::installed("accepteula.txt")), "7_terms\r\n");
    // A second time the client is there already, and the name is that of the installer.
    EXPECT_EQ(vnctl("install").output, "5%\n10%\n90%\n95%\n100%\nSuccess\n");
    EXPECT_EQ(harness::readFile(harness::installed("appregistry.dat")), "Some App\nVelnor\n");
}

TEST(VnctlInstall, NamesTheUrlThatCouldNotBeFetched) {
    const harness::CommandResult result = vnctl("install 2>&1 >/tmp/progress");
    const std::string guid = harness::readFile(harness::installed("guid.ini")).substr(0, 32);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "vnctl: Network Failure. Failed to download https://" +
                                 std::string(velnor::deployment::kConfigurationHost) +
                                 "/conf/client_ini.html?guid=" + guid + "\n");
    EXPECT_EQ(harness::readFile("/tmp/progress"), "5%\n10%\n15%\n");
}

TEST(VnctlInstall, KeepsWhatAServerSaysFromTheTerminal) {
    World world;
    world.ini["MacOSClientURL"] = "\x1b]0;%n\x07\xc3\xa4\xff/";
    world.publish();
    const std::string message = "vnctl: Client.ini Failure: Error in parsing path \\x1b]0;%n\\x07";
    EXPECT_EQ(vnctl("install 2>&1 >/dev/null").output, message + "\xc3\xa4\\xff/\n");
    EXPECT_EQ(run("LC_ALL=C '" VNCTL "' install 2>&1 >/dev/null").output,
              message + "\\xc3\\xa4\\xff/\n");
}

TEST(VnctlInstall, SurvivesAReaderThatHangsUp) {
    World world;
    world.publish();
    EXPECT_EQ(run("{ '" VNCTL "' install; echo $? >/tmp/status; } | head -n 1").output, "5%\n");
    EXPECT_EQ(harness::readFile("/tmp/status"), "0\n");
}

std::string bar(size_t filled, size_t width, const std::string& number) {
    return "\r[" + std::string(filled, '#') + std::string(width - filled, ' ') + "] " + number;
}

TEST(VnctlInstall, RedrawsOneBarInPlaceOnATerminal) {
    const struct {
        std::string columns;
        size_t width;
    } rows[] = {{"80", 50}, {"28", 20}, {"8", 0}, {"1", 0}, {"0", 50}};
    for (const auto& [columns, width] : rows) {
        // No server is there.
        const harness::CommandResult shown = run("script -qec \"stty cols " + columns +
                                                 "; '" VNCTL "' install\" /dev/null </dev/null");
        const std::string expected = bar(width * 5 / 100, width, "  5%") +
                                     bar(width * 10 / 100, width, " 10%") +
                                     bar(width * 15 / 100, width, " 15%") + "\r\nvnctl: ";
        EXPECT_EQ(shown.output.substr(0, expected.size()), expected) << columns;
        EXPECT_EQ(shown.status, 1);
    }
}

TEST(VnctlUsage, IsExplainedAndDoesNothing) {
    const std::pair<std::string, const char*> rows[] = {
        {"", "vnctl: A subcommand is required"},
        {"instal", "vnctl: 'instal' was not expected"},
        {"--verbose", "vnctl: '--verbose' was not expected"},
        {"download http://h/x y", "vnctl: 'y' was not expected"},
        {"download ftp://h/", "URL: It does not begin with http"},
        {"download http://h/x --path ''", "--path: It is empty"},
        {"download http://h/x --cookie-file - --query-auth-file -", "only once"},
        {"install --eula terms", "--eula requires --cid"},
        {"install --cid 1", "--cid requires --eula"},
        {"install --cid -1 --eula terms", "not in range 0 to 2147483647"},
        {"install --cid 2147483648 --eula terms", "--cid"},
        {"install --cid 1 --eula ''", "one line of 1 to 1011 bytes"},
        {"install --cid 1 --eula 'a\nb'", "one line of 1 to 1011 bytes"},
        {"install --cid 1 --eula " + std::string(1012, 'x'), "one line of 1 to 1011 bytes"},
        {"install --name ''", "printable ASCII"},
        {"install --name a\x7f", "printable ASCII"},
        {"uninstall --name 'a\nb'", "printable ASCII"},
    };
    for (const auto& [arguments, message] : rows) {
        const harness::CommandResult result = vnctl(arguments + " 2>&1 >/dev/null");
        EXPECT_EQ(result.status, 2) << arguments;
        EXPECT_NE(result.output.find(message), std::string::npos) << result.output;
    }
    EXPECT_FALSE(harness::exists(harness::kInstallPath));
    EXPECT_TRUE(vnctl("--version").output.starts_with("vnctl 1."));
    EXPECT_NE(vnctl("install --help").output.find("Exit status: 0 done, 1 failed"),
              std::string::npos);
}

}  // namespace
