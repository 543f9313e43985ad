// guid.ini, appregistry.dat and accepteula.txt: what is read, what is added, and what a disk can do
// to them.
#include "install/records.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <filesystem>
#include <regex>
#include <string>
#include <tuple>

#include "harness/files.h"
#include "support/owned.h"
#include "velnor_deployment.h"

namespace {

using harness::exists;
using harness::installed;
using harness::readFile;
using harness::writeFile;
using velnor::Registration;
using namespace std::string_literals;
namespace fs = std::filesystem;

const std::string kGuid = installed("guid.ini");
const std::string kRegistry = installed("appregistry.dat");

std::string generate() {
    harness::makeInstallDirectory();
    const velnor::OwnedText guid(_vn_generateGuid());
    return guid ? guid.get() : "(none)";
}

TEST(Identity, IsReadOrElseMadeAndAppendedWithItsExplanation) {
    const std::string digits = "0123456789abcdef0123456789ABCDEF";
    for (const std::string& old : {digits, std::string(40, '%')}) {
        harness::makeInstallDirectory();
        writeFile(kGuid, old);
        EXPECT_EQ(generate(), old.substr(0, 32)) << "whatever the bytes are";
        EXPECT_EQ(readFile(kGuid), old);
    }
    EXPECT_EQ(harness::logMessages().at(0), "[info] _vn_generateGuid: GUID \"" + digits +
                                                "\" loaded from existing guid.ini file");
    for (const size_t length : {0U, 31U}) {
        const std::string old = digits.substr(0, length);
        writeFile(kGuid, old);
        const std::string guid = generate();
        const std::string file = readFile(kGuid);
        EXPECT_TRUE(std::regex_match(guid, std::regex("[0-9a-f]{32}"))) << guid;
        EXPECT_TRUE(file.starts_with(old + guid + "\n#\n#"));
        EXPECT_EQ(file.size(), length + 32 + 1394);
        EXPECT_NE(file.find("#     "s + velnor::deployment::kWebAddress + "\n"), file.npos);
        EXPECT_NE(file.find(" at "s + velnor::deployment::kSupportAddress + ".\n"), file.npos);
    }
    fs::remove(kGuid);
    fs::create_directory(kGuid);
    EXPECT_EQ(generate().size(), 32U);
    EXPECT_NE(harness::logMessages().back().find("Could not save GUID \""), kGuid.npos);
}

TEST(WithoutRandom, IdentityIsZeroAndNotSaved) {
    EXPECT_EQ(generate(), std::string(32, '0'));
    EXPECT_FALSE(exists(kGuid));
    EXPECT_EQ(harness::logMessages().at(0), "[eror] _vn_generateGuid: Could not open /dev/urandom");
}

TEST(ShortRandom, IdentityIsMadeFromWhatCame) {
    EXPECT_EQ(generate(), "31323334353637380000000000000000");
    EXPECT_EQ(readFile(kGuid).substr(0, 33), "31323334353637380000000000000000\n");
    EXPECT_EQ(harness::logMessages().at(0),
              "[eror] _vn_generateGuid: Short read from /dev/urandom");
}

TEST(AcceptEula, AppendsARecordOrWritesNothing) {
    const std::string longest(1024 - 4, 'x');
    const std::tuple<int32_t, const char*, uint32_t> refused[] = {
        {-1, "x", 0}, {0, nullptr, 0}, {0, "", 0}, {0, "a\nb", 0}, {0, "a\r", 0}, {0, "x", 1}};
    EXPECT_EQ(vn_acceptEULA(0, "x", 0), -1) << "without a folder for it";
    EXPECT_EQ(vn_getLastError(), INSTALL_ERROR_DISK + 0U);
    harness::makeInstallDirectory();
    EXPECT_EQ(vn_acceptEULA(2147483647, "100% \xc3\xa9 %s", 0), 0);
    EXPECT_EQ(vn_acceptEULA(0, longest.c_str(), 0), 0);
    EXPECT_EQ(vn_acceptEULA(0, (longest + "x").c_str(), 0), -1);
    EXPECT_EQ(vn_getLastError(), INSTALL_ERROR_INTERNAL + 0U);
    for (const auto& [cid, text, reserved] : refused) {
        EXPECT_EQ(vn_acceptEULA(cid, text, reserved), -1);
        EXPECT_EQ(vn_getLastError(), INSTALL_ERROR_INVALIDARGUMENT + 0U);
    }
    EXPECT_EQ(readFile(installed("accepteula.txt")),
              "2147483647_100% \xc3\xa9 %s\r\n0_" + longest + "\r\n");
}

Registration registerName(const std::string& name) {
    return velnor::registerApplication(harness::kInstallPath.c_str(), name.c_str(), nullptr);
}

int32_t unregister(const std::string& name) {
    return velnor::unregisterApplication(harness::kInstallPath.c_str(), name.c_str());
}

TEST(Registry, NamesAreWholeLines) {
    const std::string line1023(1023, 'x');
    const std::string line2050(2050, 'x');
    const struct {
        std::string before;
        std::string name;
        bool isListed;
        int32_t others;
        std::string after;  // it was taken out
    } rows[] = {
        {"", "A", false, 0, ""},
        {"A\nB\nA", "A", true, 1, "B\n"},
        {"A\r\nAA\na\nXA", "A", false, 4, "A\r\nAA\na\nXA\n"},
        {"\nA\n", "", true, 1, "A\n"},
        {line1023 + "\nA\n", line1023, true, 1, "A\n"},
        {line1023 + "x\n", line1023 + "x", false, 1, line1023 + "x\n"},
        {line2050 + "\nA\n" + line2050, "A", true, 2, line2050 + "\n" + line2050 + "\n"},
        {"A\0\nA\n"s, "A", true, 1, "A\0\n"s},
    };
    harness::makeInstallDirectory();
    for (const auto& row : rows) {
        writeFile(kRegistry, row.before);
        EXPECT_EQ(registerName(row.name),
                  row.isListed ? Registration::AlreadyRegistered : Registration::Registered);
        const bool isTorn = !row.before.empty() && row.before.back() != '\n';
        const std::string added = (isTorn ? "\n" : "") + row.name + "\n";
        EXPECT_EQ(readFile(kRegistry), row.before + (row.isListed ? "" : added));

        writeFile(kRegistry, row.before);
        writeFile(kRegistry + ".bak", "old");
        EXPECT_EQ(unregister(row.name), row.others) << row.before.substr(0, 20);
        EXPECT_EQ(readFile(kRegistry), row.after);
        EXPECT_FALSE(exists(kRegistry + ".bak") || exists(kRegistry + ".new"));
    }
}

TEST(Registry, StaysWhenItCannotBeRewritten) {
    EXPECT_EQ(unregister("A"), 0) << "nothing is installed";
    harness::makeInstallDirectory();
    writeFile(kRegistry, "A\nB\n");
    chmod(kRegistry.c_str(), 0);
    EXPECT_EQ(unregister("A"), -1);
    chmod(kRegistry.c_str(), 0400);
    fs::create_directories(kRegistry + ".bak/full");
    EXPECT_EQ(unregister("A"), -1) << "without a backup";
    fs::remove_all(kRegistry + ".bak");
    harness::putOnFullDisk(kRegistry + ".new");
    EXPECT_EQ(unregister("A"), -1);
    EXPECT_EQ(readFile(kRegistry), "A\nB\n");
    fs::rename(kRegistry, kRegistry + ".bak");
    EXPECT_EQ(unregister("A"), 1) << "what a rewriting that was killed between two renames left";
}

TEST(Registry, StaysWhenThereIsNoRoomForAWholeName) {
    const std::string registry(20'000, 'B');
    const rlimit limit{registry.size() + 3, RLIM_INFINITY};
    signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &limit);
    harness::makeInstallDirectory();
    writeFile(kRegistry, registry);
    EXPECT_EQ(registerName("Velnor"), Registration::Failed);
    EXPECT_EQ(vn_getLastError(), INSTALL_ERROR_DISK + 0U);
    EXPECT_EQ(readFile(kRegistry), registry);
}

}  // namespace
