// What an installation makes of a client.ini that is not as it should be.
#include "install/client_ini.h"

#include <gtest/gtest.h>

#include <string>

#include "harness/files.h"
#include "harness/shell.h"
#include "install/world.h"
#include "velnor_deployment.h"

namespace {

using harness::exists;
using harness::installed;

TEST(FileName, IsTheTailOfTheUrl) {
    const std::pair<const char*, const char*> rows[] = {
        {"https://h/p/ksmac_1", "ksmac_1"},
        {"https://h/get?file=ksmac_1", "ksmac_1"},
        {"ksmac_1", "ksmac_1"},
        {"https://h/a=b/c", "c"},
        {"https://h/p/", nullptr},
        {"https://h/?file=", nullptr},
        {"", nullptr},
        {"/", nullptr},
        {"https://h/.", nullptr},
        {"https://h/..", nullptr},
        {"https://h/...", "..."},
    };
    for (const auto& [url, name] : rows) EXPECT_STREQ(velnor::fileNameOf(url), name) << url;
}

TEST(Rewrite, PutsTheContentHostInFront) {
    const std::string host = velnor::deployment::kContentHost;
    const std::pair<std::string, std::string> rows[] = {
        {"https://H/P?q", "https://" + host + "/H/P?q"},
        {"http://H", "http://" + host + "/H"},
        {"H/P", "H/P"},
        {"a://b://c", "a://" + host + "/b://c"},
    };
    for (const auto& [url, rewritten] : rows) {
        EXPECT_EQ(velnor::rewriteToContentHost(url.c_str()).get(), rewritten);
    }
    for (const auto& [text, on] : {std::pair{"EnableQ731=true\n", true},
                                   {"EnableQ731=TRUE\n", false},
                                   {"EnableQ731=true \n", false},
                                   {"EnableQ731=true", false},
                                   {"EnableQ731=\n", false},
                                   {"", false}}) {
        EXPECT_EQ(velnor::isRewriteOn(text), on) << text;
    }
}

struct MissingKey {
    const char* key;
    uint32_t code;
    uint32_t plainCode;
    const char* detail;
    const char* message;
};

TEST(ClientIni, EveryMandatoryKeyIsMissed) {
    const MissingKey rows[] = {
        {"LogfileUploadURL", 6, 6, "", "vn_install: Log Server address not found in client.ini"},
        {"MacOSClientURL", 17, 6, "MacOSClientURL",
         "vn_install: Binary path not found in client.ini"},
        {"MacOSClientSig", 17, 6, "MacOSClientSig=",
         "_vn_downloadAndWrite: Binary Signature MacOSClientSig= not found in client.ini"},
        {"MacOSUIToolURL", 17, 6,
         "MacOSUIToolURL=", "_vn_downloadAndWrite: Path MacOSUIToolURL= not found in client.ini"},
        {"MacOSUIToolSig", 17, 6, "MacOSUIToolSig=",
         "_vn_downloadAndWrite: Binary Signature MacOSUIToolSig= not found in client.ini"},
        {"MacOSUninstallerSig", 17, 6, "MacOSUninstallerSig=",
         "_vn_downloadAndWrite: Binary Signature MacOSUninstallerSig= not found in client.ini"},
    };
    World world;
    const ClientIni complete = world.ini;
    size_t uploads = 0;
    for (const MissingKey& row : rows) {
        world.ini = complete;
        world.ini.erase(row.key);
        world.publish();
        const Installed failed = install();
        EXPECT_EQ(failed.result, -1) << row.key;
        EXPECT_EQ(failed.code, row.code) << row.key;
        EXPECT_EQ(failed.detail, row.detail);
        EXPECT_EQ(lastMessage(), std::string("[eror] ") + row.message);
        EXPECT_EQ(installWithoutContext().code, row.plainCode) << row.key;
        EXPECT_FALSE(exists(installed("loader.pl")));
        EXPECT_EQ(world.uploads().size(), uploads += row.code == 6 ? 0 : 2) << row.key;
    }
}

TEST(ClientIni, UninstallerIsOptional) {
    World world;
    world.ini.erase("MacOSUninstallerURL");
    world.ini.erase("MacOSUninstallerSig");
    world.publish();
    EXPECT_EQ(install().result, 0);
    EXPECT_FALSE(exists(installed("uninstall.tar.gz")));
    for (const std::string& message : harness::logMessages()) {
        EXPECT_EQ(message.find("MacOSUninstaller"), std::string::npos) << message;
    }
}

TEST(ClientIni, NamesThatNoFileCanHaveAreParseErrors) {
    World world;
    for (const char* url :
         {"", "https://origin.velnor.example/", "https://h/x=", "https://h/.", "https://h/.."}) {
        world.ini["MacOSClientURL"] = url;
        world.publish();
        const Installed failed = install();
        EXPECT_EQ(failed.code, INSTALL_ERROR_INI_PARSE_ERR + 0U) << url;
        EXPECT_EQ(failed.detail, url);
        EXPECT_EQ(lastMessage(), std::string("[eror] vn_install: Unable to parse name in ") + url);
        EXPECT_EQ(installWithoutContext().code, INSTALL_ERROR_INI + 0U);
    }
}

TEST(ClientIni, OddTextsAreSavedAsTheyCameOrRefused) {
    World world;
    const std::string good = toText(world.ini);
    const std::string withoutEnds = toText(world.ini, " ");
    const struct {
        const char* what;
        std::string text;
        int32_t result;
        uint32_t code;
    } rows[] = {
        {"empty", "", -1, INSTALL_ERROR_DOWNLOAD_FAILURE},
        {"no line ends", withoutEnds, -1, INSTALL_ERROR_INI},
        {"NUL first", std::string("\0", 1) + good, -1, INSTALL_ERROR_INI},
        {"NUL between",
         "LogfileUploadURL=" + world.ini["LogfileUploadURL"] + "\n" + std::string("\0", 1) + good,
         -1, INSTALL_ERROR_INI_PATH_NOT_FOUND},
        {"line ends of another system", toText(world.ini, "\r\n"), 0, 0},
        {"10 MiB", good + std::string(10 * 1024 * 1024, '#'), 0, 0},
    };
    for (const auto& row : rows) {
        world.publish(row.text);
        const Installed done = install();
        EXPECT_EQ(done.result, row.result) << row.what;
        EXPECT_EQ(done.code, row.code) << row.what;
        if (row.result == 0) {
            EXPECT_TRUE(harness::readFile(installed("client.ini")) == row.text) << row.what;
            EXPECT_EQ(harness::run("rm -r /Applications/Velnor").status, 0);
            stopClient();
        }
    }
}

TEST(ClientIni, DetailIsCutAndNeverOverrun) {
    World world;
    world.ini["MacOSClientURL"] = std::string(10'000, 'x') + "/";
    world.publish();
    const Installed failed = install();
    EXPECT_EQ(failed.code, INSTALL_ERROR_INI_PARSE_ERR + 0U);
    EXPECT_EQ(failed.detail, std::string(VN_ERROR_DETAIL_SIZE - 1, 'x'));
}

TEST(ClientIni, FileNameTooLongForAnyDiskIsAWriteFailure) {
    World world;
    world.addArtifact("MacOSClient", std::string(2000, 'x'), "data");
    world.publish();
    const Installed failed = install();
    EXPECT_EQ(failed.code, INSTALL_ERROR_DISK_WRITE + 0U);
    EXPECT_EQ(failed.detail.substr(0, 23), installed("xx"));
}

}  // namespace
