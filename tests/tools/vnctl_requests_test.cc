// vnctl's other requests to the client: exit statuses, and answers for people and for scripts.
#include <gtest/gtest.h>

#include <string>

#include "api/scripted_client.h"
#include "harness/harness.h"
#include "sandbox/servers/file_server.h"
#include "tools/client_world.h"

namespace {

TEST(VnctlRequests, ExitStatusTellsTheKindOfFailure) {
    const RunningClient client;
    sandbox::FileServer server(kPort);
    server.serve("/forbidden", sandbox::Reply{.status = 403});
    server.serve("/letter", "content");
    const sandbox::RawServer vast([](int fd, const std::string& /*head*/) {
        sandbox::sendAll(fd, "HTTP/1.1 200 OK\r\nContent-Length: 4611686018427387904\r\n\r\nx");
    });
    const std::string vastUrl = "http://127.0.0.1:" + std::to_string(vast.port()) + "/vast";
    harness::run("mkdir -p /tmp/work/locked; chmod 500 /tmp/work/locked");
    expectOutcomes({
        {"download " + kHost + "/letter", 0, "Complete"},
        {"download " + kHost + "/none", 5, "Not Found: "},
        {"download " + kHost + "/forbidden", 6, "Forbidden: "},
        {"download " + vastUrl, 7, "Insufficient Disk Space"},
        {"download " + kHost + "/x --path /nowhere/x", 7, "The folder /nowhere"},
        {"download " + kHost + "/x --path locked/x", 7, "could not go on: Permission denied"},
        {"attributes ftp://h/x", 1, "does not take the URL"},
        {"download " + kHost + "/" + std::string(1000, 'x'), 2, "URL is longer than 858"},
        {"download " + kHost + "/x --path " + std::string(900, 'x'), 2, "too long together"},
        {"download --force " + kHost + "/letter --cookie-file - <<END\n" + std::string(800, 'x') +
             "\nEND",
         2, "too long together"},
        {"attributes " + kHost + "/letter; cat letter", 0, "content"},
        {"download " + kHost + "/", 2, "name one with --path"},
        {"pause " + kHost + "/other", 5, "knows no such download"},
        {"pause " + kHost + "/letter", 8, "There is nothing to pause"},
        {"download " + kHost + "/letter " + kHost + "/none", 5, kHost + "/none: Not Found"},
        {"download " + kHost + "/x " + kHost + "/y -o x", 2, "Several files need a folder"},
        {"attributes " + kHost + "/" + std::string(826, 'x'), 5, "knows no such download"},
        {"status >/dev/full", 1, "No space left"},
        {"status >&-", 1, "Bad file descriptor"},
        {"diagnose", 1, "\nLaunch agent         not installed or not running.\n"},
    });
    for (const auto& [mode, outcome] :
         {std::pair("inuse 9", Outcome{"delete " + kHost + "/letter", 10, "File In Use"}),
          {"throttle", {"run-tasks", 9, "throttled"}},
          {"drop", {"run-tasks", 3, "does not run"}},
          {"garbage", {"run-tasks", 1, "makes no sense"}}}) {
        RunningClient::setMode(mode);
        expectOutcomes({outcome});
    }
}

TEST(VnctlRequests, SayThatTheClientDoesNotRun) {
    for (const std::string request :
         {"status", "run-tasks", "pause http://h/x", "delete http://h/x", "attributes http://h/x",
          "download http://h/x"}) {
        expectOutcomes({{request, 3, "'vnctl install'"}, {"--json " + request, 3, "{\"code\":2,"}});
        EXPECT_EQ(vnctl(request + " --json 2>&1 >/dev/null").output, "");
    }
}

TEST(VnctlRequests, AnswerInJSON) {
    const RunningClient client;
    sandbox::FileServer server(kPort);
    server.serve("/letter", "content");
    const std::string url = kHost + "/letter";
    const std::string record = R"({"url":")" + url +
                               R"(","cid":0,"status":5,"state":"Complete","path":"/tmp/work/)"
                               "\xef\xbf\xbd\\\\\\n\xc3\xa4"
                               R"(","size":7,"uniquerecv":7,"progress":100,"downloadrate":)";
    expectOutcomes({
        {"download --json --path \"$(printf '\\377\\\\\\n\\303\\244')\" " + url, 0, record},
        {"attributes --json " + url, 0, record},
        {"attributes --json " + url, 0,
         R"(,"errorstring":null,"error":0,"suberror":0,"verifiedcontentmd5":null})"},
        {"attributes " + url, 0, "\nPath         /tmp/work/\\xff\\\\x0a\xc3\xa4\n"},
        {"attributes --json " + url + "x", 5, R"({"code":13,)"},
        {"status --json", 0, R"("executableversion":"1.6.5",)"},
        {"status", 0, "\nExecutable     1.6.5\n"},
        {"run-tasks --json", 0, R"({"result":"ok"})"},
        {"delete --keep-file --json " + url, 0, R"({"result":"ok"})"},
        {"download --wait --path kept --json " + url, 0, R"("ok","path":"/tmp/work/kept"})"},
        {"download --detach --path kept --json " + url, 0, R"("ok","path":"/tmp/work/kept"})"},
    });
    EXPECT_EQ(harness::readFile("/tmp/work/\xff\\\n\xc3\xa4"), "content");
}

TEST(VnctlRequests, NeverLoseAFileThatIsToBeKept) {
    std::string harm;  // what happens before the client answers
    const test::ScriptedClient client([&harm](const std::string& path) {
        if (!path.starts_with("api?function=deleteFile")) {
            return test::reply(R"({"status":"COMPLETE","path":"/tmp/work/film","size":7})");
        }
        harness::run("cd /tmp/work; " + harm);
        return test::reply(R"({"http://h/film":null})");
    });
    harness::run("mkdir /tmp/work; printf content >/tmp/work/film");
    const std::string command = "delete --keep-file http://h/film 2>&1 & echo $! >/tmp/pid; wait";
    for (const char* each : {"touch a", "echo proof >film", "rm film",
                             "echo proof >film; kill -9 $(cat /tmp/pid); sleep 0.2"}) {
        harm = each;
        vnctl(command);
        const auto isBack = [] { return harness::run("cat /tmp/work/film*").output == "content"; };
        EXPECT_TRUE(harness::eventually(isBack)) << each;
    }
    harm = "rm film; mkdir -p film/x";  // a folder is in its way
    const std::string said = vnctl(command).output;
    EXPECT_NE(said.find("It is /tmp/work/film."), std::string::npos) << said;
    EXPECT_EQ(harness::run("cat /tmp/work/film.*").output, "content");
}

// By libproxy's rules and, without a scheme, by curl's.
TEST(VnctlRequests, DiagnoseTheProxyOfTheConfigurationHost) {
    for (const char* proxy : {"http://127.0.0.1:9", "127.0.0.1:9"}) {
        setenv("https_proxy", proxy, 1);
        for (const auto& [except, said] :
             {std::pair("other.example", "Proxy                   127.0.0.1:9\n"),
              {"other.example,.velnor.example", "none for this host; for others 127.0.0.1:9\n"}}) {
            setenv("no_proxy", except, 1);
            expectOutcomes({{"diagnose", 1, said}});
        }
    }
}

TEST(VnctlRequests, AreRefusedFromWebPages) {
    const RunningClient client;
    for (const auto& [headers, status] : {std::pair("-H 'Host: localhost:9421'", "200"),
                                          {"-H 'Origin: https://evil.example'", "403"},
                                          {"-H 'Sec-Fetch-Site: none'", "200"},
                                          {"-H 'Sec-Fetch-Site: cross-site'", "403"},
                                          {"-H 'Host: rebound.example:9421'", "403"},
                                          {"-H 'Host: 127.0.0.1.evil.example'", "403"}}) {
        const std::string url = "'http://127.0.0.1:9421/api?function=runPeriodicTasks&cid=1'";
        const std::string ask = "curl -sS -o /dev/null -w '%{http_code}' ";
        EXPECT_EQ(harness::run(ask + headers + " " + url).output, status) << headers;
    }
}

TEST(VnctlRequests, TakeNothingElseForTheClient) {
    const test::ScriptedClient other([](const std::string&) { return test::reply("{}"); });
    expectOutcomes({{"status", 1, "port 9421 is not the client"}});
}

}  // namespace
