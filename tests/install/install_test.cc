// Whole installations: what a good one does, step by step, and what each failure says. Then
// uninstalling: what the client is told, how long its farewell is awaited, and what is deleted.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "api/scripted_client.h"
#include "harness/harness.h"
#include "install/client_ini.h"
#include "install/uninstall.h"
#include "install/verified_download.h"
#include "install/world.h"
#include "velnor_deployment.h"

namespace {

using namespace harness;
using test::ScriptedClient;
using Clock = std::chrono::steady_clock;
using Progress = std::vector<uint32_t>;
using Texts = std::vector<std::string>;
namespace fs = std::filesystem;

const std::string kRegistry = installed("appregistry.dat");
const std::string kInstall = "[info] vn_install: ";
const std::string kDownload = "[info] _vn_downloadAndWrite: ";

// What a whole installation logs, and uploads up to here.
void expectLogOf(World& world, const std::string& guid) {
    Texts expected{
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
        const std::string at = " at location: ";
        for (const auto& text : {"Downloaded " + url, "Hash verified for " + url,
                                 "Saved binary " + saved + at + installed(saved),
                                 "Untarred " + saved + at + kInstallPath}) {
            expected.push_back(kDownload + text);
        }
        if (published == saved) expected.pop_back();  // no archive
    }
    for (const char* message : {"Client Installed", "Waiting for a response from client",
                                "Registered the client", "Successfully installed the client"}) {
        expected.push_back(kInstall + message);
    }
    expected.push_back("[info] _vn_uploadLogs: Uploading the log file " +
                       installed("installer.txt") + " to " + world.ini["LogfileUploadURL"]);
    EXPECT_EQ(logMessages(), expected);
}

TEST(Install, LeavesAnAnsweringClientAndTellsEveryStep) {
    World world;
    world.publish();
    const Installed done = install("An App", "standard", 7);
    EXPECT_EQ(done.result, 0);
    EXPECT_EQ(done.code, 0U);
    EXPECT_EQ(done.progress, (Progress{5, 10, 15, 80, 85, 90, 95}));
    EXPECT_NE(fs::current_path(), kInstallPath);
    EXPECT_EQ(readFile(installed("client.ini")), toText(world.ini));
    EXPECT_EQ(readFile(installed("ksmac_1.6.5")), world.artifacts["ksmac_1.6.5"]);
    EXPECT_EQ(readFile(installed("ui-tool")), "content of ui-tool");
    EXPECT_EQ(readFile(installed("uninstaller")), "content of uninstaller");
    EXPECT_EQ(readFile(installed("accepteula.txt")), "7_standard\r\n");
    const std::string sockets =
        "ls -l /proc/$(cat /run/launchd/com.velnor.client.plist.pid)/fd | grep -c socket:";
    EXPECT_TRUE(eventually([&sockets] { return run(sockets).output == "1\n"; }))
        << "the client has its own listener and nothing of the installer";

    const std::string guid = readFile(installed("guid.ini")).substr(0, 32);
    EXPECT_EQ(targetsOf(world.configuration), Texts{"/conf/client_ini.html?guid=" + guid});
    EXPECT_EQ(world.configuration.requests().at(0).header("User-Agent"),
              "Kestrin Installer mac An App");
    EXPECT_EQ(targetsOf(world.content),
              (Texts{"/files/ksmac_1.6.5", "/files/ui.tgz", "/files/un.tgz"}));
    EXPECT_EQ(targetsOf(world.log), Texts{"/put/" + guid + ".log"});
    EXPECT_EQ(world.log.requests().at(0).body, readFile(installed("installer.txt")));
    expectLogOf(world, guid);

    // What finds another does only what is left to do.
    const Installed again = install("An App", "standard", 8);
    EXPECT_EQ(again.progress, (Progress{5, 10, 90}));
    EXPECT_EQ(again.code, INSTALL_ERROR_OK + 0U) << "as vn_acceptEULA left it";
    EXPECT_EQ(install("An App").code, INSTALL_ERROR_INTERNAL + 0U) << "as vn_install began";
    EXPECT_EQ(install("Another").progress, (Progress{5, 10, 90, 95}));
    EXPECT_EQ(readFile(installed("accepteula.txt")), "7_standard\r\n8_standard\r\n");
    EXPECT_EQ(world.configuration.requests().size(), 1U);
    EXPECT_EQ(world.log.requests().size(), 1U) << "a client that answers means no upload";
    EXPECT_EQ(logMessages().end()[-4], kInstall + "Client is already registered.");
    stopClient();
    EXPECT_EQ(install("An App").progress, (Progress{5, 10, 15, 80, 85, 90}));
    EXPECT_EQ(readFile(kRegistry), "An App\nAnother\n");
}

// The client's name would create a file in a shell that saw it unquoted, or in double quotes.
TEST(Install, OfAnUnusualRelease) {
    const std::string name = "ksmac_$(touch$IFS'owned')";
    fs::current_path("/tmp");
    World world;
    world.addArtifact("MacOSClient", name, world.artifacts["ksmac_1.6.5"]);
    world.ini["EnableQ731"] = "true";
    world.ini.erase("MacOSUninstallerURL");
    const std::string ini = toText(world.ini, "\r\n") + "no line end";
    world.publish(ini);
    makeInstallDirectory();
    putOnFullDisk(installed("accepteula.txt"));
    EXPECT_EQ(install("Velnor", "eula").result, 0);
    EXPECT_EQ(readFile(installed("client.ini")), ini);
    EXPECT_EQ(modeOf(installed(name)), 0755U);
    EXPECT_FALSE(exists("/tmp/owned"));
    const std::string prefix = World::originUrl("").substr(std::string("https:/").size());
    EXPECT_EQ(targetsOf(world.content), (Texts{prefix + name, prefix + "ui.tgz"}));
    EXPECT_EQ(readFile(installed("installer.txt")).find("[eror]"), std::string::npos);
}

// A signature says whose an artifact is, and neither how old it is nor what it is for.
TEST(Install, BelievesTheConfigurationHostButNotTheContentHost) {
    World world;
    for (const char* kind : {"URL", "Sig"}) {
        std::swap(world.ini[std::string("MacOSUITool") + kind],
                  world.ini[std::string("MacOSUninstaller") + kind]);
    }
    world.publish();
    EXPECT_EQ(install().code, 0U);
    EXPECT_EQ(readFile(installed("ksmacui.tar.gz")), world.artifacts["un.tgz"]);
    stopClient();
    world.content.serve("/files/un.tgz", world.artifacts["ui.tgz"]);
    EXPECT_EQ(install().code, INSTALL_ERROR_VERIFICATION_FAILURE + 0U);
    EXPECT_EQ(readFile(installed("ksmacui.tar.gz")), world.artifacts["un.tgz"]);
}

TEST(Install, PingsASilentClient121TimesASecondApart) {
    World world;
    writeFile("/tmp/standin_client.mode", "refuse");
    world.publish();
    const auto start = Clock::now();
    const Installed failed = install();
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(119'900));
    EXPECT_EQ(failed.result, -1);
    EXPECT_EQ(failed.code, INSTALL_ERROR_CLIENT_NOTRESPONDING + 0U);
    EXPECT_EQ(failed.progress, (Progress{5, 10, 15, 80, 85}));
    EXPECT_EQ(run("grep -c '^list' /run/launchd/calls").output, "122\n")
        << "one before the installation, 121 after the start";
    const std::string log = readFile(installed("installer.txt"));
    const size_t waited = log.find("Waited enough for client; no response, exiting\n");
    EXPECT_NE(log.find("Network Statistics\n", waited), std::string::npos);
}

// The last message of the log that is not the upload's, without its level.
std::string lastMessage() {
    std::string last;
    for (const std::string& message : logMessages()) {
        if (message.find(" _vn_uploadLogs: ") == message.npos) last = message.substr(7);
    }
    return last;
}

using Spoil = std::function<void(World&)>;

Spoil with(const std::string& key, const std::string& value) {
    return [=](World& world) { world.ini[key] = value; };
}
Spoil without(const std::string& key) {
    return [=](World& world) { world.ini.erase(key); };
}

TEST(Install, FailuresHaveTheirCodeDetailAndMessage) {
    World world;
    const ClientIni ini = world.ini;
    const auto artifacts = world.artifacts;
    const std::string longName(2000, 'x');
    const std::string cutPath = installed(longName).substr(0, 1023);
    const std::string noFile = "https://h/" + longName + longName + longName + "/";
    const std::string ui = World::originUrl("ui.tgz");
    const std::string configuration =
        std::string("https://") + velnor::deployment::kConfigurationHost;
    const std::string artifact = "_vn_downloadAndWrite: ";
    const std::string forged = artifact + "Hash of downloaded binary ";
    const std::map<uint32_t, uint32_t> plainCodes{{15, 5}, {16, 7}, {17, 6}, {18, 6},
                                                  {20, 7}, {21, 5}, {6, 6},  {8, 8}};
    const struct {
        Spoil spoil;
        uint32_t code;
        std::string detail;
        std::string message;  // the last one's beginning
    } rows[] = {
        {[](World& w) { w.ini.clear(); }, 15,
         configuration + "/conf/client_ini.html?guid=", "vn_install: Failed in downloading"},
        {without("LogfileUploadURL"), 6, "", "vn_install: Log Server address"},
        {without("MacOSClientURL"), 17, "MacOSClientURL", "vn_install: Binary path not found"},
        {with("MacOSClientURL", noFile), 18, noFile.substr(0, VN_ERROR_DETAIL_SIZE - 1),
         "vn_install: Unable to parse name in " + noFile},
        {without("MacOSClientSig"), 17,
         "MacOSClientSig=", artifact + "Binary Signature MacOSClientSig= not"},
        {with("MacOSUIToolURL", ""), 17,
         "MacOSUIToolURL=", artifact + "Path MacOSUIToolURL= not found"},
        {with("MacOSUIToolURL", ui + "2"), 15, ui + "2",
         artifact + "Error in downloading " + ui + "2"},
        {[](World& w) { w.artifacts["ui.tgz"] = ""; }, 15, ui,
         artifact + "Error in downloading " + ui},
        {[](World& w) { w.artifacts["ksmac_1.6.5"] = "other"; }, 21,
         World::originUrl("ksmac_1.6.5"), forged + "ksmac_1.6.5 does not match with the signature"},
        {with("MacOSUIToolSig", ini.at("MacOSClientSig")), 21, ui, forged + "ksmacui.tar.gz does"},
        {[&](World& w) { w.addArtifact("MacOSClient", longName, "data"); }, 16, cutPath,
         artifact + "Error in saving the binary " + longName + " at " + cutPath},
        {[](World&) { putOnFullDisk(installed("client.ini")); }, 16, installed("client.ini"),
         "vn_install: Failed in saving"},
        {[](World&) { setenv("HOME", ("/" + std::string(1000, 'x')).c_str(), 1); }, 8, "",
         "vn_install: Error in installing the client"},
        {[](World&) { fs::create_directory(kRegistry); }, 16, kRegistry,
         "vn_install: Unable to open path: " + kRegistry},
        {[](World&) { mkfifo(kRegistry.c_str(), 0600); }, 20, kRegistry,
         "vn_install: Unable to seek to: " + kRegistry},
    };
    const std::string home = getenv("HOME");
    for (const auto& row : rows) {
        setenv("HOME", home.c_str(), 1);
        fs::remove_all(kInstallPath);
        makeInstallDirectory();
        writeFile(installed("ksmac_1.6.5"), "old");
        writeFile(installed("ksmacui.tar.gz"), "old");
        world.ini = ini;
        world.artifacts = artifacts;
        row.spoil(world);
        world.publish();
        const Installed failed = install();
        EXPECT_EQ(failed.code, row.code) << row.message;
        EXPECT_EQ(
            failed.detail.substr(0, failed.code == 15 ? row.detail.size() : failed.detail.npos),
            row.detail);
        EXPECT_EQ(lastMessage().substr(0, row.message.size()), row.message);
        if (row.code == INSTALL_ERROR_VERIFICATION_FAILURE) {
            const std::string name = row.message.substr(forged.size());
            EXPECT_EQ(readFile(installed(name.substr(0, name.find(' ')))), "old");
        }
        EXPECT_EQ(vn_install("Velnor", 0, nullptr, nullptr), -1);
        EXPECT_EQ(vn_getLastError(), plainCodes.at(row.code)) << row.message;
        stopClient();
    }
    EXPECT_NE(world.log.requests().back().body.find("Unable to seek to"), std::string::npos);
}

TEST(Install, BadArgumentsWriteNothing) {
    InstallContext withoutProgress{};
    for (const char* name : {static_cast<const char*>(nullptr), "Velnor"}) {
        EXPECT_EQ(vn_install(name, 0, nullptr, name == nullptr ? nullptr : &withoutProgress), -1);
        EXPECT_EQ(vn_getLastError(), INSTALL_ERROR_INVALIDARGUMENT + 0U);
    }
    for (size_t missing = 0; missing < 5; ++missing) {
        const char* a[] = {"ini\n", "agent", "MacOSClientURL=", "file", "MacOSClientSig="};
        a[missing] = nullptr;
        EXPECT_EQ(_vn_downloadAndWrite(a[0], a[1], nullptr, false, a[2], a[3], a[4], 0, 0),
                  INSTALL_ERROR_INVALIDARGUMENT);
    }
    EXPECT_FALSE(exists(kInstallPath));
}

TEST(ClientIni, NamesFilesAndTheContentHost) {
    const std::pair<const char*, const char*> names[] = {
        {"https://h/get?file=ksmac_1", "ksmac_1"},
        {"h/a=b/c", "c"},
        {"", nullptr},
        {"https://h/?file=", nullptr},
        {"h/.", nullptr},
        {"h/..", nullptr},
        {"https://h/...", "..."},
        {"ksmac_1", "ksmac_1"},
    };
    for (const auto& [url, name] : names) EXPECT_STREQ(velnor::fileNameOf(url), name) << url;
    const std::string host = velnor::deployment::kContentHost;
    EXPECT_EQ(velnor::rewriteToContentHost("H/P").get(), std::string("H/P"));
    EXPECT_EQ(velnor::rewriteToContentHost("a://b://c").get(), "a://" + host + "/b://c");
    for (const char* text : {"EnableQ731=TRUE\n", "EnableQ731=true \n", "EnableQ731=true", ""}) {
        EXPECT_FALSE(velnor::isRewriteOn(text)) << text;
    }
}

const char* const kSent = R"({"uninstallMsgSent" : true})";
const char* const kNotSent = R"({"uninstallMsgSent":false})";

TEST(Uninstall, TellsTheClientAndAwaitsItsFarewell) {
    const struct {
        const char* registry;
        const char* name;  // none forces the client out
        const char* ini;
        Texts polls;
        size_t polled;
        bool isRemoved;
    } rows[] = {
        {"Velnor\n", "Velnor", "", {kSent}, 1, true},
        {"Velnor\nOther\n", nullptr, "", {kSent}, 1, true},
        {"Velnor\nOther\n", "Velnor", "UninstallTimeOutSec=90", {}, 1, false},
        {"Other\n", "Velnor", "", {}, 0, false},  // it does not even answer the farewell
        {"Other\n", "Velnor", "X=1\nUninstallTimeOutSec=3x", {kNotSent, "garbage", ""}, 3, false},
        {"Other\n", "Velnor", "UninstallTimeOutSec=-5\n", {kNotSent, kSent}, 2, false},
        {"Other\n", "Velnor", "", {R"({"uninstallMsgSent":"true"})"}, 10, false},
    };
    for (const auto& row : rows) {
        makeInstallation(row.registry);
        writeFile(installed("client.ini"), row.ini);
        writeFile("/run/launchd/mode", "noisy");
        ScriptedClient::Replies replies;
        if (row.polled > 0) replies.push_back({"uninstall", {"{}"}});
        if (!row.polls.empty()) replies.push_back({"getClientAttributes", row.polls});
        const ScriptedClient told(replies);
        const Clock::time_point start = Clock::now();
        EXPECT_EQ(_vn_uninstall(row.name, false), 1);
        EXPECT_GE(Clock::now() - start + std::chrono::seconds(1), std::chrono::seconds(row.polled))
            << row.ini;
        Texts requests(row.polled, "getClientAttributes&cid=1&apiversion=capi_1.6.5&complete");
        requests.insert(requests.begin(),
                        row.isRemoved ? "uninstall&cid=1&removing=true" : "uninstall&cid=1");
        EXPECT_EQ(told.paths(), requests) << row.ini;
        const std::string agent = row.name != nullptr ? row.name : "(force)";
        EXPECT_NE(told.head().find("User-Agent: " + agent + "\r\n"), std::string::npos);
        const std::string calls = readFile("/run/launchd/calls");
        EXPECT_EQ(calls.ends_with("unload " + agentPath() + "\n"), row.isRemoved);
        const int left = exists(agentPath()) + exists(kInstallPath) + exists(panePath());
        EXPECT_EQ(left, row.isRemoved ? 0 : 3);
        fs::remove("/run/launchd/calls");
    }
    EXPECT_EQ(readFile(kRegistry), "Other\n");
}

TEST(Uninstall, FailuresHaveTheirCodes) {
    makeInstallation("Velnor\n");
    EXPECT_EQ(vn_uninstall(nullptr, 0), -1);
    EXPECT_EQ(vn_getLastError(), INSTALL_ERROR_INVALIDARGUMENT + 0U);
    setenv("HOME", ("/tmp/" + std::string(1000, 'x')).c_str(), 1);
    const ScriptedClient told(ScriptedClient::Replies{});
    EXPECT_EQ(vn_uninstall("Velnor", 0), -1);
    EXPECT_EQ(vn_getLastError(), INSTALL_ERROR_STOP + 0U);
    EXPECT_TRUE(exists(kRegistry));
    EXPECT_EQ(told.paths(), Texts{}) << "an agent that is not listed is told nothing";
}

TEST(RecursiveDelete, KeepsTheIdentityByDeletingElsewhere) {
    makeInstallation("Velnor\n");
    fs::create_directories("/tmp/installer.txt/folder");
    fs::current_path("/tmp");
    run("cd installer.txt; touch a guid.ini GUID.INI keep folder/guid.ini");
    EXPECT_EQ(_vn_recursiveDelete("keep", true), 0);
    EXPECT_EQ(run("LC_ALL=C ls installer.txt").output, "GUID.INI\nguid.ini\nkeep\n");
    EXPECT_EQ(vn_uninstall("Velnor", VN_UNINSTALL_KEEP_IDENTITY), 0);
    EXPECT_EQ(vn_getLastError(), 0U);
    EXPECT_EQ(readFile(installed("guid.ini")), "0");
    EXPECT_FALSE(exists(agentPath()) || exists(panePath()));
    EXPECT_EQ(_vn_recursiveDelete(std::string(2000, 'x').c_str(), true), -1);
}

}  // namespace
