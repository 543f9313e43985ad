// Artifacts that are not the maker's: each one ends the installation, and none reaches the disk.
#include <gtest/gtest.h>

#include <string>

#include "harness/files.h"
#include "harness/signing.h"
#include "install/verified_download.h"
#include "install/world.h"

namespace {

using harness::installed;

const struct {
    const char* key;
    const char* published;
    const char* saved;
} kArtifacts[] = {{"MacOSClient", "ksmac_1.6.5", "ksmac_1.6.5"},
                  {"MacOSUITool", "ui.tgz", "ksmacui.tar.gz"},
                  {"MacOSUninstaller", "un.tgz", "uninstall.tar.gz"}};

void expectRefused(World& world, const char* published, const char* saved) {
    world.publish();
    const Installed failed = install();
    EXPECT_EQ(failed.result, -1);
    EXPECT_EQ(failed.code, INSTALL_ERROR_VERIFICATION_FAILURE + 0U) << saved;
    EXPECT_EQ(failed.detail, World::originUrl(published));
    EXPECT_EQ(lastMessage(),
              std::string("[eror] _vn_downloadAndWrite: Hash of downloaded binary ") + saved +
                  " does not match with the signature");
    EXPECT_EQ(installWithoutContext().code, INSTALL_ERROR_NETWORK + 0U);
    EXPECT_FALSE(harness::exists(installed(saved)));
}

TEST(Verification, OneFlippedBitInAnArtifactOrItsSignature) {
    World world;
    const ClientIni goodIni = world.ini;
    const auto goodArtifacts = world.artifacts;
    for (const auto& artifact : kArtifacts) {
        std::string& data = world.artifacts[artifact.published];
        data[data.size() / 2] = static_cast<char>(data[data.size() / 2] ^ 1);
        expectRefused(world, artifact.published, artifact.saved);
        world.artifacts = goodArtifacts;

        std::string& signature = world.ini[std::string(artifact.key) + "Sig"];
        signature[100] = signature[100] == '0' ? '1' : '0';
        expectRefused(world, artifact.published, artifact.saved);
        world.ini = goodIni;
    }
}

TEST(Verification, SignaturesThatAreNone) {
    World world;
    const std::string data = world.artifacts["ksmac_1.6.5"];
    for (const std::string& signature :
         {harness::signWithForeignKey(data), harness::sign(data, harness::Content::Nothing)}) {
        world.ini["MacOSClientSig"] = signature;
        expectRefused(world, "ksmac_1.6.5", "ksmac_1.6.5");
    }
}

TEST(Verification, OldFileStaysWhenTheNewOneIsRefused) {
    World world;
    harness::makeInstallDirectory();
    harness::writeFile(installed("ksmac_1.6.5"), "old client");
    world.ini["MacOSClientSig"] = harness::sign("something else");
    world.publish();
    EXPECT_EQ(install().code, INSTALL_ERROR_VERIFICATION_FAILURE + 0U);
    EXPECT_EQ(harness::readFile(installed("ksmac_1.6.5")), "old client");
}

TEST(Verification, EmptyOrMissingArtifactIsAFailedDownload) {
    World world;
    for (const char* url : {"ui.tgz", "no-such-file"}) {
        world.artifacts["ui.tgz"].clear();
        world.ini["MacOSUIToolURL"] = World::originUrl(url);
        world.publish();
        const Installed failed = install();
        EXPECT_EQ(failed.code, INSTALL_ERROR_DOWNLOAD_FAILURE + 0U) << url;
        EXPECT_EQ(failed.detail, World::originUrl(url));
        EXPECT_EQ(lastMessage(),
                  "[eror] _vn_downloadAndWrite: Error in downloading " + World::originUrl(url));
        EXPECT_EQ(installWithoutContext().code, INSTALL_ERROR_NETWORK + 0U);
    }
}

TEST(Verification, MissingArgumentsAreRefused) {
    const char* good[] = {"ini\n", "agent", "MacOSClientURL=", "file", "MacOSClientSig="};
    for (size_t missing = 0; missing < 5; ++missing) {
        const char* a[5];
        for (size_t i = 0; i < 5; ++i) a[i] = i == missing ? nullptr : good[i];
        EXPECT_EQ(_vn_downloadAndWrite(a[0], a[1], nullptr, false, a[2], a[3], a[4], 0, 0),
                  INSTALL_ERROR_INVALIDARGUMENT);
    }
}

}  // namespace
