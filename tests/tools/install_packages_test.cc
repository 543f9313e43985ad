// tools/install_packages, with stand-ins for dpkg-query, sudo and apt-get.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "harness/files.h"
#include "harness/shell.h"

namespace {

constexpr char kList[] = "# What for\ncmake\n\nbash    # a shell\nperl\n";
constexpr char kListWithUnpacked[] = "bash\nnginx unpacked  # a server\n";
const std::string kUnpacked = "/tmp/build/packages/nginx";

void addProgram(const std::string& name, const std::string& script) {
    const std::string path = "/tmp/bin/" + name;
    harness::writeFile(path, "#!/bin/sh\n" + script);
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
}

// A system on which the packages named in `installed` are installed, and nobody may do more.
void makeSystem(const std::string& installed) {
    std::filesystem::create_directory("/tmp/bin");
    for (const char* name : {"bash", "cat", "dirname", "env", "grep", "mkdir", "mv", "rm", "sed"}) {
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

// apt-get knows the package once /tmp/lists is there, and "update" makes that when root asks.
void makeArchive() {
    addProgram("apt-get",
               "echo \"$*\" >>/tmp/calls; case $1 in\n"
               "update) test ! -e /tmp/offline && : >/tmp/lists;;\n"
               "download) test -e /tmp/lists && echo content >nginx_1_all.deb;;\n"
               "*) false; esac\n");
    addProgram("dpkg-deb", "mkdir \"$3\" && cat \"$2\" >\"$3/file\"\n");
    harness::writeFile("/tmp/list", kListWithUnpacked);
}

TEST(InstallPackages, UnpacksOnceWithoutRoot) {
    makeSystem("bash");
    makeArchive();
    harness::writeFile("/tmp/lists", "");
    // What a run that was interrupted has left.
    std::filesystem::create_directories("/tmp/build/packages/.nginx/root/old");
    EXPECT_EQ(installPackages().status, 0);
    EXPECT_EQ(harness::run("cd /tmp/build/packages && find . -type f").output, "./nginx/file\n");
    EXPECT_FALSE(harness::exists(kUnpacked + "/old"));
    const std::string calls = harness::readFile("/tmp/calls");
    EXPECT_EQ(installPackages().output, "");
    EXPECT_EQ(harness::readFile("/tmp/calls"), calls);
}

TEST(InstallPackages, RenewsTheListsBeforeItUnpacks) {
    makeSystem("bash");
    makeArchive();
    addProgram("sudo", "shift; exec \"$@\"\n");
    EXPECT_EQ(installPackages().status, 0);
    EXPECT_EQ(harness::readFile(kUnpacked + "/file"), "content\n");
}

TEST(InstallPackages, UnpacksNothingThatIsInstalled) {
    makeSystem("bash nginx");
    makeArchive();
    EXPECT_EQ(installPackages().output, "");
    EXPECT_FALSE(harness::exists("/tmp/calls"));
}

TEST(InstallPackages, GoesOnWithoutWhatItCannotUnpack) {
    makeSystem("bash");
    makeArchive();
    addProgram("sudo", "shift; exec \"$@\"\n");
    harness::writeFile("/tmp/offline", "");
    const harness::CommandResult result = installPackages();
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(result.output.ends_with("\n  apt-get update\n")) << result.output;
    EXPECT_FALSE(harness::exists(kUnpacked));
}

}  // namespace
