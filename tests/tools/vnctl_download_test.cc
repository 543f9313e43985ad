// vnctl download: what it shows, whose files it leaves alone, and how its watching ends.
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <string>

#include "harness/files.h"
#include "sandbox/servers/file_server.h"
#include "tools/client_world.h"

namespace {

using harness::readFile;

const std::string kFilm = "/tmp/work/film.mov";

std::string urlOn(const sandbox::FileServer& server, const std::string& target) {
    return "'http://127.0.0.1:" + std::to_string(server.port()) + target + "'";
}

TEST(VnctlDownload, BringsTheFileAndTellsItInPlainLines) {
    const RunningClient client;
    sandbox::FileServer server;
    server.serve("/a%20film.mov", filmContent());
    const std::string url = urlOn(server, "/a%20film.mov?from=a/b");
    const std::string path = "/tmp/work/a film.mov";
    const harness::CommandResult result = vnctl("download " + url + " 2>&1");
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(result.output.ends_with("\nComplete: " + path + ", 3.0 MiB\n")) << result.output;
    EXPECT_EQ(result.output.find("100%"), std::string::npos) << result.output;
    EXPECT_EQ(result.output.find('\r'), std::string::npos);
    EXPECT_TRUE(readFile(path) == filmContent());

    // The proof that the client asks for is never written over what is there.
    setClientMode("challenge proof");
    EXPECT_EQ(vnctl("download " + url + " 2>&1").status, 8);
    EXPECT_EQ(vnctl("delete --keep-file " + url).status, 0);
    EXPECT_EQ(vnctl("download " + url + " 2>&1").status, 7) << "the file is the user's own now";
    EXPECT_TRUE(readFile(path) == filmContent());
    EXPECT_EQ(harness::run("ls /tmp/work").output, "a film.mov\n");
    std::filesystem::remove(path);
    EXPECT_EQ(vnctl("download " + url + " 2>&1").status, 0);
    EXPECT_TRUE(readFile(path) == filmContent());
}

TEST(VnctlDownload, ReplacesNobodysFileUnasked) {
    const RunningClient client;
    sandbox::FileServer server;
    server.serve("/letter", "from the server");
    const std::string url = urlOn(server, "/letter");
    std::filesystem::create_directory("/tmp/work");
    harness::writeFile("/tmp/work/letter", "mine");
    std::filesystem::create_symlink("/nowhere", "/tmp/work/link");
    setClientMode("challenge proof");
    for (const char* where : {"", " --path .", " --path ../work/letter", " --path link"}) {
        const harness::CommandResult result = vnctl("download " + url + where + " 2>&1");
        EXPECT_EQ(result.status, 7) << where;
        EXPECT_NE(result.output.find("exists. Choose another file"), std::string::npos);
    }
    EXPECT_EQ(readFile("/tmp/work/letter"), "mine");
    EXPECT_TRUE(server.requests().empty());
    EXPECT_EQ(vnctl("download --force " + url).status, 0);
    EXPECT_EQ(readFile("/tmp/work/letter"), "from the server");
}

TEST(VnctlDownload, TellsOnceWhyItIsDisconnected) {
    const RunningClient client;
    const std::string url = "http://127.0.0.1:1/x";
    harness::run("(sleep 3; '" VNCTL "' pause " + url + ") >/dev/null 2>&1 &");
    const harness::CommandResult result = vnctl("download " + url + " 2>&1");
    EXPECT_EQ(result.status, 12) << "somebody has paused it";
    const std::regex told("Disconnected: [^\n]*tries again\\.\n0%, Disconnected\n");
    EXPECT_TRUE(std::regex_search(result.output, told)) << result.output;
    EXPECT_EQ(std::regex_replace(result.output, told, "").find("Disconnected"), std::string::npos);
}

bool showsAtLast(const std::string& text) {
    return harness::eventually(
        [&] { return readFile("/tmp/output").find(text) != std::string::npos; });
}

void watchInBackground(const HalfServer& server) {
    harness::run("mkdir /tmp/work; cd /tmp/work; { '" VNCTL "' download " + server.url() +
                 "; echo status $?; } >/tmp/output 2>&1 </dev/null &");
}

TEST(VnctlDownload, EndsWhenSomebodyPausesAndGoesOnWhereTheClientHasIt) {
    const RunningClient client;
    HalfServer server;
    watchInBackground(server);
    EXPECT_TRUE(showsAtLast("50%, 1.5 MiB of 3.0 MiB"));
    EXPECT_EQ(vnctl("pause " + server.url()).status, 0);
    EXPECT_TRUE(showsAtLast("takes it up again.\nstatus 12\n"));
    server.goOn();
    EXPECT_EQ(vnctl("download " + server.url() + "?other --path film.mov 2>&1").status, 5)
        << "the client has another one for it";
    EXPECT_EQ(harness::run("cd /; '" VNCTL "' download " + server.url()).status, 0);
    EXPECT_TRUE(readFile(kFilm) == filmContent());
}

TEST(VnctlDownload, SurvivesARestartOfTheClient) {
    RunningClient client;
    HalfServer server;
    watchInBackground(server);
    EXPECT_TRUE(showsAtLast("1.5 MiB of 3.0 MiB"));
    client.stop();
    server.goOn();
    client.start();
    EXPECT_TRUE(showsAtLast("Complete: /tmp/work/film.mov, 3.0 MiB\nstatus 0\n"));
    EXPECT_TRUE(readFile(kFilm) == filmContent());
}

TEST(VnctlDownload, GoesOnAfterCtrlC) {
    const RunningClient client;
    HalfServer server;
    std::filesystem::create_directory("/tmp/work");
    const harness::CommandResult result = harness::run(
        "cd /tmp/work; timeout --preserve-status -s INT 3 '" VNCTL "' download --cid 7 " +
        server.url() + " 2>&1 >/dev/null");
    EXPECT_EQ(result.status, 130);
    EXPECT_NE(result.output.find("\n  vnctl attributes " + server.url() + " --cid 7\n"),
              std::string::npos)
        << result.output;
    server.goOn();
    EXPECT_TRUE(harness::eventually([] { return readFile(kFilm) == filmContent(); }));
}

TEST(VnctlDownload, MovesABarOnATerminal) {
    const RunningClient client;
    std::filesystem::create_directory("/tmp/work");
    const std::pair<size_t, const char*> rows[] = {
        {100, R"(\r\[#+ +\]  50%  1\.5 MiB of 3\.0 MiB  [0-9.]+ [KM]?i?B/s)"},
        {40, R"(\r\[#+ +\]  50%)"},
        {20, R"(\r\[#+ +\]  50% *\r)"},
    };
    for (const auto& [columns, half] : rows) {
        const HalfServer server(std::chrono::milliseconds(1500));
        const std::string size = std::to_string(columns);
        const std::string output = harness::run("cd /tmp/work; script -qec \"stty cols " + size +
                                                "; '" VNCTL "' download " + server.url() +
                                                " --path " + size + "\" /dev/null </dev/null")
                                       .output;
        EXPECT_TRUE(std::regex_search(output, std::regex(half))) << output;
        EXPECT_FALSE(std::regex_search(output, std::regex("\\[[^\r\n]{" + size + "}"))) << output;
        EXPECT_TRUE(std::regex_search(output, std::regex("#\\] 100%[^\n]*\nComplete: "))) << output;
    }
}

TEST(VnctlDownload, TakesSecretsFromFiles) {
    const RunningClient client;
    sandbox::FileServer server;
    server.serve("/letter", "content");
    harness::run(
        "mkdir /tmp/work; cd /tmp/work; umask 077; printf 'id=1; b=\"2\"\\r\\n2\\n' >cookie;"
        "printf '\\nx' >empty; printf %2000s >long; umask 027; printf 'a=b&c' >query");
    const harness::CommandResult result =
        vnctl("download " + urlOn(server, "/letter?x=1") +
              " --cookie-file cookie --query-auth-file query --basic-auth-file - 2>&1 >/dev/null "
              "<<'END'\nme:a:b%\nEND");
    EXPECT_EQ(result.output, "vnctl: warning: other users can read query; chmod 600 prevents it\n");
    ASSERT_EQ(server.requests().size(), 1U);
    const sandbox::Request request = server.requests().front();
    EXPECT_EQ(request.target, "/letter?x=1&a=b&c");
    EXPECT_EQ(request.header("Cookie"), "id=1; b=\"2\"");
    EXPECT_EQ(request.header("Authorization"), "Basic bWU6YTpiJQ==");
    const std::pair<const char*, const char*> rows[] = {
        {"--cookie-file empty", "is empty"},
        {"--cookie-file long", "is too long"},
        {"--cookie-file none", "Cannot read none: No such file"},
        {"--cookie-file .", "Cannot read .: Is a directory"},
        {"--basic-auth-file query", "must be user:password"},
    };
    for (const auto& [options, message] : rows) {
        const std::string output =
            vnctl("download --path x " + urlOn(server, "/") + " " + options + " 2>&1").output;
        EXPECT_NE(output.find(message), std::string::npos) << output;
    }
}

}  // namespace
