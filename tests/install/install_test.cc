// Whole installations: what a good one does, step by step, and what a second one leaves alone.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "detect/euc_utils.h"
#include "harness/allocations.h"
#include "harness/files.h"
#include "harness/shell.h"
#include "install/world.h"
#include "velnor_deployment.h"

namespace {

using harness::installed;
using harness::readFile;
using Progress = std::vector<uint32_t>;
using Paths = std::vector<std::string>;

const std::string kInstall = "[info] vn_install: ";
const std::string kDownload = "[info] _vn_downloadAndWrite: ";

TEST(Install, CompleteOneLeavesAnAnsweringClient) {
    World world;
    world.publish();
    const std::string folder = std::filesystem::current_path();
    const Installed done = install("An App", "standard", 7);
    EXPECT_EQ(done.result, 0);
    EXPECT_EQ(done.code, 0U);
    EXPECT_EQ(done.detail, "");
    EXPECT_EQ(done.progress, (Progress{5, 10, 15, 80, 85, 90, 95}));
    EXPECT_EQ(pingClient(), 1);
    EXPECT_EQ(std::filesystem::current_path(), folder);

    EXPECT_EQ(readFile(installed("client.ini")), toText(world.ini));
    EXPECT_EQ(readFile(installed("ksmac_1.6.5")), world.artifacts["ksmac_1.6.5"]);
    EXPECT_EQ(harness::modeOf(installed("ksmac_1.6.5")), 0755U);
    EXPECT_EQ(readFile(installed("ui-tool")), "content of ui-tool");
    EXPECT_EQ(readFile(installed("uninstaller")), "content of uninstaller");
    EXPECT_TRUE(harness::exists(installed("ksmacui.tar.gz")));
    EXPECT_TRUE(harness::exists(installed("uninstall.tar.gz")));
    EXPECT_EQ(readFile(installed("appregistry.dat")), "An App\n");
    EXPECT_EQ(readFile(installed("accepteula.txt")), "7_standard\r\n");

    const std::string guid = readFile(installed("guid.ini")).substr(0, 32);
    EXPECT_EQ(world.configurationRequests(), (Paths{"/conf/client_ini.html?guid=" + guid}));
    EXPECT_EQ(world.configurationServer().requests().at(0).header("User-Agent"),
              "Kestrin Installer mac An App");
    EXPECT_EQ(world.artifactRequests(),
              (Paths{"/files/ksmac_1.6.5", "/files/ui.tgz", "/files/un.tgz"}));
}

TEST(Install, LogTellsEveryStep) {
    World world;
    world.publish();
    ASSERT_EQ(install().result, 0);
    const std::string guid = readFile(installed("guid.ini")).substr(0, 32);
    std::vector<std::string> expected{
        kInstall + "Starting Installation",
        "[info] _vn_generateGuid: Saved GUID \"" + guid + "\" to disk",
        kInstall + "Downloaded client.ini",
        kInstall + "Saved client.ini at location /Applications/Velnor/client.ini ",
    };
    const std::pair<std::string, std::string> artifacts[] = {{"ksmac_1.6.5", "ksmac_1.6.5"},
                                                             {"ui.tgz", "ksmacui.tar.gz"},
                                                             {"un.tgz", "uninstall.tar.gz"}};
    for (const auto& [published, saved] : artifacts) {
        const std::string url = World::originUrl(published);
        expected.push_back(kDownload + "Downloaded " + url);
        expected.push_back(kDownload + "Hash verified for " + url);
        expected.push_back(kDownload + "Saved binary " + saved +
                           " at location: " + installed(saved));
        if (published != saved) {
            expected.push_back(kDownload + "Untarred " + saved +
                               " at location: /Applications/Velnor");
        }
    }
    for (const char* message : {"Client Installed", "Waiting for a response from client",
                                "Registered the client", "Successfully installed the client"}) {
        expected.push_back(kInstall + message);
    }
    const std::string uploadUrl = world.ini["LogfileUploadURL"];
    expected.push_back("[info] _vn_uploadLogs: Uploading the log file " +
                       installed("installer.txt") + " to " + uploadUrl);
    EXPECT_EQ(harness::logMessages(), expected);
    EXPECT_EQ(world.uploads(), (std::vector<std::string>{guid + ".log"}));
    EXPECT_EQ(world.lastUpload(), readFile(installed("installer.txt")));
}

TEST(Install, RunningClientNeedsOnlyItsRegistration) {
    World world;
    world.publish();
    ASSERT_EQ(install().result, 0);
    const std::string ini = readFile(installed("guid.ini"));
    const Installed again = install("Velnor", "standard", 8);
    EXPECT_EQ(again.result, 0);
    EXPECT_EQ(again.progress, (Progress{5, 10, 90}));
    EXPECT_EQ(install().code, INSTALL_ERROR_INTERNAL + 0U) << "as vn_install began with it";
    EXPECT_EQ(install("Another").progress, (Progress{5, 10, 90, 95}));
    EXPECT_EQ(installWithoutContext("Third").code, 0U);
    EXPECT_EQ(readFile(installed("appregistry.dat")), "Velnor\nAnother\nThird\n");
    EXPECT_EQ(readFile(installed("accepteula.txt")), "8_standard\r\n");
    EXPECT_EQ(world.configurationRequests().size(), 1U);
    EXPECT_EQ(world.uploads().size(), 1U) << "a client that answers means no upload";
    const std::vector<std::string> log = harness::logMessages();
    const std::vector<std::string> tail(log.end() - 6, log.end());
    EXPECT_EQ(tail, (std::vector<std::string>{kInstall + "Client is already registered.",
                                              kInstall + "Successfully installed the client",
                                              kInstall + "Registered the client",
                                              kInstall + "Successfully installed the client",
                                              kInstall + "Registered the client",
                                              kInstall + "Successfully installed the client"}));
}

TEST(Install, StoppedClientIsInstalledAgainUnderItsOldIdentity) {
    World world;
    world.publish();
    ASSERT_EQ(install().result, 0);
    stopClient();
    const std::string guid = readFile(installed("guid.ini"));
    const Installed again = install();
    EXPECT_EQ(again.result, 0);
    EXPECT_EQ(again.progress, (Progress{5, 10, 15, 80, 85, 90}));
    EXPECT_EQ(readFile(installed("guid.ini")), guid);
    EXPECT_EQ(readFile(installed("appregistry.dat")), "Velnor\n");
    EXPECT_EQ(pingClient(), 1);
}

TEST(Install, RewriteSendsArtifactsToTheContentHost) {
    World world;
    world.ini["EnableQ731"] = "true";
    world.publish();
    ASSERT_EQ(install().result, 0);
    const std::string origin = World::originUrl("");
    const std::string prefix = origin.substr(origin.find("://") + 2);
    EXPECT_EQ(world.artifactRequests(),
              (Paths{prefix + "ksmac_1.6.5", prefix + "ui.tgz", prefix + "un.tgz"}));
}

TEST(Install, ClientInheritsNoDescriptorOfTheInstaller) {
    World world;
    world.publish();
    ASSERT_EQ(install().result, 0);
    const std::string pid = harness::run("cat /run/launchd/com.velnor.client.plist.pid").output;
    const std::string sockets =
        harness::run("ls -l /proc/" + std::to_string(std::stoi(pid)) + "/fd | grep -c socket:")
            .output;
    EXPECT_EQ(sockets, "1\n") << "its own listener and nothing else";
}

// A shell that saw the name unquoted, or in double quotes, would create the file.
TEST(Install, HostileFileNameStaysOneWord) {
    const std::string name = "ksmac_$(touch$IFS'owned')";
    std::filesystem::current_path("/tmp");
    World world;
    world.addArtifact("MacOSClient", name, readFile(STANDIN_CLIENT));
    world.publish();
    EXPECT_EQ(install().result, 0);
    EXPECT_EQ(harness::modeOf(installed(name)), 0755U);
    EXPECT_FALSE(harness::exists("/tmp/owned"));
}

TEST(Install, BadArgumentsWriteNothing) {
    InstallContext withoutProgress{};
    EXPECT_EQ(vn_install(nullptr, 0, nullptr, nullptr), -1);
    EXPECT_EQ(vn_getLastError(), INSTALL_ERROR_INVALIDARGUMENT + 0U);
    EXPECT_EQ(vn_install("Velnor", 0, nullptr, &withoutProgress), -1);
    EXPECT_EQ(vn_getLastError(), INSTALL_ERROR_INVALIDARGUMENT + 0U);
    EXPECT_FALSE(harness::exists(harness::kInstallPath));
}

TEST(Install, UnreachableConfigurationServerIsNamed) {
    const Installed failed = install();
    EXPECT_EQ(failed.result, -1);
    EXPECT_EQ(failed.code, INSTALL_ERROR_DOWNLOAD_FAILURE + 0U);
    EXPECT_EQ(failed.detail,
              "https://" + std::string(velnor::deployment::kConfigurationHost) +
                  "/conf/client_ini.html?guid=" + readFile(installed("guid.ini")).substr(0, 32));
    EXPECT_EQ(failed.progress, (Progress{5, 10, 15}));
    EXPECT_EQ(lastMessage(), "[eror] vn_install: Failed in downloading client.ini");
    EXPECT_EQ(installWithoutContext().code, INSTALL_ERROR_NETWORK + 0U);
}

TEST(Install, HomeTooLongForTheAgentIsAPlatformFailure) {
    World world;
    world.publish();
    setenv("HOME", ("/tmp/" + std::string(1000, 'x')).c_str(), 1);
    EXPECT_EQ(install().code, INSTALL_ERROR_PLATFORM + 0U);
    EXPECT_EQ(lastMessage(), "[eror] vn_install: Error in installing the client");
    EXPECT_FALSE(harness::exists(installed("loader.pl")));
}

// The last artifact does not verify, so that a run without any failure ends at a known place.
TEST(Install, NoFailedAllocationLetsAnUnverifiedArtifactPass) {
    World world;
    world.addArtifact("MacOSClient", "ksmac_1.6.5", "#!/bin/sh\n");
    world.ini["MacOSUninstallerSig"] = world.ini["MacOSClientSig"];
    world.publish();
    for (size_t number = 1; number < 1000; ++number) {
        std::filesystem::remove_all(harness::kInstallPath);
        char detail[VN_ERROR_DETAIL_SIZE] = "";
        InstallContext context{};
        context.progress = [](uint32_t, uint32_t) {};
        context.errorDetail = detail;
        harness::FailingAllocation fail(number);
        const int32_t result = vn_install("Velnor", 0, nullptr, &context);
        const uint32_t code = vn_getLastError();
        const bool failed = fail.end();
        EXPECT_EQ(result, -1) << number;
        EXPECT_NE(code, 0U) << number;
        EXPECT_FALSE(harness::exists(installed("uninstall.tar.gz"))) << number;
        if (!failed) {
            EXPECT_EQ(code, INSTALL_ERROR_VERIFICATION_FAILURE + 0U);
            EXPECT_GT(number, 50U);
            return;
        }
    }
    FAIL() << "no end of allocations";
}

}  // namespace
