// What vn-publish refuses, with which advice, and that a refusal changes nothing.
#include <gtest/gtest.h>

#include <functional>

#include "deploy/publish_command.h"
#include "harness/files.h"

namespace {

struct Refusal {
    const char* name;
    std::function<void(PublishCommand&)> change;
    const char* advice;
    int status = 1;
};

void PrintTo(const Refusal& refusal, std::ostream* stream) { *stream << refusal.name; }

std::function<void(PublishCommand&)> clientUrl(const std::string& url) {
    return [url](PublishCommand& command) { command.clientUrl = url; };
}

std::function<void(PublishCommand&)> uiToolUrl(const std::string& url) {
    return [url](PublishCommand& command) { command.uiToolUrl = url; };
}

std::function<void(PublishCommand&)> logUrl(const std::string& url) {
    return [url](PublishCommand& command) { command.logUrl = url; };
}

// The client is the file that `make` makes.
std::function<void(PublishCommand&)> clientFile(const std::string& make) {
    return [make](PublishCommand& command) { command.settings = "rm client; " + make + ";"; };
}

std::function<void(PublishCommand&)> output(const std::string& path) {
    return [path](PublishCommand& command) { command.output = path; };
}

std::function<void(PublishCommand&)> options(const std::string& more) {
    return [more](PublishCommand& command) { command.more = more; };
}

const Refusal kRefusals[] = {
    {"ForeignKey",
     [](PublishCommand& command) {
         command.settings = "'" VN_KEYGEN "' ../other.pem >/dev/null 2>&1;";
         command.key = "../other.pem";
     },
     "give the right one, or build installers for this one with -DVELNOR_PUBLIC_KEY=30819f"},
    {"NoKeyFile", [](PublishCommand& command) { command.key = "none"; },
     "cannot read the key none: No such file"},
    {"NoKeyInFile", [](PublishCommand& command) { command.key = "ui"; },
     "give the file that vn-keygen made"},

    {"MissingArtifact", clientFile("true"), "cannot read client: No such file"},
    {"UnreadableArtifact", clientFile("touch client; chmod 0 client"),
     "cannot read client: Permission denied"},
    {"EmptyArtifact", clientFile("touch client"), "client is empty"},
    {"FolderAsArtifact", clientFile("mkdir client"), "client is not a regular file"},
    {"HugeArtifact", clientFile("truncate -s 4294967295 client"),
     "installers take 4294967294 at most; make it smaller"},
    {"PlainArchive", [](PublishCommand& command) { command.uiTool = "client"; },
     "make it with tar -czf"},

    {"OtherScheme", clientUrl("ftp://h/ksmac_1"), "begin it with https:// or http://"},
    {"UpperCaseScheme", clientUrl("HTTPS://h/ksmac_1"), "begin it with https:// or http://"},
    {"NoPath", clientUrl("https://ksmac_1"), "give a host and, behind it, a path"},
    {"NoHost", clientUrl("https:///ksmac_1"), "give a host and, behind it, a path"},
    {"Blank", uiToolUrl("https://h/a b"), "write blanks"},
    {"LineBreak", uiToolUrl("https://h/a\nb"), "line breaks"},
    {"CarriageReturn", uiToolUrl("https://h/a\rb"), "line breaks"},
    {"NotAscii", uiToolUrl("https://h/\xc3\xa4"), "plain ASCII"},
    {"HalfEncoded", uiToolUrl("https://h/100%"), "a % of its own"},
    {"NoFileName", clientUrl("https://h/releases/"), "end it with the client's file name"},
    {"ParentAsName", clientUrl("https://h/.."), "end it with the client's file name"},
    {"TakenName", clientUrl("https://h/Loader.pl"), "another file of the name Loader.pl"},
    {"LongName", clientUrl("https://h/" + std::string(256, 'a')), "longer than a disk takes"},
    {"NameForNoLauncher", clientUrl("https://h/get?file=client"), "begins with ksmac_"},

    {"SecureLog", logUrl("https://h/put"), "begin it with http://"},
    {"LogWithoutPath", logUrl("http://h"), "give a host and, behind it, a path"},
    {"LongLog", logUrl("http://h/" + std::string(210, 'a')), "shorten it to 218 characters"},

    {"KeyHiddenByValue", logUrl("http://h/MacOSClientURL=/"), "\"MacOSClientURL=\" also stands"},
    {"KeyFakedByValue", uiToolUrl("https://h/?MacOSUninstallerURL=x"),
     "\"MacOSUninstallerURL=\" also stands"},
    {"KeySeenByLauncher", uiToolUrl("https://h/?MacOSClientURL=x"),
     "\"MacOSClientURL=\" also stands"},

    {"NoFolder", output("none/client.ini"), "No such file or directory; give --output a place"},
    {"ForbiddenFolder", output("/usr/client.ini"), "; give --output a place"},
    {"DeviceAsTarget", output("/dev/null"), "is no file that can be replaced"},
    {"FullDisk", [](PublishCommand& command) { command.settings = "ulimit -f 0; trap '' XFSZ;"; },
     "File too large; give --output a place"},

    {"NoSeconds", options("--uninstall-timeout 0"), "not in range", 2},
    {"UnknownOption", options("--sign-nothing"), "--sign-nothing", 2},
    {"UrlMissing", options("--uninstaller un"), "--uninstaller", 2},
};

class PublishRefusal : public testing::TestWithParam<Refusal> {};

TEST_P(PublishRefusal, SaysWhatToDoAndChangesNothing) {
    PublishCommand command;
    harness::writeFile(kFolder + "client.ini", "before\n");
    GetParam().change(command);
    const harness::CommandResult result = command.run();
    EXPECT_EQ(result.status, GetParam().status);
    EXPECT_NE(result.output.find(GetParam().advice), std::string::npos) << result.output;
    EXPECT_EQ(harness::readFile(kFolder + "client.ini"), "before\n");
    const std::string files = harness::run("ls -A " + kFolder + " | grep -v '^client$'").output;
    EXPECT_EQ(files, "client.ini\nui\nun\n");
}

INSTANTIATE_TEST_SUITE_P(All, PublishRefusal, testing::ValuesIn(kRefusals),
                         [](const auto& tested) { return tested.param.name; });

}  // namespace
