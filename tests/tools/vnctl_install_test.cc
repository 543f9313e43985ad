// vnctl install and uninstall: command lines, exit statuses, what they say about an outcome, and
// what is left.
#include <gtest/gtest.h>

#include "harness/harness.h"
#include "install/world.h"
#include "tools/client_world.h"
#include "velnor_deployment.h"

namespace {

TEST(VnctlInstall, ShowsProgressAndSuccess) {
    World world;
    world.publish();
    const harness::CommandResult result =
        vnctl("install --name 'Some App' --eula terms --cid 7 2>&1 </dev/null");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "5%\n10%\n15%\n80%\n85%\n90%\n95%\n100%\nSuccess\n");
    EXPECT_EQ(harness::readFile(harness::installed("accepteula.txt")), "7_terms\r\n");
    // A second time the client is there already, and the name is that of the installer.
    EXPECT_EQ(
        harness::run("{ '" VNCTL "' install 2>&1; echo $? >/tmp/status; } | head -n 1").output,
        "5%\n");
    EXPECT_EQ(harness::readFile("/tmp/status"), "0\n") << "the reader has hung up";
    EXPECT_EQ(harness::readFile(harness::installed("appregistry.dat")), "Some App\nVelnor\n");
}

TEST(VnctlInstall, SaysWhatFailedWithoutObeyingAServer) {
    const std::string onTerminal =
        harness::run("script -qec \"'" VNCTL "' install\" /dev/null </dev/null").output;
    EXPECT_NE(onTerminal.find(" ]  15%\r\nvnctl: Network"), std::string::npos) << onTerminal;
    expectOutcomes({{"install", 4,
                     "5%\n10%\n15%\nvnctl: Network Failure. Failed to download https://" +
                         std::string(velnor::deployment::kConfigurationHost) +
                         "/conf/client_ini.html?guid="}});
    World world;
    world.ini["MacOSClientURL"] = "\x1b]0;%n\x07\xc3\xa4\xff/";
    world.publish();
    const std::string message =
        "vnctl: Client.ini Failure: Error in parsing path \\x1b]0;%n\\x07\xc3\xa4\\xff/"
        ". The log is /Applications/Velnor/installer.txt\n";
    EXPECT_EQ(vnctl("--quiet install 2>&1").output, message);
    expectOutcomes({{"install --json", 1, "{\"code\":18,\"error\":\"Client.ini Failure"}});
}

TEST(VnctlUsage, IsExplainedAndDoesNothing) {
    expectOutcomes({
        {"", 2, "vnctl: A subcommand is required"},
        {"--verbose", 2, "vnctl: '--verbose' was not expected"},
        {"download ftp://h/", 2, "URL: It does not begin with http"},
        {"download http://h/x --path ''", 2, "--path: It is empty"},
        {"download http://h/x --cookie-file - --query-auth-file -", 2, "only once"},
        {"install --eula terms", 2, "--eula requires --cid"},
        {"install --cid 1", 2, "--cid requires --eula"},
        {"install --cid -1 --eula terms", 2, "not in range 0 to 2147483647"},
        {"install --cid 1 --eula 'a\nb'", 2, "one line of 1 to 1011 bytes"},
        {"install --cid 1 --eula " + std::string(1012, 'x'), 2, "one line of 1 to 1011 bytes"},
        {"uninstall --name a\x7f", 2, "printable ASCII"},
        {"--version", 0, "vnctl 1."},
        {"install --help", 0, "4  network\n    7  disk"},
        {"stauts", 2, "did you mean 'status'?"},
        {"--cid 1 uninstall", 2, "takes no such number"},
        {"help puase", 2, "did you mean 'pause'?"},
        {"pause --help", 0, "4  network\n    5  not found\n    8  already downloaded\n"},
    });
    EXPECT_FALSE(harness::exists(harness::kInstallPath));
}

TEST(VnctlUninstall, SaysWhatBecameOfTheClient) {
    const std::string stays = "The client stays for the applications that are registered.\n";
    const struct {
        const char* registry;
        std::string arguments, outcome;
        bool isLeft = true;
    } rows[] = {
        {"A\nVelnor\n", "", "Velnor has left. " + stays},
        {"A\n\n", "--name A", "A has left. " + stays},
        {"A\nB", "--name a", "a was not registered. " + stays},
        {"A\n", "--name A --keep-identity",
         "The client was stopped and does not start again; its files stay in "
         "/Applications/Velnor.\n"},
        {"A\nA\n", "--name A", "The client was removed.\n", false},
        {nullptr, "", "Nothing was installed in /Applications/Velnor.\n", false},
    };
    // A folder of the user's that the engine would empty where it is called.
    harness::run("mkdir -p /tmp/work/installer.txt; touch /tmp/work/installer.txt/letter");
    for (const auto& [registry, arguments, outcome, isLeft] : rows) {
        if (registry != nullptr) harness::makeInstallation(registry);
        expectOutcomes({{"uninstall " + arguments, 0, "\n" + outcome}});
        EXPECT_EQ(harness::exists(harness::installed("guid.ini")), isLeft) << arguments;
    }
    EXPECT_TRUE(harness::exists("/tmp/work/installer.txt/letter"));
}

TEST(VnctlUninstall, SaysWhatFailed) {
    harness::makeInstallation("Velnor\n");
    harness::run("cd /Applications/Velnor; mkdir locked; touch locked/x; chmod 500 locked");
    expectOutcomes({{"uninstall", 7, "but not all of /Applications/Velnor could be deleted"}});
    harness::run("chmod 700 /Applications/Velnor/locked");
    {
        const RunningClient withoutAgent;
        expectOutcomes({{"uninstall", 1, "still answers on port 9421"}});
    }
    harness::writeFile("/run/launchd/mode", "noisy");
    expectOutcomes({{"uninstall", 1, "agent could not be unloaded"}});
    harness::run("mkdir -p /Applications/Velnor/appregistry.dat");
    expectOutcomes({{"uninstall --json", 7, R"({"code":7,"error":"Disk I/O Failure)"}});
}

}  // namespace
