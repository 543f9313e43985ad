// vnctl uninstall: what it says about what it found and left.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "harness/files.h"
#include "harness/shell.h"
#include "tools/client_world.h"

namespace {

using harness::exists;
using harness::installed;

// Standard output goes to `output`, standard error is what comes back.
harness::CommandResult uninstall(const std::string& arguments) {
    return harness::run("cd /tmp; '" VNCTL "' uninstall " + arguments + " 2>&1 >/tmp/output");
}

void makeInstallation(const std::string& registry) {
    harness::makeInstallDirectory();
    harness::writeFile(installed("guid.ini"), "identity");
    harness::writeFile(installed("appregistry.dat"), registry);
}

TEST(VnctlUninstall, SaysWhatBecameOfTheClient) {
    const std::string stays = " The client stays for the applications that are registered.\n";
    const struct {
        const char* registry;
        std::string arguments;
        std::string outcome;
        bool isLeft;
    } rows[] = {
        {"A\nVelnor\n", "", "Velnor has left." + stays, true},
        {"A\nB C", "--name 'B C'", "B C has left." + stays, true},
        {"A\n\n", "--name A", "A has left." + stays, true},
        {"A\nB", "--name a", "a was not registered." + stays, true},
        {"A\n", "--name A --keep-identity",
         "The client was stopped and does not start again; its files stay in "
         "/Applications/Velnor.\n",
         true},
        {"A\nA\n", "--name A", "The client was removed.\n", false},
        {nullptr, "", "Nothing was installed in /Applications/Velnor.\n", false},
    };
    // A folder of the user's that the engine would empty where it is called.
    std::filesystem::create_directory("/tmp/installer.txt");
    harness::writeFile("/tmp/installer.txt/letter", "");
    for (const auto& [registry, arguments, outcome, isLeft] : rows) {
        if (registry != nullptr) makeInstallation(registry);
        EXPECT_EQ(uninstall(arguments).status, 0);
        const std::string output = harness::readFile("/tmp/output");
        EXPECT_EQ(output.substr(output.find('\n') + 1), outcome) << arguments;
        EXPECT_EQ(exists(installed("guid.ini")), isLeft) << arguments;
    }
    EXPECT_TRUE(harness::readFile("/tmp/output").starts_with("Uninstalling Velnor...\n"));
    EXPECT_TRUE(exists("/tmp/installer.txt/letter"));
}

TEST(VnctlUninstall, SaysWhatFailed) {
    makeInstallation("Velnor\n");
    std::filesystem::create_directory(installed("locked"));
    harness::writeFile(installed("locked/file"), "");
    std::filesystem::permissions(installed("locked"), std::filesystem::perms(0500));
    harness::CommandResult result = uninstall("");
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.output.ends_with(
        "\nvnctl: The client was stopped, but not all of /Applications/Velnor could be deleted.\n"))
        << result.output;

    std::filesystem::permissions(installed("locked"), std::filesystem::perms(0700));
    {
        const RunningClient withoutAgent;
        result = uninstall("");
        EXPECT_EQ(result.status, 1);
        EXPECT_NE(result.output.find("still answers on port 9421"), std::string::npos);
        EXPECT_FALSE(exists(installed("guid.ini")));
    }

    harness::writeFile("/run/launchd/mode", "noisy");
    result = uninstall("");
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.output.find("agent could not be unloaded"), std::string::npos);

    std::filesystem::create_directories(installed("appregistry.dat"));
    result = uninstall("");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "vnctl: Disk I/O Failure\n");
    EXPECT_TRUE(exists(installed("appregistry.dat")));
}

}  // namespace
