// vnctl uninstall: what it says about what it found and left.
#include <gtest/gtest.h>

#include "harness/harness.h"
#include "tools/client_world.h"

namespace {

using harness::installed;
using harness::makeInstallation;

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
        if (registry != nullptr) makeInstallation(registry);
        expectOutcomes({{"uninstall " + arguments, 0, "\n" + outcome}});
        EXPECT_EQ(harness::exists(installed("guid.ini")), isLeft) << arguments;
    }
    EXPECT_TRUE(harness::exists("/tmp/work/installer.txt/letter"));
}

TEST(VnctlUninstall, SaysWhatFailed) {
    makeInstallation("Velnor\n");
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
