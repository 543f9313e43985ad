// guid.ini: kept when it is there, made when it is not, appended to when it is too short.
#include "install/identity.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <string>
#include <vector>

#include "api/last_error.h"
#include "harness/allocations.h"
#include "harness/files.h"
#include "support/owned.h"
#include "velnor/capi.h"
#include "velnor_deployment.h"

namespace {

constexpr size_t kHeaderSize = 1394;
const std::string kPath = harness::installed("guid.ini");
const std::string kDigits = "0123456789abcdef0123456789ABCDEF";
using Messages = std::vector<std::string>;

std::string generate() {
    harness::makeInstallDirectory();
    const velnor::OwnedText guid(_vn_generateGuid());
    return guid ? guid.get() : "(none)";
}

TEST(Identity, NewOneIsSavedWithItsExplanationAndReadAgain) {
    const std::string guid = generate();
    EXPECT_TRUE(std::regex_match(guid, std::regex("[0-9a-f]{32}"))) << guid;
    const std::string file = harness::readFile(kPath);
    EXPECT_EQ(file.size(), guid.size() + kHeaderSize);
    EXPECT_EQ(file.substr(0, 36), guid + "\n#\n#");
    EXPECT_NE(file.find(std::string("#     ") + velnor::deployment::kWebAddress + "\n"),
              std::string::npos);
    EXPECT_NE(file.find(std::string(" at ") + velnor::deployment::kSupportAddress + ".\n"),
              std::string::npos);
    EXPECT_EQ(generate(), guid);
    EXPECT_EQ(harness::readFile(kPath), file);
    EXPECT_EQ(harness::logMessages(),
              (Messages{"[info] _vn_generateGuid: Saved GUID \"" + guid + "\" to disk",
                        "[info] _vn_generateGuid: GUID \"" + guid +
                            "\" loaded from existing guid.ini file"}));
}

TEST(Identity, ThirtyTwoBytesAreTakenWhateverTheyAre) {
    harness::makeInstallDirectory();
    for (const std::string& content : {kDigits, kDigits + "\n#", std::string(40, '\n')}) {
        harness::writeFile(kPath, content);
        EXPECT_EQ(generate(), content.substr(0, 32));
        EXPECT_EQ(harness::readFile(kPath), content);
    }
}

TEST(Identity, ShorterFilesKeepTheirBytesInFront) {
    harness::makeInstallDirectory();
    for (const size_t length : {0U, 10U, 31U}) {
        const std::string old = kDigits.substr(0, length);
        harness::writeFile(kPath, old);
        const std::string guid = generate();
        const std::string file = harness::readFile(kPath);
        EXPECT_EQ(file.size(), length + 32 + kHeaderSize);
        EXPECT_EQ(file.substr(0, length + 32), old + guid);
        EXPECT_EQ(generate(), file.substr(0, 32)) << "the next run reads what stands in front";
    }
}

TEST(Identity, FolderThatCannotBeWrittenStillGivesOneAndSaysSo) {
    harness::makeInstallDirectory();
    std::filesystem::create_directory(kPath);
    EXPECT_EQ(generate().size(), 32U);
    EXPECT_NE(harness::logMessages().at(0).find("[eror] _vn_generateGuid: Could not save GUID"),
              std::string::npos);
}

TEST(Identity, NoMemoryIsNoIdentity) {
    harness::makeInstallDirectory();
    for (size_t number = 1; number < 50; ++number) {
        harness::writeFile(kPath, "");
        harness::FailingAllocation fail(number);
        const velnor::OwnedText guid(_vn_generateGuid());
        if (!fail.end()) return;
        // Failures of the log and of saving cost a line or the file, and no identity.
        EXPECT_EQ(static_cast<bool>(guid), number > 1) << number;
        if (guid) {
            EXPECT_EQ(std::string(guid.get()).size(), 32U) << number;
        } else {
            EXPECT_EQ(_vn_getLastError(), INSTALL_ERROR_INSUFFICIENTMEMORY + 0U) << number;
            EXPECT_EQ(
                harness::logMessages().back(),
                "[eror] _vn_generateGuid: Could not allocate enough memory for guid. Exiting");
        }
    }
    FAIL() << "no end of allocations";
}

TEST(WithoutRandom, IdentityIsZeroAndNotSaved) {
    EXPECT_EQ(generate(), std::string(32, '0'));
    EXPECT_FALSE(harness::exists(kPath));
    EXPECT_EQ(harness::logMessages(),
              Messages{"[eror] _vn_generateGuid: Could not open /dev/urandom"});
}

TEST(ShortRandom, IdentityIsMadeFromWhatCame) {
    const std::string guid = generate();
    EXPECT_EQ(guid, "31323334353637380000000000000000");
    EXPECT_EQ(harness::readFile(kPath).substr(0, 32), guid);
    EXPECT_EQ(harness::logMessages().at(0),
              "[eror] _vn_generateGuid: Short read from /dev/urandom");
}

}  // namespace
