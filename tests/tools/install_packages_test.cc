// tools/install_packages, with stand-ins for dpkg-query, sudo and apt-get.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "harness/files.h"
#include "harness/shell.h"

namespace {

constexpr char kList[] = "# What for\ncmake\n\nbash    # a shell\nperl\n";

void addProgram(const std::string& name, const std::string& script) {
    const std::string path = "/tmp/bin/" + name;
    harness::writeFile(path, "#!/bin/sh\n" + script);
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
}

// A system on which the packages named in `installed` are installed, and nobody may do more.
void makeSystem(const std::string& installed) {
    std::filesystem::create_directory("/tmp/bin");
    for (const char* name : {"bash", "env", "grep", "sed"}) {
        std::filesystem::create_symlink(std::string("/usr/bin/") + name,
                                        std::string("/tmp/bin/") + name);
    }
    addProgram("dpkg-query", "for p in " + installed +
                                 "; do echo \"$p installed\"; done\n"
                                 "echo 'perl not-installed'; exit 1\n");
    addProgram("apt-get", "echo \"$DEBIAN_FRONTEND $*\" >>/tmp/calls; test ! -e /tmp/offline\n");
    harness::writeFile("/tmp/list", kList);
}

harness::CommandResult installPackages() {
    return harness::run("PATH=/tmp/bin bash '" INSTALL_PACKAGES "' /tmp/list 2>&1 </dev/null");
}

TEST(InstallPackages, IsSilentWhenNothingIsMissing) {
    makeSystem("bash cmake perl");
    EXPECT_EQ(installPackages().output, "");
    EXPECT_EQ(installPackages().status, 0);
    EXPECT_FALSE(harness::exists("/tmp/calls"));
}

TEST(InstallPackages, NamesWhatIsMissingWhenItMayNotInstall) {
    makeSystem("bash");
    const harness::CommandResult result = installPackages();
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.output.ends_with(":\n  apt-get install cmake perl\n")) << result.output;
    EXPECT_FALSE(harness::exists("/tmp/calls"));
}

TEST(InstallPackages, InstallsWhatIsMissingThroughSudo) {
    makeSystem("bash");
    addProgram("sudo", "test \"$1\" = -n && shift && exec \"$@\"\n");
    const harness::CommandResult result = installPackages();
    EXPECT_EQ(result.status, 0) << result.output;
    const std::string calls = harness::readFile("/tmp/calls");
    EXPECT_TRUE(calls.starts_with("noninteractive update")) << calls;
    EXPECT_NE(calls.find("\nnoninteractive install"), std::string::npos) << calls;
    EXPECT_NE(calls.find("--no-install-recommends"), std::string::npos) << calls;
    EXPECT_TRUE(calls.ends_with(" cmake perl\n")) << calls;
}

TEST(InstallPackages, FailsWithTheCommandWhenInstallingFails) {
    makeSystem("bash perl");
    addProgram("sudo", "shift; exec \"$@\"\n");
    harness::writeFile("/tmp/offline", "");
    const harness::CommandResult result = installPackages();
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(
        result.output.ends_with("could not be installed.\nRun this as root, then try again:\n"
                                "  apt-get install cmake\n"))
        << result.output;
}

}  // namespace
