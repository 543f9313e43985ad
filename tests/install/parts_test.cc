// The parts of an installation, one by one: the identity, the registry and the accepted terms, the
// signatures that verify, the launch agent with its loader.
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <filesystem>
#include <regex>
#include <string>
#include <tuple>
#include <vector>

#include "harness/harness.h"
#include "install/launch_agent.h"
#include "install/records.h"
#include "install/verified_download.h"
#include "support/owned.h"
#include "velnor_deployment.h"

namespace {

using velnor::Registration;
using namespace harness;
using namespace std::string_literals;
using Texts = std::vector<std::string>;
namespace fs = std::filesystem;

const std::string kGuid = installed("guid.ini");
const std::string kRegistry = installed("appregistry.dat");

std::string generate() {
    makeInstallDirectory();
    const velnor::OwnedText guid(_vn_generateGuid());
    return guid ? guid.get() : "(none)";
}

TEST(Identity, IsReadOrElseMadeAndAppendedWithItsExplanation) {
    const std::string digits = "0123456789abcdef0123456789ABCDEF";
    makeInstallDirectory();
    for (const std::string& old : {digits, std::string(40, '%')}) {
        writeFile(kGuid, old);
        EXPECT_EQ(generate(), old.substr(0, 32)) << "whatever the bytes are";
        EXPECT_EQ(readFile(kGuid), old);
    }
    EXPECT_EQ(logMessages().at(0), "[info] _vn_generateGuid: GUID \"" + digits +
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
    EXPECT_NE(logMessages().back().find("Could not save GUID \""), kGuid.npos);
}

TEST(WithoutRandom, IdentityIsZeroAndNotSaved) {
    EXPECT_EQ(generate(), std::string(32, '0'));
    EXPECT_FALSE(exists(kGuid));
    EXPECT_EQ(logMessages().at(0), "[eror] _vn_generateGuid: Could not open /dev/urandom");
}

TEST(ShortRandom, IdentityIsMadeFromWhatCame) {
    EXPECT_EQ(generate(), "31323334353637380000000000000000");
    EXPECT_EQ(readFile(kGuid).substr(0, 33), "31323334353637380000000000000000\n");
    EXPECT_EQ(logMessages().at(0), "[eror] _vn_generateGuid: Short read from /dev/urandom");
}

TEST(AcceptEula, AppendsARecordOrWritesNothing) {
    const std::string longest(1024 - 4, 'x');
    const std::tuple<int32_t, const char*, uint32_t> refused[] = {
        {-1, "x", 0}, {0, nullptr, 0}, {0, "", 0}, {0, "a\nb", 0}, {0, "a\r", 0}, {0, "x", 1}};
    EXPECT_EQ(vn_acceptEULA(0, "x", 0), -1) << "without a folder for it";
    EXPECT_EQ(vn_getLastError(), INSTALL_ERROR_DISK + 0U);
    makeInstallDirectory();
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
    return velnor::registerApplication(kInstallPath.c_str(), name.c_str(), nullptr);
}

int32_t unregister(const std::string& name) {
    return velnor::unregisterApplication(kInstallPath.c_str(), name.c_str());
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
    makeInstallDirectory();
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

TEST(Registry, StaysWhenItCannotBeWritten) {
    EXPECT_EQ(unregister("A"), 0) << "nothing is installed";
    makeInstallDirectory();
    writeFile(kRegistry, "A\nB\n");
    chmod(kRegistry.c_str(), 0);
    EXPECT_EQ(unregister("A"), -1);
    chmod(kRegistry.c_str(), 0400);
    fs::create_directories(kRegistry + ".bak/full");
    EXPECT_EQ(unregister("A"), -1) << "without a backup";
    fs::remove_all(kRegistry + ".bak");
    putOnFullDisk(kRegistry + ".new");
    EXPECT_EQ(unregister("A"), -1);
    EXPECT_EQ(readFile(kRegistry), "A\nB\n");
    fs::rename(kRegistry, kRegistry + ".bak");
    EXPECT_EQ(unregister("A"), 1) << "what a rewriting that was killed between two renames left";
    writeFile(kRegistry, std::string(20'000, 'B'));
    const rlimit limit{20'003, RLIM_INFINITY};  // no room for a whole name
    signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_EQ(registerName("Velnor"), Registration::Failed);
    EXPECT_EQ(vn_getLastError(), INSTALL_ERROR_DISK + 0U);
    EXPECT_EQ(readFile(kRegistry), std::string(20'000, 'B'));
}

const std::string kData = "an artifact";
constexpr char kNoParameters[] = "[eror] _vn_checkAgainstSignature: Invalid parameters received";
constexpr char kOverNothing[] = "[eror] _vn_mac_cryptPublicKeyDecrypt: Couldn't decrypt signature.";

// "verified", or what the log says about it.
std::string check(const std::string& signature, const char* url = "url") {
    makeInstallDirectory();
    writeFile(installed("installer.txt"), "");
    if (_vn_checkAgainstSignature(signature.c_str(), url, kData.data(),
                                  static_cast<uint32_t>(kData.size())) == 1) {
        return "verified";
    }
    const Texts messages = logMessages();
    return messages.empty() ? "" : messages.back();
}

// What openssl makes with the maker's key.
std::string openssl(const std::string& arguments) {
    return run("printf '" + kData + "' | openssl " + arguments +
               " '" SIGNING_KEY "' | od -An -v -tx1 | tr -d ' \\n'")
        .output;
}

// The maker's signature over the digest as a shell command changes it.
std::string signDigest(const std::string& filter) {
    return openssl("dgst -sha1 -binary | { " + filter + "; } | openssl pkeyutl -sign -inkey");
}

TEST(Signature, OnlyTheMakersBareDigestVerifies) {
    const std::string good = sign(kData);
    const std::pair<std::string, std::string> rows[] = {
        {good, "verified"},
        {good + "0", "verified"},  // the odd digit is dropped
        {"", kNoParameters},
        {"a", ""},
        {good.substr(2), ""},
        {std::string(1'000'000, 'a'), ""},
        {sign(kData + "x"), ""},
        {openssl("dgst -sha1 -sign"), ""},  // a wrapped digest
        {signDigest("head -c 19"), ""},
        {signDigest("head -c 19; printf x"), ""},
        {signDigest("cat; printf x"), ""},
        {openssl("pkeyutl -in /dev/null -sign -inkey"), kOverNothing},
    };
    for (const auto& [signature, result] : rows) EXPECT_EQ(check(signature), result) << signature;
    EXPECT_EQ(check(good, nullptr), kNoParameters);
}

const std::string kAgent = "/Library/LaunchAgents/com.velnor.client.plist";
const std::string kLoader = installed("loader.pl");

bool addItem() {
    makeInstallDirectory();
    return _vn_mac_addStartupItem(kInstallPath.c_str());
}

TEST(StartupItem, OnlyAFileThatCannotBeCreatedIsAFailure) {
    fs::create_directories(kLoader);
    EXPECT_FALSE(addItem());
    fs::remove(kLoader);
    fs::create_directories(agentPath());
    EXPECT_FALSE(addItem());
    fs::remove(agentPath());
    const rlimit limit{500, RLIM_INFINITY};
    signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    EXPECT_TRUE(addItem());
    const std::string error = "[eror] _vn_mac_addStartupItem: Failed to ";
    EXPECT_EQ(logMessages(), (Texts{error + "create loader script.", error + "create loader plist.",
                                    error + "write loader script correctly.",
                                    error + "write loader plist correctly."}));
}

TEST(StartupItem, IsWrittenAndLoadedInAnyHome) {
    umask(022);
    const std::string passwdHome = getenv("HOME");
    for (const std::string name : {"", "/tmp/it's a;touch owned", "/tmp/$(id)", "../tmp"}) {
        const std::string expected = name.starts_with('/') ? name : passwdHome;
        fs::create_directories(expected + "/Library");
        setenv("HOME", name.c_str(), 1);
        ASSERT_TRUE(addItem()) << name;
        EXPECT_EQ(readFile(kLoader).size(), 1554U);
        EXPECT_EQ(modeOf(kLoader), 0755U);
        EXPECT_EQ(readFile(expected + kAgent).size(), 543U) << name;
        EXPECT_EQ(modeOf(expected + "/Library/LaunchAgents"), 0755U);
        EXPECT_EQ(_vn_start(), 1);
        EXPECT_EQ(run("launchctl list com.velnor.client.plist").status, 0) << name;
        EXPECT_EQ(_vn_stop(), 1);
        EXPECT_NE(run("launchctl list com.velnor.client.plist 2>&1").status, 0) << name;
        EXPECT_EQ(_vn_mac_removeStartupItem(), 0) << name;
        EXPECT_FALSE(exists(expected + kAgent)) << name;
    }
    unsetenv("HOME");
    EXPECT_TRUE(addItem());
    EXPECT_TRUE(exists(passwdHome + kAgent));
    EXPECT_FALSE(exists("owned"));
    writeFile("/run/launchd/mode", "no-aqua");
    EXPECT_EQ(_vn_start(), 1);
    EXPECT_EQ(run("tail -n 2 /run/launchd/calls | cut -d' ' -f1-2").output,
              "load -S\nload " + passwdHome + kAgent + "\n");
}

// Clients that write their own name and folder to /tmp/started.
TEST(Loader, ChoosesTheNamedClientOrElseTheNewest) {
    ASSERT_TRUE(addItem());
    EXPECT_EQ(run(kLoader + " 2>&1").output, "") << "nothing to start";
    run("cd /Applications/Velnor; mkdir ksmac_5;"
        "for n in ksmac_1 corvane_mac_2 ksmac_3 other_4; do"
        "  echo '#!/bin/sh\n(basename \"$0\"; pwd) > /tmp/started' > $n; chmod 755 $n;"
        "  touch -d \"2020-01-0${n##*_}\" $n;"
        "done; chmod 644 ksmac_3");
    const std::pair<const char*, const char*> rows[] = {
        {"MacOSClientURL=https://h.example/p/ksmac_1\r\n", "ksmac_1"},
        {"MacOSClientURL=a/ksmac_1\nXMacOSClientURL = other_4", "other_4"},
        {"MacOSClientURL=a/other_4\nMacOSClientURL=a/missing\n", "other_4"},
        {"MacOSClientURL=a/ksmac_3\n", "corvane_mac_2"},
        {"MacOSClientURL=a/ksmac_5\n", "corvane_mac_2"},
        {"MacOSClientURL=\n", "corvane_mac_2"},
    };
    for (const auto& [clientIni, expected] : rows) {
        writeFile(installed("client.ini"), clientIni);
        EXPECT_EQ(run(kLoader + " 2>&1").output, "") << "says nothing";
        EXPECT_EQ(readFile("/tmp/started"), std::string(expected) + "\n/Applications/Velnor\n");
    }
}

}  // namespace
