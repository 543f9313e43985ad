// vnctl download: what it shows, whose files it leaves alone, and how its watching ends.
#include <gtest/gtest.h>

#include <regex>
#include <string>

#include "harness/harness.h"
#include "sandbox/servers/file_server.h"
#include "tools/client_world.h"

namespace {

using harness::readFile;

const std::string kFilmPath = "/tmp/work/film.mov";

bool shows(const std::string& pattern) {
    return std::regex_search(readFile("/tmp/output"), std::regex(pattern));
}
bool showsAtLast(const std::string& pattern) {
    return harness::eventually([&] { return shows(pattern); });
}

void watchInBackground(const std::string& folder, const std::string& url) {
    harness::run("mkdir -p /tmp/work; cd " + folder + "; { '" VNCTL "' download " + url +
                 "; echo status $?; } >/tmp/output 2>&1 </dev/null &");
}

TEST(VnctlDownload, BringsTheFileAndReplacesNobodysUnasked) {
    const RunningClient client;
    sandbox::FileServer server(kPort);
    server.serve("/a%20film.mov", filmContent());
    const std::string url = "'" + kHost + "/a%20film.mov?from=a/b'";
    const std::string path = "/tmp/work/a film.mov";
    harness::run("mkdir /tmp/work; cd /tmp/work; ln -s /nowhere link; printf mine >'a film.mov'");
    // The proof that the client asks for is never written over what is there.
    RunningClient::setMode("challenge proof");
    for (const char* where : {"", " --path .", " --path ../work/a*", " --path link"}) {
        expectOutcomes({{"download " + url + where, 7, "exists. Choose another file"}});
    }
    EXPECT_EQ(readFile(path), "mine");
    EXPECT_TRUE(server.requests().empty());
    const harness::CommandResult result = vnctl("download --force " + url + " 2>&1");
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(result.output.ends_with("\nComplete: " + path + ", 3.0 MiB\n")) << result.output;
    EXPECT_EQ(result.output.find("100%"), std::string::npos) << result.output;
    EXPECT_EQ(result.output.find('\r'), std::string::npos);
    expectOutcomes({{"download " + url, 0, "Already downloaded: " + path + ", 3.0 MiB\n"}});
    EXPECT_EQ(server.requests().size(), 1U);
    EXPECT_EQ(vnctl("download --force " + url + " 2>/dev/null").output,
              "Complete: " + path + ", 3.0 MiB\n");
    EXPECT_EQ(server.requests().size(), 2U);
    expectOutcomes({{"delete --keep-file " + url, 0, "stays"},
                    {"download " + url, 7, "exists"}});  // and is the user's own now
    EXPECT_TRUE(readFile(path) == filmContent());
    EXPECT_EQ(harness::run("ls /tmp/work").output, "a film.mov\nlink\n");
}

TEST(VnctlDownload, TellsOnceWhyItIsDisconnected) {
    const RunningClient client;
    watchInBackground("/tmp/work", "http://127.0.0.1:1/x");
    EXPECT_TRUE(showsAtLast("0%, Disconnected"));
    harness::run("sleep 3; '" VNCTL "' pause http://127.0.0.1:1/x");  // after two more attempts
    EXPECT_TRUE(showsAtLast("status 12\n")) << "somebody has paused it";
    const std::string output = readFile("/tmp/output");
    const std::regex told("Disconnected: [^\n]*tries again\\.\n0%, Disconnected\n");
    EXPECT_TRUE(std::regex_search(output, told)) << output;
    EXPECT_EQ(std::regex_replace(output, told, "").find("Disconnected"), std::string::npos);
}

TEST(VnctlDownload, EndsWhenSomebodyPausesAndSurvivesARestartOfTheClient) {
    RunningClient client;
    HalfServer server;
    watchInBackground("/tmp/work", kFilm);
    EXPECT_TRUE(showsAtLast("50%, 1.5 MiB of 3.0 MiB"));
    EXPECT_EQ(vnctl("pause " + kFilm).status, 0);
    EXPECT_TRUE(showsAtLast("takes it up again.\nstatus 12\n"));
    expectOutcomes({{"download " + kFilm + "?other --path film.mov", 5, "another one for"}});
    watchInBackground("/", kFilm);
    EXPECT_TRUE(showsAtLast("1.5 MiB of 3.0 MiB"));
    client.stop();
    EXPECT_TRUE(showsAtLast("does not answer. Waiting for it"));
    server.goOn();
    client.start();
    EXPECT_TRUE(showsAtLast("Complete: /tmp/work/film.mov, 3.0 MiB\nstatus 0\n"));
    EXPECT_TRUE(readFile(kFilmPath) == filmContent());
}

TEST(VnctlDownload, GoesOnAfterCtrlC) {
    const RunningClient client;
    HalfServer server;
    // The shell has become vnctl when it is interrupted.
    const harness::CommandResult result = harness::run(
        "mkdir /tmp/work; cd /tmp/work; sh -c '{ until grep -qs 50% /tmp/output; do sleep 0.1; "
        "done; kill -INT $$; "
        "} & exec \"$0\" \"$@\" 2>/tmp/output' '" VNCTL "' download --cid 7 " +
        kFilm);
    EXPECT_EQ(result.status, 130);
    EXPECT_EQ(result.output, "");
    const std::string how = "\n  vnctl attributes " + kFilm + " --cid 7\n";
    EXPECT_NE(readFile("/tmp/output").find(how), std::string::npos);
    server.goOn();
    EXPECT_TRUE(harness::eventually([] { return readFile(kFilmPath) == filmContent(); }));
}

TEST(VnctlDownload, MovesABarOnATerminal) {
    const RunningClient client;
    const std::pair<std::string, const char*> rows[] = {
        {"120", R"(\r\[#{25} {25}\]  50%  1\.5 MiB of 3\.0 MiB  [0-9.]+ [KM]?i?B/s)"},
        {"1", R"(\r\[\]  50%)"},
        {"36", R"(\r\[#+ +\]  50% *\r)"},
    };
    for (const auto& [columns, half] : rows) {
        HalfServer server;
        harness::run("cd /tmp; script -qefc \"stty cols " + columns + "; '" VNCTL "' download " +
                     kFilm + " --path " + columns + "\" output >typescript 2>&1 </dev/null &");
        EXPECT_TRUE(showsAtLast(half)) << columns;
        server.goOn();
        EXPECT_TRUE(showsAtLast("\\] 100%[^\n]*\nComplete: ")) << columns;
    }
    EXPECT_FALSE(shows(R"(\r\[[^\r\n]{35})")) << "the last column stays free";
}

TEST(VnctlDownload, TakesSecretsFromFiles) {
    const RunningClient client;
    sandbox::FileServer server(kPort);
    server.serve("/letter", "content");
    const std::string host = " " + kHost;
    harness::run(
        "mkdir /tmp/work; cd /tmp/work; umask 077; printf 'id=1; b=\"2\"\\r\\n2\\n' >cookie;"
        "printf '\\nx' >empty; printf %2000s >long; umask 027; printf 'a=b&c' >query");
    expectOutcomes({
        {"download --cookie-file cookie --query-auth-file query --basic-auth-file - " + host +
             "/letter?x=1 <<'END'\nme:a:b%\nEND",
         0, "vnctl: warning: other users can read query; chmod 600 prevents it\n"},
        {"download --cookie-file empty" + host + "/x", 2, "is empty"},
        {"download --cookie-file long" + host + "/x", 2, "is too long"},
        {"download --cookie-file none" + host + "/x", 7, "Cannot read none: No such file"},
        {"download --cookie-file ." + host + "/x", 7, "Cannot read .: Is a directory"},
        {"download --basic-auth-file query" + host + "/x", 2, "must be user:password"},
    });
    ASSERT_EQ(server.requests().size(), 1U);
    const sandbox::Request request = server.requests().front();
    EXPECT_EQ(request.target, "/letter?x=1&a=b&c");
    EXPECT_EQ(request.header("Cookie"), "id=1; b=\"2\"");
    EXPECT_EQ(request.header("Authorization"), "Basic bWU6YTpiJQ==");
}

}  // namespace
