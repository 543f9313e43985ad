// What vn-publish refuses, with which advice, and that a refusal changes nothing.
#include <gtest/gtest.h>

#include <string>

#include "deploy/publish_command.h"
#include "harness/files.h"

namespace {

// One argument, and what vn-publish says when it has this value.
struct Refusal {
    const char* name;
    std::string PublishCommand::*argument;
    std::string value;
    const char* advice;
    int status = 1;
};

void PrintTo(const Refusal& refusal, std::ostream* stream) { *stream << refusal.name; }

constexpr auto kKey = &PublishCommand::key;
constexpr auto kClientUrl = &PublishCommand::clientUrl;
constexpr auto kUiTool = &PublishCommand::uiTool;
constexpr auto kUiToolUrl = &PublishCommand::uiToolUrl;
constexpr auto kLogUrl = &PublishCommand::logUrl;
constexpr auto kOutput = &PublishCommand::output;
constexpr auto kMore = &PublishCommand::more;
constexpr auto kSettings = &PublishCommand::settings;

const Refusal kRefusals[] = {
    {"NoKeyFile", kKey, "none", "cannot read the key none: No such file"},
    {"NoKeyInFile", kKey, "ui", "give the file that vn-keygen made"},

    {"MissingArtifact", kSettings, "rm client;", "cannot read client: No such file"},
    {"UnreadableArtifact", kSettings, "chmod 0 client;", "cannot read client: Permission denied"},
    {"EmptyArtifact", kSettings, ": >client;", "client is empty"},
    {"HugeArtifact", kSettings, "truncate -s 4294967295 client;",
     "installers take 4294967294 at most; make it smaller"},
    {"PlainArchive", kUiTool, "client", "make it with tar -czf"},

    {"OtherScheme", kClientUrl, "ftp://h/ksmac_1", "begin it with https:// or http://"},
    {"NoHost", kClientUrl, "https:///ksmac_1", "give a host and, behind it, a path"},
    {"LineBreak", kUiToolUrl, "https://h/a\nb", "write blanks, line breaks"},
    {"NoFileName", kClientUrl, "https://h/releases/", "end it with the client's file name"},
    {"TakenName", kClientUrl, "https://h/Loader.pl", "another file of the name Loader.pl"},
    {"LongName", kClientUrl, "https://h/" + std::string(256, 'a'), "longer than a disk takes"},
    {"NameForNoLauncher", kClientUrl, "https://h/get?file=client", "begins with ksmac_"},

    {"SecureLog", kLogUrl, "https://h/put", "begin it with http://"},
    {"BlankInLog", kLogUrl, "http://h/a b", "write blanks, line breaks"},
    {"LogWithoutPath", kLogUrl, "http://h", "give a host and, behind it, a path"},
    {"LongLog", kLogUrl, "http://h/" + std::string(210, 'a'), "shorten it to 218 characters"},

    {"KeyHiddenByValue", kLogUrl, "http://h/MacOSClientURL=/", "\"MacOSClientURL=\" also stands"},
    {"KeyFakedByValue", kUiToolUrl, "https://h/?MacOSUninstallerURL=x",
     "\"MacOSUninstallerURL=\" also stands"},
    {"KeySeenByLauncher", kUiToolUrl, "https://h/?MacOSClientURL=x",
     "\"MacOSClientURL=\" also stands"},

    {"NoFolder", kOutput, "none/client.ini", "No such file or directory; give --output a place"},
    {"ForbiddenFolder", kOutput, "/usr/client.ini", "; give --output a place"},
    {"DeviceAsTarget", kOutput, "/dev/null", "is no file that can be replaced"},
    {"FullDisk", kSettings, "ulimit -f 0; trap '' XFSZ;", "File too large; give --output a place"},

    {"NoSeconds", kMore, "--uninstall-timeout 0", "not in range", 2},
    {"UnknownOption", kMore, "--sign-nothing", "--sign-nothing", 2},
    {"UrlMissing", kMore, "--uninstaller un", "--uninstaller", 2},
};

void expectRefused(const PublishCommand& command, const char* advice, int status = 1) {
    harness::writeFile(kFolder + "client.ini", "before\n");
    const harness::CommandResult result = command.run();
    EXPECT_EQ(result.status, status);
    EXPECT_NE(result.output.find(advice), std::string::npos) << result.output;
    EXPECT_EQ(harness::readFile(kFolder + "client.ini"), "before\n");
    const std::string files = harness::run("ls -A " + kFolder + " | grep -v '^client$'").output;
    EXPECT_EQ(files, "client.ini\nui\nun\n");
}

class PublishRefusal : public testing::TestWithParam<Refusal> {};

TEST_P(PublishRefusal, SaysWhatToDoAndChangesNothing) {
    PublishCommand command;
    command.*GetParam().argument = GetParam().value;
    expectRefused(command, GetParam().advice, GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(All, PublishRefusal, testing::ValuesIn(kRefusals),
                         [](const auto& tested) { return tested.param.name; });

TEST(PublishRefusals, ForeignKeyIsNamedWithItsPublicHalf) {
    PublishCommand command;
    command.settings = "'" VN_KEYGEN "' ../other.pem >/dev/null 2>&1;";
    command.key = "../other.pem";
    expectRefused(command,
                  "give the right one, or build installers for this one with "
                  "-DVELNOR_PUBLIC_KEY=30819f");
}

}  // namespace
